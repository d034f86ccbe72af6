#ifndef KIT_SERVICE_OUTBOX_H
#define KIT_SERVICE_OUTBOX_H

#include <string>
#include <utility>
#include <vector>

namespace kit::service
{

/// What the simulation has to say and nobody has fetched yet.
class Outbox
{
public:
    void emit(std::string event) { events_.push_back(std::move(event)); }
    void complain(std::string text) { complaints_.push_back(std::move(text)); }

    std::vector<std::string> takeEvents() { return std::exchange(events_, {}); }
    std::vector<std::string> takeComplaints() { return std::exchange(complaints_, {}); }

private:
    std::vector<std::string> events_;
    std::vector<std::string> complaints_;
};

}  // namespace kit::service

#endif

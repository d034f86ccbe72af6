#ifndef KIT_SERVICE_CONFERENCES_H
#define KIT_SERVICE_CONFERENCES_H

#include "kit/service/Model.h"

#include <vector>

namespace kit::service
{

class Simulation;

/// Calls of this phone that hear each other. A conference has the number of its first call.
class Conferences
{
public:
    explicit Conferences(Simulation& simulation) : s_(simulation) {}

    /// The numbers of its calls.
    std::vector<int> membersOf(int conference) const;

    void start(Call& active, Call& held);
    /// Takes a call out; the last one left is an ordinary call again.
    void leave(Call& call);

private:
    void announce(int conference) const;

    Simulation& s_;
};

}  // namespace kit::service

#endif

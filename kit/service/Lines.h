#ifndef KIT_SERVICE_LINES_H
#define KIT_SERVICE_LINES_H

#include "kit/service/Model.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kit::service
{

class Simulation;

constexpr std::size_t maximumLines = 64;

/// The lines of the phone; there is at least one.
class Lines
{
public:
    Lines(Simulation& simulation, const std::vector<std::string>& names);

    /// Null when there is none.
    Line* find(const std::string& name);
    std::vector<std::string> names() const;
    std::size_t size() const { return lines_.size(); }

    std::vector<Line>::iterator begin() { return lines_.begin(); }
    std::vector<Line>::iterator end() { return lines_.end(); }

    void add(const std::string& name);
    void remove(const std::string& name);

    /// A line that is not registered has no calls.
    void setRegistered(Line& line, bool registered, int result);
    void setDoNotDisturb(Line& line, bool on);

private:
    Simulation& s_;
    std::vector<Line> lines_;
};

}  // namespace kit::service

#endif

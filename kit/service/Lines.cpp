#include "kit/service/Lines.h"

#include "kit/protocol/Columns.h"
#include "kit/service/Simulation.h"

namespace kit::service
{

using namespace numbers;

namespace
{

Line lineCalled(const std::string& name)
{
    Line line;
    line.name = name;
    return line;
}

}  // namespace

Lines::Lines(Simulation& simulation, const std::vector<std::string>& names) : s_(simulation)
{
    for (const std::string& name : names)
        lines_.push_back(lineCalled(name));
}

Line* Lines::find(const std::string& name)
{
    for (Line& line : lines_)
        if (line.name == name)
            return &line;
    return nullptr;
}

std::vector<std::string> Lines::names() const
{
    return columnOf(lines_, &Line::name);
}

void Lines::add(const std::string& name)
{
    lines_.push_back(lineCalled(name));
    s_.outbox.devicesChanged();
}

void Lines::remove(const std::string& name)
{
    Line* const line = find(name);
    if (line->registered)
        setRegistered(*line, false, registrationUnknownLine);
    lines_.erase(lines_.begin() + (line - lines_.data()));
    s_.outbox.devicesChanged();
}

void Lines::setRegistered(Line& line, bool registered, int result)
{
    line.registered = registered;
    s_.outbox.registrationStateChange(line.name, registered, result);
    if (registered)
        return;
    for (const int id : s_.calls.on(line.name))
        if (Call* const call = s_.calls.find(id))
            s_.calls.clear(*call, reasonOutOfService);
}

void Lines::setDoNotDisturb(Line& line, bool on)
{
    line.doNotDisturb = on;
    s_.outbox.doNotDisturb(line);
}

}  // namespace kit::service

#include "kit/service/Simulation.h"

namespace kit::service
{

Simulation::Simulation(const std::vector<std::string>& lineNames, const Robots& farEnds)
    : robots(farEnds),
      lines(*this, lineNames),
      calls(*this),
      farEnd(*this),
      conferences(*this),
      callBacks(*this),
      voiceMail(*this)
{
}

Party Simulation::partyOf(const std::string& number)
{
    if (lines.find(number) != nullptr)
        return {number, "Line " + number};
    const RobotPointer robot = robots.find(number);
    return {number, robot == nullptr ? "" : robot->name};
}

}  // namespace kit::service

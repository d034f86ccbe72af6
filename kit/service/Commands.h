#ifndef KIT_SERVICE_COMMANDS_H
#define KIT_SERVICE_COMMANDS_H

#include "kit/framework/Connection.h"
#include "kit/service/Arguments.h"

#include <string>
#include <vector>

namespace kit::service
{

/// A command that is carried out: `answer` is what is said to it.
struct Order
{
    World& world;
    Simulation& s;
    const Arguments& a;
    std::string answer = "done";
};

struct Command
{
    const char* name;
    const char* usage;
    const char* help;
    void (*run)(Order& order);
    std::vector<numbers::CallState> states = {};  ///< of a CALL; any when empty
};

/// What drives the simulation. A command is words as everywhere in the kit; what may follow its name
/// is written in its usage, and that is what the words are checked against.
const std::vector<Command>& commands();

ControlAnswer carryOut(World& world, const std::string& command);

}  // namespace kit::service

#endif

#ifndef KIT_PHONE_COMMANDS_H
#define KIT_PHONE_COMMANDS_H

#include "kit/phone/Session.h"

#include <string>
#include <vector>

namespace kit::phone
{

/// A command that is the phone's own. What stands behind it is the command's to read.
struct Command
{
    const char* name;
    const char* usage;  ///< what stands behind the name
    const char* summary;
    Report (*run)(Session& session, const Statement& statement);

    /// Finds mistakes without carrying anything out; null where there is nothing to find.
    void (*check)(const Statement& statement, Variables& captured);
};

/// In the order of `help`.
const std::vector<Command>& commands();

/// Null when it is none of the phone's own.
const Command* findCommand(const std::string& name);

/// Every word that can begin a line.
std::vector<std::string> commandWords();

}  // namespace kit::phone

#endif

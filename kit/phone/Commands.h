#ifndef KIT_PHONE_COMMANDS_H
#define KIT_PHONE_COMMANDS_H

#include "kit/phone/Session.h"

#include <functional>
#include <string>
#include <vector>

namespace kit::phone
{

using Action = std::function<Report(Session& session)>;

/// A command that is the phone's own. What stands behind it is the command's to read.
struct Command
{
    const char* name;
    const char* usage;  ///< what stands behind the name
    const char* summary;

    /// Reads what stands behind it, with what was captured put in; what it will capture itself it
    /// adds. Raises Mistake. Nothing is carried out before the action is called.
    std::function<Action(const Statement& statement, Variables& captured)> read;
};

/// In the order of `help`.
const std::vector<Command>& commands();

/// Null when it is none of the phone's own.
const Command* findCommand(const std::string& name);

/// Every word that can begin a line.
std::vector<std::string> commandWords();

/// The operation that is meant by its name or by a short word, which changes the words. Raises
/// Mistake.
const Operation& resolve(const Word& command, std::vector<Word>& words);

}  // namespace kit::phone

#endif

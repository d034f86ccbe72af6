#ifndef KIT_SERVICE_USAGE_H
#define KIT_SERVICE_USAGE_H

#include "kit/protocol/Numbers.h"

#include <string>
#include <vector>

// The commands of the simulation as data: for those who check, complete and explain them.
namespace kit
{

/// One word, or pair of words, of a usage: LINE, from NUMBER, [name TEXT], [video].
struct UsageSlot
{
    std::string keyword;  ///< "" for a value that is known by its place
    std::string value;    ///< kind of value; "" for a keyword that stands alone
    bool optional = false;
};

struct CommandUsage
{
    std::string name;   ///< one word or two
    std::string usage;  ///< "" for one that stands alone
    std::string help;

    std::vector<UsageSlot> slots() const;

    /// "name usage"
    std::string line() const { return usage.empty() ? name : name + " " + usage; }
};

/// The commands of this version.
std::vector<CommandUsage> simulationCommands();

/// One line for each, "name usage: help"; this is what the command `help` answers.
std::string commandHelp(const std::vector<CommandUsage>& commands);

/// And back, for the commands of a service that may be of another version; what is no such line is
/// passed over.
std::vector<CommandUsage> parseCommandHelp(const std::string& help);

/// A kind of value that has words of its own.
struct ValueKind
{
    const char* value;  ///< in a usage
    const char* name;
    Meaning meaning;
    bool numbersToo;  ///< a real service may have more of them
};

/// Null for the others.
const ValueKind* valueKind(const std::string& value);

/// The words that a kind of value may have, as far as they do not depend on what goes on in the
/// simulation; none for the others.
std::vector<std::string> wordsFor(const std::string& kind);

}  // namespace kit

#endif

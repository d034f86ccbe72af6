#ifndef KIT_BINDING_CALLER_H
#define KIT_BINDING_CALLER_H

#include "CommunicationsServiceIfc.h"
#include "kit/protocol/Protocol.h"

#include <string>
#include <vector>

namespace kit
{

/// What an operation has returned, whatever its type.
struct Outcome
{
    enum class Returned
    {
        nothing,
        result,  ///< an sfiResult in `number`
        flag,    ///< 1 or 0 in `number`
        text
    };

    Returned returned = Returned::nothing;
    int number = 0;
    std::string text;
    /// One for each output of the operation's row, as it would travel; whatever the result.
    std::vector<std::string> outputs;

    /// An operation without a result has not failed, nor has a query that answers "false".
    bool failed() const { return returned == Returned::result && number != sfiSuccess; }

    /// "sfiSuccess", "true", the text, or "" for nothing.
    std::string inWords() const;
};

/// Calls an operation that is known by its row alone. Values are as people give them (see toWire);
/// arguments that are not named are "", 0 or false. A C string is null when its name is given among
/// `nulls`. Throws std::invalid_argument for a name or value that cannot be, and whatever the
/// operation throws. Outputs start as "", -1 and true, so that one left untouched can be told.
Outcome call(CommunicationsServiceIfc& service, const Operation& operation, const Values& values,
             Executable* subscriber = nullptr, const std::vector<std::string>& nulls = {});

}  // namespace kit

#endif

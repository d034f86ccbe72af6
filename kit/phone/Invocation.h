#ifndef KIT_PHONE_INVOCATION_H
#define KIT_PHONE_INVOCATION_H

#include "CommunicationsServiceIfc.h"
#include "kit/phone/Arguments.h"

#include <string>
#include <utility>
#include <vector>

namespace kit::phone
{

/// What an operation returned.
struct Outcome
{
    enum class Kind
    {
        nothing,
        result,  ///< an sfiResult
        yesNo,
        text
    };

    Kind kind = Kind::nothing;
    int result = 0;  ///< of yesNo 1 or 0
    std::string text;

    /// Outputs that were set, in their order, as they would travel.
    std::vector<std::pair<const Field*, std::string>> outputs;

    /// An operation without a result cannot fail.
    bool succeeded() const { return kind != Kind::result || result == sfiSuccess; }

    /// "sfiSuccess", "true"; "" when nothing was returned.
    std::string resultText() const;
};

/// Calls the operation on the service with one value for each argument.
Outcome invoke(const Operation& operation, const std::vector<Value>& values,
               CommunicationsServiceIfc& service, Executable* subscriber);

}  // namespace kit::phone

#endif

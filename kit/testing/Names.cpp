#include "kit/testing/Names.h"

#include "kit/language/Wording.h"
#include "kit/protocol/Columns.h"

#include <stdexcept>
#include <vector>

namespace kit
{

namespace
{

[[noreturn]] void unknown(const std::string& kind, const std::string& method,
                          const std::vector<std::string>& names)
{
    throw std::invalid_argument("there is no " + kind + " " + method + didYouMean(method, names));
}

}  // namespace

const Operation& checkRequest(const std::string& method)
{
    if (const Operation* const operation = findRequest(method))
        return *operation;
    std::vector<std::string> names;
    for (const Operation& operation : operations())
        if (*operation.method != '\0')
            names.push_back(operation.method);
    unknown("request", method, names);
}

const Event& checkEvent(const std::string& method)
{
    if (const Event* const event = findEvent(method))
        return *event;
    unknown("event", method, columnOf(events(), &Event::method));
}

}  // namespace kit

#include "kit/binding/WireText.h"

#include "kit/protocol/Protocol.h"

#include <stdexcept>

namespace kit
{

namespace
{

/// The record that a party's field arrives in has room for this much.
constexpr std::size_t partyRoom = 64;

}  // namespace

std::string wireText(sfiServiceState state)
{
    const bool known = state >= sfiServiceInService && state <= sfiServiceDoNotDisturb;
    return known ? nameOf(Meaning::serviceState, state) : std::string();
}

std::string eventOfTexts(const std::string& method, const std::vector<std::string>& fields)
{
    const Event* const event = findEvent(method);
    if (event == nullptr)
        throw std::invalid_argument("there is no event " + method);
    if (event->arguments.size() != fields.size())
        throw std::invalid_argument(method + " has " + std::to_string(event->arguments.size()) +
                                    " fields, not " + std::to_string(fields.size()));
    std::string text = element("Method", method);
    for (std::size_t i = 0; i < fields.size(); ++i)
    {
        const Field& field = event->arguments[i];
        if (field.kind == Kind::payload)
            text += fields[i];
        else
            text += element(field.tag,
                            field.kind == Kind::party ? fields[i].substr(0, partyRoom) : fields[i]);
    }
    return text;
}

}  // namespace kit

#ifndef KIT_BINDING_WIRE_TEXT_H
#define KIT_BINDING_WIRE_TEXT_H

#include "CommunicationsServiceTypes.h"
#include "kit/protocol/Lists.h"

#include <string>
#include <vector>

namespace kit
{

// Values of the interfaces' types as they travel.

inline std::string wireText(const std::string& text)
{
    return text;
}

inline std::string wireText(const char* text)
{
    return text;
}

inline std::string wireText(bool flag)
{
    return flag ? "1" : "0";
}

inline std::string wireText(int number)
{
    return std::to_string(number);
}

inline std::string wireText(unsigned int number)
{
    return std::to_string(number);
}

/// By name; "" for a state that is none.
std::string wireText(sfiServiceState state);

template <typename Item>
std::string wireText(const std::vector<Item>& list)
{
    return encodeList(list);
}

/// An event with all its fields, given in the order of its row:
///
///     event("CallHeldEvent", line, callId)
///
/// Throws std::invalid_argument for a method that is none and for another number of fields.
std::string eventOfTexts(const std::string& method, const std::vector<std::string>& fields);

template <typename... Fields>
std::string event(const std::string& method, const Fields&... fields)
{
    return eventOfTexts(method, {wireText(fields)...});
}

}  // namespace kit

#endif

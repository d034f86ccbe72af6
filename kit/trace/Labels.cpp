#include "kit/trace/Labels.h"

#include "kit/language/Wording.h"
#include "kit/protocol/Columns.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>

namespace kit
{

namespace
{

template <std::size_t size>
bool isOneOf(const char* name, const char* const (&names)[size])
{
    return std::any_of(std::begin(names), std::end(names),
                       [&](const char* other) { return std::strcmp(name, other) == 0; });
}

/// Said by another field already.
bool isRepetition(const Field& field)
{
    static const char* const names[] = {"fullPai", "callingPartyFullPai", "diversionName"};
    return field.kind == Kind::party || isOneOf(field.argument, names);
}

/// Worth telling only when it is not 0, which is the usual.
bool isUsuallyZero(const Field& field)
{
    static const char* const names[] = {
        "dssDirectCall",   "bridgeCall",       "callCompletionCall",
        "sendOptions",     "reason",           "diversionReason",
        "ilCallLevel",     "ilLocalLevel",     "callBackFeatureAvailable",
        "alertAutoAnswer", "zipAutoAnswer",    "isVideoCall",
        "exitConf",        "jointCall",        "connectedToMediaServer",
        "autoAnswer",      "blfPickup",        "forceTKVSUpdate",
        "preemptionCause", "resourcePriority", "displayOutcomeCallUI"};
    return isOneOf(field.argument, names);
}

/// What a call flow shows by its columns and arrows, or what few would miss there.
bool isDrawnOtherwise(const Field& field, const std::string& method)
{
    static const char* const names[] = {"uri", "name", "sendOptions", "callBackFeatureAvailable"};
    return method.compare(0, 8, "Incoming") != 0 && isOneOf(field.argument, names);
}

/// A call tells its line.
bool namesCall(const Message& message, const std::vector<Field>& fields)
{
    for (const Field& field : fields)
    {
        const std::string* const value = isCall(field) ? message.find(field.tag) : nullptr;
        if (value != nullptr && *value != "0" && !isAbsent(*value))
            return true;
    }
    return false;
}

/// What is told first, and without its tag: the state of things, and in parentheses why it is so.
enum class Prominence
{
    state,
    reason,
    other
};

Prominence prominenceOf(const std::string& tag)
{
    static const char* const states[] = {"CallState", "CallCompletionState", "Feature",
                                         "Registered"};
    static const char* const reasons[] = {"Reason", "FeatureFailure", "CallCompletionFailureType"};
    if (isOneOf(tag.c_str(), states))
        return Prominence::state;
    return isOneOf(tag.c_str(), reasons) ? Prominence::reason : Prominence::other;
}

/// " registered", " not registered"
std::string flagInWords(const std::string& tag, bool set)
{
    std::string word = tag;
    word[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(word[0])));
    return (set ? " " : " not ") + word;
}

std::string named(const Field& field, const std::string& value)
{
    return std::string(" ") + field.argument + "=" + shown(toPeople(field, value), 200);
}

}  // namespace

bool isAbsent(const std::string& value)
{
    return value.empty() || value == "-1";
}

bool isLine(const Field& field)
{
    static const char* const names[] = {"line", "lineId", "lineURI", "deviceId"};
    return isOneOf(field.argument, names);
}

bool isCall(const Field& field)
{
    static const char* const names[] = {"callId", "newCallId", "activeCall", "heldCall",
                                        "currentCallId"};
    return isOneOf(field.argument, names);
}

bool saysNothing(const Field& field, const std::string& value)
{
    return isAbsent(value) || isRepetition(field) || (value == "0" && isUsuallyZero(field));
}

std::string eventLabel(const ReceivedEvent& received)
{
    std::string text = received.event->method;
    for (std::size_t i = 0; i < received.values.size(); ++i)
        if (!saysNothing(received.event->arguments[i], received.values[i]))
            text += named(received.event->arguments[i], received.values[i]);
    return text;
}

std::string fullEventLabel(const ReceivedEvent& received)
{
    std::string text = received.event->method;
    for (std::size_t i = 0; i < received.values.size(); ++i)
        if (!isAbsent(received.values[i]))
            text += named(received.event->arguments[i], received.values[i]);
    return text;
}

std::string callLabel(const Operation& operation, const Values& values,
                      const std::vector<std::string>& nulls)
{
    std::string text = operation.name;
    for (const Field& argument : operation.arguments)
    {
        const std::string* const value = valueFor(argument, values);
        if (contains(nulls, argument.argument))
            text += std::string(" ") + argument.argument + "=null";
        else if (value != nullptr && !(*value == "0" && isUsuallyZero(argument)))
            text += named(argument, *value);
    }
    return text;
}

std::string messageLabel(const std::string& text)
{
    const Message message = parse(text);
    if (message.method.empty() && message.elements.empty())
        return printable(text, 60);
    const std::vector<Field>* const fields = fieldsOf(message.method);
    const bool lineIsTold = fields != nullptr && namesCall(message, *fields);
    std::string state;
    std::string reason;
    std::string others;
    for (const Message::Element& element : message.elements)
    {
        const Field* const field = fieldWithTag(fields, element.tag);
        if (field != nullptr &&
            (isDrawnOtherwise(*field, message.method) || saysNothing(*field, element.value) ||
             (isLine(*field) && lineIsTold) || (isCall(*field) && element.value == "0")))
            continue;
        const bool farEnd = element.tag == "URI" || element.tag == "CallingParty";
        const std::string value = field == nullptr ? element.value
                                  : farEnd         ? shortNumber(element.value)
                                                   : toPeople(*field, element.value);
        // A number without a name says nothing without its tag.
        const Prominence prominence = field == nullptr || value == element.value
                                          ? Prominence::other
                                          : prominenceOf(element.tag);
        if (prominence == Prominence::state)
            state +=
                field->kind == Kind::flag ? flagInWords(element.tag, value == "true") : " " + value;
        else if (prominence == Prominence::reason)
            reason += " (" + value + ")";
        else
            others += " " + element.tag + "=" + value;
    }
    std::string label = message.method + state + reason + others;
    label.erase(0, message.method.empty() ? 1 : 0);  // an answer has fields only
    if (!message.payload.empty())
        label += " + " + std::to_string(message.payload.size()) + " bytes";
    return printable(label, 200);
}

std::string shortNumber(const std::string& uri)
{
    std::string number = uri;
    const std::size_t scheme = number.find(':');
    if (scheme != std::string::npos)
        number.erase(0, scheme + 1);
    number.erase(std::min(number.size(), number.find_first_of("@;")));
    return number;
}

}  // namespace kit

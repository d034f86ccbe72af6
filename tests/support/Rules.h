#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_RULES_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_RULES_H

#include "tests/support/Events.h"
#include "tests/support/Requests.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

/// What becomes of any message, by the plainest rules: whole copies, and for each tag a search from
/// the front. The library must agree with them in every bit.
namespace rules
{

using samples::Value;
using samples::Values;

/// What stands between two texts; none when one of them is missing.
inline Value inEvent(const std::string& message, const std::string& start, const std::string& end)
{
    const std::size_t at = message.find(start);
    if (at == std::string::npos)
        return std::nullopt;
    const std::string rest = message.substr(at + start.size());
    if (rest.find(end) == std::string::npos)
        return std::nullopt;
    return rest.substr(0, rest.find(end));
}

/// The end is searched from the front of the message: one that comes too early does not end.
inline Value inAnswer(const std::string& message, const std::string& start, const std::string& end)
{
    const std::size_t at = message.find(start);
    if (at == std::string::npos)
        return std::nullopt;
    const std::size_t begin = at + start.size();
    const std::size_t behind = message.find(end);
    const bool isEnd = behind != std::string::npos && behind >= begin;
    return message.substr(begin, isEnd ? behind - begin : std::string::npos);
}

inline Value field(decltype(inEvent) find, const std::string& message, const std::string& tag)
{
    return find(message, "<" + tag + ">", "</" + tag + ">");
}

/// A text of the record that is too long runs on into the one copied before it.
inline void runOn(Values& values, std::size_t party)
{
    const std::size_t offsets[] = {
        offsetof(CallPartyInfo, callingNumber), offsetof(CallPartyInfo, callingName),
        offsetof(CallPartyInfo, calledNumber), offsetof(CallPartyInfo, calledName)};
    std::string record;
    for (std::size_t i = 0; i < 4; ++i)
    {
        const std::string text = values[party + i].value_or("") + '\0';
        record.resize(std::max(record.size(), offsets[i] + text.size()));
        record.replace(offsets[i], text.size(), text);
    }
    for (std::size_t i = 0; i < 4; ++i)
        values[party + i] = &record[offsets[i]];
}

/// What a subscriber writes down for this event.
inline std::string callbacks(const std::string& message)
{
    const std::string method = field(inEvent, message, "Method").value_or("");
    for (const samples::Event& event : samples::events)
    {
        const bool isExact = std::strcmp(event.method, "CallStateChangeEvent") == 0;
        if (isExact ? method != event.method : method.find(event.method) != 0)
            continue;
        Values values;
        for (const samples::Field& each : event.fields)
            values.push_back(field(inEvent, message, each.tag));
        for (std::size_t i = 0; i < values.size(); ++i)
            if (event.fields[i].kind == samples::party)
            {
                runOn(values, i);
                break;
            }
        std::string behind;
        if (event.hasPayload)
        {
            const std::string tail = std::string("/") + event.fields.back().tag + ">";
            behind = message;
            behind.erase(0, static_cast<std::uint32_t>(message.find(tail)) + 9U);
        }
        return samples::callback(event, values, behind) + "\n";
    }
    return "";
}

inline int result(const std::string& word)
{
    for (const auto& known : samples::resultWords)
        if (known.answer == word)
            return known.result;
    return 0;
}

/// What the queries with fields or items have to say of an answer; see asked().
inline std::string answers(const std::string& answer)
{
    using namespace std::string_literals;
    const auto text = [&](const char* tag) { return field(inAnswer, answer, tag).value_or(""); };
    const auto number = [&](const char* tag)
    {
        const Value value = field(inAnswer, answer, tag);
        return value ? samples::toNumber(*value) : -1;
    };
    const auto numberOfText = [&](const char* tag) { return samples::toNumber(text(tag)); };
    const auto count = [&](const char* tag)
    { return static_cast<unsigned int>(numberOfText(tag)); };

    std::vector<std::string> devices = {"before"};
    const bool failed = answer == "sfiFailure";
    for (std::size_t at = answer.find('<'); !failed && at != std::string::npos;
         at = answer.find('<', at + 1))
        if (answer.find('>', at) != std::string::npos)
            devices.push_back(answer.substr(at + 1, answer.find('>', at) - at - 1));

    return shown(result(text("sfiResult")), number("status") != 0, text("uri"),
                 number("cfnrRingCount"),
                 "<Method>getForwardingConfiguration</Method><fwType>7</fwType>"s) +
           shown(result(text("func_return_val")), numberOfText("Type"), count("newMsgs"),
                 count("oldMsgs"), count("newUrgMsgs"), count("oldUrgMsgs"),
                 numberOfText("return_type"), numberOfText("available_info"),
                 numberOfText("messages_waiting"), text("voiceMailNumber"),
                 "<Method>GetMessageWaitingIndicator</Method>"s) +
           shown(failed ? 0 : 5, devices, "<Method>GetDevices</Method>"s);
}

/// A request; a value that is missing, as a null text, cuts it off behind its tag.
inline std::string request(const std::string& method,
                           const std::vector<std::pair<const char*, Value>>& fields)
{
    std::string message = samples::method(method);
    for (const auto& [tag, value] : fields)
    {
        message += std::string("<") + tag + ">";
        if (!value)
            return message;
        message += *value + "</" + tag + ">";
    }
    return message;
}

}  // namespace rules

#endif

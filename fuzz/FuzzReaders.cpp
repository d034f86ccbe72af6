// Both pairs of readers, and the two classes that read all fields of a message. The first two bytes
// pick known tags, or tell that both tags stand in front of the message, each ended by a zero byte.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "FieldReaders.h"
#include "Fuzzer.h"
#include "Plain.h"

#include <algorithm>
#include <cstdint>

namespace
{

void compareReaders(const std::string& start, const std::string& message, const std::string& end)
{
    using Proxy = CommunicationsServiceProxy;
    using Invoker = CommunicationsServiceEventInvoker;
    demandEqual("text of an answer",
                Proxy::getParamAsString(start, message, end),
                plain::answerText(start, message, end));
    demandEqual("number of an answer",
                Proxy::getParamAsLong(start, message, end),
                plain::answerNumber(start, message, end));
    demandEqual("text of an event",
                Invoker::getParamAsString(start, message, end),
                plain::eventText(start, message, end));
    demandEqual("number of an event",
                Invoker::getParamAsLong(start, message, end),
                plain::eventNumber(start, message, end));
}

/// Each object is asked for each tag once, in the same order.
template <typename Fields, typename Read, typename Expected>
void compareFields(const char* what, const std::string& message,
                   const std::vector<std::string>& tags, Read read, Expected expected)
{
    const Fields fields(message);
    for (const std::string& tag : tags)
        demandEqual(what, read(fields, tag), expected("<" + tag + ">", message, "</" + tag + ">"));
}

void compareAllFields(const std::string& message, const std::vector<std::string>& tags)
{
    using Text = const std::string&;
    compareFields<EventFields>(
        "event.text",
        message,
        tags,
        [](auto& fields, Text tag) { return fields.text(tag); },
        [](Text start, Text text, Text end) { return plain::eventText(start, text, end); });
    compareFields<EventFields>(
        "event.number",
        message,
        tags,
        [](auto& fields, Text tag) { return fields.number(tag); },
        plain::eventNumber);
    compareFields<EventFields>(
        "event.flag",
        message,
        tags,
        [](auto& fields, Text tag) { return fields.flag(tag); },
        [](Text start, Text text, Text end) { return plain::eventNumber(start, text, end) != 0; });
    compareFields<AnswerFields>(
        "answer.text",
        message,
        tags,
        [](auto& fields, Text tag) { return fields.text(tag); },
        [](Text start, Text text, Text end) { return plain::answerText(start, text, end); });
    compareFields<AnswerFields>(
        "answer.number",
        message,
        tags,
        [](auto& fields, Text tag) { return fields.number(tag); },
        plain::answerNumber);
    compareFields<AnswerFields>(
        "answer.numberOfText",
        message,
        tags,
        [](auto& fields, Text tag) { return fields.numberOfText(tag); },
        [](Text start, Text text, Text end)
        { return plain::number(plain::answerText(start, text, end)); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    std::string message(reinterpret_cast<const char*>(data + 2), size - 2);
    const std::size_t first = data[0];
    if (first == 255)
    {
        const std::size_t endOfStart = message.find('\0');
        if (endOfStart == std::string::npos)
            return 0;
        const std::size_t endOfEnd = message.find('\0', endOfStart + 1);
        if (endOfEnd == std::string::npos)
            return 0;
        compareReaders(message.substr(0, endOfStart),
                       message.substr(endOfEnd + 1),
                       message.substr(endOfStart + 1, endOfEnd - endOfStart - 1));
        return 0;
    }
    // Several known tags, in an order of the input's choosing.
    std::vector<std::string> tags;
    for (std::size_t i = 0; i < 7; ++i)
    {
        const std::string& tag = plain::tags[(first + i * (data[1] + 1U)) % plain::tags.size()];
        if (tag != "Method" && std::find(tags.begin(), tags.end(), tag) == tags.end())
            tags.push_back(tag);
    }
    compareAllFields(message, tags);
    if (!tags.empty())
        compareReaders("<" + tags[0] + ">", message, "</" + tags[0] + ">");
    return 0;
}

// Both pairs of readers, and the two classes that read all fields of a message. The first two bytes
// pick known tags, or tell that both tags stand in front of the message, each ended by a zero byte.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "FieldReaders.h"
#include "Fuzzer.h"
#include "tests/support/Events.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>

namespace
{

/// What stands between two tags; nothing when there is no value.
using Found = std::optional<std::string>;

Found inEvent(const std::string& start, const std::string& message, const std::string& end)
{
    const std::size_t at = message.find(start);
    if (at == std::string::npos)
        return std::nullopt;
    const std::string rest = message.substr(at + start.size());
    if (rest.find(end) == std::string::npos)
        return std::nullopt;
    return rest.substr(0, rest.find(end));
}

/// The end tag is searched from the front of the message: one that comes too early does not end.
Found inAnswer(const std::string& start, const std::string& message, const std::string& end)
{
    const std::size_t at = message.find(start);
    if (at == std::string::npos)
        return std::nullopt;
    const std::size_t begin = at + start.size();
    const std::size_t behind = message.find(end);
    const bool isEnd = behind != std::string::npos && behind >= begin;
    return message.substr(begin, isEnd ? behind - begin : std::string::npos);
}

long number(const std::string& text)
{
    return std::clamp<long>(std::strtol(text.c_str(), nullptr, 10), INT32_MIN, INT32_MAX);
}

long numberOf(const Found& found)
{
    return found ? number(*found) : -1;
}

void compareReaders(const std::string& start, const std::string& message, const std::string& end)
{
    using Proxy = CommunicationsServiceProxy;
    using Invoker = CommunicationsServiceEventInvoker;
    const Found answer = inAnswer(start, message, end);
    const Found event = inEvent(start, message, end);
    demandEqual("text of an answer", Proxy::getParamAsString(start, message, end),
                answer.value_or(""));
    demandEqual("number of an answer", Proxy::getParamAsLong(start, message, end),
                numberOf(answer));
    demandEqual("text of an event", Invoker::getParamAsString(start, message, end),
                event.value_or(""));
    demandEqual("number of an event", Invoker::getParamAsLong(start, message, end),
                numberOf(event));
}

/// Each object is asked for each tag once, in the same order.
void compareFields(const std::string& message, const std::vector<std::string>& tags)
{
    const EventFields texts(message), numbers(message), flags(message);
    const AnswerFields answerTexts(message), answerNumbers(message), numbersOfTexts(message);
    for (const std::string& tag : tags)
    {
        const Found event = inEvent("<" + tag + ">", message, "</" + tag + ">");
        const Found answer = inAnswer("<" + tag + ">", message, "</" + tag + ">");
        demandEqual("event.text", texts.text(tag), event.value_or(""));
        demandEqual("event.number", numbers.number(tag), numberOf(event));
        demandEqual("event.flag", flags.flag(tag), numberOf(event) != 0);
        demandEqual("answer.text", answerTexts.text(tag), answer.value_or(""));
        demandEqual("answer.number", answerNumbers.number(tag), numberOf(answer));
        demandEqual("answer.numberOfText", numbersOfTexts.numberOfText(tag),
                    number(answer.value_or("")));
    }
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
        compareReaders(message.substr(0, endOfStart), message.substr(endOfEnd + 1),
                       message.substr(endOfStart + 1, endOfEnd - endOfStart - 1));
        return 0;
    }
    static const std::vector<std::string> known = samples::allTags();
    // Several known tags, in an order of the input's choosing.
    std::vector<std::string> tags;
    for (std::size_t i = 0; i < 7; ++i)
    {
        const std::string& tag = known[(first + i * (data[1] + 1U)) % known.size()];
        if (tag != "Method" && std::find(tags.begin(), tags.end(), tag) == tags.end())
            tags.push_back(tag);
    }
    compareFields(message, tags);
    if (!tags.empty())
        compareReaders("<" + tags[0] + ">", message, "</" + tags[0] + ">");
    return 0;
}

// Both pairs of readers, and the two classes that read all fields of a message. The first two bytes
// pick known tags, or tell that both tags stand in front of the message, each ended by a zero byte.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "FieldReaders.h"
#include "tests/support/Comparison.h"
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

/// Every field as every kind: tags are told first, then the message is read, then there are values.
template <typename Fields, typename Message>
void compareFields(const Message& message, const std::vector<std::string>& tags,
                   const std::vector<Found>& expected)
{
    Fields texts, numbers, numbersOfTexts, flags;
    std::vector<const std::string*> text;
    std::vector<const int*> numberOfField, numberOfText;
    std::vector<const bool*> flag;
    for (const std::string& tag : tags)
    {
        text.push_back(&texts.text(tag));
        numberOfField.push_back(&numbers.number(tag));
        numberOfText.push_back(&numbersOfTexts.numberOfText(tag));
        flag.push_back(&flags.flag(tag));
    }
    for (Fields* const fields : {&texts, &numbers, &numbersOfTexts, &flags})
        fields->read(message);
    for (std::size_t i = 0; i < tags.size(); ++i)
    {
        demandEqual("text", *text[i], expected[i].value_or(""));
        demandEqual("number", *numberOfField[i], numberOf(expected[i]));
        demandEqual("number of text", *numberOfText[i], number(expected[i].value_or("")));
        demandEqual("flag", *flag[i], numberOf(expected[i]) != 0);
    }
}

void compareFields(const std::string& message, const std::vector<std::string>& tags)
{
    std::vector<Found> inEvents, inAnswers;
    for (const std::string& tag : tags)
    {
        inEvents.push_back(inEvent("<" + tag + ">", message, "</" + tag + ">"));
        inAnswers.push_back(inAnswer("<" + tag + ">", message, "</" + tag + ">"));
    }
    compareFields<EventFields>(EventMessage(message), tags, inEvents);
    compareFields<AnswerFields>(message, tags, inAnswers);
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

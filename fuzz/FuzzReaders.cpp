// Both pairs of readers, and the two classes that read all fields of a message. The first two bytes
// pick known tags, or tell that both tags stand in front of the message, each ended by a zero byte.

#include "tests/support/Comparison.h"
#include "tests/support/Fields.h"

#include <algorithm>
#include <cstdint>

namespace
{

long numberOf(const rules::Value& found)
{
    return found ? samples::toNumber(*found) : -1;
}

void compareReaders(const std::string& start, const std::string& message, const std::string& end)
{
    using Proxy = CommunicationsServiceProxy;
    using Invoker = CommunicationsServiceEventInvoker;
    const rules::Value answer = rules::inAnswer(message, start, end);
    const rules::Value event = rules::inEvent(message, start, end);
    demandEqual("text of an answer", Proxy::getParamAsString(start, message, end),
                answer.value_or(""));
    demandEqual("number of an answer", Proxy::getParamAsLong(start, message, end),
                numberOf(answer));
    demandEqual("text of an event", Invoker::getParamAsString(start, message, end),
                event.value_or(""));
    demandEqual("number of an event", Invoker::getParamAsLong(start, message, end),
                numberOf(event));
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
    demandEqual("fields of an event", found<EventFields>(tags, EventMessage(message)),
                searched(tags, message, rules::inEvent));
    demandEqual("fields of an answer", found<AnswerFields>(tags, message),
                searched(tags, message, rules::inAnswer));
    if (!tags.empty())
        compareReaders("<" + tags[0] + ">", message, "</" + tags[0] + ">");
    return 0;
}

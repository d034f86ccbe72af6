// Both pairs of readers, and the two classes that read all fields of a message. The first two bytes
// pick a known tag, or tell that both tags stand in front of the message, each ended by a zero byte.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "FieldReaders.h"
#include "Fuzzer.h"
#include "Plain.h"

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

void compareFields(const EventFields& event, const AnswerFields& answer, const std::string& tag,
                   const std::string& message)
{
    const std::string start = "<" + tag + ">";
    const std::string end = "</" + tag + ">";
    const long eventNumber = plain::eventNumber(start, message, end);
    demandEqual("event.text", event.text(tag), plain::eventText(start, message, end));
    demandEqual("event.number", event.number(tag), eventNumber);
    demandEqual("event.count", event.count(tag), static_cast<unsigned int>(eventNumber));
    demandEqual("event.flag", event.flag(tag), eventNumber != 0);

    const std::string text = plain::answerText(start, message, end);
    demandEqual("answer.text", answer.text(tag), text);
    demandEqual("answer.number", answer.number(tag), plain::answerNumber(start, message, end));
    demandEqual("answer.numberOfText", answer.numberOfText(tag), plain::number(text));
    demandEqual("answer.flag", answer.flag(tag), plain::answerNumber(start, message, end) != 0);
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
    // One index for several tags, in an order of the input's choosing.
    const EventFields event(message);
    const AnswerFields answer(message);
    for (std::size_t i = 0; i < 4; ++i)
    {
        const std::string& tag = plain::tags[(first + i * (data[1] + 1U)) % plain::tags.size()];
        compareFields(event, answer, tag, message);
        if (i == 0)
            compareReaders("<" + tag + ">", message, "</" + tag + ">");
    }
    return 0;
}

// Gives the same random messages to the library and to the reference implementation, and compares what
// the application would see, in every bit. The messages are real ones with damage done to them.
//
// RandomComparison [messages [seed]]

#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "framework/Proxy.h"
#include "tests/support/Events.h"
#include "tests/support/Queries.h"
#include "tests/support/Reference.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>

class CommunicationsServiceProxy;
class CommunicationsServiceEventInvoker;

extern "C"
{
    CommunicationsServiceProxy* createCommunicationsServiceProxy();
    CommunicationsServiceEventInvoker* createCommunicationsServiceEventInvoker();
}

namespace
{

/// Each event's name, then its tags.
const std::vector<std::vector<std::string>> events = []
{
    std::vector<std::vector<std::string>> all;
    for (const samples::Event& event : samples::events)
    {
        all.push_back({event.method});
        for (const samples::Field& field : event.fields)
            all.back().push_back(field.tag);
    }
    return all;
}();

const std::vector<std::vector<std::string>> answers = {
    {"sfiResult", "status", "uri", "cfnrRingCount"},
    {"func_return_val", "Type", "newMsgs", "oldMsgs", "newUrgMsgs", "oldUrgMsgs", "return_type",
     "available_info", "messages_waiting", "voiceMailNumber"},
    {"1001", "1002", "1003", "sfiFailure"},
};

class Generator
{
public:
    explicit Generator(unsigned int seed) : random(seed) {}

    std::string event()
    {
        std::vector<std::string> tags = oneOf(events);
        std::string method = tags.front();
        tags.erase(tags.begin());
        if (below(50) == 0)
            method += piece(tags);
        const std::string head = element("Method", method);
        if (below(4) == 0)
        {
            // Elements in their order up to some field, then nothing but pieces.
            std::string text =
                head + body(Tags(tags.begin(), tags.begin() + long(below(tags.size() + 1))));
            for (std::size_t pieces = below(below(10) == 0 ? 400 : 60); pieces > 0; --pieces)
                text += piece(tags);
            return text;
        }
        return damaged(below(20) == 0 ? body(tags) + head : head + body(tags), tags);
    }

    std::string answer()
    {
        const std::vector<std::string>& tags = oneOf(answers);
        return damaged(body(tags), tags);
    }

private:
    using Tags = std::vector<std::string>;

    std::size_t below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
    }

    template <typename List>
    const typename List::value_type& oneOf(const List& list)
    {
        return list[below(list.size())];
    }

    static std::string element(const std::string& tag, const std::string& value)
    {
        return "<" + tag + ">" + value + "</" + tag + ">";
    }

    std::string value()
    {
        static const Tags values = {"",
                                    "0",
                                    "1",
                                    "-1",
                                    "42",
                                    "2147483647",
                                    "2147483648",
                                    "-2147483648",
                                    "-2147483649",
                                    "99999999999999999999",
                                    " \t\n+7x",
                                    "+-1",
                                    "-",
                                    "- 1",
                                    "\v\f\r3",
                                    "sfiSuccess",
                                    "sfiFailureCallBackToMany",
                                    "sip:1001@example.com",
                                    "1,2,3,",
                                    "a, b,",
                                    "Zo\xc3\xab",
                                    "a<b",
                                    "a>b",
                                    "</",
                                    "<>",
                                    "a text that is longer than the room of a small string"};
        if (below(100) == 0)
            return std::string(below(300), 'v');
        return oneOf(values);
    }

    /// Something that could be mistaken for a tag.
    std::string piece(const Tags& tags)
    {
        const std::string tag = tags.empty() || below(8) == 0 ? "Method" : oneOf(tags);
        switch (below(9))
        {
        case 0:
            return "<" + tag + ">";
        case 1:
            return "</" + tag + ">";
        case 2:
            return "<" + tag;
        case 3:
            return tag + ">";
        case 4:
            return "/" + tag + ">";
        case 5:
            return "<<" + tag + ">";
        case 6:
            return "<" + tag.substr(0, 4) + ">";
        case 7:
            return element(tag, value());
        default:
            return std::string(1, "<>/ -+09"[below(8)]);
        }
    }

    std::string body(const Tags& tags)
    {
        Tags order = tags;
        if (below(3) == 0)
            std::shuffle(order.begin(), order.end(), random);
        const std::size_t dropped = below(3) == 0 ? 4 : 1000;  // one in so many
        std::string text;
        for (const std::string& tag : order)
            if (below(dropped) != 0)
                text += element(tag, below(40) == 0 ? piece(tags) : value());
        return text;
    }

    std::string damaged(std::string text, const Tags& tags)
    {
        for (std::size_t times = below(4); times > 0; --times)
        {
            const std::size_t at = below(text.size() + 1);
            const std::size_t length = below(30);
            switch (below(7))
            {
            case 0:
                text.insert(at, piece(tags));
                break;
            case 1:
                text.erase(at, length);
                break;
            case 2:
                text.replace(at, at < text.size() ? 1 : 0, piece(tags));
                break;
            case 3:
                text.insert(below(text.size() + 1), text.substr(at, 3 * length));
                break;
            case 4:
                text.resize(below(10) == 0 ? at : text.size());
                break;
            case 5:
                text += piece(tags);
                break;
            default:
                // Now and then much of it.
                if (below(4) == 0)
                    for (std::size_t copies = below(100); copies > 0; --copies)
                        text.insert(std::min(at, text.size()), piece(tags));
            }
        }
        return text;
    }

    std::mt19937 random;
};

std::string heard(Invoker& invoker, const std::string& message)
{
    WritingSubscriber subscriber;
    invoker.handleMessage(&subscriber, message.c_str(), 0, nullptr);
    return subscriber.said;
}

bool agree(const std::string& message, const std::string& library, const std::string& reference)
{
    if (library != reference)
        std::printf("the library and the reference implementation differ on\n%s\n"
                    "library:   %s\nreference: %s\n",
                    message.c_str(), library.c_str(), reference.c_str());
    return library == reference;
}

}  // namespace

int main(int count, char** words)
{
    const long messages = count > 1 ? std::atol(words[1]) : 30000;
    const unsigned int seed = count > 2 ? static_cast<unsigned int>(std::atol(words[2])) : 1;

    // Both objects start with the base that the framework knows.
    const std::unique_ptr<Proxy> proxy(
        reinterpret_cast<Proxy*>(createCommunicationsServiceProxy()));
    const std::unique_ptr<Invoker> invoker(
        reinterpret_cast<Invoker*>(createCommunicationsServiceEventInvoker()));
    auto& operations = dynamic_cast<CommunicationsServiceIfc&>(*proxy);
    FrameworkOfOne context;
    Channel channel(context);
    proxy->initProxy(channel);
    ReferenceInvoker referenceInvoker;
    ReferenceProxy referenceProxy(channel);

    Generator generator(seed);
    long callbacks = 0;
    for (long i = 0; i < messages; ++i)
    {
        const std::string event = generator.event();
        const std::string library = heard(*invoker, event);
        callbacks += library.empty() ? 0 : 1;
        channel.answer = generator.answer();
        if (!agree(event, library, heard(referenceInvoker, event)) ||
            !agree(channel.answer, asked(operations, channel), asked(referenceProxy, channel)))
        {
            std::printf("message %ld of seed %u\n", i, seed);
            return EXIT_FAILURE;
        }
    }
    std::printf("%ld events, %ld of them with a callback, and %ld answers: no difference\n",
                messages, callbacks, messages);
    // A generator that spoils everything would prove nothing.
    return callbacks > messages / 2 ? EXIT_SUCCESS : EXIT_FAILURE;
}

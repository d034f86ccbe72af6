// Every message that some tokens make, up to a number of tokens: the library against the reference
// implementation, as events and as answers. Chance leaves out the rare ones; this leaves out none.
//
// TokenSequences [tokens]

#include "CommunicationsServiceIfc.h"
#include "application/Callbacks.h"
#include "framework/Proxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Reference.h"
#include "tests/support/Tested.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <tuple>

namespace
{

/// A text and a number, which all messages here are about, and what came with them.
using Outcome = std::tuple<std::string, int, std::string>;

struct LastHeard
{
    Outcome outcome;

protected:
    template <typename... Arguments>
    void heard(const char*, const Arguments&...)
    {
        outcome = {"another callback", 0, ""};
    }
    void heard(const char* callback, const std::string& lineId, const int& callId)
    {
        outcome = {lineId, callId, callback};
    }
};

struct Subscriber : communications::Callbacks<LastHeard>
{
    using LastHeard::outcome;
};

Outcome told(Invoker& invoker, Subscriber& subscriber, const std::string& message)
{
    subscriber.outcome = {};
    invoker.handleMessage(&subscriber, message.c_str(), 0, nullptr);
    return subscriber.outcome;
}

template <typename Operations>
Outcome asked(Operations& operations)
{
    bool status = false;
    std::string uri;
    int rings = 0;
    const int result =
        operations.getForwardingConfiguration(sfiForwardingType(0), status, uri, rings);
    return {uri, rings, std::to_string(result) + (status ? " on" : " off")};
}

/// Calls `check` with every sequence of up to `most` tokens, and counts them.
long forEach(const std::vector<std::string>& tokens, int most, std::string& text,
             const std::function<bool()>& check)
{
    if (!check())
        std::exit(EXIT_FAILURE);
    long all = 1;
    const std::size_t length = text.size();
    if (most > 0)
        for (const std::string& token : tokens)
        {
            text += token;
            all += forEach(tokens, most - 1, text, check);
            text.resize(length);
        }
    return all;
}

bool agree(const std::string& text, const Outcome& library, const Outcome& reference)
{
    if (library == reference)
        return true;
    std::printf("the library and the reference implementation differ on\n%s\n", text.c_str());
    for (const auto& [name, number, rest] : {library, reference})
        std::printf("\"%s\" %d %s\n", name.c_str(), number, rest.c_str());
    return false;
}

}  // namespace

int main(int count, char** words)
{
    const int most = count > 1 ? std::atoi(words[1]) : 5;
    std::string text;

    TestedEventInvoker invoker;
    ReferenceInvoker referenceInvoker;
    Subscriber subscriber;
    long heldCalls = 0;
    const long events =
        forEach({"<Method>CallHeldEvent</Method>", "<Method>", "<LineID>", "</LineID>", "<CallID>",
                 "</CallID>", "<CallId>", "</LineI", "<", "/", ">", "7"},
                most, text,
                [&]
                {
                    const Outcome library = told(invoker, subscriber, text);
                    heldCalls += !std::get<2>(library).empty();
                    return agree(text, library, told(referenceInvoker, subscriber, text));
                });

    FrameworkOfOne context;
    Channel channel(context);
    TestedProxy proxy;
    proxy.initProxy(channel);
    ReferenceProxy referenceProxy(channel);
    const long answers = forEach(
        {"<uri>", "</uri>", "<cfnrRingCount>", "</cfnrRingCount>", "<status>", "</status",
         "<sfiResult>sfiSuccess</sfiResult>", "<ur", "<", "/", ">", "7"},
        most, text,
        [&]
        {
            channel.answer = text;
            return agree(text, asked<CommunicationsServiceIfc>(proxy), asked(referenceProxy));
        });

    std::printf("%ld events, %ld of them with a callback, and %ld answers: no difference\n", events,
                heldCalls, answers);
    return heldCalls > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

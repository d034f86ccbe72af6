#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_COMPARISON_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_COMPARISON_H

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Rules.h"
#include "tests/support/WritingSubscriber.h"

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

extern "C"
{
    CommunicationsServiceProxy* createCommunicationsServiceProxy();
    CommunicationsServiceEventInvoker* createCommunicationsServiceEventInvoker();
}

/// Ends the run, with both values, when the library does not do as the rules say.
inline void demandEqual(const std::string& what, const std::string& library,
                        const std::string& rules)
{
    if (library == rules)
        return;
    std::fprintf(stderr, "wrong: %s\n  library: %s\n  rules:   %s\n", what.c_str(), library.c_str(),
                 rules.c_str());
    std::abort();
}

inline void demandEqual(const char* what, long library, long rules)
{
    if (library != rules)
        demandEqual(what, std::to_string(library), std::to_string(rules));
}

/// All that the queries with fields or items send, and make of the channel's answer.
inline std::string asked(CommunicationsServiceIfc& operations, const Channel& channel)
{
    bool status = false;
    std::string text = "before";
    int n[4] = {70, 71, 72, 73};
    int result = operations.getForwardingConfiguration(sfiForwardingType(7), status, text, n[0]);
    std::string said = shown(result, status, text, n[0], channel.sent);

    unsigned int c[4] = {74, 75, 76, 77};
    text = "before";
    result =
        operations.getMessageWaitingIndicator(n[0], c[0], c[1], c[2], c[3], n[1], n[2], n[3], text);
    said += shown(result, n[0], c[0], c[1], c[2], c[3], n[1], n[2], n[3], text, channel.sent);

    std::vector<std::string> devices = {"before"};
    result = operations.getDevices(devices);
    return said + shown(result, devices, channel.sent);
}

/// The library, held against the rules.
struct Comparison
{
    Comparison() { proxy->initProxy(channel); }

    /// Returns what the application has heard.
    const std::string& event(const std::string& message)
    {
        Response response;
        heard.said.clear();
        invoker->handleMessage(&heard, message.c_str(), static_cast<int>(message.size()),
                               &response);
        demandEqual(message, heard.said, rules::callbacks(message));
        demandEqual("notifications", response.times, 1);
        return heard.said;
    }

    void answer(const std::string& answer)
    {
        channel.answer = answer;
        demandEqual(answer, asked(*proxy, channel), rules::answers(answer));
    }

    FrameworkOfOne context;
    Channel channel{context};
    const std::unique_ptr<CommunicationsServiceProxy> proxy{createCommunicationsServiceProxy()};
    const std::unique_ptr<CommunicationsServiceEventInvoker> invoker{
        createCommunicationsServiceEventInvoker()};
    WritingSubscriber heard;
};

#endif

#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_QUERIES_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_QUERIES_H

#include "CommunicationsServiceTypes.h"
#include "tests/support/Channel.h"
#include "tests/support/WritingSubscriber.h"

template <typename... Values>
std::string all(const Values&... values)
{
    std::string text;
    CallText call(text);
    (call.add(values), ...);
    return text;
}

/// All that the queries with fields or items send, and make of the channel's answer. It is asked of
/// the library and of the reference implementation alike.
template <typename Operations>
std::string asked(Operations& operations, const Channel& channel)
{
    bool status = false;
    std::string text = "before";
    int n[4] = {70, 71, 72, 73};
    int result = operations.getForwardingConfiguration(sfiForwardingType(7), status, text, n[0]);
    std::string said = all(result, status, text, n[0], channel.sent);

    unsigned int c[4] = {74, 75, 76, 77};
    text = "before";
    result =
        operations.getMessageWaitingIndicator(n[0], c[0], c[1], c[2], c[3], n[1], n[2], n[3], text);
    said += all(result, n[0], c[0], c[1], c[2], c[3], n[1], n[2], n[3], text, channel.sent);

    std::vector<std::string> devices = {"before"};
    result = operations.getDevices(devices);
    return said + all(result, devices, channel.sent);
}

#endif

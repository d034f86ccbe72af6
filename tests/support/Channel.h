#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_CHANNEL_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_CHANNEL_H

#include "framework/FrameworkContext.h"
#include "framework/InvokerResponse.h"
#include "framework/MarloException.h"
#include "framework/ProxyRequest.h"

#include <string>

struct Failure : MarloException
{
    Failure() = default;
    Failure(const Failure&) = default;
};

struct FrameworkOfOne : FrameworkContext
{
    std::string findChannel(Executable*) override { return "channel of one"; }
};

/// A channel that keeps the last request and gives one answer to all.
struct Channel : ProxyRequest
{
    explicit Channel(FrameworkContext& owner, std::size_t room = 0)
    {
        context = &owner;
        sent.reserve(room);
    }

    void sendRequest(const std::string& request, std::string& response) override
    {
        sent = request;
        response = appends ? response + answer : answer;
    }
    void sendRequestTimed(const std::string& request, std::string& response, int) override
    {
        sendRequest(request, response);
    }
    void sendSubscribe(const std::string& request, std::string& response, const std::string&,
                       int) override
    {
        sent = request;
        if (refuses)
            throw Failure();
        response = answer;
    }
    void sendOneWay(const std::string& message) override { sent = message; }
    void setProtocol(const std::string& name) override { sent = name; }

    std::string sent;
    std::string answer;
    bool appends = false;  ///< puts the answer behind what stands in the response
    bool refuses = false;
};

struct Response : InvokerResponse
{
    void messageHandled() override { ++times; }

    int times = 0;
};

#endif

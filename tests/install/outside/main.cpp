// An outside program that was given nothing but the installed library: sends one request over a
// channel of its own and takes one event. Written for C++11.
#include "CommunicationsServiceIfc.h"
#include "application/Subscriber.h"
#include "framework/Invoker.h"
#include "framework/Proxy.h"
#include "framework/ProxyRequest.h"

#include <iostream>
#include <memory>

extern "C" Proxy* createCommunicationsServiceProxy();
extern "C" Invoker* createCommunicationsServiceEventInvoker();

namespace
{

class Channel : public ProxyRequest
{
public:
    void sendRequest(const std::string& request, std::string& response) override
    {
        seen += request;
        response = "sfiSuccess";
    }
    void sendRequestTimed(const std::string&, std::string&, int) override {}
    void sendSubscribe(const std::string&, std::string&, const std::string&, int) override {}
    void sendOneWay(const std::string&) override {}
    void setProtocol(const std::string& protocolName) override { seen += protocolName + ":"; }

    std::string seen;
};

// Takes the one event that is sent here; the others do nothing.
struct Subscriber : communications::QuietSubscriber
{
    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        seen = lineId + "/" + std::to_string(callId);
    }

    std::string seen;
};

int failures = 0;

void expect(const std::string& what, const std::string& got, const std::string& wanted)
{
    if (got == wanted)
        return;
    std::cerr << what << ": got '" << got << "', expected '" << wanted << "'\n";
    ++failures;
}

}  // namespace

int main()
{
    Channel channel;
    const std::unique_ptr<Proxy> proxy(createCommunicationsServiceProxy());
    proxy->initProxy(channel);
    CommunicationsServiceIfc* const service = dynamic_cast<CommunicationsServiceIfc*>(proxy.get());
    if (service == nullptr)
    {
        std::cerr << "the proxy cannot be cast to CommunicationsServiceIfc\n";
        return 1;
    }
    expect("result", std::to_string(service->answerCall("1001", 12)), "5");
    expect("request", channel.seen,
           "CommunicationsServiceProtocol:"
           "<Method>AnswerCall</Method><Line>1001</Line><CallID>12</CallID>");
    expect("name", serialize(sfiServiceDoNotDisturb), "sfiServiceDoNotDisturb");

    Subscriber subscriber;
    const std::string event =
        "<Method>CallHeldEvent</Method><LineID>1002</LineID><CallID>34</CallID>";
    const std::unique_ptr<Invoker> invoker(createCommunicationsServiceEventInvoker());
    invoker->handleMessage(&subscriber, event.c_str(), static_cast<int>(event.size()), nullptr);
    expect("event", subscriber.seen, "1002/34");
    return failures;
}

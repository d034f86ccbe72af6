// An outside program that was given nothing but the installed library: sends one request over a
// channel of its own and takes one event. Written for C++11.
#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "framework/Executable.h"
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
class Subscriber : public Executable, public CommunicationsServiceEventIfc
{
public:
    void init(Context&) override {}
    void shutdown() override {}

    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        seen = lineId + "/" + std::to_string(callId);
    }

    void onCallStateChangeEvent(const std::string&, int, int, int, int, const std::string&,
                                const std::string&, const std::string&, CallPartyInfo*, int, int,
                                const std::string&, bool, int, int) override
    {
    }
    void onRegistrationStateChangeEvent(const std::string&, int, bool, int) override {}
    void onIncomingCallEvent(const std::string&, int, const std::string&, const std::string&,
                             const std::string&, const std::string&, const std::string&, bool, int,
                             const std::string&, const std::string&, int, bool, int, int, int,
                             bool) override
    {
    }
    void onIncomingPickupCallEvent(const std::string&, int, const std::string&, const std::string&,
                                   const std::string&) override
    {
    }
    void onCallRetrievedEvent(const std::string&, int, const std::string&, const std::string&,
                              const std::string&, int, int, bool) override
    {
    }
    void onFeatureSuccessEvent(const std::string&, int, int) override {}
    void onFeatureFailedEvent(const std::string&, int, int, int) override {}
    void onRemoteEndpointDetailsChangedEvent(const std::string&, int, const std::string&,
                                             const std::string&, const std::string&, bool,
                                             bool) override
    {
    }
    void onIncomingCallMissedEvent(const std::string&, int, const std::string&, const std::string&,
                                   const std::string&, int, const std::string&, const std::string&,
                                   int) override
    {
    }
    void onCallForwardedEvent(const std::string&, int, const std::string&, const std::string&,
                              const std::string&, const std::string&, int) override
    {
    }
    void onIncomingAssociatedCallEvent(const std::string&, int, int) override {}
    void onDevicesChangedEvent() override {}
    void onMessageWaitingEvent(const std::string&, int, unsigned int, unsigned int, unsigned int,
                               unsigned int, int, int, int, const std::string&) override
    {
    }
    void onDoNotDisturbEvent(const std::string&, bool) override {}
    void onAgentStateEvent(const std::string&, const std::string&) override {}
    void onSecurityStatusChanged(const std::string&, int, int, std::vector<int>&,
                                 std::vector<std::string>&) override
    {
    }
    void onCallRecordingStatusEvent(const std::string&, int, const std::string&) override {}
    void onPreemptionStatusChanged(const std::string&, int, int, int, const std::string&) override
    {
    }
    void onImpactLevelChanged(const std::string&, int, int, int) override {}
    void onSystemStatusEvent(const std::string&, const std::string&) override {}
    void onServerFeatureStatusEvent(const std::string&, const std::string&) override {}
    void onB2buaCSTAResponse(const std::string&, bool, std::string&) override {}
    void onB2buaCSTAEventOrRequest(const std::string&, std::string&) override {}
    void onConferenceStatusEvent(const std::string&, int, const std::string&) override {}
    void onCallCompletionEvent(const std::string&, const std::string&, int, int, bool) override {}
    void onCallCompletionFailedEvent(const std::string&, const std::string&, int) override {}
    void onBluetoothAudioStatusChanged(const std::string&, int, bool, bool, bool) override {}

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

// Answers every call that arrives, and ends with 0 once it speaks with somebody.
#include "CommunicationsServiceIfc.h"
#include "application/Application.h"
#include "kit/framework/Subscription.h"
#include "kit/service/EmbeddedConnection.h"

#include <iostream>

class AnsweringMachine
    : public communications::EventSubscriber<communications::CallStateChangeEvent>
{
public:
    AnsweringMachine(CommunicationsServiceIfc& service, const communications::CallStates& states)
        : service_(service), states_(states)
    {
    }

    void on(const communications::CallStateChangeEvent& event) override
    {
        if (event.callState == states_.offered)
            service_.acceptCall(event.lineId, event.callId, false);
        else if (event.callState == states_.ringing)
            service_.answerCall(event.lineId, event.callId);
        else if (event.callState == states_.connected)
            std::cout << event.lineId << " speaks with " << event.uri << "\n";
        connected = event.callState == states_.connected;
    }

    bool connected = false;

private:
    CommunicationsServiceIfc& service_;
    const communications::CallStates states_;  // the service's own numbers
};

int main()
{
    kit::Framework framework(std::make_unique<kit::EmbeddedConnection>());
    AnsweringMachine machine(framework.service(), kit::callStates());
    framework.service().activate();
    const kit::Subscription subscription(framework, machine);

    kit::ControlAnswer answer;
    framework.connection()->control("call 1001 from 2001", answer, std::chrono::seconds(1));
    framework.settle(std::chrono::seconds(10));
    return machine.connected ? 0 : 1;
}

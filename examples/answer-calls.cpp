// Answers every call that arrives, and ends with 0 once it speaks with somebody.
#include "application/Subscriber.h"
#include "kit/framework/Framework.h"
#include "kit/service/EmbeddedConnection.h"

#include <iostream>

class AnsweringMachine : public communications::QuietSubscriber
{
public:
    explicit AnsweringMachine(CommunicationsServiceIfc& service) : service_(service) {}

    void onCallStateChangeEvent(const std::string& line, int call, int state, int, int,
                                const std::string& uri, const std::string&, const std::string&,
                                CallPartyInfo*, int, int, const std::string&, bool, int,
                                int) override
    {
        if (state == kit::numbers::callOffered)
            service_.acceptCall(line, call, false);
        else if (state == kit::numbers::callRinging)
            service_.answerCall(line, call);
        else if (state == kit::numbers::callConnected)
            std::cout << line << " speaks with " << uri << "\n";
        connected = state == kit::numbers::callConnected;
    }

    bool connected = false;

private:
    CommunicationsServiceIfc& service_;
};

int main()
{
    kit::Framework framework(std::make_unique<kit::EmbeddedConnection>());
    AnsweringMachine machine(framework.service());
    framework.service().activate();
    framework.service().subscribe(&machine);

    kit::ControlAnswer answer;
    framework.connection()->control("call 1001 from 2001", answer, std::chrono::seconds(1));
    framework.settle(std::chrono::seconds(10));
    framework.remove(machine);
    return machine.connected ? 0 : 1;
}

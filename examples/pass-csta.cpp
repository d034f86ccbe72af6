// Passes a CSTA request through the service to its peer and prints what the peer answers.
#include "application/Subscriber.h"
#include "kit/framework/Subscription.h"
#include "kit/service/EmbeddedConnection.h"

#include <iostream>

struct CstaClient : communications::QuietSubscriber
{
    void onB2buaCSTAResponse(const std::string& line, bool success, std::string& text) override
    {
        std::cout << line << (success ? ": " : " was refused: ") << text << "\n";
        answered = success;
    }

    void onB2buaCSTAEventOrRequest(const std::string& line, std::string& text) override
    {
        std::cout << line << " hears " << text << "\n";
    }

    bool answered = false;
};

int main()
{
    kit::Framework framework(std::make_unique<kit::EmbeddedConnection>());
    CommunicationsServiceIfc& service = framework.service();
    CstaClient client;
    service.activate();
    const kit::Subscription subscription(framework, client);
    if (service.SendCSTARequest(
            "1001", "<GetDoNotDisturb><device>1001</device></GetDoNotDisturb>") != sfiSuccess)
        std::cout << "the service does not pass it on\n";
    framework.settle(std::chrono::seconds(10));
    return client.answered ? 0 : 1;
}

// Goes on after the service was restarted: nothing comes back by itself, and nothing is sent twice.
#include "application/Subscriber.h"
#include "kit/framework/Exception.h"
#include "kit/framework/Subscription.h"
#include "kit/service/EmbeddedConnection.h"

#include <iostream>

struct Watcher : communications::QuietSubscriber
{
    void onDoNotDisturbEvent(const std::string& device, bool on) override
    {
        std::cout << device << (on ? " wants peace\n" : " can be disturbed\n");
    }
};

int main()
{
    auto connection = std::make_unique<kit::EmbeddedConnection>();
    const auto simulation = connection->service();
    kit::Framework framework(std::move(connection));
    CommunicationsServiceIfc& service = framework.service();
    Watcher watcher;
    service.activate();
    const kit::Subscription subscription(framework, watcher);

    kit::ControlAnswer answer;
    framework.connection()->control("go away", answer, std::chrono::seconds(1));
    try
    {
        subscription.renew();
    }
    catch (const MarloException& exception)
    {
        std::cout << kit::textOf(exception) << "\n";
    }
    // A new connection, and everything from the beginning.
    framework.reconnect(std::make_unique<kit::EmbeddedConnection>(simulation));
    service.activate();
    subscription.renew();
    const int result = service.setDoNotDisturb("1001", true);
    framework.settle(std::chrono::seconds(10));
    return result == sfiSuccess ? 0 : 1;
}

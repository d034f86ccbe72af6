// An application in a process of its own: 200 lamps of its number, then it waits for the last event.
// Usage: kit-test-application SOCKET NUMBER

#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"
#include "kit/testing/EventRecorder.h"

#include <chrono>

int main(int count, char** arguments)
{
    if (count != 3)
        return 1;
    const std::string number = arguments[2];
    kit::EventRecorder events;
    kit::Framework framework(std::make_unique<kit::SocketConnection>(arguments[1]));
    if (framework.service().subscribe(&events) != sfiSuccess)
        return 2;
    for (int i = 0; i < 200; ++i)
        if (framework.service().setLampMode("1001", number + "-" + std::to_string(i), 1) !=
            sfiSuccess)
            return 3;
    const std::chrono::seconds atMost(60);
    return events.waitFor("systemStatusEvent", {{"statusInfo", "all"}}, atMost) ? 0 : 4;
}

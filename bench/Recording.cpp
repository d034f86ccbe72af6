// What recording costs the thread that calls: bench-recording LIBRARY. In rounds that fit into the
// recorder's buffer, with pauses in which its own thread writes; the middle of all rounds is told.

#include "CommunicationsServiceIfc.h"
#include "framework/Invoker.h"
#include "framework/Proxy.h"
#include "tests/support/Channel.h"
#include "tests/support/WritingSubscriber.h"

#include <dlfcn.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <thread>
#include <vector>

namespace
{

using Clock = std::chrono::steady_clock;

constexpr int rounds = 25;
constexpr int calls = 400;

template <typename Object>
Object* create(void* library, const char* factory)
{
    const auto make = reinterpret_cast<Object* (*)()>(dlsym(library, factory));
    return make != nullptr ? make() : nullptr;
}

void measure(const char* name, const std::function<void()>& call)
{
    std::vector<double> times;
    for (int round = 0; round < rounds; ++round)
    {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < calls; ++i)
            call();
        times.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count() /
                        calls);
        std::this_thread::sleep_for(std::chrono::milliseconds(400));
    }
    std::sort(times.begin(), times.end());
    std::printf("%-24s %6.0f ns a call\n", name, times[rounds / 2]);
}

}  // namespace

int main(int argc, char** argv)
{
    void* const library = argc == 2 ? dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
    if (library == nullptr)
    {
        std::printf("usage: %s LIBRARY\n", argv[0]);
        return 2;
    }
    Proxy* const proxy = create<Proxy>(library, "createCommunicationsServiceProxy");
    Invoker* const invoker = create<Invoker>(library, "createCommunicationsServiceEventInvoker");
    FrameworkOfOne context;
    Channel channel(context);
    channel.answer = "sfiSuccess";
    proxy->initProxy(channel);
    auto& service = dynamic_cast<CommunicationsServiceIfc&>(*proxy);
    WritingSubscriber subscriber;
    subscriber.writes = false;
    const std::string line = "1001";
    measure("answerCall", [&] { service.answerCall(line, 12); });
    measure("CallHeldEvent",
            [&]
            {
                invoker->handleMessage(&subscriber,
                                       "<Method>CallHeldEvent</Method><LineID>1001</LineID>"
                                       "<CallID>12</CallID>",
                                       0, nullptr);
            });
    delete invoker;
    delete proxy;
    return 0;
}

// The loading side: opens the built library as the framework does, makes every call and takes every
// event. It is built by this compiler and by the other one, with the framework's symbols inside the
// program or in another shared object, and opens the library with RTLD_LOCAL or RTLD_GLOBAL.

#include "CommunicationsServiceIfc.h"
#include "framework/Invoker.h"
#include "framework/Proxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Events.h"
#include "tests/support/Requests.h"
#include "tests/support/WritingSubscriber.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

class CommunicationsServiceProxy;
class CommunicationsServiceEventInvoker;

namespace
{

int checks = 0;
int failures = 0;

void check(bool holds, const char* what, const std::string& seen = "")
{
    ++checks;
    if (holds)
        return;
    ++failures;
    std::printf("failed: %s %s\n", what, seen.c_str());
}

template <typename Exception, typename Call>
bool throws(Call call)
{
    try
    {
        call();
    }
    catch (const Exception&)
    {
        return true;
    }
    catch (...)
    {
    }
    return false;
}

// A factory returns the library's own class, whose object starts with the base that is known here.
template <typename Object, typename Own>
std::unique_ptr<Object> create(void* library, const char* factory)
{
    const auto make = reinterpret_cast<Own* (*)()>(dlsym(library, factory));
    if (make == nullptr)
    {
        std::printf("%s\n", dlerror());
        std::exit(1);
    }
    return std::unique_ptr<Object>(reinterpret_cast<Object*>(make()));
}

void requests(Proxy& proxy, WritingSubscriber& subscriber)
{
    FrameworkOfOne context;
    Channel channel(context);
    proxy.initProxy(channel);
    check(channel.sent == "CommunicationsServiceProtocol", "initProxy", channel.sent);

    CommunicationsServiceIfc* const service = dynamic_cast<CommunicationsServiceIfc*>(&proxy);
    check(service != nullptr, "the request interface is found from the proxy");
    if (service == nullptr)
        return;
    for (const samples::Request& request : samples::requests)
    {
        request.call(*service);
        check(channel.sent == request.sent, request.sent.c_str(), channel.sent);
    }
    service->subscribe(&subscriber);
    check(channel.sent == "<Method>Subscribe</Method>", "subscribe", channel.sent);
    channel.answer = "sfiFailureCallBackToMany";
    check(service->activateCallbackBusy("1001", 1) == sfiFailureCallBackToMany, "result code");
    channel.answer = "<1001><1002>";
    std::vector<std::string> devices = {"1000"};
    check(service->getDevices(devices) == sfiSuccess && devices.size() == 3 && devices[2] == "1002",
          "a list that both sides change");
    check(service->csCommunicationsService(nullptr).empty(), "a text that the library returns");

    channel.refuses = true;
    check(throws<MarloException>([&] { service->subscribe(&subscriber); }),
          "the framework's exception comes back as its own type");
    check(throws<std::length_error>([&] { service->processSignallingComponentEvent("", -1); }),
          "the standard library's exception, from a request");
    proxy.timerEvent(1);
    proxy.shutdown();
}

void events(Invoker& invoker, WritingSubscriber& subscriber)
{
    Response response;
    invoker.initInvoker(nullptr);
    for (const samples::Sample& sample : samples::eventSamples)
    {
        subscriber.said.clear();
        invoker.handleMessage(&subscriber, sample.text.c_str(), 0, &response);
        check(subscriber.said == sample.said, sample.text.c_str(), subscriber.said);
    }
    check(response.times == 28, "each event is notified");
    ThrowingSubscriber throwing;
    const char* const held = samples::eventSamples[4].text.c_str();
    check(throws<Thrown>([&] { invoker.handleMessage(&throwing, held, 0, nullptr); }),
          "an exception of the callback passes");
    check(throws<std::logic_error>([&] { invoker.handleMessage(&throwing, nullptr, 0, nullptr); }),
          "the standard library's exception, from an event");
}

// The two names are the compiler's, which applications have in them.
void exports(void* library)
{
    const auto name = reinterpret_cast<std::string (*)(sfiServiceState)>(
        dlsym(library, "_Z9serializeB5cxx1115sfiServiceState"));
    check(name != nullptr && name(sfiServiceDoNotDisturb) == "sfiServiceDoNotDisturb",
          "names of states are exported");
    const auto find = reinterpret_cast<std::string (*)(void*, Executable*)>(
        dlsym(library, "_ZN16FrameworkContext11findChannelB5cxx11EP10Executable"));
    FrameworkOfOne context;
    check(find != nullptr && find(&context, nullptr).empty(),
          "the default body is exported, which is not the override");
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
    {
        std::printf("usage: %s LIBRARY local|global\n", argv[0]);
        return 2;
    }
    const int scope = std::strcmp(argv[2], "global") == 0 ? RTLD_GLOBAL : RTLD_LOCAL;
    void* const library = dlopen(argv[1], RTLD_NOW | scope);
    if (library == nullptr)
    {
        std::printf("%s\n", dlerror());
        return 1;
    }
    {
        WritingSubscriber subscriber;
        const auto proxy =
            create<Proxy, CommunicationsServiceProxy>(library, "createCommunicationsServiceProxy");
        const auto invoker = create<Invoker, CommunicationsServiceEventInvoker>(
            library, "createCommunicationsServiceEventInvoker");
        requests(*proxy, subscriber);
        events(*invoker, subscriber);
        exports(library);
    }
    check(dlclose(library) == 0, "the library is closed");
    std::printf("%d of %d checks passed\n", checks - failures, checks);
    return failures == 0 ? 0 : 1;
}

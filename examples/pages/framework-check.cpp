// Checks a framework's own headers against what the library expects of them. Integrators put those
// headers in place of the ones below, compile this, and run it once on the phone: it prints what
// differs and returns the number of differences.
#include "framework/ClientUtils.h"
#include "framework/Executable.h"
#include "framework/FrameworkContext.h"
#include "framework/Invoker.h"
#include "framework/InvokerResponse.h"
#include "framework/Logging.h"
#include "framework/MarloException.h"
#include "framework/Proxy.h"
#include "framework/ProxyRequest.h"
#include "framework/Serializer.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <type_traits>

// The library copies the exception into as much memory as its own declaration of it takes.
static_assert(sizeof(MarloException) <= 1024 + alignof(std::max_align_t),
              "MarloException is too large");
static_assert(std::is_polymorphic<MarloException>::value,
              "MarloException has no virtual destructor");
static_assert(std::is_copy_constructible<MarloException>::value, "MarloException cannot be copied");

// The symbols that are resolved when the library is opened, with exactly these arguments.
static_assert(std::is_same<decltype(&ClientUtils::itos), std::string (*)(int)>::value, "itos");
static_assert(std::is_same<decltype(&loggingOnAppOxa), int (*)(const char*, int)>::value,
              "loggingOnAppOxa");
static_assert(std::is_same<decltype(&logAppOxa),
                           void (*)(const char*, const char*, int, int, const char*)>::value,
              "logAppOxa");
static_assert(
    sizeof(static_cast<std::vector<std::string> (*)(std::string&)>(&Serializer::deserialize)) != 0,
    "deserialize");
static_assert(
    sizeof(static_cast<void (*)(std::string&, std::vector<int>&)>(&Serializer::deserialize)) != 0,
    "deserialize");

namespace
{

int differences = 0;

/// Slot of a virtual function, counted from 1, as the common C++ ABI and that of ARM encode it.
template <typename Function>
std::size_t slotOf(Function function)
{
    std::uintptr_t words[2];
    static_assert(sizeof words == sizeof function, "not the ABI that this check knows");
    std::memcpy(words, &function, sizeof words);
#if defined(__arm__) || defined(__aarch64__)
    return words[0] / sizeof(void*) + 1;
#else
    return (words[0] - 1) / sizeof(void*) + 1;
#endif
}

void expectSlot(const char* name, std::size_t found, std::size_t expected)
{
    if (found == expected)
        return;
    std::cout << name << " stands in slot " << found << ", the library calls slot " << expected
              << "\n";
    ++differences;
}

}  // namespace

int main()
{
    expectSlot("Executable::init", slotOf(&Executable::init), 3);
    expectSlot("Executable::shutdown", slotOf(&Executable::shutdown), 4);
    expectSlot("Executable::timerEvent", slotOf(&Executable::timerEvent), 5);
    expectSlot("Proxy::initProxy", slotOf(&Proxy::initProxy), 6);
    expectSlot("Invoker::handleMessage", slotOf(&Invoker::handleMessage), 3);
    expectSlot("Invoker::initInvoker", slotOf(&Invoker::initInvoker), 4);
    expectSlot("FrameworkContext::findChannel", slotOf(&FrameworkContext::findChannel), 5);
    expectSlot("InvokerResponse::messageHandled", slotOf(&InvokerResponse::messageHandled), 2);
    expectSlot("ProxyRequest::sendRequest", slotOf(&ProxyRequest::sendRequest), 7);
    expectSlot("ProxyRequest::sendRequestTimed", slotOf(&ProxyRequest::sendRequestTimed), 8);
    expectSlot("ProxyRequest::sendSubscribe", slotOf(&ProxyRequest::sendSubscribe), 10);
    expectSlot("ProxyRequest::sendOneWay", slotOf(&ProxyRequest::sendOneWay), 14);
    expectSlot("ProxyRequest::setProtocol", slotOf(&ProxyRequest::setProtocol), 17);
    if (differences == 0)
        std::cout << "the framework's headers agree with what the library expects\n";
    return differences;
}

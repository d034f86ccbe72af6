// The binary interface: tables of virtual operations, called and replaced slot by slot as objects
// that were built elsewhere do. The slots here are numbers on purpose, the names stand in the headers.
// The proxy's own table, which nobody calls from outside, is held by the comparison of the interface.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Events.h"
#include "tests/support/Requests.h"
#include "tests/support/Tested.h"
#include "tests/support/TracedFramework.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>

extern "C"
{
    CommunicationsServiceProxy* createCommunicationsServiceProxy();
    CommunicationsServiceEventInvoker* createCommunicationsServiceEventInvoker();
}

using support::Lines;

namespace
{

void** tableOf(const void* object)
{
    void** table;
    std::memcpy(&table, object, sizeof table);
    return table;
}

/// One slot, counted from 1, of one object's table.
struct Slot
{
    void* object;
    int number;

    template <class Result, class... Arguments>
    SUPPORT_ANY_FUNCTION_TYPE Result call(Arguments... arguments) const
    {
        void* const entry = tableOf(object)[number - 1];
        return reinterpret_cast<Result (*)(void*, Arguments...)>(entry)(object, arguments...);
    }
};

/// Replaces the first entries of an object's table for as long as this lives. The two entries in
/// front of them, with the type information, stay.
template <std::size_t size>
class OtherTable
{
public:
    OtherTable(void* object, const std::array<void*, size>& entries) : object_(object)
    {
        before_ = tableOf(object);
        std::copy(before_ - 2, before_, table_.begin());
        std::copy(entries.begin(), entries.end(), table_.begin() + 2);
        set(&table_[2]);
    }
    OtherTable(const OtherTable&) = delete;
    OtherTable& operator=(const OtherTable&) = delete;
    ~OtherTable() { set(before_); }

private:
    void set(void** table) { std::memcpy(object_, &table, sizeof table); }

    void* object_;
    void** before_;
    std::array<void*, size + 2> table_;
};

template <int number>
void hit(void*)
{
    support::trace("slot " + show(number));
}

template <int... numbers>
std::array<void*, sizeof...(numbers)> hits(std::integer_sequence<int, numbers...>)
{
    return {reinterpret_cast<void*>(hit<numbers>)...};
}

std::string noName(void*, const char*)
{
    support::trace("slot 46");
    return "";
}

/// Whoever calls by the header calls these slots, counted from 0.
TEST(Slots, OfTheRequestInterfaceAreInOrder)
{
    const std::unique_ptr<CommunicationsServiceProxy> proxy(createCommunicationsServiceProxy());
    CommunicationsServiceIfc& service = *proxy;
    std::array<void*, 48> entries = hits(std::make_integer_sequence<int, 48>());
    entries[46] = reinterpret_cast<void*>(noName);
    const OtherTable<48> table(&service, entries);
    support::takeTrace();
    // In the interface's order, some several times.
    for (const samples::Request& request : samples::requests)
        request.call(service);
    Lines called = support::takeTrace();
    called.erase(std::unique(called.begin(), called.end()), called.end());
    called.resize(45);
    service.subscribe(nullptr);
    service.csCommunicationsService(nullptr);
    service.activateStoredFwd();
    const Lines others = support::takeTrace();
    called.insert(called.begin() + 20, others[0]);
    called.insert(called.end(), others.begin() + 1, others.end());
    for (int slot = 0; slot < 48; ++slot)
        EXPECT_EQ(called[std::size_t(slot)], "slot " + show(slot));
}

TEST(Slots, OfTheFrameworksBasesAreInOrder)
{
    support::Channel channel;
    CommunicationsServiceProxy* const proxy = createCommunicationsServiceProxy();
    EXPECT_EQ(static_cast<void*>(static_cast<Executable*>(proxy)), proxy) << "its first base";
    Slot{proxy, 3}.call<void>(static_cast<Context*>(nullptr));  // init
    Slot{proxy, 4}.call<void>();                                // shutdown
    Slot{proxy, 5}.call<void>(77);                              // timerEvent
    EXPECT_EQ(support::takeTrace(), Lines());
    Slot{proxy, 6}.call<void>(&channel);  // initProxy
    EXPECT_EQ(support::takeTrace(), Lines{"setProtocol CommunicationsServiceProtocol"});
    Slot{proxy, 2}.call<void>();  // deletes it

    support::Subscriber subscriber;
    support::Response response;
    CommunicationsServiceEventInvoker* const invoker = createCommunicationsServiceEventInvoker();
    Slot{invoker, 4}.call<void>(static_cast<FrameworkContext*>(nullptr));  // initInvoker
    Slot{invoker, 3}.call<void, Executable*, const char*>(
        &subscriber, "<Method>DevicesChangedEvent</Method>", 0, static_cast<void*>(&response));
    EXPECT_EQ(support::takeTrace(), (Lines{"onDevicesChangedEvent()", "response notified"}));
    Slot{invoker, 2}.call<void>();  // deletes it
    EXPECT_EQ(sizeof(CommunicationsServiceEventInvoker), sizeof(void*));
    EXPECT_EQ(sizeof(CommunicationsServiceProxy), 3 * sizeof(void*));
}

TEST(Slots, OfTheSubscriberAreCalledInOrder)
{
    // Slots counted from 0, of the events in the table's order.
    const int slots[] = {0,  1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 12, 13, 14,
                         15, 20, 21, 11, 22, 23, 24, 16, 18, 19, 17, 25, 26, 27};
    support::Subscriber subscriber;
    support::Response response;
    TestedEventInvoker invoker;
    support::takeTrace();
    const OtherTable<28> table(static_cast<CommunicationsServiceEventIfc*>(&subscriber),
                               hits(std::make_integer_sequence<int, 28>()));
    const OtherTable<2> responseTable(&response, hits(std::make_integer_sequence<int, 2>()));
    for (std::size_t i = 0; i < 28; ++i)
    {
        const std::string& message = samples::eventSamples[i].text;
        invoker.handleMessage(&subscriber, message.c_str(), 0, &response);
        EXPECT_EQ(support::takeTrace(), (Lines{"slot " + show(slots[i]), "slot 1"})) << message;
    }
}

Executable* asked;

std::string findIt(void*, Executable* executable)
{
    asked = executable;
    support::trace("found");
    return "name";
}

TEST(Slots, OfTheChannelAndItsContextAreCalledByTheirNumbers)
{
    support::Channel channel;
    support::NamingContext context;
    support::Subscriber subscriber;
    TestedProxy proxy;
    // Slots counted from 0 in the trace, so one less than in the names.
    const OtherTable<17> table(&channel, hits(std::make_integer_sequence<int, 17>()));
    std::array<void*, 5> entries = hits(std::make_integer_sequence<int, 5>());
    entries[4] = reinterpret_cast<void*>(findIt);
    const OtherTable<5> contextTable(&context, entries);
    // The pointer to the context stands right behind the pointer to the table.
    void* const contextPointer = &context;
    std::memcpy(reinterpret_cast<char*>(static_cast<ProxyRequest*>(&channel)) + sizeof(void*),
                &contextPointer, sizeof contextPointer);

    support::takeTrace();
    proxy.initProxy(channel);
    proxy.alternateCalls("1001");
    proxy.activate();
    proxy.setIsInServiceInitiatedState("1001", true);
    EXPECT_EQ(support::takeTrace(), (Lines{"slot 16", "slot 6", "slot 7", "slot 13"}));
    proxy.subscribe(&subscriber);
    const std::string logging = "loggingOnAppOxa 'SIP Communications Service' 5";
    EXPECT_EQ(support::takeTrace(), (Lines{logging, "found", "slot 9", logging}));
    EXPECT_EQ(asked, &subscriber);
}

}  // namespace

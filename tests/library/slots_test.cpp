// The binary interface: tables of virtual operations, called and replaced slot by slot as objects
// that were built elsewhere do. The slots here are numbers on purpose, the names stand in the headers.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Tested.h"
#include "tests/support/TracedFramework.h"

#include <gtest/gtest.h>

#include <array>
#include <set>

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

// Arguments for raw calls.
const std::string line = "L";
std::string changeable = "M";
int number;
unsigned int counter;
bool flag;
std::vector<std::string> texts;
sfiServiceState state;

using Text = const std::string*;
using Chars = const char*;

struct Operation
{
    const char* name;  ///< as in the request; the first letters tell
    int inInterface;   ///< slot of CommunicationsServiceIfc
    int inProxy;       ///< slot of the proxy's own table
    void (*call)(Slot slot);
};

// clang-format off
const Operation operations[] = {
    {"SigEvent:ab", 1, 7, [](Slot s) { s.call<void, Chars, int>("ab", 2); }},
    {"Activate", 2, 8, [](Slot s) { s.call<int>(); }},
    {"Deactivate", 3, 9, [](Slot s) { s.call<int>(true); }},
    {"CallClearRequest", 4, 10, [](Slot s) { s.call<int>(&line, 1, 2); }},
    {"OutgoingCallMakeRequest", 5, 11, [](Slot s) { s.call<int, Text, int, Chars>(&line, 1, "", true, true, true); }},
    {"AcceptCall", 6, 12, [](Slot s) { s.call<int>(&line, 1, true); }},
    {"AnswerCall", 7, 13, [](Slot s) { s.call<int>(&line, 1); }},
    {"DeflectCall", 8, 14, [](Slot s) { s.call<int, Text, int, Chars>(&line, 1, ""); }},
    {"HoldCall", 9, 15, [](Slot s) { s.call<int>(&line, 1, 2, true); }},
    {"RetrieveCall", 10, 16, [](Slot s) { s.call<int>(&line, 1); }},
    {"AttendedTransfer", 11, 18, [](Slot s) { s.call<int>(&line, 1, 2); }},
    {"BlindTransfer", 12, 19, [](Slot s) { s.call<int, Text, int, Chars>(&line, 1, ""); }},
    {"SendCSTARequest", 13, 22, [](Slot s) { s.call<int>(&line, &line); }},
    {"SendUACSTAServerMessage", 14, 54, [](Slot s) { s.call<void>(&changeable, &changeable); }},
    {"InitializeOrFinalizeServerFeatures", 15, 23, [](Slot s) { s.call<void>(&line, true); }},
    {"ActivateCallbackRinging", 16, 26, [](Slot s) { s.call<int>(&line, 1); }},
    {"ActivateCallbackBusy", 17, 27, [](Slot s) { s.call<int>(&line, 1); }},
    {"CancelCallbacks", 18, 28, [](Slot s) { s.call<int>(&line, 1, &line, 2, true); }},
    {"Consult", 19, 17, [](Slot s) { s.call<int, Text, int, Chars>(&line, 1, ""); }},
    {"RefuseCall", 20, 20, [](Slot s) { s.call<int>(&line, 1, 2); }},
    {"Subscribe", 21, 21, [](Slot s) { support::Subscriber subscriber; s.call<int>(static_cast<Executable*>(&subscriber)); }},
    {"DirectedPickupCall", 22, 24, [](Slot s) { s.call<int>(&line, 1, &line, true); }},
    {"GroupPickupCall", 23, 25, [](Slot s) { s.call<int>(&line, 1); }},
    {"SetServiceState", 24, 30, [](Slot s) { s.call<int>(1); }},
    {"GetServiceState", 25, 31, [](Slot s) { s.call<int>(&state); }},
    {"SetDoNotDisturb", 26, 32, [](Slot s) { s.call<int>(&line, true); }},
    {"GetDoNotDisturb", 27, 33, [](Slot s) { s.call<int>(&line, &flag); }},
    {"SetAgentState", 28, 36, [](Slot s) { s.call<int>(&line, &line); }},
    {"SetMicrophoneMute", 29, 34, [](Slot s) { s.call<int>(true); }},
    {"GetMicrophoneMute", 30, 35, [](Slot s) { s.call<int>(&flag); }},
    {"SystemStatus", 31, 37, [](Slot s) { s.call<int, Chars, Chars>("", ""); }},
    {"GenerateDigits", 32, 38, [](Slot s) { s.call<int, Text, int, Chars>(&line, 1, ""); }},
    {"GetDevices", 33, 29, [](Slot s) { s.call<int>(&texts); }},
    {"ConferenceCall", 34, 39, [](Slot s) { s.call<int>(&line, 1, 2, 3); }},
    {"RemoveConfParticipant", 35, 40, [](Slot s) { s.call<void>(1, &line, &line); }},
    {"getManualHoldIndication", 36, 41, [](Slot s) { s.call<bool>(&line, 1); }},
    {"AlternateCalls", 37, 42, [](Slot s) { s.call<int>(&line); }},
    {"GetMessageWaitingIndicator", 38, 43, [](Slot s) { s.call<int>(&number, &counter, &counter, &counter, &counter, &number, &number, &number, &changeable); }},
    {"setAssociatedCalls", 39, 44, [](Slot s) { s.call<int>(true); }},
    {"setLampMode", 40, 45, [](Slot s) { s.call<int>(&line, &line, 1); }},
    {"makeSecurityChangeReinvite", 41, 46, [](Slot s) { s.call<int>(&line, 1, true); }},
    {"setIsInServiceInitiatedState", 42, 49, [](Slot s) { s.call<void>(&line, true); }},
    {"setForwardingConfiguration", 43, 47, [](Slot s) { s.call<int>(&line, 1, true, &line, 2, true); }},
    {"getForwardingConfiguration", 44, 48, [](Slot s) { s.call<int>(1, &flag, &changeable, &number); }},
    {"callbackDOFeatureCallID", 45, 50, [](Slot s) { s.call<void>(&line, 1); }},
    {"isCallHoldPossible", 46, 51, [](Slot s) { s.call<bool>(&line); }},
    {"csCommunicationsService", 47, 52, [](Slot s) { support::trace("csCommunicationsService" + s.call<std::string, Chars>("name")); }},
    {"activateStoredFwd", 48, 53, [](Slot s) { s.call<void>(); support::trace("activateStoredFwd"); }},
};
// clang-format on

/// What was sent, without the channel operation and the brackets of the method.
std::string sent()
{
    std::string last;
    for (const std::string& each : support::takeTrace())
        if (each.find("oggingOn") == std::string::npos && each != "findChannel")
            last = each.substr(each.find(' ') + 1);
    return last.compare(0, 8, "<Method>") == 0 ? last.substr(8, last.find('<', 8) - 8) : last;
}

TEST(Slots, OfTheRequestInterfaceAndOfTheProxyAreInOrder)
{
    support::Channel channel;
    support::NamingContext context;
    channel.context = &context;
    TestedProxy proxy;
    proxy.initProxy(channel);
    support::takeTrace();

    std::set<int> slots;
    for (const Operation& each : operations)
    {
        each.call({static_cast<CommunicationsServiceIfc*>(&proxy), each.inInterface});
        EXPECT_EQ(sent(), each.name) << "slot " << each.inInterface << " of the interface";
        each.call({&proxy, each.inProxy});
        EXPECT_EQ(sent(), each.name) << "slot " << each.inProxy << " of the proxy";
        slots.insert({-each.inInterface, each.inProxy});
    }
    // 1 to 48 of the interface, here below zero, and 7 to 54 of the proxy.
    EXPECT_EQ(slots.size(), 96U);
    EXPECT_EQ(*slots.begin(), -48);
    EXPECT_EQ(*slots.rbegin(), 54);
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
    Slot{invoker, 3}.call<void, Executable*, Chars>(
        &subscriber, "<Method>DevicesChangedEvent</Method>", 0, static_cast<void*>(&response));
    EXPECT_EQ(support::takeTrace(), (Lines{"onDevicesChangedEvent()", "response notified"}));
    Slot{invoker, 2}.call<void>();  // deletes it
    EXPECT_EQ(sizeof(CommunicationsServiceEventInvoker), sizeof(void*));
    EXPECT_EQ(sizeof(CommunicationsServiceProxy), 3 * sizeof(void*));
}

TEST(Slots, OfTheSubscriberAreCalledInOrder)
{
    // Slots counted from 0.
    // clang-format off
    const char* const methods[28] = {
        "CallStateChangeEvent", "RegistrationStateChangeEvent", "IncomingCallEvent",
        "IncomingPickupCallEvent", "CallHeldEvent", "CallRetrievedEvent", "FeatureSuccessEvent",
        "FeatureFailedEvent", "RemoteEndpointDetailsChangedEvent", "IncomingCallMissedEvent",
        "CallForwardedEvent", "IncomingAssociatedCallEvent", "DevicesChangedEvent",
        "messageWaitingEvent", "DoNotDisturbEvent", "AgentStateEvent", "securityStatusChanged",
        "callRecordingStatusEvent", "preemptionStatusChanged", "impactLevelChanged",
        "systemStatusEvent", "serverFeatureStatusEvent", "b2buaCSTAResponse",
        "b2buaCSTAEventOrRequest", "conferenceStatusEvent", "callCompletionEvent",
        "callCompletionFailedEvent", "bluetoothAudioStatusChanged",
    };
    // clang-format on
    support::Subscriber subscriber;
    support::Response response;
    TestedEventInvoker invoker;
    support::takeTrace();
    const OtherTable<28> table(static_cast<CommunicationsServiceEventIfc*>(&subscriber),
                               hits(std::make_integer_sequence<int, 28>()));
    const OtherTable<2> responseTable(&response, hits(std::make_integer_sequence<int, 2>()));
    for (int slot = 0; slot < 28; ++slot)
    {
        const std::string message = "<Method>" + std::string(methods[slot]) + "</Method>";
        invoker.handleMessage(&subscriber, message.c_str(), 0, &response);
        EXPECT_EQ(support::takeTrace(), (Lines{"slot " + show(slot), "slot 1"})) << message;
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

// Each event: which callback it reaches, with which arguments, and what the odd ones become.

#include "CommunicationsServiceEventInvoker.h"
#include "tests/support/Events.h"
#include "tests/support/Tested.h"
#include "tests/support/TracedFramework.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <map>
#include <memory>
#include <typeinfo>

using namespace std::string_literals;
using support::Lines;
using namespace samples;

namespace
{

/// All but the two with a payload, which are told apart below.
const std::vector<Event> flatEvents = []
{
    std::vector<Event> flat;
    std::copy_if(std::begin(events), std::end(events), std::back_inserter(flat),
                 [](const Event& event) { return !event.hasPayload; });
    return flat;
}();

const Lines notified{"response notified"};

class EventTest : public testing::Test
{
protected:
    EventTest() { support::takeTrace(); }

    /// All fields of all flat events: check(event, index of the field).
    template <typename Check>
    static void forEachField(Check check)
    {
        for (const Event& event : flatEvents)
            for (std::size_t i = 0; i < event.fields.size() && !HasFailure(); ++i)
                check(event, i);
    }

    Lines deliver(const std::string& message)
    {
        invoker.handleMessage(&subscriber, message.c_str(), int(message.size()), &response);
        return support::takeTrace();
    }

    /// The elements reach the event's callback with these values.
    void expect(const Event& event, const std::string& elements, const Values& values)
    {
        EXPECT_EQ(deliver(method(event.method) + elements),
                  (Lines{callback(event, values), "response notified"}))
            << event.method << elements;
    }

    TestedEventInvoker invoker;
    support::Subscriber subscriber;
    support::Response response;
};

TEST_F(EventTest, EachFieldBecomesItsArgument)
{
    for (const bool abroad : {false, true})
    {
        const auto foreign = abroad ? std::make_unique<support::ForeignLocale>() : nullptr;
        for (const Event& event : flatEvents)
            expect(event, elements(event, distinct(event)), distinct(event));
    }
}

TEST_F(EventTest, EachFieldMayBeLeftOut)
{
    forEachField(
        [this](const Event& event, std::size_t i)
        {
            Values values = distinct(event, 7);
            Values alone(values.size());
            std::swap(alone[i], values[i]);
            expect(event, elements(event, values), values);
            expect(event, elements(event, alone), alone);
        });
}

TEST_F(EventTest, EachFlagIsItsOwn)
{
    forEachField(
        [this](const Event& event, std::size_t i)
        {
            for (const bool others : {false, true})
            {
                Values values = distinct(event);
                for (std::size_t j = 0; j < values.size(); ++j)
                    if (event.fields[j].kind == flag)
                        values[j] = (i == j) != others ? "1" : "0";
                expect(event, elements(event, values), values);
            }
        });
}

TEST_F(EventTest, NumbersAreReadAtTheFrontAndStopAtTheLimits)
{
    forEachField(
        [this](const Event& event, std::size_t i)
        {
            Values values = distinct(event);
            for (const auto& known : numbers)
                if (event.fields[i].kind != text)
                {
                    values[i] = known.digits;
                    expect(event, elements(event, values), values);
                }
        });
}

// Dispatch.

TEST_F(EventTest, NamesOfEventsMatchByTheirFrontSaveTheFirst)
{
    for (const Event& event : flatEvents)
    {
        const std::string name = event.method;
        const Lines called{callback(event, Values(event.fields.size())), "response notified"};
        EXPECT_EQ(deliver(method(name)), called);
        const bool whole = name == "CallStateChangeEvent";
        for (const std::string& more : {"X"s, std::string(1000, 'x'), " "s, "<x>"s})
            EXPECT_EQ(deliver(method(name + more)), whole ? notified : called) << name + more;
        std::vector<std::string> others = {" " + name, "X" + name, name.substr(1),
                                           name.substr(0, name.size() - 1)};
        for (std::size_t i = 0; i < name.size(); ++i)
            for (const int bit : {0x20, 0x01})
            {
                others.push_back(name);
                others.back()[i] = static_cast<char>(name[i] ^ bit);
            }
        for (const std::string& other : others)
            EXPECT_EQ(deliver(method(other)), notified) << other;
    }
}

TEST_F(EventTest, WhatMatchesNothingIsStillNotified)
{
    for (const char* message :
         {"", "hello", "<Method></Method>", "<Method>Unknown</Method>", "CallHeldEvent",
          "<Method>CallHeldEvent", "</Method>CallHeldEvent<Method>",
          "<method>CallHeldEvent</method>", "<Method>CallHeldEvent</method>",
          "<Method>CallHeldEvent</Method", "<Method>CallHeldEvent</Methods>",
          "<Method >CallHeldEvent</Method>",
          "<Method>Unknown</Method><Method>CallHeldEvent</Method>",
          "</Method><Method>CallHeldEvent"})
        EXPECT_EQ(deliver(message), notified) << message;
    EXPECT_EQ(deliver("</Method><Method>CallHeldEvent</Method>")[0], "onCallHeldEvent('', -1)");
}

TEST_F(EventTest, TheTextEndsAtItsNulWhateverTheLength)
{
    const char message[] = "<Method>CallHeldEvent</Method><LineID>1</LineID>\0<CallID>7</CallID>";
    for (const int length : {0, -1, 5, int(sizeof message) - 1, INT_MAX, INT_MIN})
    {
        invoker.handleMessage(&subscriber, message, length, &response);
        EXPECT_EQ(support::takeTrace(), (Lines{"onCallHeldEvent('1', -1)", "response notified"}));
    }
    invoker.handleMessage(&subscriber, message, int(sizeof message), nullptr);
    EXPECT_EQ(support::takeTrace(), Lines{"onCallHeldEvent('1', -1)"}) << "no response to notify";
}

TEST_F(EventTest, ANullTextIsRefusedBeforeAnythingElse)
{
    testing::internal::CaptureStdout();
    try
    {
        invoker.handleMessage(nullptr, nullptr, 0, &response);
        ADD_FAILURE() << "nothing thrown";
    }
    catch (const std::logic_error& error)
    {
        EXPECT_STREQ(error.what(), "basic_string::_M_construct null not valid");
        EXPECT_EQ(typeid(error), typeid(std::logic_error)) << "and no kind of it";
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(support::takeTrace(), Lines());
}

TEST_F(EventTest, WhatListsAreReadWithMayThrow)
{
    for (int good = 0; good < 2; ++good)
    {
        int left = good;
        support::hooks.inFramework = [&left]
        {
            if (left-- == 0)
                throw std::string("from the list");
        };
        EXPECT_THROW(deliver(method("securityStatusChanged")), std::string);
        support::hooks.inFramework = nullptr;
        EXPECT_EQ(support::takeTrace(), Lines());
    }
}

TEST_F(EventTest, ANullInterfaceIsReported)
{
    support::Bystander bystander;
    for (Executable* const nobody :
         {static_cast<Executable*>(nullptr), static_cast<Executable*>(&bystander)})
    {
        testing::internal::CaptureStdout();
        invoker.handleMessage(nobody, "<Method>Unknown</Method>", 0, &response);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "CommunicationsServiceEventSvc == NULL");
        EXPECT_EQ(support::takeTrace(), notified);
    }
    testing::internal::CaptureStdout();
    deliver(method("CallHeldEvent"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(EventTest, ANullInterfaceIsCalledThrough)
{
    support::Bystander bystander;
    for (const Event& event : events)
        EXPECT_DEATH(invoker.handleMessage(&bystander, method(event.method).c_str(), 0, &response),
                     "")
            << event.method;
}

// The two events with a payload.

TEST_F(EventTest, APayloadStandsBehindTheFirstEndOfItsLastField)
{
    const std::string answer = method("b2buaCSTAResponse");
    const std::string message = method("b2buaCSTAEventOrRequest");
    const std::string far(70000, 'x');
    const struct
    {
        std::string text, callback;
    } rows[] = {
        // clang-format off
        {answer + "<lineURI>1001</lineURI><success>1</success>PAYLOAD", "onB2buaCSTAResponse('1001', true, 'PAYLOAD')"},
        {answer + "<lineURI>1002</lineURI><success>0</success>\n <?xml?><lineURI>9</lineURI>", "onB2buaCSTAResponse('1002', false, '\n <?xml?><lineURI>9</lineURI>')"},
        {"<Method>b2buaCSTAResponseX</Method><success>2</success>", "onB2buaCSTAResponse('', true, '')"},
        {answer + "<success></success>p</success>q", "onB2buaCSTAResponse('', false, 'p</success>q')"},
        {answer + "<lineURI>1001</lineURI>PAYLOAD", "onB2buaCSTAResponse('1001', true, 'b2buaCSTAResponse</Method><lineURI>1001</lineURI>PAYLOAD')"},
        {answer + "<lineURI>a/success>b</lineURI><success>0</success>P", "onB2buaCSTAResponse('a/success>b', false, 'b</lineURI><success>0</success>P')"},
        {answer + "<lineURI>a/successes</lineURI><success>0</success>P", "onB2buaCSTAResponse('a/successes', false, 'P')"},
        {message + "<lineURI>a/lineURIs</lineURI>P", "onB2buaCSTAEventOrRequest('a/lineURIs', 'P')"},
        {answer + "<lineURI>" + far + "</lineURI><success>0</success>P", "onB2buaCSTAResponse('" + far + "', false, 'P')"},
        {answer + "<success>0/success>P", "onB2buaCSTAResponse('', true, 'P')"},
        {"<success>0</success><Method>b2buaCSTAResponse</Method><lineURI>1</lineURI>", "onB2buaCSTAResponse('1', false, '<Method>b2buaCSTAResponse</Method><lineURI>1</lineURI>')"},
        {answer + "<Success>0</Success>", "onB2buaCSTAResponse('', true, 'b2buaCSTAResponse</Method><Success>0</Success>')"},

        {message + "<lineURI>1003</lineURI>PAYLOAD", "onB2buaCSTAEventOrRequest('1003', 'PAYLOAD')"},
        {message + "<lineURI>1003</lineURI> <lineURI>4</lineURI>", "onB2buaCSTAEventOrRequest('1003', ' <lineURI>4</lineURI>')"},
        {message + "<lineURI>1003</lineURI>", "onB2buaCSTAEventOrRequest('1003', '')"},
        {"<Method>b2buaCSTAEventOrRequests</Method><lineURI>1004</lineURI>P", "onB2buaCSTAEventOrRequest('1004', 'P')"},
        {message + "<success>0</success>PAYLOAD", "onB2buaCSTAEventOrRequest('', 'b2buaCSTAEventOrRequest</Method><success>0</success>PAYLOAD')"},
        {message + "<lineURI>" + far + "</lineURI>P", "onB2buaCSTAEventOrRequest('" + far + "', 'P')"},
        {message + "<lineURI>1003/lineURI>PAYLOAD", "onB2buaCSTAEventOrRequest('', 'PAYLOAD')"},
        {"/lineURI><Method>b2buaCSTAEventOrRequest</Method><lineURI>5</lineURI>P", "onB2buaCSTAEventOrRequest('5', '<Method>b2buaCSTAEventOrRequest</Method><lineURI>5</lineURI>P')"},
        // clang-format on
    };
    for (const auto& row : rows)
        EXPECT_EQ(deliver(row.text), (Lines{row.callback, "response notified"})) << row.text;
}

TEST_F(EventTest, EachHandlerMayBeCalledByItsName)
{
    using Invoker = CommunicationsServiceEventInvoker;
    const std::map<std::string, void (*)(CommunicationsServiceEventIfc*, std::string&)> handlers = {
        // clang-format off
        {"CallStateChangeEvent", Invoker::callStateChangeEvent},
        {"RegistrationStateChangeEvent", Invoker::registrationStateChangeEvent},
        {"IncomingCallEvent", Invoker::incomingCallEvent},
        {"IncomingPickupCallEvent", Invoker::incomingPickupCallEvent}, {"CallHeldEvent", Invoker::callHeldEvent},
        {"CallRetrievedEvent", Invoker::callRetrievedEvent}, {"FeatureSuccessEvent", Invoker::featureSuccessEvent},
        {"FeatureFailedEvent", Invoker::featureFailedEvent},
        {"RemoteEndpointDetailsChangedEvent", Invoker::remoteEndpointDetailsChangedEvent},
        {"IncomingCallMissedEvent", Invoker::incomingCallMissedEvent},
        {"CallForwardedEvent", Invoker::callForwardedEvent}, {"messageWaitingEvent", Invoker::messageWaitingEvent},
        {"DoNotDisturbEvent", Invoker::doNotDisturbEvent}, {"AgentStateEvent", Invoker::agentStateEvent},
        {"systemStatusEvent", Invoker::systemStatusEvent},
        {"serverFeatureStatusEvent", Invoker::serverFeatureStatusEvent},
        {"conferenceStatusEvent", Invoker::conferenceStatusEvent},
        {"securityStatusChanged", Invoker::securityStatusChanged},
        {"preemptionStatusChanged", Invoker::preemptionStatusChanged},
        {"impactLevelChanged", Invoker::impactLevelChanged},
        {"callRecordingStatusEvent", Invoker::callRecordingStatusEvent},
        {"callCompletionEvent", Invoker::callCompletionEvent},
        {"callCompletionFailedEvent", Invoker::callCompletionFailedEvent},
        {"bluetoothAudioStatusChanged", Invoker::bluetoothAudioStatusChanged},
        // clang-format on
    };
    std::size_t called = 0;
    for (const Event& event : flatEvents)
    {
        const std::string before = '\0' + elements(event, distinct(event));
        std::string message = before;
        const auto found = handlers.find(event.method);
        if (found != handlers.end())
            found->second(&subscriber, message);
        else if (event.method == "IncomingAssociatedCallEvent"s)
            Invoker::incomingAssociatedCallEvent(&subscriber, message);
        else
            continue;  // the one without a handler of its own
        ++called;
        EXPECT_EQ(message, before) << event.method;
        EXPECT_EQ(support::takeTrace(), Lines{callback(event, distinct(event))}) << event.method;
    }
    EXPECT_EQ(called, handlers.size() + 1);
}

TEST_F(EventTest, APayloadIsTheTextItself)
{
    const struct
    {
        void (*handler)(CommunicationsServiceEventIfc*, std::string&);
        std::string before, after;
    } rows[] = {
        {CommunicationsServiceEventInvoker::b2buaCSTAResponse, "1234567", ""},
        {CommunicationsServiceEventInvoker::b2buaCSTAResponse, "12345678", ""},
        {CommunicationsServiceEventInvoker::b2buaCSTAResponse, "123456789", "9"},
        {CommunicationsServiceEventInvoker::b2buaCSTAResponse, "", ""},
        {CommunicationsServiceEventInvoker::b2buaCSTAResponse, "/success>", ""},
        {CommunicationsServiceEventInvoker::b2buaCSTAResponse, "x/success>\0y"s, "\0y"s},
        {CommunicationsServiceEventInvoker::b2buaCSTAEventOrRequest, "/lineURI>\0z"s, "\0z"s},
        {CommunicationsServiceEventInvoker::b2buaCSTAEventOrRequest, "1234567", ""},
        {CommunicationsServiceEventInvoker::b2buaCSTAEventOrRequest, "123456789", "9"},
    };
    for (const auto& row : rows)
    {
        std::string message = row.before;
        const std::string* passed = nullptr;
        subscriber.withText = [&passed](std::string& payload) { passed = &payload; };
        row.handler(&subscriber, message);
        EXPECT_EQ(passed, &message);
        EXPECT_EQ(message, row.after);
        subscriber.withText = [](std::string& payload) { payload = "changed"; };
        row.handler(&subscriber, message);
        EXPECT_EQ(message, "changed");
    }
    support::takeTrace();

    subscriber.withText = [](std::string& payload) { payload.clear(); };
    subscriber.inCallback = [] { throw std::string("from the callback"); };
    for (const char* name : {"b2buaCSTAResponse", "b2buaCSTAEventOrRequest"})
        EXPECT_THROW(deliver(method(name)), std::string);
    EXPECT_EQ(support::takeTrace(),
              (Lines{"onB2buaCSTAResponse('', true, '')", "onB2buaCSTAEventOrRequest('', '')"}));
}

}  // namespace

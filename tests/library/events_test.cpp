// Each event: which callback it reaches, with which arguments, and what the odd ones become.

#include "CommunicationsServiceEventInvoker.h"
#include "tests/support/Events.h"
#include "tests/support/Tested.h"
#include "tests/support/TracedFramework.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
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

class EventTest : public testing::Test
{
protected:
    EventTest() { support::takeTrace(); }

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
    for (const Event& event : flatEvents)
        expect(event, elements(event, distinct(event)), distinct(event));
}

TEST_F(EventTest, EachFieldMayBeLeftOut)
{
    for (const Event& event : flatEvents)
    {
        for (std::size_t i = 0; i < event.fields.size(); ++i)
        {
            Values values = distinct(event, 7);
            values[i] = std::nullopt;
            expect(event, elements(event, values), values);
            Values alone(values.size());
            alone[i] = distinct(event, 7)[i];
            expect(event, elements(event, alone), alone);
        }
        expect(event, "", Values(event.fields.size()));
    }
}

TEST_F(EventTest, FieldsMayComeInAnyOrderAndTheFirstOfEachCounts)
{
    for (const Event& event : flatEvents)
    {
        Values values = distinct(event);
        std::string backwards;
        for (std::size_t i = values.size(); i-- > 0;)
            backwards += element(event.fields[i], values[i]);
        expect(event, backwards, values);
        expect(event, backwards + elements(event, distinct(event, 50)), values);
        expect(event, elements(event, values) + elements(event, distinct(event, 50)), values);
    }
}

TEST_F(EventTest, EachFlagIsItsOwn)
{
    for (const Event& event : flatEvents)
        for (std::size_t i = 0; i < event.fields.size(); ++i)
            for (const char* others : {"0", "1"})
            {
                Values values = distinct(event);
                for (std::size_t j = 0; j < values.size(); ++j)
                    if (event.fields[j].kind == flag)
                        values[j] = (i == j) != (*others == '1') ? "1" : "0";
                expect(event, elements(event, values), values);
            }
}

TEST_F(EventTest, NumbersAreReadAtTheFrontAndStopAtTheLimits)
{
    for (const Event& event : flatEvents)
        for (std::size_t i = 0; i < event.fields.size(); ++i)
            for (const auto& known : numbers)
            {
                if (event.fields[i].kind != text)
                {
                    Values values = distinct(event);
                    values[i] = known.digits;
                    expect(event, elements(event, values), values);
                }
            }
}

TEST_F(EventTest, AnElementWithoutItsEndIsAbsent)
{
    for (const Event& event : flatEvents)
        for (std::size_t i = 0; i < event.fields.size(); ++i)
        {
            const Field& field = event.fields[i];
            const Values whole = distinct(event);
            Values values = whole;
            values[i] = std::nullopt;
            const std::string others = elements(event, values);
            const std::string opening = "<"s + field.tag + ">";
            const std::string closing = "</"s + field.tag + ">";
            expect(event, others + opening + *whole[i], values);
            expect(event, closing + others + opening + *whole[i], values);
            expect(event, others + *whole[i] + closing, values);
            expect(event, others + opening + *whole[i] + closing.substr(0, closing.size() - 1),
                   values);
            expect(event, others + opening + *whole[i] + closing.substr(1), values);
            expect(event, closing + others + opening + *whole[i] + closing, whole);
            // Opened twice: from the first opening on.
            Values twice = values;
            if (field.kind == text)
                twice[i] = "a" + opening + *whole[i];
            else
                continue;
            expect(event, others + opening + *twice[i] + closing, twice);
        }
}

TEST_F(EventTest, NamesOfElementsMatchWholeAndInTheirCase)
{
    for (const Event& event : flatEvents)
        for (std::size_t i = 0; i < event.fields.size(); ++i)
        {
            const Values whole = distinct(event);
            Values values = whole;
            values[i] = std::nullopt;
            const std::string name = event.fields[i].tag;
            std::string otherCase = name;
            otherCase[0] = static_cast<char>(otherCase[0] ^ 0x20);
            std::string otherEnd = name;
            otherEnd.back() = static_cast<char>(otherEnd.back() ^ 0x20);
            for (const std::string& other :
                 {otherCase, otherEnd, name + "X", "X" + name, name.substr(1), " " + name,
                  name.substr(0, name.size() - 1), name + " ", name + "/", "/" + name, "<" + name})
            {
                if (other == "<" + name)  // what counts is where the name's own bracket stands
                    expect(event,
                           elements(event, values) + element({text, other.c_str()}, whole[i]),
                           values);
                else
                    expect(event,
                           element({text, other.c_str()}, whole[i]) + elements(event, values),
                           values);
            }
        }
}

TEST_F(EventTest, FieldsAreFoundBehindAnyNumberOfOtherElements)
{
    std::vector<std::size_t> amounts;
    for (std::size_t i = 0; i <= 45; ++i)
        amounts.push_back(i);
    amounts.insert(amounts.end(), {63, 64, 65, 127, 128, 129, 255, 256, 257, 5000});
    for (const Event& event : flatEvents)
        for (const char* other :
             {"<other>", "</other>", "<other></other>", "<", "</", "<a", "</ab"})
            for (const std::size_t amount : amounts)
            {
                std::string padding;
                for (std::size_t i = 0; i < amount; ++i)
                    padding += other;
                const Values values = distinct(event);
                const std::string all = elements(event, values);
                ASSERT_EQ(deliver(method(event.method) + padding + ">" + all),
                          (Lines{callback(event, values), "response notified"}))
                    << event.method << ": " << amount << " times " << other;
                ASSERT_EQ(deliver(method(event.method) + all + padding),
                          (Lines{callback(event, values), "response notified"}))
                    << event.method << " before " << amount << " times " << other;
                // Ends of the fields before them do not count, noted or not.
                std::string ends;
                for (const Field& field : event.fields)
                    ends += "</"s + field.tag + ">";
                ASSERT_EQ(deliver(method(event.method) + ends + padding + ">" + all),
                          (Lines{callback(event, values), "response notified"}))
                    << event.method << " with ends and " << amount << " times " << other;
            }
}

TEST_F(EventTest, ManyBracketsAreReadInOnePass)
{
    for (const Event& event : flatEvents)
        for (const char* piece : {"<", "</", "<a>", "<LineID", "</LineID>"})
        {
            std::string many;
            for (int i = 0; i < 50000; ++i)
                many += piece;
            const Values values = distinct(event);
            const Lines lines =
                deliver(method(event.method) + many + " >" + elements(event, values));
            ASSERT_TRUE(lines == (Lines{callback(event, values), "response notified"}))
                << event.method << " behind many " << piece;
        }
}

TEST_F(EventTest, ATagCountsAlsoInsideAValue)
{
    EXPECT_EQ(deliver("<Method>systemStatusEvent</Method>"
                      "<statusInfo><status>in</status></statusInfo><status>out</status>")[0],
              "onSystemStatusEvent('in', '<status>in</status>')");
    EXPECT_EQ(
        deliver("<LineID>in front</LineID><Method>CallHeldEvent</Method><CallID>7</CallID>")[0],
        "onCallHeldEvent('in front', 7)");
    EXPECT_EQ(deliver("<Method>CallHeldEvent<LineID>in</LineID></Method>")[0],
              "onCallHeldEvent('in', -1)");
}

// Dispatch.

TEST_F(EventTest, NamesOfEventsMatchByTheirFrontSaveTheFirst)
{
    for (const Event& event : flatEvents)
    {
        const std::string name = event.method;
        const Lines called{callback(event, Values(event.fields.size())), "response notified"};
        const Lines ignored{"response notified"};
        EXPECT_EQ(deliver(method(name)), called);
        const bool whole = name == "CallStateChangeEvent";
        EXPECT_EQ(deliver(method(name + "X")), whole ? ignored : called) << name;
        EXPECT_EQ(deliver(method(name + std::string(1000, 'x'))), whole ? ignored : called) << name;
        EXPECT_EQ(deliver(method(name + " ")), whole ? ignored : called) << name;
        EXPECT_EQ(deliver(method(name + "<x>")), whole ? ignored : called) << name;
        std::string otherCase = name;
        otherCase[0] = static_cast<char>(otherCase[0] ^ 0x20);
        for (const std::string& other :
             {otherCase, " " + name, "X" + name, name.substr(1), name.substr(0, name.size() - 1)})
            EXPECT_EQ(deliver(method(other)), ignored) << other;
        for (std::size_t i = 0; i < name.size(); ++i)
        {
            std::string other = name;
            other[i] = '#';
            EXPECT_EQ(deliver(method(other)), ignored) << other;
        }
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
        EXPECT_EQ(deliver(message), Lines{"response notified"}) << message;
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
        EXPECT_EQ(support::takeTrace(), Lines{"response notified"});
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

TEST_F(EventTest, TheLocaleIsNotLookedAt)
{
    const support::ForeignLocale foreign;
    for (const Event& event : flatEvents)
        expect(event, elements(event, distinct(event)), distinct(event));
}

// The two events with a payload.

TEST_F(EventTest, APayloadStandsBehindTheFirstEndOfItsLastField)
{
    const struct
    {
        std::string message;
        std::string callback;
    } rows[] = {
        // clang-format off
        {"<Method>b2buaCSTAResponse</Method><lineURI>1001</lineURI><success>1</success>PAYLOAD",
         "onB2buaCSTAResponse('1001', true, 'PAYLOAD')"},
        {"<Method>b2buaCSTAResponse</Method><lineURI>1002</lineURI><success>0</success>\n <?xml?><lineURI>9</lineURI>",
         "onB2buaCSTAResponse('1002', false, '\n <?xml?><lineURI>9</lineURI>')"},
        {"<Method>b2buaCSTAResponseX</Method><success>2</success>",
         "onB2buaCSTAResponse('', true, '')"},
        {"<Method>b2buaCSTAResponse</Method><success></success>p</success>q",
         "onB2buaCSTAResponse('', false, 'p</success>q')"},
        {"<Method>b2buaCSTAResponse</Method><lineURI>1001</lineURI>PAYLOAD",
         "onB2buaCSTAResponse('1001', true, 'b2buaCSTAResponse</Method><lineURI>1001</lineURI>PAYLOAD')"},
        {"<Method>b2buaCSTAResponse</Method><lineURI>a/success>b</lineURI><success>0</success>P",
         "onB2buaCSTAResponse('a/success>b', false, 'b</lineURI><success>0</success>P')"},
        {"<Method>b2buaCSTAResponse</Method><lineURI>a/successes</lineURI><success>0</success>P",
         "onB2buaCSTAResponse('a/successes', false, 'P')"},
        {"<Method>b2buaCSTAEventOrRequest</Method><lineURI>a/lineURIs</lineURI>P",
         "onB2buaCSTAEventOrRequest('a/lineURIs', 'P')"},
        {"<Method>b2buaCSTAResponse</Method><success>0/success>P",
         "onB2buaCSTAResponse('', true, 'P')"},
        {"<success>0</success><Method>b2buaCSTAResponse</Method><lineURI>1</lineURI>",
         "onB2buaCSTAResponse('1', false, '<Method>b2buaCSTAResponse</Method><lineURI>1</lineURI>')"},
        {"<Method>b2buaCSTAResponse</Method><Success>0</Success>",
         "onB2buaCSTAResponse('', true, 'b2buaCSTAResponse</Method><Success>0</Success>')"},

        {"<Method>b2buaCSTAEventOrRequest</Method><lineURI>1003</lineURI>PAYLOAD",
         "onB2buaCSTAEventOrRequest('1003', 'PAYLOAD')"},
        {"<Method>b2buaCSTAEventOrRequest</Method><lineURI>1003</lineURI> <lineURI>4</lineURI>",
         "onB2buaCSTAEventOrRequest('1003', ' <lineURI>4</lineURI>')"},
        {"<Method>b2buaCSTAEventOrRequest</Method><lineURI>1003</lineURI>",
         "onB2buaCSTAEventOrRequest('1003', '')"},
        {"<Method>b2buaCSTAEventOrRequests</Method><lineURI>1004</lineURI>P",
         "onB2buaCSTAEventOrRequest('1004', 'P')"},
        {"<Method>b2buaCSTAEventOrRequest</Method><success>0</success>PAYLOAD",
         "onB2buaCSTAEventOrRequest('', 'b2buaCSTAEventOrRequest</Method><success>0</success>PAYLOAD')"},
        {"<Method>b2buaCSTAEventOrRequest</Method><lineURI>1003/lineURI>PAYLOAD",
         "onB2buaCSTAEventOrRequest('', 'PAYLOAD')"},
        {"/lineURI><Method>b2buaCSTAEventOrRequest</Method><lineURI>5</lineURI>P",
         "onB2buaCSTAEventOrRequest('5', '<Method>b2buaCSTAEventOrRequest</Method><lineURI>5</lineURI>P')"},
        // clang-format on
    };
    for (const auto& row : rows)
        EXPECT_EQ(deliver(row.message), (Lines{row.callback, "response notified"})) << row.message;
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
        {CommunicationsServiceEventInvoker::b2buaCSTAEventOrRequest, "/lineURI>z", "z"},
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

TEST_F(EventTest, HandlersLeaveTheTextAsItIs)
{
    const Event& event =
        *std::find_if(std::begin(events), std::end(events),
                      [](const Event& each) { return each.method == "securityStatusChanged"s; });
    std::string message = elements(event, distinct(event));
    const std::string before = message;
    CommunicationsServiceEventInvoker::securityStatusChanged(&subscriber, message);
    EXPECT_EQ(message, before);
    EXPECT_EQ(support::takeTrace(), Lines{callback(event, distinct(event))});
}

}  // namespace

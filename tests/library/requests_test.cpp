// Each operation: which channel operation it uses, the exact bytes, and what it makes of the answer.

#include "CommunicationsServiceProxy.h"
#include "RequestText.h"
#include "tests/support/Requests.h"
#include "tests/support/Tested.h"
#include "tests/support/TracedFramework.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <stdexcept>

using namespace std::string_literals;
using support::Channel;
using support::Lines;
using namespace samples;

namespace
{

/// What the channel is asked.
std::string asked(const Request& request)
{
    switch (request.kind)
    {
    case timed:
        return "sendRequestTimed " + request.sent + " 100000";
    case preset:
        return "sendRequest " + request.sent + " over false";
    case posted:
        return "sendOneWay " + request.sent;
    default:
        return "sendRequest " + request.sent;
    }
}

bool isCoded(const Request& request)
{
    return request.kind == coded || request.kind == timed;
}

class RequestTest : public testing::Test
{
protected:
    RequestTest()
    {
        proxy.initProxy(channel);
        support::takeTrace();
    }

    /// The one line that a call left.
    static std::string line()
    {
        const Lines lines = support::takeTrace();
        return lines.size() == 1 ? lines[0] : std::to_string(lines.size()) + " lines";
    }

    Channel channel;
    TestedProxy proxy;
    CommunicationsServiceIfc& service = proxy;
};

TEST_F(RequestTest, EachIsSentByteForByte)
{
    for (const bool abroad : {false, true})
    {
        const auto foreign = abroad ? std::make_unique<support::ForeignLocale>() : nullptr;
        for (const Request& request : requests)
        {
            request.call(service);
            EXPECT_EQ(line(), asked(request));
        }
    }
}

/// The same requests with more in their texts: zero bytes, and all the bytes that a text may have in
/// the room for a request, or one more.
TEST_F(RequestTest, NoTextIsCutOrTooLong)
{
    for (const std::string& more : {"\0z"s, std::string(56, 'x'), std::string(64, 'x'), "\0"s})
        for (const Request& request : requests)
        {
            Texts asGiven = {more, more[0] == 'x' ? more : ""};
            texts = &asGiven;
            request.call(service);
            texts = nullptr;
            std::string expected = asked(request);
            for (const std::string& given : asGiven.given)
            {
                const std::string before = ">" + given.substr(0, given.find(more)) + "</";
                const std::size_t at = expected.find(before);
                if (at != std::string::npos)
                    expected.replace(at, before.size(), ">" + given + "</");
            }
            EXPECT_EQ(line(), expected);
        }
}

/// One that would be longer is refused, in every build, and never written past its room.
TEST(RequestTextTest, WhatHasNoRoomIsRefused)
{
    const std::string value(64, 'v');
    std::string expected = "<Method>M</Method>";
    RequestText request("M");
    EXPECT_THROW(
        for (;;) {
            request.text("URI", value).flag("Flag", true).number("CallID", INT_MIN);
            expected += "<URI>" + value + "</URI><Flag>1</Flag><CallID>-2147483648</CallID>";
            ASSERT_EQ(request.str(), expected);
            ASSERT_LE(expected.size(), 512u);
        },
        std::length_error);
    EXPECT_GT(expected.size(), 336u);
    const std::string full = request.str();
    EXPECT_EQ(request.payload(value).payload(value).str(), full + value + value);

    RequestText flags("M");
    try
    {
        for (int i = 0; i < 100; ++i)
            flags.flag("Flag", true);
        ADD_FAILURE() << "all of it was taken";
    }
    catch (const std::length_error& error)
    {
        EXPECT_STREQ(error.what(), "request");
    }
    EXPECT_LE(flags.str().size(), 512u) << "written past the room";

    RequestText longTags("M");
    EXPECT_THROW(for (;;) longTags.text(std::string(100, 't'), value), std::length_error);
    EXPECT_EQ(longTags.str().size(), 287u);

    const std::string longValue(65, 'v');
    RequestText longOnes("M");
    longOnes.text("A", longValue).text("B", longValue).text("C", longValue);
    EXPECT_THROW(longOnes.payload(longValue), std::length_error);
}

TEST_F(RequestTest, EachAnswerBecomesTheResult)
{
    for (const auto& word : resultWords)
        EXPECT_EQ(CommunicationsServiceProxy::getResult(word.answer), word.result) << word.answer;
    for (const Request& request : requests)
        for (const auto& word : resultWords)
        {
            channel.answer = word.answer;
            const int result = request.call(service);
            if (!isCoded(request) && request.kind != posted)
                continue;
            EXPECT_EQ(result, isCoded(request) ? word.result : nothing)
                << word.answer << " to " << asked(request);
        }
    support::takeTrace();
}

TEST_F(RequestTest, WhatTheChannelThrowsPasses)
{
    channel.inRequest = [] { throw std::string("unreachable"); };
    for (const Request& request : requests)
    {
        EXPECT_THROW(request.call(service), std::string);
        EXPECT_EQ(line(), asked(request));
    }
}

TEST_F(RequestTest, AnotherMayBeMadeFromInsideTheChannel)
{
    for (const Request& request : requests)
    {
        channel.inRequest = [this]
        {
            channel.inRequest = nullptr;
            channel.answer = "sfiFailureCallBackToMany";
            EXPECT_EQ(service.setLampMode("nested", "lamp", 77), 3);
        };
        channel.answer = "sfiFailureCallBackNoCallInfo";
        const int result = request.call(service);
        EXPECT_EQ(
            support::takeTrace(),
            (Lines{asked(request), "sendRequest <Method>setLampMode</Method><Line>nested</Line>"
                                   "<lampId>lamp</lampId><lampMode>77</lampMode>"}));
        EXPECT_TRUE(!isCoded(request) || result == 2) << "to the outer " << asked(request);
    }
}

/// Texts of every length around the sizes where a buffer could end.
std::string filled(std::size_t length, char first)
{
    std::string text(length, first);
    for (std::size_t i = 1; i < length; i += 3)
        text[i] = static_cast<char>('0' + i % 10);
    return text;
}

TEST_F(RequestTest, LongTextsAreSentWhole)
{
    const auto expectSent = [](const std::string& request)
    { ASSERT_EQ(line(), "sendRequest <Method>" + request); };
    for (const std::size_t other : {0U, 1U, 380U, 460U, 511U, 512U, 513U, 1100U, 70000U})
        for (std::size_t length = 0; length < 600 && !HasFailure(); ++length)
        {
            SCOPED_TRACE(length);
            const std::string rest = filled(other, 'r');
            const std::string text = filled(length, 't');
            const std::string line = "<Line>" + text + "</Line>";
            service.setLampMode(text, rest, 1234);
            expectSent("setLampMode</Method>" + line + "<lampId>" + rest +
                       "</lampId><lampMode>1234</lampMode>");
            service.SendCSTARequest(text, rest);
            expectSent("SendCSTARequest</Method>" + line + rest);
            service.systemStatus(nullptr, text.c_str());
            expectSent("SystemStatus</Method><SystemStatus>");
            service.systemStatus(text.c_str(), nullptr);
            expectSent("SystemStatus</Method><SystemStatus>" + text +
                       "</SystemStatus><SystemStatusInfo>");
            service.outgoingCallMake(text, 5, nullptr, true, true, true);
            expectSent("OutgoingCallMakeRequest</Method>" + line +
                       "<CallID>5</CallID><Destination>");
        }
}

TEST_F(RequestTest, SignallingDataOfAnyLengthPassesAndANegativeOneIsRefused)
{
    const std::string data(100000, '\0');
    service.processSignallingComponentEvent(data.data(), 100000);
    EXPECT_EQ(line(), "sendOneWay SigEvent:" + data);

    for (const int length : {-1, -100, INT_MIN})
        try
        {
            service.processSignallingComponentEvent(data.data(), length);
            ADD_FAILURE() << "nothing thrown for " << length;
        }
        catch (const std::length_error& error)
        {
            EXPECT_STREQ(error.what(), "basic_string::append");
        }
    EXPECT_EQ(support::takeTrace(), Lines());
}

TEST_F(RequestTest, NothingIsSentWithoutANumberOrARequest)
{
    support::hooks.inFramework = [] { throw std::string("itos"); };
    EXPECT_THROW(service.callbackDOFeatureCallID("1", 2), std::string);
    EXPECT_THROW(service.RemoveConfParticipant(1, "2", "3"), std::string);
    support::hooks.inFramework = nullptr;
    EXPECT_EQ(support::takeTrace(), Lines()) << "nothing is sent";

    // These two have no request.
    EXPECT_EQ(service.csCommunicationsService("name"), "");
    EXPECT_EQ(service.csCommunicationsService(nullptr), "");
    service.activateStoredFwd();
    EXPECT_EQ(support::takeTrace(), Lines());
}

// Answers.

TEST_F(RequestTest, FlagsAreSearchedInTheAnswer)
{
    const struct
    {
        const char* answer;
        int result;
        bool before, after;
    } rows[] = {
        {"true", 5, false, true},
        {"false", 5, true, false},
        {"", 5, true, false},
        {"untrue", 5, false, true},
        {"TRUE", 5, true, false},
        {"xyz", 5, true, false},
        {"sfiFailure", 0, true, true},
        {"sfiFailure", 0, false, false},
        {"sfiFailure: true", 0, 0, false},
        {"true sfiFailureX", 0, false, false},
        {"sfifailure", 5, true, false},
        {"tru", 5, true, false},
        {"sfiFailur true", 5, 0, true},
    };
    for (const auto& row : rows)
    {
        channel.answer = row.answer;
        bool muted = row.before;
        EXPECT_EQ(service.getMicrophoneMute(muted), row.result) << row.answer;
        EXPECT_EQ(muted, row.after) << row.answer;
        bool undisturbed = row.before;
        EXPECT_EQ(service.getDoNotDisturb("1001", undisturbed), row.result) << row.answer;
        EXPECT_EQ(undisturbed, row.after) << row.answer;
    }
}

TEST_F(RequestTest, TheServiceStateIsSearchedInTheAnswer)
{
    const struct
    {
        const char* answer;
        int result;
        int state;  // 77 before
    } rows[] = {
        {"sfiServiceInService", 5, 0},
        {"sfiServiceOutOfService", 5, 1},
        {"sfiServiceDoNotDisturb", 5, 2},
        {"<state>sfiServiceDoNotDisturb</state>", 5, 2},
        {"sfiServiceDoNotDisturb sfiServiceOutOfService", 5, 1},
        {"sfiServiceOutOfService sfiServiceInService", 5, 0},
        {"sfiServiceDoNotDisturb sfiServiceInService", 5, 0},
        {"sfiServiceInService sfiFailure", 0, 77},
        {"sfiServiceInService sfiFailur", 5, 0},
        {"sfiFailure", 0, 77},
        {"xyz", 0, 77},
        {"", 0, 77},
        {"sfiServiceinService", 0, 77},
    };
    for (const auto& row : rows)
    {
        channel.answer = row.answer;
        sfiServiceState state = sfiServiceState(77);
        EXPECT_EQ(service.getServiceState(state), row.result) << row.answer;
        EXPECT_EQ(state, sfiServiceState(row.state)) << row.answer;
    }
}

TEST_F(RequestTest, AChannelMayAppendToTheAnswerThatItFinds)
{
    channel.appends = true;
    channel.answer = " true";
    bool flag = false;
    EXPECT_EQ(service.getDoNotDisturb("1001", flag), 5);
    EXPECT_TRUE(flag);
    sfiServiceState state = sfiServiceState(77);
    channel.answer = "sfiServiceOutOfService";
    EXPECT_EQ(service.getServiceState(state), 5);
    EXPECT_EQ(state, sfiServiceOutOfService);
    channel.answer = "";
    flag = true;
    EXPECT_EQ(service.getDoNotDisturb("1001", flag), 5);
    EXPECT_FALSE(flag);
    EXPECT_EQ(service.activate(), 0);
    channel.answer = "sfiSuccess";
    EXPECT_EQ(service.alternateCalls("1001"), 5) << "the response starts empty";
}

TEST_F(RequestTest, HoldIndicationsAreComparedWhole)
{
    for (const char* answer : {"true", "True", "true\n", " true", "truetrue", "false", "sfiSuccess",
                               "sfiFailure", "", "1"})
    {
        channel.answer = answer;
        EXPECT_EQ(service.isCallHoldPossible("1001"), answer == "true"s) << answer;
        EXPECT_EQ(service.getManualHoldIndication("1001", 12), answer == "true"s) << answer;
    }
}

TEST_F(RequestTest, ForwardingIsReadFromFieldsAndAlwaysWritten)
{
    const std::pair<std::string, std::string> rows[] = {
        {"<sfiResult>sfiSuccess</sfiResult><status>0</status><uri>sip:1234</uri>"
         "<cfnrRingCount>3</cfnrRingCount>",
         "5, false, 'sip:1234', 3"},
        {"<cfnrRingCount>-8</cfnrRingCount><uri></uri><status>1</status>"
         "<sfiResult>sfiFailureCallBackNoCallInfo</sfiResult>",
         "2, true, '', -8"},
        {"", "0, true, '', -1"},
        {"<sfiResult>sfiFailure</sfiResult><status>2</status>", "0, true, '', -1"},
        {"<status></status><cfnrRingCount>x</cfnrRingCount>", "0, false, '', 0"},
        {"<status>no</status><cfnrRingCount> 42abc</cfnrRingCount>", "0, false, '', 42"},
        // The first end tag counts, wherever it stands: a value may run on to the end.
        {"</uri><uri>sip:a</uri><status>0</status>",
         "0, false, 'sip:a</uri><status>0</status>', -1"},
        {"<sfiResult>sfiSuccess", "5, true, '', -1"},
        {"<uri>a\0b</uri>"s, "0, true, 'a\0b', -1"s},
    };
    for (const auto& [answer, expected] : rows)
        for (const bool before : {false, true})
        {
            channel.answer = answer;
            bool status = before;
            std::string uri = "before";
            int ringCount = 77;
            const int result =
                service.getForwardingConfiguration(sfiForwardingType(1), status, uri, ringCount);
            EXPECT_EQ(shown(result, status, uri, ringCount), expected) << answer;
        }
}

TEST_F(RequestTest, MessageWaitingIsReadFromFieldsAndAlwaysWritten)
{
    const std::string whole =
        "<func_return_val>sfiSuccess</func_return_val><Type>1</Type><newMsgs>2</newMsgs>"
        "<oldMsgs>3</oldMsgs><newUrgMsgs>4</newUrgMsgs><oldUrgMsgs>5</oldUrgMsgs>"
        "<return_type>6</return_type><available_info>7</available_info>"
        "<messages_waiting>8</messages_waiting><voiceMailNumber>9000</voiceMailNumber>";
    const std::string extremes =
        "<voiceMailNumber> 9</voiceMailNumber><messages_waiting>-1</messages_waiting>"
        "<available_info>2147483648</available_info><return_type>-2147483649</return_type>"
        "<oldUrgMsgs>-1</oldUrgMsgs><newUrgMsgs>4294967295</newUrgMsgs><oldMsgs>x</oldMsgs>"
        "<newMsgs>-99999999999</newMsgs><Type> +5;</Type>"
        "<func_return_val>sfiFailureCallBackAllreadyExists</func_return_val>";
    const std::pair<std::string, std::string> rows[] = {
        {whole, "5, 1, 2u, 3u, 4u, 5u, 6, 7, 8, '9000'"},
        {extremes,
         "4, 5, 2147483648u, 0u, 2147483647u, 4294967295u, -2147483648, 2147483647, -1, ' 9'"},
        {"", "0, 0, 0u, 0u, 0u, 0u, 0, 0, 0, ''"},
        {"<func_return_val>sfiSuccess</func_return_val><newMsgs>2</newMsgs>",
         "5, 0, 2u, 0u, 0u, 0u, 0, 0, 0, ''"},
        {"</Type><Type>12</Type><voiceMailNumber>9", "0, 12, 0u, 0u, 0u, 0u, 0, 0, 0, '9'"},
        {"<type>12</type><NewMsgs>3</NewMsgs><sfiResult>sfiSuccess</sfiResult>",
         "0, 0, 0u, 0u, 0u, 0u, 0, 0, 0, ''"},
    };
    for (const auto& [answer, expected] : rows)
    {
        channel.answer = answer;
        int type = 70, returnType = 71, availableInfo = 72, messagesWaiting = 73;
        unsigned int newMsgs = 74, oldMsgs = 75, newUrgMsgs = 76, oldUrgMsgs = 77;
        std::string number = "before";
        const int result =
            service.getMessageWaitingIndicator(type, newMsgs, oldMsgs, newUrgMsgs, oldUrgMsgs,
                                               returnType, availableInfo, messagesWaiting, number);
        EXPECT_EQ(shown(result, type, newMsgs, oldMsgs, newUrgMsgs, oldUrgMsgs, returnType,
                        availableInfo, messagesWaiting, number),
                  expected)
            << answer;
    }
}

TEST_F(RequestTest, DevicesStandInBrackets)
{
    const struct
    {
        const char* answer;
        int result;
        Lines items;
    } rows[] = {
        {"<1001><1002>", 5, {"1001", "1002"}},
        {"<1001>", 5, {"1001"}},
        {"", 5, {}},
        {"sfiFailure", 0, {}},
        {"sfiFailure<1001>", 5, {"1001"}},
        {" sfiFailure", 5, {}},
        {"none", 5, {}},
        {">a<b>c<d>e", 5, {"b", "d"}},
        {"<><x><>", 5, {"", "x", ""}},
        {"<a><b", 5, {"a"}},
        {"<a<b>", 5, {"a<b", "b"}},
        {"<<<c>d>", 5, {"<<c", "<c", "c"}},
        {"<a<b><c<d>", 5, {"a<b", "b", "c<d", "d"}},
        {"<<<", 5, {}},
        {">>", 5, {}},
        {"<", 5, {}},
    };
    for (const auto& row : rows)
    {
        channel.answer = row.answer;
        Lines devices = {"before"};
        Lines expected = row.items;
        expected.insert(expected.begin(), "before");
        EXPECT_EQ(service.getDevices(devices), row.result) << row.answer;
        EXPECT_EQ(devices, expected) << row.answer;
    }
}

// No time is measured: searching anew from each bracket would not come to an end here.
TEST_F(RequestTest, AMillionBracketsAreReadInOnePass)
{
    Lines devices;
    channel.answer = std::string(1000000, '<');
    EXPECT_EQ(service.getDevices(devices), 5);
    EXPECT_TRUE(devices.empty());
    channel.answer = "<a>" + channel.answer;
    EXPECT_EQ(service.getDevices(devices), 5);
    EXPECT_EQ(devices, Lines{"a"});
    const std::string far(70000, 'x');
    channel.answer = far + "<" + far + "><b>" + far;
    EXPECT_EQ(service.getDevices(devices), 5);
    EXPECT_EQ(devices, (Lines{"a", far, "b"}));
    channel.answer = std::string(1000000, '<') + "<cfnrRingCount>7</cfnrRingCount>";
    bool status = false;
    std::string uri;
    int ringCount = 0;
    EXPECT_EQ(service.getForwardingConfiguration(sfiForwardingType(1), status, uri, ringCount), 0);
    EXPECT_EQ(ringCount, 7);
}

}  // namespace

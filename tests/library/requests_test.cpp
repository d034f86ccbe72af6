// Each operation: which channel operation it uses, the exact bytes, and what it makes of the answer.

#include "CommunicationsServiceProxy.h"
#include "support/Framework.h"
#include "tests/support/Tested.h"

#include <gtest/gtest.h>

#include <climits>

using namespace std::string_literals;
using support::Channel;
using support::Lines;

namespace
{

using Ifc = CommunicationsServiceIfc;

constexpr int nothing = -100;  // result of an operation that has none
constexpr const char* none = nullptr;

sfiFeature feature(int number)
{
    return static_cast<sfiFeature>(number);
}
sfiRefuseCall refusal(int number)
{
    return static_cast<sfiRefuseCall>(number);
}
sfiCancelCallBackType cancelling(int number)
{
    return static_cast<sfiCancelCallBackType>(number);
}
sfiForwardingType forwarding(int number)
{
    return static_cast<sfiForwardingType>(number);
}
sfiServiceState serviceState(int number)
{
    return static_cast<sfiServiceState>(number);
}
CSTAEventCause cause(int number)
{
    return static_cast<CSTAEventCause>(number);
}

// Outputs of queries in the tables that do not look at them.
bool anyFlag;
int anyNumber;
unsigned int anyCount;
std::string anyText;
std::vector<std::string> anyTexts;
sfiServiceState anyState;

/// How an answer becomes the operation's result.
enum Kind
{
    coded,   // the whole answer is a result word
    read,    // in a way of the operation's own
    posted,  // not awaited
};

struct Request
{
    Kind kind;
    std::string expected;
    int (*call)(Ifc& service);
};

// One row for each request, as it is read.
// clang-format off
const Request requests[] = {
    // The operations in the interface's order, every text and number another one.
    {posted, "sendOneWay SigEvent:ab\0c"s,
     [](Ifc& s) { s.processSignallingComponentEvent("ab\0cd", 4); return nothing; }},
    {posted, "sendOneWay SigEvent:",
     [](Ifc& s) { s.processSignallingComponentEvent("ab", 0); return nothing; }},
    {coded, "sendRequestTimed <Method>Activate</Method> 100000",
     [](Ifc& s) { return s.activate(); }},
    {coded, "sendRequest <Method>Deactivate</Method><AllowAutoActivate>1</AllowAutoActivate>",
     [](Ifc& s) { return s.deactivate(true); }},
    {coded, "sendRequest <Method>Deactivate</Method><AllowAutoActivate>0</AllowAutoActivate>",
     [](Ifc& s) { return s.deactivate(false); }},
    {coded, "sendRequest <Method>CallClearRequest</Method><Line>1001</Line>"
     "<CallID>12</CallID><Cause>48</Cause>",
     [](Ifc& s) { return s.callClear("1001", 12, CSTAEventCause::normalClearing); }},
    {coded, "sendRequest <Method>OutgoingCallMakeRequest</Method><Line>1002</Line>"
     "<CallID>13</CallID><Destination>2002</Destination><DSSDirectCall>1</DSSDirectCall>"
     "<BridgeCall>0</BridgeCall><CallCompletionCall>0</CallCompletionCall>",
     [](Ifc& s) { return s.outgoingCallMake("1002", 13, "2002", true, false, false); }},
    {coded, "sendRequest <Method>OutgoingCallMakeRequest</Method><Line>1002</Line>"
     "<CallID>13</CallID><Destination>2002</Destination><DSSDirectCall>0</DSSDirectCall>"
     "<BridgeCall>1</BridgeCall><CallCompletionCall>0</CallCompletionCall>",
     [](Ifc& s) { return s.outgoingCallMake("1002", 13, "2002", false, true, false); }},
    {coded, "sendRequest <Method>OutgoingCallMakeRequest</Method><Line>1002</Line>"
     "<CallID>13</CallID><Destination>2002</Destination><DSSDirectCall>0</DSSDirectCall>"
     "<BridgeCall>0</BridgeCall><CallCompletionCall>1</CallCompletionCall>",
     [](Ifc& s) { return s.outgoingCallMake("1002", 13, "2002", false, false, true); }},
    {coded, "sendRequest <Method>AcceptCall</Method><Line>1003</Line><CallID>14</CallID>"
     "<AutoAnswer>1</AutoAnswer>",
     [](Ifc& s) { return s.acceptCall("1003", 14, true); }},
    {coded, "sendRequest <Method>AcceptCall</Method><Line>1003</Line><CallID>14</CallID>"
     "<AutoAnswer>0</AutoAnswer>",
     [](Ifc& s) { return s.acceptCall("1003", 14, false); }},
    {coded, "sendRequest <Method>AnswerCall</Method><Line>1004</Line><CallID>15</CallID>",
     [](Ifc& s) { return s.answerCall("1004", 15); }},
    {coded, "sendRequest <Method>DeflectCall</Method><Line>1005</Line><CallID>16</CallID>"
     "<Destination>2005</Destination>",
     [](Ifc& s) { return s.deflectCall("1005", 16, "2005"); }},
    {coded, "sendRequest <Method>HoldCall</Method><Line>1006</Line><CallID>17</CallID>"
     "<HoldCallReason>3</HoldCallReason><Manual>1</Manual>",
     [](Ifc& s) { return s.holdCall("1006", 17, feature(3), true); }},
    {coded, "sendRequest <Method>HoldCall</Method><Line>1006</Line><CallID>17</CallID>"
     "<HoldCallReason>4</HoldCallReason><Manual>0</Manual>",
     [](Ifc& s) { return s.holdCall("1006", 17, feature(4), false); }},
    {coded, "sendRequest <Method>RetrieveCall</Method><Line>1007</Line><CallID>18</CallID>",
     [](Ifc& s) { return s.retrieveCall("1007", 18); }},
    {coded, "sendRequest <Method>AttendedTransfer</Method><Line>1008</Line>"
     "<activeCall>12</activeCall><heldCall>7</heldCall>",
     [](Ifc& s) { return s.attendedTransferCall("1008", 12, 7); }},
    {coded, "sendRequest <Method>BlindTransfer</Method><Line>1009</Line><CallID>19</CallID>"
     "<Destination>2009</Destination>",
     [](Ifc& s) { return s.blindTransferCall("1009", 19, "2009"); }},
    {coded, "sendRequest <Method>SendCSTARequest</Method><Line>1010</Line>"
     "<?xml?>\n<MakeCall/> \0 "s,
     [](Ifc& s) { return s.SendCSTARequest("1010", "<?xml?>\n<MakeCall/> \0 "s); }},
    {posted, "sendOneWay <Method>SendUACSTAServerMessage</Method><Line>1011</Line> <a>\0</a>"s,
     [](Ifc& s) {
         std::string line = "1011", message = " <a>\0</a>"s;
         s.sendUACSTAServerMessage(line, message);
         return line == "1011" && message == " <a>\0</a>"s ? nothing : 0;
     }},
    {posted, "sendOneWay <Method>InitializeOrFinalizeServerFeatures</Method><Line>1012</Line>"
     "<initialize>1</initialize>",
     [](Ifc& s) { s.InitializeOrFinalizeServerFeatures("1012", true); return nothing; }},
    {posted, "sendOneWay <Method>InitializeOrFinalizeServerFeatures</Method><Line>1012</Line>"
     "<initialize>0</initialize>",
     [](Ifc& s) { s.InitializeOrFinalizeServerFeatures("1012", false); return nothing; }},
    {coded, "sendRequest <Method>ActivateCallbackRinging</Method><Line>1013</Line>"
     "<CallID>20</CallID>",
     [](Ifc& s) { return s.activateCallbackRinging("1013", 20); }},
    {coded, "sendRequest <Method>ActivateCallbackBusy</Method><Line>1014</Line>"
     "<CallID>21</CallID>",
     [](Ifc& s) { return s.activateCallbackBusy("1014", 21); }},
    {coded, "sendRequest <Method>CancelCallbacks</Method><Line>1015</Line><CallID>22</CallID>"
     "<URI>sip:2015</URI><CancelCallBackType>2</CancelCallBackType>"
     "<DisplayOutcomeCallUI>1</DisplayOutcomeCallUI>",
     [](Ifc& s) { return s.cancelCallbacks("1015", 22, "sip:2015", cancelling(2), true); }},
    {coded, "sendRequest <Method>CancelCallbacks</Method><Line>1015</Line><CallID>22</CallID>"
     "<URI>sip:2015</URI><CancelCallBackType>3</CancelCallBackType>"
     "<DisplayOutcomeCallUI>0</DisplayOutcomeCallUI>",
     [](Ifc& s) { return s.cancelCallbacks("1015", 22, "sip:2015", cancelling(3), false); }},
    {coded, "sendRequest <Method>Consult</Method><Line>1016</Line><CallID>23</CallID>"
     "<Destination>2016</Destination>",
     [](Ifc& s) { return s.consultationCall("1016", 23, "2016"); }},
    {coded, "sendRequest <Method>RefuseCall</Method><Line>1017</Line><CallID>24</CallID>"
     "<RefuseCallReason>6</RefuseCallReason>",
     [](Ifc& s) { return s.refuseCall("1017", 24, refusal(6)); }},
    {coded, "sendRequest <Method>DirectedPickupCall</Method><Line>1018</Line>"
     "<CallID>25</CallID><CallToBePickedUp>3018</CallToBePickedUp><BLFPickup>1</BLFPickup>",
     [](Ifc& s) { return s.directedPickupCall("1018", 25, "3018", true); }},
    {coded, "sendRequest <Method>DirectedPickupCall</Method><Line>1018</Line>"
     "<CallID>25</CallID><CallToBePickedUp>3018</CallToBePickedUp><BLFPickup>0</BLFPickup>",
     [](Ifc& s) { return s.directedPickupCall("1018", 25, "3018", false); }},
    {coded, "sendRequest <Method>GroupPickupCall</Method><Line>1019</Line><CallID>26</CallID>",
     [](Ifc& s) { return s.groupPickupCall("1019", 26); }},
    {coded, "sendRequest <Method>SetServiceState</Method><state>sfiServiceInService</state>",
     [](Ifc& s) { return s.setServiceState(sfiServiceInService); }},
    {coded, "sendRequest <Method>SetServiceState</Method>"
     "<state>sfiServiceOutOfService</state>",
     [](Ifc& s) { return s.setServiceState(sfiServiceOutOfService); }},
    {coded, "sendRequest <Method>SetServiceState</Method>"
     "<state>sfiServiceDoNotDisturb</state>",
     [](Ifc& s) { return s.setServiceState(sfiServiceDoNotDisturb); }},
    {read, "sendRequest <Method>GetServiceState</Method> over false",
     [](Ifc& s) { return s.getServiceState(anyState); }},
    {coded, "sendRequest <Method>SetDoNotDisturb</Method><Line>1020</Line>"
     "<doNotDisturbOn>1</doNotDisturbOn>",
     [](Ifc& s) { return s.setDoNotDisturb("1020", true); }},
    {coded, "sendRequest <Method>SetDoNotDisturb</Method><Line>1020</Line>"
     "<doNotDisturbOn>0</doNotDisturbOn>",
     [](Ifc& s) { return s.setDoNotDisturb("1020", false); }},
    {read, "sendRequest <Method>GetDoNotDisturb</Method><deviceID>1021</deviceID> over false",
     [](Ifc& s) { return s.getDoNotDisturb("1021", anyFlag); }},
    {coded, "sendRequest <Method>SetAgentState</Method><Line>1022</Line>"
     "<agentState>ready</agentState>",
     [](Ifc& s) { return s.setAgentState("1022", "ready"); }},
    {coded, "sendRequest <Method>SetMicrophoneMute</Method><Status>1</Status>",
     [](Ifc& s) { return s.setMicrophoneMute(true); }},
    {coded, "sendRequest <Method>SetMicrophoneMute</Method><Status>0</Status>",
     [](Ifc& s) { return s.setMicrophoneMute(false); }},
    {read, "sendRequest <Method>GetMicrophoneMute</Method>",
     [](Ifc& s) { return s.getMicrophoneMute(anyFlag); }},
    {coded, "sendRequest <Method>SystemStatus</Method><SystemStatus>DEGRADED</SystemStatus>"
     "<SystemStatusInfo>backup</SystemStatusInfo>",
     [](Ifc& s) { return s.systemStatus("DEGRADED", "backup"); }},
    {coded, "sendRequest <Method>GenerateDigits</Method><Line>1023</Line>"
     "<activeCall>27</activeCall><digits>12#</digits>",
     [](Ifc& s) { return s.generateDigits("1023", 27, "12#"); }},
    {read, "sendRequest <Method>GetDevices</Method>",
     [](Ifc& s) { return s.getDevices(anyTexts); }},
    {coded, "sendRequest <Method>ConferenceCall</Method><Line>1024</Line>"
     "<activeCall>28</activeCall><heldCall>8</heldCall><feature>5</feature>",
     [](Ifc& s) { return s.conferenceCall("1024", 28, 8, feature(5)); }},
    {posted, "sendOneWay <Method>RemoveConfParticipant</Method><callID>itos(29)</callID>"
     "<remoteParticipant>2025</remoteParticipant><conferenceMemberId>6</conferenceMemberId>",
     [](Ifc& s) { s.RemoveConfParticipant(29, "2025", "6"); return nothing; }},
    {read, "sendRequest <Method>getManualHoldIndication</Method><Line>1026</Line>"
     "<CallID>30</CallID>",
     [](Ifc& s) { return int{s.getManualHoldIndication("1026", 30)}; }},
    {coded, "sendRequest <Method>AlternateCalls</Method><Line>1027</Line>",
     [](Ifc& s) { return s.alternateCalls("1027"); }},
    {read, "sendRequest <Method>GetMessageWaitingIndicator</Method>",
     [](Ifc& s) {
         return s.getMessageWaitingIndicator(anyNumber, anyCount, anyCount, anyCount,
             anyCount, anyNumber, anyNumber, anyNumber, anyText);
     }},
    {coded, "sendRequest <Method>setAssociatedCalls</Method><associated>1</associated>",
     [](Ifc& s) { return s.setAssociatedCalls(true); }},
    {coded, "sendRequest <Method>setAssociatedCalls</Method><associated>0</associated>",
     [](Ifc& s) { return s.setAssociatedCalls(false); }},
    {coded, "sendRequest <Method>setLampMode</Method><Line>1028</Line><lampId>lamp3</lampId>"
     "<lampMode>2</lampMode>",
     [](Ifc& s) { return s.setLampMode("1028", "lamp3", 2); }},
    {coded, "sendRequest <Method>makeSecurityChangeReinvite</Method><Line>1029</Line>"
     "<CallID>31</CallID><forceFlag>1</forceFlag>",
     [](Ifc& s) { return s.makeSecurityChangeReinvite("1029", 31, true); }},
    {coded, "sendRequest <Method>makeSecurityChangeReinvite</Method><Line>1029</Line>"
     "<CallID>31</CallID><forceFlag>0</forceFlag>",
     [](Ifc& s) { return s.makeSecurityChangeReinvite("1029", 31, false); }},
    {posted, "sendOneWay <Method>setIsInServiceInitiatedState</Method><Line>1030</Line>"
     "<IsInServiceInitiatedState>TRUE</IsInServiceInitiatedState>",
     [](Ifc& s) { s.setIsInServiceInitiatedState("1030", true); return nothing; }},
    {posted, "sendOneWay <Method>setIsInServiceInitiatedState</Method><Line>1030</Line>"
     "<IsInServiceInitiatedState>FALSE</IsInServiceInitiatedState>",
     [](Ifc& s) { s.setIsInServiceInitiatedState("1030", false); return nothing; }},
    {coded, "sendRequest <Method>setForwardingConfiguration</Method><Line>1031</Line>"
     "<fwType>7</fwType><status>1</status><uri>sip:2031</uri><cfnrRingCount>4</cfnrRingCount>"
     "<forceTKVSUpdate>0</forceTKVSUpdate>",
     [](Ifc& s) {
         return s.setForwardingConfiguration("1031", forwarding(7), true, "sip:2031", 4, false);
     }},
    {coded, "sendRequest <Method>setForwardingConfiguration</Method><Line>1031</Line>"
     "<fwType>8</fwType><status>0</status><uri></uri><cfnrRingCount>0</cfnrRingCount>"
     "<forceTKVSUpdate>1</forceTKVSUpdate>",
     [](Ifc& s) {
         return s.setForwardingConfiguration("1031", forwarding(8), false, "", 0, true);
     }},
    {read, "sendRequest <Method>getForwardingConfiguration</Method><fwType>9</fwType>",
     [](Ifc& s) {
         return s.getForwardingConfiguration(forwarding(9), anyFlag, anyText, anyNumber);
     }},
    {posted, "sendOneWay <Method>callbackDOFeatureCallID</Method><CallID>32 </CallID>"
     "<instanceId>itos(3)</instanceId>",
     [](Ifc& s) { s.callbackDOFeatureCallID("32 ", 3); return nothing; }},
    {read, "sendRequest <Method>isCallHoldPossible</Method><Line>1032</Line>",
     [](Ifc& s) { return int{s.isCallHoldPossible("1032")}; }},

    // A null C string cuts the request off; an empty one does not.
    {coded, "sendRequest <Method>OutgoingCallMakeRequest</Method><Line>1</Line>"
     "<CallID>2</CallID><Destination>",
     [](Ifc& s) { return s.outgoingCallMake("1", 2, none, true, true, true); }},
    {coded, "sendRequest <Method>OutgoingCallMakeRequest</Method><Line></Line>"
     "<CallID>2</CallID><Destination></Destination><DSSDirectCall>1</DSSDirectCall>"
     "<BridgeCall>1</BridgeCall><CallCompletionCall>1</CallCompletionCall>",
     [](Ifc& s) { return s.outgoingCallMake("", 2, "", true, true, true); }},
    {coded, "sendRequest <Method>DeflectCall</Method><Line>1</Line><CallID>2</CallID>"
     "<Destination>",
     [](Ifc& s) { return s.deflectCall("1", 2, none); }},
    {coded, "sendRequest <Method>BlindTransfer</Method><Line>1</Line><CallID>2</CallID>"
     "<Destination>",
     [](Ifc& s) { return s.blindTransferCall("1", 2, none); }},
    {coded, "sendRequest <Method>Consult</Method><Line>1</Line><CallID>2</CallID>"
     "<Destination>",
     [](Ifc& s) { return s.consultationCall("1", 2, none); }},
    {coded, "sendRequest <Method>GenerateDigits</Method><Line>1</Line>"
     "<activeCall>2</activeCall><digits>",
     [](Ifc& s) { return s.generateDigits("1", 2, none); }},
    {coded, "sendRequest <Method>SystemStatus</Method><SystemStatus>",
     [](Ifc& s) { return s.systemStatus(none, "info"); }},
    {coded, "sendRequest <Method>SystemStatus</Method><SystemStatus>",
     [](Ifc& s) { return s.systemStatus(none, none); }},
    {coded, "sendRequest <Method>SystemStatus</Method><SystemStatus>up</SystemStatus>"
     "<SystemStatusInfo>",
     [](Ifc& s) { return s.systemStatus("up", none); }},
    {coded, "sendRequest <Method>SystemStatus</Method><SystemStatus></SystemStatus>"
     "<SystemStatusInfo></SystemStatusInfo>",
     [](Ifc& s) { return s.systemStatus("", ""); }},

    // Empty texts and payloads; texts with tags and zero bytes; no text is trimmed.
    {coded, "sendRequest <Method>AlternateCalls</Method><Line></Line>",
     [](Ifc& s) { return s.alternateCalls(""); }},
    {coded, "sendRequest <Method>SendCSTARequest</Method><Line></Line>",
     [](Ifc& s) { return s.SendCSTARequest("", ""); }},
    {coded, "sendRequest <Method>AlternateCalls</Method><Line></Line><Line>&\xff </Line>",
     [](Ifc& s) { return s.alternateCalls("</Line><Line>&\xff "); }},
    {coded, "sendRequest <Method>SetAgentState</Method><Line>\0x</Line>"
     "<agentState> a\0</agentState>"s,
     [](Ifc& s) { return s.setAgentState("\0x"s, " a\0"s); }},

    // Numbers and enumerations have no range. Thousands are not separated.
    {coded, "sendRequest <Method>CallClearRequest</Method><Line>1</Line>"
     "<CallID>-2147483648</CallID><Cause>2147483647</Cause>",
     [](Ifc& s) { return s.callClear("1", INT_MIN, cause(INT_MAX)); }},
    {coded, "sendRequest <Method>HoldCall</Method><Line>1</Line><CallID>2147483647</CallID>"
     "<HoldCallReason>-2147483648</HoldCallReason><Manual>0</Manual>",
     [](Ifc& s) { return s.holdCall("1", INT_MAX, feature(INT_MIN), false); }},
    {coded, "sendRequest <Method>RefuseCall</Method><Line>1</Line><CallID>0</CallID>"
     "<RefuseCallReason>-1</RefuseCallReason>",
     [](Ifc& s) { return s.refuseCall("1", 0, refusal(-1)); }},
    {coded, "sendRequest <Method>ConferenceCall</Method><Line>1</Line>"
     "<activeCall>1234567</activeCall><heldCall>-7654321</heldCall><feature>98765</feature>",
     [](Ifc& s) { return s.conferenceCall("1", 1234567, -7654321, feature(98765)); }},
    {coded, "sendRequest <Method>CancelCallbacks</Method><Line>1</Line><CallID>1</CallID>"
     "<URI></URI><CancelCallBackType>2147483647</CancelCallBackType>"
     "<DisplayOutcomeCallUI>1</DisplayOutcomeCallUI>",
     [](Ifc& s) { return s.cancelCallbacks("1", 1, "", cancelling(INT_MAX), true); }},
    {read, "sendRequest <Method>getForwardingConfiguration</Method>"
     "<fwType>-2147483648</fwType>",
     [](Ifc& s) {
         return s.getForwardingConfiguration(forwarding(INT_MIN), anyFlag, anyText, anyNumber);
     }},
    {posted, "sendOneWay <Method>RemoveConfParticipant</Method><callID>itos(-1)</callID>"
     "<remoteParticipant></remoteParticipant><conferenceMemberId></conferenceMemberId>",
     [](Ifc& s) { s.RemoveConfParticipant(-1, "", ""); return nothing; }},
    {coded, "sendRequest <Method>SetServiceState</Method><state></state>",
     [](Ifc& s) { return s.setServiceState(serviceState(3)); }},
    {coded, "sendRequest <Method>SetServiceState</Method><state></state>",
     [](Ifc& s) { return s.setServiceState(serviceState(-1)); }},
};
// clang-format on

const struct
{
    const char* answer;
    int result;
} resultWords[] = {
    {"sfiSuccess", 5},
    {"sfiFailureCallBackInvalidState", 1},
    {"sfiFailureCallBackNoCallInfo", 2},
    {"sfiFailureCallBackToMany", 3},
    {"sfiFailureCallBackAllreadyExists", 4},
    {"sfiFailure", 0},
    {"", 0},
    {"sfiSuccess ", 0},
    {" sfiSuccess", 0},
    {"sfiSuccessX", 0},
    {"sfiSucces", 0},
    {"SFISUCCESS", 0},
    {"sfiFailureCallBackAlreadyExists", 0},
    {"<sfiResult>sfiSuccess</sfiResult>", 0},
};

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
    for (const Request& request : requests)
    {
        request.call(service);
        EXPECT_EQ(line(), request.expected);
    }
}

TEST_F(RequestTest, EachAnswerBecomesTheResult)
{
    for (const Request& request : requests)
        for (const auto& word : resultWords)
        {
            channel.answer = word.answer;
            const int result = request.call(service);
            if (request.kind == read)
                continue;
            EXPECT_EQ(result, request.kind == coded ? word.result : nothing)
                << word.answer << " to " << request.expected;
        }
    support::takeTrace();
}

TEST_F(RequestTest, WhatTheChannelThrowsPasses)
{
    channel.inRequest = [] { throw std::string("unreachable"); };
    for (const Request& request : requests)
    {
        EXPECT_THROW(request.call(service), std::string);
        EXPECT_EQ(line(), request.expected);
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
            (Lines{request.expected, "sendRequest <Method>setLampMode</Method><Line>nested</Line>"
                                     "<lampId>lamp</lampId><lampMode>77</lampMode>"}));
        EXPECT_TRUE(request.kind != coded || result == 2) << "to the outer " << request.expected;
    }
}

TEST_F(RequestTest, DoesNotDependOnTheLocale)
{
    const support::ForeignLocale foreign;
    for (const Request& request : requests)
    {
        request.call(service);
        EXPECT_EQ(line(), request.expected);
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
    for (const std::size_t other : {0U, 1U, 380U, 460U, 511U, 512U, 513U, 1100U, 70000U})
        for (std::size_t length = 0; length < 600; ++length)
        {
            const std::string rest = filled(other, 'r');
            const std::string text = filled(length, 't');
            service.setLampMode(text, rest, 1234);
            ASSERT_EQ(line(), "sendRequest <Method>setLampMode</Method><Line>" + text +
                                  "</Line><lampId>" + rest + "</lampId><lampMode>1234</lampMode>")
                << length;
            service.SendCSTARequest(text, rest);
            ASSERT_EQ(line(), "sendRequest <Method>SendCSTARequest</Method><Line>" + text +
                                  "</Line>" + rest)
                << length;
            service.systemStatus(text.c_str(), nullptr);
            ASSERT_EQ(line(), "sendRequest <Method>SystemStatus</Method><SystemStatus>" + text +
                                  "</SystemStatus><SystemStatusInfo>")
                << length;
            service.outgoingCallMake(text, 5, nullptr, true, true, true);
            ASSERT_EQ(line(), "sendRequest <Method>OutgoingCallMakeRequest</Method><Line>" + text +
                                  "</Line><CallID>5</CallID><Destination>")
                << length;
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

TEST_F(RequestTest, WhatNumbersAreWrittenWithMayThrow)
{
    support::inFramework = [] { throw std::string("itos"); };
    EXPECT_THROW(service.callbackDOFeatureCallID("1", 2), std::string);
    EXPECT_THROW(service.RemoveConfParticipant(1, "2", "3"), std::string);
    support::inFramework = nullptr;
    EXPECT_EQ(support::takeTrace(), Lines()) << "nothing is sent";
}

// Answers.

TEST_F(RequestTest, OperationsWithoutARequestSendNothing)
{
    EXPECT_EQ(service.csCommunicationsService("name"), "");
    EXPECT_EQ(service.csCommunicationsService(nullptr), "");
    service.activateStoredFwd();
    EXPECT_EQ(support::takeTrace(), Lines());
}

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
        sfiServiceState state = serviceState(77);
        EXPECT_EQ(service.getServiceState(state), row.result) << row.answer;
        EXPECT_EQ(state, serviceState(row.state)) << row.answer;
    }
}

TEST_F(RequestTest, AChannelMayAppendToTheAnswerThatItFinds)
{
    channel.appends = true;
    channel.answer = " true";
    bool flag = false;
    EXPECT_EQ(service.getDoNotDisturb("1001", flag), 5);
    EXPECT_TRUE(flag);
    sfiServiceState state = serviceState(77);
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
    const struct
    {
        std::string answer;
        int result;
        bool status;
        std::string uri;
        int ringCount;
    } rows[] = {
        {"<sfiResult>sfiSuccess</sfiResult><status>0</status><uri>sip:1234</uri>"
         "<cfnrRingCount>3</cfnrRingCount>",
         5, false, "sip:1234", 3},
        {"<cfnrRingCount>-8</cfnrRingCount><uri></uri><status>1</status>"
         "<sfiResult>sfiFailureCallBackNoCallInfo</sfiResult>",
         2, true, "", -8},
        {"", 0, true, "", -1},
        {"<sfiResult>sfiFailure</sfiResult><status>2</status>", 0, true, "", -1},
        {"<status></status><cfnrRingCount>x</cfnrRingCount>", 0, false, "", 0},
        {"<status>no</status><cfnrRingCount> 42abc</cfnrRingCount>", 0, false, "", 42},
        // Numbers stop at the 32-bit limits.
        {"<cfnrRingCount>99999999999</cfnrRingCount>", 0, true, "", INT_MAX},
        {"<cfnrRingCount>-99999999999</cfnrRingCount>", 0, true, "", INT_MIN},
        {"<status>4294967296</status>", 0, true, "", -1},
        // The first end tag counts, wherever it stands: a value may run on to the end.
        {"<uri>sip:a", 0, true, "sip:a", -1},
        {"</uri><uri>sip:a</uri><status>0</status>", 0, false, "sip:a</uri><status>0</status>", -1},
        {"<sfiResult>x</uri></sfiResult><status>0</status><uri>a</uri>", 0, false, "a</uri>", -1},
        {"</cfnrRingCount><cfnrRingCount>7</cfnrRingCount><uri>b</uri>", 0, true, "b", 7},
        {"<sfiResult>sfiSuccess", 5, true, "", -1},
        {"</sfiResult><sfiResult>sfiSuccess</sfiResult>", 0, true, "", -1},
        // The first start tag counts; names match whole, in their case.
        {"<uri>first</uri><uri>second</uri>", 0, true, "first", -1},
        {"<uris>x</uris><URI>y</URI><uri >z</uri>", 0, true, "", -1},
        {"<uri><status>0</status></uri>", 0, false, "<status>0</status>", -1},
        {"<uri>a\0b</uri>"s, 0, true, "a\0b"s, -1},
    };
    for (const auto& row : rows)
    {
        channel.answer = row.answer;
        bool status = !row.status;
        std::string uri = "before";
        int ringCount = 77;
        EXPECT_EQ(service.getForwardingConfiguration(forwarding(1), status, uri, ringCount),
                  row.result)
            << row.answer;
        EXPECT_EQ(status, row.status) << row.answer;
        EXPECT_EQ(uri, row.uri) << row.answer;
        EXPECT_EQ(ringCount, row.ringCount) << row.answer;
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
    const struct
    {
        std::string answer;
        std::string expected;
    } rows[] = {
        {whole, "5: 1, 2u, 3u, 4u, 5u, 6, 7, 8, '9000'"},
        {extremes,
         "4: 5, 2147483648u, 0u, 2147483647u, 4294967295u, -2147483648, 2147483647, -1, ' 9'"},
        {"", "0: 0, 0u, 0u, 0u, 0u, 0, 0, 0, ''"},
        {"<func_return_val>sfiSuccess</func_return_val><newMsgs>2</newMsgs>",
         "5: 0, 2u, 0u, 0u, 0u, 0, 0, 0, ''"},
        {"</Type><Type>12</Type><voiceMailNumber>9", "0: 12, 0u, 0u, 0u, 0u, 0, 0, 0, '9'"},
        {"<type>12</type><NewMsgs>3</NewMsgs><sfiResult>sfiSuccess</sfiResult>",
         "0: 0, 0u, 0u, 0u, 0u, 0, 0, 0, ''"},
    };
    for (const auto& row : rows)
    {
        channel.answer = row.answer;
        int type = 70, returnType = 71, availableInfo = 72, messagesWaiting = 73;
        unsigned int newMsgs = 74, oldMsgs = 75, newUrgMsgs = 76, oldUrgMsgs = 77;
        std::string number = "before";
        const int result =
            service.getMessageWaitingIndicator(type, newMsgs, oldMsgs, newUrgMsgs, oldUrgMsgs,
                                               returnType, availableInfo, messagesWaiting, number);
        using support::show;
        EXPECT_EQ(show(result) + ": " + show(type) + ", " + show(newMsgs) + ", " + show(oldMsgs) +
                      ", " + show(newUrgMsgs) + ", " + show(oldUrgMsgs) + ", " + show(returnType) +
                      ", " + show(availableInfo) + ", " + show(messagesWaiting) + ", " +
                      show(number),
                  row.expected);
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
    channel.answer += "<cfnrRingCount>7</cfnrRingCount>";
    bool status = false;
    std::string uri;
    int ringCount = 0;
    EXPECT_EQ(service.getForwardingConfiguration(forwarding(1), status, uri, ringCount), 0);
    EXPECT_EQ(ringCount, 7);
}

}  // namespace

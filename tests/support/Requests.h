#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_REQUESTS_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_REQUESTS_H

#include "CommunicationsServiceIfc.h"

#include <climits>
#include <deque>
#include <string>
#include <vector>

/// Every operation that sends a request, but for subscribe: the call, and the exact bytes. The
/// framework of the tests writes 12 as "itos(12)".
namespace samples
{

using namespace std::string_literals;
using Service = CommunicationsServiceIfc;

constexpr int nothing = -100;  // result of an operation that has none
constexpr const char* none = nullptr;

/// A test that asks for it sees the texts of a call, and what stands behind each of them.
struct Texts
{
    std::string behindText;   ///< goes behind every std::string
    std::string behindChars;  ///< and this behind every C string
    std::deque<std::string> given = {};
};
inline Texts* texts = nullptr;

inline std::string textOf(const char* value)
{
    return texts == nullptr ? value : texts->given.emplace_back(value + texts->behindText);
}
inline const char* charsOf(const char* value)
{
    return texts == nullptr ? value : texts->given.emplace_back(value + texts->behindChars).c_str();
}

/// How an answer becomes the operation's result.
enum Awaiting
{
    coded,   ///< the whole answer is a result word
    timed,   ///< the same, and the channel is told how long to wait
    read,    ///< in a way of the operation's own
    preset,  ///< the same, and the answer begins as "false"
    posted,  ///< not awaited
};

/// Whole answers, and what they become.
inline const struct
{
    std::string answer;
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
    {"sfiSuccess\0"s, 0},
    {"sfiSuccess\0x"s, 0},
    {"sfiSucces", 0},
    {"SFISUCCESS", 0},
    {"sfiFailureCallBackAlreadyExists", 0},
    {"<sfiResult>sfiSuccess</sfiResult>", 0},
};

struct Request
{
    Awaiting kind;
    std::string sent;
    int (*call)(CommunicationsServiceIfc& service);
};

// One row for each request, as it is read.
// clang-format off
inline const Request requests[] = {
    // The operations in the interface's order, every text and number another one.
    {posted, "SigEvent:ab\0c"s, [](Service& s) { s.processSignallingComponentEvent("ab\0cd", 4); return nothing; }},
    {posted, "SigEvent:", [](Service& s) { s.processSignallingComponentEvent("ab", 0); return nothing; }},
    {timed, "<Method>Activate</Method>", [](Service& s) { return s.activate(); }},
    {coded, "<Method>Deactivate</Method><AllowAutoActivate>1</AllowAutoActivate>",
     [](Service& s) { return s.deactivate(true); }},
    {coded, "<Method>Deactivate</Method><AllowAutoActivate>0</AllowAutoActivate>",
     [](Service& s) { return s.deactivate(false); }},
    {coded, "<Method>CallClearRequest</Method><Line>1001</Line><CallID>12</CallID><Cause>48</Cause>",
     [](Service& s) { return s.callClear(textOf("1001"), 12, CSTAEventCause::normalClearing); }},
    {coded, "<Method>OutgoingCallMakeRequest</Method><Line>1002</Line><CallID>13</CallID>"
     "<Destination>2002</Destination><DSSDirectCall>1</DSSDirectCall><BridgeCall>0</BridgeCall>"
     "<CallCompletionCall>0</CallCompletionCall>",
     [](Service& s) { return s.outgoingCallMake(textOf("1002"), 13, charsOf("2002"), true, false, false); }},
    {coded, "<Method>OutgoingCallMakeRequest</Method><Line>1002</Line><CallID>13</CallID>"
     "<Destination>2002</Destination><DSSDirectCall>0</DSSDirectCall><BridgeCall>1</BridgeCall>"
     "<CallCompletionCall>0</CallCompletionCall>",
     [](Service& s) { return s.outgoingCallMake(textOf("1002"), 13, charsOf("2002"), false, true, false); }},
    {coded, "<Method>OutgoingCallMakeRequest</Method><Line>1002</Line><CallID>13</CallID>"
     "<Destination>2002</Destination><DSSDirectCall>0</DSSDirectCall><BridgeCall>0</BridgeCall>"
     "<CallCompletionCall>1</CallCompletionCall>",
     [](Service& s) { return s.outgoingCallMake(textOf("1002"), 13, charsOf("2002"), false, false, true); }},
    {coded, "<Method>AcceptCall</Method><Line>1003</Line><CallID>14</CallID><AutoAnswer>1</AutoAnswer>",
     [](Service& s) { return s.acceptCall(textOf("1003"), 14, true); }},
    {coded, "<Method>AcceptCall</Method><Line>1003</Line><CallID>14</CallID><AutoAnswer>0</AutoAnswer>",
     [](Service& s) { return s.acceptCall(textOf("1003"), 14, false); }},
    {coded, "<Method>AnswerCall</Method><Line>1004</Line><CallID>15</CallID>",
     [](Service& s) { return s.answerCall(textOf("1004"), 15); }},
    {coded, "<Method>DeflectCall</Method><Line>1005</Line><CallID>16</CallID><Destination>2005</Destination>",
     [](Service& s) { return s.deflectCall(textOf("1005"), 16, charsOf("2005")); }},
    {coded, "<Method>HoldCall</Method><Line>1006</Line><CallID>17</CallID><HoldCallReason>3</HoldCallReason>"
     "<Manual>1</Manual>",
     [](Service& s) { return s.holdCall(textOf("1006"), 17, sfiFeature(3), true); }},
    {coded, "<Method>HoldCall</Method><Line>1006</Line><CallID>17</CallID><HoldCallReason>4</HoldCallReason>"
     "<Manual>0</Manual>",
     [](Service& s) { return s.holdCall(textOf("1006"), 17, sfiFeature(4), false); }},
    {coded, "<Method>RetrieveCall</Method><Line>1007</Line><CallID>18</CallID>",
     [](Service& s) { return s.retrieveCall(textOf("1007"), 18); }},
    {coded, "<Method>AttendedTransfer</Method><Line>1008</Line><activeCall>12</activeCall><heldCall>7</heldCall>",
     [](Service& s) { return s.attendedTransferCall(textOf("1008"), 12, 7); }},
    {coded, "<Method>BlindTransfer</Method><Line>1009</Line><CallID>19</CallID><Destination>2009</Destination>",
     [](Service& s) { return s.blindTransferCall(textOf("1009"), 19, charsOf("2009")); }},
    {coded, "<Method>SendCSTARequest</Method><Line>1010</Line><?xml?>\n<MakeCall/> \0 "s,
     [](Service& s) { return s.SendCSTARequest(textOf("1010"), "<?xml?>\n<MakeCall/> \0 "s); }},
    {posted, "<Method>SendUACSTAServerMessage</Method><Line>1011</Line> <a>\0</a>"s,
     [](Service& s) {
         std::string line = textOf("1011"), message = " <a>\0</a>"s;
         s.sendUACSTAServerMessage(line, message);
         return line == textOf("1011") && message == " <a>\0</a>"s ? nothing : 0;
     }},
    {posted, "<Method>InitializeOrFinalizeServerFeatures</Method><Line>1012</Line><initialize>1</initialize>",
     [](Service& s) { s.InitializeOrFinalizeServerFeatures(textOf("1012"), true); return nothing; }},
    {posted, "<Method>InitializeOrFinalizeServerFeatures</Method><Line>1012</Line><initialize>0</initialize>",
     [](Service& s) { s.InitializeOrFinalizeServerFeatures(textOf("1012"), false); return nothing; }},
    {coded, "<Method>ActivateCallbackRinging</Method><Line>1013</Line><CallID>20</CallID>",
     [](Service& s) { return s.activateCallbackRinging(textOf("1013"), 20); }},
    {coded, "<Method>ActivateCallbackBusy</Method><Line>1014</Line><CallID>21</CallID>",
     [](Service& s) { return s.activateCallbackBusy(textOf("1014"), 21); }},
    {coded, "<Method>CancelCallbacks</Method><Line>1015</Line><CallID>22</CallID><URI>sip:2015</URI>"
     "<CancelCallBackType>2</CancelCallBackType><DisplayOutcomeCallUI>1</DisplayOutcomeCallUI>",
     [](Service& s) { return s.cancelCallbacks(textOf("1015"), 22, textOf("sip:2015"), sfiCancelCallBackType(2), true); }},
    {coded, "<Method>CancelCallbacks</Method><Line>1015</Line><CallID>22</CallID><URI>sip:2015</URI>"
     "<CancelCallBackType>3</CancelCallBackType><DisplayOutcomeCallUI>0</DisplayOutcomeCallUI>",
     [](Service& s) { return s.cancelCallbacks(textOf("1015"), 22, textOf("sip:2015"), sfiCancelCallBackType(3), false); }},
    {coded, "<Method>Consult</Method><Line>1016</Line><CallID>23</CallID><Destination>2016</Destination>",
     [](Service& s) { return s.consultationCall(textOf("1016"), 23, charsOf("2016")); }},
    {coded, "<Method>RefuseCall</Method><Line>1017</Line><CallID>24</CallID><RefuseCallReason>6</RefuseCallReason>",
     [](Service& s) { return s.refuseCall(textOf("1017"), 24, sfiRefuseCall(6)); }},
    {coded, "<Method>DirectedPickupCall</Method><Line>1018</Line><CallID>25</CallID>"
     "<CallToBePickedUp>3018</CallToBePickedUp><BLFPickup>1</BLFPickup>",
     [](Service& s) { return s.directedPickupCall(textOf("1018"), 25, textOf("3018"), true); }},
    {coded, "<Method>DirectedPickupCall</Method><Line>1018</Line><CallID>25</CallID>"
     "<CallToBePickedUp>3018</CallToBePickedUp><BLFPickup>0</BLFPickup>",
     [](Service& s) { return s.directedPickupCall(textOf("1018"), 25, textOf("3018"), false); }},
    {coded, "<Method>GroupPickupCall</Method><Line>1019</Line><CallID>26</CallID>",
     [](Service& s) { return s.groupPickupCall(textOf("1019"), 26); }},
    {coded, "<Method>SetServiceState</Method><state>sfiServiceInService</state>",
     [](Service& s) { return s.setServiceState(sfiServiceInService); }},
    {coded, "<Method>SetServiceState</Method><state>sfiServiceOutOfService</state>",
     [](Service& s) { return s.setServiceState(sfiServiceOutOfService); }},
    {coded, "<Method>SetServiceState</Method><state>sfiServiceDoNotDisturb</state>",
     [](Service& s) { return s.setServiceState(sfiServiceDoNotDisturb); }},
    {preset, "<Method>GetServiceState</Method>",
     [](Service& s) { sfiServiceState state; return s.getServiceState(state); }},
    {coded, "<Method>SetDoNotDisturb</Method><Line>1020</Line><doNotDisturbOn>1</doNotDisturbOn>",
     [](Service& s) { return s.setDoNotDisturb(textOf("1020"), true); }},
    {coded, "<Method>SetDoNotDisturb</Method><Line>1020</Line><doNotDisturbOn>0</doNotDisturbOn>",
     [](Service& s) { return s.setDoNotDisturb(textOf("1020"), false); }},
    {preset, "<Method>GetDoNotDisturb</Method><deviceID>1021</deviceID>",
     [](Service& s) { bool on; return s.getDoNotDisturb(textOf("1021"), on); }},
    {coded, "<Method>SetAgentState</Method><Line>1022</Line><agentState>ready</agentState>",
     [](Service& s) { return s.setAgentState(textOf("1022"), textOf("ready")); }},
    {coded, "<Method>SetMicrophoneMute</Method><Status>1</Status>",
     [](Service& s) { return s.setMicrophoneMute(true); }},
    {coded, "<Method>SetMicrophoneMute</Method><Status>0</Status>",
     [](Service& s) { return s.setMicrophoneMute(false); }},
    {read, "<Method>GetMicrophoneMute</Method>", [](Service& s) { bool muted; return s.getMicrophoneMute(muted); }},
    {coded, "<Method>SystemStatus</Method><SystemStatus>DEGRADED</SystemStatus>"
     "<SystemStatusInfo>backup</SystemStatusInfo>",
     [](Service& s) { return s.systemStatus(charsOf("DEGRADED"), charsOf("backup")); }},
    {coded, "<Method>GenerateDigits</Method><Line>1023</Line><activeCall>27</activeCall><digits>12#</digits>",
     [](Service& s) { return s.generateDigits(textOf("1023"), 27, charsOf("12#")); }},
    {read, "<Method>GetDevices</Method>",
     [](Service& s) { std::vector<std::string> devices; return s.getDevices(devices); }},
    {coded, "<Method>ConferenceCall</Method><Line>1024</Line><activeCall>28</activeCall><heldCall>8</heldCall>"
     "<feature>5</feature>",
     [](Service& s) { return s.conferenceCall(textOf("1024"), 28, 8, sfiFeature(5)); }},
    {posted, "<Method>RemoveConfParticipant</Method><callID>itos(29)</callID>"
     "<remoteParticipant>2025</remoteParticipant><conferenceMemberId>6</conferenceMemberId>",
     [](Service& s) { s.RemoveConfParticipant(29, textOf("2025"), textOf("6")); return nothing; }},
    {read, "<Method>getManualHoldIndication</Method><Line>1026</Line><CallID>30</CallID>",
     [](Service& s) { return int{s.getManualHoldIndication(textOf("1026"), 30)}; }},
    {coded, "<Method>AlternateCalls</Method><Line>1027</Line>",
     [](Service& s) { return s.alternateCalls(textOf("1027")); }},
    {read, "<Method>GetMessageWaitingIndicator</Method>",
     [](Service& s) {
         int n;
         unsigned int c;
         std::string mailbox;
         return s.getMessageWaitingIndicator(n, c, c, c, c, n, n, n, mailbox);
     }},
    {coded, "<Method>setAssociatedCalls</Method><associated>1</associated>",
     [](Service& s) { return s.setAssociatedCalls(true); }},
    {coded, "<Method>setAssociatedCalls</Method><associated>0</associated>",
     [](Service& s) { return s.setAssociatedCalls(false); }},
    {coded, "<Method>setLampMode</Method><Line>1028</Line><lampId>lamp3</lampId><lampMode>2</lampMode>",
     [](Service& s) { return s.setLampMode(textOf("1028"), textOf("lamp3"), 2); }},
    {coded, "<Method>makeSecurityChangeReinvite</Method><Line>1029</Line><CallID>31</CallID><forceFlag>1</forceFlag>",
     [](Service& s) { return s.makeSecurityChangeReinvite(textOf("1029"), 31, true); }},
    {coded, "<Method>makeSecurityChangeReinvite</Method><Line>1029</Line><CallID>31</CallID><forceFlag>0</forceFlag>",
     [](Service& s) { return s.makeSecurityChangeReinvite(textOf("1029"), 31, false); }},
    {posted, "<Method>setIsInServiceInitiatedState</Method><Line>1030</Line>"
     "<IsInServiceInitiatedState>TRUE</IsInServiceInitiatedState>",
     [](Service& s) { s.setIsInServiceInitiatedState(textOf("1030"), true); return nothing; }},
    {posted, "<Method>setIsInServiceInitiatedState</Method><Line>1030</Line>"
     "<IsInServiceInitiatedState>FALSE</IsInServiceInitiatedState>",
     [](Service& s) { s.setIsInServiceInitiatedState(textOf("1030"), false); return nothing; }},
    {coded, "<Method>setForwardingConfiguration</Method><Line>1031</Line><fwType>7</fwType><status>1</status>"
     "<uri>sip:2031</uri><cfnrRingCount>4</cfnrRingCount><forceTKVSUpdate>0</forceTKVSUpdate>",
     [](Service& s) {
         return s.setForwardingConfiguration(textOf("1031"), sfiForwardingType(7), true, textOf("sip:2031"),
                                             4, false);
     }},
    {coded, "<Method>setForwardingConfiguration</Method><Line>1031</Line><fwType>8</fwType><status>0</status>"
     "<uri></uri><cfnrRingCount>0</cfnrRingCount><forceTKVSUpdate>1</forceTKVSUpdate>",
     [](Service& s) { return s.setForwardingConfiguration(textOf("1031"), sfiForwardingType(8), false, textOf(""), 0, true); }},
    {read, "<Method>getForwardingConfiguration</Method><fwType>9</fwType>",
     [](Service& s) { bool on; std::string uri; int n; return s.getForwardingConfiguration(sfiForwardingType(9), on, uri, n); }},
    {posted, "<Method>callbackDOFeatureCallID</Method><CallID>32 </CallID><instanceId>itos(3)</instanceId>",
     [](Service& s) { s.callbackDOFeatureCallID(textOf("32 "), 3); return nothing; }},
    {read, "<Method>isCallHoldPossible</Method><Line>1032</Line>",
     [](Service& s) { return int{s.isCallHoldPossible(textOf("1032"))}; }},

    // A null C string cuts the request off; an empty one does not.
    {coded, "<Method>OutgoingCallMakeRequest</Method><Line>1</Line><CallID>2</CallID><Destination>",
     [](Service& s) { return s.outgoingCallMake("1", 2, none, true, true, true); }},
    {coded, "<Method>OutgoingCallMakeRequest</Method><Line></Line><CallID>2</CallID><Destination></Destination>"
     "<DSSDirectCall>1</DSSDirectCall><BridgeCall>1</BridgeCall><CallCompletionCall>1</CallCompletionCall>",
     [](Service& s) { return s.outgoingCallMake("", 2, "", true, true, true); }},
    {coded, "<Method>DeflectCall</Method><Line>1</Line><CallID>2</CallID><Destination>",
     [](Service& s) { return s.deflectCall("1", 2, none); }},
    {coded, "<Method>BlindTransfer</Method><Line>1</Line><CallID>2</CallID><Destination>",
     [](Service& s) { return s.blindTransferCall("1", 2, none); }},
    {coded, "<Method>Consult</Method><Line>1</Line><CallID>2</CallID><Destination>",
     [](Service& s) { return s.consultationCall("1", 2, none); }},
    {coded, "<Method>GenerateDigits</Method><Line>1</Line><activeCall>2</activeCall><digits>",
     [](Service& s) { return s.generateDigits("1", 2, none); }},
    {coded, "<Method>SystemStatus</Method><SystemStatus>", [](Service& s) { return s.systemStatus(none, "info"); }},
    {coded, "<Method>SystemStatus</Method><SystemStatus>", [](Service& s) { return s.systemStatus(none, none); }},
    {coded, "<Method>SystemStatus</Method><SystemStatus>up</SystemStatus><SystemStatusInfo>",
     [](Service& s) { return s.systemStatus("up", none); }},
    {coded, "<Method>SystemStatus</Method><SystemStatus></SystemStatus><SystemStatusInfo></SystemStatusInfo>",
     [](Service& s) { return s.systemStatus("", ""); }},

    // Empty texts and payloads; texts with tags and zero bytes; no text is trimmed.
    {coded, "<Method>AlternateCalls</Method><Line></Line>", [](Service& s) { return s.alternateCalls(""); }},
    {coded, "<Method>SendCSTARequest</Method><Line></Line>", [](Service& s) { return s.SendCSTARequest("", ""); }},
    {coded, "<Method>AlternateCalls</Method><Line></Line><Line>&\xff </Line>",
     [](Service& s) { return s.alternateCalls("</Line><Line>&\xff "); }},
    {coded, "<Method>SetAgentState</Method><Line>\0x</Line><agentState> a\0</agentState>"s,
     [](Service& s) { return s.setAgentState("\0x"s, " a\0"s); }},

    // Numbers and enumerations have no range. Thousands are not separated.
    {coded, "<Method>CallClearRequest</Method><Line>1</Line><CallID>-2147483648</CallID><Cause>2147483647</Cause>",
     [](Service& s) { return s.callClear("1", INT_MIN, CSTAEventCause(INT_MAX)); }},
    {coded, "<Method>HoldCall</Method><Line>1</Line><CallID>2147483647</CallID>"
     "<HoldCallReason>-2147483648</HoldCallReason><Manual>0</Manual>",
     [](Service& s) { return s.holdCall("1", INT_MAX, sfiFeature(INT_MIN), false); }},
    {coded, "<Method>RefuseCall</Method><Line>1</Line><CallID>0</CallID><RefuseCallReason>-1</RefuseCallReason>",
     [](Service& s) { return s.refuseCall("1", 0, sfiRefuseCall(-1)); }},
    {coded, "<Method>ConferenceCall</Method><Line>1</Line><activeCall>1234567</activeCall>"
     "<heldCall>-7654321</heldCall><feature>98765</feature>",
     [](Service& s) { return s.conferenceCall("1", 1234567, -7654321, sfiFeature(98765)); }},
    {read, "<Method>getForwardingConfiguration</Method><fwType>-2147483648</fwType>",
     [](Service& s) { bool on; std::string uri; int n; return s.getForwardingConfiguration(sfiForwardingType(INT_MIN), on, uri, n); }},
    {posted, "<Method>RemoveConfParticipant</Method><callID>itos(-1)</callID>"
     "<remoteParticipant></remoteParticipant><conferenceMemberId></conferenceMemberId>",
     [](Service& s) { s.RemoveConfParticipant(-1, "", ""); return nothing; }},
    {coded, "<Method>SetServiceState</Method><state></state>",
     [](Service& s) { return s.setServiceState(sfiServiceState(-1)); }},

    // Texts that no string holds in itself.
    {coded, "<Method>SendCSTARequest</Method><Line>sip:a-long-line@phone.example.com</Line>"
     "<snapshot-of-all-devices-that-there-are/>",
     [](Service& s) { return s.SendCSTARequest("sip:a-long-line@phone.example.com", "<snapshot-of-all-devices-that-there-are/>"); }},
    {coded, "<Method>CancelCallbacks</Method><Line>sip:a-long-line@phone.example.com</Line><CallID>33</CallID>"
     "<URI>sip:another-long-address@phone.example.com</URI><CancelCallBackType>4</CancelCallBackType>"
     "<DisplayOutcomeCallUI>0</DisplayOutcomeCallUI>",
     [](Service& s) {
         return s.cancelCallbacks("sip:a-long-line@phone.example.com", 33,
                                  "sip:another-long-address@phone.example.com", sfiCancelCallBackType(4), false);
     }},
    {posted, "<Method>RemoveConfParticipant</Method><callID>itos(34)</callID>"
     "<remoteParticipant>sip:a-long-address@phone.example.com</remoteParticipant>"
     "<conferenceMemberId>member-with-a-name-of-some-length</conferenceMemberId>",
     [](Service& s) {
         s.RemoveConfParticipant(34, "sip:a-long-address@phone.example.com",
                                 "member-with-a-name-of-some-length");
         return nothing;
     }},
};
// clang-format on

}  // namespace samples

#endif

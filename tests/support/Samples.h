#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_SAMPLES_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_SAMPLES_H

#include "CommunicationsServiceIfc.h"

#include <set>
#include <string>
#include <vector>

/// One call of each operation, with a different value in every field, and what it sends.
struct RequestSample
{
    const char* name;
    void (*call)(CommunicationsServiceIfc& service, Executable* subscriber);
    const char* sent;  ///< nullptr for the two that send nothing
};

/// One event of each kind, and what the subscriber is told (in the form of Recorder).
struct EventSample
{
    const char* text;
    const char* said;
};

/// Longer than any string holds in itself, so that every copy of it is an allocation.
inline const std::string longLine = "line-that-does-not-fit-in-a-small-string@example.org";

#define LINE "line-that-does-not-fit-in-a-small-string@example.org"

// clang-format off
inline const RequestSample requestSamples[] = {
    {"processSignallingComponentEvent", [](CommunicationsServiceIfc& s, Executable*) { s.processSignallingComponentEvent("signalling data", 15); },
     "SigEvent:signalling data"},
    {"activate", [](CommunicationsServiceIfc& s, Executable*) { s.activate(); },
     "<Method>Activate</Method>"},
    {"deactivate", [](CommunicationsServiceIfc& s, Executable*) { s.deactivate(true); },
     "<Method>Deactivate</Method><AllowAutoActivate>1</AllowAutoActivate>"},
    {"callClear", [](CommunicationsServiceIfc& s, Executable*) { s.callClear(longLine, 1, CSTAEventCause::normalClearing); },
     "<Method>CallClearRequest</Method><Line>" LINE "</Line><CallID>1</CallID><Cause>48</Cause>"},
    {"outgoingCallMake", [](CommunicationsServiceIfc& s, Executable*) { s.outgoingCallMake(longLine, 2, "3", true, false, true); },
     "<Method>OutgoingCallMakeRequest</Method><Line>" LINE "</Line><CallID>2</CallID><Destination>3</Destination><DSSDirectCall>1</DSSDirectCall><BridgeCall>0</BridgeCall><CallCompletionCall>1</CallCompletionCall>"},
    {"acceptCall", [](CommunicationsServiceIfc& s, Executable*) { s.acceptCall(longLine, 4, false); },
     "<Method>AcceptCall</Method><Line>" LINE "</Line><CallID>4</CallID><AutoAnswer>0</AutoAnswer>"},
    {"answerCall", [](CommunicationsServiceIfc& s, Executable*) { s.answerCall(longLine, 5); },
     "<Method>AnswerCall</Method><Line>" LINE "</Line><CallID>5</CallID>"},
    {"deflectCall", [](CommunicationsServiceIfc& s, Executable*) { s.deflectCall(longLine, 6, "7"); },
     "<Method>DeflectCall</Method><Line>" LINE "</Line><CallID>6</CallID><Destination>7</Destination>"},
    {"holdCall", [](CommunicationsServiceIfc& s, Executable*) { s.holdCall(longLine, 8, static_cast<sfiFeature>(9), true); },
     "<Method>HoldCall</Method><Line>" LINE "</Line><CallID>8</CallID><HoldCallReason>9</HoldCallReason><Manual>1</Manual>"},
    {"retrieveCall", [](CommunicationsServiceIfc& s, Executable*) { s.retrieveCall(longLine, 10); },
     "<Method>RetrieveCall</Method><Line>" LINE "</Line><CallID>10</CallID>"},
    {"attendedTransferCall", [](CommunicationsServiceIfc& s, Executable*) { s.attendedTransferCall(longLine, 11, 12); },
     "<Method>AttendedTransfer</Method><Line>" LINE "</Line><activeCall>11</activeCall><heldCall>12</heldCall>"},
    {"blindTransferCall", [](CommunicationsServiceIfc& s, Executable*) { s.blindTransferCall(longLine, 13, "14"); },
     "<Method>BlindTransfer</Method><Line>" LINE "</Line><CallID>13</CallID><Destination>14</Destination>"},
    {"SendCSTARequest", [](CommunicationsServiceIfc& s, Executable*) { s.SendCSTARequest(longLine, "<payload/>"); },
     "<Method>SendCSTARequest</Method><Line>" LINE "</Line><payload/>"},
    {"sendUACSTAServerMessage", [](CommunicationsServiceIfc& s, Executable*) { std::string line = longLine, message = "<message/>"; s.sendUACSTAServerMessage(line, message); },
     "<Method>SendUACSTAServerMessage</Method><Line>" LINE "</Line><message/>"},
    {"InitializeOrFinalizeServerFeatures", [](CommunicationsServiceIfc& s, Executable*) { s.InitializeOrFinalizeServerFeatures(longLine, false); },
     "<Method>InitializeOrFinalizeServerFeatures</Method><Line>" LINE "</Line><initialize>0</initialize>"},
    {"activateCallbackRinging", [](CommunicationsServiceIfc& s, Executable*) { s.activateCallbackRinging(longLine, 15); },
     "<Method>ActivateCallbackRinging</Method><Line>" LINE "</Line><CallID>15</CallID>"},
    {"activateCallbackBusy", [](CommunicationsServiceIfc& s, Executable*) { s.activateCallbackBusy(longLine, 16); },
     "<Method>ActivateCallbackBusy</Method><Line>" LINE "</Line><CallID>16</CallID>"},
    {"cancelCallbacks", [](CommunicationsServiceIfc& s, Executable*) { s.cancelCallbacks(longLine, 17, "sip:18", static_cast<sfiCancelCallBackType>(19), false); },
     "<Method>CancelCallbacks</Method><Line>" LINE "</Line><CallID>17</CallID><URI>sip:18</URI><CancelCallBackType>19</CancelCallBackType><DisplayOutcomeCallUI>0</DisplayOutcomeCallUI>"},
    {"consultationCall", [](CommunicationsServiceIfc& s, Executable*) { s.consultationCall(longLine, 20, "21"); },
     "<Method>Consult</Method><Line>" LINE "</Line><CallID>20</CallID><Destination>21</Destination>"},
    {"refuseCall", [](CommunicationsServiceIfc& s, Executable*) { s.refuseCall(longLine, 22, static_cast<sfiRefuseCall>(23)); },
     "<Method>RefuseCall</Method><Line>" LINE "</Line><CallID>22</CallID><RefuseCallReason>23</RefuseCallReason>"},
    {"subscribe", [](CommunicationsServiceIfc& s, Executable* subscriber) { s.subscribe(subscriber); },
     "<Method>Subscribe</Method>"},
    {"directedPickupCall", [](CommunicationsServiceIfc& s, Executable*) { s.directedPickupCall(longLine, 24, "25", true); },
     "<Method>DirectedPickupCall</Method><Line>" LINE "</Line><CallID>24</CallID><CallToBePickedUp>25</CallToBePickedUp><BLFPickup>1</BLFPickup>"},
    {"groupPickupCall", [](CommunicationsServiceIfc& s, Executable*) { s.groupPickupCall(longLine, 26); },
     "<Method>GroupPickupCall</Method><Line>" LINE "</Line><CallID>26</CallID>"},
    {"setServiceState", [](CommunicationsServiceIfc& s, Executable*) { s.setServiceState(sfiServiceOutOfService); },
     "<Method>SetServiceState</Method><state>sfiServiceOutOfService</state>"},
    {"getServiceState", [](CommunicationsServiceIfc& s, Executable*) { sfiServiceState state; s.getServiceState(state); },
     "<Method>GetServiceState</Method>"},
    {"setDoNotDisturb", [](CommunicationsServiceIfc& s, Executable*) { s.setDoNotDisturb(longLine, true); },
     "<Method>SetDoNotDisturb</Method><Line>" LINE "</Line><doNotDisturbOn>1</doNotDisturbOn>"},
    {"getDoNotDisturb", [](CommunicationsServiceIfc& s, Executable*) { bool on; s.getDoNotDisturb(longLine, on); },
     "<Method>GetDoNotDisturb</Method><deviceID>" LINE "</deviceID>"},
    {"setAgentState", [](CommunicationsServiceIfc& s, Executable*) { s.setAgentState(longLine, "ready"); },
     "<Method>SetAgentState</Method><Line>" LINE "</Line><agentState>ready</agentState>"},
    {"setMicrophoneMute", [](CommunicationsServiceIfc& s, Executable*) { s.setMicrophoneMute(false); },
     "<Method>SetMicrophoneMute</Method><Status>0</Status>"},
    {"getMicrophoneMute", [](CommunicationsServiceIfc& s, Executable*) { bool muted; s.getMicrophoneMute(muted); },
     "<Method>GetMicrophoneMute</Method>"},
    {"systemStatus", [](CommunicationsServiceIfc& s, Executable*) { s.systemStatus("degraded", "backup"); },
     "<Method>SystemStatus</Method><SystemStatus>degraded</SystemStatus><SystemStatusInfo>backup</SystemStatusInfo>"},
    {"generateDigits", [](CommunicationsServiceIfc& s, Executable*) { s.generateDigits(longLine, 27, "28#"); },
     "<Method>GenerateDigits</Method><Line>" LINE "</Line><activeCall>27</activeCall><digits>28#</digits>"},
    {"getDevices", [](CommunicationsServiceIfc& s, Executable*) { std::vector<std::string> devices; s.getDevices(devices); },
     "<Method>GetDevices</Method>"},
    {"conferenceCall", [](CommunicationsServiceIfc& s, Executable*) { s.conferenceCall(longLine, 29, 30, static_cast<sfiFeature>(31)); },
     "<Method>ConferenceCall</Method><Line>" LINE "</Line><activeCall>29</activeCall><heldCall>30</heldCall><feature>31</feature>"},
    {"RemoveConfParticipant", [](CommunicationsServiceIfc& s, Executable*) { s.RemoveConfParticipant(32, "33", "34"); },
     "<Method>RemoveConfParticipant</Method><callID>32</callID><remoteParticipant>33</remoteParticipant><conferenceMemberId>34</conferenceMemberId>"},
    {"getManualHoldIndication", [](CommunicationsServiceIfc& s, Executable*) { s.getManualHoldIndication(longLine, 35); },
     "<Method>getManualHoldIndication</Method><Line>" LINE "</Line><CallID>35</CallID>"},
    {"alternateCalls", [](CommunicationsServiceIfc& s, Executable*) { s.alternateCalls(longLine); },
     "<Method>AlternateCalls</Method><Line>" LINE "</Line>"},
    {"getMessageWaitingIndicator", [](CommunicationsServiceIfc& s, Executable*) { int i; unsigned int u; std::string t; s.getMessageWaitingIndicator(i, u, u, u, u, i, i, i, t); },
     "<Method>GetMessageWaitingIndicator</Method>"},
    {"setAssociatedCalls", [](CommunicationsServiceIfc& s, Executable*) { s.setAssociatedCalls(true); },
     "<Method>setAssociatedCalls</Method><associated>1</associated>"},
    {"setLampMode", [](CommunicationsServiceIfc& s, Executable*) { s.setLampMode(longLine, "lamp36", 37); },
     "<Method>setLampMode</Method><Line>" LINE "</Line><lampId>lamp36</lampId><lampMode>37</lampMode>"},
    {"makeSecurityChangeReinvite", [](CommunicationsServiceIfc& s, Executable*) { s.makeSecurityChangeReinvite(longLine, 38, true); },
     "<Method>makeSecurityChangeReinvite</Method><Line>" LINE "</Line><CallID>38</CallID><forceFlag>1</forceFlag>"},
    {"setIsInServiceInitiatedState", [](CommunicationsServiceIfc& s, Executable*) { s.setIsInServiceInitiatedState(longLine, false); },
     "<Method>setIsInServiceInitiatedState</Method><Line>" LINE "</Line><IsInServiceInitiatedState>FALSE</IsInServiceInitiatedState>"},
    {"setForwardingConfiguration", [](CommunicationsServiceIfc& s, Executable*) { s.setForwardingConfiguration(longLine, static_cast<sfiForwardingType>(39), false, "sip:40", 41, true); },
     "<Method>setForwardingConfiguration</Method><Line>" LINE "</Line><fwType>39</fwType><status>0</status><uri>sip:40</uri><cfnrRingCount>41</cfnrRingCount><forceTKVSUpdate>1</forceTKVSUpdate>"},
    {"getForwardingConfiguration", [](CommunicationsServiceIfc& s, Executable*) { bool on; std::string uri; int count; s.getForwardingConfiguration(static_cast<sfiForwardingType>(42), on, uri, count); },
     "<Method>getForwardingConfiguration</Method><fwType>42</fwType>"},
    {"callbackDOFeatureCallID", [](CommunicationsServiceIfc& s, Executable*) { s.callbackDOFeatureCallID(longLine, 43); },
     "<Method>callbackDOFeatureCallID</Method><CallID>" LINE "</CallID><instanceId>43</instanceId>"},
    {"isCallHoldPossible", [](CommunicationsServiceIfc& s, Executable*) { s.isCallHoldPossible(longLine); },
     "<Method>isCallHoldPossible</Method><Line>" LINE "</Line>"},
    {"csCommunicationsService", [](CommunicationsServiceIfc& s, Executable*) { s.csCommunicationsService("name"); }, nullptr},
    {"activateStoredFwd", [](CommunicationsServiceIfc& s, Executable*) { s.activateStoredFwd(); }, nullptr},
};

/// An answer with something in it for every query.
inline const char* const answerSample =
    "<func_return_val>sfiSuccess</func_return_val><Type>1</Type><newMsgs>2</newMsgs><oldMsgs>3</oldMsgs>"
    "<newUrgMsgs>4</newUrgMsgs><oldUrgMsgs>5</oldUrgMsgs><return_type>6</return_type><available_info>7</available_info>"
    "<messages_waiting>8</messages_waiting><voiceMailNumber>" LINE "</voiceMailNumber><sfiResult>sfiSuccess</sfiResult>"
    "<status>0</status><cfnrRingCount>9</cfnrRingCount><uri>" LINE "</uri>sfiServiceDoNotDisturb";

inline const EventSample eventSamples[] = {
    {"<Method>CallStateChangeEvent</Method><LineID>" LINE "</LineID><CallID>1</CallID><CallState>2</CallState><Reason>3</Reason><SendOptions>4</SendOptions><URI>" LINE "</URI><Name>Anna</Name><FullPAI>pai</FullPAI><GPUCLG>5</GPUCLG><GPUCLGName>Bert</GPUCLGName><GPUCLD>6</GPUCLD><GPUCLDName>Carl</GPUCLDName><ResourcePriority>7</ResourcePriority><PreemptionCause>8</PreemptionCause><PreemptionText>" LINE "</PreemptionText><CallBackFearureAvailable>0</CallBackFearureAvailable><ILCallLevel>9</ILCallLevel><ILLocalLevel>10</ILLocalLevel>",
     "onCallStateChangeEvent(52:" LINE ", 1, 2, 3, 4, 52:" LINE ", 4:Anna, 3:pai, {||||0|Carl|6|Bert|5}, 7, 8, 52:" LINE ", false, 9, 10, )\n"},
    {"<Method>RegistrationStateChangeEvent</Method><LineID>" LINE "</LineID><CallID>11</CallID><Registered>0</Registered><RegistrationResult>12</RegistrationResult>",
     "onRegistrationStateChangeEvent(52:" LINE ", 11, false, 12, )\n"},
    {"<Method>IncomingCallEvent</Method><LineID>" LINE "</LineID><CallID>13</CallID><URI>" LINE "</URI><Name>Dora</Name><FullPAI>pai</FullPAI><AlertInformation_AlertURI>alert</AlertInformation_AlertURI><AlertInformation_InfoParam>info</AlertInformation_InfoParam><AlertInformation_AutoAnswer>0</AlertInformation_AutoAnswer><CallType>14</CallType><DiversionURI>diversion</DiversionURI><DiversionName>Emil</DiversionName><DiversionReason>15</DiversionReason><AICSZIPAutoAnswer>1</AICSZIPAutoAnswer><ResourcePriority>16</ResourcePriority><ILCallLevel>17</ILCallLevel><ILLocalLevel>18</ILLocalLevel><IsVideoCall>0</IsVideoCall>",
     "onIncomingCallEvent(52:" LINE ", 13, 52:" LINE ", 4:Dora, 3:pai, 5:alert, 4:info, false, 14, 9:diversion, 4:Emil, 15, true, 16, 17, 18, false, )\n"},
    {"<Method>IncomingPickupCallEvent</Method><LineID>" LINE "</LineID><CallID>19</CallID><URI>" LINE "</URI><Name>Fred</Name><FullPAI>pai</FullPAI>",
     "onIncomingPickupCallEvent(52:" LINE ", 19, 52:" LINE ", 4:Fred, 3:pai, )\n"},
    {"<Method>CallHeldEvent</Method><LineID>" LINE "</LineID><CallID>20</CallID>",
     "onCallHeldEvent(52:" LINE ", 20, )\n"},
    {"<Method>CallRetrievedEvent</Method><LineID>" LINE "</LineID><CallID>21</CallID><URI>" LINE "</URI><Name>Gerd</Name><FullPAI>pai</FullPAI><ILCallLevel>22</ILCallLevel><ILLocalLevel>23</ILLocalLevel><ConnectedToMediaServer>0</ConnectedToMediaServer>",
     "onCallRetrievedEvent(52:" LINE ", 21, 52:" LINE ", 4:Gerd, 3:pai, 22, 23, false, )\n"},
    {"<Method>FeatureSuccessEvent</Method><LineID>" LINE "</LineID><CallID>24</CallID><Feature>25</Feature>",
     "onFeatureSuccessEvent(52:" LINE ", 24, 25, )\n"},
    {"<Method>FeatureFailedEvent</Method><LineID>" LINE "</LineID><CallID>26</CallID><Feature>27</Feature><FeatureFailure>28</FeatureFailure>",
     "onFeatureFailedEvent(52:" LINE ", 26, 27, 28, )\n"},
    {"<Method>RemoteEndpointDetailsChangedEvent</Method><LineID>" LINE "</LineID><CallID>29</CallID><URI>" LINE "</URI><Name>Hans</Name><FullPAI>pai</FullPAI><exitConf>1</exitConf><jointCall>0</jointCall>",
     "onRemoteEndpointDetailsChangedEvent(52:" LINE ", 29, 52:" LINE ", 4:Hans, 3:pai, true, false, )\n"},
    {"<Method>IncomingCallMissedEvent</Method><LineID>" LINE "</LineID><CallID>30</CallID><URI>" LINE "</URI><Name>Inge</Name><FullPAI>pai</FullPAI><Reason>31</Reason><DiversionURI>diversion</DiversionURI><DiversionName>Jan</DiversionName><DiversionReason>32</DiversionReason>",
     "onIncomingCallMissedEvent(52:" LINE ", 30, 52:" LINE ", 4:Inge, 3:pai, 31, 9:diversion, 3:Jan, 32, )\n"},
    {"<Method>CallForwardedEvent</Method><LineID>" LINE "</LineID><CallID>33</CallID><CallingParty>34</CallingParty><CallingPartyName>Karl</CallingPartyName><CallingPartyFullPAI>pai</CallingPartyFullPAI><NewDestination>" LINE "</NewDestination><Reason>35</Reason>",
     "onCallForwardedEvent(52:" LINE ", 33, 2:34, 4:Karl, 3:pai, 52:" LINE ", 35, )\n"},
    {"<Method>DevicesChangedEvent</Method>",
     "onDevicesChangedEvent()\n"},
    {"<Method>messageWaitingEvent</Method><LineID>" LINE "</LineID><type>36</type><new_messages>37</new_messages><old_messages>38</old_messages><new_urgent_messages>39</new_urgent_messages><old_urgent_messages>40</old_urgent_messages><return_type>41</return_type><avail_info>42</avail_info><messages_waiting>43</messages_waiting><voiceMailNumber>" LINE "</voiceMailNumber>",
     "onMessageWaitingEvent(52:" LINE ", 36, 37u, 38u, 39u, 40u, 41, 42, 43, 52:" LINE ", )\n"},
    {"<Method>DoNotDisturbEvent</Method><deviceId>" LINE "</deviceId><doNotDisturbOn>0</doNotDisturbOn>",
     "onDoNotDisturbEvent(52:" LINE ", false, )\n"},
    {"<Method>AgentStateEvent</Method><deviceId>" LINE "</deviceId><agentState>ready</agentState>",
     "onAgentStateEvent(52:" LINE ", 5:ready, )\n"},
    {"<Method>systemStatusEvent</Method><status>" LINE "</status><statusInfo>info</statusInfo>",
     "onSystemStatusEvent(52:" LINE ", 4:info, )\n"},
    {"<Method>serverFeatureStatusEvent</Method><lineURI>" LINE "</lineURI><status>on</status>",
     "onServerFeatureStatusEvent(52:" LINE ", 2:on, )\n"},
    {"<Method>IncomingAssociatedCallEvent</Method><LineID>" LINE "</LineID><CurrentCallID>44</CurrentCallID><NewCallID>45</NewCallID>",
     "onIncomingAssociatedCallEvent(52:" LINE ", 44, 45, )\n"},
    {"<Method>b2buaCSTAResponse</Method><lineURI>" LINE "</lineURI><success>0</success>payload",
     "onB2buaCSTAResponse(52:" LINE ", false, 7:payload, )\n"},
    {"<Method>b2buaCSTAEventOrRequest</Method><lineURI>" LINE "</lineURI>payload",
     "onB2buaCSTAEventOrRequest(52:" LINE ", 7:payload, )\n"},
    {"<Method>conferenceStatusEvent</Method><LineID>" LINE "</LineID><CallID>46</CallID><XMLContent><conference/></XMLContent>",
     "onConferenceStatusEvent(52:" LINE ", 46, 13:<conference/>, )\n"},
    {"<Method>securityStatusChanged</Method><lineURI>" LINE "</lineURI><callId>47</callId><securityStatus>48</securityStatus><CallIDsRecorded>49,50</CallIDsRecorded><CallLineURIsRecorded>" LINE ",51</CallLineURIsRecorded>",
     "onSecurityStatusChanged(52:" LINE ", 47, 48, [49, 50, ], [52:" LINE ", 2:51, ], )\n"},
    {"<Method>preemptionStatusChanged</Method><lineURI>" LINE "</lineURI><callId>52</callId><priority>53</priority><cause>54</cause><reason>" LINE "</reason>",
     "onPreemptionStatusChanged(52:" LINE ", 52, 53, 54, 52:" LINE ", )\n"},
    {"<Method>impactLevelChanged</Method><lineURI>" LINE "</lineURI><callId>55</callId><ILCallLevel>56</ILCallLevel><ILLocalLevel>57</ILLocalLevel>",
     "onImpactLevelChanged(52:" LINE ", 55, 56, 57, )\n"},
    {"<Method>callRecordingStatusEvent</Method><LineID>" LINE "</LineID><callId>58</callId><callRecorded>yes</callRecorded>",
     "onCallRecordingStatusEvent(52:" LINE ", 58, 3:yes, )\n"},
    {"<Method>callCompletionEvent</Method><LineID>" LINE "</LineID><URI>" LINE "</URI><CallCompletionType>59</CallCompletionType><CallCompletionState>60</CallCompletionState><DisplayOutcomeCallUI>0</DisplayOutcomeCallUI>",
     "onCallCompletionEvent(52:" LINE ", 52:" LINE ", 59, 60, false, )\n"},
    {"<Method>callCompletionFailedEvent</Method><LineID>" LINE "</LineID><URI>" LINE "</URI><CallCompletionFailureType>61</CallCompletionFailureType>",
     "onCallCompletionFailedEvent(52:" LINE ", 52:" LINE ", 61, )\n"},
    {"<Method>bluetoothAudioStatusChanged</Method><LineID>" LINE "</LineID><CallID>62</CallID><AudioEnabled>1</AudioEnabled><AudioGateway>0</AudioGateway><InBandRinging>0</InBandRinging>",
     "onBluetoothAudioStatusChanged(52:" LINE ", 62, true, false, false, )\n"},
};
// clang-format on

#undef LINE

/// The tags in a sample, in their order.
inline std::vector<std::string> tagsIn(const std::string& sample)
{
    std::vector<std::string> tags;
    for (std::size_t at = sample.find('<'); at != std::string::npos; at = sample.find('<', at + 1))
    {
        const std::string tag = sample.substr(at + 1, sample.find('>', at) - at - 1);
        if (sample.find("</" + tag + ">") != std::string::npos)
            tags.push_back(tag);
    }
    return tags;
}

/// The name of an event.
inline std::string nameOf(const EventSample& event)
{
    const std::string text = event.text + std::string("<Method>").size();
    return text.substr(0, text.find('<'));
}

/// The tags of all events and answers, each once.
inline std::vector<std::string> allTags()
{
    std::set<std::string> all;
    for (const std::string& tag : tagsIn(answerSample))
        all.insert(tag);
    for (const EventSample& event : eventSamples)
        for (const std::string& tag : tagsIn(event.text))
            all.insert(tag);
    return {all.begin(), all.end()};
}

#endif

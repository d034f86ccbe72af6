#ifndef BENCH_SUBSCRIBER_H
#define BENCH_SUBSCRIBER_H

#include "CommunicationsServiceEventIfc.h"
#include "framework/Executable.h"

/// A subscriber that gives the name and the arguments of each callback to one function object.
template <typename Ear>
class Subscriber : public Executable, public CommunicationsServiceEventIfc
{
public:
    void init(Context&) override {}
    void shutdown() override {}

    void onCallStateChangeEvent(const std::string& lineId, int callId, int callState, int reason,
                                int sendOptions, const std::string& uri, const std::string& name,
                                const std::string& fullPai, CallPartyInfo* callPartyInfo,
                                int resourcePriority, int preemptionCause,
                                const std::string& preemptionText, bool callBackFeatureAvailable,
                                int ilCallLevel, int ilLocalLevel) override
    {
        heard("CallStateChangeEvent",
              lineId,
              callId,
              callState,
              reason,
              sendOptions,
              uri,
              name,
              fullPai,
              callPartyInfo,
              resourcePriority,
              preemptionCause,
              preemptionText,
              callBackFeatureAvailable,
              ilCallLevel,
              ilLocalLevel);
    }
    void onRegistrationStateChangeEvent(const std::string& lineId, int callId, bool registered,
                                        int registrationResult) override
    {
        heard("RegistrationStateChangeEvent", lineId, callId, registered, registrationResult);
    }
    void onIncomingCallEvent(const std::string& lineId, int callId, const std::string& uri,
                             const std::string& name, const std::string& fullPai,
                             const std::string& alertUri, const std::string& alertInfoParam,
                             bool alertAutoAnswer, int callType, const std::string& diversionUri,
                             const std::string& diversionName, int diversionReason,
                             bool zipAutoAnswer, int resourcePriority, int ilCallLevel,
                             int ilLocalLevel, bool isVideoCall) override
    {
        heard("IncomingCallEvent",
              lineId,
              callId,
              uri,
              name,
              fullPai,
              alertUri,
              alertInfoParam,
              alertAutoAnswer,
              callType,
              diversionUri,
              diversionName,
              diversionReason,
              zipAutoAnswer,
              resourcePriority,
              ilCallLevel,
              ilLocalLevel,
              isVideoCall);
    }
    void onIncomingPickupCallEvent(const std::string& lineId, int callId, const std::string& uri,
                                   const std::string& name, const std::string& fullPai) override
    {
        heard("IncomingPickupCallEvent", lineId, callId, uri, name, fullPai);
    }
    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        heard("CallHeldEvent", lineId, callId);
    }
    void onCallRetrievedEvent(const std::string& lineId, int callId, const std::string& uri,
                              const std::string& name, const std::string& fullPai, int ilCallLevel,
                              int ilLocalLevel, bool connectedToMediaServer) override
    {
        heard("CallRetrievedEvent",
              lineId,
              callId,
              uri,
              name,
              fullPai,
              ilCallLevel,
              ilLocalLevel,
              connectedToMediaServer);
    }
    void onFeatureSuccessEvent(const std::string& lineId, int callId, int feature) override
    {
        heard("FeatureSuccessEvent", lineId, callId, feature);
    }
    void onFeatureFailedEvent(const std::string& lineId, int callId, int feature,
                              int featureFailure) override
    {
        heard("FeatureFailedEvent", lineId, callId, feature, featureFailure);
    }
    void onRemoteEndpointDetailsChangedEvent(const std::string& lineId, int callId,
                                             const std::string& uri, const std::string& name,
                                             const std::string& fullPai, bool exitConf,
                                             bool jointCall) override
    {
        heard("RemoteEndpointDetailsChangedEvent",
              lineId,
              callId,
              uri,
              name,
              fullPai,
              exitConf,
              jointCall);
    }
    void onIncomingCallMissedEvent(const std::string& lineId, int callId, const std::string& uri,
                                   const std::string& name, const std::string& fullPai, int reason,
                                   const std::string& diversionUri,
                                   const std::string& diversionName, int diversionReason) override
    {
        heard("IncomingCallMissedEvent",
              lineId,
              callId,
              uri,
              name,
              fullPai,
              reason,
              diversionUri,
              diversionName,
              diversionReason);
    }
    void onCallForwardedEvent(const std::string& lineId, int callId,
                              const std::string& callingParty, const std::string& callingPartyName,
                              const std::string& callingPartyFullPai,
                              const std::string& newDestination, int reason) override
    {
        heard("CallForwardedEvent",
              lineId,
              callId,
              callingParty,
              callingPartyName,
              callingPartyFullPai,
              newDestination,
              reason);
    }
    void onIncomingAssociatedCallEvent(const std::string& lineId, int currentCallId,
                                       int newCallId) override
    {
        heard("IncomingAssociatedCallEvent", lineId, currentCallId, newCallId);
    }
    void onDevicesChangedEvent() override { heard("DevicesChangedEvent"); }
    void onMessageWaitingEvent(const std::string& lineId, int type, unsigned int newMessages,
                               unsigned int oldMessages, unsigned int newUrgentMessages,
                               unsigned int oldUrgentMessages, int returnType, int availInfo,
                               int messagesWaiting, const std::string& voiceMailNumber) override
    {
        heard("MessageWaitingEvent",
              lineId,
              type,
              newMessages,
              oldMessages,
              newUrgentMessages,
              oldUrgentMessages,
              returnType,
              availInfo,
              messagesWaiting,
              voiceMailNumber);
    }
    void onDoNotDisturbEvent(const std::string& deviceId, bool doNotDisturbOn) override
    {
        heard("DoNotDisturbEvent", deviceId, doNotDisturbOn);
    }
    void onAgentStateEvent(const std::string& deviceId, const std::string& agentState) override
    {
        heard("AgentStateEvent", deviceId, agentState);
    }
    void onSecurityStatusChanged(const std::string& lineURI, int callId, int securityStatus,
                                 std::vector<int>& callIdsRecorded,
                                 std::vector<std::string>& callLineURIsRecorded) override
    {
        heard("SecurityStatusChanged",
              lineURI,
              callId,
              securityStatus,
              callIdsRecorded,
              callLineURIsRecorded);
    }
    void onCallRecordingStatusEvent(const std::string& lineId, int callId,
                                    const std::string& callRecorded) override
    {
        heard("CallRecordingStatusEvent", lineId, callId, callRecorded);
    }
    void onPreemptionStatusChanged(const std::string& lineURI, int callId, int priority, int cause,
                                   const std::string& reason) override
    {
        heard("PreemptionStatusChanged", lineURI, callId, priority, cause, reason);
    }
    void onImpactLevelChanged(const std::string& lineURI, int callId, int ilCallLevel,
                              int ilLocalLevel) override
    {
        heard("ImpactLevelChanged", lineURI, callId, ilCallLevel, ilLocalLevel);
    }
    void onSystemStatusEvent(const std::string& status, const std::string& statusInfo) override
    {
        heard("SystemStatusEvent", status, statusInfo);
    }
    void onServerFeatureStatusEvent(const std::string& lineURI, const std::string& status) override
    {
        heard("ServerFeatureStatusEvent", lineURI, status);
    }
    void onB2buaCSTAResponse(const std::string& lineURI, bool success,
                             std::string& cstaResponse) override
    {
        heard("B2buaCSTAResponse", lineURI, success, cstaResponse);
    }
    void onB2buaCSTAEventOrRequest(const std::string& lineURI, std::string& cstaMessage) override
    {
        heard("B2buaCSTAEventOrRequest", lineURI, cstaMessage);
    }
    void onConferenceStatusEvent(const std::string& lineId, int callId,
                                 const std::string& xmlContent) override
    {
        heard("ConferenceStatusEvent", lineId, callId, xmlContent);
    }
    void onCallCompletionEvent(const std::string& lineId, const std::string& uri,
                               int callCompletionType, int callCompletionState,
                               bool displayOutcomeCallUI) override
    {
        heard("CallCompletionEvent",
              lineId,
              uri,
              callCompletionType,
              callCompletionState,
              displayOutcomeCallUI);
    }
    void onCallCompletionFailedEvent(const std::string& lineId, const std::string& uri,
                                     int callCompletionFailureType) override
    {
        heard("CallCompletionFailedEvent", lineId, uri, callCompletionFailureType);
    }
    void onBluetoothAudioStatusChanged(const std::string& lineId, int callId, bool audioEnabled,
                                       bool audioGateway, bool inBandRinging) override
    {
        heard("BluetoothAudioStatusChanged",
              lineId,
              callId,
              audioEnabled,
              audioGateway,
              inBandRinging);
    }

    Ear heard;
};

#endif

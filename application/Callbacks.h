#ifndef COMMUNICATIONS_CALLBACKS_H
#define COMMUNICATIONS_CALLBACKS_H

#include "CommunicationsServiceEventIfc.h"
#include "application/Events.h"
#include "framework/Executable.h"

namespace communications
{

/// The name of a callback. Its type tells which structure the arguments make.
template <typename Event>
struct Callback
{
    const char* name;

    operator const char*() const { return name; }
};

/// A subscriber that gives the name and the arguments of each callback to one function of its base:
/// heard(callback, arguments...). The first is a const char* for those who ask for no more.
template <typename Ear>
class Callbacks : public Executable, public CommunicationsServiceEventIfc, protected Ear
{
    // Protected, since the cross-cast then finds its way as fast as with the two bases of a
    // subscriber that is written out.
    using Ear::heard;

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
        heard(Callback<CallStateChangeEvent>{"onCallStateChangeEvent"}, lineId, callId, callState,
              reason, sendOptions, uri, name, fullPai, callPartyInfo, resourcePriority,
              preemptionCause, preemptionText, callBackFeatureAvailable, ilCallLevel, ilLocalLevel);
    }
    void onRegistrationStateChangeEvent(const std::string& lineId, int callId, bool registered,
                                        int registrationResult) override
    {
        heard(Callback<RegistrationStateChangeEvent>{"onRegistrationStateChangeEvent"}, lineId,
              callId, registered, registrationResult);
    }
    void onIncomingCallEvent(const std::string& lineId, int callId, const std::string& uri,
                             const std::string& name, const std::string& fullPai,
                             const std::string& alertUri, const std::string& alertInfoParam,
                             bool alertAutoAnswer, int callType, const std::string& diversionUri,
                             const std::string& diversionName, int diversionReason,
                             bool zipAutoAnswer, int resourcePriority, int ilCallLevel,
                             int ilLocalLevel, bool isVideoCall) override
    {
        heard(Callback<IncomingCallEvent>{"onIncomingCallEvent"}, lineId, callId, uri, name,
              fullPai, alertUri, alertInfoParam, alertAutoAnswer, callType, diversionUri,
              diversionName, diversionReason, zipAutoAnswer, resourcePriority, ilCallLevel,
              ilLocalLevel, isVideoCall);
    }
    void onIncomingPickupCallEvent(const std::string& lineId, int callId, const std::string& uri,
                                   const std::string& name, const std::string& fullPai) override
    {
        heard(Callback<IncomingPickupCallEvent>{"onIncomingPickupCallEvent"}, lineId, callId, uri,
              name, fullPai);
    }
    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        heard(Callback<CallHeldEvent>{"onCallHeldEvent"}, lineId, callId);
    }
    void onCallRetrievedEvent(const std::string& lineId, int callId, const std::string& uri,
                              const std::string& name, const std::string& fullPai, int ilCallLevel,
                              int ilLocalLevel, bool connectedToMediaServer) override
    {
        heard(Callback<CallRetrievedEvent>{"onCallRetrievedEvent"}, lineId, callId, uri, name,
              fullPai, ilCallLevel, ilLocalLevel, connectedToMediaServer);
    }
    void onFeatureSuccessEvent(const std::string& lineId, int callId, int feature) override
    {
        heard(Callback<FeatureSuccessEvent>{"onFeatureSuccessEvent"}, lineId, callId, feature);
    }
    void onFeatureFailedEvent(const std::string& lineId, int callId, int feature,
                              int featureFailure) override
    {
        heard(Callback<FeatureFailedEvent>{"onFeatureFailedEvent"}, lineId, callId, feature,
              featureFailure);
    }
    void onRemoteEndpointDetailsChangedEvent(const std::string& lineId, int callId,
                                             const std::string& uri, const std::string& name,
                                             const std::string& fullPai, bool exitConf,
                                             bool jointCall) override
    {
        heard(Callback<RemoteEndpointDetailsChangedEvent>{"onRemoteEndpointDetailsChangedEvent"},
              lineId, callId, uri, name, fullPai, exitConf, jointCall);
    }
    void onIncomingCallMissedEvent(const std::string& lineId, int callId, const std::string& uri,
                                   const std::string& name, const std::string& fullPai, int reason,
                                   const std::string& diversionUri,
                                   const std::string& diversionName, int diversionReason) override
    {
        heard(Callback<IncomingCallMissedEvent>{"onIncomingCallMissedEvent"}, lineId, callId, uri,
              name, fullPai, reason, diversionUri, diversionName, diversionReason);
    }
    void onCallForwardedEvent(const std::string& lineId, int callId,
                              const std::string& callingParty, const std::string& callingPartyName,
                              const std::string& callingPartyFullPai,
                              const std::string& newDestination, int reason) override
    {
        heard(Callback<CallForwardedEvent>{"onCallForwardedEvent"}, lineId, callId, callingParty,
              callingPartyName, callingPartyFullPai, newDestination, reason);
    }
    void onIncomingAssociatedCallEvent(const std::string& lineId, int currentCallId,
                                       int newCallId) override
    {
        heard(Callback<IncomingAssociatedCallEvent>{"onIncomingAssociatedCallEvent"}, lineId,
              currentCallId, newCallId);
    }
    void onDevicesChangedEvent() override
    {
        heard(Callback<DevicesChangedEvent>{"onDevicesChangedEvent"});
    }
    void onMessageWaitingEvent(const std::string& lineId, int type, unsigned int newMessages,
                               unsigned int oldMessages, unsigned int newUrgentMessages,
                               unsigned int oldUrgentMessages, int returnType, int availInfo,
                               int messagesWaiting, const std::string& voiceMailNumber) override
    {
        heard(Callback<MessageWaitingEvent>{"onMessageWaitingEvent"}, lineId, type, newMessages,
              oldMessages, newUrgentMessages, oldUrgentMessages, returnType, availInfo,
              messagesWaiting, voiceMailNumber);
    }
    void onDoNotDisturbEvent(const std::string& deviceId, bool doNotDisturbOn) override
    {
        heard(Callback<DoNotDisturbEvent>{"onDoNotDisturbEvent"}, deviceId, doNotDisturbOn);
    }
    void onAgentStateEvent(const std::string& deviceId, const std::string& agentState) override
    {
        heard(Callback<AgentStateEvent>{"onAgentStateEvent"}, deviceId, agentState);
    }
    void onSecurityStatusChanged(const std::string& lineURI, int callId, int securityStatus,
                                 std::vector<int>& callIdsRecorded,
                                 std::vector<std::string>& callLineURIsRecorded) override
    {
        heard(Callback<SecurityStatusChanged>{"onSecurityStatusChanged"}, lineURI, callId,
              securityStatus, callIdsRecorded, callLineURIsRecorded);
    }
    void onCallRecordingStatusEvent(const std::string& lineId, int callId,
                                    const std::string& callRecorded) override
    {
        heard(Callback<CallRecordingStatusEvent>{"onCallRecordingStatusEvent"}, lineId, callId,
              callRecorded);
    }
    void onPreemptionStatusChanged(const std::string& lineURI, int callId, int priority, int cause,
                                   const std::string& reason) override
    {
        heard(Callback<PreemptionStatusChanged>{"onPreemptionStatusChanged"}, lineURI, callId,
              priority, cause, reason);
    }
    void onImpactLevelChanged(const std::string& lineURI, int callId, int ilCallLevel,
                              int ilLocalLevel) override
    {
        heard(Callback<ImpactLevelChanged>{"onImpactLevelChanged"}, lineURI, callId, ilCallLevel,
              ilLocalLevel);
    }
    void onSystemStatusEvent(const std::string& status, const std::string& statusInfo) override
    {
        heard(Callback<SystemStatusEvent>{"onSystemStatusEvent"}, status, statusInfo);
    }
    void onServerFeatureStatusEvent(const std::string& lineURI, const std::string& status) override
    {
        heard(Callback<ServerFeatureStatusEvent>{"onServerFeatureStatusEvent"}, lineURI, status);
    }
    void onB2buaCSTAResponse(const std::string& lineURI, bool success,
                             std::string& cstaResponse) override
    {
        heard(Callback<B2buaCSTAResponse>{"onB2buaCSTAResponse"}, lineURI, success, cstaResponse);
    }
    void onB2buaCSTAEventOrRequest(const std::string& lineURI, std::string& cstaMessage) override
    {
        heard(Callback<B2buaCSTAEventOrRequest>{"onB2buaCSTAEventOrRequest"}, lineURI, cstaMessage);
    }
    void onConferenceStatusEvent(const std::string& lineId, int callId,
                                 const std::string& xmlContent) override
    {
        heard(Callback<ConferenceStatusEvent>{"onConferenceStatusEvent"}, lineId, callId,
              xmlContent);
    }
    void onCallCompletionEvent(const std::string& lineId, const std::string& uri,
                               int callCompletionType, int callCompletionState,
                               bool displayOutcomeCallUI) override
    {
        heard(Callback<CallCompletionEvent>{"onCallCompletionEvent"}, lineId, uri,
              callCompletionType, callCompletionState, displayOutcomeCallUI);
    }
    void onCallCompletionFailedEvent(const std::string& lineId, const std::string& uri,
                                     int callCompletionFailureType) override
    {
        heard(Callback<CallCompletionFailedEvent>{"onCallCompletionFailedEvent"}, lineId, uri,
              callCompletionFailureType);
    }
    void onBluetoothAudioStatusChanged(const std::string& lineId, int callId, bool audioEnabled,
                                       bool audioGateway, bool inBandRinging) override
    {
        heard(Callback<BluetoothAudioStatusChanged>{"onBluetoothAudioStatusChanged"}, lineId,
              callId, audioEnabled, audioGateway, inBandRinging);
    }
};

}  // namespace communications

#endif

#ifndef KIT_BINDING_SUBSCRIBER_H
#define KIT_BINDING_SUBSCRIBER_H

#include "CommunicationsServiceEventIfc.h"
#include "framework/Executable.h"
#include "kit/protocol/Protocol.h"

#include <string>
#include <vector>

namespace kit
{

/// An event as it reached its callback.
struct ReceivedEvent
{
    /// Its row in the table of events.
    const Event* event = nullptr;
    /// One for each argument of the row, as it would travel: numbers in decimal, flags as 1 and 0.
    std::vector<std::string> values;

    std::string method() const { return event->method; }

    /// The value of an argument, "" for a name that the event does not have.
    std::string value(const std::string& argument) const;

    /// The same for people: numbers by name, flags as true and false.
    std::string text(const std::string& argument) const;

    /// "CallHeldEvent lineId=1001 callId=7".
    std::string inWords() const;
};

/// What a received event should be: its method name and some values, as people give them.
struct ExpectedEvent
{
    std::string method;
    Values values;

    /// How `received` differs: "" when it does not, else for people, "callState is held". Throws
    /// std::invalid_argument for a name or value that the event cannot have.
    std::string difference(const ReceivedEvent& received) const;
};

/// A subscriber that takes all 28 callbacks in one place.
class Subscriber : public Executable, public CommunicationsServiceEventIfc
{
public:
    /// On the thread that delivers the event.
    virtual void onEvent(const ReceivedEvent& received) = 0;

    void init(Context& context) override;
    void shutdown() override;

    void onCallStateChangeEvent(const std::string& lineId, int callId, int callState, int reason,
                                int sendOptions, const std::string& uri, const std::string& name,
                                const std::string& fullPai, CallPartyInfo* callPartyInfo,
                                int resourcePriority, int preemptionCause,
                                const std::string& preemptionText, bool callBackFeatureAvailable,
                                int ilCallLevel, int ilLocalLevel) override;
    void onRegistrationStateChangeEvent(const std::string& lineId, int callId, bool registered,
                                        int registrationResult) override;
    void onIncomingCallEvent(const std::string& lineId, int callId, const std::string& uri,
                             const std::string& name, const std::string& fullPai,
                             const std::string& alertUri, const std::string& alertInfoParam,
                             bool alertAutoAnswer, int callType, const std::string& diversionUri,
                             const std::string& diversionName, int diversionReason,
                             bool zipAutoAnswer, int resourcePriority, int ilCallLevel,
                             int ilLocalLevel, bool isVideoCall) override;
    void onIncomingPickupCallEvent(const std::string& lineId, int callId, const std::string& uri,
                                   const std::string& name, const std::string& fullPai) override;
    void onCallHeldEvent(const std::string& lineId, int callId) override;
    void onCallRetrievedEvent(const std::string& lineId, int callId, const std::string& uri,
                              const std::string& name, const std::string& fullPai, int ilCallLevel,
                              int ilLocalLevel, bool connectedToMediaServer) override;
    void onFeatureSuccessEvent(const std::string& lineId, int callId, int feature) override;
    void onFeatureFailedEvent(const std::string& lineId, int callId, int feature,
                              int featureFailure) override;
    void onRemoteEndpointDetailsChangedEvent(const std::string& lineId, int callId,
                                             const std::string& uri, const std::string& name,
                                             const std::string& fullPai, bool exitConf,
                                             bool jointCall) override;
    void onIncomingCallMissedEvent(const std::string& lineId, int callId, const std::string& uri,
                                   const std::string& name, const std::string& fullPai, int reason,
                                   const std::string& diversionUri,
                                   const std::string& diversionName, int diversionReason) override;
    void onCallForwardedEvent(const std::string& lineId, int callId,
                              const std::string& callingParty, const std::string& callingPartyName,
                              const std::string& callingPartyFullPai,
                              const std::string& newDestination, int reason) override;
    void onIncomingAssociatedCallEvent(const std::string& lineId, int currentCallId,
                                       int newCallId) override;
    void onDevicesChangedEvent() override;
    void onMessageWaitingEvent(const std::string& lineId, int type, unsigned int newMessages,
                               unsigned int oldMessages, unsigned int newUrgentMessages,
                               unsigned int oldUrgentMessages, int returnType, int availInfo,
                               int messagesWaiting, const std::string& voiceMailNumber) override;
    void onDoNotDisturbEvent(const std::string& deviceId, bool doNotDisturbOn) override;
    void onAgentStateEvent(const std::string& deviceId, const std::string& agentState) override;
    void onSecurityStatusChanged(const std::string& lineURI, int callId, int securityStatus,
                                 std::vector<int>& callIdsRecorded,
                                 std::vector<std::string>& callLineURIsRecorded) override;
    void onCallRecordingStatusEvent(const std::string& lineId, int callId,
                                    const std::string& callRecorded) override;
    void onPreemptionStatusChanged(const std::string& lineURI, int callId, int priority, int cause,
                                   const std::string& reason) override;
    void onImpactLevelChanged(const std::string& lineURI, int callId, int ilCallLevel,
                              int ilLocalLevel) override;
    void onSystemStatusEvent(const std::string& status, const std::string& statusInfo) override;
    void onServerFeatureStatusEvent(const std::string& lineURI, const std::string& status) override;
    void onB2buaCSTAResponse(const std::string& lineURI, bool success,
                             std::string& cstaResponse) override;
    void onB2buaCSTAEventOrRequest(const std::string& lineURI, std::string& cstaMessage) override;
    void onConferenceStatusEvent(const std::string& lineId, int callId,
                                 const std::string& xmlContent) override;
    void onCallCompletionEvent(const std::string& lineId, const std::string& uri,
                               int callCompletionType, int callCompletionState,
                               bool displayOutcomeCallUI) override;
    void onCallCompletionFailedEvent(const std::string& lineId, const std::string& uri,
                                     int callCompletionFailureType) override;
    void onBluetoothAudioStatusChanged(const std::string& lineId, int callId, bool audioEnabled,
                                       bool audioGateway, bool inBandRinging) override;

private:
    void receive(const char* method, std::vector<std::string> values);
};

}  // namespace kit

#endif

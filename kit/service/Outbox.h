#ifndef KIT_SERVICE_OUTBOX_H
#define KIT_SERVICE_OUTBOX_H

#include "kit/binding/WireText.h"
#include "kit/service/Model.h"

#include <string>
#include <utility>
#include <vector>

namespace kit::service
{

/// What the simulation has to say and nobody has fetched yet: complaints and events, for each of
/// which there is a verb. All fields are always sent.
class Outbox
{
public:
    void complain(std::string text) { complaints_.push_back(std::move(text)); }
    /// An event as it stands.
    void emit(std::string text) { events_.push_back(std::move(text)); }

    std::vector<std::string> takeComplaints() { return std::exchange(complaints_, {}); }
    std::vector<std::string> takeEvents() { return std::exchange(events_, {}); }

    // --- what happens in a call ---

    void callStateChange(const Call& call)
    {
        const Party& calling = call.incoming ? call.remote.from : call.local;
        const Party& called = call.incoming ? call.local : call.remote.from;
        tell("CallStateChangeEvent", call.line, call.id, call.state, call.reason,
             call.takesDigits() ? numbers::sendDigits : numbers::sendNothing,
             call.remote.from.uri(), call.remote.from.name, call.remotePai(), calling.number,
             calling.name, called.number, called.name, call.remote.priority, call.preemptionCause,
             call.preemptionText, call.callBackPossible(), call.remote.ilCallLevel,
             call.remote.ilLocalLevel);
    }
    void incomingCall(const Call& call)
    {
        const Arrival& remote = call.remote;
        tellWithFarEnd("IncomingCallEvent", call, remote.alertUri, remote.alertInfo,
                       remote.autoAnswer, remote.type, remote.divertedBy.uri(),
                       remote.divertedBy.name, remote.diversionReason, remote.zipAutoAnswer,
                       remote.priority, remote.ilCallLevel, remote.ilLocalLevel, remote.video);
    }
    void incomingCallMissed(const Call& call, int reason)
    {
        tellWithFarEnd("IncomingCallMissedEvent", call, reason, call.remote.divertedBy.uri(),
                       call.remote.divertedBy.name, call.remote.diversionReason);
    }
    void callForwarded(const Call& call, const std::string& newDestination, int reason)
    {
        tellWithFarEnd("CallForwardedEvent", call, newDestination, reason);
    }
    void remoteEndpointDetailsChanged(const Call& call, bool exitConf, bool jointCall)
    {
        tellWithFarEnd("RemoteEndpointDetailsChangedEvent", call, exitConf, jointCall);
    }
    void callHeld(const Call& call) { tell("CallHeldEvent", call.line, call.id); }
    void callRetrieved(const Call& call, bool connectedToMediaServer)
    {
        tellWithFarEnd("CallRetrievedEvent", call, call.remote.ilCallLevel,
                       call.remote.ilLocalLevel, connectedToMediaServer);
    }
    void conferenceStatus(const Call& call, const std::string& document)
    {
        tell("conferenceStatusEvent", call.line, call.id, document);
    }
    void securityStatusChanged(const Call& call, const std::vector<int>& callIdsRecorded,
                               const std::vector<std::string>& callLineUrisRecorded)
    {
        tell("securityStatusChanged", call.line, call.id, call.security, callIdsRecorded,
             callLineUrisRecorded);
    }
    void preemptionStatusChanged(const Call& call, int priority, int cause,
                                 const std::string& reason)
    {
        tell("preemptionStatusChanged", call.line, call.id, priority, cause, reason);
    }
    void impactLevelChanged(const Call& call)
    {
        tell("impactLevelChanged", call.line, call.id, call.remote.ilCallLevel,
             call.remote.ilLocalLevel);
    }
    void callRecordingStatus(const Call& call)
    {
        tell("callRecordingStatusEvent", call.line, call.id,
             call.recorded ? words::recorded : words::notRecorded);
    }

    // --- what happens on a line ---

    void registrationStateChange(const std::string& line, bool registered, int result)
    {
        tell("RegistrationStateChangeEvent", line, 0, registered, result);
    }
    void incomingPickupCall(const std::string& line, int callId, const Party& caller)
    {
        tell("IncomingPickupCallEvent", line, callId, caller.uri(), caller.name, caller.fullPai());
    }
    void incomingAssociatedCall(const std::string& line, int currentCallId, int newCallId)
    {
        tell("IncomingAssociatedCallEvent", line, currentCallId, newCallId);
    }
    void featureSuccess(const std::string& line, int callId, int feature)
    {
        tell("FeatureSuccessEvent", line, callId, feature);
    }
    void featureFailed(const std::string& line, int callId, int feature, int failure)
    {
        tell("FeatureFailedEvent", line, callId, feature, failure);
    }
    void doNotDisturb(const Line& line) { tell("DoNotDisturbEvent", line.name, line.doNotDisturb); }
    void agentState(const Line& line) { tell("AgentStateEvent", line.name, line.agentState); }
    void serverFeatureStatus(const Line& line)
    {
        tell("serverFeatureStatusEvent", line.name,
             line.serverFeatures ? words::serverFeaturesOn : words::serverFeaturesOff);
    }
    void b2buaCstaResponse(const std::string& line, bool success, const std::string& payload)
    {
        tell("b2buaCSTAResponse", line, success, payload);
    }
    void b2buaCstaEventOrRequest(const std::string& line, const std::string& payload)
    {
        tell("b2buaCSTAEventOrRequest", line, payload);
    }
    void callCompletion(const CallBack& callBack, int state)
    {
        tell("callCompletionEvent", callBack.line, callBack.destination.uri(), callBack.type, state,
             callBack.displayOutcome);
    }
    void callCompletionFailed(const CallBack& callBack, int failure)
    {
        tell("callCompletionFailedEvent", callBack.line, callBack.destination.uri(), failure);
    }
    void messageWaiting(const std::string& line, const Mailbox& mailbox)
    {
        tell("messageWaitingEvent", line, numbers::messageVoice, mailbox.newMessages,
             mailbox.oldMessages, mailbox.newUrgentMessages, mailbox.oldUrgentMessages,
             numbers::returnDial, numbers::infoCounters,
             mailbox.waiting() ? numbers::waitingYes : numbers::waitingNo, mailboxNumber);
    }
    void bluetoothAudioStatusChanged(const std::string& line, int callId, const Settings& settings)
    {
        tell("bluetoothAudioStatusChanged", line, callId, settings.bluetoothAudio,
             settings.bluetoothGateway, settings.bluetoothRinging);
    }

    // --- what happens to the phone ---

    void devicesChanged() { tell("DevicesChangedEvent"); }
    void systemStatus(const Settings& settings)
    {
        tell("systemStatusEvent", settings.systemStatus, settings.systemStatusInfo);
    }

private:
    template <typename... Fields>
    void tell(const char* method, const Fields&... fields)
    {
        emit(event(method, fields...));
    }
    template <typename... Fields>
    void tellWithFarEnd(const char* method, const Call& call, const Fields&... fields)
    {
        tell(method, call.line, call.id, call.remote.from.uri(), call.remote.from.name,
             call.remotePai(), fields...);
    }

    std::vector<std::string> complaints_;
    std::vector<std::string> events_;
};

}  // namespace kit::service

#endif

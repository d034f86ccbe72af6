#include "kit/service/EventText.h"

#include "kit/binding/WireText.h"

namespace kit::service::events
{

namespace
{

std::string fullPai(const Call& call)
{
    return call.remote.fullPai.empty() ? call.remote.from.fullPai() : call.remote.fullPai;
}

}  // namespace

std::string callStateChange(const Call& call)
{
    const Party& calling = call.incoming ? call.remote.from : call.local;
    const Party& called = call.incoming ? call.local : call.remote.from;
    const bool digits =
        call.state == numbers::callConnected || call.state == numbers::callConferenced;
    return event("CallStateChangeEvent", call.line, call.id, call.state, call.reason,
                 digits ? numbers::sendDigits : numbers::sendNothing, call.remote.from.uri(),
                 call.remote.from.name, fullPai(call), calling.number, calling.name, called.number,
                 called.name, call.remote.priority, call.preemptionCause, call.preemptionText,
                 call.callBackPossible(), call.remote.ilCallLevel, call.remote.ilLocalLevel);
}

std::string registrationStateChange(const std::string& line, int callId, bool registered,
                                    int registrationResult)
{
    return event("RegistrationStateChangeEvent", line, callId, registered, registrationResult);
}

std::string incomingCall(const Call& call)
{
    const Arrival& remote = call.remote;
    return event("IncomingCallEvent", call.line, call.id, remote.from.uri(), remote.from.name,
                 fullPai(call), remote.alertUri, remote.alertInfo, remote.autoAnswer, remote.type,
                 remote.divertedBy.uri(), remote.divertedBy.name, remote.diversionReason,
                 remote.zipAutoAnswer, remote.priority, remote.ilCallLevel, remote.ilLocalLevel,
                 remote.video);
}

std::string incomingPickupCall(const std::string& line, int callId, const Party& caller)
{
    return event("IncomingPickupCallEvent", line, callId, caller.uri(), caller.name,
                 caller.fullPai());
}

std::string callHeld(const Call& call)
{
    return event("CallHeldEvent", call.line, call.id);
}

std::string callRetrieved(const Call& call, bool connectedToMediaServer)
{
    return event("CallRetrievedEvent", call.line, call.id, call.remote.from.uri(),
                 call.remote.from.name, fullPai(call), call.remote.ilCallLevel,
                 call.remote.ilLocalLevel, connectedToMediaServer);
}

std::string featureSuccess(const std::string& line, int callId, int feature)
{
    return event("FeatureSuccessEvent", line, callId, feature);
}

std::string featureFailed(const std::string& line, int callId, int feature, int featureFailure)
{
    return event("FeatureFailedEvent", line, callId, feature, featureFailure);
}

std::string remoteEndpointDetailsChanged(const Call& call, bool exitConf, bool jointCall)
{
    return event("RemoteEndpointDetailsChangedEvent", call.line, call.id, call.remote.from.uri(),
                 call.remote.from.name, fullPai(call), exitConf, jointCall);
}

std::string incomingCallMissed(const Call& call, int reason)
{
    return event("IncomingCallMissedEvent", call.line, call.id, call.remote.from.uri(),
                 call.remote.from.name, fullPai(call), reason, call.remote.divertedBy.uri(),
                 call.remote.divertedBy.name, call.remote.diversionReason);
}

std::string callForwarded(const Call& call, const std::string& newDestination, int reason)
{
    return event("CallForwardedEvent", call.line, call.id, call.remote.from.uri(),
                 call.remote.from.name, fullPai(call), newDestination, reason);
}

std::string devicesChanged()
{
    return event("DevicesChangedEvent");
}

std::string messageWaiting(const std::string& line, const Mailbox& mailbox)
{
    return event("messageWaitingEvent", line, numbers::messageVoice, mailbox.newMessages,
                 mailbox.oldMessages, mailbox.newUrgentMessages, mailbox.oldUrgentMessages,
                 numbers::returnDial, numbers::infoCounters,
                 mailbox.waiting() ? numbers::waitingYes : numbers::waitingNo, mailboxNumber);
}

std::string doNotDisturb(const std::string& device, bool on)
{
    return event("DoNotDisturbEvent", device, on);
}

std::string agentState(const std::string& device, const std::string& state)
{
    return event("AgentStateEvent", device, state);
}

std::string systemStatus(const std::string& status, const std::string& statusInfo)
{
    return event("systemStatusEvent", status, statusInfo);
}

std::string serverFeatureStatus(const std::string& line, const std::string& status)
{
    return event("serverFeatureStatusEvent", line, status);
}

std::string incomingAssociatedCall(const std::string& line, int currentCallId, int newCallId)
{
    return event("IncomingAssociatedCallEvent", line, currentCallId, newCallId);
}

std::string b2buaCstaResponse(const std::string& line, bool success, const std::string& payload)
{
    return event("b2buaCSTAResponse", line, success, payload);
}

std::string b2buaCstaEventOrRequest(const std::string& line, const std::string& payload)
{
    return event("b2buaCSTAEventOrRequest", line, payload);
}

std::string conferenceStatus(const Call& call, const std::string& xmlContent)
{
    return event("conferenceStatusEvent", call.line, call.id, xmlContent);
}

std::string securityStatusChanged(const Call& call, const std::vector<int>& callIdsRecorded,
                                  const std::vector<std::string>& callLineUrisRecorded)
{
    return event("securityStatusChanged", call.line, call.id, call.security, callIdsRecorded,
                 callLineUrisRecorded);
}

std::string preemptionStatusChanged(const Call& call, int priority, int cause,
                                    const std::string& reason)
{
    return event("preemptionStatusChanged", call.line, call.id, priority, cause, reason);
}

std::string impactLevelChanged(const Call& call)
{
    return event("impactLevelChanged", call.line, call.id, call.remote.ilCallLevel,
                 call.remote.ilLocalLevel);
}

std::string callRecordingStatus(const Call& call)
{
    return event("callRecordingStatusEvent", call.line, call.id,
                 call.recorded ? words::recorded : words::notRecorded);
}

std::string callCompletion(const CallBack& callBack, int state)
{
    return event("callCompletionEvent", callBack.line, callBack.destination.uri(), callBack.type,
                 state, callBack.displayOutcome);
}

std::string callCompletionFailed(const CallBack& callBack, int failure)
{
    return event("callCompletionFailedEvent", callBack.line, callBack.destination.uri(), failure);
}

std::string bluetoothAudioStatusChanged(const std::string& line, int callId, bool audioEnabled,
                                        bool audioGateway, bool inBandRinging)
{
    return event("bluetoothAudioStatusChanged", line, callId, audioEnabled, audioGateway,
                 inBandRinging);
}

}  // namespace kit::service::events

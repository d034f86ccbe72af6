#include "kit/service/EventText.h"

#include "kit/protocol/Lists.h"
#include "kit/protocol/Protocol.h"

namespace kit::service::events
{

namespace
{

/// Writes one event, field by field.
class EventText
{
public:
    explicit EventText(const char* method) : text_(element("Method", method)) {}

    EventText& text(const char* tag, const std::string& value)
    {
        text_ += element(tag, value);
        return *this;
    }

    EventText& number(const char* tag, long long value) { return text(tag, std::to_string(value)); }

    EventText& flag(const char* tag, bool value) { return text(tag, value ? "1" : "0"); }

    /// For the record CallPartyInfo, which has room for this much.
    EventText& party(const char* tag, const std::string& value)
    {
        return text(tag, value.substr(0, 64));
    }

    EventText& payload(const std::string& value)
    {
        text_ += value;
        return *this;
    }

    std::string str() { return std::move(text_); }

private:
    std::string text_;
};

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
    return EventText("CallStateChangeEvent")
        .text("LineID", call.line)
        .number("CallID", call.id)
        .number("CallState", call.state)
        .number("Reason", call.reason)
        .number("SendOptions", digits ? numbers::sendDigits : numbers::sendNothing)
        .text("URI", call.remote.from.uri())
        .text("Name", call.remote.from.name)
        .text("FullPAI", fullPai(call))
        .party("GPUCLG", calling.number)
        .party("GPUCLGName", calling.name)
        .party("GPUCLD", called.number)
        .party("GPUCLDName", called.name)
        .number("ResourcePriority", call.remote.priority)
        .number("PreemptionCause", call.preemptionCause)
        .text("PreemptionText", call.preemptionText)
        .flag("CallBackFearureAvailable", call.callBackPossible())
        .number("ILCallLevel", call.remote.ilCallLevel)
        .number("ILLocalLevel", call.remote.ilLocalLevel)
        .str();
}

std::string registrationStateChange(const std::string& line, int callId, bool registered,
                                    int registrationResult)
{
    return EventText("RegistrationStateChangeEvent")
        .text("LineID", line)
        .number("CallID", callId)
        .flag("Registered", registered)
        .number("RegistrationResult", registrationResult)
        .str();
}

std::string incomingCall(const Call& call)
{
    const Arrival& remote = call.remote;
    return EventText("IncomingCallEvent")
        .text("LineID", call.line)
        .number("CallID", call.id)
        .text("URI", remote.from.uri())
        .text("Name", remote.from.name)
        .text("FullPAI", fullPai(call))
        .text("AlertInformation_AlertURI", remote.alertUri)
        .text("AlertInformation_InfoParam", remote.alertInfo)
        .flag("AlertInformation_AutoAnswer", remote.autoAnswer)
        .number("CallType", remote.type)
        .text("DiversionURI", remote.divertedBy.uri())
        .text("DiversionName", remote.divertedBy.name)
        .number("DiversionReason", remote.diversionReason)
        .flag("AICSZIPAutoAnswer", remote.zipAutoAnswer)
        .number("ResourcePriority", remote.priority)
        .number("ILCallLevel", remote.ilCallLevel)
        .number("ILLocalLevel", remote.ilLocalLevel)
        .flag("IsVideoCall", remote.video)
        .str();
}

std::string incomingPickupCall(const std::string& line, int callId, const Party& caller)
{
    return EventText("IncomingPickupCallEvent")
        .text("LineID", line)
        .number("CallID", callId)
        .text("URI", caller.uri())
        .text("Name", caller.name)
        .text("FullPAI", caller.fullPai())
        .str();
}

std::string callHeld(const Call& call)
{
    return EventText("CallHeldEvent").text("LineID", call.line).number("CallID", call.id).str();
}

std::string callRetrieved(const Call& call, bool connectedToMediaServer)
{
    return EventText("CallRetrievedEvent")
        .text("LineID", call.line)
        .number("CallID", call.id)
        .text("URI", call.remote.from.uri())
        .text("Name", call.remote.from.name)
        .text("FullPAI", fullPai(call))
        .number("ILCallLevel", call.remote.ilCallLevel)
        .number("ILLocalLevel", call.remote.ilLocalLevel)
        .flag("ConnectedToMediaServer", connectedToMediaServer)
        .str();
}

std::string featureSuccess(const std::string& line, int callId, int feature)
{
    return EventText("FeatureSuccessEvent")
        .text("LineID", line)
        .number("CallID", callId)
        .number("Feature", feature)
        .str();
}

std::string featureFailed(const std::string& line, int callId, int feature, int featureFailure)
{
    return EventText("FeatureFailedEvent")
        .text("LineID", line)
        .number("CallID", callId)
        .number("Feature", feature)
        .number("FeatureFailure", featureFailure)
        .str();
}

std::string remoteEndpointDetailsChanged(const Call& call, bool exitConf, bool jointCall)
{
    return EventText("RemoteEndpointDetailsChangedEvent")
        .text("LineID", call.line)
        .number("CallID", call.id)
        .text("URI", call.remote.from.uri())
        .text("Name", call.remote.from.name)
        .text("FullPAI", fullPai(call))
        .flag("exitConf", exitConf)
        .flag("jointCall", jointCall)
        .str();
}

std::string incomingCallMissed(const Call& call, int reason)
{
    return EventText("IncomingCallMissedEvent")
        .text("LineID", call.line)
        .number("CallID", call.id)
        .text("URI", call.remote.from.uri())
        .text("Name", call.remote.from.name)
        .text("FullPAI", fullPai(call))
        .number("Reason", reason)
        .text("DiversionURI", call.remote.divertedBy.uri())
        .text("DiversionName", call.remote.divertedBy.name)
        .number("DiversionReason", call.remote.diversionReason)
        .str();
}

std::string callForwarded(const Call& call, const std::string& newDestination, int reason)
{
    return EventText("CallForwardedEvent")
        .text("LineID", call.line)
        .number("CallID", call.id)
        .text("CallingParty", call.remote.from.uri())
        .text("CallingPartyName", call.remote.from.name)
        .text("CallingPartyFullPAI", fullPai(call))
        .text("NewDestination", newDestination)
        .number("Reason", reason)
        .str();
}

std::string devicesChanged()
{
    return EventText("DevicesChangedEvent").str();
}

std::string messageWaiting(const std::string& line, const Mailbox& mailbox)
{
    return EventText("messageWaitingEvent")
        .text("LineID", line)
        .number("type", numbers::messageVoice)
        .number("new_messages", mailbox.newMessages)
        .number("old_messages", mailbox.oldMessages)
        .number("new_urgent_messages", mailbox.newUrgentMessages)
        .number("old_urgent_messages", mailbox.oldUrgentMessages)
        .number("return_type", numbers::returnDial)
        .number("avail_info", numbers::infoCounters)
        .number("messages_waiting", mailbox.waiting() ? numbers::waitingYes : numbers::waitingNo)
        .text("voiceMailNumber", mailboxNumber)
        .str();
}

std::string doNotDisturb(const std::string& device, bool on)
{
    return EventText("DoNotDisturbEvent").text("deviceId", device).flag("doNotDisturbOn", on).str();
}

std::string agentState(const std::string& device, const std::string& state)
{
    return EventText("AgentStateEvent").text("deviceId", device).text("agentState", state).str();
}

std::string systemStatus(const std::string& status, const std::string& statusInfo)
{
    return EventText("systemStatusEvent")
        .text("status", status)
        .text("statusInfo", statusInfo)
        .str();
}

std::string serverFeatureStatus(const std::string& line, const std::string& status)
{
    return EventText("serverFeatureStatusEvent").text("lineURI", line).text("status", status).str();
}

std::string incomingAssociatedCall(const std::string& line, int currentCallId, int newCallId)
{
    return EventText("IncomingAssociatedCallEvent")
        .text("LineID", line)
        .number("CurrentCallID", currentCallId)
        .number("NewCallID", newCallId)
        .str();
}

std::string b2buaCstaResponse(const std::string& line, bool success, const std::string& payload)
{
    return EventText("b2buaCSTAResponse")
        .text("lineURI", line)
        .flag("success", success)
        .payload(payload)
        .str();
}

std::string b2buaCstaEventOrRequest(const std::string& line, const std::string& payload)
{
    return EventText("b2buaCSTAEventOrRequest").text("lineURI", line).payload(payload).str();
}

std::string conferenceStatus(const Call& call, const std::string& xmlContent)
{
    return EventText("conferenceStatusEvent")
        .text("LineID", call.line)
        .number("CallID", call.id)
        .text("XMLContent", xmlContent)
        .str();
}

std::string securityStatusChanged(const Call& call, const std::vector<int>& callIdsRecorded,
                                  const std::vector<std::string>& callLineUrisRecorded)
{
    return EventText("securityStatusChanged")
        .text("lineURI", call.line)
        .number("callId", call.id)
        .number("securityStatus", call.security)
        .text("CallIDsRecorded", encodeList(callIdsRecorded))
        .text("CallLineURIsRecorded", encodeList(callLineUrisRecorded))
        .str();
}

std::string preemptionStatusChanged(const Call& call, int priority, int cause,
                                    const std::string& reason)
{
    return EventText("preemptionStatusChanged")
        .text("lineURI", call.line)
        .number("callId", call.id)
        .number("priority", priority)
        .number("cause", cause)
        .text("reason", reason)
        .str();
}

std::string impactLevelChanged(const Call& call)
{
    return EventText("impactLevelChanged")
        .text("lineURI", call.line)
        .number("callId", call.id)
        .number("ILCallLevel", call.remote.ilCallLevel)
        .number("ILLocalLevel", call.remote.ilLocalLevel)
        .str();
}

std::string callRecordingStatus(const Call& call)
{
    return EventText("callRecordingStatusEvent")
        .text("LineID", call.line)
        .number("callId", call.id)
        .text("callRecorded", call.recorded ? words::recorded : words::notRecorded)
        .str();
}

std::string callCompletion(const CallBack& callBack, int state)
{
    return EventText("callCompletionEvent")
        .text("LineID", callBack.line)
        .text("URI", callBack.destination.uri())
        .number("CallCompletionType", callBack.type)
        .number("CallCompletionState", state)
        .flag("DisplayOutcomeCallUI", callBack.displayOutcome)
        .str();
}

std::string callCompletionFailed(const CallBack& callBack, int failure)
{
    return EventText("callCompletionFailedEvent")
        .text("LineID", callBack.line)
        .text("URI", callBack.destination.uri())
        .number("CallCompletionFailureType", failure)
        .str();
}

std::string bluetoothAudioStatusChanged(const std::string& line, int callId, bool audioEnabled,
                                        bool audioGateway, bool inBandRinging)
{
    return EventText("bluetoothAudioStatusChanged")
        .text("LineID", line)
        .number("CallID", callId)
        .flag("AudioEnabled", audioEnabled)
        .flag("AudioGateway", audioGateway)
        .flag("InBandRinging", inBandRinging)
        .str();
}

}  // namespace kit::service::events

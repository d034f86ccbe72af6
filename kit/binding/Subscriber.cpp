#include "kit/binding/Subscriber.h"

#include "kit/protocol/Lists.h"

#include <stdexcept>
#include <utility>

namespace kit
{

namespace
{

std::string text(int number)
{
    return std::to_string(number);
}

std::string text(unsigned int number)
{
    return std::to_string(number);
}

std::string text(bool flag)
{
    return flag ? "1" : "0";
}

std::size_t indexOf(const Event& event, const std::string& name)
{
    std::size_t index = 0;
    for (const Field& field : event.arguments)
    {
        if (name == field.argument || (*field.tag != '\0' && name == field.tag))
            break;
        ++index;
    }
    return index;
}

}  // namespace

std::string ReceivedEvent::value(const std::string& argument) const
{
    const std::size_t index = indexOf(*event, argument);
    return index < values.size() ? values[index] : std::string();
}

std::string ReceivedEvent::text(const std::string& argument) const
{
    const std::size_t index = indexOf(*event, argument);
    return index < values.size() ? toPeople(event->arguments[index], values[index]) : std::string();
}

std::string ReceivedEvent::inWords() const
{
    std::string words = event->method;
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        const Field& field = event->arguments[i];
        const std::string value = toPeople(field, values[i]);
        const bool plain = !value.empty() && value.find(' ') == std::string::npos;
        words += std::string(" ") + field.argument + "=" + (plain ? value : "\"" + value + "\"");
    }
    return words;
}

std::string ExpectedEvent::difference(const ReceivedEvent& received) const
{
    const Event* const expected = findEvent(method);
    if (expected == nullptr)
        throw std::invalid_argument("there is no event " + method);
    eventText(*expected, values);  // throws for what the event cannot have
    if (received.event != expected)
        return "it is " + received.method();
    for (const auto& [name, value] : values)
    {
        const std::size_t index = indexOf(*expected, name);
        if (toWire(expected->arguments[index], value) != received.values[index])
            return name + " is " + received.text(name);
    }
    return std::string();
}

void Subscriber::init(Context&) {}

void Subscriber::shutdown() {}

void Subscriber::receive(const char* method, std::vector<std::string> values)
{
    ReceivedEvent received;
    received.event = findEvent(method);
    received.values = std::move(values);
    onEvent(received);
}

void Subscriber::onCallStateChangeEvent(const std::string& lineId, int callId, int callState,
                                        int reason, int sendOptions, const std::string& uri,
                                        const std::string& name, const std::string& fullPai,
                                        CallPartyInfo* callPartyInfo, int resourcePriority,
                                        int preemptionCause, const std::string& preemptionText,
                                        bool callBackFeatureAvailable, int ilCallLevel,
                                        int ilLocalLevel)
{
    receive("CallStateChangeEvent",
            {lineId, text(callId), text(callState), text(reason), text(sendOptions), uri, name,
             fullPai, callPartyInfo->callingNumber, callPartyInfo->callingName,
             callPartyInfo->calledNumber, callPartyInfo->calledName, text(resourcePriority),
             text(preemptionCause), preemptionText, text(callBackFeatureAvailable),
             text(ilCallLevel), text(ilLocalLevel)});
}

void Subscriber::onRegistrationStateChangeEvent(const std::string& lineId, int callId,
                                                bool registered, int registrationResult)
{
    receive("RegistrationStateChangeEvent",
            {lineId, text(callId), text(registered), text(registrationResult)});
}

void Subscriber::onIncomingCallEvent(const std::string& lineId, int callId, const std::string& uri,
                                     const std::string& name, const std::string& fullPai,
                                     const std::string& alertUri, const std::string& alertInfoParam,
                                     bool alertAutoAnswer, int callType,
                                     const std::string& diversionUri,
                                     const std::string& diversionName, int diversionReason,
                                     bool zipAutoAnswer, int resourcePriority, int ilCallLevel,
                                     int ilLocalLevel, bool isVideoCall)
{
    receive("IncomingCallEvent",
            {lineId, text(callId), uri, name, fullPai, alertUri, alertInfoParam,
             text(alertAutoAnswer), text(callType), diversionUri, diversionName,
             text(diversionReason), text(zipAutoAnswer), text(resourcePriority), text(ilCallLevel),
             text(ilLocalLevel), text(isVideoCall)});
}

void Subscriber::onIncomingPickupCallEvent(const std::string& lineId, int callId,
                                           const std::string& uri, const std::string& name,
                                           const std::string& fullPai)
{
    receive("IncomingPickupCallEvent", {lineId, text(callId), uri, name, fullPai});
}

void Subscriber::onCallHeldEvent(const std::string& lineId, int callId)
{
    receive("CallHeldEvent", {lineId, text(callId)});
}

void Subscriber::onCallRetrievedEvent(const std::string& lineId, int callId, const std::string& uri,
                                      const std::string& name, const std::string& fullPai,
                                      int ilCallLevel, int ilLocalLevel,
                                      bool connectedToMediaServer)
{
    receive("CallRetrievedEvent", {lineId, text(callId), uri, name, fullPai, text(ilCallLevel),
                                   text(ilLocalLevel), text(connectedToMediaServer)});
}

void Subscriber::onFeatureSuccessEvent(const std::string& lineId, int callId, int feature)
{
    receive("FeatureSuccessEvent", {lineId, text(callId), text(feature)});
}

void Subscriber::onFeatureFailedEvent(const std::string& lineId, int callId, int feature,
                                      int featureFailure)
{
    receive("FeatureFailedEvent", {lineId, text(callId), text(feature), text(featureFailure)});
}

void Subscriber::onRemoteEndpointDetailsChangedEvent(const std::string& lineId, int callId,
                                                     const std::string& uri,
                                                     const std::string& name,
                                                     const std::string& fullPai, bool exitConf,
                                                     bool jointCall)
{
    receive("RemoteEndpointDetailsChangedEvent",
            {lineId, text(callId), uri, name, fullPai, text(exitConf), text(jointCall)});
}

void Subscriber::onIncomingCallMissedEvent(const std::string& lineId, int callId,
                                           const std::string& uri, const std::string& name,
                                           const std::string& fullPai, int reason,
                                           const std::string& diversionUri,
                                           const std::string& diversionName, int diversionReason)
{
    receive("IncomingCallMissedEvent", {lineId, text(callId), uri, name, fullPai, text(reason),
                                        diversionUri, diversionName, text(diversionReason)});
}

void Subscriber::onCallForwardedEvent(const std::string& lineId, int callId,
                                      const std::string& callingParty,
                                      const std::string& callingPartyName,
                                      const std::string& callingPartyFullPai,
                                      const std::string& newDestination, int reason)
{
    receive("CallForwardedEvent", {lineId, text(callId), callingParty, callingPartyName,
                                   callingPartyFullPai, newDestination, text(reason)});
}

void Subscriber::onIncomingAssociatedCallEvent(const std::string& lineId, int currentCallId,
                                               int newCallId)
{
    receive("IncomingAssociatedCallEvent", {lineId, text(currentCallId), text(newCallId)});
}

void Subscriber::onDevicesChangedEvent()
{
    receive("DevicesChangedEvent", {});
}

void Subscriber::onMessageWaitingEvent(const std::string& lineId, int type,
                                       unsigned int newMessages, unsigned int oldMessages,
                                       unsigned int newUrgentMessages,
                                       unsigned int oldUrgentMessages, int returnType,
                                       int availInfo, int messagesWaiting,
                                       const std::string& voiceMailNumber)
{
    receive("messageWaitingEvent",
            {lineId, text(type), text(newMessages), text(oldMessages), text(newUrgentMessages),
             text(oldUrgentMessages), text(returnType), text(availInfo), text(messagesWaiting),
             voiceMailNumber});
}

void Subscriber::onDoNotDisturbEvent(const std::string& deviceId, bool doNotDisturbOn)
{
    receive("DoNotDisturbEvent", {deviceId, text(doNotDisturbOn)});
}

void Subscriber::onAgentStateEvent(const std::string& deviceId, const std::string& agentState)
{
    receive("AgentStateEvent", {deviceId, agentState});
}

void Subscriber::onSecurityStatusChanged(const std::string& lineURI, int callId, int securityStatus,
                                         std::vector<int>& callIdsRecorded,
                                         std::vector<std::string>& callLineURIsRecorded)
{
    receive("securityStatusChanged",
            {lineURI, text(callId), text(securityStatus), encodeList(callIdsRecorded),
             encodeList(callLineURIsRecorded)});
}

void Subscriber::onCallRecordingStatusEvent(const std::string& lineId, int callId,
                                            const std::string& callRecorded)
{
    receive("callRecordingStatusEvent", {lineId, text(callId), callRecorded});
}

void Subscriber::onPreemptionStatusChanged(const std::string& lineURI, int callId, int priority,
                                           int cause, const std::string& reason)
{
    receive("preemptionStatusChanged",
            {lineURI, text(callId), text(priority), text(cause), reason});
}

void Subscriber::onImpactLevelChanged(const std::string& lineURI, int callId, int ilCallLevel,
                                      int ilLocalLevel)
{
    receive("impactLevelChanged", {lineURI, text(callId), text(ilCallLevel), text(ilLocalLevel)});
}

void Subscriber::onSystemStatusEvent(const std::string& status, const std::string& statusInfo)
{
    receive("systemStatusEvent", {status, statusInfo});
}

void Subscriber::onServerFeatureStatusEvent(const std::string& lineURI, const std::string& status)
{
    receive("serverFeatureStatusEvent", {lineURI, status});
}

void Subscriber::onB2buaCSTAResponse(const std::string& lineURI, bool success,
                                     std::string& cstaResponse)
{
    receive("b2buaCSTAResponse", {lineURI, text(success), cstaResponse});
}

void Subscriber::onB2buaCSTAEventOrRequest(const std::string& lineURI, std::string& cstaMessage)
{
    receive("b2buaCSTAEventOrRequest", {lineURI, cstaMessage});
}

void Subscriber::onConferenceStatusEvent(const std::string& lineId, int callId,
                                         const std::string& xmlContent)
{
    receive("conferenceStatusEvent", {lineId, text(callId), xmlContent});
}

void Subscriber::onCallCompletionEvent(const std::string& lineId, const std::string& uri,
                                       int callCompletionType, int callCompletionState,
                                       bool displayOutcomeCallUI)
{
    receive("callCompletionEvent", {lineId, uri, text(callCompletionType),
                                    text(callCompletionState), text(displayOutcomeCallUI)});
}

void Subscriber::onCallCompletionFailedEvent(const std::string& lineId, const std::string& uri,
                                             int callCompletionFailureType)
{
    receive("callCompletionFailedEvent", {lineId, uri, text(callCompletionFailureType)});
}

void Subscriber::onBluetoothAudioStatusChanged(const std::string& lineId, int callId,
                                               bool audioEnabled, bool audioGateway,
                                               bool inBandRinging)
{
    receive("bluetoothAudioStatusChanged",
            {lineId, text(callId), text(audioEnabled), text(audioGateway), text(inBandRinging)});
}

}  // namespace kit

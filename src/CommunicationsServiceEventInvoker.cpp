#include "CommunicationsServiceEventInvoker.h"

#include "FieldReaders.h"
#include "framework/Executable.h"
#include "framework/InvokerResponse.h"
#include "framework/Serializer.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace
{

using Ifc = CommunicationsServiceEventIfc;

struct Free
{
    void operator()(void* memory) const { std::free(memory); }
};

/// Not tested for null, on purpose.
std::unique_ptr<char, Free> allocate(std::size_t size)
{
    return std::unique_ptr<char, Free>(static_cast<char*>(std::malloc(size)));
}

/// Copies a text as a C string: up to its first NUL, and terminated.
void copyText(std::string_view text, char* to)
{
    const std::size_t copied = text.copy(to, text.find('\0'));
    to[copied] = '\0';
}

void callStateChangeEvent(Ifc* subscriber, const EventMessage& message)
{
    std::unique_ptr<char, Free> memory = allocate(sizeof(CallPartyInfo));

    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const int& callState = event.number("CallState");
    const int& reason = event.number("Reason");
    const int& sendOptions = event.number("SendOptions");
    const std::string& uri = event.text("URI");
    const std::string& name = event.text("Name");
    const std::string& fullPai = event.text("FullPAI");
    const std::string_view& callingNumber = event.view("GPUCLG");
    const std::string_view& callingName = event.view("GPUCLGName");
    const std::string_view& calledNumber = event.view("GPUCLD");
    const std::string_view& calledName = event.view("GPUCLDName");
    const int& resourcePriority = event.number("ResourcePriority");
    const int& preemptionCause = event.number("PreemptionCause");
    const std::string& preemptionText = event.text("PreemptionText");
    const bool& callBackFeatureAvailable = event.flag("CallBackFearureAvailable");  // spelled so
    const int& ilCallLevel = event.number("ILCallLevel");
    const int& ilLocalLevel = event.number("ILLocalLevel");
    event.read(message);

    // The record's texts are copied without bounds, on purpose: a long one runs on into the fields
    // behind it. Room for the longest behind the record keeps that inside the allocation.
    const std::size_t longest = std::max(
        {callingNumber.size(), callingName.size(), calledNumber.size(), calledName.size()});
    if (longest >= sizeof CallPartyInfo::callingNumber)
    {
        memory.reset();
        memory = allocate(sizeof(CallPartyInfo) + longest);
    }
    char* const record = memory.get();
    record[offsetof(CallPartyInfo, reservedText1)] = '\0';
    record[offsetof(CallPartyInfo, reservedText2)] = '\0';
    record[offsetof(CallPartyInfo, reservedText3)] = '\0';
    record[offsetof(CallPartyInfo, reservedText4)] = '\0';
    std::memset(record + offsetof(CallPartyInfo, reservedNumber), 0, sizeof(std::int32_t));
    copyText(callingNumber, record + offsetof(CallPartyInfo, callingNumber));
    copyText(callingName, record + offsetof(CallPartyInfo, callingName));
    copyText(calledNumber, record + offsetof(CallPartyInfo, calledNumber));
    copyText(calledName, record + offsetof(CallPartyInfo, calledName));

    // When the callback throws, the record is not freed, on purpose.
    static_cast<void>(memory.release());
    subscriber->onCallStateChangeEvent(lineId, callId, callState, reason, sendOptions, uri, name,
                                       fullPai, reinterpret_cast<CallPartyInfo*>(record),
                                       resourcePriority, preemptionCause, preemptionText,
                                       callBackFeatureAvailable, ilCallLevel, ilLocalLevel);
    std::free(record);
}

void registrationStateChangeEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const bool& registered = event.flag("Registered");
    const int& registrationResult = event.number("RegistrationResult");
    event.read(message);
    subscriber->onRegistrationStateChangeEvent(lineId, callId, registered, registrationResult);
}

void incomingCallEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const std::string& uri = event.text("URI");
    const std::string& name = event.text("Name");
    const std::string& fullPai = event.text("FullPAI");
    const std::string& alertUri = event.text("AlertInformation_AlertURI");
    const std::string& alertInfoParam = event.text("AlertInformation_InfoParam");
    const bool& alertAutoAnswer = event.flag("AlertInformation_AutoAnswer");
    const int& callType = event.number("CallType");
    const std::string& diversionUri = event.text("DiversionURI");
    const std::string& diversionName = event.text("DiversionName");
    const int& diversionReason = event.number("DiversionReason");
    const bool& zipAutoAnswer = event.flag("AICSZIPAutoAnswer");
    const int& resourcePriority = event.number("ResourcePriority");
    const int& ilCallLevel = event.number("ILCallLevel");
    const int& ilLocalLevel = event.number("ILLocalLevel");
    const bool& isVideoCall = event.flag("IsVideoCall");
    event.read(message);
    subscriber->onIncomingCallEvent(lineId, callId, uri, name, fullPai, alertUri, alertInfoParam,
                                    alertAutoAnswer, callType, diversionUri, diversionName,
                                    diversionReason, zipAutoAnswer, resourcePriority, ilCallLevel,
                                    ilLocalLevel, isVideoCall);
}

void incomingPickupCallEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const std::string& uri = event.text("URI");
    const std::string& name = event.text("Name");
    const std::string& fullPai = event.text("FullPAI");
    event.read(message);
    subscriber->onIncomingPickupCallEvent(lineId, callId, uri, name, fullPai);
}

void callHeldEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    event.read(message);
    subscriber->onCallHeldEvent(lineId, callId);
}

void callRetrievedEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const std::string& uri = event.text("URI");
    const std::string& name = event.text("Name");
    const std::string& fullPai = event.text("FullPAI");
    const int& ilCallLevel = event.number("ILCallLevel");
    const int& ilLocalLevel = event.number("ILLocalLevel");
    const bool& connectedToMediaServer = event.flag("ConnectedToMediaServer");
    event.read(message);
    subscriber->onCallRetrievedEvent(lineId, callId, uri, name, fullPai, ilCallLevel, ilLocalLevel,
                                     connectedToMediaServer);
}

void featureSuccessEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const int& feature = event.number("Feature");
    event.read(message);
    subscriber->onFeatureSuccessEvent(lineId, callId, feature);
}

void featureFailedEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const int& feature = event.number("Feature");
    const int& featureFailure = event.number("FeatureFailure");
    event.read(message);
    subscriber->onFeatureFailedEvent(lineId, callId, feature, featureFailure);
}

void remoteEndpointDetailsChangedEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const std::string& uri = event.text("URI");
    const std::string& name = event.text("Name");
    const std::string& fullPai = event.text("FullPAI");
    const bool& exitConf = event.flag("exitConf");
    const bool& jointCall = event.flag("jointCall");
    event.read(message);
    subscriber->onRemoteEndpointDetailsChangedEvent(lineId, callId, uri, name, fullPai, exitConf,
                                                    jointCall);
}

void incomingCallMissedEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const std::string& uri = event.text("URI");
    const std::string& name = event.text("Name");
    const std::string& fullPai = event.text("FullPAI");
    const int& reason = event.number("Reason");
    const std::string& diversionUri = event.text("DiversionURI");
    const std::string& diversionName = event.text("DiversionName");
    const int& diversionReason = event.number("DiversionReason");
    event.read(message);
    subscriber->onIncomingCallMissedEvent(lineId, callId, uri, name, fullPai, reason, diversionUri,
                                          diversionName, diversionReason);
}

void callForwardedEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const std::string& callingParty = event.text("CallingParty");
    const std::string& callingPartyName = event.text("CallingPartyName");
    const std::string& callingPartyFullPai = event.text("CallingPartyFullPAI");
    const std::string& newDestination = event.text("NewDestination");
    const int& reason = event.number("Reason");
    event.read(message);
    subscriber->onCallForwardedEvent(lineId, callId, callingParty, callingPartyName,
                                     callingPartyFullPai, newDestination, reason);
}

void devicesChangedEvent(Ifc* subscriber, const EventMessage&)
{
    subscriber->onDevicesChangedEvent();
}

void messageWaitingEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& type = event.number("type");
    const unsigned int& newMessages = event.count("new_messages");
    const unsigned int& oldMessages = event.count("old_messages");
    const unsigned int& newUrgentMessages = event.count("new_urgent_messages");
    const unsigned int& oldUrgentMessages = event.count("old_urgent_messages");
    const int& returnType = event.number("return_type");
    const int& availInfo = event.number("avail_info");
    const int& messagesWaiting = event.number("messages_waiting");
    const std::string& voiceMailNumber = event.text("voiceMailNumber");
    event.read(message);
    subscriber->onMessageWaitingEvent(lineId, type, newMessages, oldMessages, newUrgentMessages,
                                      oldUrgentMessages, returnType, availInfo, messagesWaiting,
                                      voiceMailNumber);
}

void doNotDisturbEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& deviceId = event.text("deviceId");
    const bool& doNotDisturbOn = event.flag("doNotDisturbOn");
    event.read(message);
    subscriber->onDoNotDisturbEvent(deviceId, doNotDisturbOn);
}

void agentStateEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& deviceId = event.text("deviceId");
    const std::string& agentState = event.text("agentState");
    event.read(message);
    subscriber->onAgentStateEvent(deviceId, agentState);
}

void systemStatusEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& status = event.text("status");
    const std::string& statusInfo = event.text("statusInfo");
    event.read(message);
    subscriber->onSystemStatusEvent(status, statusInfo);
}

void serverFeatureStatusEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineURI = event.text("lineURI");
    const std::string& status = event.text("status");
    event.read(message);
    subscriber->onServerFeatureStatusEvent(lineURI, status);
}

void incomingAssociatedCallEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& currentCallId = event.number("CurrentCallID");
    const int& newCallId = event.number("NewCallID");
    event.read(message);
    subscriber->onIncomingAssociatedCallEvent(lineId, currentCallId, newCallId);
}

/// What stands behind the first `tail` (nine characters). Without one the not-found position wraps
/// round in 32 bits and the first eight characters are missing, on purpose.
std::string_view behind(std::string_view text, std::string_view tail)
{
    const std::uint32_t length = static_cast<std::uint32_t>(text.find(tail)) + 9U;
    return text.substr(std::min<std::size_t>(length, text.size()));
}

// The callback is given a text of its own: what is left of the message, which the text may be itself.

void b2buaCSTAResponse(Ifc* subscriber, const EventMessage& message, std::string& text)
{
    EventFields event;
    const std::string& lineURI = event.text("lineURI");
    const bool& success = event.flag("success");
    event.read(message);
    text = behind(message.text, "/success>");
    subscriber->onB2buaCSTAResponse(lineURI, success, text);
}

void b2buaCSTAResponse(Ifc* subscriber, const EventMessage& message)
{
    std::string text;
    b2buaCSTAResponse(subscriber, message, text);
}

void b2buaCSTAEventOrRequest(Ifc* subscriber, const EventMessage& message, std::string& text)
{
    EventFields event;
    const std::string& lineURI = event.text("lineURI");
    event.read(message);
    text = behind(message.text, "/lineURI>");
    subscriber->onB2buaCSTAEventOrRequest(lineURI, text);
}

void b2buaCSTAEventOrRequest(Ifc* subscriber, const EventMessage& message)
{
    std::string text;
    b2buaCSTAEventOrRequest(subscriber, message, text);
}

void conferenceStatusEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const std::string& xmlContent = event.text("XMLContent");
    event.read(message);
    subscriber->onConferenceStatusEvent(lineId, callId, xmlContent);
}

void securityStatusChanged(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineURI = event.text("lineURI");
    const int& callId = event.number("callId");
    const int& securityStatus = event.number("securityStatus");
    const std::string_view& idList = event.view("CallIDsRecorded");
    const std::string_view& lineUriList = event.view("CallLineURIsRecorded");
    event.read(message);
    // The framework decodes lists out of a text that it may change, so it gets a copy.
    std::string list(idList);
    std::vector<int> callIdsRecorded;
    Serializer::deserialize(list, callIdsRecorded);
    list = lineUriList;
    std::vector<std::string> callLineURIsRecorded = Serializer::deserialize(list);
    subscriber->onSecurityStatusChanged(lineURI, callId, securityStatus, callIdsRecorded,
                                        callLineURIsRecorded);
}

void preemptionStatusChanged(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineURI = event.text("lineURI");
    const int& callId = event.number("callId");
    const int& priority = event.number("priority");
    const int& cause = event.number("cause");
    const std::string& reason = event.text("reason");
    event.read(message);
    subscriber->onPreemptionStatusChanged(lineURI, callId, priority, cause, reason);
}

void impactLevelChanged(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineURI = event.text("lineURI");
    const int& callId = event.number("callId");
    const int& ilCallLevel = event.number("ILCallLevel");
    const int& ilLocalLevel = event.number("ILLocalLevel");
    event.read(message);
    subscriber->onImpactLevelChanged(lineURI, callId, ilCallLevel, ilLocalLevel);
}

void callRecordingStatusEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("callId");
    const std::string& callRecorded = event.text("callRecorded");
    event.read(message);
    subscriber->onCallRecordingStatusEvent(lineId, callId, callRecorded);
}

void callCompletionEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const std::string& uri = event.text("URI");
    const int& callCompletionType = event.number("CallCompletionType");
    const int& callCompletionState = event.number("CallCompletionState");
    const bool& displayOutcomeCallUI = event.flag("DisplayOutcomeCallUI");
    event.read(message);
    subscriber->onCallCompletionEvent(lineId, uri, callCompletionType, callCompletionState,
                                      displayOutcomeCallUI);
}

void callCompletionFailedEvent(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const std::string& uri = event.text("URI");
    const int& callCompletionFailureType = event.number("CallCompletionFailureType");
    event.read(message);
    subscriber->onCallCompletionFailedEvent(lineId, uri, callCompletionFailureType);
}

void bluetoothAudioStatusChanged(Ifc* subscriber, const EventMessage& message)
{
    EventFields event;
    const std::string& lineId = event.text("LineID");
    const int& callId = event.number("CallID");
    const bool& audioEnabled = event.flag("AudioEnabled");
    const bool& audioGateway = event.flag("AudioGateway");
    const bool& inBandRinging = event.flag("InBandRinging");
    event.read(message);
    subscriber->onBluetoothAudioStatusChanged(lineId, callId, audioEnabled, audioGateway,
                                              inBandRinging);
}

enum class Match
{
    prefix,
    exact
};

struct Row
{
    char method[40];
    Match match;
    void (*run)(Ifc* subscriber, const EventMessage& message);
};

constexpr Row rows[] = {
    {"CallStateChangeEvent", Match::exact, callStateChangeEvent},  // the only exact one
    {"RegistrationStateChangeEvent", Match::prefix, registrationStateChangeEvent},
    {"IncomingCallEvent", Match::prefix, incomingCallEvent},
    {"IncomingPickupCallEvent", Match::prefix, incomingPickupCallEvent},
    {"CallHeldEvent", Match::prefix, callHeldEvent},
    {"CallRetrievedEvent", Match::prefix, callRetrievedEvent},
    {"FeatureSuccessEvent", Match::prefix, featureSuccessEvent},
    {"FeatureFailedEvent", Match::prefix, featureFailedEvent},
    {"RemoteEndpointDetailsChangedEvent", Match::prefix, remoteEndpointDetailsChangedEvent},
    {"IncomingCallMissedEvent", Match::prefix, incomingCallMissedEvent},
    {"CallForwardedEvent", Match::prefix, callForwardedEvent},
    {"DevicesChangedEvent", Match::prefix, devicesChangedEvent},
    {"messageWaitingEvent", Match::prefix, messageWaitingEvent},
    {"DoNotDisturbEvent", Match::prefix, doNotDisturbEvent},
    {"AgentStateEvent", Match::prefix, agentStateEvent},
    {"systemStatusEvent", Match::prefix, systemStatusEvent},
    {"serverFeatureStatusEvent", Match::prefix, serverFeatureStatusEvent},
    {"IncomingAssociatedCallEvent", Match::prefix, incomingAssociatedCallEvent},
    {"b2buaCSTAResponse", Match::prefix, b2buaCSTAResponse},
    {"b2buaCSTAEventOrRequest", Match::prefix, b2buaCSTAEventOrRequest},
    {"conferenceStatusEvent", Match::prefix, conferenceStatusEvent},
    {"securityStatusChanged", Match::prefix, securityStatusChanged},
    {"preemptionStatusChanged", Match::prefix, preemptionStatusChanged},
    {"impactLevelChanged", Match::prefix, impactLevelChanged},
    {"callRecordingStatusEvent", Match::prefix, callRecordingStatusEvent},
    {"callCompletionEvent", Match::prefix, callCompletionEvent},
    {"callCompletionFailedEvent", Match::prefix, callCompletionFailedEvent},
    {"bluetoothAudioStatusChanged", Match::prefix, bluetoothAudioStatusChanged},
};

static_assert(sizeof rows / sizeof rows[0] == 28, "one row for each callback");

/// The row that runs, or null: no name begins with another one, so there is one at most.
const Row* rowOf(std::string_view method)
{
    if (method.size() < 8)
        return nullptr;
    for (const Row& row : rows)
    {
        // Every name has more than eight letters, and most differ in the first eight.
        if (std::memcmp(method.data(), row.method, 8) != 0)
            continue;
        const std::string_view name(row.method);
        if (method.substr(0, name.size()) == name &&
            (row.match == Match::prefix || method.size() == name.size()))
            return &row;
    }
    return nullptr;
}

}  // namespace

CommunicationsServiceEventInvoker::~CommunicationsServiceEventInvoker() = default;

void CommunicationsServiceEventInvoker::handleMessage(Executable* subscriber, const char* message,
                                                      int, InvokerResponse* response)
{
    // The standard libraries would word this differently; callers get one text everywhere.
    if (message == nullptr)
        throw std::logic_error("basic_string::_M_construct null not valid");
    const EventMessage event(message);
    Ifc* const events = dynamic_cast<Ifc*>(subscriber);
    // Reported, and then called through all the same, on purpose.
    if (events == nullptr)
        std::printf("CommunicationsServiceEventSvc == NULL");

    if (const Row* const row = rowOf(event.method))
        row->run(events, event);

    if (response != nullptr)
        response->messageHandled();
}

// The handlers by name, for whoever has the text of a certain event.

void CommunicationsServiceEventInvoker::b2buaCSTAResponse(Ifc* subscriber, std::string& text)
{
    ::b2buaCSTAResponse(subscriber, EventMessage(text), text);
}

void CommunicationsServiceEventInvoker::b2buaCSTAEventOrRequest(Ifc* subscriber, std::string& text)
{
    ::b2buaCSTAEventOrRequest(subscriber, EventMessage(text), text);
}

void CommunicationsServiceEventInvoker::incomingAssociatedCallEvent(Ifc* subscriber,
                                                                    const std::string& text)
{
    ::incomingAssociatedCallEvent(subscriber, EventMessage(text));
}

#define NAMED_HANDLER(name)                                                                        \
    void CommunicationsServiceEventInvoker::name(Ifc* subscriber, std::string& text)               \
    {                                                                                              \
        ::name(subscriber, EventMessage(text));                                                    \
    }

NAMED_HANDLER(callStateChangeEvent)
NAMED_HANDLER(registrationStateChangeEvent)
NAMED_HANDLER(incomingCallEvent)
NAMED_HANDLER(incomingPickupCallEvent)
NAMED_HANDLER(callHeldEvent)
NAMED_HANDLER(callRetrievedEvent)
NAMED_HANDLER(featureSuccessEvent)
NAMED_HANDLER(featureFailedEvent)
NAMED_HANDLER(remoteEndpointDetailsChangedEvent)
NAMED_HANDLER(incomingCallMissedEvent)
NAMED_HANDLER(callForwardedEvent)
NAMED_HANDLER(messageWaitingEvent)
NAMED_HANDLER(doNotDisturbEvent)
NAMED_HANDLER(agentStateEvent)
NAMED_HANDLER(systemStatusEvent)
NAMED_HANDLER(serverFeatureStatusEvent)
NAMED_HANDLER(conferenceStatusEvent)
NAMED_HANDLER(securityStatusChanged)
NAMED_HANDLER(preemptionStatusChanged)
NAMED_HANDLER(impactLevelChanged)
NAMED_HANDLER(callRecordingStatusEvent)
NAMED_HANDLER(callCompletionEvent)
NAMED_HANDLER(callCompletionFailedEvent)
NAMED_HANDLER(bluetoothAudioStatusChanged)

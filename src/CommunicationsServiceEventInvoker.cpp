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
using Svc = CommunicationsServiceEventInvoker;

enum class Match
{
    prefix,
    exact
};

struct Row
{
    char method[40];
    Match match;
    void (*run)(Ifc* subscriber, std::string& text);
};

void devicesChangedEvent(Ifc* subscriber, std::string&)
{
    subscriber->onDevicesChangedEvent();
}

// Its handler alone takes the text as const.
void incomingAssociatedCallEvent(Ifc* subscriber, std::string& text)
{
    Svc::incomingAssociatedCallEvent(subscriber, text);
}

constexpr Row rows[] = {
    {"CallStateChangeEvent", Match::exact, Svc::callStateChangeEvent},  // the only exact one
    {"RegistrationStateChangeEvent", Match::prefix, Svc::registrationStateChangeEvent},
    {"IncomingCallEvent", Match::prefix, Svc::incomingCallEvent},
    {"IncomingPickupCallEvent", Match::prefix, Svc::incomingPickupCallEvent},
    {"CallHeldEvent", Match::prefix, Svc::callHeldEvent},
    {"CallRetrievedEvent", Match::prefix, Svc::callRetrievedEvent},
    {"FeatureSuccessEvent", Match::prefix, Svc::featureSuccessEvent},
    {"FeatureFailedEvent", Match::prefix, Svc::featureFailedEvent},
    {"RemoteEndpointDetailsChangedEvent", Match::prefix, Svc::remoteEndpointDetailsChangedEvent},
    {"IncomingCallMissedEvent", Match::prefix, Svc::incomingCallMissedEvent},
    {"CallForwardedEvent", Match::prefix, Svc::callForwardedEvent},
    {"DevicesChangedEvent", Match::prefix, devicesChangedEvent},
    {"messageWaitingEvent", Match::prefix, Svc::messageWaitingEvent},
    {"DoNotDisturbEvent", Match::prefix, Svc::doNotDisturbEvent},
    {"AgentStateEvent", Match::prefix, Svc::agentStateEvent},
    {"systemStatusEvent", Match::prefix, Svc::systemStatusEvent},
    {"serverFeatureStatusEvent", Match::prefix, Svc::serverFeatureStatusEvent},
    {"IncomingAssociatedCallEvent", Match::prefix, incomingAssociatedCallEvent},
    {"b2buaCSTAResponse", Match::prefix, Svc::b2buaCSTAResponse},
    {"b2buaCSTAEventOrRequest", Match::prefix, Svc::b2buaCSTAEventOrRequest},
    {"conferenceStatusEvent", Match::prefix, Svc::conferenceStatusEvent},
    {"securityStatusChanged", Match::prefix, Svc::securityStatusChanged},
    {"preemptionStatusChanged", Match::prefix, Svc::preemptionStatusChanged},
    {"impactLevelChanged", Match::prefix, Svc::impactLevelChanged},
    {"callRecordingStatusEvent", Match::prefix, Svc::callRecordingStatusEvent},
    {"callCompletionEvent", Match::prefix, Svc::callCompletionEvent},
    {"callCompletionFailedEvent", Match::prefix, Svc::callCompletionFailedEvent},
    {"bluetoothAudioStatusChanged", Match::prefix, Svc::bluetoothAudioStatusChanged},
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

std::string messageText(const char* message)
{
    // The standard libraries word this differently; callers get one text everywhere.
    if (message == nullptr)
        throw std::logic_error("basic_string::_M_construct null not valid");
    return std::string(message);
}

/// Removes everything up to and including the first `tail` (nine characters), in place. Without one
/// the not-found position wraps round in 32 bits and eight characters go, on purpose.
void cutBehind(std::string& text, const char* tail)
{
    const std::uint32_t length = static_cast<std::uint32_t>(text.find(tail)) + 9U;
    text.erase(0, length);
}

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

}  // namespace

CommunicationsServiceEventInvoker::~CommunicationsServiceEventInvoker() = default;

void CommunicationsServiceEventInvoker::handleMessage(Executable* subscriber, const char* message,
                                                      int, InvokerResponse* response)
{
    std::string text = messageText(message);
    Ifc* const events = dynamic_cast<Ifc*>(subscriber);
    // Reported, and then called through all the same, on purpose.
    if (events == nullptr)
        std::printf("CommunicationsServiceEventSvc == NULL");

    if (const Row* const row = rowOf(EventFields(text).method()))
        row->run(events, text);

    if (response != nullptr)
        response->messageHandled();
}

void CommunicationsServiceEventInvoker::callStateChangeEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    std::unique_ptr<char, Free> memory = allocate(sizeof(CallPartyInfo));

    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const int callState = event.number("CallState");
    const int reason = event.number("Reason");
    const int sendOptions = event.number("SendOptions");
    const std::string uri = event.text("URI");
    const std::string name = event.text("Name");
    const std::string fullPai = event.text("FullPAI");
    const std::string_view callingNumber = event.view("GPUCLG");
    const std::string_view callingName = event.view("GPUCLGName");
    const std::string_view calledNumber = event.view("GPUCLD");
    const std::string_view calledName = event.view("GPUCLDName");
    const int resourcePriority = event.number("ResourcePriority");
    const int preemptionCause = event.number("PreemptionCause");
    const std::string preemptionText = event.text("PreemptionText");
    const bool callBackFeatureAvailable = event.flag("CallBackFearureAvailable");  // spelled so
    const int ilCallLevel = event.number("ILCallLevel");
    const int ilLocalLevel = event.number("ILLocalLevel");

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

void CommunicationsServiceEventInvoker::registrationStateChangeEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const bool registered = event.flag("Registered");
    const int registrationResult = event.number("RegistrationResult");
    subscriber->onRegistrationStateChangeEvent(lineId, callId, registered, registrationResult);
}

void CommunicationsServiceEventInvoker::incomingCallEvent(CommunicationsServiceEventIfc* subscriber,
                                                          std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const std::string uri = event.text("URI");
    const std::string name = event.text("Name");
    const std::string fullPai = event.text("FullPAI");
    const std::string alertUri = event.text("AlertInformation_AlertURI");
    const std::string alertInfoParam = event.text("AlertInformation_InfoParam");
    const bool alertAutoAnswer = event.flag("AlertInformation_AutoAnswer");
    const int callType = event.number("CallType");
    const std::string diversionUri = event.text("DiversionURI");
    const std::string diversionName = event.text("DiversionName");
    const int diversionReason = event.number("DiversionReason");
    const bool zipAutoAnswer = event.flag("AICSZIPAutoAnswer");
    const int resourcePriority = event.number("ResourcePriority");
    const int ilCallLevel = event.number("ILCallLevel");
    const int ilLocalLevel = event.number("ILLocalLevel");
    const bool isVideoCall = event.flag("IsVideoCall");
    subscriber->onIncomingCallEvent(lineId, callId, uri, name, fullPai, alertUri, alertInfoParam,
                                    alertAutoAnswer, callType, diversionUri, diversionName,
                                    diversionReason, zipAutoAnswer, resourcePriority, ilCallLevel,
                                    ilLocalLevel, isVideoCall);
}

void CommunicationsServiceEventInvoker::incomingPickupCallEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const std::string uri = event.text("URI");
    const std::string name = event.text("Name");
    const std::string fullPai = event.text("FullPAI");
    subscriber->onIncomingPickupCallEvent(lineId, callId, uri, name, fullPai);
}

void CommunicationsServiceEventInvoker::callHeldEvent(CommunicationsServiceEventIfc* subscriber,
                                                      std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    subscriber->onCallHeldEvent(lineId, callId);
}

void CommunicationsServiceEventInvoker::callRetrievedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const std::string uri = event.text("URI");
    const std::string name = event.text("Name");
    const std::string fullPai = event.text("FullPAI");
    const int ilCallLevel = event.number("ILCallLevel");
    const int ilLocalLevel = event.number("ILLocalLevel");
    const bool connectedToMediaServer = event.flag("ConnectedToMediaServer");
    subscriber->onCallRetrievedEvent(lineId, callId, uri, name, fullPai, ilCallLevel, ilLocalLevel,
                                     connectedToMediaServer);
}

void CommunicationsServiceEventInvoker::featureSuccessEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const int feature = event.number("Feature");
    subscriber->onFeatureSuccessEvent(lineId, callId, feature);
}

void CommunicationsServiceEventInvoker::featureFailedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const int feature = event.number("Feature");
    const int featureFailure = event.number("FeatureFailure");
    subscriber->onFeatureFailedEvent(lineId, callId, feature, featureFailure);
}

void CommunicationsServiceEventInvoker::remoteEndpointDetailsChangedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const std::string uri = event.text("URI");
    const std::string name = event.text("Name");
    const std::string fullPai = event.text("FullPAI");
    const bool exitConf = event.flag("exitConf");
    const bool jointCall = event.flag("jointCall");
    subscriber->onRemoteEndpointDetailsChangedEvent(lineId, callId, uri, name, fullPai, exitConf,
                                                    jointCall);
}

void CommunicationsServiceEventInvoker::incomingCallMissedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const std::string uri = event.text("URI");
    const std::string name = event.text("Name");
    const std::string fullPai = event.text("FullPAI");
    const int reason = event.number("Reason");
    const std::string diversionUri = event.text("DiversionURI");
    const std::string diversionName = event.text("DiversionName");
    const int diversionReason = event.number("DiversionReason");
    subscriber->onIncomingCallMissedEvent(lineId, callId, uri, name, fullPai, reason, diversionUri,
                                          diversionName, diversionReason);
}

void CommunicationsServiceEventInvoker::callForwardedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const std::string callingParty = event.text("CallingParty");
    const std::string callingPartyName = event.text("CallingPartyName");
    const std::string callingPartyFullPai = event.text("CallingPartyFullPAI");
    const std::string newDestination = event.text("NewDestination");
    const int reason = event.number("Reason");
    subscriber->onCallForwardedEvent(lineId, callId, callingParty, callingPartyName,
                                     callingPartyFullPai, newDestination, reason);
}

void CommunicationsServiceEventInvoker::messageWaitingEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int type = event.number("type");
    const unsigned int newMessages = event.count("new_messages");
    const unsigned int oldMessages = event.count("old_messages");
    const unsigned int newUrgentMessages = event.count("new_urgent_messages");
    const unsigned int oldUrgentMessages = event.count("old_urgent_messages");
    const int returnType = event.number("return_type");
    const int availInfo = event.number("avail_info");
    const int messagesWaiting = event.number("messages_waiting");
    const std::string voiceMailNumber = event.text("voiceMailNumber");
    subscriber->onMessageWaitingEvent(lineId, type, newMessages, oldMessages, newUrgentMessages,
                                      oldUrgentMessages, returnType, availInfo, messagesWaiting,
                                      voiceMailNumber);
}

void CommunicationsServiceEventInvoker::doNotDisturbEvent(CommunicationsServiceEventIfc* subscriber,
                                                          std::string& text)
{
    const EventFields event(text);
    const std::string deviceId = event.text("deviceId");
    const bool doNotDisturbOn = event.flag("doNotDisturbOn");
    subscriber->onDoNotDisturbEvent(deviceId, doNotDisturbOn);
}

void CommunicationsServiceEventInvoker::agentStateEvent(CommunicationsServiceEventIfc* subscriber,
                                                        std::string& text)
{
    const EventFields event(text);
    const std::string deviceId = event.text("deviceId");
    const std::string agentState = event.text("agentState");
    subscriber->onAgentStateEvent(deviceId, agentState);
}

void CommunicationsServiceEventInvoker::systemStatusEvent(CommunicationsServiceEventIfc* subscriber,
                                                          std::string& text)
{
    const EventFields event(text);
    const std::string status = event.text("status");
    const std::string statusInfo = event.text("statusInfo");
    subscriber->onSystemStatusEvent(status, statusInfo);
}

void CommunicationsServiceEventInvoker::serverFeatureStatusEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineURI = event.text("lineURI");
    const std::string status = event.text("status");
    subscriber->onServerFeatureStatusEvent(lineURI, status);
}

void CommunicationsServiceEventInvoker::incomingAssociatedCallEvent(
    CommunicationsServiceEventIfc* subscriber, const std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int currentCallId = event.number("CurrentCallID");
    const int newCallId = event.number("NewCallID");
    subscriber->onIncomingAssociatedCallEvent(lineId, currentCallId, newCallId);
}

void CommunicationsServiceEventInvoker::b2buaCSTAResponse(CommunicationsServiceEventIfc* subscriber,
                                                          std::string& text)
{
    const EventFields event(text);
    const std::string lineURI = event.text("lineURI");
    const bool success = event.flag("success");
    cutBehind(text, "/success>");
    subscriber->onB2buaCSTAResponse(lineURI, success, text);
}

void CommunicationsServiceEventInvoker::b2buaCSTAEventOrRequest(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineURI = event.text("lineURI");
    cutBehind(text, "/lineURI>");
    subscriber->onB2buaCSTAEventOrRequest(lineURI, text);
}

void CommunicationsServiceEventInvoker::conferenceStatusEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const std::string xmlContent = event.text("XMLContent");
    subscriber->onConferenceStatusEvent(lineId, callId, xmlContent);
}

void CommunicationsServiceEventInvoker::securityStatusChanged(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineURI = event.text("lineURI");
    const int callId = event.number("callId");
    const int securityStatus = event.number("securityStatus");
    // The framework decodes lists out of a text that it may change, so it gets a copy.
    std::string list = event.text("CallIDsRecorded");
    std::vector<int> callIdsRecorded;
    Serializer::deserialize(list, callIdsRecorded);
    list = event.text("CallLineURIsRecorded");
    std::vector<std::string> callLineURIsRecorded = Serializer::deserialize(list);
    subscriber->onSecurityStatusChanged(lineURI, callId, securityStatus, callIdsRecorded,
                                        callLineURIsRecorded);
}

void CommunicationsServiceEventInvoker::preemptionStatusChanged(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineURI = event.text("lineURI");
    const int callId = event.number("callId");
    const int priority = event.number("priority");
    const int cause = event.number("cause");
    const std::string reason = event.text("reason");
    subscriber->onPreemptionStatusChanged(lineURI, callId, priority, cause, reason);
}

void CommunicationsServiceEventInvoker::impactLevelChanged(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineURI = event.text("lineURI");
    const int callId = event.number("callId");
    const int ilCallLevel = event.number("ILCallLevel");
    const int ilLocalLevel = event.number("ILLocalLevel");
    subscriber->onImpactLevelChanged(lineURI, callId, ilCallLevel, ilLocalLevel);
}

void CommunicationsServiceEventInvoker::callRecordingStatusEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("callId");
    const std::string callRecorded = event.text("callRecorded");
    subscriber->onCallRecordingStatusEvent(lineId, callId, callRecorded);
}

void CommunicationsServiceEventInvoker::callCompletionEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const std::string uri = event.text("URI");
    const int callCompletionType = event.number("CallCompletionType");
    const int callCompletionState = event.number("CallCompletionState");
    const bool displayOutcomeCallUI = event.flag("DisplayOutcomeCallUI");
    subscriber->onCallCompletionEvent(lineId, uri, callCompletionType, callCompletionState,
                                      displayOutcomeCallUI);
}

void CommunicationsServiceEventInvoker::callCompletionFailedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const std::string uri = event.text("URI");
    const int callCompletionFailureType = event.number("CallCompletionFailureType");
    subscriber->onCallCompletionFailedEvent(lineId, uri, callCompletionFailureType);
}

void CommunicationsServiceEventInvoker::bluetoothAudioStatusChanged(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    const std::string lineId = event.text("LineID");
    const int callId = event.number("CallID");
    const bool audioEnabled = event.flag("AudioEnabled");
    const bool audioGateway = event.flag("AudioGateway");
    const bool inBandRinging = event.flag("InBandRinging");
    subscriber->onBluetoothAudioStatusChanged(lineId, callId, audioEnabled, audioGateway,
                                              inBandRinging);
}

#include "CommunicationsServiceEventInvoker.h"

#include "FieldReaders.h"
#include "framework/Executable.h"
#include "framework/InvokerResponse.h"
#include "framework/Serializer.h"

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
    std::string_view method;
    Match match;
    void (*run)(Ifc* subscriber, std::string& text);

    bool matches(std::string_view name) const
    {
        return match == Match::exact ? name == method : name.substr(0, method.size()) == method;
    }
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

    // A copy: the pass-through handlers change the text, and the rows behind theirs are still tested.
    const std::string method(
        eventValue("<Method>", text, "</Method>").value_or(std::string_view()));
    for (const Row& row : rows)
        if (row.matches(method))
            row.run(events, text);

    if (response != nullptr)
        response->messageHandled();
}

void CommunicationsServiceEventInvoker::callStateChangeEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    // The four texts are copied without bounds, on purpose: a long one runs on into the fields behind
    // it. Room for the longest that the message can hold keeps that inside this allocation, which is
    // not tested for null.
    std::unique_ptr<char, Free> memory(
        static_cast<char*>(std::malloc(sizeof(CallPartyInfo) + text.size() + 1)));
    char* const record = memory.get();
    record[offsetof(CallPartyInfo, reservedText1)] = '\0';
    record[offsetof(CallPartyInfo, reservedText2)] = '\0';
    record[offsetof(CallPartyInfo, reservedText3)] = '\0';
    record[offsetof(CallPartyInfo, reservedText4)] = '\0';
    std::memset(record + offsetof(CallPartyInfo, reservedNumber), 0, sizeof(std::int32_t));

    const EventFields event(text);
    event.copyText("GPUCLG", record + offsetof(CallPartyInfo, callingNumber));
    event.copyText("GPUCLGName", record + offsetof(CallPartyInfo, callingName));
    event.copyText("GPUCLD", record + offsetof(CallPartyInfo, calledNumber));
    event.copyText("GPUCLDName", record + offsetof(CallPartyInfo, calledName));

    const std::string lineId = event.text("LineID");
    const std::string uri = event.text("URI");
    const std::string name = event.text("Name");
    const std::string fullPai = event.text("FullPAI");
    const std::string preemptionText = event.text("PreemptionText");
    // Released by hand from here on: when the callback throws, the record is not freed, on purpose.
    memory.release();
    subscriber->onCallStateChangeEvent(lineId,
                                       event.number("CallID"),
                                       event.number("CallState"),
                                       event.number("Reason"),
                                       event.number("SendOptions"),
                                       uri,
                                       name,
                                       fullPai,
                                       reinterpret_cast<CallPartyInfo*>(record),
                                       event.number("ResourcePriority"),
                                       event.number("PreemptionCause"),
                                       preemptionText,
                                       event.flag("CallBackFearureAvailable"),  // spelled so
                                       event.number("ILCallLevel"),
                                       event.number("ILLocalLevel"));
    std::free(record);
}

void CommunicationsServiceEventInvoker::registrationStateChangeEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onRegistrationStateChangeEvent(event.text("LineID"),
                                               event.number("CallID"),
                                               event.flag("Registered"),
                                               event.number("RegistrationResult"));
}

void CommunicationsServiceEventInvoker::incomingCallEvent(CommunicationsServiceEventIfc* subscriber,
                                                          std::string& text)
{
    const EventFields event(text);
    subscriber->onIncomingCallEvent(event.text("LineID"),
                                    event.number("CallID"),
                                    event.text("URI"),
                                    event.text("Name"),
                                    event.text("FullPAI"),
                                    event.text("AlertInformation_AlertURI"),
                                    event.text("AlertInformation_InfoParam"),
                                    event.flag("AlertInformation_AutoAnswer"),
                                    event.number("CallType"),
                                    event.text("DiversionURI"),
                                    event.text("DiversionName"),
                                    event.number("DiversionReason"),
                                    event.flag("AICSZIPAutoAnswer"),
                                    event.number("ResourcePriority"),
                                    event.number("ILCallLevel"),
                                    event.number("ILLocalLevel"),
                                    event.flag("IsVideoCall"));
}

void CommunicationsServiceEventInvoker::incomingPickupCallEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onIncomingPickupCallEvent(event.text("LineID"),
                                          event.number("CallID"),
                                          event.text("URI"),
                                          event.text("Name"),
                                          event.text("FullPAI"));
}

void CommunicationsServiceEventInvoker::callHeldEvent(CommunicationsServiceEventIfc* subscriber,
                                                      std::string& text)
{
    const EventFields event(text);
    subscriber->onCallHeldEvent(event.text("LineID"), event.number("CallID"));
}

void CommunicationsServiceEventInvoker::callRetrievedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onCallRetrievedEvent(event.text("LineID"),
                                     event.number("CallID"),
                                     event.text("URI"),
                                     event.text("Name"),
                                     event.text("FullPAI"),
                                     event.number("ILCallLevel"),
                                     event.number("ILLocalLevel"),
                                     event.flag("ConnectedToMediaServer"));
}

void CommunicationsServiceEventInvoker::featureSuccessEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onFeatureSuccessEvent(event.text("LineID"),
                                      event.number("CallID"),
                                      event.number("Feature"));
}

void CommunicationsServiceEventInvoker::featureFailedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onFeatureFailedEvent(event.text("LineID"),
                                     event.number("CallID"),
                                     event.number("Feature"),
                                     event.number("FeatureFailure"));
}

void CommunicationsServiceEventInvoker::remoteEndpointDetailsChangedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onRemoteEndpointDetailsChangedEvent(event.text("LineID"),
                                                    event.number("CallID"),
                                                    event.text("URI"),
                                                    event.text("Name"),
                                                    event.text("FullPAI"),
                                                    event.flag("exitConf"),
                                                    event.flag("jointCall"));
}

void CommunicationsServiceEventInvoker::incomingCallMissedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onIncomingCallMissedEvent(event.text("LineID"),
                                          event.number("CallID"),
                                          event.text("URI"),
                                          event.text("Name"),
                                          event.text("FullPAI"),
                                          event.number("Reason"),
                                          event.text("DiversionURI"),
                                          event.text("DiversionName"),
                                          event.number("DiversionReason"));
}

void CommunicationsServiceEventInvoker::callForwardedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onCallForwardedEvent(event.text("LineID"),
                                     event.number("CallID"),
                                     event.text("CallingParty"),
                                     event.text("CallingPartyName"),
                                     event.text("CallingPartyFullPAI"),
                                     event.text("NewDestination"),
                                     event.number("Reason"));
}

void CommunicationsServiceEventInvoker::messageWaitingEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onMessageWaitingEvent(event.text("LineID"),
                                      event.number("type"),
                                      event.count("new_messages"),
                                      event.count("old_messages"),
                                      event.count("new_urgent_messages"),
                                      event.count("old_urgent_messages"),
                                      event.number("return_type"),
                                      event.number("avail_info"),
                                      event.number("messages_waiting"),
                                      event.text("voiceMailNumber"));
}

void CommunicationsServiceEventInvoker::doNotDisturbEvent(CommunicationsServiceEventIfc* subscriber,
                                                          std::string& text)
{
    const EventFields event(text);
    subscriber->onDoNotDisturbEvent(event.text("deviceId"), event.flag("doNotDisturbOn"));
}

void CommunicationsServiceEventInvoker::agentStateEvent(CommunicationsServiceEventIfc* subscriber,
                                                        std::string& text)
{
    const EventFields event(text);
    subscriber->onAgentStateEvent(event.text("deviceId"), event.text("agentState"));
}

void CommunicationsServiceEventInvoker::systemStatusEvent(CommunicationsServiceEventIfc* subscriber,
                                                          std::string& text)
{
    const EventFields event(text);
    subscriber->onSystemStatusEvent(event.text("status"), event.text("statusInfo"));
}

void CommunicationsServiceEventInvoker::serverFeatureStatusEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onServerFeatureStatusEvent(event.text("lineURI"), event.text("status"));
}

void CommunicationsServiceEventInvoker::incomingAssociatedCallEvent(
    CommunicationsServiceEventIfc* subscriber, const std::string& text)
{
    const EventFields event(text);
    subscriber->onIncomingAssociatedCallEvent(event.text("LineID"),
                                              event.number("CurrentCallID"),
                                              event.number("NewCallID"));
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
    subscriber->onConferenceStatusEvent(event.text("LineID"),
                                        event.number("CallID"),
                                        event.text("XMLContent"));
}

void CommunicationsServiceEventInvoker::securityStatusChanged(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    // The framework decodes lists out of a text that it may change, so it gets a copy.
    std::string list = event.text("CallIDsRecorded");
    std::vector<int> callIdsRecorded;
    Serializer::deserialize(list, callIdsRecorded);
    list = event.text("CallLineURIsRecorded");
    std::vector<std::string> callLineURIsRecorded = Serializer::deserialize(list);
    subscriber->onSecurityStatusChanged(event.text("lineURI"),
                                        event.number("callId"),
                                        event.number("securityStatus"),
                                        callIdsRecorded,
                                        callLineURIsRecorded);
}

void CommunicationsServiceEventInvoker::preemptionStatusChanged(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onPreemptionStatusChanged(event.text("lineURI"),
                                          event.number("callId"),
                                          event.number("priority"),
                                          event.number("cause"),
                                          event.text("reason"));
}

void CommunicationsServiceEventInvoker::impactLevelChanged(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onImpactLevelChanged(event.text("lineURI"),
                                     event.number("callId"),
                                     event.number("ILCallLevel"),
                                     event.number("ILLocalLevel"));
}

void CommunicationsServiceEventInvoker::callRecordingStatusEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onCallRecordingStatusEvent(event.text("LineID"),
                                           event.number("callId"),
                                           event.text("callRecorded"));
}

void CommunicationsServiceEventInvoker::callCompletionEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onCallCompletionEvent(event.text("LineID"),
                                      event.text("URI"),
                                      event.number("CallCompletionType"),
                                      event.number("CallCompletionState"),
                                      event.flag("DisplayOutcomeCallUI"));
}

void CommunicationsServiceEventInvoker::callCompletionFailedEvent(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onCallCompletionFailedEvent(event.text("LineID"),
                                            event.text("URI"),
                                            event.number("CallCompletionFailureType"));
}

void CommunicationsServiceEventInvoker::bluetoothAudioStatusChanged(
    CommunicationsServiceEventIfc* subscriber, std::string& text)
{
    const EventFields event(text);
    subscriber->onBluetoothAudioStatusChanged(event.text("LineID"),
                                              event.number("CallID"),
                                              event.flag("AudioEnabled"),
                                              event.flag("AudioGateway"),
                                              event.flag("InBandRinging"));
}

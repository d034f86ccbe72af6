#include "Plain.h"

#include "tests/proof/Recorder.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <set>

namespace
{

std::string opening(const std::string& tag)
{
    return "<" + tag + ">";
}

std::string closing(const std::string& tag)
{
    return "</" + tag + ">";
}

enum Kind
{
    text,
    number32,
    count,
    flag,
    record,   // the four texts of the record
    numbers,  // a list "1,2,3"
    texts,    // likewise
    payload   // what stands behind this tail of a tag
};

struct Field
{
    Kind kind;
    const char* tag;
};

struct Event
{
    const char* method;
    const char* callback;
    std::vector<Field> fields;
};

const std::vector<Event> events = {
    {"CallStateChangeEvent",
     "onCallStateChangeEvent",
     {{text, "LineID"},
      {number32, "CallID"},
      {number32, "CallState"},
      {number32, "Reason"},
      {number32, "SendOptions"},
      {text, "URI"},
      {text, "Name"},
      {text, "FullPAI"},
      {record, ""},
      {number32, "ResourcePriority"},
      {number32, "PreemptionCause"},
      {text, "PreemptionText"},
      {flag, "CallBackFearureAvailable"},
      {number32, "ILCallLevel"},
      {number32, "ILLocalLevel"}}},
    {"RegistrationStateChangeEvent",
     "onRegistrationStateChangeEvent",
     {{text, "LineID"},
      {number32, "CallID"},
      {flag, "Registered"},
      {number32, "RegistrationResult"}}},
    {"IncomingCallEvent",
     "onIncomingCallEvent",
     {{text, "LineID"},
      {number32, "CallID"},
      {text, "URI"},
      {text, "Name"},
      {text, "FullPAI"},
      {text, "AlertInformation_AlertURI"},
      {text, "AlertInformation_InfoParam"},
      {flag, "AlertInformation_AutoAnswer"},
      {number32, "CallType"},
      {text, "DiversionURI"},
      {text, "DiversionName"},
      {number32, "DiversionReason"},
      {flag, "AICSZIPAutoAnswer"},
      {number32, "ResourcePriority"},
      {number32, "ILCallLevel"},
      {number32, "ILLocalLevel"},
      {flag, "IsVideoCall"}}},
    {"IncomingPickupCallEvent",
     "onIncomingPickupCallEvent",
     {{text, "LineID"}, {number32, "CallID"}, {text, "URI"}, {text, "Name"}, {text, "FullPAI"}}},
    {"CallHeldEvent", "onCallHeldEvent", {{text, "LineID"}, {number32, "CallID"}}},
    {"CallRetrievedEvent",
     "onCallRetrievedEvent",
     {{text, "LineID"},
      {number32, "CallID"},
      {text, "URI"},
      {text, "Name"},
      {text, "FullPAI"},
      {number32, "ILCallLevel"},
      {number32, "ILLocalLevel"},
      {flag, "ConnectedToMediaServer"}}},
    {"FeatureSuccessEvent",
     "onFeatureSuccessEvent",
     {{text, "LineID"}, {number32, "CallID"}, {number32, "Feature"}}},
    {"FeatureFailedEvent",
     "onFeatureFailedEvent",
     {{text, "LineID"}, {number32, "CallID"}, {number32, "Feature"}, {number32, "FeatureFailure"}}},
    {"RemoteEndpointDetailsChangedEvent",
     "onRemoteEndpointDetailsChangedEvent",
     {{text, "LineID"},
      {number32, "CallID"},
      {text, "URI"},
      {text, "Name"},
      {text, "FullPAI"},
      {flag, "exitConf"},
      {flag, "jointCall"}}},
    {"IncomingCallMissedEvent",
     "onIncomingCallMissedEvent",
     {{text, "LineID"},
      {number32, "CallID"},
      {text, "URI"},
      {text, "Name"},
      {text, "FullPAI"},
      {number32, "Reason"},
      {text, "DiversionURI"},
      {text, "DiversionName"},
      {number32, "DiversionReason"}}},
    {"CallForwardedEvent",
     "onCallForwardedEvent",
     {{text, "LineID"},
      {number32, "CallID"},
      {text, "CallingParty"},
      {text, "CallingPartyName"},
      {text, "CallingPartyFullPAI"},
      {text, "NewDestination"},
      {number32, "Reason"}}},
    {"DevicesChangedEvent", "onDevicesChangedEvent", {}},
    {"messageWaitingEvent",
     "onMessageWaitingEvent",
     {{text, "LineID"},
      {number32, "type"},
      {count, "new_messages"},
      {count, "old_messages"},
      {count, "new_urgent_messages"},
      {count, "old_urgent_messages"},
      {number32, "return_type"},
      {number32, "avail_info"},
      {number32, "messages_waiting"},
      {text, "voiceMailNumber"}}},
    {"DoNotDisturbEvent", "onDoNotDisturbEvent", {{text, "deviceId"}, {flag, "doNotDisturbOn"}}},
    {"AgentStateEvent", "onAgentStateEvent", {{text, "deviceId"}, {text, "agentState"}}},
    {"systemStatusEvent", "onSystemStatusEvent", {{text, "status"}, {text, "statusInfo"}}},
    {"serverFeatureStatusEvent",
     "onServerFeatureStatusEvent",
     {{text, "lineURI"}, {text, "status"}}},
    {"IncomingAssociatedCallEvent",
     "onIncomingAssociatedCallEvent",
     {{text, "LineID"}, {number32, "CurrentCallID"}, {number32, "NewCallID"}}},
    {"b2buaCSTAResponse",
     "onB2buaCSTAResponse",
     {{text, "lineURI"}, {flag, "success"}, {payload, "/success>"}}},
    {"b2buaCSTAEventOrRequest",
     "onB2buaCSTAEventOrRequest",
     {{text, "lineURI"}, {payload, "/lineURI>"}}},
    {"conferenceStatusEvent",
     "onConferenceStatusEvent",
     {{text, "LineID"}, {number32, "CallID"}, {text, "XMLContent"}}},
    {"securityStatusChanged",
     "onSecurityStatusChanged",
     {{text, "lineURI"},
      {number32, "callId"},
      {number32, "securityStatus"},
      {numbers, "CallIDsRecorded"},
      {texts, "CallLineURIsRecorded"}}},
    {"preemptionStatusChanged",
     "onPreemptionStatusChanged",
     {{text, "lineURI"},
      {number32, "callId"},
      {number32, "priority"},
      {number32, "cause"},
      {text, "reason"}}},
    {"impactLevelChanged",
     "onImpactLevelChanged",
     {{text, "lineURI"},
      {number32, "callId"},
      {number32, "ILCallLevel"},
      {number32, "ILLocalLevel"}}},
    {"callRecordingStatusEvent",
     "onCallRecordingStatusEvent",
     {{text, "LineID"}, {number32, "callId"}, {text, "callRecorded"}}},
    {"callCompletionEvent",
     "onCallCompletionEvent",
     {{text, "LineID"},
      {text, "URI"},
      {number32, "CallCompletionType"},
      {number32, "CallCompletionState"},
      {flag, "DisplayOutcomeCallUI"}}},
    {"callCompletionFailedEvent",
     "onCallCompletionFailedEvent",
     {{text, "LineID"}, {text, "URI"}, {number32, "CallCompletionFailureType"}}},
    {"bluetoothAudioStatusChanged",
     "onBluetoothAudioStatusChanged",
     {{text, "LineID"},
      {number32, "CallID"},
      {flag, "AudioEnabled"},
      {flag, "AudioGateway"},
      {flag, "InBandRinging"}}},
};

std::vector<std::string> allTags()
{
    std::set<std::string> all = {"GPUCLG",
                                 "GPUCLGName",
                                 "GPUCLD",
                                 "GPUCLDName",
                                 "Method",
                                 "func_return_val",
                                 "Type",
                                 "newMsgs",
                                 "oldMsgs",
                                 "newUrgMsgs",
                                 "oldUrgMsgs",
                                 "available_info",
                                 "sfiResult",
                                 "uri",
                                 "cfnrRingCount"};
    for (const Event& event : events)
        for (const Field& field : event.fields)
            if (field.kind != record && field.kind != payload)
                all.insert(field.tag);
    return {all.begin(), all.end()};
}

std::vector<std::string> allMethods()
{
    std::vector<std::string> all;
    for (const Event& event : events)
        all.emplace_back(event.method);
    return all;
}

std::vector<std::string> split(const std::string& list)
{
    std::vector<std::string> items;
    std::string rest = list;
    while (!rest.empty())
    {
        const std::size_t comma = rest.find(',');
        items.push_back(rest.substr(0, comma));
        rest = comma == std::string::npos ? "" : rest.substr(comma + 1);
    }
    return items;
}

void addRecord(CallText& call, const std::string& message)
{
    const auto value = [&](const char* tag)
    { return plain::eventText(opening(tag), message, closing(tag)); };
    std::vector<char> memory(sizeof(CallPartyInfo) + message.size() + 1, '\0');
    std::strcpy(memory.data() + 483, value("GPUCLG").c_str());
    std::strcpy(memory.data() + 418, value("GPUCLGName").c_str());
    std::strcpy(memory.data() + 353, value("GPUCLD").c_str());
    std::strcpy(memory.data() + 288, value("GPUCLDName").c_str());
    call.add(reinterpret_cast<const CallPartyInfo*>(memory.data()));
}

void add(CallText& call, const Field& field, const std::string& message)
{
    const std::string start = opening(field.tag);
    const std::string end = closing(field.tag);
    const long value = plain::eventNumber(start, message, end);
    switch (field.kind)
    {
    case text:
        call.add(plain::eventText(start, message, end));
        break;
    case number32:
        call.add(static_cast<int>(value));
        break;
    case count:
        call.add(static_cast<unsigned int>(value));
        break;
    case flag:
        call.add(value != 0);
        break;
    case record:
        addRecord(call, message);
        break;
    case numbers:
    {
        std::vector<int> list;
        for (const std::string& item : split(plain::eventText(start, message, end)))
            list.push_back(static_cast<int>(std::strtol(item.c_str(), nullptr, 10)));
        call.add(list);
        break;
    }
    case texts:
        call.add(split(plain::eventText(start, message, end)));
        break;
    case payload:
    {
        const std::size_t at = message.find(field.tag);
        const std::size_t gone = at == std::string::npos ? 8 : at + 9;
        call.add(gone >= message.size() ? "" : message.substr(gone));
        break;
    }
    }
}

}  // namespace

namespace plain
{

const std::vector<std::string> tags = allTags();
const std::vector<std::string> methods = allMethods();

long number(const std::string& digits)
{
    const long long value = std::strtoll(digits.c_str(), nullptr, 10);
    return static_cast<long>(std::clamp(value, -2147483648LL, 2147483647LL));
}

std::string answerText(const std::string& startTag, const std::string& message,
                       const std::string& endTag, bool* found)
{
    const std::size_t start = message.find(startTag);
    if (found != nullptr)
        *found = start != std::string::npos;
    if (start == std::string::npos)
        return "";
    const std::string rest = message.substr(start + startTag.size());
    const std::size_t end = message.find(endTag);
    if (end == std::string::npos || end < start + startTag.size())
        return rest;
    return rest.substr(0, end - (start + startTag.size()));
}

long answerNumber(const std::string& startTag, const std::string& message,
                  const std::string& endTag)
{
    bool found = false;
    const std::string value = answerText(startTag, message, endTag, &found);
    return found ? number(value) : -1;
}

std::string eventText(const std::string& startTag, const std::string& message,
                      const std::string& endTag, bool* found)
{
    if (found != nullptr)
        *found = false;
    const std::size_t start = message.find(startTag);
    if (start == std::string::npos)
        return "";
    const std::string rest = message.substr(start + startTag.size());
    const std::size_t end = rest.find(endTag);
    if (end == std::string::npos)
        return "";
    if (found != nullptr)
        *found = true;
    return rest.substr(0, end);
}

long eventNumber(const std::string& startTag, const std::string& message, const std::string& endTag)
{
    bool found = false;
    const std::string value = eventText(startTag, message, endTag, &found);
    return found ? number(value) : -1;
}

std::string callbacks(std::string message)
{
    const std::string method = eventText("<Method>", message, "</Method>");
    std::string said;
    for (const Event& event : events)
    {
        const bool exact = event.method == std::string("CallStateChangeEvent");
        if (exact ? method != event.method : method.find(event.method) != 0)
            continue;
        CallText call(said);
        call.begin(event.callback);
        for (const Field& field : event.fields)
            add(call, field, message);
        call.end();
    }
    return said;
}

int result(const std::string& word)
{
    return word == "sfiSuccess"                         ? 5
           : word == "sfiFailureCallBackInvalidState"   ? 1
           : word == "sfiFailureCallBackNoCallInfo"     ? 2
           : word == "sfiFailureCallBackToMany"         ? 3
           : word == "sfiFailureCallBackAllreadyExists" ? 4
                                                        : 0;
}

std::vector<std::string> devices(const std::string& answer)
{
    std::vector<std::string> items;
    for (std::size_t p = 0; p < answer.size(); ++p)
    {
        if (answer[p] != '<')
            continue;
        const std::size_t end = answer.find('>', p);
        if (end != std::string::npos)
            items.push_back(answer.substr(p + 1, end - p - 1));
    }
    return items;
}

std::string request(const std::string& method,
                    const std::vector<std::pair<std::string, std::string>>& fields)
{
    std::string message = "<Method>" + method + "</Method>";
    for (const auto& [tag, value] : fields)
        message += opening(tag) + value + closing(tag);
    return message;
}

}  // namespace plain

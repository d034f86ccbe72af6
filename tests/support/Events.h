#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_EVENTS_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_EVENTS_H

#include "tests/support/WritingSubscriber.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <optional>
#include <set>
#include <string>
#include <vector>

/// The 28 events with their fields, and what a subscriber is told of them.
namespace samples
{

enum Kind
{
    text,
    number,
    count,  // a number without a sign
    flag,
    party,  // a text of the record; the four of them are one argument
    ids,    // a list of numbers
    uris,   // a list of texts
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
    std::vector<Field> fields;  ///< in the order of the callback's arguments
    bool hasPayload = false;    ///< behind the last field, for the last argument
};

// clang-format off
inline const Event events[] = {
    {"CallStateChangeEvent", "onCallStateChangeEvent",
     {{text, "LineID"}, {number, "CallID"}, {number, "CallState"}, {number, "Reason"}, {number, "SendOptions"},
      {text, "URI"}, {text, "Name"}, {text, "FullPAI"}, {party, "GPUCLG"}, {party, "GPUCLGName"}, {party, "GPUCLD"},
      {party, "GPUCLDName"}, {number, "ResourcePriority"}, {number, "PreemptionCause"}, {text, "PreemptionText"},
      {flag, "CallBackFearureAvailable"}, {number, "ILCallLevel"}, {number, "ILLocalLevel"}}},
    {"RegistrationStateChangeEvent", "onRegistrationStateChangeEvent",
     {{text, "LineID"}, {number, "CallID"}, {flag, "Registered"}, {number, "RegistrationResult"}}},
    {"IncomingCallEvent", "onIncomingCallEvent",
     {{text, "LineID"}, {number, "CallID"}, {text, "URI"}, {text, "Name"}, {text, "FullPAI"},
      {text, "AlertInformation_AlertURI"}, {text, "AlertInformation_InfoParam"}, {flag, "AlertInformation_AutoAnswer"},
      {number, "CallType"}, {text, "DiversionURI"}, {text, "DiversionName"}, {number, "DiversionReason"},
      {flag, "AICSZIPAutoAnswer"}, {number, "ResourcePriority"}, {number, "ILCallLevel"}, {number, "ILLocalLevel"},
      {flag, "IsVideoCall"}}},
    {"IncomingPickupCallEvent", "onIncomingPickupCallEvent",
     {{text, "LineID"}, {number, "CallID"}, {text, "URI"}, {text, "Name"}, {text, "FullPAI"}}},
    {"CallHeldEvent", "onCallHeldEvent", {{text, "LineID"}, {number, "CallID"}}},
    {"CallRetrievedEvent", "onCallRetrievedEvent",
     {{text, "LineID"}, {number, "CallID"}, {text, "URI"}, {text, "Name"}, {text, "FullPAI"}, {number, "ILCallLevel"},
      {number, "ILLocalLevel"}, {flag, "ConnectedToMediaServer"}}},
    {"FeatureSuccessEvent", "onFeatureSuccessEvent", {{text, "LineID"}, {number, "CallID"}, {number, "Feature"}}},
    {"FeatureFailedEvent", "onFeatureFailedEvent",
     {{text, "LineID"}, {number, "CallID"}, {number, "Feature"}, {number, "FeatureFailure"}}},
    {"RemoteEndpointDetailsChangedEvent", "onRemoteEndpointDetailsChangedEvent",
     {{text, "LineID"}, {number, "CallID"}, {text, "URI"}, {text, "Name"}, {text, "FullPAI"}, {flag, "exitConf"},
      {flag, "jointCall"}}},
    {"IncomingCallMissedEvent", "onIncomingCallMissedEvent",
     {{text, "LineID"}, {number, "CallID"}, {text, "URI"}, {text, "Name"}, {text, "FullPAI"}, {number, "Reason"},
      {text, "DiversionURI"}, {text, "DiversionName"}, {number, "DiversionReason"}}},
    {"CallForwardedEvent", "onCallForwardedEvent",
     {{text, "LineID"}, {number, "CallID"}, {text, "CallingParty"}, {text, "CallingPartyName"},
      {text, "CallingPartyFullPAI"}, {text, "NewDestination"}, {number, "Reason"}}},
    {"DevicesChangedEvent", "onDevicesChangedEvent", {}},
    {"messageWaitingEvent", "onMessageWaitingEvent",
     {{text, "LineID"}, {number, "type"}, {count, "new_messages"}, {count, "old_messages"},
      {count, "new_urgent_messages"}, {count, "old_urgent_messages"}, {number, "return_type"}, {number, "avail_info"},
      {number, "messages_waiting"}, {text, "voiceMailNumber"}}},
    {"DoNotDisturbEvent", "onDoNotDisturbEvent", {{text, "deviceId"}, {flag, "doNotDisturbOn"}}},
    {"AgentStateEvent", "onAgentStateEvent", {{text, "deviceId"}, {text, "agentState"}}},
    {"systemStatusEvent", "onSystemStatusEvent", {{text, "status"}, {text, "statusInfo"}}},
    {"serverFeatureStatusEvent", "onServerFeatureStatusEvent", {{text, "lineURI"}, {text, "status"}}},
    {"IncomingAssociatedCallEvent", "onIncomingAssociatedCallEvent",
     {{text, "LineID"}, {number, "CurrentCallID"}, {number, "NewCallID"}}},
    {"b2buaCSTAResponse", "onB2buaCSTAResponse", {{text, "lineURI"}, {flag, "success"}}, true},
    {"b2buaCSTAEventOrRequest", "onB2buaCSTAEventOrRequest", {{text, "lineURI"}}, true},
    {"conferenceStatusEvent", "onConferenceStatusEvent",
     {{text, "LineID"}, {number, "CallID"}, {text, "XMLContent"}}},
    {"securityStatusChanged", "onSecurityStatusChanged",
     {{text, "lineURI"}, {number, "callId"}, {number, "securityStatus"}, {ids, "CallIDsRecorded"},
      {uris, "CallLineURIsRecorded"}}},
    {"preemptionStatusChanged", "onPreemptionStatusChanged",
     {{text, "lineURI"}, {number, "callId"}, {number, "priority"}, {number, "cause"}, {text, "reason"}}},
    {"impactLevelChanged", "onImpactLevelChanged",
     {{text, "lineURI"}, {number, "callId"}, {number, "ILCallLevel"}, {number, "ILLocalLevel"}}},
    {"callRecordingStatusEvent", "onCallRecordingStatusEvent",
     {{text, "LineID"}, {number, "callId"}, {text, "callRecorded"}}},
    {"callCompletionEvent", "onCallCompletionEvent",
     {{text, "LineID"}, {text, "URI"}, {number, "CallCompletionType"}, {number, "CallCompletionState"},
      {flag, "DisplayOutcomeCallUI"}}},
    {"callCompletionFailedEvent", "onCallCompletionFailedEvent",
     {{text, "LineID"}, {text, "URI"}, {number, "CallCompletionFailureType"}}},
    {"bluetoothAudioStatusChanged", "onBluetoothAudioStatusChanged",
     {{text, "LineID"}, {number, "CallID"}, {flag, "AudioEnabled"}, {flag, "AudioGateway"}, {flag, "InBandRinging"}}},
};

struct Digits
{
    std::string digits;
    int value;
};

inline const Digits numbers[] = {
    {"0", 0}, {"42", 42}, {"-7", -7}, {"+5", 5}, {" 42abc", 42}, {"12.9", 12}, {"007", 7},
    {"", 0}, {" ", 0}, {"-", 0}, {"+", 0}, {"abc", 0}, {"x1", 0}, {"- 5", 0}, {"+-5", 0},
    {"--5", 0}, {"0x10", 0}, {"1e3", 1}, {"1,234", 1}, {"/1", 0}, {":1", 0}, {"9:", 9},
    {"\t\n\v\f\r 8", 8}, {"\b8", 0}, {"1 2", 1}, {"<8", 0}, {"-0", 0},
    {"2147483646", INT_MAX - 1}, {"2147483647", INT_MAX}, {"2147483648", INT_MAX},
    {"2147483649", INT_MAX}, {"2147483650", INT_MAX}, {"2147483639", 2147483639},
    {"2147483640", 2147483640}, {"-2147483640", -2147483640}, {"-2147483639", -2147483639},
    {"-2147483647", -INT_MAX}, {"-2147483648", INT_MIN}, {"-2147483649", INT_MIN},
    {"-2147483650", INT_MIN}, {"4294967295", INT_MAX}, {"4294967296", INT_MAX},
    {"21474836470", INT_MAX}, {"-21474836480", INT_MIN}, {"99999999999", INT_MAX},
    {"-99999999999", INT_MIN}, {"9223372036854775807", INT_MAX}, {"18446744073709551616", INT_MAX},
    {"-9223372036854775809", INT_MIN}, {"00000000000000000000012", 12},
};
// clang-format on

using Value = std::optional<std::string>;  // what stands in an element; none when it is absent
using Values = std::vector<Value>;

inline const std::string payload = "<?xml?><payload/>";

/// A value for each field of an event, each another one.
inline Values distinct(const Event& event, int salt = 0)
{
    Values values;
    for (const Field& field : event.fields)
    {
        const int n = 1000 + salt + static_cast<int>(values.size());
        switch (field.kind)
        {
        case text:
        case party:
            values.push_back("a longer text <" + show(n) + "> & ");
            break;
        case ids:
            values.push_back(show(n) + "," + show(-n));
            break;
        case uris:
            values.push_back("sip:a-long-line-" + show(n) + ",b");
            break;
        case flag:
            values.push_back(salt == 0 ? "1" : "0");
            break;
        default:
            values.push_back(show(n % 2 == 0 ? n : -n));
        }
    }
    return values;
}

inline std::string element(const Field& field, const Value& value)
{
    return value ? "<" + std::string(field.tag) + ">" + *value + "</" + field.tag + ">" : "";
}

inline std::string method(const std::string& name)
{
    return "<Method>" + name + "</Method>";
}

inline std::string elements(const Event& event, const Values& values)
{
    std::string all;
    for (std::size_t i = 0; i < values.size(); ++i)
        all += element(event.fields[i], values[i]);
    return all;
}

inline int toNumber(const std::string& digits)
{
    for (const auto& known : numbers)
        if (known.digits == digits)
            return known.value;
    return static_cast<int>(std::clamp<long long>(std::atoll(digits.c_str()), INT_MIN, INT_MAX));
}

/// The list that the tests' Serializer makes of a text.
inline std::string toList(const std::string& items, bool quoted)
{
    std::string list;
    for (std::size_t at = 0; at < items.size();)
    {
        const std::size_t end = std::min(items.find(',', at), items.size());
        const std::string item = items.substr(at, end - at);
        list +=
            (list.empty() ? "" : ", ") + (quoted ? show(item) : std::to_string(atoi(item.data())));
        at = end + 1;
    }
    return "[" + list + "]";
}

/// The line that the subscriber leaves for these values.
inline std::string callback(const Event& event, const Values& values,
                            const std::string& behind = payload)
{
    std::string arguments;
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        const Kind kind = event.fields[i].kind;
        const std::string value = values[i].value_or("");
        if (i > 0)
            arguments += ", ";
        const bool isInParty = kind == party;
        if (isInParty && event.fields[i - 1].kind != party)
            arguments += "[";
        switch (kind)
        {
        case text:
        case party:
            arguments += show(value);
            break;
        case number:
            arguments += show(values[i] ? toNumber(value) : -1);
            break;
        case count:
            arguments += show(static_cast<unsigned int>(values[i] ? toNumber(value) : -1));
            break;
        case flag:
            arguments += show(values[i] ? toNumber(value) != 0 : true);
            break;
        case ids:
        case uris:
            arguments += toList(value, kind == uris);
            break;
        }
        if (isInParty && event.fields[i + 1].kind != party)
            arguments += "]";
    }
    if (event.hasPayload)
        arguments += ", " + show(behind);
    return event.callback + ("(" + arguments) + ")";
}

/// One event of each kind, in the order of the table: the text, and what the subscriber is told.
struct Sample
{
    std::string text;
    std::string said;
};

inline std::vector<Sample> onePerEvent()
{
    std::vector<Sample> all;
    for (const Event& event : events)
        all.push_back({method(event.method) + elements(event, distinct(event)) +
                           (event.hasPayload ? payload : ""),
                       callback(event, distinct(event)) + "\n"});
    return all;
}

inline const std::vector<Sample> eventSamples = onePerEvent();

/// An answer with something in it for every query.
// clang-format off
inline const std::vector<std::pair<const char*, const char*>> answerFields = {
    {"func_return_val", "sfiSuccess"}, {"Type", "1"}, {"newMsgs", "2"}, {"oldMsgs", "3"}, {"newUrgMsgs", "4"},
    {"oldUrgMsgs", "5"}, {"return_type", "6"}, {"available_info", "7"}, {"messages_waiting", "8"},
    {"voiceMailNumber", "sip:a-long-mailbox@phone.example.com"}, {"sfiResult", "sfiSuccess"}, {"status", "0"},
    {"cfnrRingCount", "9"}, {"uri", "sip:a-long-address@phone.example.com"},
};
// clang-format on

inline std::string answerToAll()
{
    std::string answer;
    for (const auto& [tag, value] : answerFields)
        answer += element({text, tag}, std::string(value));
    return answer + "sfiServiceDoNotDisturb";
}

/// The tags of all events and answers, each once.
inline std::vector<std::string> allTags()
{
    std::set<std::string> all = {"Method"};
    for (const auto& field : answerFields)
        all.insert(field.first);
    for (const Event& event : events)
        for (const Field& field : event.fields)
            all.insert(field.tag);
    return {all.begin(), all.end()};
}

}  // namespace samples

#endif

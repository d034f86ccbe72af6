#include "kit/trace/Flow.h"

#include "kit/language/Language.h"
#include "kit/trace/Labels.h"

#include <algorithm>

namespace kit::phone
{

namespace
{

/// What a request becomes behind the service once it was carried out.
struct Beyond
{
    const char* method;
    const char* text;
    const char* destinationTag;  ///< "" where it goes to the far end of its call
};

constexpr const char* cstaPeer = "CSTA peer";

const Beyond beyonds[] = {
    {"OutgoingCallMakeRequest", "call", "Destination"},
    {"Consult", "call", "Destination"},
    {"DeflectCall", "deflected call", "Destination"},
    {"BlindTransfer", "transferred call", "Destination"},
    {"DirectedPickupCall", "pick up", "CallToBePickedUp"},
    {"AcceptCall", "ringing", ""},
    {"AnswerCall", "answer", ""},
    {"CallClearRequest", "clear", ""},
    {"RefuseCall", "refuse", ""},
    {"HoldCall", "hold", ""},
    {"RetrieveCall", "retrieve", ""},
    {"GenerateDigits", "digits", ""},
    {"AttendedTransfer", "transfer", ""},
    {"ConferenceCall", "conference", ""},
    {"makeSecurityChangeReinvite", "renegotiate", ""},
};

/// What an event that nobody asked for says about the far end.
struct FarEndDid
{
    const char* event;
    int callState;  ///< -1 when it does not matter
    const char* text;
};

const FarEndDid farEndDid[] = {
    {"CallStateChangeEvent", numbers::callDelivered, "rings"},
    {"CallStateChangeEvent", numbers::callConnected, "answers"},
    {"CallStateChangeEvent", numbers::callCleared, "clears"},
    {"CallStateChangeEvent", numbers::callFailed, "does not answer"},
    {"CallStateChangeEvent", numbers::callHeldByFarEnd, "holds"},
    {"IncomingCallEvent", -1, "calls"},
    {"IncomingPickupCallEvent", -1, "calls"},
    {"IncomingCallMissedEvent", -1, "gives up"},
    {"RemoteEndpointDetailsChangedEvent", -1, "changes"},
    {"callCompletionEvent", -1, "calls back"},
    {"b2buaCSTAResponse", -1, "answers"},
    {"b2buaCSTAEventOrRequest", -1, "sends"},
};

const char* const callTags[] = {"CallID", "callId", "callID", "activeCall", "NewCallID"};
const char* const farEndTags[] = {"URI", "CallingParty"};

bool isCsta(const std::string& method)
{
    return method == "b2buaCSTAResponse" || method == "b2buaCSTAEventOrRequest" ||
           method == "SendCSTARequest" || method == "SendUACSTAServerMessage";
}

std::string firstOf(const Message& message, const char* const* begin, const char* const* end)
{
    for (const char* const* tag = begin; tag != end; ++tag)
        if (const std::string* value = message.find(*tag))
            return *value;
    return "";
}

}  // namespace

std::vector<Step> Flow::add(const Record& record)
{
    switch (record.kind)
    {
    case Record::Kind::request:
        addRequest(record);
        break;
    case Record::Kind::answer:
        addAnswer(record);
        break;
    case Record::Kind::event:
        addEvent(record);
        break;
    case Record::Kind::control:
        addControl(record);
        break;
    }
    return takeReady();
}

std::vector<Step> Flow::finish()
{
    for (Waiting& waiting : waiting_)
        waiting.request = 0;
    open_.clear();
    return takeReady();
}

void Flow::addRequest(const Record& record)
{
    const Message message = parse(record.text);
    const bool answered = record.sending != Sending::oneWay;
    Waiting row{{}, answered ? record.number : 0, "", ""};
    row.step.application = Step::Between::toService;
    row.step.text = messageLabel(record.text);
    for (const Beyond& beyond : beyonds)
    {
        if (message.method != beyond.method)
            continue;
        const std::string* destination =
            *beyond.destinationTag != '\0' ? message.find(beyond.destinationTag) : nullptr;
        row.farEnd = destination != nullptr ? shortNumber(*destination) : farEndOf(message);
        row.farEndText = beyond.text;
    }
    if (isCsta(message.method))
    {
        row.farEnd = cstaPeer;
        row.farEndText = "CSTA";
    }
    if (answered)
        open_.insert(record.number);
    else if (!row.farEnd.empty())
    {
        row.step.farEnd = Step::Between::toService;
        row.step.farEndText = row.farEndText;
        row.step.farEndName = row.farEnd;
    }
    waiting_.push_back(row);
}

void Flow::addAnswer(const Record& record)
{
    open_.erase(record.number);
    const bool carriedOut =
        record.delivery == Delivery::done && record.text == resultName(sfiSuccess);
    for (Waiting& waiting : waiting_)
    {
        if (waiting.request != record.number)
            continue;
        waiting.request = 0;
        if (carriedOut && !waiting.farEnd.empty())
        {
            waiting.step.farEnd = Step::Between::toService;
            waiting.step.farEndText = waiting.farEndText;
            waiting.step.farEndName = waiting.farEnd;
        }
    }
    Waiting row{{}, 0, "", ""};
    row.step.application = Step::Between::answer;
    if (record.delivery == Delivery::timedOut)
        row.step.text = "(no answer in time)";
    else if (record.delivery == Delivery::gone)
        row.step.text = "(the service is gone)";
    else
        row.step.text = record.text.empty() ? "(empty)" : messageLabel(record.text);
    waiting_.push_back(row);
}

void Flow::addEvent(const Record& record)
{
    const Message message = parse(record.text);
    learn(message);
    Waiting row{{}, 0, "", ""};
    row.step.application = Step::Between::fromService;
    row.step.text = messageLabel(record.text);
    const std::string* const state = message.find("CallState");
    for (const FarEndDid& did : farEndDid)
    {
        if (!open_.empty() || message.method != did.event ||
            (did.callState >= 0 && (state == nullptr || *state != std::to_string(did.callState))))
            continue;
        row.step.farEndName = isCsta(message.method) ? cstaPeer : farEndOf(message);
        if (row.step.farEndName.empty())
            continue;
        row.step.farEnd = Step::Between::fromService;
        row.step.farEndText = did.text;
    }
    waiting_.push_back(row);
}

void Flow::addControl(const Record& record)
{
    Waiting row{{}, 0, "", ""};
    row.step.text = printable(record.text, 60);
    waiting_.push_back(row);
}

void Flow::learn(const Message& message)
{
    const std::string call = firstOf(message, std::begin(callTags), std::end(callTags));
    const std::string farEnd = firstOf(message, std::begin(farEndTags), std::end(farEndTags));
    if (!call.empty() && !farEnd.empty())
        farEnds_[call] = shortNumber(farEnd);
}

std::string Flow::farEndOf(const Message& message) const
{
    const std::string named = firstOf(message, std::begin(farEndTags), std::end(farEndTags));
    if (!named.empty())
        return shortNumber(named);
    const auto known = farEnds_.find(firstOf(message, std::begin(callTags), std::end(callTags)));
    return known != farEnds_.end() ? known->second : "";
}

std::vector<Step> Flow::takeReady()
{
    std::vector<Step> ready;
    while (!waiting_.empty() && waiting_.front().request == 0)
    {
        ready.push_back(waiting_.front().step);
        waiting_.pop_front();
    }
    return ready;
}

}  // namespace kit::phone

#include "kit/trace/Flow.h"

#include "kit/language/Wording.h"
#include "kit/trace/Labels.h"

namespace kit
{

namespace
{

/// What a request becomes behind the service once it was carried out.
struct FarEndGets
{
    const char* method;
    const char* text;
    const char* destinationTag;  ///< "" where it goes to the far end of its call
};

constexpr const char* cstaPeer = "CSTA";

const FarEndGets farEndGets[] = {
    {"OutgoingCallMakeRequest", "call", "Destination"},
    {"Consult", "call", "Destination"},
    {"DeflectCall", "deflect", "Destination"},
    {"BlindTransfer", "transfer", "Destination"},
    {"DirectedPickupCall", "pick up", "CallToBePickedUp"},
    {"AcceptCall", "ringing", ""},
    {"AnswerCall", "answer", ""},
    {"CallClearRequest", "clear", ""},
    {"RefuseCall", "refuse", ""},
    {"HoldCall", "hold", ""},
    {"RetrieveCall", "retrieve", ""},
    {"GenerateDigits", "digits", ""},
    {"AttendedTransfer", "transfer", ""},
    {"ConferenceCall", "join", ""},
    {"makeSecurityChangeReinvite", "re-invite", ""},
};

/// What an event that nobody asked for says about the far end.
struct FarEndDoes
{
    const char* event;
    int callState;  ///< -1 when it does not matter
    const char* text;
};

const FarEndDoes farEndDoes[] = {
    {"CallStateChangeEvent", numbers::callDelivered, "rings"},
    {"CallStateChangeEvent", numbers::callConnected, "answers"},
    {"CallStateChangeEvent", numbers::callCleared, "clears"},
    {"CallStateChangeEvent", numbers::callFailed, "no answer"},
    {"CallStateChangeEvent", numbers::callHeldByFarEnd, "holds"},
    {"IncomingCallEvent", -1, "calls"},
    {"IncomingPickupCallEvent", -1, "calls"},
    {"IncomingCallMissedEvent", -1, "gives up"},
    {"RemoteEndpointDetailsChangedEvent", -1, "changes"},
    {"callCompletionEvent", -1, "recalls"},
    {"b2buaCSTAResponse", -1, "answers"},
    {"b2buaCSTAEventOrRequest", -1, "sends"},
};

const char* const callTags[] = {"CallID", "activeCall"};
const char* const farEndTags[] = {"URI", "CallingParty"};

bool isCsta(const std::string& method)
{
    return method == "b2buaCSTAResponse" || method == "b2buaCSTAEventOrRequest" ||
           method == "SendCSTARequest" || method == "SendUACSTAServerMessage";
}

template <std::size_t size>
std::string firstOf(const Message& message, const char* const (&tags)[size])
{
    for (const char* const tag : tags)
        if (const std::string* value = message.find(tag))
            return *value;
    return "";
}

}  // namespace

std::vector<FlowStep> Flow::add(const TraceRecord& record)
{
    switch (record.kind)
    {
    case TraceRecord::Kind::request:
        addRequest(record);
        break;
    case TraceRecord::Kind::answer:
        addAnswer(record);
        break;
    case TraceRecord::Kind::event:
        addEvent(record);
        break;
    case TraceRecord::Kind::exception:
        addException(record);
        break;
    case TraceRecord::Kind::control:
        addNote(record.text);
        break;
    case TraceRecord::Kind::dropped:
        addNote("records that are missing here: " + std::to_string(record.count));
        break;
    }
    return takeReady();
}

std::vector<FlowStep> Flow::finish()
{
    for (Waiting& waiting : waiting_)
        waiting.request = 0;
    open_.clear();
    return takeReady();
}

void Flow::addRequest(const TraceRecord& record)
{
    const Message message = parse(record.text);
    const bool answered = record.sending != Sending::oneWay;
    Waiting row;
    row.request = answered ? record.number : 0;
    row.step.application = FlowStep::Between::toService;
    row.step.text = messageLabel(record.text);
    for (const FarEndGets& gets : farEndGets)
    {
        if (message.method != gets.method)
            continue;
        const std::string* destination =
            *gets.destinationTag != '\0' ? message.find(gets.destinationTag) : nullptr;
        row.farEnd = destination != nullptr ? shortNumber(*destination) : farEndOf(message);
        row.farEndText = gets.text;
    }
    if (isCsta(message.method))
    {
        row.farEnd = cstaPeer;
        row.farEndText = "message";
    }
    if (!answered && !row.farEnd.empty())
    {
        row.step.farEnd = FlowStep::Between::toService;
        row.step.farEndText = row.farEndText;
        row.step.farEndName = row.farEnd;
    }
    endOf(row.request, false);  // where a damaged trace has two of a number
    waiting_.push_back(row);
    if (row.request != 0)
        open_[row.request] = &waiting_.back();
}

void Flow::addAnswer(const TraceRecord& record)
{
    endOf(record.number,
          record.delivery == Delivery::done && record.text == resultName(sfiSuccess));
    addStep(FlowStep::Between::answer, record.delivery == Delivery::timedOut ? "(no answer in time)"
                                       : record.delivery == Delivery::gone ? "(the service is gone)"
                                       : record.text.empty()               ? "(empty)"
                                                             : messageLabel(record.text));
}

void Flow::endOf(int request, bool carriedOut)
{
    const auto found = open_.find(request);
    if (found == open_.end())
        return;
    Waiting& waiting = *found->second;
    open_.erase(found);
    waiting.request = 0;
    if (carriedOut && !waiting.farEnd.empty())
    {
        waiting.step.farEnd = FlowStep::Between::toService;
        waiting.step.farEndText = waiting.farEndText;
        waiting.step.farEndName = waiting.farEnd;
    }
}

void Flow::addEvent(const TraceRecord& record)
{
    const Message message = parse(record.text);
    learn(message);
    Waiting row;
    row.step.application = FlowStep::Between::fromService;
    row.step.text = messageLabel(record.text);
    const std::string* const state = message.find("CallState");
    for (const FarEndDoes& does : farEndDoes)
    {
        if (!open_.empty() || message.method != does.event ||
            (does.callState >= 0 && (state == nullptr || *state != std::to_string(does.callState))))
            continue;
        row.step.farEndName = isCsta(message.method) ? cstaPeer : farEndOf(message);
        if (row.step.farEndName.empty())
            continue;
        row.step.farEnd = FlowStep::Between::fromService;
        row.step.farEndText = does.text;
    }
    row.step.leaves = leaving(message);
    waiting_.push_back(row);
}

void Flow::addException(const TraceRecord& record)
{
    if (record.number == 0)
        return addNote("the callback threw " + record.text);
    endOf(record.number, false);
    addStep(FlowStep::Between::answer, "(threw " + printable(record.text, 60) + ")");
}

void Flow::addNote(const std::string& text)
{
    addStep(FlowStep::Between::none, printable(text, 60));
}

void Flow::addStep(FlowStep::Between application, const std::string& text)
{
    Waiting row;
    row.step.application = application;
    row.step.text = text;
    waiting_.push_back(row);
}

void Flow::learn(const Message& message)
{
    const std::string call = firstOf(message, callTags);
    const std::string farEnd = firstOf(message, farEndTags);
    if (!call.empty() && !farEnd.empty())
        farEnds_[call] = shortNumber(farEnd);
}

std::string Flow::leaving(const Message& message)
{
    const std::string* const state = message.find("CallState");
    const bool over = message.method == "IncomingCallMissedEvent" ||
                      message.method == "CallForwardedEvent" ||
                      (state != nullptr && *state == std::to_string(numbers::callCleared));
    const auto ended = over ? farEnds_.find(firstOf(message, callTags)) : farEnds_.end();
    if (ended == farEnds_.end())
        return "";
    const std::string farEnd = ended->second;
    farEnds_.erase(ended);
    for (const auto& [call, other] : farEnds_)
        if (other == farEnd)
            return "";
    return farEnd;
}

std::string Flow::farEndOf(const Message& message) const
{
    const std::string named = firstOf(message, farEndTags);
    if (!named.empty())
        return shortNumber(named);
    const auto known = farEnds_.find(firstOf(message, callTags));
    return known != farEnds_.end() ? known->second : "";
}

std::vector<FlowStep> Flow::takeReady()
{
    std::vector<FlowStep> ready;
    while (!waiting_.empty() && waiting_.front().request == 0)
    {
        ready.push_back(waiting_.front().step);
        waiting_.pop_front();
    }
    return ready;
}

}  // namespace kit

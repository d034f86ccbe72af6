#include "kit/phone/CallBook.h"

#include "kit/language/Wording.h"
#include "kit/language/Words.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kit::phone
{

namespace
{

using namespace numbers;

/// In which states a call can be meant by an argument, the likeliest first. A call is picked from the
/// first group that has one.
struct Fits
{
    const char* operation;
    const char* argument;
    std::vector<std::vector<int>> states;
    const char* what;  ///< for people: "no call ..."
};

const std::vector<Fits>& fits()
{
    static const std::vector<Fits> table = {
        {"acceptCall", "callId", {{callOffered}}, "is offered"},
        {"deflectCall", "callId", {{callOffered, callRinging}}, "is offered or rings"},
        {"refuseCall", "callId", {{callOffered, callRinging}}, "is offered or rings"},
        {"answerCall", "callId", {{callRinging, callOffered}}, "rings"},
        {"holdCall", "callId", {{callConnected, callConferenced}}, "is connected"},
        {"retrieveCall", "callId", {{callHeld}}, "is held"},
        {"consultationCall", "callId", {{callConnected}, {callHeld}}, "is connected"},
        {"blindTransferCall", "callId", {{callConnected}, {callHeld}}, "is connected"},
        {"attendedTransferCall",
         "activeCall",
         {{callConnected}, {callDelivered}},
         "is connected or rings at the far end"},
        {"attendedTransferCall", "heldCall", {{callHeld}}, "is held"},
        {"conferenceCall", "activeCall", {{callConnected}, {callConferenced}}, "is connected"},
        {"conferenceCall", "heldCall", {{callHeld}}, "is held"},
        {"generateDigits", "activeCall", {{callConnected, callConferenced}}, "is connected"},
        {"RemoveConfParticipant", "callId", {{callConferenced}}, "is a conference"},
        {"getManualHoldIndication", "callId", {{callHeld}, {callConnected}}, "is held"},
        {"activateCallbackBusy", "callId", {{callFailed}, {callQueued}}, "has failed"},
        {"activateCallbackRinging", "callId", {{callDelivered}, {callFailed}}, "is not answered"},
        {"makeSecurityChangeReinvite",
         "callId",
         {{callConnected}, {callHeld, callConferenced}},
         "is connected"},
        {"callClear",
         "callId",
         {{callConnected, callConferenced, callHeldByFarEnd},
          {callDelivered, callInitiated, callFailed, callQueued},
          {callRinging, callOffered},
          {callHeld}},
         "is there to be ended"},
    };
    return table;
}

std::string describe(const CallBook::Call& call)
{
    return std::to_string(call.id) + " (" + nameOf(Meaning::callState, call.state) +
           (call.farEnd.empty() ? "" : ", " + printable(call.farEnd, 40)) + ")";
}

int number(const std::string& text)
{
    return static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
}

}  // namespace

void CallBook::setLines(const std::vector<std::string>& lines)
{
    lines_ = lines;
}

void CallBook::take(const ReceivedEvent& event)
{
    const std::string method = event.event->method;
    const int id = event.has("callId") ? number(event.value("callId")) : 0;
    if (method == "CallStateChangeEvent")
    {
        const int state = number(event.value("callState"));
        if (state == callCleared || state == callIdle)
            drop(id);
        else
            call(id, event).state = state;
    }
    else if (method == "IncomingCallEvent")
    {
        // A state of its own usually follows; until then the call is offered.
        if (find(id) == nullptr)
            call(id, event).state = callOffered;
    }
    else if (method == "CallHeldEvent")
        call(id, event).state = callHeld;
    else if (method == "CallRetrievedEvent")
        call(id, event).state = callConnected;
    else if (method == "RemoteEndpointDetailsChangedEvent" && find(id) != nullptr)
        call(id, event);
    else if (method == "IncomingCallMissedEvent" || method == "CallForwardedEvent")
        drop(id);
    else
        takeFeature(event);
}

void CallBook::setLamp(const std::string& line, const std::string& lamp, const std::string& mode)
{
    lamps_[line][lamp] = mode;
}

void CallBook::clear()
{
    calls_.clear();
    features_.clear();
    lamps_.clear();
}

bool CallBook::isLine(const std::string& word) const
{
    return std::find(lines_.begin(), lines_.end(), word) != lines_.end();
}

const CallBook::Call* CallBook::find(int id) const
{
    for (const Call& call : calls_)
        if (call.id == id)
            return &call;
    return nullptr;
}

const CallBook::Call& CallBook::pick(const Operation& operation, const Field& argument,
                                     const std::string& line) const
{
    const Fits* rule = nullptr;
    for (const Fits& row : fits())
        if (std::strcmp(row.operation, operation.name) == 0 &&
            std::strcmp(row.argument, argument.argument) == 0)
            rule = &row;
    const std::string needs = std::string(operation.name) + " needs " + argument.argument + ": ";
    if (rule == nullptr)
        throw Mistake(needs + "which call does not follow from the calls that there are");
    for (const std::vector<int>& states : rule->states)
    {
        const Call* found = nullptr;
        std::string all;
        int count = 0;
        for (const Call& call : calls_)
            if ((line.empty() || call.line == line) &&
                std::find(states.begin(), states.end(), call.state) != states.end())
            {
                found = &call;
                all += (count++ > 0 ? ", " : "") + describe(call);
            }
        if (count == 1)
            return *found;
        if (count > 1)
            throw Mistake(needs + "more than one call fits: " + all);
    }
    std::string all;
    for (const Call& call : calls_)
        all += (all.empty() ? "" : ", ") + describe(call);
    throw Mistake(needs + "no call " + rule->what +
                  (all.empty() ? "; there is no call" : "; there is " + all));
}

CallBook::Call& CallBook::call(int id, const ReceivedEvent& event)
{
    auto found = std::find_if(calls_.begin(), calls_.end(),
                              [&](const Call& candidate) { return candidate.id == id; });
    if (found == calls_.end())
    {
        calls_.push_back({});
        found = calls_.end() - 1;
        found->id = id;
    }
    if (!event.value("lineId").empty())
        found->line = event.value("lineId");
    if (event.has("uri") && !event.value("uri").empty())
        found->farEnd = event.value("uri");
    return *found;
}

void CallBook::drop(int id)
{
    calls_.erase(std::remove_if(calls_.begin(), calls_.end(),
                                [&](const Call& candidate) { return candidate.id == id; }),
                 calls_.end());
}

void CallBook::takeFeature(const ReceivedEvent& event)
{
    struct Row
    {
        const char* method;
        const char* line;
        const char* argument;
        const char* shown;
    };
    static const Row rows[] = {
        {"RegistrationStateChangeEvent", "lineId", "registered", "registered"},
        {"DoNotDisturbEvent", "deviceId", "doNotDisturbOn", "doNotDisturb"},
        {"AgentStateEvent", "deviceId", "agentState", "agent"},
        {"messageWaitingEvent", "lineId", "newMessages", "newMessages"},
        {"serverFeatureStatusEvent", "lineURI", "status", "serverFeatures"},
    };
    for (const Row& row : rows)
        if (std::strcmp(row.method, event.event->method) == 0)
            for (const Field& field : event.event->arguments)
                if (std::strcmp(field.argument, row.argument) == 0)
                    features_[event.value(row.line)][row.shown] =
                        toPeople(field, event.value(row.argument));
}

}  // namespace kit::phone

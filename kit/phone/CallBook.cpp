#include "kit/phone/CallBook.h"

#include "kit/language/Wording.h"
#include "kit/language/Words.h"
#include "kit/protocol/Columns.h"

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

/// The structure of an event, as far as the book looks at it.
template <typename Structure>
Structure callOf(const ReceivedEvent& event)
{
    Structure structure{};
    structure.lineId = event.value("lineId");
    structure.callId = number(event.value("callId"));
    return structure;
}

template <typename Structure>
Structure farEndOf(const ReceivedEvent& event)
{
    Structure structure = callOf<Structure>(event);
    structure.uri = event.value("uri");
    structure.name = event.value("name");
    return structure;
}

}  // namespace

void CallBook::setLines(const std::vector<std::string>& lines)
{
    lines_ = lines;
}

void CallBook::take(const ReceivedEvent& event)
{
    using namespace communications;
    const std::string method = event.event->method;
    if (method == "CallStateChangeEvent")
    {
        CallStateChangeEvent change = farEndOf<CallStateChangeEvent>(event);
        change.callState = number(event.value("callState"));
        book_.on(change);
    }
    else if (method == "IncomingCallEvent")
        book_.on(farEndOf<IncomingCallEvent>(event));
    else if (method == "CallHeldEvent")
        book_.on(callOf<CallHeldEvent>(event));
    else if (method == "CallRetrievedEvent")
        book_.on(farEndOf<CallRetrievedEvent>(event));
    else if (method == "RemoteEndpointDetailsChangedEvent")
        book_.on(farEndOf<RemoteEndpointDetailsChangedEvent>(event));
    else if (method == "IncomingCallMissedEvent")
        book_.on(callOf<IncomingCallMissedEvent>(event));
    else if (method == "CallForwardedEvent")
        book_.on(callOf<CallForwardedEvent>(event));
    else
        takeFeature(event);
}

void CallBook::setLamp(const std::string& line, const std::string& lamp, const std::string& mode)
{
    lamps_[line][lamp] = mode;
}

void CallBook::clear()
{
    book_.clear();
    features_.clear();
    lamps_.clear();
}

bool CallBook::isLine(const std::string& word) const
{
    return contains(lines_, word);
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
        for (const Call& call : calls())
            if ((line.empty() || call.line == line) && contains(states, call.state))
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
    for (const Call& call : calls())
        all += (all.empty() ? "" : ", ") + describe(call);
    throw Mistake(needs + "no call " + rule->what +
                  (all.empty() ? "; there is no call" : "; there is " + all));
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

#include "CommunicationsServiceTypes.h"
#include "kit/language/Wording.h"
#include "kit/service/EventText.h"
#include "kit/service/Handlers.h"

#include <algorithm>
#include <set>

namespace kit::service
{

using namespace numbers;

namespace
{

const std::string signallingPrefix = "SigEvent:";

}  // namespace

std::string choices(Meaning meaning)
{
    std::string text;
    for (const NumberName& entry : namesOf(meaning))
        text += (text.empty() ? "" : ", ") + std::to_string(entry.number) + " (" + entry.name + ")";
    return text;
}

const std::string& Request::text(const char* tag) const
{
    static const std::string empty;
    const std::string* const value = message_.find(tag);
    return value == nullptr ? empty : *value;
}

int Request::number(const char* tag) const
{
    int value = 0;
    numberOf(Meaning::none, text(tag), value);
    return value;
}

bool Request::flag(const char* tag) const
{
    return text(tag) == "1" || text(tag) == "TRUE";
}

std::string Simulation::failure(const Request& request, const std::string& why)
{
    complain(std::string(request.method()) + ": " + why);
    return failed;
}

std::string Simulation::featureFailure(const Request& request, int callId, int feature, int why,
                                       const std::string& text)
{
    emit(events::featureFailed(request.text("Line"), callId, feature, why));
    return failure(request, text);
}

std::string Simulation::featureSuccess(const Request& request, int callId, int feature)
{
    emit(events::featureSuccess(request.text("Line"), callId, feature));
    return success;
}

/// The line, when calls can be made there; complains otherwise.
Line* Handlers::readyLine(Simulation& s, const Request& r)
{
    Line* const line = knownLine(s, r, r.text("Line"));
    if (line != nullptr && !line->registered)
    {
        s.failure(r, "line " + line->name + " is not registered, activate first");
        return nullptr;
    }
    return line;
}

Line* Handlers::knownLine(Simulation& s, const Request& r, const std::string& name)
{
    Line* const line = s.findLine(name);
    if (line == nullptr)
    {
        std::vector<std::string> names;
        for (const Line& known : s.lines_)
            names.push_back(known.name);
        s.failure(r, "no line " + quoted(name) + didYouMean(name, names));
    }
    return line;
}

/// The call that a field names, when it is on the line and in a state that fits.
Call* Handlers::call(Simulation& s, const Request& r, const char* tag, int feature,
                     const std::vector<CallState>& states)
{
    const Line* const line = readyLine(s, r);
    if (line == nullptr)
        return nullptr;
    const int id = r.number(tag);
    Call* const found = s.findCall(id);
    if (found == nullptr || found->line != line->name)
    {
        s.featureFailure(r, id, feature, failureNoSuchCall,
                         "no call " + std::to_string(id) + " on line " + line->name);
        return nullptr;
    }
    if (std::find(states.begin(), states.end(), found->state) == states.end())
    {
        s.featureFailure(r, id, feature, failureWrongState,
                         "call " + std::to_string(id) + " is " +
                             nameOf(Meaning::callState, found->state));
        return nullptr;
    }
    return found;
}

/// Nobody talks on the line but perhaps in this call; complains otherwise.
bool Handlers::lineFree(Simulation& s, const Request& r, int feature, int exceptCall)
{
    const std::string& line = r.text("Line");
    const Call* const other =
        s.findCall(line, [&](const Call& any) { return any.active() && any.id != exceptCall; });
    if (other == nullptr)
        return true;
    s.featureFailure(r, exceptCall, feature, failureBusy,
                     "call " + std::to_string(other->id) + " on line " + line + " is " +
                         nameOf(Meaning::callState, other->state) + ", hold it first");
    return false;
}

std::string Handlers::signalling(Simulation& s, const std::string& data)
{
    s.lastSignalling_ = data;
    return "";
}

const std::vector<Handlers::Row>& Handlers::table()
{
    static const std::vector<Row> rows = {
        {"Activate", activate},
        {"Deactivate", deactivate},
        {"CallClearRequest", callClear},
        {"OutgoingCallMakeRequest", outgoingCallMake},
        {"AcceptCall", acceptCall},
        {"AnswerCall", answerCall},
        {"DeflectCall", deflectCall},
        {"HoldCall", holdCall},
        {"RetrieveCall", retrieveCall},
        {"AttendedTransfer", attendedTransfer},
        {"BlindTransfer", blindTransfer},
        {"SendCSTARequest", cstaRequest},
        {"SendUACSTAServerMessage", uacstaMessage},
        {"InitializeOrFinalizeServerFeatures", serverFeatures},
        {"ActivateCallbackRinging", callBackRinging},
        {"ActivateCallbackBusy", callBackBusy},
        {"CancelCallbacks", cancelCallbacks},
        {"Consult", consult},
        {"RefuseCall", refuseCall},
        {"Subscribe", subscribe},
        {"DirectedPickupCall", directedPickup},
        {"GroupPickupCall", groupPickup},
        {"SetServiceState", setServiceState},
        {"GetServiceState", getServiceState},
        {"SetDoNotDisturb", setDoNotDisturb},
        {"GetDoNotDisturb", getDoNotDisturb},
        {"SetAgentState", setAgentState},
        {"SetMicrophoneMute", setMicrophoneMute},
        {"GetMicrophoneMute", getMicrophoneMute},
        {"SystemStatus", systemStatus},
        {"GenerateDigits", generateDigits},
        {"GetDevices", getDevices},
        {"ConferenceCall", conferenceCall},
        {"RemoveConfParticipant", removeParticipant},
        {"getManualHoldIndication", getManualHold},
        {"AlternateCalls", alternateCalls},
        {"GetMessageWaitingIndicator", getMessageWaiting},
        {"setAssociatedCalls", setAssociatedCalls},
        {"setLampMode", setLampMode},
        {"makeSecurityChangeReinvite", securityReinvite},
        {"setIsInServiceInitiatedState", setInServiceInitiated},
        {"setForwardingConfiguration", setForwarding},
        {"getForwardingConfiguration", getForwarding},
        {"callbackDOFeatureCallID", callBackFeatureCall},
        {"isCallHoldPossible", isCallHoldPossible},
    };
    return rows;
}

// --- checks ---

bool Simulation::checkValue(const Operation& operation, const Field& field,
                            const std::string& value)
{
    const auto wrong = [&](const std::string& possible)
    {
        complain("wrong value " + quoted(value) + " for <" + field.tag + "> in " +
                 operation.method + ", " + possible);
        return false;
    };
    const auto named = [&](Meaning meaning)
    {
        int number = 0;
        bool known = numberOf(Meaning::none, value, number);
        const std::vector<NumberName>& names = namesOf(meaning);
        known = known && std::any_of(names.begin(), names.end(),
                                     [&](const NumberName& name) { return name.number == number; });
        return known || wrong("one of " + choices(meaning) + " is possible");
    };
    int number = 0;
    switch (field.kind)
    {
    case Kind::number:
    case Kind::count:
    case Kind::cause:
    case Kind::feature:
        return numberOf(Meaning::none, value, number) || wrong("a number is needed");
    case Kind::refusal:
        return named(Meaning::refusal);
    case Kind::cancelType:
        return named(Meaning::cancelCallBack);
    case Kind::forwarding:
        return named(Meaning::forwarding);
    case Kind::flag:
        return value == "1" || value == "0" || wrong("1 or 0 is needed");
    case Kind::word:
        return value == "TRUE" || value == "FALSE" || wrong("TRUE or FALSE is needed");
    case Kind::state:
        for (const NumberName& name : namesOf(Meaning::serviceState))
            if (value == name.name)
                return true;
        return wrong("one of sfiServiceInService, sfiServiceOutOfService, "
                     "sfiServiceDoNotDisturb is needed");
    default:
        return true;
    }
}

/// Complains about everything that is wrong with the fields; false when something is.
bool Simulation::checkFields(const Operation& operation, const Message& message)
{
    std::vector<std::string> known;
    bool payload = false;
    for (const Field& field : operation.arguments)
    {
        if (field.kind == Kind::payload)
            payload = true;
        if (*field.tag != '\0')
            known.push_back(field.tag);
    }
    bool right = true;
    std::set<std::string> seen;
    for (const Message::Element& element : message.elements)
    {
        if (element.tag == "Method")
            continue;
        if (std::find(known.begin(), known.end(), element.tag) == known.end())
        {
            complain("unknown tag <" + printable(element.tag, 64) + "> in " + operation.method +
                     didYouMean(element.tag, known, "", "<", ">"));
            right = false;
        }
        else if (!seen.insert(element.tag).second)
        {
            complain("tag <" + element.tag + "> twice in " + operation.method);
            right = false;
        }
    }
    for (const Field& field : operation.arguments)
    {
        if (*field.tag == '\0')
            continue;
        const std::string* const value = message.find(field.tag);
        if (value == nullptr)
        {
            complain(std::string("missing <") + field.tag + "> in " + operation.method);
            right = false;
        }
        else if (!checkValue(operation, field, *value))
            right = false;
    }
    if (!payload && !message.payload.empty())
    {
        complain("unexpected text " + quoted(message.payload) + " behind the fields of " +
                 operation.method);
        right = false;
    }
    return right;
}

std::string Simulation::request(const std::string& text)
{
    if (text.rfind(signallingPrefix, 0) == 0)
        return Handlers::signalling(*this, text.substr(signallingPrefix.size()));
    const Message message = parse(text);
    const Operation* const operation = findRequest(message.method);
    const std::vector<Handlers::Row>& rows = Handlers::table();
    const auto row =
        std::find_if(rows.begin(), rows.end(),
                     [&](const Handlers::Row& any) { return any.method == message.method; });
    if (operation == nullptr || row == rows.end())
    {
        std::vector<std::string> methods;
        for (const Handlers::Row& any : rows)
            methods.push_back(any.method);
        complain(message.method.empty() ? "no method in " + quoted(text)
                                        : "unknown method " + quoted(message.method) +
                                              didYouMean(message.method, methods));
        return failed;
    }
    if (!checkFields(*operation, message))
        return failed;
    return row->handler(*this, Request(*operation, message));
}

}  // namespace kit::service

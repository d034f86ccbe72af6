#include "CommunicationsServiceTypes.h"
#include "kit/service/EventText.h"
#include "kit/service/Simulation.h"
#include "kit/service/Wording.h"

#include <algorithm>

namespace kit::service
{

using namespace numbers;

namespace
{

const std::string success = "sfiSuccess";
const std::string failed = "sfiFailure";
const std::string signallingPrefix = "SigEvent:";

/// "1 (unconditional), 2 (busy), 3 (noAnswer)"
std::string choices(Meaning meaning)
{
    std::string text;
    for (const NumberName& entry : namesOf(meaning))
        text += (text.empty() ? "" : ", ") + std::to_string(entry.number) + " (" + entry.name + ")";
    return text;
}

}  // namespace

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

/// One function for each request, in the order of the operations.
struct Handlers
{
    using Handler = std::string (*)(Simulation& s, const Request& r);

    /// The line, when calls can be made there; complains otherwise.
    static Line* readyLine(Simulation& s, const Request& r)
    {
        Line* const line = knownLine(s, r, r.text("Line"));
        if (line != nullptr && !line->registered)
        {
            s.failure(r, "line " + line->name + " is not registered, activate first");
            return nullptr;
        }
        return line;
    }

    static Line* knownLine(Simulation& s, const Request& r, const std::string& name)
    {
        Line* const line = s.findLine(name);
        if (line == nullptr)
        {
            std::vector<std::string> names;
            for (const Line& known : s.lines_)
                names.push_back(known.name);
            s.failure(r, "no line " + quoted(name) + suggestion(name, names));
        }
        return line;
    }

    /// The call that a field names, when it is on the line and in a state that fits.
    static Call* call(Simulation& s, const Request& r, const char* tag, int feature,
                      const std::vector<CallState>& states)
    {
        const Line* const line = readyLine(s, r);
        if (line == nullptr)
            return nullptr;
        const int id = r.number(tag);
        Call* const found = s.findCall(id);
        if (found == nullptr || found->line != line->name)
        {
            s.featureFailure(r,
                             id,
                             feature,
                             failureNoSuchCall,
                             "no call " + std::to_string(id) + " on line " + line->name);
            return nullptr;
        }
        if (std::find(states.begin(), states.end(), found->state) == states.end())
        {
            s.featureFailure(r,
                             id,
                             feature,
                             failureWrongState,
                             "call " + std::to_string(id) + " is " +
                                 nameOf(Meaning::callState, found->state));
            return nullptr;
        }
        return found;
    }

    /// Nobody talks on the line but perhaps in this call; complains otherwise.
    static bool lineFree(Simulation& s, const Request& r, int feature, int exceptCall = 0)
    {
        const std::string& line = r.text("Line");
        const Call* const other =
            s.findCall(line, [&](const Call& any) { return any.active() && any.id != exceptCall; });
        if (other == nullptr)
            return true;
        s.featureFailure(r,
                         exceptCall,
                         feature,
                         failureBusy,
                         "call " + std::to_string(other->id) + " on line " + line + " is " +
                             nameOf(Meaning::callState, other->state) + ", hold it first");
        return false;
    }

    static std::string signalling(Simulation& s, const std::string& data)
    {
        s.lastSignalling_ = data;
        return "";
    }

    // --- lifecycle ---

    static std::string activate(Simulation& s, const Request&)
    {
        s.serviceState_ = sfiServiceInService;
        for (Line& line : s.lines_)
            s.registerLine(line, true, registrationDone);
        return success;
    }

    static std::string deactivate(Simulation& s, const Request& r)
    {
        s.serviceState_ = sfiServiceOutOfService;
        for (Line& line : s.lines_)
            s.registerLine(line, false, registrationNone);
        if (r.flag("AllowAutoActivate"))
            s.after(autoActivation,
                    [&s]
                    {
                        s.serviceState_ = sfiServiceInService;
                        for (Line& line : s.lines_)
                            if (!line.registered)
                                s.registerLine(line, true, registrationDone);
                    });
        return success;
    }

    static std::string subscribe(Simulation&, const Request&) { return success; }

    // --- calls ---

    static std::string callClear(Simulation& s, const Request& r)
    {
        Call* const found = call(s,
                                 r,
                                 "CallID",
                                 featureNone,
                                 {callInitiated,
                                  callOffered,
                                  callRinging,
                                  callDelivered,
                                  callConnected,
                                  callHeld,
                                  callConferenced,
                                  callFailed,
                                  callQueued,
                                  callHeldByFarEnd});
        if (found == nullptr)
            return failed;
        s.clear(*found, found->waiting() ? reasonRefused : reasonNormal);
        return success;
    }

    /// The call to dial in: one that is off hook already, or a new one.
    static Call* callToDial(Simulation& s, const Request& r, int feature)
    {
        const Line* const line = readyLine(s, r);
        if (line == nullptr)
            return nullptr;
        const int id = r.number("CallID");
        Call* const known = s.findCall(id);
        if (known != nullptr && known->line == line->name && known->state == callInitiated)
            return known;
        if (known != nullptr)
        {
            s.failure(r,
                      "call " + std::to_string(id) + " is " +
                          nameOf(Meaning::callState, known->state) +
                          " already, 0 lets the service choose a number");
            return nullptr;
        }
        if (!lineFree(s, r, feature, id))
            return nullptr;
        if (s.callsOf(line->name).size() >= maximumCallsPerLine)
        {
            s.failure(r, "too many calls on line " + line->name);
            return nullptr;
        }
        return &s.newCall(line->name, false, id);
    }

    static std::string outgoingCallMake(Simulation& s, const Request& r)
    {
        Call* const made = callToDial(s, r, featureNone);
        if (made == nullptr)
            return failed;
        const int id = made->id;
        const std::string line = made->line;
        const std::string number = plainNumber(r.text("Destination"));
        made->remote.from = s.partyOf(number);
        made->remote.type = s.findLine(number) != nullptr ? callTypeInternal : callTypeExternal;
        if (made->state == callIdle)
            s.setState(*made, callInitiated, reasonNormal);
        const Call* const current =
            s.findCall(line, [&](const Call& any) { return any.id != id && !any.waiting(); });
        if (current != nullptr && (r.flag("BridgeCall") || s.associatedCalls_))
            s.emit(events::incomingAssociatedCall(line, current->id, id));
        if (r.flag("CallCompletionCall"))
            for (CallBack& callBack : s.callBacks_)
                if (callBack.line == line && callBack.destination.number == number &&
                    callBack.state == completionAvailable)
                {
                    // The far end waits for this call, whatever it does otherwise.
                    callBack.state = completionRinging;
                    made->callBack = callBack.id;
                    s.setState(*made, callDelivered, reasonCallBack);
                    s.afterIfStill(*made,
                                   callBackRings,
                                   [&s](Call& still) { s.farEndAnswers(still); });
                    return success;
                }
        s.dial(*made, number);
        return success;
    }

    static std::string acceptCall(Simulation& s, const Request& r)
    {
        Call* const found = call(s, r, "CallID", featureNone, {callOffered});
        if (found == nullptr)
            return failed;
        if (r.flag("AutoAnswer") && !lineFree(s, r, featureNone, found->id))
            return failed;
        s.setState(*found, callRinging, reasonNormal);
        if (r.flag("AutoAnswer"))
            s.answer(*found);
        return success;
    }

    static std::string answerCall(Simulation& s, const Request& r)
    {
        Call* const found = call(s, r, "CallID", featureNone, {callOffered, callRinging});
        if (found == nullptr || !lineFree(s, r, featureNone, found->id))
            return failed;
        s.answer(*found);
        return success;
    }

    static std::string deflectCall(Simulation& s, const Request& r)
    {
        Call* const found = call(s, r, "CallID", featureDeflect, {callOffered, callRinging});
        if (found == nullptr)
            return failed;
        const int id = found->id;
        const std::string& target = r.text("Destination");
        if (plainNumber(target).empty())
            return s.featureFailure(r, id, featureDeflect, failureUnobtainable, "no destination");
        s.divert(*found, target, reasonDeflected, diversionDeflected);
        return s.featureSuccess(r, id, featureDeflect);
    }

    static std::string holdCall(Simulation& s, const Request& r)
    {
        Call* const found =
            call(s, r, "CallID", featureHold, {callConnected, callConferenced, callHeldByFarEnd});
        if (found == nullptr)
            return failed;
        s.holdHere(*found, r.flag("Manual"));
        return s.featureSuccess(r, found->id, featureHold);
    }

    static std::string retrieveCall(Simulation& s, const Request& r)
    {
        Call* const found = call(s, r, "CallID", featureRetrieve, {callHeld});
        if (found == nullptr || !lineFree(s, r, featureRetrieve, found->id))
            return failed;
        s.retrieveHere(*found);
        return s.featureSuccess(r, found->id, featureRetrieve);
    }

    static std::string attendedTransfer(Simulation& s, const Request& r)
    {
        Call* const active = call(s,
                                  r,
                                  "activeCall",
                                  featureAttendedTransfer,
                                  {callConnected, callDelivered, callConferenced});
        if (active == nullptr)
            return failed;
        Call* const held = call(s, r, "heldCall", featureAttendedTransfer, {callHeld});
        if (held == nullptr)
            return failed;
        const int id = active->id;
        s.connectFarEnds(*active, *held);
        return s.featureSuccess(r, id, featureAttendedTransfer);
    }

    static std::string blindTransfer(Simulation& s, const Request& r)
    {
        Call* const found =
            call(s, r, "CallID", featureBlindTransfer, {callConnected, callHeld, callHeldByFarEnd});
        if (found == nullptr)
            return failed;
        const int id = found->id;
        const std::string number = plainNumber(r.text("Destination"));
        const Robot* const robot = findRobot(number);
        const Line* const line = s.findLine(number);
        if (number.empty() || number[0] == unobtainablePrefix ||
            (line != nullptr && !line->registered))
            return s.featureFailure(r,
                                    id,
                                    featureBlindTransfer,
                                    failureUnobtainable,
                                    quoted(number) + " cannot be reached");
        if ((robot != nullptr && robot->reach == Reach::busy) || number == found->line)
            return s.featureFailure(r, id, featureBlindTransfer, failureBusy, number + " is busy");

        Arrival arrival;
        arrival.from = found->remote.from;
        arrival.divertedBy = found->local;
        arrival.diversionReason = diversionUnconditional;
        Call* const own = s.findCall(found->peer);
        found->peer = 0;
        s.clear(*found, reasonTransferred);
        if (own != nullptr)
        {
            own->peer = 0;
            s.changeFarEnd(*own, s.partyOf(number), false, false);
            s.dial(*own, number);
        }
        else if (line != nullptr)
            s.arriveFollowing(number, arrival);
        return s.featureSuccess(r, id, featureBlindTransfer);
    }

    static std::string consult(Simulation& s, const Request& r)
    {
        Call* const first = call(s,
                                 r,
                                 "CallID",
                                 featureConsultation,
                                 {callConnected, callHeldByFarEnd, callHeld, callConferenced});
        if (first == nullptr || !lineFree(s, r, featureConsultation, first->id))
            return failed;
        const int id = first->id;
        if (s.callsOf(first->line).size() >= maximumCallsPerLine)
            return s.featureFailure(r,
                                    id,
                                    featureConsultation,
                                    failureNotAllowed,
                                    "too many calls on line " + first->line);
        if (first->state != callHeld)
            s.holdHere(*first, false);
        Call& second = s.newCall(first->line, false, 0);
        second.heldFor = id;
        second.remote.from = s.partyOf(plainNumber(r.text("Destination")));
        s.setState(second, callInitiated, reasonNormal);
        if (s.associatedCalls_)
            s.emit(events::incomingAssociatedCall(second.line, id, second.id));
        s.dial(second, r.text("Destination"));
        return s.featureSuccess(r, id, featureConsultation);
    }

    static std::string refuseCall(Simulation& s, const Request& r)
    {
        Call* const found = call(s, r, "CallID", featureNone, {callOffered, callRinging});
        if (found == nullptr)
            return failed;
        static const std::map<int, Reason> reasons = {{refuseBusy, reasonBusy},
                                                      {refuseDecline, reasonRefused},
                                                      {refuseUnavailable, reasonUnobtainable},
                                                      {refuseDoNotDisturb, reasonDoNotDisturb}};
        s.clear(*found, reasons.at(r.number("RefuseCallReason")));
        return success;
    }

    static std::string alternateCalls(Simulation& s, const Request& r)
    {
        const Line* const line = readyLine(s, r);
        if (line == nullptr)
            return failed;
        Call* const active =
            s.findCall(line->name,
                       [](const Call& any)
                       { return any.state == callConnected || any.state == callHeldByFarEnd; });
        Call* const held =
            s.findCall(line->name, [](const Call& any) { return any.state == callHeld; });
        if (active == nullptr || held == nullptr)
            return s.featureFailure(r,
                                    0,
                                    featureAlternate,
                                    failureWrongState,
                                    "line " + line->name + " needs a connected and a held call");
        s.holdHere(*active, false);
        s.retrieveHere(*held);
        return s.featureSuccess(r, held->id, featureAlternate);
    }

    static std::string conferenceCall(Simulation& s, const Request& r)
    {
        Call* const active =
            call(s, r, "activeCall", featureConference, {callConnected, callConferenced});
        if (active == nullptr)
            return failed;
        Call* const held = call(s, r, "heldCall", featureConference, {callHeld, callConferenced});
        if (held == nullptr)
            return failed;
        if (active == held)
            return s.featureFailure(r,
                                    active->id,
                                    featureConference,
                                    failureWrongState,
                                    "a conference needs two calls");
        s.startConference(*active, *held);
        return s.featureSuccess(r, active->id, featureConference);
    }

    static std::string generateDigits(Simulation& s, const Request& r)
    {
        Call* const found =
            call(s, r, "activeCall", featureDigits, {callConnected, callConferenced});
        if (found == nullptr)
            return failed;
        const std::string& digits = r.text("digits");
        if (digits.empty() || digits.find_first_not_of("0123456789*#ABCDabcd") != std::string::npos)
            return s.featureFailure(r,
                                    found->id,
                                    featureDigits,
                                    failureNotAllowed,
                                    quoted(digits) + " are not digits (0 to 9, *, #, A to D)");
        found->digits += digits;
        const int id = found->id;
        const bool mailbox = found->remote.from.number == mailboxNumber;
        if (Call* const other = s.findCall(found->peer))
            other->digits += digits;
        s.featureSuccess(r, id, featureDigits);
        if (mailbox)
            s.mailboxDigits(digits);
        return success;
    }

    /// Takes over a call that rings elsewhere: at a colleague's, or at another line of this phone.
    static std::string pickUp(Simulation& s, const Request& r, int feature,
                              const std::string& member)
    {
        const Line* const line = readyLine(s, r);
        if (line == nullptr || !lineFree(s, r, feature, r.number("CallID")))
            return failed;
        const int wanted = r.number("CallID");
        const auto atColleague = std::find_if(
            s.pickups_.begin(),
            s.pickups_.end(),
            [&](const PickupCall& pickup) { return member.empty() || pickup.member == member; });
        Arrival remote;
        int caller = 0;
        if (atColleague != s.pickups_.end())
        {
            remote.from = atColleague->caller;
            s.pickups_.erase(atColleague);
        }
        else
        {
            Call* ringing = nullptr;
            for (auto& entry : s.calls_)
                if (entry.second.waiting() && entry.second.line != line->name &&
                    (member.empty() || entry.second.line == member))
                    ringing = &entry.second;
            if (ringing == nullptr)
                return s.featureFailure(r,
                                        wanted,
                                        feature,
                                        failureNothingToPickUp,
                                        member.empty() ? "nothing rings in the group"
                                                       : "nothing rings at " + quoted(member));
            remote = ringing->remote;
            caller = ringing->peer;
            ringing->peer = 0;
            s.clear(*ringing, reasonPickedUp);
        }
        Call& mine = s.newCall(line->name, true, s.findCall(wanted) == nullptr ? wanted : 0);
        mine.remote = remote;
        mine.robot = findRobot(remote.from.number);
        s.setState(mine, callConnected, reasonPickedUp);
        if (Call* const own = s.findCall(caller))
        {
            s.join(mine, *own);
            s.changeFarEnd(*own, mine.local, false, false);
            s.farEndAnswers(*own);
        }
        return s.featureSuccess(r, mine.id, feature);
    }

    static std::string directedPickup(Simulation& s, const Request& r)
    {
        const std::string member = plainNumber(r.text("CallToBePickedUp"));
        if (member.empty())
            return s.featureFailure(r,
                                    r.number("CallID"),
                                    featureDirectedPickup,
                                    failureNothingToPickUp,
                                    "no number to pick up from");
        return pickUp(s, r, featureDirectedPickup, member);
    }

    static std::string groupPickup(Simulation& s, const Request& r)
    {
        return pickUp(s, r, featureGroupPickup, "");
    }

    // --- features and settings ---

    static std::string callBackRinging(Simulation& s, const Request& r)
    {
        return s.activateCallBack(r, false);
    }

    static std::string callBackBusy(Simulation& s, const Request& r)
    {
        return s.activateCallBack(r, true);
    }

    static std::string cancelCallbacks(Simulation& s, const Request& r)
    {
        const Line* const line = knownLine(s, r, r.text("Line"));
        if (line == nullptr)
            return failed;
        const bool all = r.number("CancelCallBackType") == cancelAll;
        const std::string number = plainNumber(r.text("URI"));
        std::vector<int> ids;
        for (CallBack& callBack : s.callBacks_)
            if (callBack.line == line->name && (all || callBack.destination.number == number))
            {
                callBack.displayOutcome = r.flag("DisplayOutcomeCallUI");
                ids.push_back(callBack.id);
            }
        if (ids.empty())
            return s.failure(r,
                             "line " + line->name + " has no call-back" +
                                 (all ? "" : " for " + quoted(number)));
        for (const int id : ids)
            s.endCallBack(id, completionCancelled);
        return success;
    }

    static std::string setMicrophoneMute(Simulation& s, const Request& r)
    {
        s.muted_ = r.flag("Status");
        return success;
    }

    static std::string setDoNotDisturb(Simulation& s, const Request& r)
    {
        Line* const line = knownLine(s, r, r.text("Line"));
        if (line == nullptr)
            return failed;
        s.setDoNotDisturb(*line, r.flag("doNotDisturbOn"));
        return s.featureSuccess(r, 0, featureDoNotDisturb);
    }

    static std::string setForwarding(Simulation& s, const Request& r)
    {
        Line* const line = knownLine(s, r, r.text("Line"));
        if (line == nullptr)
            return failed;
        const int type = r.number("fwType");
        ForwardingSetting setting;
        setting.on = r.flag("status");
        setting.destination = r.text("uri");
        setting.ringCount = r.number("cfnrRingCount");
        const std::string number = plainNumber(setting.destination);
        std::string why;
        if (setting.on && number.empty())
            why = "no destination";
        else if (setting.on && number == line->name)
            why = "line " + line->name + " cannot be forwarded to itself";
        else if (setting.on && type == forwardNoAnswer &&
                 (setting.ringCount < 1 || setting.ringCount >= ringsUntilCallerGivesUp))
            why = "wrong value " + std::to_string(setting.ringCount) +
                  " for <cfnrRingCount>, 1 to " + std::to_string(ringsUntilCallerGivesUp - 1) +
                  " rings are possible";
        if (!why.empty())
            return s.featureFailure(r, 0, featureForwarding, failureNotAllowed, why);
        line->forwarding[type] = setting;
        return s.featureSuccess(r, 0, featureForwarding);
    }

    static std::string setAssociatedCalls(Simulation& s, const Request& r)
    {
        s.associatedCalls_ = r.flag("associated");
        return success;
    }

    static std::string setLampMode(Simulation& s, const Request& r)
    {
        Line* const line = knownLine(s, r, r.text("Line"));
        if (line == nullptr)
            return failed;
        const int mode = r.number("lampMode");
        if (mode < lampOff || mode > lampFlicker)
            return s.failure(r,
                             "wrong value " + std::to_string(mode) + " for <lampMode>, one of " +
                                 choices(Meaning::lampMode) + " is possible");
        if (r.text("lampId").empty())
            return s.failure(r, "<lampId> is empty");
        line->lamps[r.text("lampId")] = mode;
        return success;
    }

    static std::string securityReinvite(Simulation& s, const Request& r)
    {
        Call* const found =
            call(s, r, "CallID", featureSecurity, {callConnected, callHeldByFarEnd, callHeld});
        if (found == nullptr)
            return failed;
        // Without force it is encrypted; with it, the far end has to say who it is.
        found->security = r.flag("forceFlag") ? securityAuthenticated : securityEncrypted;
        s.tellSecurity(*found);
        return s.featureSuccess(r, found->id, featureSecurity);
    }

    static std::string setInServiceInitiated(Simulation& s, const Request& r)
    {
        const Line* const line = readyLine(s, r);
        if (line == nullptr)
            return "";
        Call* const initiated =
            s.findCall(line->name, [](const Call& any) { return any.state == callInitiated; });
        if (!r.flag("IsInServiceInitiatedState"))
        {
            if (initiated != nullptr)
                s.clear(*initiated, reasonNormal);
        }
        else if (initiated == nullptr && lineFree(s, r, featureNone) &&
                 s.callsOf(line->name).size() < maximumCallsPerLine)
            s.setState(s.newCall(line->name, false, 0), callInitiated, reasonNormal);
        return "";
    }

    static std::string systemStatus(Simulation& s, const Request& r)
    {
        const std::string& status = r.text("SystemStatus");
        std::vector<std::string> known;
        for (const NumberName& entry : namesOf(Meaning::systemStatus))
            known.push_back(entry.name);
        if (std::find(known.begin(), known.end(), status) == known.end())
            return s.failure(r,
                             "unknown system status " + quoted(status) + suggestion(status, known));
        s.systemStatus_ = status;
        s.systemStatusInfo_ = r.text("SystemStatusInfo");
        s.emit(events::systemStatus(s.systemStatus_, s.systemStatusInfo_));
        return success;
    }

    static std::string setServiceState(Simulation& s, const Request& r)
    {
        int state = 0;
        if (!numberOf(Meaning::serviceState, r.text("state"), state))
            return failed;
        const int before = std::exchange(s.serviceState_, state);
        for (Line& line : s.lines_)
        {
            if (state == sfiServiceOutOfService && line.registered)
                s.registerLine(line, false, registrationUnavailable);
            if (state != sfiServiceOutOfService && !line.registered)
                s.registerLine(line, true, registrationDone);
            if ((state == sfiServiceDoNotDisturb) != (before == sfiServiceDoNotDisturb))
                s.setDoNotDisturb(line, state == sfiServiceDoNotDisturb);
        }
        return success;
    }

    // --- queries ---

    static std::string getMicrophoneMute(Simulation& s, const Request&)
    {
        return s.muted_ ? "true" : "false";
    }

    static std::string getDoNotDisturb(Simulation& s, const Request& r)
    {
        const Line* const line = knownLine(s, r, r.text("deviceID"));
        return line == nullptr ? failed : line->doNotDisturb ? "true" : "false";
    }

    static std::string getServiceState(Simulation& s, const Request&)
    {
        return nameOf(Meaning::serviceState, s.serviceState_);
    }

    static std::string getForwarding(Simulation& s, const Request& r)
    {
        // The query names no line: the first one answers for the phone.
        const ForwardingSetting& setting = s.lines_.front().forwarding[r.number("fwType")];
        return element("sfiResult", success) + element("status", setting.on ? "1" : "0") +
               element("uri", setting.destination) +
               element("cfnrRingCount", std::to_string(setting.ringCount));
    }

    static std::string getMessageWaiting(Simulation& s, const Request&)
    {
        const Mailbox& mailbox = s.mailbox_;
        return element("func_return_val", success) + element("Type", std::to_string(messageVoice)) +
               element("newMsgs", std::to_string(mailbox.newMessages)) +
               element("oldMsgs", std::to_string(mailbox.oldMessages)) +
               element("newUrgMsgs", std::to_string(mailbox.newUrgentMessages)) +
               element("oldUrgMsgs", std::to_string(mailbox.oldUrgentMessages)) +
               element("return_type", std::to_string(returnDial)) +
               element("available_info", std::to_string(infoCounters)) +
               element("messages_waiting",
                       std::to_string(mailbox.waiting() ? waitingYes : waitingNo)) +
               element("voiceMailNumber", mailboxNumber);
    }

    static std::string getDevices(Simulation& s, const Request&)
    {
        std::string items;
        for (const Line& line : s.lines_)
            items += "<" + line.name + ">";
        return items;
    }

    static std::string isCallHoldPossible(Simulation& s, const Request& r)
    {
        const Line* const line = knownLine(s, r, r.text("Line"));
        if (line == nullptr)
            return failed;
        const Call* const talking =
            s.findCall(line->name,
                       [](const Call& any) { return any.active() && any.state != callDelivered; });
        return talking != nullptr ? "true" : "false";
    }

    static std::string getManualHold(Simulation& s, const Request& r)
    {
        const Call* const found = s.findCall(r.number("CallID"));
        if (found == nullptr || found->line != r.text("Line"))
            return s.failure(r,
                             "no call " + r.text("CallID") + " on line " + quoted(r.text("Line")));
        return found->manualHold ? "true" : "false";
    }

    // --- server and CSTA ---

    static std::string cstaRequest(Simulation& s, const Request& r)
    {
        const Line* const line = knownLine(s, r, r.text("Line"));
        if (line == nullptr)
            return failed;
        // The peer echoes what it is asked, and has no answer to nothing.
        s.emit(events::b2buaCstaResponse(line->name, !r.payload().empty(), r.payload()));
        return success;
    }

    static std::string uacstaMessage(Simulation& s, const Request& r)
    {
        if (const Line* const line = knownLine(s, r, r.text("Line")))
            s.emit(events::b2buaCstaEventOrRequest(line->name, r.payload()));
        return "";
    }

    static std::string serverFeatures(Simulation& s, const Request& r)
    {
        if (Line* const line = knownLine(s, r, r.text("Line")))
        {
            line->serverFeatures = r.flag("initialize");
            s.emit(events::serverFeatureStatus(line->name,
                                               line->serverFeatures ? words::serverFeaturesOn
                                                                    : words::serverFeaturesOff));
        }
        return "";
    }

    static std::string callBackFeatureCall(Simulation& s, const Request& r)
    {
        CallBack* const callBack = s.findCallBack(r.number("instanceId"));
        if (callBack == nullptr)
            s.failure(r, "no call-back " + r.text("instanceId"));
        else
            callBack->featureCall = r.text("CallID");
        return "";
    }

    static std::string setAgentState(Simulation& s, const Request& r)
    {
        Line* const line = knownLine(s, r, r.text("Line"));
        if (line == nullptr)
            return failed;
        const std::string& state = r.text("agentState");
        std::vector<std::string> known;
        for (const NumberName& entry : namesOf(Meaning::agentState))
            known.push_back(entry.name);
        if (std::find(known.begin(), known.end(), state) == known.end())
            return s.failure(r, "unknown agent state " + quoted(state) + suggestion(state, known));
        line->agentState = state;
        s.emit(events::agentState(line->name, state));
        return success;
    }

    static std::string removeParticipant(Simulation& s, const Request& r)
    {
        const Call* const any = s.findCall(r.number("callID"));
        if (any == nullptr || any->conference == 0)
        {
            s.failure(r, "call " + r.text("callID") + " is in no conference");
            return "";
        }
        const std::string number = plainNumber(r.text("remoteParticipant"));
        for (const int id : s.membersOf(any->conference))
        {
            Call& member = *s.findCall(id);
            if (std::to_string(id) != r.text("conferenceMemberId") &&
                (number.empty() || member.remote.from.number != number))
                continue;
            s.clear(member, reasonNormal);
            return "";
        }
        s.failure(r,
                  "conference " + std::to_string(any->conference) + " has no participant " +
                      quoted(r.text("remoteParticipant")) + " and no member " +
                      quoted(r.text("conferenceMemberId")));
        return "";
    }

    struct Row
    {
        const char* method;
        Handler handler;
    };

    static const std::vector<Row>& table()
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
};

std::string Simulation::activateCallBack(const Request& request, bool busy)
{
    const Line* const line = Handlers::knownLine(*this, request, request.text("Line"));
    if (line == nullptr)
        return failed;
    const auto refuse = [&](const char* word, const std::string& why)
    {
        failure(request, why);
        return std::string(word);
    };
    const int callId = request.number("CallID");
    const Call* const call = findCall(callId);
    if (call == nullptr || call->line != line->name)
        return refuse("sfiFailureCallBackNoCallInfo",
                      "no call " + std::to_string(callId) + " on line " + line->name);
    const CallState state = busy ? callFailed : callDelivered;
    if (call->incoming || call->state != state || (busy && call->reason != reasonBusy))
        return refuse("sfiFailureCallBackInvalidState",
                      "call " + std::to_string(callId) + " is " +
                          nameOf(Meaning::callState, call->state) + ", not " +
                          (busy ? "failed because of a busy far end" : "ringing at the far end"));
    std::size_t count = 0;
    for (const CallBack& callBack : callBacks_)
    {
        if (callBack.line != line->name)
            continue;
        ++count;
        if (callBack.destination.number == call->remote.from.number)
            return refuse("sfiFailureCallBackAllreadyExists",
                          "line " + line->name + " has a call-back for " +
                              quoted(call->remote.from.number) + " already");
    }
    if (count >= maximumCallBacksPerLine)
        return refuse("sfiFailureCallBackToMany",
                      "line " + line->name + " has " + std::to_string(count) + " call-backs, " +
                          std::to_string(maximumCallBacksPerLine) + " are possible");
    CallBack callBack;
    callBack.id = ++lastCallBackId_;
    callBack.line = line->name;
    callBack.destination = call->remote.from;
    callBack.type = busy ? completionBusy : completionNoAnswer;
    callBacks_.push_back(callBack);
    emit(events::callCompletion(callBack, completionRequested));
    followCallBack(callBack.id);
    return featureSuccess(request, callId, busy ? featureCallBackBusy : featureCallBackRinging);
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
        known = known && std::any_of(names.begin(),
                                     names.end(),
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
            complain("unknown tag <" + shown(element.tag) + "> in " + operation.method +
                     suggestion(element.tag, known, "<", ">"));
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
        std::find_if(rows.begin(),
                     rows.end(),
                     [&](const Handlers::Row& any) { return any.method == message.method; });
    if (operation == nullptr || row == rows.end())
    {
        std::vector<std::string> methods;
        for (const Handlers::Row& any : rows)
            methods.push_back(any.method);
        complain(message.method.empty() ? "no method in " + quoted(text)
                                        : "unknown method " + quoted(message.method) +
                                              suggestion(message.method, methods));
        return failed;
    }
    if (!checkFields(*operation, message))
        return failed;
    return row->handler(*this, Request(*operation, message));
}

}  // namespace kit::service

#include "CommunicationsServiceTypes.h"
#include "kit/language/Wording.h"
#include "kit/service/EventText.h"
#include "kit/service/Handlers.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kit::service
{

using namespace numbers;

std::string Handlers::callClear(Simulation& s, const Request& r)
{
    Call* const found = call(s, r, "CallID", featureNone,
                             {callInitiated, callOffered, callRinging, callDelivered, callConnected,
                              callHeld, callConferenced, callFailed, callQueued, callHeldByFarEnd});
    if (found == nullptr)
        return failed;
    s.clear(*found, found->waiting() ? reasonRefused : reasonNormal);
    return success;
}

/// The call to dial in: one that is off hook already, or a new one.
Call* Handlers::callToDial(Simulation& s, const Request& r, int feature)
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
        s.failure(r, "call " + std::to_string(id) + " is " +
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

std::string Handlers::outgoingCallMake(Simulation& s, const Request& r)
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
                s.afterIfStill(*made, callBackRings, [&s](Call& still) { s.farEndAnswers(still); });
                return success;
            }
    s.dial(*made, number);
    return success;
}

std::string Handlers::acceptCall(Simulation& s, const Request& r)
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

std::string Handlers::answerCall(Simulation& s, const Request& r)
{
    Call* const found = call(s, r, "CallID", featureNone, {callOffered, callRinging});
    if (found == nullptr || !lineFree(s, r, featureNone, found->id))
        return failed;
    s.answer(*found);
    return success;
}

std::string Handlers::deflectCall(Simulation& s, const Request& r)
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

std::string Handlers::holdCall(Simulation& s, const Request& r)
{
    Call* const found =
        call(s, r, "CallID", featureHold, {callConnected, callConferenced, callHeldByFarEnd});
    if (found == nullptr)
        return failed;
    s.holdHere(*found, r.flag("Manual"));
    return s.featureSuccess(r, found->id, featureHold);
}

std::string Handlers::retrieveCall(Simulation& s, const Request& r)
{
    Call* const found = call(s, r, "CallID", featureRetrieve, {callHeld});
    if (found == nullptr || !lineFree(s, r, featureRetrieve, found->id))
        return failed;
    s.retrieveHere(*found);
    return s.featureSuccess(r, found->id, featureRetrieve);
}

std::string Handlers::attendedTransfer(Simulation& s, const Request& r)
{
    Call* const active = call(s, r, "activeCall", featureAttendedTransfer,
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

std::string Handlers::blindTransfer(Simulation& s, const Request& r)
{
    Call* const found =
        call(s, r, "CallID", featureBlindTransfer, {callConnected, callHeld, callHeldByFarEnd});
    if (found == nullptr)
        return failed;
    const int id = found->id;
    const std::string number = plainNumber(r.text("Destination"));
    const Robot* const robot = findRobot(number);
    const Line* const line = s.findLine(number);
    if (number.empty() || number[0] == unobtainablePrefix || (line != nullptr && !line->registered))
        return s.featureFailure(r, id, featureBlindTransfer, failureUnobtainable,
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

std::string Handlers::consult(Simulation& s, const Request& r)
{
    Call* const first = call(s, r, "CallID", featureConsultation,
                             {callConnected, callHeldByFarEnd, callHeld, callConferenced});
    if (first == nullptr || !lineFree(s, r, featureConsultation, first->id))
        return failed;
    const int id = first->id;
    if (s.callsOf(first->line).size() >= maximumCallsPerLine)
        return s.featureFailure(r, id, featureConsultation, failureNotAllowed,
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

std::string Handlers::refuseCall(Simulation& s, const Request& r)
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

std::string Handlers::alternateCalls(Simulation& s, const Request& r)
{
    const Line* const line = readyLine(s, r);
    if (line == nullptr)
        return failed;
    Call* const active =
        s.findCall(line->name, [](const Call& any)
                   { return any.state == callConnected || any.state == callHeldByFarEnd; });
    Call* const held =
        s.findCall(line->name, [](const Call& any) { return any.state == callHeld; });
    if (active == nullptr || held == nullptr)
        return s.featureFailure(r, 0, featureAlternate, failureWrongState,
                                "line " + line->name + " needs a connected and a held call");
    s.holdHere(*active, false);
    s.retrieveHere(*held);
    return s.featureSuccess(r, held->id, featureAlternate);
}

std::string Handlers::conferenceCall(Simulation& s, const Request& r)
{
    Call* const active =
        call(s, r, "activeCall", featureConference, {callConnected, callConferenced});
    if (active == nullptr)
        return failed;
    Call* const held = call(s, r, "heldCall", featureConference, {callHeld, callConferenced});
    if (held == nullptr)
        return failed;
    if (active == held)
        return s.featureFailure(r, active->id, featureConference, failureWrongState,
                                "a conference needs two calls");
    s.startConference(*active, *held);
    return s.featureSuccess(r, active->id, featureConference);
}

std::string Handlers::generateDigits(Simulation& s, const Request& r)
{
    Call* const found = call(s, r, "activeCall", featureDigits, {callConnected, callConferenced});
    if (found == nullptr)
        return failed;
    const std::string& digits = r.text("digits");
    if (digits.empty() || digits.find_first_not_of("0123456789*#ABCDabcd") != std::string::npos)
        return s.featureFailure(r, found->id, featureDigits, failureNotAllowed,
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
std::string Handlers::pickUp(Simulation& s, const Request& r, int feature,
                             const std::string& member)
{
    const Line* const line = readyLine(s, r);
    if (line == nullptr || !lineFree(s, r, feature, r.number("CallID")))
        return failed;
    const int wanted = r.number("CallID");
    const auto atColleague = std::find_if(s.pickups_.begin(), s.pickups_.end(),
                                          [&](const PickupCall& pickup)
                                          { return member.empty() || pickup.member == member; });
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
            return s.featureFailure(r, wanted, feature, failureNothingToPickUp,
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

std::string Handlers::directedPickup(Simulation& s, const Request& r)
{
    const std::string member = plainNumber(r.text("CallToBePickedUp"));
    if (member.empty())
        return s.featureFailure(r, r.number("CallID"), featureDirectedPickup,
                                failureNothingToPickUp, "no number to pick up from");
    return pickUp(s, r, featureDirectedPickup, member);
}

std::string Handlers::groupPickup(Simulation& s, const Request& r)
{
    return pickUp(s, r, featureGroupPickup, "");
}

}  // namespace kit::service

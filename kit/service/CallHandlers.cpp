#include "kit/service/Handlers.h"

#include "kit/language/Wording.h"

#include <map>

namespace kit::service
{

using namespace numbers;

namespace
{

std::string callClear(Simulation& s, const Request& r)
{
    Call& found = r.call("CallID", featureNone,
                         {callInitiated, callOffered, callRinging, callDelivered, callConnected,
                          callHeld, callConferenced, callFailed, callQueued, callHeldByFarEnd});
    s.calls.clear(found, found.waiting() ? reasonRefused : reasonNormal);
    return success;
}

/// The call to dial in: one that is off hook already, or a new one.
Call& callToDial(Simulation& s, const Request& r)
{
    const Line& line = r.readyLine();
    const int id = r.number("CallID");
    Call* const known = s.calls.find(id);
    if (known != nullptr && known->line == line.name && known->state == callInitiated)
        return *known;
    if (known != nullptr)
        r.refuse("call " + std::to_string(id) + " is " + nameOf(Meaning::callState, known->state) +
                 " already, 0 lets the service choose a number");
    r.needFreeLine(featureNone, id);
    if (s.calls.full(line.name))
        r.refuse("too many calls on line " + line.name);
    return s.calls.create(line.name, false, id);
}

std::string outgoingCallMake(Simulation& s, const Request& r)
{
    Call& made = callToDial(s, r);
    const int id = made.id;
    const std::string line = made.line;
    const std::string number = plainNumber(r.text("Destination"));
    made.remote.from = s.partyOf(number);
    if (made.state == callIdle)
        s.calls.setState(made, callInitiated, reasonNormal);
    const Call* const current =
        s.calls.find(line, [&](const Call& any) { return any.id != id && !any.waiting(); });
    if (current != nullptr && (r.flag("BridgeCall") || s.settings.associatedCalls))
        s.outbox.incomingAssociatedCall(line, current->id, id);
    if (r.flag("CallCompletionCall") && s.callBacks.carriedOutBy(made, number))
    {
        // The far end waits for this call, whatever it does otherwise.
        s.calls.setState(made, callDelivered, reasonCallBack);
        s.calls.afterIfStill(made, callBackRings, [&s](Call& still) { s.farEnd.answers(still); });
        return success;
    }
    s.calls.dial(made, number);
    return success;
}

std::string acceptCall(Simulation& s, const Request& r)
{
    Call& found = r.call("CallID", featureNone, {callOffered});
    if (r.flag("AutoAnswer"))
        r.needFreeLine(featureNone, found.id);
    s.calls.setState(found, callRinging, reasonNormal);
    if (r.flag("AutoAnswer"))
        s.calls.answer(found);
    return success;
}

std::string answerCall(Simulation& s, const Request& r)
{
    Call& found = r.call("CallID", featureNone, {callOffered, callRinging});
    r.needFreeLine(featureNone, found.id);
    s.calls.answer(found);
    return success;
}

std::string deflectCall(Simulation& s, const Request& r)
{
    Call& found = r.call("CallID", featureDeflect, {callOffered, callRinging});
    const int id = found.id;
    const std::string& target = r.text("Destination");
    if (plainNumber(target).empty())
        r.refuseFeature(id, featureDeflect, failureUnobtainable, "no destination");
    s.calls.divert(found, target, reasonDeflected, diversionDeflected);
    return r.featureSuccess(id, featureDeflect);
}

std::string holdCall(Simulation& s, const Request& r)
{
    Call& found = r.call("CallID", featureHold, {callConnected, callConferenced, callHeldByFarEnd});
    s.calls.hold(found, r.flag("Manual"));
    return r.featureSuccess(found.id, featureHold);
}

std::string retrieveCall(Simulation& s, const Request& r)
{
    Call& found = r.call("CallID", featureRetrieve, {callHeld});
    r.needFreeLine(featureRetrieve, found.id);
    s.calls.retrieve(found);
    return r.featureSuccess(found.id, featureRetrieve);
}

std::string attendedTransfer(Simulation& s, const Request& r)
{
    Call& active = r.call("activeCall", featureAttendedTransfer,
                          {callConnected, callDelivered, callConferenced});
    Call& held = r.call("heldCall", featureAttendedTransfer, {callHeld});
    const int id = active.id;
    s.farEnd.connect(active, held);
    return r.featureSuccess(id, featureAttendedTransfer);
}

std::string blindTransfer(Simulation& s, const Request& r)
{
    Call& found =
        r.call("CallID", featureBlindTransfer, {callConnected, callHeld, callHeldByFarEnd});
    const int id = found.id;
    const std::string number = plainNumber(r.text("Destination"));
    const RobotPointer robot = s.robots.find(number);
    const Line* const line = s.lines.find(number);
    if (number.empty() || number[0] == unobtainablePrefix || (line != nullptr && !line->registered))
        r.refuseFeature(id, featureBlindTransfer, failureUnobtainable,
                        quoted(number) + " cannot be reached");
    if ((robot != nullptr && robot->reach == Reach::busy) || number == found.line)
        r.refuseFeature(id, featureBlindTransfer, failureBusy, number + " is busy");

    Arrival arrival;
    arrival.from = found.remote.from;
    arrival.divertedBy = found.local;
    arrival.diversionReason = diversionUnconditional;
    Call* const own = s.calls.find(found.peer);
    found.peer = 0;
    s.calls.clear(found, reasonTransferred);
    if (own != nullptr)
    {
        own->peer = 0;
        own->remote.divertedBy = arrival.divertedBy;
        own->remote.diversionReason = arrival.diversionReason;
        s.farEnd.becomes(*own, s.partyOf(number), false, false);
        s.calls.dial(*own, number);
    }
    else if (line != nullptr)
        s.calls.arriveFollowing(number, arrival);
    return r.featureSuccess(id, featureBlindTransfer);
}

std::string consult(Simulation& s, const Request& r)
{
    Call& first = r.call("CallID", featureConsultation,
                         {callConnected, callHeldByFarEnd, callHeld, callConferenced});
    r.needFreeLine(featureConsultation, first.id);
    const int id = first.id;
    if (s.calls.full(first.line))
        r.refuseFeature(id, featureConsultation, failureNotAllowed,
                        "too many calls on line " + first.line);
    if (first.state != callHeld)
        s.calls.hold(first, false);
    Call& second = s.calls.create(first.line, false, 0);
    second.remote.from = s.partyOf(plainNumber(r.text("Destination")));
    s.calls.setState(second, callInitiated, reasonNormal);
    if (s.settings.associatedCalls)
        s.outbox.incomingAssociatedCall(second.line, id, second.id);
    s.calls.dial(second, r.text("Destination"));
    return r.featureSuccess(id, featureConsultation);
}

std::string refuseCall(Simulation& s, const Request& r)
{
    Call& found = r.call("CallID", featureNone, {callOffered, callRinging});
    static const std::map<int, Reason> reasons = {{refuseBusy, reasonBusy},
                                                  {refuseDecline, reasonRefused},
                                                  {refuseUnavailable, reasonUnobtainable},
                                                  {refuseDoNotDisturb, reasonDoNotDisturb}};
    s.calls.clear(found, reasons.at(r.number("RefuseCallReason")));
    return success;
}

std::string alternateCalls(Simulation& s, const Request& r)
{
    const Line& line = r.readyLine();
    Call* const active =
        s.calls.find(line.name, [](const Call& any)
                     { return any.state == callConnected || any.state == callHeldByFarEnd; });
    Call* const held =
        s.calls.find(line.name, [](const Call& any) { return any.state == callHeld; });
    if (active == nullptr || held == nullptr)
        r.refuseFeature(0, featureAlternate, failureWrongState,
                        "line " + line.name + " needs a connected and a held call");
    s.calls.hold(*active, false);
    s.calls.retrieve(*held);
    return r.featureSuccess(held->id, featureAlternate);
}

std::string conferenceCall(Simulation& s, const Request& r)
{
    Call& active = r.call("activeCall", featureConference, {callConnected, callConferenced});
    Call& held = r.call("heldCall", featureConference, {callHeld, callConferenced});
    if (&active == &held)
        r.refuseFeature(active.id, featureConference, failureWrongState,
                        "a conference needs two calls");
    s.conferences.start(active, held);
    return r.featureSuccess(active.id, featureConference);
}

std::string generateDigits(Simulation& s, const Request& r)
{
    Call& found = r.call("activeCall", featureDigits, {callConnected, callConferenced});
    const std::string& digits = r.text("digits");
    if (digits.empty() || digits.find_first_not_of("0123456789*#ABCDabcd") != std::string::npos)
        r.refuseFeature(found.id, featureDigits, failureNotAllowed,
                        quoted(digits) + " are not digits (0 to 9, *, #, A to D)");
    found.digits += digits;
    const int id = found.id;
    const bool mailbox = found.remote.from.number == mailboxNumber;
    if (Call* const other = s.calls.find(found.peer))
        other->digits += digits;
    r.featureSuccess(id, featureDigits);
    if (mailbox)
        s.voiceMail.hear(digits);
    return success;
}

/// Takes over a call that rings elsewhere: at a colleague's, or at another line of this phone.
std::string pickUp(Simulation& s, const Request& r, int feature, const std::string& member)
{
    const Line& line = r.readyLine();
    r.needFreeLine(feature, r.number("CallID"));
    const int wanted = r.number("CallID");
    Arrival remote;
    int caller = 0;
    PickupCall atColleague;
    if (s.calls.takeFromColleague(member, atColleague))
        remote.from = atColleague.caller;
    else
    {
        const Call* last = nullptr;
        for (const auto& entry : s.calls.all())
            if (entry.second.waiting() && entry.second.line != line.name &&
                (member.empty() || entry.second.line == member))
                last = &entry.second;
        Call* const ringing = last == nullptr ? nullptr : s.calls.find(last->id);
        if (ringing == nullptr)
            r.refuseFeature(wanted, feature, failureNothingToPickUp,
                            member.empty() ? "nothing rings in the group"
                                           : "nothing rings at " + quoted(member));
        remote = ringing->remote;
        caller = ringing->peer;
        ringing->peer = 0;
        s.calls.clear(*ringing, reasonPickedUp);
    }
    Call& mine = s.calls.create(line.name, true, s.calls.find(wanted) == nullptr ? wanted : 0);
    mine.remote = remote;
    mine.robot = s.robots.find(remote.from.number);
    s.calls.setState(mine, callConnected, reasonPickedUp);
    if (Call* const own = s.calls.find(caller))
    {
        s.calls.join(mine, *own);
        s.farEnd.becomes(*own, mine.local, false, false);
        s.farEnd.answers(*own);
    }
    return r.featureSuccess(mine.id, feature);
}

std::string directedPickup(Simulation& s, const Request& r)
{
    const std::string member = plainNumber(r.text("CallToBePickedUp"));
    if (member.empty())
        r.refuseFeature(r.number("CallID"), featureDirectedPickup, failureNothingToPickUp,
                        "no number to pick up from");
    return pickUp(s, r, featureDirectedPickup, member);
}

std::string groupPickup(Simulation& s, const Request& r)
{
    return pickUp(s, r, featureGroupPickup, "");
}

}  // namespace

const std::vector<Handler>& callHandlers()
{
    static const std::vector<Handler> rows = {
        {"CallClearRequest", callClear},    {"OutgoingCallMakeRequest", outgoingCallMake},
        {"AcceptCall", acceptCall},         {"AnswerCall", answerCall},
        {"DeflectCall", deflectCall},       {"HoldCall", holdCall},
        {"RetrieveCall", retrieveCall},     {"AttendedTransfer", attendedTransfer},
        {"BlindTransfer", blindTransfer},   {"Consult", consult},
        {"RefuseCall", refuseCall},         {"DirectedPickupCall", directedPickup},
        {"GroupPickupCall", groupPickup},   {"GenerateDigits", generateDigits},
        {"ConferenceCall", conferenceCall}, {"AlternateCalls", alternateCalls},
    };
    return rows;
}

}  // namespace kit::service

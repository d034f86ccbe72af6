#include "kit/service/Calls.h"

#include "kit/service/Simulation.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kit::service
{

using namespace numbers;

Call* Calls::find(int id)
{
    const auto found = calls_.find(id);
    return found == calls_.end() ? nullptr : &found->second;
}

Call* Calls::find(const std::string& line, const std::function<bool(const Call&)>& wanted)
{
    for (auto& entry : calls_)
        if (entry.second.line == line && wanted(entry.second))
            return &entry.second;
    return nullptr;
}

std::vector<int> Calls::on(const std::string& line) const
{
    std::vector<int> ids;
    for (const auto& entry : calls_)
        if (entry.second.line == line)
            ids.push_back(entry.first);
    return ids;
}

bool Calls::inConversation(const std::string& line)
{
    return find(line, [](const Call& call) { return call.active(); }) != nullptr;
}

void Calls::afterIfStill(const Call& call, Time time, std::function<void(Call&)> action)
{
    s_.clock.after(time,
                   [this, id = call.id, stage = call.stage, action = std::move(action)]
                   {
                       Call* const still = find(id);
                       if (still != nullptr && still->stage == stage)
                           action(*still);
                   });
}

void Calls::whileWaiting(int id, Time time, std::function<void(Call&)> action)
{
    s_.clock.after(time,
                   [this, id, action = std::move(action)]
                   {
                       Call* const still = find(id);
                       if (still != nullptr && still->incoming && still->waiting())
                           action(*still);
                   });
}

// --- the life of a call ---

/// The wanted number when it is free, otherwise the next one.
int Calls::freeId(int wanted) const
{
    if (wanted > 0 && calls_.count(wanted) == 0)
        return wanted;
    int id = last_;
    do
        id = id == std::numeric_limits<int>::max() ? 1 : id + 1;
    while (calls_.count(id) != 0);
    return id;
}

Call& Calls::create(const std::string& line, bool incoming, int wantedId)
{
    const int id = freeId(wantedId);
    // An application's own number is not given again soon either.
    last_ = id == wantedId ? std::max(last_, id) : id;
    Call& call = calls_[id];
    call.id = id;
    call.line = line;
    call.incoming = incoming;
    call.local = s_.partyOf(line);
    return call;
}

void Calls::setState(Call& call, CallState state, Reason reason)
{
    call.state = state;
    call.reason = reason;
    ++call.stage;
    s_.outbox.callStateChange(call);
    s_.farEnd.follow(call);
}

/// An outgoing call did not come about; it stays to be seen for a while.
void Calls::fail(Call& call, Reason reason)
{
    setState(call, callFailed, reason);
    afterIfStill(call, failedCallStays, [this](Call& still) { clear(still, reasonNormal); });
}

/// Ends the call at this end. The reference is dead afterwards.
void Calls::clear(Call& call, Reason reason)
{
    const int id = call.id;
    const int peer = call.peer;
    const int callBack = call.callBack;
    const bool waited = call.waiting();
    const bool missed = waited && (reason == reasonNoAnswer || reason == reasonFarEndCleared ||
                                   reason == reasonOutOfService);
    if (missed)
        s_.outbox.incomingCallMissed(call, reason);
    if (call.conference != 0)
        s_.conferences.leave(call);
    setState(call, callCleared, reason);
    calls_.erase(id);

    if (callBack != 0)
    {
        if (!waited)
            s_.callBacks.end(callBack, completionDone);
        else
            s_.callBacks.fail(callBack, missed ? completionNotAnswered : completionRefused);
    }
    Call* const other = find(peer);
    if (other == nullptr)
        return;
    other->peer = 0;
    if (!waited)
        s_.farEnd.hangsUp(*other);
    else if (reason != reasonForwarded && reason != reasonDeflected)
        s_.farEnd.fails(*other, reason == reasonFarEndCleared ? reasonNoAnswer : reason);
}

/// Somebody here answers.
void Calls::answer(Call& call)
{
    setState(call, callConnected, reasonNormal);
    if (Call* const caller = find(call.peer))
        s_.farEnd.answers(*caller);
}

/// Calls a number from a call of this phone.
void Calls::dial(Call& call, const std::string& dialled)
{
    std::string number = plainNumber(dialled);
    for (int hops = 0; hops <= maximumForwardings; ++hops)
    {
        call.remote.from = s_.partyOf(number);
        call.robot = s_.robots.find(number);
        call.stepsDone = 0;
        if (s_.lines.find(number) == nullptr)
        {
            const bool nobody = number.empty() || number[0] == unobtainablePrefix;
            const Reach reach = nobody                  ? Reach::unobtainable
                                : call.robot == nullptr ? Reach::rings
                                                        : call.robot->reach;
            if (reach == Reach::rings)
                setState(call, callDelivered, hops == 0 ? reasonNormal : reasonForwarded);
            else
                fail(call, reach == Reach::busy ? reasonBusy : reasonUnobtainable);
            return;
        }
        Arrival arrival;
        arrival.from = call.local;
        arrival.type = callTypeInternal;
        arrival.priority = call.remote.priority;
        arrival.forwardings = call.remote.forwardings;
        arrival.peer = call.id;
        arrival.divertedBy = call.remote.divertedBy;
        arrival.diversionReason = call.remote.diversionReason;
        const int id = call.id;
        const ArrivalOutcome outcome =
            number == call.line ? ArrivalOutcome{ArrivalOutcome::failed, 0, reasonBusy, ""}
                                : arrive(number, arrival);
        if (find(id) == nullptr)
            return;
        if (outcome.kind == ArrivalOutcome::rings)
        {
            call.peer = outcome.callId;
            setState(call, callDelivered, hops == 0 ? reasonNormal : reasonForwarded);
            return;
        }
        if (outcome.kind == ArrivalOutcome::failed)
        {
            fail(call, outcome.reason);
            return;
        }
        call.remote.divertedBy = s_.partyOf(number);
        call.remote.diversionReason = diversionUnconditional;
        number = outcome.target;
    }
    fail(call, reasonUnobtainable);
}

ArrivalOutcome Calls::arrive(const std::string& lineName, const Arrival& arrival)
{
    Line* const line = s_.lines.find(lineName);
    if (line == nullptr || !line->registered)
        return {ArrivalOutcome::failed, 0, reasonOutOfService, ""};
    // Only a call that comes through gets a place; the others need one for their events.
    Call notYet;
    notYet.id = freeId(0);
    notYet.line = lineName;
    notYet.incoming = true;
    notYet.local = s_.partyOf(lineName);
    notYet.remote = arrival;
    last_ = notYet.id;

    const auto forwarded = [&](Forwarding type) -> const ForwardingSetting*
    {
        const ForwardingSetting& setting = line->forwarding[type];
        return setting.on && !setting.destination.empty() ? &setting : nullptr;
    };
    const ForwardingSetting* forwarding = forwarded(forwardUnconditional);
    if (forwarding == nullptr && inConversation(lineName))
        forwarding = forwarded(forwardBusy);
    if (forwarding != nullptr)
    {
        s_.outbox.callForwarded(notYet, forwarding->destination, reasonForwarded);
        return {ArrivalOutcome::forwarded, 0, reasonForwarded,
                plainNumber(forwarding->destination)};
    }
    if (line->doNotDisturb || s_.settings.serviceState == sfiServiceDoNotDisturb)
    {
        s_.outbox.incomingCallMissed(notYet, reasonDoNotDisturb);
        return {ArrivalOutcome::failed, 0, reasonDoNotDisturb, ""};
    }
    Call* const weaker = find(lineName, [&](const Call& call)
                              { return call.active() && call.remote.priority < arrival.priority; });
    if (weaker != nullptr && arrival.priority >= priorityImmediate)
        preempt(*weaker, arrival.priority, preemptionHigherPriority, "a call of higher priority");
    if (full(lineName))
    {
        s_.outbox.incomingCallMissed(notYet, reasonBusy);
        return {ArrivalOutcome::failed, 0, reasonBusy, ""};
    }

    Call* const current = find(lineName, [](const Call& call) { return !call.waiting(); });
    Call& call = calls_[notYet.id] = notYet;
    call.peer = arrival.peer;
    call.robot = s_.robots.find(arrival.from.number);
    s_.outbox.incomingCall(call);
    setState(call, callOffered, reasonNormal);
    if (s_.settings.associatedCalls && current != nullptr)
        s_.outbox.incomingAssociatedCall(lineName, current->id, call.id);

    // Counted from the offer on, whether or not somebody has accepted meanwhile.
    if (const ForwardingSetting* const noAnswer = forwarded(forwardNoAnswer))
        whileWaiting(call.id, ringInterval * noAnswer->ringCount,
                     [this, target = noAnswer->destination](Call& still)
                     { divert(still, target, reasonForwarded, diversionNoAnswer); });
    whileWaiting(call.id, ringInterval * ringsUntilCallerGivesUp,
                 [this](Call& still) { clear(still, reasonNoAnswer); });
    return {ArrivalOutcome::rings, call.id, reasonNormal, ""};
}

ArrivalOutcome Calls::arriveFollowing(const std::string& lineName, Arrival arrival)
{
    std::string number = lineName;
    for (int hops = 0; hops <= maximumForwardings; ++hops)
    {
        if (s_.lines.find(number) == nullptr)
        {
            if (number == mailboxNumber)
                s_.clock.after(messageLength, [this] { s_.voiceMail.leave(false); });
            return {ArrivalOutcome::forwarded, 0, reasonForwarded, number};
        }
        const ArrivalOutcome outcome = arrive(number, arrival);
        if (outcome.kind != ArrivalOutcome::forwarded)
            return outcome;
        arrival.divertedBy = s_.partyOf(number);
        arrival.diversionReason = inConversation(number) ? diversionBusy : diversionUnconditional;
        number = outcome.target;
    }
    return {ArrivalOutcome::failed, 0, reasonUnobtainable, ""};
}

/// Sends a waiting call elsewhere. The reference is dead afterwards.
void Calls::divert(Call& call, const std::string& target, Reason reason, DiversionReason diversion)
{
    if (call.remote.forwardings >= maximumForwardings)
    {
        clear(call, reasonNoAnswer);
        return;
    }
    const std::string number = plainNumber(target);
    Arrival arrival = call.remote;
    ++arrival.forwardings;
    arrival.divertedBy = call.local;
    arrival.diversionReason = diversion;
    const int caller = call.peer;
    s_.outbox.callForwarded(call, target, reason);
    clear(call, reason);
    if (Call* const own = find(caller))
    {
        own->remote.forwardings = arrival.forwardings;
        own->remote.divertedBy = arrival.divertedBy;
        own->remote.diversionReason = diversion;
        dial(*own, number);
    }
    else
        arriveFollowing(number, arrival);
}

void Calls::hold(Call& call, bool manual)
{
    call.manualHold = manual;
    setState(call, callHeld, reasonNormal);
    s_.outbox.callHeld(call);
    if (Call* const other = find(call.peer))
        s_.farEnd.holds(*other);
}

void Calls::retrieve(Call& call)
{
    call.manualHold = false;
    setState(call, call.conference != 0 ? callConferenced : callConnected, reasonNormal);
    s_.outbox.callRetrieved(call, call.conference != 0);
    if (Call* const other = find(call.peer))
        s_.farEnd.retrieves(*other);
}

/// Two calls of this phone become the two ends of one.
void Calls::join(Call& call, Call& other)
{
    call.peer = other.id;
    other.peer = call.id;
}

// --- what is told of a call ---

void Calls::preempt(Call& call, int priority, int cause, const std::string& text)
{
    s_.outbox.preemptionStatusChanged(call, priority, cause, text);
    call.preemptionCause = cause;
    call.preemptionText = text;
    clear(call, reasonPreempted);
}

void Calls::tellSecurity(const Call& call)
{
    std::vector<int> ids;
    std::vector<std::string> uris;
    for (const auto& entry : calls_)
        if (entry.second.recorded)
        {
            ids.push_back(entry.first);
            uris.push_back(Party{entry.second.line, ""}.uri());
        }
    s_.outbox.securityStatusChanged(call, ids, uris);
}

// --- calls that ring at a colleague's ---

const PickupCall& Calls::ringAtColleague(const std::string& member, const Party& caller)
{
    PickupCall pickup;
    pickup.id = last_ = freeId(0);
    pickup.member = member;
    pickup.caller = caller;
    atColleagues_.push_back(pickup);
    for (const Line& line : s_.lines)
        if (line.registered)
        {
            s_.outbox.incomingPickupCall(line.name, pickup.id, caller);
            break;
        }
    return atColleagues_.back();
}

bool Calls::takeFromColleague(const std::string& member, PickupCall& taken)
{
    const auto found = std::find_if(atColleagues_.begin(), atColleagues_.end(),
                                    [&](const PickupCall& pickup)
                                    { return member.empty() || pickup.member == member; });
    if (found == atColleagues_.end())
        return false;
    taken = *found;
    atColleagues_.erase(found);
    return true;
}

}  // namespace kit::service

#include "kit/service/Simulation.h"

#include "kit/service/EventText.h"

#include <algorithm>
#include <limits>

namespace kit::service
{

using namespace numbers;

Simulation::Simulation(const std::vector<std::string>& lineNames)
{
    for (const std::string& name : lineNames)
    {
        Line line;
        line.name = name;
        lines_.push_back(line);
    }
}

void Simulation::complain(std::string text)
{
    complaints_.push_back(std::move(text));
}

// --- finding ---

Line* Simulation::findLine(const std::string& name)
{
    for (Line& line : lines_)
        if (line.name == name)
            return &line;
    return nullptr;
}

Call* Simulation::findCall(int id)
{
    const auto found = calls_.find(id);
    return found == calls_.end() ? nullptr : &found->second;
}

Call* Simulation::findCall(const std::string& line, const std::function<bool(const Call&)>& wanted)
{
    for (auto& entry : calls_)
        if (entry.second.line == line && wanted(entry.second))
            return &entry.second;
    return nullptr;
}

std::vector<int> Simulation::callsOf(const std::string& line) const
{
    std::vector<int> ids;
    for (const auto& entry : calls_)
        if (entry.second.line == line)
            ids.push_back(entry.first);
    return ids;
}

Party Simulation::partyOf(const std::string& number)
{
    if (findLine(number) != nullptr)
        return {number, "Line " + number};
    const Robot* const robot = findRobot(number);
    return {number, robot == nullptr ? "" : robot->name};
}

/// Somebody talks, or is being called, on the line.
bool Simulation::inConversation(const std::string& line)
{
    return findCall(line, [](const Call& call) { return call.active(); }) != nullptr;
}

// --- the clock ---

void Simulation::after(Time time, std::function<void()> action)
{
    timers_.emplace(now_ + time, std::move(action));
}

void Simulation::afterIfStill(const Call& call, Time time, std::function<void(Call&)> action)
{
    after(time,
          [this, id = call.id, stage = call.stage, action = std::move(action)]
          {
              Call* const still = findCall(id);
              if (still != nullptr && still->stage == stage)
                  action(*still);
          });
}

void Simulation::advance(Time time)
{
    const Time until = now_ + std::max(time, Time(0));
    while (!timers_.empty() && timers_.begin()->first <= until)
    {
        now_ = timers_.begin()->first;
        const std::function<void()> action = std::move(timers_.begin()->second);
        timers_.erase(timers_.begin());
        action();
    }
    now_ = until;
}

Time Simulation::quietFor(Time limit) const
{
    return timers_.empty() ? limit : std::min(limit, timers_.begin()->first - now_);
}

// --- the life of a call ---

/// The wanted number when it is free, otherwise the next one.
int Simulation::freeCallId(int wanted) const
{
    if (wanted > 0 && calls_.count(wanted) == 0)
        return wanted;
    int id = lastCallId_;
    do
        id = id == std::numeric_limits<int>::max() ? 1 : id + 1;
    while (calls_.count(id) != 0);
    return id;
}

Call& Simulation::newCall(const std::string& line, bool incoming, int wantedId)
{
    const int id = freeCallId(wantedId);
    // An application's own number is not given again soon either.
    lastCallId_ = id == wantedId ? std::max(lastCallId_, id) : id;
    Call& call = calls_[id];
    call.id = id;
    call.line = line;
    call.incoming = incoming;
    call.local = partyOf(line);
    return call;
}

void Simulation::setState(Call& call, CallState state, Reason reason)
{
    call.state = state;
    call.reason = reason;
    ++call.stage;
    emit(events::callStateChange(call));
    startSteps(call);
}

/// Lets the far end do what it does in this state.
void Simulation::startSteps(const Call& call)
{
    if (call.robot == nullptr)
        return;
    for (std::size_t i = 0; i < call.robot->steps.size(); ++i)
    {
        const Step& step = call.robot->steps[i];
        const unsigned bit = 1U << i;
        if (step.during != call.state || (call.stepsDone & bit) != 0)
            continue;
        afterIfStill(call, step.after,
                     [this, bit, what = step.act](Call& still)
                     {
                         still.stepsDone |= bit;
                         act(still.id, what);
                     });
    }
}

/// An outgoing call did not come about; it stays to be seen for a while.
void Simulation::fail(Call& call, Reason reason)
{
    setState(call, callFailed, reason);
    afterIfStill(call, failedCallStays, [this](Call& still) { clear(still, reasonNormal); });
}

/// Ends the call at this end. The reference is dead afterwards.
void Simulation::clear(Call& call, Reason reason)
{
    const int id = call.id;
    const int peer = call.peer;
    const int callBack = call.callBack;
    const bool waited = call.waiting();
    const bool missed = waited && (reason == reasonNoAnswer || reason == reasonFarEndCleared ||
                                   reason == reasonOutOfService);
    if (missed)
        emit(events::incomingCallMissed(call, reason));
    if (call.conference != 0)
        leaveConference(call);
    setState(call, callCleared, reason);
    calls_.erase(id);

    if (callBack != 0)
    {
        if (!waited)
            endCallBack(callBack, completionDone);
        else
            failCallBack(callBack, missed ? completionNotAnswered : completionRefused);
    }
    Call* const other = findCall(peer);
    if (other == nullptr)
        return;
    other->peer = 0;
    if (!waited)
        farEndClears(*other);
    else if (reason != reasonForwarded && reason != reasonDeflected)
        farEndFails(*other, reason == reasonFarEndCleared ? reasonNoAnswer : reason);
}

/// Somebody here answers.
void Simulation::answer(Call& call)
{
    setState(call, callConnected, reasonNormal);
    if (Call* const caller = findCall(call.peer))
        farEndAnswers(*caller);
}

/// Calls a number from a call of this phone.
void Simulation::dial(Call& call, const std::string& dialled)
{
    std::string number = plainNumber(dialled);
    for (int hops = 0; hops <= maximumForwardings; ++hops)
    {
        call.remote.from = partyOf(number);
        call.robot = findRobot(number);
        call.stepsDone = 0;
        if (findLine(number) == nullptr)
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
        if (hops > 0)
        {
            arrival.divertedBy = call.remote.divertedBy;
            arrival.diversionReason = call.remote.diversionReason;
        }
        const int id = call.id;
        const Outcome outcome = number == call.line ? Outcome{Outcome::failed, 0, reasonBusy, ""}
                                                    : arrive(number, arrival);
        if (findCall(id) == nullptr)
            return;
        if (outcome.kind == Outcome::rings)
        {
            call.peer = outcome.callId;
            setState(call, callDelivered, hops == 0 ? reasonNormal : reasonForwarded);
            return;
        }
        if (outcome.kind == Outcome::failed)
        {
            fail(call, outcome.reason);
            return;
        }
        call.remote.divertedBy = partyOf(number);
        call.remote.diversionReason = diversionUnconditional;
        number = outcome.target;
    }
    fail(call, reasonUnobtainable);
}

/// A call arrives at a line: it rings there, is forwarded or fails.
Simulation::Outcome Simulation::arrive(const std::string& lineName, const Arrival& arrival)
{
    Line* const line = findLine(lineName);
    if (line == nullptr || !line->registered)
        return {Outcome::failed, 0, reasonOutOfService, ""};
    // Only a call that comes through gets a place; the others need one for their events.
    Call notYet;
    notYet.id = freeCallId(0);
    notYet.line = lineName;
    notYet.incoming = true;
    notYet.local = partyOf(lineName);
    notYet.remote = arrival;
    lastCallId_ = notYet.id;

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
        emit(events::callForwarded(notYet, forwarding->destination, reasonForwarded));
        return {Outcome::forwarded, 0, reasonForwarded, plainNumber(forwarding->destination)};
    }
    if (line->doNotDisturb || serviceState_ == sfiServiceDoNotDisturb)
    {
        emit(events::incomingCallMissed(notYet, reasonDoNotDisturb));
        return {Outcome::failed, 0, reasonDoNotDisturb, ""};
    }
    Call* const weaker =
        findCall(lineName, [&](const Call& call)
                 { return call.active() && call.remote.priority < arrival.priority; });
    if (weaker != nullptr && arrival.priority >= priorityImmediate)
        preempt(*weaker, arrival.priority, preemptionHigherPriority, "a call of higher priority");
    if (callsOf(lineName).size() >= maximumCallsPerLine)
    {
        emit(events::incomingCallMissed(notYet, reasonBusy));
        return {Outcome::failed, 0, reasonBusy, ""};
    }

    Call* const current = findCall(lineName, [](const Call& call) { return !call.waiting(); });
    Call& call = calls_[notYet.id] = notYet;
    call.peer = arrival.peer;
    call.robot = findRobot(arrival.from.number);
    emit(events::incomingCall(call));
    setState(call, callOffered, reasonNormal);
    if (associatedCalls_ && current != nullptr)
        emit(events::incomingAssociatedCall(lineName, current->id, call.id));

    // Counted from the offer on, whether or not somebody has accepted meanwhile.
    const auto whileWaiting = [this, id = call.id](Time time, std::function<void(Call&)> action)
    {
        after(time,
              [this, id, action = std::move(action)]
              {
                  Call* const still = findCall(id);
                  if (still != nullptr && still->incoming && still->waiting())
                      action(*still);
              });
    };
    if (const ForwardingSetting* const noAnswer = forwarded(forwardNoAnswer))
        whileWaiting(ringInterval * noAnswer->ringCount,
                     [this, target = noAnswer->destination](Call& still)
                     { divert(still, target, reasonForwarded, diversionNoAnswer); });
    whileWaiting(ringInterval * ringsUntilCallerGivesUp,
                 [this](Call& still) { clear(still, reasonNoAnswer); });
    return {Outcome::rings, call.id, reasonNormal, ""};
}

/// The same for a caller outside, who goes wherever the call is forwarded to.
Simulation::Outcome Simulation::arriveFollowing(const std::string& lineName, Arrival arrival)
{
    std::string number = lineName;
    for (int hops = 0; hops <= maximumForwardings; ++hops)
    {
        if (findLine(number) == nullptr)
        {
            if (number == mailboxNumber)
                after(messageLength, [this] { leaveMessage(false); });
            return {Outcome::forwarded, 0, reasonForwarded, number};
        }
        const Outcome outcome = arrive(number, arrival);
        if (outcome.kind != Outcome::forwarded)
            return outcome;
        arrival.divertedBy = partyOf(number);
        arrival.diversionReason = inConversation(number) ? diversionBusy : diversionUnconditional;
        number = outcome.target;
    }
    return {Outcome::failed, 0, reasonUnobtainable, ""};
}

/// Sends a waiting call elsewhere. The reference is dead afterwards.
void Simulation::divert(Call& call, const std::string& target, Reason reason,
                        DiversionReason diversion)
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
    emit(events::callForwarded(call, target, reason));
    call.callBack = 0;
    clear(call, reason);
    if (Call* const own = findCall(caller))
    {
        own->remote.forwardings = arrival.forwardings;
        own->remote.divertedBy = arrival.divertedBy;
        own->remote.diversionReason = diversion;
        dial(*own, number);
    }
    else
        arriveFollowing(number, arrival);
}

void Simulation::holdHere(Call& call, bool manual)
{
    call.manualHold = manual;
    setState(call, callHeld, reasonNormal);
    emit(events::callHeld(call));
    if (Call* const other = findCall(call.peer))
        farEndHolds(*other);
}

void Simulation::retrieveHere(Call& call)
{
    call.manualHold = false;
    setState(call, call.conference != 0 ? callConferenced : callConnected, reasonNormal);
    emit(events::callRetrieved(call, call.conference != 0));
    if (Call* const other = findCall(call.peer))
        farEndRetrieves(*other);
}

/// Two calls of this phone become the two ends of one.
void Simulation::join(Call& call, Call& other)
{
    call.peer = other.id;
    other.peer = call.id;
}

// --- the far end ---

void Simulation::farEndAnswers(Call& call)
{
    setState(call, callConnected, reasonNormal);
    if (call.callBack != 0)
    {
        const int done = std::exchange(call.callBack, 0);
        endCallBack(done, completionDone);
    }
}

void Simulation::farEndFails(Call& call, Reason reason)
{
    call.peer = 0;
    fail(call, reason);
}

void Simulation::farEndClears(Call& call)
{
    clear(call, reasonFarEndCleared);
}

void Simulation::farEndHolds(Call& call)
{
    if (call.state == callConnected)
        setState(call, callHeldByFarEnd, reasonNormal);
}

void Simulation::farEndRetrieves(Call& call)
{
    if (call.state == callHeldByFarEnd)
        setState(call, callConnected, reasonNormal);
}

void Simulation::changeFarEnd(Call& call, const Party& party, bool exitConf, bool jointCall)
{
    call.remote.from = party;
    call.remote.fullPai.clear();
    emit(events::remoteEndpointDetailsChanged(call, exitConf, jointCall));
}

void Simulation::farEndTransfers(Call& call, const Party& target)
{
    if (Call* const other = findCall(call.peer))
    {
        call.peer = 0;
        other->peer = 0;
        clear(*other, reasonTransferred);
    }
    call.robot = findRobot(target.number);
    call.stepsDone = 0;
    changeFarEnd(call, target, false, false);
    if (call.state == callHeldByFarEnd)
        setState(call, callConnected, reasonTransferred);
}

/// Connects the far ends of two calls with each other; what they are here is over.
void Simulation::connectFarEnds(Call& one, Call& two)
{
    const Party first = one.remote.from;
    const Party second = two.remote.from;
    Call* const firstOwn = findCall(one.peer);
    Call* const secondOwn = findCall(two.peer);
    one.peer = 0;
    two.peer = 0;
    clear(one, reasonTransferred);
    clear(two, reasonTransferred);
    const auto takeOver = [this](Call& own, const Party& party)
    {
        own.peer = 0;
        own.robot = findRobot(party.number);
        own.stepsDone = 0;
        changeFarEnd(own, party, false, false);
        if (own.state == callHeldByFarEnd)
            setState(own, callConnected, reasonTransferred);
    };
    if (firstOwn != nullptr)
        takeOver(*firstOwn, second);
    if (secondOwn != nullptr)
        takeOver(*secondOwn, first);
    if (firstOwn != nullptr && secondOwn != nullptr)
        join(*firstOwn, *secondOwn);
}

void Simulation::act(int callId, Act what)
{
    Call* const call = findCall(callId);
    if (call == nullptr)
        return;
    switch (what)
    {
    case Act::answer:
        farEndAnswers(*call);
        break;
    case Act::refuse:
        farEndFails(*call, reasonRefused);
        break;
    case Act::hangUp:
        farEndClears(*call);
        break;
    case Act::hold:
        farEndHolds(*call);
        break;
    case Act::retrieve:
        farEndRetrieves(*call);
        break;
    case Act::transfer:
        farEndTransfers(*call, partyOf(transferTarget));
        break;
    case Act::joinConference:
        changeFarEnd(*call, call->remote.from, false, true);
        break;
    case Act::leaveConference:
        changeFarEnd(*call, call->remote.from, true, false);
        break;
    case Act::refuseAndCallBack:
        after(call->robot->callBackAfter,
              [this, line = call->line, from = call->remote.from]
              {
                  Arrival arrival;
                  arrival.from = from;
                  arriveFollowing(line, arrival);
              });
        farEndFails(*call, reasonRefused);
        break;
    }
}

void Simulation::preempt(Call& call, int priority, int cause, const std::string& text)
{
    emit(events::preemptionStatusChanged(call, priority, cause, text));
    call.preemptionCause = cause;
    call.preemptionText = text;
    clear(call, reasonPreempted);
}

// --- conferences ---

std::vector<int> Simulation::membersOf(int conference) const
{
    std::vector<int> ids;
    for (const auto& entry : calls_)
        if (entry.second.conference == conference)
            ids.push_back(entry.first);
    return ids;
}

void Simulation::startConference(Call& active, Call& held)
{
    const int conference = held.conference != 0     ? held.conference
                           : active.conference != 0 ? active.conference
                                                    : active.id;
    for (Call* const call : {&active, &held})
    {
        call->conference = conference;
        call->manualHold = false;
        setState(*call, callConferenced, reasonConferenced);
        changeFarEnd(*call, call->remote.from, false, true);
    }
    announceConference(conference);
}

/// Takes a call out; the last one left is an ordinary call again.
void Simulation::leaveConference(Call& call)
{
    const int conference = std::exchange(call.conference, 0);
    const std::vector<int> left = membersOf(conference);
    announceConference(conference);
    if (left.size() != 1)
        return;
    Call& last = *findCall(left.front());
    last.conference = 0;
    if (last.state == callConferenced)
        setState(last, callConnected, reasonNormal);
    changeFarEnd(last, last.remote.from, true, false);
}

void Simulation::announceConference(int conference)
{
    const std::vector<int> members = membersOf(conference);
    std::string users;
    for (const int id : members)
        users += "<user id=\"" + std::to_string(id) + "\" uri=\"" +
                 findCall(id)->remote.from.uri() + "\"/>";
    const std::string document =
        "<conference id=\"" + std::to_string(conference) + "\">" + users + "</conference>";
    for (const int id : members)
        emit(events::conferenceStatus(*findCall(id), document));
}

// --- lines and the mailbox ---

void Simulation::registerLine(Line& line, bool registered, int result)
{
    line.registered = registered;
    emit(events::registrationStateChange(line.name, 0, registered, result));
    if (registered)
        return;
    for (const int id : callsOf(line.name))
        if (Call* const call = findCall(id))
            clear(*call, reasonOutOfService);
}

void Simulation::setDoNotDisturb(Line& line, bool on)
{
    line.doNotDisturb = on;
    emit(events::doNotDisturb(line.name, on));
}

void Simulation::announceMessages()
{
    for (const Line& line : lines_)
        if (line.registered)
            emit(events::messageWaiting(line.name, mailbox_));
}

void Simulation::leaveMessage(bool urgent)
{
    ++(urgent ? mailbox_.newUrgentMessages : mailbox_.newMessages);
    announceMessages();
}

/// The mailbox listens: 1 hears the next message, 2 leaves one, 3 deletes an old one.
void Simulation::mailboxDigits(const std::string& digits)
{
    const auto move = [](unsigned& from, unsigned& to)
    {
        if (from == 0)
            return false;
        --from;
        ++to;
        return true;
    };
    unsigned nowhere = 0;
    const Mailbox before = mailbox_;
    for (const char digit : digits)
    {
        if (digit == '1' && !move(mailbox_.newUrgentMessages, mailbox_.oldUrgentMessages))
            move(mailbox_.newMessages, mailbox_.oldMessages);
        if (digit == '2')
            ++mailbox_.newMessages;
        if (digit == '3' && !move(mailbox_.oldMessages, nowhere))
            move(mailbox_.oldUrgentMessages, nowhere);
    }
    const bool changed = before.newMessages != mailbox_.newMessages ||
                         before.oldMessages != mailbox_.oldMessages ||
                         before.newUrgentMessages != mailbox_.newUrgentMessages ||
                         before.oldUrgentMessages != mailbox_.oldUrgentMessages;
    if (changed)
        announceMessages();
}

void Simulation::tellSecurity(const Call& call)
{
    std::vector<int> ids;
    std::vector<std::string> uris;
    for (const auto& entry : calls_)
        if (entry.second.recorded)
        {
            ids.push_back(entry.first);
            uris.push_back(Party{entry.second.line, ""}.uri());
        }
    emit(events::securityStatusChanged(call, ids, uris));
}

// --- call-backs ---

CallBack* Simulation::findCallBack(int id)
{
    for (CallBack& callBack : callBacks_)
        if (callBack.id == id)
            return &callBack;
    return nullptr;
}

/// Waits for the far end as its habit is.
void Simulation::followCallBack(int id)
{
    const Robot* const robot = findRobot(findCallBack(id)->destination.number);
    const CallBackOutcome outcome = robot == nullptr ? CallBackOutcome::never : robot->callBack;
    if (outcome == CallBackOutcome::never)
        after(callBackTimeOut, [this, id] { failCallBack(id, completionTimedOut); });
    else if (outcome == CallBackOutcome::stillBusy)
        after(robot->callBackAfter, [this, id] { failCallBack(id, completionStillBusy); });
    else
        after(robot->callBackAfter,
              [this, id]
              {
                  CallBack* const callBack = findCallBack(id);
                  if (callBack == nullptr || callBack->state != completionRequested)
                      return;
                  callBack->state = completionAvailable;
                  emit(events::callCompletion(*callBack, completionAvailable));
                  after(callBackRings, [this, id] { ringCallBack(id); });
              });
}

/// The far end is free, and nobody here has called it on their own: the phone rings.
void Simulation::ringCallBack(int id)
{
    CallBack* const callBack = findCallBack(id);
    if (callBack == nullptr || callBack->state != completionAvailable)
        return;
    callBack->state = completionRinging;
    const std::string line = callBack->line;
    Arrival arrival;
    arrival.from = callBack->destination;
    arrival.type = callTypeCallBack;
    emit(events::callCompletion(*callBack, completionRinging));
    const Outcome outcome = arrive(line, arrival);
    if (outcome.kind != Outcome::rings)
    {
        failCallBack(id, completionStillBusy);
        return;
    }
    findCall(outcome.callId)->callBack = id;
    after(ringInterval * callBackRingCount,
          [this, callId = outcome.callId]
          {
              Call* const call = findCall(callId);
              if (call != nullptr && call->waiting())
                  clear(*call, reasonNoAnswer);
          });
}

void Simulation::failCallBack(int id, int why)
{
    const CallBack* const callBack = findCallBack(id);
    if (callBack == nullptr)
        return;
    emit(events::callCompletionFailed(*callBack, why));
    callBacks_.erase(callBacks_.begin() + (callBack - callBacks_.data()));
}

void Simulation::endCallBack(int id, int state)
{
    const CallBack* const callBack = findCallBack(id);
    if (callBack == nullptr)
        return;
    emit(events::callCompletion(*callBack, state));
    callBacks_.erase(callBacks_.begin() + (callBack - callBacks_.data()));
}

}  // namespace kit::service

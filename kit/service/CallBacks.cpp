#include "kit/service/CallBacks.h"

#include "kit/service/Simulation.h"

namespace kit::service
{

using namespace numbers;

CallBack* CallBacks::find(int id)
{
    for (CallBack& callBack : callBacks_)
        if (callBack.id == id)
            return &callBack;
    return nullptr;
}

std::vector<CallBack*> CallBacks::of(const std::string& line)
{
    std::vector<CallBack*> found;
    for (CallBack& callBack : callBacks_)
        if (callBack.line == line)
            found.push_back(&callBack);
    return found;
}

void CallBacks::request(const Call& call, int type)
{
    CallBack callBack;
    callBack.id = ++last_;
    callBack.line = call.line;
    callBack.destination = call.remote.from;
    callBack.type = type;
    callBacks_.push_back(callBack);
    s_.outbox.callCompletion(callBack, completionRequested);
    follow(callBack.id);
}

bool CallBacks::carriedOutBy(Call& call, const std::string& number)
{
    for (CallBack* const callBack : of(call.line))
        if (callBack->destination.number == number && callBack->state == completionAvailable)
        {
            callBack->state = completionRinging;
            call.callBack = callBack->id;
            return true;
        }
    return false;
}

void CallBacks::follow(int id)
{
    const RobotPointer robot = s_.robots.find(find(id)->destination.number);
    const CallBackOutcome outcome = robot == nullptr ? CallBackOutcome::never : robot->callBack;
    if (outcome == CallBackOutcome::never)
        s_.clock.after(callBackTimeOut, [this, id] { fail(id, completionTimedOut); });
    else if (outcome == CallBackOutcome::stillBusy)
        s_.clock.after(robot->callBackAfter, [this, id] { fail(id, completionStillBusy); });
    else
        s_.clock.after(robot->callBackAfter,
                       [this, id]
                       {
                           CallBack* const callBack = find(id);
                           if (callBack == nullptr || callBack->state != completionRequested)
                               return;
                           callBack->state = completionAvailable;
                           s_.outbox.callCompletion(*callBack, completionAvailable);
                           s_.clock.after(callBackRings, [this, id] { ring(id); });
                       });
}

/// The far end is free, and nobody here has called it on their own: the phone rings.
void CallBacks::ring(int id)
{
    CallBack* const callBack = find(id);
    if (callBack == nullptr || callBack->state != completionAvailable)
        return;
    callBack->state = completionRinging;
    const std::string line = callBack->line;
    Arrival arrival;
    arrival.from = callBack->destination;
    arrival.type = callTypeCallBack;
    s_.outbox.callCompletion(*callBack, completionRinging);
    const ArrivalOutcome outcome = s_.calls.arrive(line, arrival);
    if (outcome.kind != ArrivalOutcome::rings)
    {
        fail(id, completionStillBusy);
        return;
    }
    s_.calls.find(outcome.callId)->callBack = id;
    s_.calls.whileWaiting(outcome.callId, ringInterval * callBackRingCount,
                          [this](Call& still) { s_.calls.clear(still, reasonNoAnswer); });
}

void CallBacks::fail(int id, int why)
{
    if (const CallBack* const callBack = find(id))
    {
        s_.outbox.callCompletionFailed(*callBack, why);
        remove(*callBack);
    }
}

void CallBacks::end(int id, int state)
{
    if (const CallBack* const callBack = find(id))
    {
        s_.outbox.callCompletion(*callBack, state);
        remove(*callBack);
    }
}

void CallBacks::remove(const CallBack& callBack)
{
    callBacks_.erase(callBacks_.begin() + (&callBack - callBacks_.data()));
}

}  // namespace kit::service

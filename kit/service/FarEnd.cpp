#include "kit/service/FarEnd.h"

#include "kit/service/Simulation.h"

#include <utility>

namespace kit::service
{

using namespace numbers;

void FarEnd::answers(Call& call)
{
    s_.calls.setState(call, callConnected, reasonNormal);
    if (call.callBack != 0)
        s_.callBacks.end(std::exchange(call.callBack, 0), completionDone);
}

void FarEnd::fails(Call& call, Reason reason)
{
    call.peer = 0;
    s_.calls.fail(call, reason);
}

void FarEnd::hangsUp(Call& call)
{
    s_.calls.clear(call, reasonFarEndCleared);
}

void FarEnd::holds(Call& call)
{
    if (call.state == callConnected)
        s_.calls.setState(call, callHeldByFarEnd, reasonNormal);
}

void FarEnd::retrieves(Call& call)
{
    if (call.state == callHeldByFarEnd)
        s_.calls.setState(call, callConnected, reasonNormal);
}

void FarEnd::becomes(Call& call, const Party& party, bool exitConf, bool jointCall)
{
    call.remote.from = party;
    call.remote.fullPai.clear();
    s_.outbox.remoteEndpointDetailsChanged(call, exitConf, jointCall);
}

void FarEnd::transfers(Call& call, const Party& target)
{
    if (Call* const other = s_.calls.find(call.peer))
    {
        other->peer = 0;
        s_.calls.clear(*other, reasonTransferred);
    }
    takeOver(call, target);
}

/// Somebody else is at the far end of the call from now on.
void FarEnd::takeOver(Call& call, const Party& party)
{
    call.peer = 0;
    call.robot = s_.robots.find(party.number);
    call.stepsDone = 0;
    becomes(call, party, false, false);
    if (call.state == callHeldByFarEnd)
        s_.calls.setState(call, callConnected, reasonTransferred);
}

void FarEnd::connect(Call& one, Call& two)
{
    const Party first = one.remote.from;
    const Party second = two.remote.from;
    Call* const firstOwn = s_.calls.find(one.peer);
    Call* const secondOwn = s_.calls.find(two.peer);
    one.peer = 0;
    two.peer = 0;
    s_.calls.clear(one, reasonTransferred);
    s_.calls.clear(two, reasonTransferred);
    if (firstOwn != nullptr)
        takeOver(*firstOwn, second);
    if (secondOwn != nullptr)
        takeOver(*secondOwn, first);
    if (firstOwn != nullptr && secondOwn != nullptr)
        s_.calls.join(*firstOwn, *secondOwn);
}

void FarEnd::follow(const Call& call)
{
    if (call.robot == nullptr)
        return;
    bool begun = false;
    for (std::size_t i = 0; i < call.robot->steps.size(); ++i)
    {
        const Step& step = call.robot->steps[i];
        const unsigned bit = 1U << i;
        if ((call.stepsDone & bit) != 0)
            continue;
        if (step.during != call.state)
        {
            // What stands behind it is for when the call comes back to this state.
            if (begun)
                break;
            continue;
        }
        begun = true;
        s_.calls.afterIfStill(call, step.after,
                              [this, bit, step](Call& still)
                              {
                                  still.stepsDone |= bit;
                                  act(still, step);
                              });
    }
}

void FarEnd::act(Call& call, const Step& step)
{
    switch (step.act)
    {
    case Act::answer:
        answers(call);
        break;
    case Act::refuse:
        fails(call, reasonRefused);
        break;
    case Act::hangUp:
        hangsUp(call);
        break;
    case Act::hold:
        holds(call);
        break;
    case Act::retrieve:
        retrieves(call);
        break;
    case Act::transfer:
        transfers(call, s_.partyOf(step.target));
        break;
    case Act::joinConference:
        becomes(call, call.remote.from, false, true);
        break;
    case Act::leaveConference:
        becomes(call, call.remote.from, true, false);
        break;
    case Act::refuseAndCallBack:
        s_.clock.after(call.robot->callBackAfter,
                       [this, line = call.line, from = call.remote.from]
                       {
                           Arrival arrival;
                           arrival.from = from;
                           s_.calls.arriveFollowing(line, arrival);
                       });
        fails(call, reasonRefused);
        break;
    }
}

}  // namespace kit::service

#include "kit/phone/Timekeeper.h"

#include "kit/phone/Interruptions.h"

#include <algorithm>
#include <utility>

namespace kit::phone
{

namespace
{

using Clock = std::chrono::steady_clock;

constexpr Timekeeper::Time slice(20);

}  // namespace

Timekeeper::Timekeeper(Advance advance, bool realTime)
    : advance_(std::move(advance)), realTime_(realTime)
{
}

void Timekeeper::keep()
{
    const Clock::time_point now = Clock::now();
    const Time passed = std::chrono::duration_cast<Time>(now - kept_);
    if (!realTime_ || !advance_ || passed.count() == 0)
        return;
    kept_ += passed;
    pass(passed);
}

Timekeeper::Time Timekeeper::passed() const
{
    return advance_ && !realTime_ ? waited_
                                  : std::chrono::duration_cast<Time>(Clock::now() - began_);
}

void Timekeeper::pass(Time time)
{
    while (time.count() > 0)
        time -= std::max(Time(1), advance_(time));
}

bool Timekeeper::wait(Time limit, const std::function<bool()>& done,
                      const std::function<void(Time)>& pump)
{
    pump(Time(0));
    const Clock::time_point end = Clock::now() + limit;
    Time left = limit;
    while (!done())
    {
        if (interruptions() > 0)
            return false;
        if (advance_ && !realTime_)
        {
            if (left.count() <= 0)
                return false;
            const Time step = std::max(Time(1), advance_(left));
            left -= step;
            waited_ += step;
            pump(Time(0));
            continue;
        }
        const Time remaining = std::chrono::duration_cast<Time>(end - Clock::now());
        if (remaining.count() <= 0)
            return false;
        keep();
        pump(std::min(remaining, slice));
    }
    return true;
}

}  // namespace kit::phone

#include "kit/service/Clock.h"

#include <algorithm>
#include <utility>

namespace kit::service
{

void Clock::after(Time time, std::function<void()> action)
{
    actions_.emplace(now_ + time, std::move(action));
}

void Clock::advance(Time time)
{
    const Time until = now_ + std::max(time, Time(0));
    while (!actions_.empty() && actions_.begin()->first <= until)
    {
        now_ = actions_.begin()->first;
        const std::function<void()> action = std::move(actions_.begin()->second);
        actions_.erase(actions_.begin());
        action();
    }
    now_ = until;
}

Time Clock::quietFor(Time limit) const
{
    return actions_.empty() ? limit : std::min(limit, actions_.begin()->first - now_);
}

}  // namespace kit::service

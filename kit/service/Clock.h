#ifndef KIT_SERVICE_CLOCK_H
#define KIT_SERVICE_CLOCK_H

#include "kit/service/Robots.h"

#include <functional>
#include <map>

namespace kit::service
{

/// The simulated time. It stands still but in advance().
class Clock
{
public:
    Time now() const { return now_; }

    /// Runs `action` when that time has passed.
    void after(Time time, std::function<void()> action);

    /// Lets time pass: what has been put off happens at its moment, in its order.
    void advance(Time time);

    /// How long nothing happens from now on, at most `limit`.
    Time quietFor(Time limit) const;

private:
    Time now_{0};
    std::multimap<Time, std::function<void()>> actions_;
};

}  // namespace kit::service

#endif

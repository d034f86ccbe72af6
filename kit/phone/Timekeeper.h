#ifndef KIT_PHONE_TIMEKEEPER_H
#define KIT_PHONE_TIMEKEEPER_H

#include <chrono>
#include <functional>

namespace kit::phone
{

/// The service's time, as far as it is the phone's to let it pass.
class Timekeeper
{
public:
    using Time = std::chrono::milliseconds;

    /// Lets time pass in the service, to the next moment at which something may happen, and at most
    /// this much. Returns how much it was.
    using Advance = std::function<Time(Time limit)>;

    /// @param advance   empty where the service keeps its own time
    /// @param realTime  time passes as outside; else only while something is waited for, and at once
    Timekeeper(Advance advance, bool realTime);

    /// In real time: lets as much time pass in the service as has passed outside.
    void keep();

    /// Waits until `done`, at most `limit` of the service's time; false when it is not done then, or
    /// when Ctrl-C was pressed.
    /// @param pump  delivers what has arrived, and waits a while for it
    bool wait(Time limit, const std::function<bool()>& done, const std::function<void(Time)>& pump);

    /// The time that has passed: outside, or while something was waited for.
    Time passed() const;

private:
    void pass(Time time);

    const Advance advance_;
    const bool realTime_;
    const std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point kept_ = began_;
    Time waited_{0};
};

}  // namespace kit::phone

#endif

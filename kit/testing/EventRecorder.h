#ifndef KIT_TESTING_EVENT_RECORDER_H
#define KIT_TESTING_EVENT_RECORDER_H

#include "kit/binding/ExpectedEvent.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace kit
{

/// A subscriber that records what it gets, and waits for what should come:
///
///     kit::EventRecorder events;
///     framework.service().subscribe(&events);
///     ...
///     const auto ringing = events.waitFor("CallStateChangeEvent", {{"callState", "ringing"}});
///     ASSERT_TRUE(ringing) << ringing.problem;
///
/// Each event counts once: waiting for the same again waits for the next. Any thread may call
/// anything; events come on the thread that delivers them.
class EventRecorder : public Subscriber
{
public:
    /// What waiting came to.
    struct Found
    {
        bool met = false;
        ReceivedEvent event;  ///< the one awaited
        std::string problem;  ///< for people: what was awaited, what was nearest, what differs

        explicit operator bool() const { return met; }
    };

    /// Waits for an event with this method and these values, among those not yet waited for, whatever
    /// came before it. Throws std::invalid_argument for what no event has.
    Found waitFor(const std::string& method, const Values& values = {},
                  std::chrono::milliseconds timeout = std::chrono::seconds(2));

    /// All events so far, also those waited for.
    std::vector<ReceivedEvent> events() const;

    /// How many of them have this method.
    std::size_t count(const std::string& method) const;

    /// Forgets all events.
    void forget();

    /// Called with each event as it is delivered and before it can be found by waitFor; it may call
    /// operations. Set before subscribing.
    void onEach(std::function<void(const ReceivedEvent& received)> action);

    void onEvent(const ReceivedEvent& received) override;

private:
    struct Entry
    {
        ReceivedEvent event;
        bool used;
    };

    bool take(const ExpectedEvent& expected, Found& found);
    std::string nearest(const ExpectedEvent& expected) const;

    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<Entry> entries_;
    std::function<void(const ReceivedEvent& received)> action_;
};

}  // namespace kit

#endif

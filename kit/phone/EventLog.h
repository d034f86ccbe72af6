#ifndef KIT_PHONE_EVENT_LOG_H
#define KIT_PHONE_EVENT_LOG_H

#include "kit/phone/Expectation.h"

#include <cstddef>
#include <deque>

namespace kit::phone
{

/// The events that have come, and how far expectations have passed them.
class EventLog
{
public:
    void add(const ReceivedEvent& received) { events_.push_back(received); }

    /// Lets expectations look at later events only.
    void passAll() { next_ = events_.size(); }

    /// Oldest first.
    const std::deque<ReceivedEvent>& events() const { return events_; }

    /// Where the next expectation begins to look.
    std::size_t next() const { return next_; }

    /// The first event from there on that is as expected; the number of events when none is.
    std::size_t find(const Expectation& expectation, std::size_t from) const;

    /// The expectation was met by this event: the next one begins behind it.
    void pass(std::size_t event) { next_ = event + 1; }

    /// Drops the oldest when there are very many.
    void shorten();

private:
    std::deque<ReceivedEvent> events_;
    std::size_t next_ = 0;
};

}  // namespace kit::phone

#endif

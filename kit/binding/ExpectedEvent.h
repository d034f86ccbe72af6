#ifndef KIT_BINDING_EXPECTED_EVENT_H
#define KIT_BINDING_EXPECTED_EVENT_H

#include "kit/binding/Subscriber.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kit
{

/// What an event should be: which one, and some of its values.
struct ExpectedEvent
{
    struct Wanted
    {
        std::size_t argument;  ///< place among the event's arguments
        std::string value;     ///< as it would travel
        bool pattern = false;  ///< "*" stands for any text
    };

    explicit ExpectedEvent(const Event& expected) : event(&expected) {}

    /// Values as people give them. Throws std::invalid_argument for a name or a value that the event
    /// cannot have.
    ExpectedEvent(const Event& expected, const Values& values);

    /// Places in `wanted` of what is not as it should be. The event must be the one expected.
    std::vector<std::size_t> differences(const ReceivedEvent& received) const;

    bool matches(const ReceivedEvent& received) const
    {
        return received.event == event && differences(received).empty();
    }

    /// Of several events the one that differs least, of two that are equally near the later one, which
    /// is more likely to be meant; null when none of them is the event expected.
    template <typename Iterator>
    const ReceivedEvent* nearest(Iterator begin, Iterator end) const
    {
        const ReceivedEvent* found = nullptr;
        std::size_t fewest = 0;
        for (; begin != end; ++begin)
            if (begin->event == event)
            {
                const std::size_t different = differences(*begin).size();
                if (found == nullptr || different <= fewest)
                {
                    found = &*begin;
                    fewest = different;
                }
            }
        return found;
    }

    const Event* event;
    std::vector<Wanted> wanted;
};

/// "*" in the pattern stands for any text.
bool matchesPattern(const std::string& pattern, const std::string& text);

}  // namespace kit

#endif

#include "kit/phone/EventLog.h"

#include <algorithm>

namespace kit::phone
{

std::size_t EventLog::find(const Expectation& expectation, std::size_t from) const
{
    const auto begin = events_.begin() + static_cast<std::ptrdiff_t>(from);
    return static_cast<std::size_t>(std::find_if(begin, events_.end(),
                                                 [&](const ReceivedEvent& event)
                                                 { return expectation.matches(event); }) -
                                    events_.begin());
}

void EventLog::shorten()
{
    constexpr std::size_t longest = 10000;
    for (; events_.size() > longest; next_ -= std::min<std::size_t>(next_, 1))
        events_.pop_front();
}

}  // namespace kit::phone

#ifndef KIT_PHONE_EXPECTATION_H
#define KIT_PHONE_EXPECTATION_H

#include "kit/binding/ExpectedEvent.h"
#include "kit/language/Words.h"

#include <chrono>
#include <deque>
#include <string>
#include <vector>

namespace kit::phone
{

/// `expect [no] EVENT field=value ... [within TIME] [as NAME]`
struct Expectation
{
    bool none;  ///< the event must not come
    ExpectedEvent event;
    std::chrono::milliseconds within;
    std::string name;  ///< under which the event's call is kept, "" when it is not

    /// Raises Mistake.
    static Expectation parse(const std::vector<Word>& words);

    bool matches(const ReceivedEvent& received) const { return event.matches(received); }

    /// "CallHeldEvent callId=12", with names for numbers.
    std::string description() const;

    /// What stood in the way, one line each: the nearest of the events and what differs in it.
    std::vector<std::string> explain(const std::deque<ReceivedEvent>& events,
                                     std::size_t begin) const;
};

/// By the name of the event or of its callback; raises Mistake, which ends as told when no event is
/// nearly called so.
const Event& eventNamed(const Word& word,
                        const std::string& otherwise = " (\"help events\" lists them)");

/// The argument whose value is kept as the event's call; "" when the event has none.
std::string capturedBy(const ReceivedEvent& received);

/// All 28 names of events, for suggestions and completion.
std::vector<std::string> eventNames();

}  // namespace kit::phone

#endif

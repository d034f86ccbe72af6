#ifndef KIT_PHONE_EXPECTATION_H
#define KIT_PHONE_EXPECTATION_H

#include "kit/language/Words.h"
#include "kit/phone/CallBook.h"

#include <chrono>
#include <deque>
#include <string>
#include <vector>

namespace kit::phone
{

/// `expect [no] EVENT field=value ... [within TIME] [as NAME]`
struct Expectation
{
    struct Wanted
    {
        std::size_t argument;  ///< index into the event's arguments
        std::string value;     ///< as it would travel
        bool pattern;          ///< "*" stands for any text
    };

    bool none = false;  ///< the event must not come
    const Event* event = nullptr;
    std::vector<Wanted> wanted;
    std::chrono::milliseconds within{1000};
    std::string name;  ///< under which the event's call is kept, "" when it is not

    /// Raises Mistake.
    static Expectation parse(const std::vector<Word>& words);

    bool matches(const ReceivedEvent& received) const;

    /// "CallHeldEvent callId=12", with names for numbers.
    std::string description() const;

    /// What stood in the way, one line each: the nearest of the events and what differs in it.
    std::vector<std::string> explain(const std::deque<ReceivedEvent>& events,
                                     std::size_t begin) const;

private:
    std::vector<std::size_t> differences(const ReceivedEvent& received) const;
    std::string inWords(std::size_t argument, const std::string& value) const;
};

/// The argument whose value is kept as the event's call; "" when the event has none.
std::string capturedBy(const ReceivedEvent& received);

/// "*" in the pattern stands for any text.
bool matchesPattern(const std::string& pattern, const std::string& text);

/// All 28 names of events, for suggestions and completion.
std::vector<std::string> eventNames();

}  // namespace kit::phone

#endif

#include "kit/phone/Expectation.h"

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/protocol/Columns.h"
#include "kit/trace/Labels.h"

#include <algorithm>

namespace kit::phone
{

namespace
{

bool isText(Kind kind)
{
    return kind == Kind::text || kind == Kind::party || kind == Kind::payload;
}

std::size_t argumentNamed(const Event& event, const Word& word)
{
    const std::size_t place = placeOf(event.arguments, word.name);
    if (place < event.arguments.size())
        return place;
    const std::vector<std::string> names = columnOf(event.arguments, &Field::argument);
    throw Mistake(std::string(event.method) + " has no field " + word.name +
                      didYouMean(word.name, names) + " (it has " +
                      (names.empty() ? "none" : listed(names)) + ")",
                  word.column);
}

std::string inWords(const Field& field, const std::string& value)
{
    return std::string(field.argument) + "=" + shown(toPeople(field, value), 200);
}

}  // namespace

Expectation Expectation::parse(const std::vector<Word>& words)
{
    auto word = words.begin();
    const bool none = word != words.end() && word->name.empty() && word->text == "no";
    if (none)
        ++word;
    if (word == words.end() || !word->name.empty())
        throw Mistake("expect needs an event: expect [no] EVENT [field=value ...] [within TIME] "
                      "[as NAME]",
                      word == words.end() ? 0 : word->column);
    Expectation expectation{none, ExpectedEvent(eventNamed(*word++)), std::chrono::seconds(1), ""};
    while (word != words.end())
    {
        const Word& current = *word++;
        if (!current.name.empty())
        {
            const std::size_t argument = argumentNamed(*expectation.event.event, current);
            const Field& field = expectation.event.event->arguments[argument];
            const bool pattern = isText(field.kind) && !current.quoted &&
                                 current.text.find('*') != std::string::npos;
            expectation.event.wanted.push_back({argument, readValue(field, current), pattern});
            continue;
        }
        const bool keyword = current.text == "within" || current.text == "as";
        if (!keyword)
            throw Mistake("expect takes field=value, \"within TIME\" and \"as NAME\", not " +
                              shown(current.text, 40),
                          current.column);
        if (word == words.end() || !word->name.empty())
            throw Mistake("\"" + current.text + "\" needs " +
                              (current.text == "as" ? "a name" : "a time, as in \"within 1s\""),
                          current.column);
        if (current.text == "within")
            expectation.within = parseDuration(*word++);
        else
            expectation.name = word++->text;
    }
    return expectation;
}

std::string Expectation::description() const
{
    std::string text = event.event->method;
    for (const ExpectedEvent::Wanted& want : event.wanted)
        text += " " + inWords(event.event->arguments[want.argument], want.value);
    return text;
}

std::vector<std::string> Expectation::explain(const std::deque<ReceivedEvent>& events,
                                              std::size_t begin) const
{
    const auto first = events.begin() + static_cast<std::ptrdiff_t>(begin);
    std::vector<std::string> lines;
    if (const ReceivedEvent* const nearest = event.nearest(first, events.end()))
    {
        lines.push_back("nearest: " + eventLabel(*nearest));
        for (const std::size_t i : event.differences(*nearest))
        {
            const ExpectedEvent::Wanted& want = event.wanted[i];
            const Field& field = event.event->arguments[want.argument];
            lines.push_back("differs: " + inWords(field, want.value) + " was awaited, " +
                            inWords(field, nearest->values[want.argument]) + " came");
        }
        return lines;
    }
    if (std::any_of(events.begin(), first,
                    [this](const ReceivedEvent& earlier) { return event.matches(earlier); }))
        lines.push_back(
            "nearest: such an event came earlier, before the one that was expected last");
    std::string others;
    for (auto other = first; other != events.end(); ++other)
        if (others.find(other->method()) == std::string::npos)
            others += (others.empty() ? "" : ", ") + other->method();
    lines.push_back(others.empty() ? "no event came" : "events that came: " + others);
    return lines;
}

const Event& eventNamed(const Word& word, const std::string& otherwise)
{
    for (const Event* event : {findEvent(word.text), findCallback(word.text)})
        if (event != nullptr)
            return *event;
    throw Mistake("there is no event " + shown(word.text, 40) +
                      didYouMean(word.text, eventNames(), otherwise),
                  word.column);
}

std::string capturedBy(const ReceivedEvent& received)
{
    for (const char* argument : {"callId", "newCallId", "currentCallId"})
        if (received.has(argument) && !isAbsent(received.value(argument)))
            return argument;
    return "";
}

std::vector<std::string> eventNames()
{
    return columnOf(events(), &Event::method);
}

}  // namespace kit::phone

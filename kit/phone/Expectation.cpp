#include "kit/phone/Expectation.h"

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
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

const Event& eventNamed(const Word& word)
{
    if (const Event* event = findEvent(word.text))
        return *event;
    if (const Event* event = findCallback(word.text))
        return *event;
    const std::string near = nearest(word.text, eventNames());
    throw Mistake(
        "there is no event " + shown(word.text, 40) +
            (near.empty() ? " (\"help events\" lists them)" : ", did you mean " + near + "?"),
        word.column);
}

std::size_t argumentNamed(const Event& event, const Word& word)
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < event.arguments.size(); ++i)
    {
        if (word.name == event.arguments[i].argument ||
            (*event.arguments[i].tag != '\0' && word.name == event.arguments[i].tag))
            return i;
        names.push_back(event.arguments[i].argument);
    }
    const std::string near = nearest(word.name, names);
    std::string all;
    for (const std::string& name : names)
        all += (all.empty() ? "" : ", ") + name;
    throw Mistake(std::string(event.method) + " has no field " + word.name +
                      (near.empty() ? "" : ", did you mean " + near + "?") + " (it has " +
                      (all.empty() ? "none" : all) + ")",
                  word.column);
}

}  // namespace

Expectation Expectation::parse(const std::vector<Word>& words)
{
    Expectation expectation;
    auto word = words.begin();
    if (word != words.end() && word->name.empty() && word->text == "no")
    {
        expectation.none = true;
        ++word;
    }
    if (word == words.end() || !word->name.empty())
        throw Mistake("expect needs an event: expect [no] EVENT [field=value ...] [within TIME] "
                      "[as NAME]",
                      word == words.end() ? 0 : word->column);
    expectation.event = &eventNamed(*word++);
    while (word != words.end())
    {
        const Word& current = *word++;
        if (!current.name.empty())
        {
            const std::size_t argument = argumentNamed(*expectation.event, current);
            const Field& field = expectation.event->arguments[argument];
            const bool pattern = isText(field.kind) && !current.quoted &&
                                 current.text.find('*') != std::string::npos;
            expectation.wanted.push_back({argument, readValue(field, current), pattern});
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

bool Expectation::matches(const ReceivedEvent& received) const
{
    return received.event == event && differences(received).empty();
}

std::vector<std::size_t> Expectation::differences(const ReceivedEvent& received) const
{
    std::vector<std::size_t> different;
    for (std::size_t i = 0; i < wanted.size(); ++i)
    {
        const std::string& value = received.values[wanted[i].argument];
        if (wanted[i].pattern ? !matchesPattern(wanted[i].value, value) : value != wanted[i].value)
            different.push_back(i);
    }
    return different;
}

std::string Expectation::inWords(std::size_t argument, const std::string& value) const
{
    const Field& field = event->arguments[argument];
    return std::string(field.argument) + "=" + shown(toPeople(field, value), 200);
}

std::string Expectation::description() const
{
    std::string text = event->method;
    for (const Wanted& want : wanted)
        text += " " + inWords(want.argument, want.value);
    return text;
}

std::vector<std::string> Expectation::explain(const std::deque<ReceivedEvent>& events,
                                              std::size_t begin) const
{
    const ReceivedEvent* nearestEvent = nullptr;
    std::vector<std::size_t> fewest;
    std::string others;
    for (std::size_t i = begin; i < events.size(); ++i)
    {
        if (events[i].event != event)
        {
            const std::string method = events[i].method();
            if (others.find(method) == std::string::npos)
                others += (others.empty() ? "" : ", ") + method;
            continue;
        }
        const std::vector<std::size_t> different = differences(events[i]);
        // Of two that are equally near the later one is more likely to be meant.
        if (nearestEvent == nullptr || different.size() <= fewest.size())
        {
            nearestEvent = &events[i];
            fewest = different;
        }
    }
    std::vector<std::string> lines;
    if (nearestEvent != nullptr)
    {
        lines.push_back("nearest: " + eventLabel(*nearestEvent));
        for (const std::size_t i : fewest)
            lines.push_back(
                "differs: " + inWords(wanted[i].argument, wanted[i].value) + " was awaited, " +
                inWords(wanted[i].argument, nearestEvent->values[wanted[i].argument]) + " came");
        return lines;
    }
    for (std::size_t i = begin; i-- > 0;)
        if (matches(events[i]))
        {
            lines.push_back("nearest: such an event came earlier, before the one that was expected "
                            "last");
            break;
        }
    lines.push_back(others.empty() ? "no event came" : "events that came: " + others);
    return lines;
}

std::string capturedBy(const ReceivedEvent& received)
{
    for (const char* argument : {"callId", "newCallId", "currentCallId"})
        if (!received.value(argument).empty())
            return argument;
    return "";
}

bool matchesPattern(const std::string& pattern, const std::string& text)
{
    // Where the last "*" stood, and how much of the text it stands for so far.
    std::size_t star = std::string::npos;
    std::size_t resume = 0;
    std::size_t p = 0;
    std::size_t t = 0;
    while (t < text.size())
        if (p < pattern.size() && pattern[p] == '*')
        {
            star = p++;
            resume = t;
        }
        else if (p < pattern.size() && pattern[p] == text[t])
        {
            ++p;
            ++t;
        }
        else if (star != std::string::npos)
        {
            p = star + 1;
            t = ++resume;
        }
        else
            return false;
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

std::vector<std::string> eventNames()
{
    std::vector<std::string> names;
    for (const Event& event : events())
        names.push_back(event.method);
    return names;
}

}  // namespace kit::phone

#include "kit/testing/EventRecorder.h"

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/testing/Names.h"

#include <algorithm>
#include <utility>

namespace kit
{

namespace
{

std::string inWords(const std::string& method, const Values& values)
{
    std::string words = method;
    for (const auto& [name, value] : values)
        words += " " + name + "=" + value;
    return words;
}

/// "callState is held, reason is busy"
std::string difference(const ExpectedEvent& expected, const ReceivedEvent& received)
{
    if (received.event != expected.event)
        return "it is " + received.method();
    std::vector<std::string> differences;
    for (const std::size_t i : expected.differences(received))
    {
        const std::string name = expected.event->arguments[expected.wanted[i].argument].argument;
        differences.push_back(name + " is " + received.text(name));
    }
    return listed(differences);
}

}  // namespace

EventRecorder::Found EventRecorder::waitFor(const std::string& method, const Values& values,
                                            std::chrono::milliseconds timeout)
{
    const ExpectedEvent expected(checkEvent(method), values);
    Found found;
    std::unique_lock<std::mutex> lock(mutex_);
    if (!arrived_.wait_for(lock, timeout, [&] { return take(expected, found); }))
        found.problem = "no " + inWords(method, values) + " within " + durationText(timeout) +
                        nearest(expected);
    return found;
}

bool EventRecorder::take(const ExpectedEvent& expected, Found& found)
{
    for (Entry& entry : entries_)
        if (!entry.used && expected.matches(entry.event))
        {
            entry.used = true;
            found.met = true;
            found.event = entry.event;
            return true;
        }
    return false;
}

std::string EventRecorder::nearest(const ExpectedEvent& expected) const
{
    std::vector<ReceivedEvent> unused;
    for (const Entry& entry : entries_)
        if (!entry.used)
            unused.push_back(entry.event);
    if (unused.empty())
        return "; nothing else came";
    const ReceivedEvent* nearest = expected.nearest(unused.begin(), unused.end());
    if (nearest == nullptr)
        nearest = &unused.back();
    return "; nearest: " + nearest->inWords() + " (" + difference(expected, *nearest) + ")";
}

std::vector<ReceivedEvent> EventRecorder::events() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<ReceivedEvent> all;
    for (const Entry& entry : entries_)
        all.push_back(entry.event);
    return all;
}

std::size_t EventRecorder::count(const std::string& method) const
{
    checkEvent(method);
    const std::vector<ReceivedEvent> all = events();
    return static_cast<std::size_t>(std::count_if(all.begin(), all.end(),
                                                  [&](const ReceivedEvent& event)
                                                  { return event.method() == method; }));
}

void EventRecorder::forget()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    entries_.clear();
}

void EventRecorder::onEach(std::function<void(const ReceivedEvent& received)> action)
{
    action_ = std::move(action);
}

void EventRecorder::onEvent(const ReceivedEvent& received)
{
    if (action_)
        action_(received);
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_back({received, false});
    }
    arrived_.notify_all();
}

}  // namespace kit

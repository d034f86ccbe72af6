#include "kit/testing/EventRecorder.h"

#include "kit/testing/Names.h"

#include <algorithm>
#include <utility>

namespace kit
{

namespace
{

std::string inWords(const ExpectedEvent& expected)
{
    std::string words = expected.method;
    for (const auto& [name, value] : expected.values)
        words += " " + name + "=" + value;
    return words;
}

/// Values that differ; more than any number of them for another event.
std::size_t distance(const ExpectedEvent& expected, const ReceivedEvent& received)
{
    if (received.method() != expected.method)
        return expected.values.size() + 1;
    return static_cast<std::size_t>(std::count_if(
        expected.values.begin(), expected.values.end(),
        [&](const std::pair<std::string, std::string>& value) {
            return !ExpectedEvent{expected.method, {value}}.difference(received).empty();
        }));
}

}  // namespace

EventRecorder::Found EventRecorder::waitFor(const std::string& method, const Values& values,
                                            std::chrono::milliseconds timeout)
{
    eventText(checkEvent(method), values);  // throws for what the event cannot have
    const ExpectedEvent expected = {method, values};
    Found found;
    std::unique_lock<std::mutex> lock(mutex_);
    if (!arrived_.wait_for(lock, timeout, [&] { return take(expected, found); }))
        found.problem = problem(expected, timeout);
    return found;
}

bool EventRecorder::take(const ExpectedEvent& expected, Found& found)
{
    for (Entry& entry : entries_)
        if (!entry.used && expected.difference(entry.event).empty())
        {
            entry.used = true;
            found.met = true;
            found.event = entry.event;
            return true;
        }
    return false;
}

std::string EventRecorder::problem(const ExpectedEvent& expected,
                                   std::chrono::milliseconds timeout) const
{
    std::string text =
        "no " + inWords(expected) + " within " + std::to_string(timeout.count()) + " ms";
    const Entry* nearest = nullptr;
    for (const Entry& entry : entries_)
        if (!entry.used && (nearest == nullptr ||
                            distance(expected, entry.event) <= distance(expected, nearest->event)))
            nearest = &entry;
    if (nearest == nullptr)
        return text + "; nothing else came";
    return text + "; nearest: " + nearest->event.inWords() + " (" +
           expected.difference(nearest->event) + ")";
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

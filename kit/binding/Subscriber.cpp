#include "kit/binding/Subscriber.h"

#include <stdexcept>
#include <utility>

namespace kit
{

namespace
{

std::size_t indexOf(const Event& event, const std::string& name)
{
    std::size_t index = 0;
    for (const Field& field : event.arguments)
    {
        if (name == field.argument || (*field.tag != '\0' && name == field.tag))
            break;
        ++index;
    }
    return index;
}

}  // namespace

std::string ReceivedEvent::value(const std::string& argument) const
{
    const std::size_t index = indexOf(*event, argument);
    return index < values.size() ? values[index] : std::string();
}

std::string ReceivedEvent::text(const std::string& argument) const
{
    const std::size_t index = indexOf(*event, argument);
    return index < values.size() ? toPeople(event->arguments[index], values[index]) : std::string();
}

std::string ReceivedEvent::inWords() const
{
    std::string words = event->method;
    for (std::size_t i = 0; i < values.size(); ++i)
    {
        const Field& field = event->arguments[i];
        const std::string value = toPeople(field, values[i]);
        const bool plain = !value.empty() && value.find(' ') == std::string::npos;
        words += std::string(" ") + field.argument + "=" + (plain ? value : "\"" + value + "\"");
    }
    return words;
}

std::string ExpectedEvent::difference(const ReceivedEvent& received) const
{
    const Event* const expected = findEvent(method);
    if (expected == nullptr)
        throw std::invalid_argument("there is no event " + method);
    eventText(*expected, values);  // throws for what the event cannot have
    if (received.event != expected)
        return "it is " + received.method();
    for (const auto& [name, value] : values)
    {
        const std::size_t index = indexOf(*expected, name);
        if (toWire(expected->arguments[index], value) != received.values[index])
            return name + " is " + received.text(name);
    }
    return std::string();
}

void EventEar::receive(const char* callback, std::vector<std::string> values)
{
    ReceivedEvent received;
    received.event = findCallback(callback);
    received.values = std::move(values);
    onEvent(received);
}

}  // namespace kit

template class communications::Callbacks<kit::EventEar>;

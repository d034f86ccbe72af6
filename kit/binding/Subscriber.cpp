#include "kit/binding/Subscriber.h"

#include <utility>

namespace kit
{

bool ReceivedEvent::has(const std::string& argument) const
{
    return placeOf(event->arguments, argument) < values.size();
}

std::string ReceivedEvent::value(const std::string& argument) const
{
    return values[checkedPlaceOf(event->method, event->arguments, argument)];
}

std::string ReceivedEvent::text(const std::string& argument) const
{
    const std::size_t place = checkedPlaceOf(event->method, event->arguments, argument);
    return toPeople(event->arguments[place], values[place]);
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

void EventEar::receive(const char* callback, std::vector<std::string> values)
{
    ReceivedEvent received;
    received.event = findCallback(callback);
    received.values = std::move(values);
    onEvent(received);
}

}  // namespace kit

template class communications::Callbacks<kit::EventEar>;

#ifndef KIT_BINDING_SUBSCRIBER_H
#define KIT_BINDING_SUBSCRIBER_H

#include "application/Callbacks.h"
#include "kit/binding/WireText.h"
#include "kit/protocol/Protocol.h"

#include <string>
#include <utility>
#include <vector>

namespace kit
{

/// An event as it reached its callback.
struct ReceivedEvent
{
    /// Its row in the table of events.
    const Event* event = nullptr;
    /// One for each argument of the row, as it would travel: numbers in decimal, flags as 1 and 0.
    std::vector<std::string> values;

    std::string method() const { return event->method; }

    bool has(const std::string& argument) const;

    /// The value of an argument, by its name or its tag. Throws std::invalid_argument for a name
    /// that the event does not have, with the one that was probably meant.
    std::string value(const std::string& argument) const;

    /// The same for people: numbers by name, flags as true and false.
    std::string text(const std::string& argument) const;

    /// "CallHeldEvent lineId=1001 callId=7".
    std::string inWords() const;
};

/// Turns the arguments of any callback into the values of its event.
class EventEar
{
public:
    /// On the thread that delivers the event.
    virtual void onEvent(const ReceivedEvent& received) = 0;

protected:
    ~EventEar() = default;

    template <typename... Arguments>
    void heard(const char* callback, const Arguments&... arguments)
    {
        std::vector<std::string> values;
        (add(values, arguments), ...);
        receive(callback, std::move(values));
    }

private:
    template <typename Argument>
    static void add(std::vector<std::string>& values, const Argument& argument)
    {
        values.push_back(wireText(argument));
    }
    static void add(std::vector<std::string>& values, CallPartyInfo* party)
    {
        for (const char* text :
             {party->callingNumber, party->callingName, party->calledNumber, party->calledName})
            values.push_back(text);
    }

    void receive(const char* callback, std::vector<std::string> values);
};

}  // namespace kit

// Once, in the kit's library.
extern template class communications::Callbacks<kit::EventEar>;

namespace kit
{

/// A subscriber that takes all 28 callbacks in one place: override onEvent.
class Subscriber : public communications::Callbacks<EventEar>
{
public:
    using EventEar::onEvent;
};

}  // namespace kit

#endif

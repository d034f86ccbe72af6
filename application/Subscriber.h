#ifndef COMMUNICATIONS_SUBSCRIBER_H
#define COMMUNICATIONS_SUBSCRIBER_H

#include "application/Callbacks.h"
#include "application/Events.h"

namespace communications
{

struct Silence
{
    template <typename... Arguments>
    void heard(const Arguments&...)
    {
    }
};

/// A subscriber that does nothing: derive from it and override the callbacks that matter.
class QuietSubscriber : public Callbacks<Silence>
{
};

/// Hears one kind of event.
template <typename Event>
class Hears
{
public:
    virtual void on(const Event& event) = 0;

protected:
    ~Hears() = default;
};

template <typename... Events>
struct Hearing : Hears<Events>...
{
protected:
    template <typename Event, typename... Arguments>
    void heard(Callback<Event>, const Arguments&... arguments)
    {
        tell<Event>(this, arguments...);
    }

private:
    template <typename Event, typename... Arguments>
    static void tell(Hears<Event>* listener, const Arguments&... arguments)
    {
        listener->on(Event{arguments...});
    }

    template <typename Event, typename... Arguments>
    static void tell(const void*, const Arguments&...)
    {
    }
};

/// A subscriber that gets the events named, as structures:
///
///     class Lamp : public communications::EventSubscriber<communications::CallHeldEvent>
///     {
///         void on(const communications::CallHeldEvent& event) override;
///     };
template <typename... Events>
class EventSubscriber : public Callbacks<Hearing<Events...>>
{
};

}  // namespace communications

#endif

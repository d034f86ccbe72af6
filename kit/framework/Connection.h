#ifndef KIT_FRAMEWORK_CONNECTION_H
#define KIT_FRAMEWORK_CONNECTION_H

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace kit
{

/// How an exchange with the service went.
enum class Delivery
{
    done,
    timedOut,
    gone  ///< the service is not there, or went away meanwhile
};

/// What the simulation says to a command, in words for people.
struct ControlAnswer
{
    bool accepted = false;
    std::string text;
};

/// One application's connection to a service, in this process or in another.
///
/// Any number of threads may use it at once, also from inside the event sink's callers. Nothing is
/// ever sent twice, and a connection that is gone stays gone: make a new one and subscribe again.
class Connection
{
public:
    using EventSink = std::function<void(const std::string& channelName, const std::string& event)>;
    using GoneSink = std::function<void()>;
    using ComplaintSink = std::function<void(const std::string& complaint)>;

    virtual ~Connection() = default;

    /// Where events go. Called on any thread, in the order in which the service sent them; must only
    /// take them in. Set before the first subscription.
    virtual void setEventSink(EventSink sink) = 0;

    /// Told once when the service has gone, also while nothing is asked, where the connection can
    /// notice; at once if it has gone already. Called on any thread; must only take it in.
    virtual void setGoneSink(GoneSink sink) = 0;

    /// Why the connection is gone, as far as it knows more than that; "" otherwise.
    virtual std::string whyGone() const = 0;

    /// Told what the service complains of in this connection's requests, in words for people, before
    /// the answer comes. Called on any thread; must only take it in.
    virtual void setComplaintSink(ComplaintSink sink) = 0;

    /// Sends a request and waits for the answer, which is left alone unless it is `done`.
    virtual Delivery request(const std::string& request, std::string& answer,
                             std::chrono::milliseconds timeout) = 0;

    /// The same for a subscription: events for it will come under `channelName`.
    virtual Delivery subscribe(const std::string& request, std::string& answer,
                               const std::string& channelName,
                               std::chrono::milliseconds timeout) = 0;

    /// Sends a message that is not answered.
    virtual Delivery post(const std::string& message) = 0;

    /// Asks the simulation, not the service: drives the far end, the clock, the faults ("help" lists
    /// all).
    virtual Delivery control(const std::string& command, ControlAnswer& answer,
                             std::chrono::milliseconds timeout) = 0;

    /// Whether time passes while an answer is awaited. A service in this process answers at once or
    /// never.
    virtual bool takesTime() const = 0;

    /// For messages to people: "the service in this process", "the service at /run/x.sock".
    virtual std::string description() const = 0;
};

/// Passes everything on to another connection, which it owns: for those that do some of it
/// otherwise.
class ConnectionDecorator : public Connection
{
public:
    explicit ConnectionDecorator(std::unique_ptr<Connection> decorated)
        : inner(std::move(decorated))
    {
    }

    void setEventSink(EventSink sink) override { inner->setEventSink(std::move(sink)); }
    void setGoneSink(GoneSink sink) override { inner->setGoneSink(std::move(sink)); }
    std::string whyGone() const override { return inner->whyGone(); }
    void setComplaintSink(ComplaintSink sink) override { inner->setComplaintSink(std::move(sink)); }
    Delivery request(const std::string& request, std::string& answer,
                     std::chrono::milliseconds timeout) override
    {
        return inner->request(request, answer, timeout);
    }
    Delivery subscribe(const std::string& request, std::string& answer,
                       const std::string& channelName, std::chrono::milliseconds timeout) override
    {
        return inner->subscribe(request, answer, channelName, timeout);
    }
    Delivery post(const std::string& message) override { return inner->post(message); }
    Delivery control(const std::string& command, ControlAnswer& answer,
                     std::chrono::milliseconds timeout) override
    {
        return inner->control(command, answer, timeout);
    }
    bool takesTime() const override { return inner->takesTime(); }
    std::string description() const override { return inner->description(); }

protected:
    const std::unique_ptr<Connection> inner;
};

}  // namespace kit

#endif

#ifndef KIT_TESTING_FAULT_CONNECTION_H
#define KIT_TESTING_FAULT_CONNECTION_H

#include "kit/framework/Connection.h"

#include <chrono>
#include <memory>
#include <string>

namespace kit
{

/// What goes wrong. Requests reach the service as they should unless said otherwise.
enum class Fault
{
    delay,     ///< the answer comes late; too late if the time-out is over before
    noAnswer,  ///< the answer never comes: the caller waits for its whole time-out. An event is lost
    failure,   ///< the request is not sent on; the answer is "sfiFailure"
    empty,     ///< the answer, or the event, is ""
    garbage,   ///< the answer, or the event, is no message at all
    truncated,  ///< only the first half of the answer, or of the event, comes
    duplicate,  ///< the service gets the request twice; an event comes twice
    exception,  ///< not sent on; the channel throws a MarloException
    gone        ///< not sent on, nor is an event: from then on the service is gone
};

/// A connection that fails on command and otherwise passes everything on:
///
///     faults.inject(kit::Fault::failure, "AnswerCall", 2);  // twice, then it succeeds
///
/// Over a service in this process nothing waits: a time-out is told at once. Once gone, the service
/// stays gone, and whoever listens for that is told.
///
/// Faults may be set at any time and from any thread. They apply in the order in which they were
/// set, one to a message; a one-way message knows `duplicate`, `exception` and `gone` only.
class FaultConnection : public ConnectionDecorator
{
public:
    explicit FaultConnection(std::unique_ptr<Connection> connection);
    ~FaultConnection() override;

    FaultConnection(const FaultConnection&) = delete;
    FaultConnection& operator=(const FaultConnection&) = delete;

    /// For the next `times` messages with this method, a request's or an event's; "" is any request
    /// and no event. A negative `times` is for ever. Throws std::invalid_argument for a method that
    /// is none.
    void inject(Fault fault, const std::string& method, int times = -1,
                std::chrono::milliseconds delay = std::chrono::milliseconds(0));

    /// From now on nothing goes wrong, but what is gone stays gone; who still waits for an answer is
    /// told at once that it timed out.
    void clear();

    /// How many faults have happened.
    int happened() const;

    void setEventSink(EventSink sink) override;
    void setGoneSink(GoneSink sink) override;
    std::string whyGone() const override;
    Delivery request(const std::string& request, std::string& answer,
                     std::chrono::milliseconds timeout) override;
    Delivery subscribe(const std::string& request, std::string& answer,
                       const std::string& channelName, std::chrono::milliseconds timeout) override;
    Delivery post(const std::string& message) override;

private:
    class Faults;
    // The events' side may outlive this object for as long as the connection does.
    const std::shared_ptr<Faults> faults_;
};

}  // namespace kit

#endif

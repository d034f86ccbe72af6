#ifndef KIT_SERVICE_SERVICE_H
#define KIT_SERVICE_SERVICE_H

#include "kit/framework/Connection.h"

#include <chrono>
#include <functional>
#include <string>

namespace kit
{

/// What can be offered to applications, in this process or on a socket: the simulated service, or
/// one that was recorded. Any number of threads may call.
class Service
{
public:
    using ClientId = int;
    using EventSink = Connection::EventSink;
    using Log = std::function<void(const std::string& line)>;

    /// How a request went.
    enum class Reply
    {
        answered,
        silent,  ///< no answer comes, the caller has to give up by itself
        gone     ///< the service dropped this client: connect and subscribe again
    };

    virtual ~Service() = default;

    /// The second hears what the log is told of the client's own requests, the third once that the
    /// service has dropped the client, behind everything else.
    virtual ClientId connect(EventSink sink, Log complaints = nullptr,
                             Connection::GoneSink gone = nullptr) = 0;

    /// Forgets the client and its subscriptions; its sinks are not called any more on return.
    virtual void disconnect(ClientId client) = 0;

    /// False once the service has dropped the client.
    virtual bool connected(ClientId client) const = 0;

    /// Answers a request; `answer` is left alone unless there is one.
    virtual Reply exchange(ClientId client, const std::string& text, std::string& answer) = 0;
    virtual Reply exchangeSubscription(ClientId client, const std::string& text,
                                       std::string& answer, const std::string& channelName) = 0;

    /// The answer has been sent: what was to follow it may follow.
    virtual void followAnswer() {}

    /// Takes a request that is not answered; one from a client that was dropped is lost.
    virtual void post(ClientId client, const std::string& text) = 0;

    /// Commands to the service that are not an application's, as text ("help" lists all).
    virtual ControlAnswer control(const std::string& command) = 0;

    /// Lets time pass.
    virtual void advance(std::chrono::milliseconds time) = 0;
};

}  // namespace kit

#endif

#ifndef KIT_SERVICE_SERVICE_H
#define KIT_SERVICE_SERVICE_H

#include "kit/framework/Connection.h"
#include "kit/protocol/Protocol.h"

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

    virtual ~Service() = default;

    /// The second hears what the log is told of the client's own requests, the third once that the
    /// service has dropped the client, behind everything else.
    virtual ClientId connect(EventSink sink, Log complaints = nullptr,
                             Connection::GoneSink gone = nullptr) = 0;

    /// Forgets the client and its subscriptions; its sinks are not called any more on return.
    virtual void disconnect(ClientId client) = 0;

    /// Takes what an application sends; `channel` is where a subscription's events are to go. The
    /// answer is left alone unless it is `done`; `timedOut` means that none comes and the caller has to
    /// give up by itself, `gone` that the service has dropped the client: connect and subscribe again.
    virtual Delivery exchange(ClientId client, Sending sending, const std::string& text,
                              const std::string& channel, std::string& answer) = 0;

    /// The answer has been sent: what was to follow it may follow.
    virtual void followAnswer() {}

    /// Commands to the service that are not an application's, as text ("help" lists all).
    virtual ControlAnswer control(const std::string& command) = 0;

    /// Lets time pass.
    virtual void advance(std::chrono::milliseconds time) = 0;
};

}  // namespace kit

#endif

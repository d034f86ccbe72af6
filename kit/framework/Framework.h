#ifndef KIT_FRAMEWORK_FRAMEWORK_H
#define KIT_FRAMEWORK_FRAMEWORK_H

#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "framework/Executable.h"
#include "kit/framework/Connection.h"
#include "kit/framework/Library.h"
#include "kit/protocol/Protocol.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kit
{

/// What passes between application and service, one by one.
struct Passage
{
    enum class What
    {
        request,  ///< on its way to the service; an answer follows
        answer,   ///< what became of the request with the same number
        message,  ///< on its way to the service; no answer follows
        arrival,  ///< an event that came in, to be delivered in its turn
        event     ///< about to be delivered to a subscriber
    };

    What what;
    Sending sending;       ///< how a request or a message is sent; nothing else looks at it
    std::uint64_t number;  ///< counts requests; an answer has that of its request
    std::string channel;   ///< of an event or a subscription: the subscriber's
    std::string text;      ///< as it travels
    Delivery delivery = Delivery::done;  ///< of an answer
    std::chrono::system_clock::time_point time = {};
};

/// A stand-in for the phone's framework: opens the library, gives its proxy a channel to a service,
/// names the subscribers' channels and delivers events to them through the library's invoker.
///
/// Threads: every call may come from any thread, and from inside callbacks, but for the destructor
/// and pump(). Requests run on the caller's thread and hold no lock while they wait. Events are
/// delivered one at a time in the order of their arrival: on one thread of the framework's own, or
/// inside pump(). A callback that throws is logged and counts as delivered. Operations called from
/// inside a callback work; the events that they cause come after it.
///
/// Ownership: the framework owns the connection, the proxy and the invoker. Subscribers stay the
/// application's: remove() each before it is destroyed, or let a Subscription do so. init() and
/// shutdown() are not called on them.
///
/// Failures: a service that does not answer in time, or is gone, leaves the response empty, so that
/// results are failure; subscribing throws MarloException (see textOf). Three queries take an empty
/// answer for a success, as the library does: getDevices, getMicrophoneMute and getDoNotDisturb; set
/// Options::unanswered to "sfiFailure" where that matters. Either way the problem sink hears of it
/// at once. Nothing is sent again: connect anew with reconnect() and subscribe.
class Framework
{
public:
    enum class Events
    {
        onOwnThread,
        onPump  ///< delivered when the application calls pump(), for tests
    };

    using Observer = std::function<void(const Passage& passage)>;
    using ProblemSink = std::function<void(const std::string& problem)>;

    struct Options
    {
        std::string library;  ///< path; see Library for what else is tried
        Events events = Events::onOwnThread;
        std::chrono::milliseconds requestTimeout{5000};
        /// How long one unit is of the time-outs that the library gives: 100000 units for two of
        /// the requests.
        std::chrono::microseconds timeoutUnit{1000};
        std::string unanswered;  ///< left in the response when there is no answer
        /// Sees all that passes, on the thread concerned, several at once. It must not call
        /// operations nor this framework, and must not throw.
        Observer observer;
        /// Hears one line of text for each failure to reach the service, and for a callback that
        /// throws. On the thread concerned, several at once; must not throw.
        ProblemSink problems;
        /// Hears once for each connection that its service has gone, also while nothing is asked:
        /// time to reconnect(), which may be done in here. In its turn among the events, and on
        /// their thread.
        ProblemSink gone;
    };

    /// Throws LibraryError, and std::invalid_argument for no connection.
    explicit Framework(std::unique_ptr<Connection> connection);
    Framework(std::unique_ptr<Connection> connection, Options options);

    /// Events that are not delivered yet are dropped. Not from inside a callback.
    ~Framework();

    Framework(const Framework&) = delete;
    Framework& operator=(const Framework&) = delete;

    /// The library's operations.
    CommunicationsServiceIfc& service();

    /// The connection in use, for control(); valid for as long as the pointer is held.
    std::shared_ptr<Connection> connection() const;

    /// After the service was restarted: goes on with a new connection. Undelivered events of the old
    /// one are dropped and its subscriptions are gone: subscribe again.
    void reconnect(std::unique_ptr<Connection> connection);

    /// Name of a subscriber's channel; a new one gets a name. This is what the library is told. A
    /// subscriber that is no CommunicationsServiceEventIfc as well is refused by MarloException, here
    /// and when it subscribes: the library would call through a null pointer at its first event.
    std::string channelOf(Executable& subscriber);

    /// Lets an event come in as if the service had sent it.
    void inject(const std::string& channelName, const std::string& event);

    /// Delivers nothing more to the subscriber. On return no callback of it is running, save the
    /// one that this is called from. False when it was not known.
    bool remove(Executable& subscriber);

    /// Delivers what has arrived, on this thread; waits up to `wait` for the first event. Returns the
    /// number delivered; 0 inside a callback, and when events have a thread of their own.
    std::size_t pump(std::chrono::milliseconds wait = std::chrono::milliseconds(0));

    /// Waits until every event that has arrived is delivered; false when that takes longer. Not
    /// from inside a callback.
    bool settle(std::chrono::milliseconds timeout);

private:
    class Core;
    std::unique_ptr<Core> core_;
};

}  // namespace kit

#endif

#ifndef KIT_SERVICE_SIMULATED_SERVICE_H
#define KIT_SERVICE_SIMULATED_SERVICE_H

#include "kit/framework/Connection.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kit
{

/// The communications service as a simulation: lines, calls, robots at the far end, a clock.
///
/// Threads: any number may call. Events go to the sinks of all clients that have subscribed, in one
/// order for all, with no lock held, on a thread that is inside a call of this class; what a call
/// causes has been delivered when it returns. (From inside a sink it is delivered later, but sinks
/// should only take events in; they must not throw.) Nothing here sleeps or has threads of its own:
/// time passes in advance().
///
/// Ownership: sinks and the log are copied in, and let go when the client or the service goes.
///
/// Failures: whatever a request or a command holds, the answer is a text. What was wrong with it is
/// told to the log, one line for each thing.
class SimulatedService
{
public:
    using ClientId = int;
    using EventSink = Connection::EventSink;
    using Log = std::function<void(const std::string& line)>;

    /// How a request went; everything but `answered` has been asked for by control().
    enum class Reply
    {
        answered,
        silent,  ///< no answer comes, the caller has to give up by itself
        gone     ///< the service dropped this client: connect and subscribe again
    };

    /// A phone with the lines 1001, 1002 and 1003, or with others.
    SimulatedService();
    explicit SimulatedService(const std::vector<std::string>& lines);
    ~SimulatedService();

    SimulatedService(const SimulatedService&) = delete;
    SimulatedService& operator=(const SimulatedService&) = delete;

    /// Where complaints go (unknown requests, tags, values). The default is nowhere.
    void setLog(Log log);

    /// The second hears what the log is told of the client's own requests, the third once that the
    /// service has dropped the client, behind everything else.
    ClientId connect(EventSink sink, Log complaints = nullptr, Connection::GoneSink gone = nullptr);

    /// Forgets the client and its subscriptions; its sinks are not called any more on return.
    void disconnect(ClientId client);

    /// False once the service has dropped the client.
    bool connected(ClientId client) const;

    /// Answers a request; `answer` is left alone unless there is one.
    Reply exchange(ClientId client, const std::string& text, std::string& answer);
    Reply exchangeSubscription(ClientId client, const std::string& text, std::string& answer,
                               const std::string& channelName);

    /// The same for those who do not care why there is no answer: it is "" then.
    std::string request(ClientId client, const std::string& text);
    std::string subscribe(ClientId client, const std::string& text, const std::string& channelName);

    /// Takes a request that is not answered; one from a client that was dropped is lost.
    void post(ClientId client, const std::string& text);

    /// The simulation's own commands, as text ("help" lists all).
    ControlAnswer control(const std::string& command);

    /// Lets time pass on the simulated clock: rings, answers, time-outs, call-backs happen in their
    /// order.
    void advance(std::chrono::milliseconds time);

    /// The same, but only to the next moment at which something happens, and at most `limit`. Returns
    /// how much time has passed.
    std::chrono::milliseconds advanceToNext(std::chrono::milliseconds limit);

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace kit

#endif

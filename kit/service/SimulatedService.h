#ifndef KIT_SERVICE_SIMULATED_SERVICE_H
#define KIT_SERVICE_SIMULATED_SERVICE_H

#include <chrono>
#include <functional>
#include <memory>
#include <string>

namespace kit
{

/// The communications service as a simulation: lines, calls, robots at the far end, a clock.
///
/// Any number of threads may call. Events go to the sinks of all clients that have subscribed, in
/// one order for all, on the thread whose call caused them and with no lock held that a sink could
/// want; a sink must only take them in. Nothing here waits or sleeps: time passes in advance().
class SimulatedService
{
public:
    using ClientId = int;
    using EventSink = std::function<void(const std::string& channelName, const std::string& event)>;
    using Log = std::function<void(const std::string& line)>;

    SimulatedService();
    ~SimulatedService();

    SimulatedService(const SimulatedService&) = delete;
    SimulatedService& operator=(const SimulatedService&) = delete;

    /// Where complaints go (unknown requests, tags, values). The default is nowhere.
    void setLog(Log log);

    ClientId connect(EventSink sink);

    /// Forgets the client and its subscriptions; its sink is not called any more on return.
    void disconnect(ClientId client);

    /// Answers a request; always with a text, never with an exception.
    std::string request(ClientId client, const std::string& text);
    std::string subscribe(ClientId client, const std::string& text, const std::string& channelName);
    void post(ClientId client, const std::string& text);

    /// The simulation's own commands, as text ("help" lists all). A refusal starts with "error: ".
    std::string control(const std::string& command);

    /// Lets time pass: rings, answers, time-outs, call-backs happen in their order.
    void advance(std::chrono::milliseconds time);

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace kit

#endif

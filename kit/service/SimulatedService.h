#ifndef KIT_SERVICE_SIMULATED_SERVICE_H
#define KIT_SERVICE_SIMULATED_SERVICE_H

#include "kit/service/Service.h"

#include <chrono>
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
class SimulatedService : public Service
{
public:
    /// A phone with the lines 1001, 1002 and 1003, or with others.
    SimulatedService();
    explicit SimulatedService(const std::vector<std::string>& lines);
    ~SimulatedService() override;

    SimulatedService(const SimulatedService&) = delete;
    SimulatedService& operator=(const SimulatedService&) = delete;

    /// Where complaints go (unknown requests, tags, values). The default is nowhere.
    void setLog(Log log);

    ClientId connect(EventSink sink, Log complaints = nullptr,
                     Connection::GoneSink gone = nullptr) override;
    void disconnect(ClientId client) override;

    /// Without an answer, or gone, only when control() has asked for it.
    Delivery exchange(ClientId client, Sending sending, const std::string& text,
                      const std::string& channel, std::string& answer) override;

    /// The simulation's own commands, as text ("help" lists all).
    ControlAnswer control(const std::string& command) override;

    /// Lets time pass on the simulated clock: rings, answers, time-outs, call-backs happen in their
    /// order.
    void advance(std::chrono::milliseconds time) override;

    /// The same, but only to the next moment at which something happens, and at most `limit`. Returns
    /// how much time has passed.
    std::chrono::milliseconds advanceToNext(std::chrono::milliseconds limit);

private:
    class State;
    std::unique_ptr<State> state_;
};

}  // namespace kit

#endif

#ifndef KIT_PHONE_PHONE_H
#define KIT_PHONE_PHONE_H

#include "kit/binding/Caller.h"
#include "kit/binding/Subscriber.h"
#include "kit/framework/Framework.h"
#include "kit/phone/CallBook.h"
#include "kit/phone/Display.h"
#include "kit/phone/EventLog.h"
#include "kit/phone/Recorder.h"
#include "kit/phone/Timekeeper.h"
#include "kit/phone/Verdict.h"

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kit::phone
{

/// The telephone: the library over a connection, a subscriber, and what it knows of its calls.
///
/// Everything happens on the thread that calls. Events are taken in meanwhile and delivered in
/// pump(), so that nothing changes or prints behind the back of what is carried out.
class Phone : public Subscriber
{
public:
    using Connect = std::function<std::unique_ptr<Connection>()>;

    struct Settings
    {
        Connect connect;      ///< makes a new connection; raises std::exception
        std::string library;  ///< path, or "" for the one beside the kit
        std::chrono::milliseconds timeout{5000};
        Timekeeper::Advance advance;  ///< see Timekeeper
        bool realTime = true;
    };

    /// Raises LibraryError, and what `connect` raises.
    Phone(Settings settings, Recorder& recorder, Display& display);
    ~Phone() override;

    // Each prints what comes of it.

    /// Calls an operation. A query that answers no is unmet where it was to fail.
    Report call(const Operation& operation, const std::vector<Word>& words, bool falseIsUnmet);

    /// Compares what the last operation returned: "result=VALUE" or "field=value".
    Report check(const std::vector<Word>& words) const;

    /// "result" and the fields that the last operation returned, as check() compares them.
    Values returned() const;

    /// Waits for an event, or for its absence. The event's call is put into `call` when it has one.
    Report expect(const Expectation& expectation, std::string& call);

    /// Gives the simulation a command.
    Report control(const std::string& command);

    /// Sends a request as it stands.
    Report raw(const std::string& text);

    /// Lets an event come in; false when the library has no callback for it.
    bool inject(const std::string& text);

    /// With a new connection; what was believed of calls and lines is forgotten.
    Report reconnect();

    /// Lets time pass.
    Report wait(std::chrono::milliseconds time);

    /// Delivers and prints what has arrived.
    void pump();

    /// In real time: lets as much time pass in the simulation as has passed outside.
    void keepTime() { timekeeper_.keep(); }

    Timekeeper::Time timePassed() const { return timekeeper_.passed(); }

    /// Gives the simulation a command that is not the person's; "" when it does not answer.
    std::string ask(const std::string& command);

    /// What the phone believes. The lines are asked for where they may have changed.
    const CallBook& book();
    const CallBook& knownBook() const { return book_; }
    EventLog& events() { return events_; }

    /// From the framework, in pump().
    void onEvent(const ReceivedEvent& received) override;

    /// Called again and again while something is waited for.
    void setWhileWaiting(std::function<void()> action) { whileWaiting_ = std::move(action); }

    /// Called with each event once it counts.
    void setOnEach(std::function<void(const ReceivedEvent& received)> action)
    {
        onEach_ = std::move(action);
    }

private:
    void takeGone(const std::string& problem);
    std::unique_ptr<Connection> connect();
    Report unreachable(Delivery delivery, const std::string& what);
    bool waitFor(std::chrono::milliseconds limit, const std::function<bool()>& done);
    void learnLines();
    std::string resultLine(const Operation& operation, const Values& values,
                           const std::vector<std::string>& nulls, bool failed) const;

    const Settings settings_;
    Recorder& recorder_;
    Display& display_;
    Timekeeper timekeeper_;
    std::function<void()> whileWaiting_;
    std::function<void(const ReceivedEvent& received)> onEach_;

    CallBook book_;
    bool linesAreStale_ = true;
    EventLog events_;
    bool subscribed_ = false;
    std::string gone_;  ///< that the service is gone, and why; "" while it is there
    std::vector<std::string> problems_;  ///< the framework's, in the operation under way
    const Operation* lastOperation_ = nullptr;
    Outcome lastOutcome_;

    std::unique_ptr<Framework> framework_;
};

}  // namespace kit::phone

#endif

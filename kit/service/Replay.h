#ifndef KIT_SERVICE_REPLAY_H
#define KIT_SERVICE_REPLAY_H

#include "kit/service/Service.h"
#include "kit/trace/Trace.h"

#include <cstddef>
#include <deque>
#include <iosfwd>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kit
{

/// A service that was recorded, played again: it answers what an application asks as it was answered
/// then, and sends the events where they stood between the requests.
///
///     kit::Replay replay("phone.jsonl");
///     runTheApplication(replay.connection());
///     EXPECT_EQ(replay.difference(), "");
///
/// An application has to ask for the same, in the same order; where the trace tells threads apart,
/// in the same order on each. The first request that differs is told. After that the replay follows
/// as well as it can. What lines there are may be asked at any time, and commands that the trace
/// does not hold mean nothing.
///
/// Threads: any number may call. Events go out while a call is inside; sinks must only take them in.
class Replay : public Service
{
public:
    enum class Pace
    {
        fast,     ///< events come as soon as the requests before them have come
        recorded  ///< and not before as much time has passed in advance() as had passed then
    };

    /// Throws std::runtime_error, whose text is one line for people with the place, when the file
    /// cannot be read or is no whole trace.
    explicit Replay(const std::string& file, Pace pace = Pace::fast);

    /// Plays what can be read; see complaint(). Throws std::runtime_error when that is nothing.
    Replay(std::istream& in, std::string name, Pace pace = Pace::fast);

    Replay(const Replay&) = delete;
    Replay& operator=(const Replay&) = delete;

    /// For an application in this process. The replay has to outlive it.
    std::unique_ptr<Connection> connection();

    /// What is wrong with the trace, in one line; "" for nothing.
    const std::string& complaint() const { return complaint_; }

    /// What was asked otherwise than recorded or, when there is nothing of that, what has not been
    /// asked yet: the place in the trace, and in lines below it what was recorded, what came, and what
    /// is nearest. "" when everything has been asked as recorded.
    std::string difference() const;

    /// Told the first difference at once.
    void setLog(Log log);

    ClientId connect(EventSink sink, Log complaints = nullptr,
                     Connection::GoneSink gone = nullptr) override;
    void disconnect(ClientId client) override;
    Delivery exchange(ClientId client, Sending sending, const std::string& text,
                      const std::string& channel, std::string& answer) override;
    void followAnswer() override;
    ControlAnswer control(const std::string& command) override;
    void advance(std::chrono::milliseconds time) override;

private:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    /// One record, and how far it has got.
    struct Step
    {
        TraceRecord record;
        std::size_t line = 0;
        std::size_t answer = none;  ///< the step that answers this request
        bool done = false;
    };

    struct Receiver
    {
        ClientId client;
        std::string channel;
    };

    void read(std::istream& in);
    bool awaits(const Step& step) const;
    std::size_t find(Sending sending, const std::string& text) const;
    void finish(std::size_t step);
    std::size_t take(Sending sending, const std::string& text);
    std::string lines() const;
    void play(std::size_t end, bool atOnce);
    void deliver(const TraceRecord& event);
    void differ(Sending sending, const std::string& text, std::size_t expected);
    std::size_t nextRequest() const;
    std::string place(std::size_t step) const;

    const std::string name_;
    const Pace pace_;
    std::string complaint_;
    std::vector<Step> steps_;
    std::map<int, std::deque<std::size_t>> requests_;  ///< that are to come, by their threads
    bool hasControls_ = false;

    mutable std::mutex mutex_;
    std::size_t at_ = 0;  ///< everything before it is done
    std::chrono::microseconds clock_{0};
    std::chrono::microseconds offset_{0};  ///< between that clock and the trace's
    std::map<ClientId, EventSink> clients_;
    std::map<std::string, Receiver> receivers_;  ///< by the channels in the trace
    std::vector<Receiver> subscriptions_;
    ClientId lastClient_ = 0;
    std::string devices_;  ///< the last answer about lines
    std::string difference_;
    std::size_t differences_ = 0;
    Log log_;
};

}  // namespace kit

#endif

#include "kit/framework/SocketConnection.h"

#include "kit/framework/FrameStream.h"
#include "kit/framework/Sinks.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <map>
#include <mutex>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace kit
{

namespace
{

constexpr std::chrono::milliseconds longestWait = std::chrono::hours(24);
/// How long a connection stays for what has been posted and not been sent.
constexpr std::chrono::milliseconds farewell = std::chrono::seconds(1);

/// A connected socket; throws ConnectionError.
int connectTo(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty())
        throw ConnectionError("the path of the service's socket is empty");
    if (path.size() >= sizeof address.sun_path)
        throw ConnectionError("the path of the service's socket has " +
                              std::to_string(path.size()) + " characters, " +
                              std::to_string(sizeof address.sun_path - 1) +
                              " are possible: " + path);
    path.copy(address.sun_path, path.size());
    // Not blocking, so that a service that takes nobody in is an error and not a wait.
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0)
        throw ConnectionError(std::string("no socket: ") + std::strerror(errno));
    if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return socket;
    const int error = errno;
    ::close(socket);
    const char* const why = error == ENOENT         ? "there is no such socket"
                            : error == ECONNREFUSED ? "nobody listens there any more"
                            : error == EAGAIN       ? "it takes no connections at the moment"
                                                    : std::strerror(error);
    throw ConnectionError("no service at " + path + ": " + why);
}

class Core final : public Connection
{
public:
    explicit Core(const std::string& path)
        : path_(path),
          stream_(std::make_shared<FrameStream>(
              FrameStream::Socket(io_, asio::local::stream_protocol(), connectTo(path))))
    {
        stream_->start({[this](Frame& frame) { take(frame); },
                        [this](const std::string& what) { stream_->end("it sent " + what); },
                        nullptr, [this](const std::string& why) { end(why); }});
        thread_ = std::thread([this] { io_.run(); });
    }

    ~Core() override
    {
        stream_->waitUntilSent(farewell);
        io_.stop();
        thread_.join();
    }

    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    void setEventSink(EventSink sink) override { events_.set(std::move(sink)); }
    void setGoneSink(GoneSink sink) override { goneNotice_.set(sink); }
    void setComplaintSink(ComplaintSink sink) override { complaints_.set(std::move(sink)); }

    std::string whyGone() const override
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return reason_;
    }

    Delivery request(const std::string& request, std::string& answer,
                     std::chrono::milliseconds timeout) override
    {
        Frame frame{Frame::request, 0, "", request};
        return ask(frame, answer, timeout);
    }

    Delivery subscribe(const std::string& request, std::string& answer,
                       const std::string& channelName, std::chrono::milliseconds timeout) override
    {
        Frame frame{Frame::subscribe, 0, channelName, request};
        return ask(frame, answer, timeout);
    }

    Delivery post(const std::string& message) override
    {
        switch (stream_->send({Frame::post, 0, "", message}))
        {
        case FrameStream::Sent::taken:
            return Delivery::done;
        case FrameStream::Sent::tooMuch:
            return Delivery::timedOut;
        default:
            return Delivery::gone;
        }
    }

    Delivery control(const std::string& command, ControlAnswer& answer,
                     std::chrono::milliseconds timeout) override
    {
        Frame frame{Frame::control, 0, "", command};
        const Delivery delivery = ask(frame, answer.text, timeout);
        answer.accepted = delivery == Delivery::done && frame.type == Frame::answer;
        return delivery;
    }

    bool takesTime() const override { return true; }
    std::string description() const override { return "the service at " + path_; }

private:
    /// A call that waits for its answer; lives on the stack of the one who waits.
    struct Waiter
    {
        std::condition_variable changed;
        std::string* answer;
        bool answered;
        Frame::Type type;
    };

    Delivery ask(Frame& frame, std::string& answer, std::chrono::milliseconds timeout);
    void take(Frame& frame);
    void end(const std::string& why);

    const std::string path_;
    asio::io_context io_;
    const std::shared_ptr<FrameStream> stream_;

    SharedSink<std::string, std::string> events_;
    SharedSink<std::string> complaints_;
    GoneNotice goneNotice_;

    mutable std::mutex mutex_;
    std::map<std::uint64_t, Waiter*> waiters_;
    std::uint64_t lastId_ = 0;
    bool gone_ = false;
    std::string reason_;

    std::thread thread_;
};

/// The answer's type goes into the frame.
Delivery Core::ask(Frame& frame, std::string& answer, std::chrono::milliseconds timeout)
{
    const auto until = std::chrono::steady_clock::now() + std::min(timeout, longestWait);
    std::unique_lock<std::mutex> lock(mutex_);
    if (gone_)
        return Delivery::gone;
    Waiter waiter{{}, &answer, false, Frame::answer};
    frame.id = ++lastId_;
    if (stream_->send(frame) == FrameStream::Sent::tooMuch)
        return Delivery::timedOut;
    waiters_[frame.id] = &waiter;
    waiter.changed.wait_until(lock, until, [&] { return waiter.answered || gone_; });
    waiters_.erase(frame.id);
    if (waiter.answered)
    {
        frame.type = waiter.type;
        return Delivery::done;
    }
    if (gone_)
        return Delivery::gone;
    // Nobody waits for it any more.
    stream_->takeBack(frame.id);
    return Delivery::timedOut;
}

void Core::take(Frame& frame)
{
    if (frame.type == Frame::event)
        events_.tell(frame.channel, frame.text);
    else if (frame.type == Frame::complaint)
        complaints_.tell(frame.text);
    else if (frame.type == Frame::farewell)
        stream_->end(frame.text);
    else if (frame.type == Frame::answer || frame.type == Frame::refusal)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        // Without a waiter, its time has run out.
        const auto found = waiters_.find(frame.id);
        if (found == waiters_.end() || found->second->answered)
            return;
        *found->second->answer = std::move(frame.text);
        found->second->type = frame.type;
        found->second->answered = true;
        found->second->changed.notify_one();
    }
    else
        throw FrameError("a message of the type " + std::to_string(frame.type) +
                         ", which is for services");
}

/// The connection is over; everyone who waits learns it now.
void Core::end(const std::string& why)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        gone_ = true;
        reason_ = why;
        for (const auto& entry : waiters_)
            entry.second->changed.notify_one();
    }
    goneNotice_.tell();
}

}  // namespace

SocketConnection::SocketConnection(const std::string& path)
    : ConnectionDecorator(std::make_unique<Core>(path))
{
}

}  // namespace kit

#include "kit/framework/SocketConnection.h"

#include "kit/framework/FrameStream.h"

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

}  // namespace

class SocketConnection::Core
{
public:
    explicit Core(const std::string& socketPath)
        : path(socketPath),
          stream(std::make_shared<FrameStream>(
              FrameStream::Socket(io, asio::local::stream_protocol(), connectTo(socketPath))))
    {
        stream->start({[this](Frame& frame) { take(frame); },
                       [this](const std::string& what) { stream->end("it sent " + what); }, nullptr,
                       [this](const std::string& why) { end(why); }});
        thread = std::thread([this] { io.run(); });
    }

    ~Core()
    {
        stream->waitUntilSent(farewell);
        io.stop();
        thread.join();
    }

    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    /// The answer's type goes into the frame.
    Delivery ask(Frame& frame, std::string& answer, std::chrono::milliseconds timeout);
    Delivery post(const Frame& frame);
    void setGoneSink(const GoneSink& to);
    void setSink(EventSink newSink);
    void setComplaintSink(ComplaintSink to);
    std::string whyGone() const;

    const std::string path;

private:
    /// A call that waits for its answer; lives on the stack of the one who waits.
    struct Waiter
    {
        std::condition_variable changed;
        std::string* answer;
        bool answered;
        Frame::Type type;
    };

    void take(Frame& frame);
    void end(const std::string& why);

    asio::io_context io;
    const std::shared_ptr<FrameStream> stream;

    mutable std::mutex mutex;
    EventSink sink;
    GoneSink goneSink;
    ComplaintSink complaintSink;
    std::map<std::uint64_t, Waiter*> waiters;
    std::uint64_t lastId = 0;
    bool gone = false;
    std::string reason;

    std::thread thread;
};

Delivery SocketConnection::Core::ask(Frame& frame, std::string& answer,
                                     std::chrono::milliseconds timeout)
{
    const auto until = std::chrono::steady_clock::now() + std::min(timeout, longestWait);
    std::unique_lock<std::mutex> lock(mutex);
    if (gone)
        return Delivery::gone;
    Waiter waiter{{}, &answer, false, Frame::answer};
    frame.id = ++lastId;
    if (stream->send(frame) == FrameStream::Sent::tooMuch)
        return Delivery::timedOut;
    waiters[frame.id] = &waiter;
    waiter.changed.wait_until(lock, until, [&] { return waiter.answered || gone; });
    waiters.erase(frame.id);
    if (waiter.answered)
    {
        frame.type = waiter.type;
        return Delivery::done;
    }
    if (gone)
        return Delivery::gone;
    // Nobody waits for it any more.
    stream->takeBack(frame.id);
    return Delivery::timedOut;
}

Delivery SocketConnection::Core::post(const Frame& frame)
{
    switch (stream->send(frame))
    {
    case FrameStream::Sent::taken:
        return Delivery::done;
    case FrameStream::Sent::tooMuch:
        return Delivery::timedOut;
    default:
        return Delivery::gone;
    }
}

void SocketConnection::Core::setSink(EventSink newSink)
{
    const std::lock_guard<std::mutex> lock(mutex);
    sink = std::move(newSink);
}

void SocketConnection::Core::setComplaintSink(ComplaintSink to)
{
    const std::lock_guard<std::mutex> lock(mutex);
    complaintSink = std::move(to);
}

std::string SocketConnection::Core::whyGone() const
{
    const std::lock_guard<std::mutex> lock(mutex);
    return reason;
}

void SocketConnection::Core::take(Frame& frame)
{
    std::unique_lock<std::mutex> lock(mutex);
    if (frame.type == Frame::event)
    {
        const EventSink to = sink;
        lock.unlock();
        if (to)
            to(frame.channel, frame.text);
    }
    else if (frame.type == Frame::complaint)
    {
        const ComplaintSink to = complaintSink;
        lock.unlock();
        if (to)
            to(frame.text);
    }
    else if (frame.type == Frame::farewell)
    {
        lock.unlock();
        stream->end(frame.text);
    }
    else if (frame.type == Frame::answer || frame.type == Frame::refusal)
    {
        // Without a waiter, its time has run out.
        const auto found = waiters.find(frame.id);
        if (found == waiters.end() || found->second->answered)
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
void SocketConnection::Core::end(const std::string& why)
{
    GoneSink to;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        gone = true;
        to = goneSink;
        reason = why;
        for (const auto& entry : waiters)
            entry.second->changed.notify_one();
    }
    if (to)
        to();
}

void SocketConnection::Core::setGoneSink(const GoneSink& to)
{
    bool already = false;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        already = gone;
        goneSink = to;
    }
    if (already && to)
        to();
}

SocketConnection::SocketConnection(const std::string& path) : core_(std::make_unique<Core>(path)) {}

SocketConnection::~SocketConnection() = default;

void SocketConnection::setEventSink(EventSink sink)
{
    core_->setSink(std::move(sink));
}

void SocketConnection::setGoneSink(GoneSink sink)
{
    core_->setGoneSink(sink);
}

Delivery SocketConnection::request(const std::string& request, std::string& answer,
                                   std::chrono::milliseconds timeout)
{
    Frame frame{Frame::request, 0, "", request};
    return core_->ask(frame, answer, timeout);
}

Delivery SocketConnection::subscribe(const std::string& request, std::string& answer,
                                     const std::string& channelName,
                                     std::chrono::milliseconds timeout)
{
    Frame frame{Frame::subscribe, 0, channelName, request};
    return core_->ask(frame, answer, timeout);
}

Delivery SocketConnection::post(const std::string& message)
{
    return core_->post({Frame::post, 0, "", message});
}

Delivery SocketConnection::control(const std::string& command, ControlAnswer& answer,
                                   std::chrono::milliseconds timeout)
{
    Frame frame{Frame::control, 0, "", command};
    const Delivery delivery = core_->ask(frame, answer.text, timeout);
    answer.accepted = delivery == Delivery::done && frame.type == Frame::answer;
    return delivery;
}

bool SocketConnection::takesTime() const
{
    return true;
}

std::string SocketConnection::description() const
{
    return "the service at " + core_->path;
}

std::string SocketConnection::whyGone() const
{
    return core_->whyGone();
}

void SocketConnection::setComplaintSink(ComplaintSink sink)
{
    core_->setComplaintSink(std::move(sink));
}

}  // namespace kit

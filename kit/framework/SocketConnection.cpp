#include "kit/framework/SocketConnection.h"

#include "kit/protocol/Frame.h"

#include <algorithm>
#include <array>
#include <asio.hpp>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace kit
{

namespace
{

using Socket = asio::local::stream_protocol::socket;

/// What may wait to be sent while the service does not read.
constexpr std::size_t maximumWaiting = 64 * 1024 * 1024;
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
        : path(socketPath), socket(io, asio::local::stream_protocol(), connectTo(socketPath))
    {
        read();
        thread = std::thread([this] { io.run(); });
    }

    ~Core()
    {
        {
            std::unique_lock<std::mutex> lock(mutex);
            sent.wait_for(lock, farewell, [this] { return !writing || gone; });
        }
        io.stop();
        thread.join();
    }

    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    /// The answer's type goes into the frame.
    Delivery ask(Frame& frame, std::string& answer, std::chrono::milliseconds timeout);
    Delivery post(Frame frame);
    void setGoneSink(GoneSink to);
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

    /// A frame that is to be sent.
    struct Parcel
    {
        std::uint64_t id;
        std::string bytes;
    };

    bool enqueue(const Frame& frame);
    void read();
    void write();
    void take(Frame& frame);
    void end(const std::string& why);

    asio::io_context io;
    Socket socket;

    // Used by the connection's thread alone.
    FrameReader reader;
    std::array<char, 65536> incoming;
    std::vector<Parcel> sending;

    mutable std::mutex mutex;
    EventSink sink;
    GoneSink goneSink;
    ComplaintSink complaintSink;
    std::deque<Parcel> waiting;
    std::size_t waitingBytes = 0;
    bool writing = false;
    std::condition_variable sent;
    std::map<std::uint64_t, Waiter*> waiters;
    std::uint64_t lastId = 0;
    bool gone = false;
    std::string reason;

    std::thread thread;
};

/// With the lock held. False when too much waits already.
bool SocketConnection::Core::enqueue(const Frame& frame)
{
    Parcel parcel{frame.id, encodeFrame(frame)};
    if (waitingBytes + parcel.bytes.size() > maximumWaiting)
        return false;
    waitingBytes += parcel.bytes.size();
    waiting.push_back(std::move(parcel));
    if (!writing)
    {
        writing = true;
        asio::post(io, [this] { write(); });
    }
    return true;
}

Delivery SocketConnection::Core::ask(Frame& frame, std::string& answer,
                                     std::chrono::milliseconds timeout)
{
    const auto until = std::chrono::steady_clock::now() + std::min(timeout, longestWait);
    std::unique_lock<std::mutex> lock(mutex);
    if (gone)
        return Delivery::gone;
    Waiter waiter{{}, &answer, false, Frame::answer};
    frame.id = ++lastId;
    if (!enqueue(frame))
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
    // Nobody waits for it any more: what has not been sent is not sent.
    const auto unsent = std::find_if(waiting.begin(), waiting.end(),
                                     [&](const Parcel& parcel) { return parcel.id == frame.id; });
    if (unsent != waiting.end())
    {
        waitingBytes -= unsent->bytes.size();
        waiting.erase(unsent);
    }
    return Delivery::timedOut;
}

Delivery SocketConnection::Core::post(Frame frame)
{
    const std::lock_guard<std::mutex> lock(mutex);
    if (gone)
        return Delivery::gone;
    frame.id = 0;
    return enqueue(frame) ? Delivery::done : Delivery::timedOut;
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

void SocketConnection::Core::write()
{
    std::vector<asio::const_buffer> buffers;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (waiting.empty() || gone)
        {
            writing = false;
            sent.notify_all();
            return;
        }
        sending.assign(std::make_move_iterator(waiting.begin()),
                       std::make_move_iterator(waiting.end()));
        waiting.clear();
        waitingBytes = 0;
    }
    for (const Parcel& parcel : sending)
        buffers.push_back(asio::buffer(parcel.bytes));
    asio::async_write(socket, buffers,
                      [this](const asio::error_code& error, std::size_t)
                      {
                          if (error)
                              end("");
                          write();
                      });
}

void SocketConnection::Core::read()
{
    socket.async_read_some(asio::buffer(incoming),
                           [this](const asio::error_code& error, std::size_t size)
                           {
                               if (error)
                               {
                                   end("");
                                   return;
                               }
                               try
                               {
                                   reader.append(incoming.data(), size);
                                   Frame frame;
                                   while (reader.next(frame))
                                       take(frame);
                               }
                               catch (const FrameError& wrong)
                               {
                                   end(std::string("it sent ") + wrong.what());
                                   return;
                               }
                               read();
                           });
}

void SocketConnection::Core::take(Frame& frame)
{
    if (frame.type == Frame::event)
    {
        EventSink to;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            to = sink;
        }
        if (to)
            to(frame.channel, frame.text);
        return;
    }
    if (frame.type == Frame::complaint)
    {
        ComplaintSink to;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            to = complaintSink;
        }
        if (to)
            to(frame.text);
        return;
    }
    if (frame.type == Frame::farewell)
    {
        end(frame.text);
        return;
    }
    if (frame.type != Frame::answer && frame.type != Frame::refusal)
        throw FrameError("a message of the type " + std::to_string(frame.type) +
                         ", which is for services");
    const std::lock_guard<std::mutex> lock(mutex);
    // Without a waiter, its time has run out.
    const auto found = waiters.find(frame.id);
    if (found == waiters.end() || found->second->answered)
        return;
    *found->second->answer = std::move(frame.text);
    found->second->type = frame.type;
    found->second->answered = true;
    found->second->changed.notify_one();
}

/// The connection is over; everyone who waits learns it now.
void SocketConnection::Core::end(const std::string& why)
{
    asio::error_code ignored;
    socket.close(ignored);
    GoneSink to;
    {
        const std::lock_guard<std::mutex> lock(mutex);
        if (gone)
            return;
        gone = true;
        to = goneSink;
        reason = why;
        waiting.clear();
        waitingBytes = 0;
        for (const auto& entry : waiters)
            entry.second->changed.notify_one();
        sent.notify_all();
    }
    if (to)
        to();
}

void SocketConnection::Core::setGoneSink(GoneSink to)
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
    core_->setGoneSink(std::move(sink));
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

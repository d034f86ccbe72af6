#include "kit/service/SocketServer.h"

#include "kit/protocol/Frame.h"
#include "kit/service/Service.h"

#include <array>
#include <asio.hpp>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace kit
{

namespace
{

using Socket = asio::local::stream_protocol::socket;

constexpr std::size_t maximumWaiting = 64 * 1024 * 1024;
constexpr std::chrono::milliseconds tick{20};

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

[[noreturn]] void refuse(const std::string& path, const std::string& why)
{
    throw ListenError("cannot listen at " + path + ": " + why);
}

/// Removes what a dead process left behind; throws ListenError when something else is there.
void clearWay(const std::string& path, const sockaddr_un& address)
{
    struct stat entry = {};
    if (::lstat(path.c_str(), &entry) != 0)
        return;
    if (!S_ISSOCK(entry.st_mode))
        refuse(path, "there is a file of that name, and it is no socket");
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (probe < 0)
        refuse(path, std::strerror(errno));
    const int result =
        ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    const int error = errno;
    ::close(probe);
    if (result != 0 && error == ECONNREFUSED)
        ::unlink(path.c_str());
    else if (result == 0 || error == EAGAIN)
        refuse(path, "another service listens there");
    else
        refuse(path, std::strerror(error));
}

/// A listening socket; throws ListenError.
int listenAt(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty())
        throw ListenError("the socket's path is empty");
    if (path.size() >= sizeof address.sun_path)
        refuse(path, "the path has " + std::to_string(path.size()) + " characters, " +
                         std::to_string(sizeof address.sun_path - 1) + " are possible");
    path.copy(address.sun_path, path.size());
    clearWay(path, address);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        refuse(path, std::strerror(errno));
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
        ::listen(socket, SOMAXCONN) == 0)
        return socket;
    const int error = errno;
    ::close(socket);
    struct stat folder = {};
    const bool noFolder = ::stat(folderOf(path).c_str(), &folder) != 0 || !S_ISDIR(folder.st_mode);
    refuse(path, noFolder              ? "there is no directory " + folderOf(path)
                 : error == EADDRINUSE ? "another service listens there"
                                       : std::strerror(error));
}

}  // namespace

class SocketServer::Core
{
public:
    Core(Service& simulated, const std::string& socketPath, Options chosen)
        : service(simulated),
          path(socketPath),
          options(std::move(chosen)),
          acceptor(io, asio::local::stream_protocol(), listenAt(socketPath)),
          timer(io),
          retry(io),
          signals(io)
    {
        struct stat entry = {};
        if (::lstat(path.c_str(), &entry) == 0)
            inode = entry.st_ino;
    }

    ~Core();

    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    void start();

    Service& service;
    asio::io_context io;

private:
    /// One connected application.
    struct Session
    {
        explicit Session(Socket connected) : socket(std::move(connected)) {}

        Socket socket;
        Service::ClientId client = 0;
        FrameReader reader;
        std::array<char, 65536> incoming;
        std::vector<std::string> sending;
        bool last = false;  ///< ends when everything has been sent
        bool deaf = false;  ///< nothing can be sent to it any more

        // The service may be used on other threads, and then events come on those.
        std::mutex mutex;
        std::deque<std::string> waiting;
        std::size_t waitingBytes = 0;
        bool writing = false;
        bool overrun = false;
        bool open = true;
    };

    using SessionPointer = std::shared_ptr<Session>;

    void accept();
    void read(const SessionPointer& session);
    void write(const SessionPointer& session);
    void take(Session& session, const Frame& frame);
    void send(const SessionPointer& session, const Frame& frame);
    void close(Session& session);
    void leave(const SessionPointer& session, const std::string& why);
    void run();
    void log(const std::string& line)
    {
        if (options.log)
            options.log(line);
    }

    const std::string path;
    Options options;
    ino_t inode = 0;
    asio::local::stream_protocol::acceptor acceptor;
    asio::steady_timer timer;
    asio::steady_timer retry;
    asio::signal_set signals;
    std::chrono::steady_clock::time_point ticked;
    double owed = 0;  ///< simulated time that is not a whole millisecond yet
    std::map<Service::ClientId, SessionPointer> sessions;
};

SocketServer::Core::~Core()
{
    for (const auto& entry : sessions)
        service.disconnect(entry.first);
    // Only our own socket: another service may have taken the name over.
    struct stat entry = {};
    if (::lstat(path.c_str(), &entry) == 0 && entry.st_ino == inode)
        ::unlink(path.c_str());
}

void SocketServer::Core::start()
{
    accept();
    if (options.speed > 0)
    {
        ticked = std::chrono::steady_clock::now();
        run();
    }
    if (options.handleSignals)
    {
        signals.add(SIGINT);
        signals.add(SIGTERM);
        signals.async_wait(
            [this](const asio::error_code& error, int)
            {
                if (!error)
                    io.stop();
            });
    }
}

/// Lets the simulated clock run with the one on the wall.
void SocketServer::Core::run()
{
    timer.expires_after(tick);
    timer.async_wait(
        [this](const asio::error_code& error)
        {
            if (error)
                return;
            const auto now = std::chrono::steady_clock::now();
            owed += std::chrono::duration<double, std::milli>(now - ticked).count() * options.speed;
            ticked = now;
            const auto whole = static_cast<long long>(owed);
            owed -= static_cast<double>(whole);
            service.advance(std::chrono::milliseconds(whole));
            run();
        });
}

void SocketServer::Core::accept()
{
    acceptor.async_accept(
        [this](const asio::error_code& error, Socket socket)
        {
            if (error == asio::error::operation_aborted)
                return;
            if (error)
            {
                // Out of descriptors, most likely: those that leave make room.
                log("a connection could not be taken: " + error.message());
                retry.expires_after(tick);
                retry.async_wait([this](const asio::error_code&) { accept(); });
                return;
            }
            const auto session = std::make_shared<Session>(std::move(socket));
            const std::weak_ptr<Session> weak = session;
            session->client = service.connect(
                [this, weak](const std::string& channel, const std::string& event)
                {
                    if (const SessionPointer to = weak.lock())
                        send(to, {Frame::event, 0, channel, event});
                },
                [this, weak](const std::string& complaint)
                {
                    if (const SessionPointer to = weak.lock())
                        send(to, {Frame::complaint, 0, "", complaint});
                },
                [this, weak]
                {
                    // Behind the answer to the command that brought it about.
                    asio::post(io,
                               [this, weak]
                               {
                                   if (const SessionPointer to = weak.lock())
                                       leave(to, "it was told to go away");
                               });
                });
            sessions[session->client] = session;
            read(session);
            accept();
        });
}

void SocketServer::Core::read(const SessionPointer& session)
{
    session->socket.async_read_some(
        asio::buffer(session->incoming),
        [this, session](const asio::error_code& error, std::size_t size)
        {
            if (error || !session->open)
            {
                close(*session);
                return;
            }
            try
            {
                session->reader.append(session->incoming.data(), size);
                Frame frame;
                while (session->open && !session->last && session->reader.next(frame))
                    take(*session, frame);
            }
            catch (const FrameError& wrong)
            {
                log("client " + std::to_string(session->client) + " sent " + wrong.what() +
                    ", its connection is closed");
                close(*session);
                return;
            }
            if (session->open && !session->last)
                read(session);
        });
}

void SocketServer::Core::take(Session& session, const Frame& frame)
{
    Frame answer{Frame::answer, frame.id, "", ""};
    Service::Reply reply = Service::Reply::answered;
    if (options.journal && frame.type != Frame::control)
        options.journal(frame.text);
    switch (frame.type)
    {
    case Frame::request:
        reply = service.exchange(session.client, frame.text, answer.text);
        break;
    case Frame::subscribe:
        reply =
            service.exchangeSubscription(session.client, frame.text, answer.text, frame.channel);
        break;
    case Frame::post:
        service.post(session.client, frame.text);
        return;
    case Frame::control:
    {
        ControlAnswer said = service.control(frame.text);
        answer.type = said.accepted ? Frame::answer : Frame::refusal;
        answer.text = std::move(said.text);
        break;
    }
    default:
        throw FrameError("a message of the type " + std::to_string(frame.type) +
                         ", which is for applications");
    }
    const auto self = sessions.find(session.client);
    if (reply == Service::Reply::answered && self != sessions.end())
        send(self->second, answer);
    service.followAnswer();
}

/// From any thread.
void SocketServer::Core::send(const SessionPointer& session, const Frame& frame)
{
    const std::lock_guard<std::mutex> lock(session->mutex);
    if (!session->open || session->overrun)
        return;
    std::string bytes;
    try
    {
        bytes = encodeFrame(frame);
    }
    catch (const FrameError&)
    {
        session->overrun = true;
    }
    if (session->waitingBytes + bytes.size() > maximumWaiting)
        session->overrun = true;
    session->waitingBytes += bytes.size();
    session->waiting.push_back(std::move(bytes));
    if (session->overrun || !session->writing)
    {
        session->writing = true;
        asio::post(io, [this, session] { write(session); });
    }
}

void SocketServer::Core::write(const SessionPointer& session)
{
    bool overrun = false;
    {
        const std::lock_guard<std::mutex> lock(session->mutex);
        if (!session->open)
            return;
        overrun = session->overrun;
        if (!overrun && !session->sending.empty())
            return;
        if (overrun || session->deaf)
        {
            session->waiting.clear();
            session->waitingBytes = 0;
            session->writing = overrun;
        }
        else if (session->waiting.empty())
            session->writing = false;
        else
        {
            session->sending.assign(std::make_move_iterator(session->waiting.begin()),
                                    std::make_move_iterator(session->waiting.end()));
            session->waiting.clear();
            session->waitingBytes = 0;
        }
    }
    if (overrun)
        log("client " + std::to_string(session->client) +
            " does not read what is sent to it, its connection is closed");
    if (overrun || (session->last && session->sending.empty()))
    {
        close(*session);
        return;
    }
    if (session->sending.empty())
        return;
    std::vector<asio::const_buffer> buffers;
    for (const std::string& bytes : session->sending)
        buffers.push_back(asio::buffer(bytes));
    asio::async_write(session->socket, buffers,
                      [this, session](const asio::error_code& error, std::size_t)
                      {
                          session->sending.clear();
                          // What it sent before it left is still carried out: reading ends it.
                          if (error)
                              session->deaf = true;
                          write(session);
                      });
}

void SocketServer::Core::close(Session& session)
{
    {
        const std::lock_guard<std::mutex> lock(session.mutex);
        if (!session.open)
            return;
        session.open = false;
    }
    asio::error_code ignored;
    session.socket.close(ignored);
    service.disconnect(session.client);
    sessions.erase(session.client);
}

/// Says why, and closes when everything has been sent.
void SocketServer::Core::leave(const SessionPointer& session, const std::string& why)
{
    send(session, {Frame::farewell, 0, "", why});
    session->last = true;
    write(session);
}

SocketServer::SocketServer(Service& service, const std::string& path)
    : SocketServer(service, path, Options())
{
}

SocketServer::SocketServer(Service& service, const std::string& path, Options options)
    : core_(std::make_unique<Core>(service, path, std::move(options)))
{
    core_->start();
}

SocketServer::~SocketServer() = default;

void SocketServer::run()
{
    core_->io.run();
}

void SocketServer::stop()
{
    core_->io.stop();
}

}  // namespace kit

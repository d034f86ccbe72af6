#include "kit/service/SocketServer.h"

#include "kit/framework/FrameStream.h"
#include "kit/service/Service.h"

#include <algorithm>
#include <asio.hpp>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace kit
{

namespace
{

using Acceptor = asio::local::stream_protocol::acceptor;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds tick{20};
/// How often the same trouble is told.
constexpr std::chrono::seconds quiet{60};

std::string folderOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

[[noreturn]] void refuse(const std::string& path, const std::string& why)
{
    throw ListenError("cannot listen at " + path + ": " + why);
}

/// Holds a folder against others who are about to listen in it or to tidy up there. Whoever goes
/// without it takes the socket of somebody who has bound it and does not listen yet for a dead one.
class FolderLock
{
public:
    explicit FolderLock(const std::string& path)
        : folder_(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        const int error = errno;
        if (folder_ < 0)
            refuse(path, error == ENOENT || error == ENOTDIR
                             ? "there is no directory " + folderOf(path)
                             : std::strerror(error));
        while (::flock(folder_, LOCK_EX) != 0)
            if (errno != EINTR)
                return;  // not every file system has locks
    }

    ~FolderLock() { ::close(folder_); }

    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    const int folder_;
};

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
int listenAt(const std::string& path, unsigned mode)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.empty())
        throw ListenError("the socket's path is empty");
    if (path.size() >= sizeof address.sun_path)
        refuse(path, "the path has " + std::to_string(path.size()) + " characters, " +
                         std::to_string(sizeof address.sun_path - 1) + " are possible");
    path.copy(address.sun_path, path.size());
    const FolderLock lock(path);
    clearWay(path, address);
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0)
        refuse(path, std::strerror(errno));
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
    {
        // Nobody can connect before it listens, and then it has its rights.
        if (::chmod(path.c_str(), mode) == 0 && ::listen(socket, SOMAXCONN) == 0)
            return socket;
        const int error = errno;
        ::unlink(path.c_str());
        errno = error;
    }
    const int error = errno;
    ::close(socket);
    refuse(path, error == EADDRINUSE ? "another service listens there" : std::strerror(error));
}

}  // namespace

class SocketServer::Core
{
public:
    Core(Service& simulated, const std::string& socketPath, Options chosen)
        : service(simulated),
          path(socketPath),
          options(std::move(chosen)),
          acceptor(io),
          timer(io),
          retry(io),
          signals(io)
    {
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
        std::shared_ptr<FrameStream> stream;
        Service::ClientId client = 0;
        std::atomic<bool> overrun{false};
    };

    using SessionPointer = std::shared_ptr<Session>;

    void accept();
    void open(FrameStream::Socket socket);
    void take(Session& session, const Frame& frame);
    Delivery exchange(Session& session, Sending sending, const Frame& frame, std::string& answer);
    void send(Session& session, const Frame& frame);
    void relieve();
    void drop(Session& session, const std::string& complaint, const std::string& why);
    void run();
    void endAll();
    void stopOnceAllHaveLeft();
    void log(const std::string& line)
    {
        if (options.log)
            options.log(line);
    }

    const std::string path;
    Options options;
    ino_t inode = 0;
    Acceptor acceptor;
    asio::steady_timer timer;
    asio::steady_timer retry;
    asio::signal_set signals;
    Clock::time_point ticked;
    double owed = 0;  ///< simulated time that is not a whole millisecond yet
    Clock::time_point toldOfAccept = Clock::now() - quiet;
    Clock::time_point toldOfJournal = Clock::now() - quiet;
    const std::shared_ptr<std::atomic<std::size_t>> held =
        std::make_shared<std::atomic<std::size_t>>(0);
    std::map<Service::ClientId, SessionPointer> sessions;
};

SocketServer::Core::~Core()
{
    for (const auto& entry : sessions)
        service.disconnect(entry.first);
    if (inode == 0)
        return;
    try
    {
        // Only our own socket: another service may have taken the name over.
        const FolderLock lock(path);
        struct stat entry = {};
        if (::lstat(path.c_str(), &entry) == 0 && entry.st_ino == inode)
            ::unlink(path.c_str());
    }
    catch (const ListenError&)
    {
        // The folder has gone, and the socket with it.
    }
}

void SocketServer::Core::start()
{
    // What may lack descriptors comes before there is a socket that others see.
    if (options.handleSignals)
    {
        signals.add(SIGINT);
        signals.add(SIGTERM);
    }
    const int listening = listenAt(path, options.mode);
    struct stat entry = {};
    if (::lstat(path.c_str(), &entry) == 0)
        inode = entry.st_ino;
    asio::error_code failed;
    acceptor.assign(asio::local::stream_protocol(), listening, failed);
    if (failed)
    {
        ::close(listening);
        throw asio::system_error(failed);
    }
    signals.async_wait(
        [this](const asio::error_code& error, int)
        {
            if (!error)
                endAll();
        });
    accept();
    if (options.speed > 0)
    {
        ticked = Clock::now();
        run();
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
            const auto now = Clock::now();
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
        [this](const asio::error_code& error, FrameStream::Socket socket)
        {
            if (error == asio::error::operation_aborted)
                return;
            if (!error)
            {
                open(std::move(socket));
                accept();
                return;
            }
            // Out of descriptors, most likely: those that leave make room.
            if (Clock::now() - toldOfAccept >= quiet)
            {
                toldOfAccept = Clock::now();
                log("a connection could not be taken: " + error.message() +
                    "; it waits, and others with it, until somebody leaves");
            }
            retry.expires_after(tick);
            retry.async_wait([this](const asio::error_code&) { accept(); });
        });
}

void SocketServer::Core::open(FrameStream::Socket socket)
{
    const auto session = std::make_shared<Session>();
    session->stream = std::make_shared<FrameStream>(std::move(socket), held);
    const std::weak_ptr<Session> weak = session;
    // The service may be used on other threads, and then events come on those.
    session->client = service.connect(
        [this, weak](const std::string& channel, const std::string& event)
        {
            if (const SessionPointer to = weak.lock())
                send(*to, {Frame::event, 0, channel, event});
        },
        [this, weak](const std::string& complaint)
        {
            if (const SessionPointer to = weak.lock())
                send(*to, {Frame::complaint, 0, "", complaint});
        },
        [this, weak]
        {
            // Behind the answer to the command that brought it about.
            const std::string why = "it was told to go away";
            asio::post(io,
                       [weak, why]
                       {
                           if (const SessionPointer to = weak.lock())
                               to->stream->finish({Frame::farewell, 0, "", why}, why);
                       });
        });
    sessions[session->client] = session;
    session->stream->start({[this, weak](Frame& frame)
                            {
                                if (const SessionPointer from = weak.lock())
                                    take(*from, frame);
                            },
                            [this, weak](const std::string& what)
                            {
                                if (const SessionPointer from = weak.lock())
                                    drop(*from, "sent " + what, "it was sent " + what);
                            },
                            [this] { relieve(); },
                            [this, id = session->client](const std::string&)
                            {
                                service.disconnect(id);
                                sessions.erase(id);
                            }});
}

void SocketServer::Core::take(Session& session, const Frame& frame)
{
    Frame answer{Frame::answer, frame.id, "", ""};
    Delivery delivery = Delivery::done;
    switch (frame.type)
    {
    case Frame::request:
        delivery = exchange(session, Sending::request, frame, answer.text);
        break;
    case Frame::subscribe:
        delivery = exchange(session, Sending::subscribe, frame, answer.text);
        break;
    case Frame::post:
        exchange(session, Sending::oneWay, frame, answer.text);
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
    if (delivery == Delivery::done)
        send(session, answer);
    service.followAnswer();
}

/// What the journal does not take is refused, and told.
Delivery SocketServer::Core::exchange(Session& session, Sending sending, const Frame& frame,
                                      std::string& answer)
{
    const std::string problem = options.journal ? options.journal(frame.text) : "";
    if (problem.empty())
        return service.exchange(session.client, sending, frame.text, frame.channel, answer);
    if (Clock::now() - toldOfJournal >= quiet)
    {
        toldOfJournal = Clock::now();
        log("the journal cannot be written: " + problem + "; requests are refused until it can be");
    }
    send(session, {Frame::complaint, 0, "", "the service's journal cannot be written"});
    answer = "sfiFailure";
    return Delivery::done;
}

/// From any thread.
void SocketServer::Core::send(Session& session, const Frame& frame)
{
    FrameStream::Sent sent = FrameStream::Sent::tooMuch;
    try
    {
        sent = session.stream->send(frame);
    }
    catch (const FrameError&)
    {
        // What is too large for a message is too much as well.
    }
    if (sent == FrameStream::Sent::tooMuch && !session.overrun.exchange(true))
        asio::post(io,
                   [this, id = session.client]
                   {
                       const auto found = sessions.find(id);
                       if (found != sessions.end())
                           drop(*found->second, "does not read what is sent to it",
                                "it has sent more than was read");
                   });
    else if (*held > options.mostHeld)
        asio::post(io, [this] { relieve(); });
}

/// Too much waits for all clients together: the one that has most of it goes.
void SocketServer::Core::relieve()
{
    while (*held > options.mostHeld && !sessions.empty())
    {
        const auto most =
            std::max_element(sessions.begin(), sessions.end(),
                             [](const auto& one, const auto& other)
                             { return one.second->stream->held() < other.second->stream->held(); });
        const SessionPointer session = most->second;
        log("client " + std::to_string(session->client) + " has " +
            std::to_string(session->stream->held() / 1024) +
            " KiB waiting, too much together with the others, its connection is closed");
        session->stream->end("");
    }
}

void SocketServer::Core::drop(Session& session, const std::string& complaint,
                              const std::string& why)
{
    log("client " + std::to_string(session.client) + " " + complaint +
        ", its connection is closed");
    session.stream->finish({Frame::farewell, 0, "", why}, why);
}

/// Says good-bye, and ends.
void SocketServer::Core::endAll()
{
    const std::string why = "it was ended";
    acceptor.cancel();
    const std::map<Service::ClientId, SessionPointer> all = sessions;
    for (const auto& entry : all)
        entry.second->stream->finish({Frame::farewell, 0, "", why}, why);
    stopOnceAllHaveLeft();
}

/// Whoever does not read is let go by the stream.
void SocketServer::Core::stopOnceAllHaveLeft()
{
    if (sessions.empty())
    {
        io.stop();
        return;
    }
    retry.expires_after(std::chrono::milliseconds(1));
    retry.async_wait([this](const asio::error_code&) { stopOnceAllHaveLeft(); });
}

SocketServer::SocketServer(Service& service, const std::string& path)
    : SocketServer(service, path, Options())
{
}

SocketServer::SocketServer(Service& service, const std::string& path, Options options)
{
    try
    {
        core_ = std::make_unique<Core>(service, path, std::move(options));
        core_->start();
    }
    catch (const asio::system_error& error)
    {
        core_.reset();
        refuse(path, error.code().message());
    }
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

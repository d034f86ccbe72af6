#ifndef KIT_SERVICE_SOCKET_SERVER_H
#define KIT_SERVICE_SOCKET_SERVER_H

#include <cstddef>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace kit
{

class Service;

/// The service cannot be offered there. The text is one line for people.
class ListenError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Offers a service to other processes on a Unix socket.
///
/// Threads: all work is done inside run(), on the thread that calls it; stop() may be called from
/// any. The service may be used directly meanwhile.
///
/// Ownership: the service stays the caller's and has to outlive the server. The socket's file is the
/// server's: a stale one of a dead process is replaced, and the destructor removes it. Of several
/// that begin on one path exactly one listens there, and the others say why they do not.
///
/// Failures: a client that sends what is no message, or does not read what is sent to it (64 MiB, or
/// 256 MiB for all clients together), loses its connection, with a line in the log; it is told why,
/// and the others notice nothing. Without descriptors those who come wait until others leave.
class SocketServer
{
public:
    struct Options
    {
        /// How fast the simulated clock runs against the one on the wall; 0 leaves it to "advance".
        double speed = 0;
        /// Told what the server itself complains of.
        std::function<void(const std::string& line)> log;
        /// Told each request, before it is carried out. Says what is wrong when it could not be
        /// kept, "" otherwise; the request is refused then.
        std::function<std::string(const std::string& text)> journal;
        /// Rights of the socket's file, whatever the umask. Whoever may write to it may do all that
        /// an application may, and drive the simulation.
        unsigned mode = 0600;
        /// Bytes that may wait for all clients together, or have come from them and are not whole.
        std::size_t mostHeld = 256 * 1024 * 1024;
        /// SIGINT and SIGTERM end run().
        bool handleSignals = false;
    };

    /// Listens. Throws ListenError.
    SocketServer(Service& service, const std::string& path, Options options);
    SocketServer(Service& service, const std::string& path);
    ~SocketServer();

    SocketServer(const SocketServer&) = delete;
    SocketServer& operator=(const SocketServer&) = delete;

    /// Serves until stop() is called.
    void run();
    void stop();

private:
    class Core;
    std::unique_ptr<Core> core_;
};

}  // namespace kit

#endif

#ifndef KIT_FRAMEWORK_SOCKET_CONNECTION_H
#define KIT_FRAMEWORK_SOCKET_CONNECTION_H

#include "kit/framework/Connection.h"

#include <stdexcept>
#include <string>

namespace kit
{

/// No connection could be made. The text is one line for people.
class ConnectionError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A connection to a service in another process, over a Unix socket.
///
/// Threads: any number may ask at once over the one socket; each waits for its own answer only.
/// Events come on a thread of the connection's own. Not to be destroyed from inside the event sink,
/// nor while a call is still inside. The destructor waits up to a second for posted messages to
/// leave.
///
/// Failures: a request whose time runs out is taken back when it has not been sent yet; otherwise
/// the service may still carry it out, and its answer is thrown away. When the service goes, or
/// sends what is no message, every waiting call returns `gone` at once, and so does every later one.
class SocketConnection : public ConnectionDecorator
{
public:
    /// Throws ConnectionError.
    explicit SocketConnection(const std::string& path);
};

}  // namespace kit

#endif

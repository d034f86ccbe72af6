#ifndef TESTS_KIT_SERVICE_ASKING_H
#define TESTS_KIT_SERVICE_ASKING_H

#include "kit/framework/Connection.h"

#include <chrono>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace kit::test
{

constexpr std::chrono::seconds patience(60);

inline const std::string activate = "<Method>Activate</Method>";

/// Where there is no answer: why.
inline std::string orWhyNot(Delivery delivery, const std::string& answer)
{
    return delivery == Delivery::done       ? answer
           : delivery == Delivery::timedOut ? "(no answer in time)"
                                            : "(gone)";
}

inline std::string ask(Connection& connection, const std::string& request)
{
    std::string answer;
    const Delivery delivery = connection.request(request, answer, patience);
    return orWhyNot(delivery, answer);
}

inline std::string subscribe(Connection& connection, const std::string& channel = "channel")
{
    std::string answer;
    const Delivery delivery =
        connection.subscribe("<Method>Subscribe</Method>", answer, channel, patience);
    return orWhyNot(delivery, answer);
}

inline ControlAnswer control(Connection& connection, const std::string& command)
{
    ControlAnswer answer;
    const Delivery delivery = connection.control(command, answer, patience);
    return {answer.accepted, orWhyNot(delivery, answer.text)};
}

/// A socket without the manners of a connection; bound to a path, or connected to who listens there,
/// and -1 when it cannot be.
inline int rawSocket(const std::string& path, decltype(&::connect) attach)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int raw = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (attach(raw, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
        return raw;
    ::close(raw);
    return -1;
}

inline int connectTo(const std::string& path)
{
    return rawSocket(path, ::connect);
}

inline int bindTo(const std::string& path)
{
    return rawSocket(path, ::bind);
}

}  // namespace kit::test

#endif

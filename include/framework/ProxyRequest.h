#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_PROXY_REQUEST_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_PROXY_REQUEST_H

#include "framework/Visibility.h"

#include <string>

class FrameworkContext;

/// A request channel to a service. The framework owns it; what it does when the service is out of
/// reach (wait, return an empty answer, throw) and the unit of its time-outs are the framework's.
///
/// The order of declaration is the binary interface, and the context pointer is the first data
/// member. The slots that the library does not call have no names of the framework's here.
class COMMUNICATIONS_SERVICE_VISIBLE ProxyRequest
{
public:
    virtual void unusedSlot1() {}
    virtual void unusedSlot2() {}
    virtual void unusedSlot3() {}
    virtual void unusedSlot4() {}
    virtual void unusedSlot5() {}
    virtual void unusedSlot6() {}

    /// Delivers a request, waits for the answer and leaves it in `response`.
    virtual void sendRequest(const std::string& request, std::string& response) = 0;

    /// The same, with a time-out of the caller's.
    virtual void sendRequestTimed(const std::string& request, std::string& response,
                                  int timeout) = 0;

    virtual void unusedSlot9() {}

    /// Registers the subscriber behind `channelName` for the service's events; the answer is left
    /// in `response`. Throws MarloException when the subscription cannot be made.
    virtual void sendSubscribe(const std::string& request, std::string& response,
                               const std::string& channelName, int timeout) = 0;

    virtual void unusedSlot11() {}
    virtual void unusedSlot12() {}
    virtual void unusedSlot13() {}

    /// Posts a message; no answer is awaited.
    virtual void sendOneWay(const std::string& message) = 0;

    virtual void unusedSlot15() {}
    virtual void unusedSlot16() {}

    /// Binds the channel to the named service protocol.
    virtual void setProtocol(const std::string& protocolName) = 0;

    /// The context that owns this channel.
    FrameworkContext* context = nullptr;

protected:
    ~ProxyRequest() = default;
};

#endif

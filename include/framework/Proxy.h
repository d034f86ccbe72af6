#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_PROXY_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_PROXY_H

#include "framework/Executable.h"

class ProxyRequest;

/// Base of the request side of a service library. The order of declaration is the binary interface.
class COMMUNICATIONS_SERVICE_VISIBLE Proxy : public Executable
{
public:
    /// The default body does nothing.
    void init(Context& context) override;

    /// The default body does nothing.
    void shutdown() override;

    /// Hands over the request channel. The framework keeps it alive for as long as the proxy.
    virtual void initProxy(ProxyRequest& channel) = 0;
};

inline void Proxy::init(Context&) {}

inline void Proxy::shutdown() {}

#endif

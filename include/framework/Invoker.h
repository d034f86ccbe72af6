#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_INVOKER_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_INVOKER_H

#include "framework/Visibility.h"

class Executable;
class FrameworkContext;
class InvokerResponse;

/// Base of the event side of a service library. The framework owns its invokers and deletes them
/// through the virtual destructor. The order of declaration is the binary interface.
class COMMUNICATIONS_SERVICE_VISIBLE Invoker
{
public:
    virtual ~Invoker() {}

    /// Handles one event message for one subscriber.
    /// @param subscriber  the application's object; only what it implements is called
    /// @param message     NUL-terminated text of the message
    /// @param length      its length as the framework counts it
    /// @param response    told when the message has been handled; may be null
    virtual void handleMessage(Executable* subscriber, const char* message, int length,
                               InvokerResponse* response) = 0;

    /// The default body does nothing.
    virtual void initInvoker(FrameworkContext* context);
};

inline void Invoker::initInvoker(FrameworkContext*) {}

#endif

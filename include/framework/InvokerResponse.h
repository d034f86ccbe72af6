#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_INVOKER_RESPONSE_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_INVOKER_RESPONSE_H

#include "framework/Visibility.h"

/// Told once that a message has been handled. The order of declaration is the binary interface;
/// the slot that the library does not call has no name of the framework's here.
class COMMUNICATIONS_SERVICE_VISIBLE InvokerResponse
{
public:
    virtual void unusedSlot1() {}

    /// The message has been handled, whether or not anything in it was known.
    virtual void messageHandled() = 0;

protected:
    ~InvokerResponse() = default;
};

#endif

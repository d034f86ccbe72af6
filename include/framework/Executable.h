#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_EXECUTABLE_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_EXECUTABLE_H

#include "framework/Context.h"
#include "framework/Visibility.h"

/// Base of everything that the framework runs: the proxy, and an application's subscribers.
/// The framework owns its executables and deletes them through the virtual destructor.
/// The order of declaration is the binary interface.
class COMMUNICATIONS_SERVICE_VISIBLE Executable
{
public:
    virtual ~Executable() {}

    /// Called by the framework once the object is in place.
    virtual void init(Context& context) = 0;

    /// Called by the framework before the object is deleted.
    virtual void shutdown() = 0;

    /// A timer of the framework has run out. The default body does nothing.
    virtual void timerEvent(int timer);
};

inline void Executable::timerEvent(int) {}

#endif

#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_FRAMEWORK_CONTEXT_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_FRAMEWORK_CONTEXT_H

#include "framework/Visibility.h"

#include <string>

class Executable;

/// The framework's own context, reached through a request channel. The order of declaration is the
/// binary interface; the slots that the library does not call have no names of the framework's here.
class COMMUNICATIONS_SERVICE_VISIBLE FrameworkContext
{
public:
    virtual void unusedSlot1() {}
    virtual void unusedSlot2() {}
    virtual void unusedSlot3() {}
    virtual void unusedSlot4() {}

    /// Name of the channel on which an executable receives its messages. The default body returns
    /// the empty string. "used" keeps that body in the library, where nothing calls it directly.
    [[gnu::used]] virtual std::string findChannel(Executable* executable);

protected:
    ~FrameworkContext() = default;
};

inline std::string FrameworkContext::findChannel(Executable*)
{
    return std::string();
}

#endif

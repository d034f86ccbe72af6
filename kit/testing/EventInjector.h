#ifndef KIT_TESTING_EVENT_INJECTOR_H
#define KIT_TESTING_EVENT_INJECTOR_H

#include "framework/Executable.h"
#include "framework/Invoker.h"
#include "kit/protocol/Protocol.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace kit
{

/// Sends events to a subscriber as the framework does, through the real library's invoker and on the
/// caller's thread:
///
///     kit::EventInjector events(application);
///     events.inject("IncomingCallEvent", {{"lineId", "1001"}, {"callId", "12"}});
///
/// Fields are named by argument or by tag; values are as people give them, see toWire. A name that
/// the event does not have, or a value that cannot be, throws std::invalid_argument. What a callback
/// throws passes through. Any number of threads may inject.
class EventInjector
{
public:
    /// The subscriber must implement CommunicationsServiceEventIfc (std::invalid_argument) and
    /// outlive the injector. Throws LibraryError; see Library for the path.
    explicit EventInjector(Executable& subscriber, const std::string& library = std::string());

    /// With every field: those not named are "", 0 or false.
    void inject(const std::string& method, const Values& values = {});

    /// Without the fields named in `missing`, as from a service that leaves them out.
    void injectWithout(const std::vector<std::string>& missing, const std::string& method,
                       const Values& values = {});

    /// Any text at all, as it stands.
    void raw(const std::string& text);

    /// How often the library has told its framework that an event was handled.
    int handled() const { return handled_.load(); }

private:
    Executable& subscriber_;
    std::unique_ptr<Invoker> invoker_;
    std::atomic<int> handled_{0};
};

}  // namespace kit

#endif

// An application of the phone, which the framework puts together with the library: headers alone, in
// the oldest language that they promise.
#include "CommunicationsServiceIfc.h"
#include "application/Subscriber.h"

#include <type_traits>

static_assert(__cplusplus == 201103L, "the headers leave the application its language");
// Both interfaces are the framework's to end, never the application's.
static_assert(!std::is_destructible<CommunicationsServiceIfc>::value, "");
static_assert(!std::is_destructible<CommunicationsServiceEventIfc>::value, "");

class Application : public communications::QuietSubscriber
{
public:
    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        held = lineId == "1001" && callId == 12;
    }

    bool held = false;
};

int main()
{
    Application application;
    CommunicationsServiceEventIfc& callbacks = application;
    callbacks.onCallHeldEvent("1001", 12);
    return application.held ? 0 : 1;
}

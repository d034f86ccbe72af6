#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"

// The default body of FrameworkContext::findChannel is put into the library by this header; those of
// Executable, Proxy and Invoker stand in the tables of the two classes above.
#include "framework/FrameworkContext.h"

// What the framework looks up by name once it has loaded the library. It owns what it gets.
extern "C"
{
    COMMUNICATIONS_SERVICE_VISIBLE CommunicationsServiceProxy* createCommunicationsServiceProxy()
    {
        return new CommunicationsServiceProxy;
    }

    COMMUNICATIONS_SERVICE_VISIBLE CommunicationsServiceEventInvoker*
    createCommunicationsServiceEventInvoker()
    {
        return new CommunicationsServiceEventInvoker;
    }
}

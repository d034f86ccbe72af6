#include "Application.h"

#include "framework/MarloException.h"

#include <utility>

Application::Application(CommunicationsServiceIfc& service, Answered answered)
    : service_(service), answered_(std::move(answered))
{
}

bool Application::start()
{
    try
    {
        return service_.subscribe(this) == sfiSuccess && service_.activate() == sfiSuccess;
    }
    catch (const MarloException&)
    {
        return false;  // the service is not there
    }
}

void Application::on(const communications::IncomingCallEvent& event)
{
    // It rings and is answered without the user.
    if (service_.acceptCall(event.lineId, event.callId, true) == sfiSuccess)
        answered_(event.lineId, event.uri);
}

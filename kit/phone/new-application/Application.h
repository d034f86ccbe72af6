#ifndef APPLICATION_H
#define APPLICATION_H

#include "CommunicationsServiceIfc.h"
#include "application/Subscriber.h"

#include <functional>
#include <string>

/// Answers every call that comes in, and tells who it was.
class Application : public communications::EventSubscriber<communications::IncomingCallEvent>
{
public:
    using Answered = std::function<void(const std::string& line, const std::string& caller)>;

    /// @param answered  called on the thread that delivers events
    Application(CommunicationsServiceIfc& service, Answered answered);

    /// Asks for the events. False when the service cannot be used.
    bool start();

    void on(const communications::IncomingCallEvent& event) override;

private:
    CommunicationsServiceIfc& service_;
    const Answered answered_;
};

#endif

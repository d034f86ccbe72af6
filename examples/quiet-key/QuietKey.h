// A key that switches do-not-disturb; its lamp shows what the service says, not what was pressed.
#ifndef QUIET_KEY_H
#define QUIET_KEY_H

#include "CommunicationsServiceIfc.h"
#include "application/Subscriber.h"

#include <atomic>

class QuietKey : public communications::QuietSubscriber
{
public:
    QuietKey(CommunicationsServiceIfc& service, const std::string& line)
        : service_(service), line_(line)
    {
    }

    /// Takes over what is set already. False when the service does not tell.
    bool start()
    {
        bool on = false;
        if (service_.getDoNotDisturb(line_, on) != sfiSuccess)
            return false;
        show(on);
        return true;
    }

    /// False when the service refuses; the lamp then stays as it is.
    bool press() { return service_.setDoNotDisturb(line_, !on_) == sfiSuccess; }

    void onDoNotDisturbEvent(const std::string& device, bool on) override
    {
        if (device == line_)
            show(on);
    }

private:
    void show(bool on)
    {
        on_ = on;
        service_.setLampMode(line_, "quiet", on ? 1 : 0);
    }

    CommunicationsServiceIfc& service_;
    const std::string line_;
    std::atomic<bool> on_{false};  // pressed on one thread, told on another
};

#endif

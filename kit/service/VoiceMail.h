#ifndef KIT_SERVICE_VOICE_MAIL_H
#define KIT_SERVICE_VOICE_MAIL_H

#include "kit/service/Model.h"

#include <string>

namespace kit::service
{

class Simulation;

/// The phone's mailbox, which all lines are told of.
class VoiceMail
{
public:
    explicit VoiceMail(Simulation& simulation) : s_(simulation) {}

    const Mailbox& mailbox() const { return mailbox_; }
    void set(const Mailbox& mailbox);
    void leave(bool urgent);

    /// It listens: 1 hears the next message, 2 leaves one, 3 deletes an old one.
    void hear(const std::string& digits);

private:
    Simulation& s_;
    Mailbox mailbox_;
};

}  // namespace kit::service

#endif

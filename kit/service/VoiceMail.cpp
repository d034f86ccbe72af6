#include "kit/service/VoiceMail.h"

#include "kit/service/Simulation.h"

namespace kit::service
{

namespace
{

bool move(unsigned& from, unsigned& to)
{
    if (from == 0)
        return false;
    --from;
    ++to;
    return true;
}

}  // namespace

void VoiceMail::set(const Mailbox& mailbox)
{
    mailbox_ = mailbox;
    for (const Line& line : s_.lines)
        if (line.registered)
            s_.outbox.messageWaiting(line.name, mailbox_);
}

void VoiceMail::leave(bool urgent)
{
    Mailbox next = mailbox_;
    ++(urgent ? next.newUrgentMessages : next.newMessages);
    set(next);
}

void VoiceMail::hear(const std::string& digits)
{
    unsigned nowhere = 0;
    Mailbox next = mailbox_;
    for (const char digit : digits)
    {
        if (digit == '1' && !move(next.newUrgentMessages, next.oldUrgentMessages))
            move(next.newMessages, next.oldMessages);
        if (digit == '2')
            ++next.newMessages;
        if (digit == '3' && !move(next.oldMessages, nowhere))
            move(next.oldUrgentMessages, nowhere);
    }
    if (!(next == mailbox_))
        set(next);
}

}  // namespace kit::service

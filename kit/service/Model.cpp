#include "kit/service/Model.h"

namespace kit::service
{

std::string Party::uri() const
{
    return number.empty() ? std::string() : "sip:" + number;
}

std::string Party::fullPai() const
{
    if (number.empty())
        return std::string();
    return name.empty() ? "<" + uri() + ">" : "\"" + name + "\" <" + uri() + ">";
}

bool Call::active() const
{
    return state == numbers::callDelivered || state == numbers::callConnected ||
           state == numbers::callConferenced || state == numbers::callHeldByFarEnd;
}

bool Call::waiting() const
{
    return state == numbers::callOffered || state == numbers::callRinging;
}

bool Call::callBackPossible() const
{
    return !incoming && (state == numbers::callDelivered ||
                         (state == numbers::callFailed && reason == numbers::reasonBusy));
}

bool Call::takesDigits() const
{
    return state == numbers::callConnected || state == numbers::callConferenced;
}

std::string Call::remotePai() const
{
    return remote.fullPai.empty() ? remote.from.fullPai() : remote.fullPai;
}

bool Mailbox::operator==(const Mailbox& other) const
{
    return newMessages == other.newMessages && oldMessages == other.oldMessages &&
           newUrgentMessages == other.newUrgentMessages &&
           oldUrgentMessages == other.oldUrgentMessages;
}

}  // namespace kit::service

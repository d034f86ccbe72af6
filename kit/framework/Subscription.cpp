#include "kit/framework/Subscription.h"

#include "kit/framework/Exception.h"

namespace kit
{

Subscription::Subscription(Framework& framework, Executable& subscriber)
    : framework_(framework), subscriber_(subscriber)
{
    try
    {
        renew();
    }
    catch (...)
    {
        framework_.remove(subscriber_);
        throw;
    }
}

Subscription::~Subscription()
{
    framework_.remove(subscriber_);
}

void Subscription::renew() const
{
    const int result = framework_.service().subscribe(&subscriber_);
    if (result != sfiSuccess)
        throw ChannelException("Subscribe was refused: " + resultName(result));
}

}  // namespace kit

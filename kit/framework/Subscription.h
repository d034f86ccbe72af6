#ifndef KIT_FRAMEWORK_SUBSCRIPTION_H
#define KIT_FRAMEWORK_SUBSCRIPTION_H

#include "framework/Executable.h"
#include "kit/framework/Framework.h"

namespace kit
{

/// A subscription that ends where its scope ends, also when a test's assertion leaves it early:
///
///     kit::Framework framework(...);
///     MyApplication application(framework.service());
///     const kit::Subscription subscription(framework, application);
///
/// On return of the destructor no callback of the subscriber is running, save the one that it is
/// called from. Framework and subscriber must outlive it: they stand above it.
class Subscription
{
public:
    /// Subscribes. Throws MarloException where the framework does, and when the service refuses.
    Subscription(Framework& framework, Executable& subscriber);
    ~Subscription();

    Subscription(const Subscription&) = delete;
    Subscription& operator=(const Subscription&) = delete;

    /// Subscribes once more, after Framework::reconnect.
    void renew() const;

private:
    Framework& framework_;
    Executable& subscriber_;
};

}  // namespace kit

#endif

#ifndef KIT_SERVICE_EMBEDDED_CONNECTION_H
#define KIT_SERVICE_EMBEDDED_CONNECTION_H

#include "kit/framework/Connection.h"

#include <memory>

namespace kit
{

class Service;
class SimulatedService;

/// A connection to a simulated service in this process. Several may share one service, as several
/// applications do; each sees the events of its own subscriptions. The service answers on the
/// caller's thread and at once: one that was told to keep silent is a time-out without the time.
class EmbeddedConnection : public ConnectionDecorator
{
public:
    /// With a service of its own.
    EmbeddedConnection();
    explicit EmbeddedConnection(std::shared_ptr<SimulatedService> service);

    /// To a service of another kind.
    explicit EmbeddedConnection(std::shared_ptr<Service> service);

    /// For further connections to the same simulated service, and to let its time pass; null for a
    /// service of another kind.
    const std::shared_ptr<SimulatedService>& service() const { return simulated_; }

private:
    std::shared_ptr<SimulatedService> simulated_;
};

}  // namespace kit

#endif

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
class EmbeddedConnection : public Connection
{
public:
    /// With a service of its own.
    EmbeddedConnection();
    explicit EmbeddedConnection(std::shared_ptr<SimulatedService> service);

    /// To a service of another kind.
    explicit EmbeddedConnection(std::shared_ptr<Service> service);
    ~EmbeddedConnection() override;

    /// For further connections to the same simulated service, and to let its time pass; null for a
    /// service of another kind.
    const std::shared_ptr<SimulatedService>& service() const { return simulated_; }

    EmbeddedConnection(const EmbeddedConnection&) = delete;
    EmbeddedConnection& operator=(const EmbeddedConnection&) = delete;

    void setEventSink(EventSink sink) override;
    void setGoneSink(GoneSink sink) override;
    std::string whyGone() const override;
    void setComplaintSink(ComplaintSink sink) override;
    Delivery request(const std::string& request, std::string& answer,
                     std::chrono::milliseconds timeout) override;
    Delivery subscribe(const std::string& request, std::string& answer,
                       const std::string& channelName, std::chrono::milliseconds timeout) override;
    Delivery post(const std::string& message) override;
    Delivery control(const std::string& command, ControlAnswer& answer,
                     std::chrono::milliseconds timeout) override;
    bool takesTime() const override;
    std::string description() const override;

private:
    std::shared_ptr<SimulatedService> simulated_;
    std::shared_ptr<Service> service_;
    class Sinks;

    std::shared_ptr<Sinks> sinks_;
    int client_;
};

}  // namespace kit

#endif

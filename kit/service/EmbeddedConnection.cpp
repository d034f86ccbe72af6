#include "kit/service/EmbeddedConnection.h"

#include "kit/framework/Sinks.h"
#include "kit/service/SimulatedService.h"

#include <utility>

namespace kit
{

namespace
{

/// What the service calls; it may be set while it does.
struct Sinks
{
    SharedSink<std::string, std::string> events;
    SharedSink<std::string> complaints;
    GoneNotice gone;
};

class Core final : public Connection
{
public:
    explicit Core(std::shared_ptr<Service> service)
        : service_(std::move(service)),
          client_(service_->connect(
              [sinks = sinks_](const std::string& channelName, const std::string& event)
              { sinks->events.tell(channelName, event); },
              [sinks = sinks_](const std::string& text) { sinks->complaints.tell(text); },
              [sinks = sinks_] { sinks->gone.tell(); }))
    {
    }

    ~Core() override { service_->disconnect(client_); }

    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    void setEventSink(EventSink sink) override { sinks_->events.set(std::move(sink)); }
    void setGoneSink(GoneSink sink) override { sinks_->gone.set(sink); }
    std::string whyGone() const override { return ""; }
    void setComplaintSink(ComplaintSink sink) override { sinks_->complaints.set(std::move(sink)); }

    Delivery request(const std::string& request, std::string& answer,
                     std::chrono::milliseconds) override
    {
        return exchange(Sending::request, request, "", answer);
    }

    Delivery subscribe(const std::string& request, std::string& answer,
                       const std::string& channelName, std::chrono::milliseconds) override
    {
        return exchange(Sending::subscribe, request, channelName, answer);
    }

    Delivery post(const std::string& message) override
    {
        std::string nobodyAwaitsIt;
        const Delivery delivery =
            service_->exchange(client_, Sending::oneWay, message, "", nobodyAwaitsIt);
        return delivery == Delivery::gone ? Delivery::gone : Delivery::done;
    }

    Delivery control(const std::string& command, ControlAnswer& answer,
                     std::chrono::milliseconds) override
    {
        answer = service_->control(command);
        return Delivery::done;
    }

    bool takesTime() const override { return false; }
    std::string description() const override { return "the service in this process"; }

private:
    /// A service that keeps silent costs no time here: nobody could answer meanwhile.
    Delivery exchange(Sending sending, const std::string& text, const std::string& channel,
                      std::string& answer)
    {
        const Delivery delivery = service_->exchange(client_, sending, text, channel, answer);
        service_->followAnswer();
        return delivery;
    }

    const std::shared_ptr<Service> service_;
    const std::shared_ptr<Sinks> sinks_ = std::make_shared<Sinks>();
    const Service::ClientId client_;
};

}  // namespace

EmbeddedConnection::EmbeddedConnection() : EmbeddedConnection(std::make_shared<SimulatedService>())
{
}

EmbeddedConnection::EmbeddedConnection(std::shared_ptr<SimulatedService> service)
    : EmbeddedConnection(std::shared_ptr<Service>(service))
{
    simulated_ = std::move(service);
}

EmbeddedConnection::EmbeddedConnection(std::shared_ptr<Service> service)
    : ConnectionDecorator(std::make_unique<Core>(std::move(service)))
{
}

}  // namespace kit

#include "kit/service/EmbeddedConnection.h"

#include "kit/service/SimulatedService.h"

#include <mutex>
#include <utility>

namespace kit
{

namespace
{

/// A service that keeps silent costs no time here: nobody could answer meanwhile.
Delivery deliveryOf(Service::Reply reply)
{
    switch (reply)
    {
    case Service::Reply::silent:
        return Delivery::timedOut;
    case Service::Reply::gone:
        return Delivery::gone;
    default:
        return Delivery::done;
    }
}

/// What the service calls; it may be set while it does.
class Sinks
{
public:
    void setEvent(Connection::EventSink sink) { event_ = std::move(sink); }

    void setComplaint(Connection::ComplaintSink sink)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        complaint_ = std::move(sink);
    }

    void setGone(Connection::GoneSink sink)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        gone_ = std::move(sink);
        if (!isGone_ || !gone_)
            return;
        const Connection::GoneSink to = gone_;
        lock.unlock();
        to();
    }

    void event(const std::string& channelName, const std::string& text)
    {
        if (event_)
            event_(channelName, text);
    }

    void complaint(const std::string& text)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        const Connection::ComplaintSink to = complaint_;
        lock.unlock();
        if (to)
            to(text);
    }

    void gone()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        isGone_ = true;
        const Connection::GoneSink to = gone_;
        lock.unlock();
        if (to)
            to();
    }

private:
    Connection::EventSink event_;  ///< set before there are events
    std::mutex mutex_;
    Connection::ComplaintSink complaint_;
    Connection::GoneSink gone_;
    bool isGone_ = false;
};

class Core final : public Connection
{
public:
    explicit Core(std::shared_ptr<Service> service)
        : service_(std::move(service)),
          client_(service_->connect(
              [sinks = sinks_](const std::string& channelName, const std::string& event)
              { sinks->event(channelName, event); },
              [sinks = sinks_](const std::string& text) { sinks->complaint(text); },
              [sinks = sinks_] { sinks->gone(); }))
    {
    }

    ~Core() override { service_->disconnect(client_); }

    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    void setEventSink(EventSink sink) override { sinks_->setEvent(std::move(sink)); }
    void setGoneSink(GoneSink sink) override { sinks_->setGone(std::move(sink)); }
    std::string whyGone() const override { return ""; }
    void setComplaintSink(ComplaintSink sink) override { sinks_->setComplaint(std::move(sink)); }

    Delivery request(const std::string& request, std::string& answer,
                     std::chrono::milliseconds) override
    {
        const Delivery delivery = deliveryOf(service_->exchange(client_, request, answer));
        service_->followAnswer();
        return delivery;
    }

    Delivery subscribe(const std::string& request, std::string& answer,
                       const std::string& channelName, std::chrono::milliseconds) override
    {
        const Delivery delivery =
            deliveryOf(service_->exchangeSubscription(client_, request, answer, channelName));
        service_->followAnswer();
        return delivery;
    }

    Delivery post(const std::string& message) override
    {
        if (!service_->connected(client_))
            return Delivery::gone;
        service_->post(client_, message);
        return Delivery::done;
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

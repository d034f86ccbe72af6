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

}  // namespace

/// What the service calls; it may be set while it does.
class EmbeddedConnection::Sinks
{
public:
    void setEvent(EventSink sink) { event_ = std::move(sink); }

    void setComplaint(ComplaintSink sink)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        complaint_ = std::move(sink);
    }

    void setGone(GoneSink sink)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        gone_ = std::move(sink);
        if (!isGone_ || !gone_)
            return;
        const GoneSink to = gone_;
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
        const ComplaintSink to = complaint_;
        lock.unlock();
        if (to)
            to(text);
    }

    void gone()
    {
        std::unique_lock<std::mutex> lock(mutex_);
        isGone_ = true;
        const GoneSink to = gone_;
        lock.unlock();
        if (to)
            to();
    }

private:
    EventSink event_;  ///< set before there are events
    std::mutex mutex_;
    ComplaintSink complaint_;
    GoneSink gone_;
    bool isGone_ = false;
};

EmbeddedConnection::EmbeddedConnection() : EmbeddedConnection(std::make_shared<SimulatedService>())
{
}

EmbeddedConnection::EmbeddedConnection(std::shared_ptr<SimulatedService> service)
    : EmbeddedConnection(std::shared_ptr<Service>(service))
{
    simulated_ = std::move(service);
}

EmbeddedConnection::EmbeddedConnection(std::shared_ptr<Service> service)
    : service_(std::move(service)),
      sinks_(std::make_shared<Sinks>()),
      client_(service_->connect(
          [sinks = sinks_](const std::string& channelName, const std::string& event)
          { sinks->event(channelName, event); },
          [sinks = sinks_](const std::string& text) { sinks->complaint(text); },
          [sinks = sinks_] { sinks->gone(); }))
{
}

EmbeddedConnection::~EmbeddedConnection()
{
    service_->disconnect(client_);
}

void EmbeddedConnection::setEventSink(EventSink sink)
{
    sinks_->setEvent(std::move(sink));
}

void EmbeddedConnection::setGoneSink(GoneSink sink)
{
    sinks_->setGone(std::move(sink));
}

std::string EmbeddedConnection::whyGone() const
{
    return "";
}

void EmbeddedConnection::setComplaintSink(ComplaintSink sink)
{
    sinks_->setComplaint(std::move(sink));
}

Delivery EmbeddedConnection::request(const std::string& request, std::string& answer,
                                     std::chrono::milliseconds)
{
    const Delivery delivery = deliveryOf(service_->exchange(client_, request, answer));
    service_->followAnswer();
    return delivery;
}

Delivery EmbeddedConnection::subscribe(const std::string& request, std::string& answer,
                                       const std::string& channelName, std::chrono::milliseconds)
{
    const Delivery delivery =
        deliveryOf(service_->exchangeSubscription(client_, request, answer, channelName));
    service_->followAnswer();
    return delivery;
}

Delivery EmbeddedConnection::post(const std::string& message)
{
    if (!service_->connected(client_))
        return Delivery::gone;
    service_->post(client_, message);
    return Delivery::done;
}

Delivery EmbeddedConnection::control(const std::string& command, ControlAnswer& answer,
                                     std::chrono::milliseconds)
{
    answer = service_->control(command);
    return Delivery::done;
}

bool EmbeddedConnection::takesTime() const
{
    return false;
}

std::string EmbeddedConnection::description() const
{
    return "the service in this process";
}

}  // namespace kit

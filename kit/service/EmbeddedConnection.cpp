#include "kit/service/EmbeddedConnection.h"

#include "kit/service/SimulatedService.h"

#include <utility>

namespace kit
{

namespace
{

/// A service that keeps silent costs no time here: nobody could answer meanwhile.
Delivery deliveryOf(SimulatedService::Reply reply)
{
    switch (reply)
    {
    case SimulatedService::Reply::silent:
        return Delivery::timedOut;
    case SimulatedService::Reply::gone:
        return Delivery::gone;
    default:
        return Delivery::done;
    }
}

}  // namespace

EmbeddedConnection::EmbeddedConnection() : EmbeddedConnection(std::make_shared<SimulatedService>())
{
}

EmbeddedConnection::EmbeddedConnection(std::shared_ptr<SimulatedService> service)
    : service_(std::move(service)),
      sink_(std::make_shared<EventSink>()),
      client_(service_->connect(
          [sink = sink_](const std::string& channelName, const std::string& event)
          {
              if (*sink)
                  (*sink)(channelName, event);
          }))
{
}

EmbeddedConnection::~EmbeddedConnection()
{
    service_->disconnect(client_);
}

void EmbeddedConnection::setEventSink(EventSink sink)
{
    *sink_ = std::move(sink);
}

Delivery EmbeddedConnection::request(const std::string& request, std::string& answer,
                                     std::chrono::milliseconds)
{
    return deliveryOf(service_->exchange(client_, request, answer));
}

Delivery EmbeddedConnection::subscribe(const std::string& request, std::string& answer,
                                       const std::string& channelName, std::chrono::milliseconds)
{
    return deliveryOf(service_->exchangeSubscription(client_, request, answer, channelName));
}

Delivery EmbeddedConnection::post(const std::string& message)
{
    if (!service_->connected(client_))
        return Delivery::gone;
    service_->post(client_, message);
    return Delivery::done;
}

Delivery EmbeddedConnection::control(const std::string& command, std::string& answer,
                                     std::chrono::milliseconds)
{
    answer = service_->control(command);
    return Delivery::done;
}

std::string EmbeddedConnection::description() const
{
    return "the service in this process";
}

}  // namespace kit

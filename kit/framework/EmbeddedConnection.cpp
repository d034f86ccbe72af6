#include "kit/framework/EmbeddedConnection.h"

#include "kit/service/SimulatedService.h"

#include <utility>

namespace kit
{

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
    answer = service_->request(client_, request);
    return Delivery::done;
}

Delivery EmbeddedConnection::subscribe(const std::string& request, std::string& answer,
                                       const std::string& channelName, std::chrono::milliseconds)
{
    answer = service_->subscribe(client_, request, channelName);
    return Delivery::done;
}

Delivery EmbeddedConnection::post(const std::string& message)
{
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

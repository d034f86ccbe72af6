#include "kit/phone/ObservedConnection.h"

#include <utility>

namespace kit::phone
{

ObservedConnection::ObservedConnection(std::unique_ptr<Connection> connection, Observer observer)
    : observer_(std::move(observer)), connection_(std::move(connection))
{
}

void ObservedConnection::setEventSink(EventSink sink)
{
    sink_ = std::move(sink);
    connection_->setEventSink([this](const std::string& channelName, const std::string& event)
                              { inject(channelName, event); });
}

void ObservedConnection::inject(const std::string& channelName, const std::string& event)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::event;
    record.channel = channelName;
    record.text = event;
    // Handed on first: who is woken by the record finds the event.
    sink_(channelName, event);
    tell(record);
}

void ObservedConnection::setGoneSink(GoneSink sink)
{
    connection_->setGoneSink(std::move(sink));
}

std::string ObservedConnection::whyGone() const
{
    return connection_->whyGone();
}

void ObservedConnection::setComplaintSink(ComplaintSink sink)
{
    connection_->setComplaintSink(std::move(sink));
}

Delivery ObservedConnection::request(const std::string& request, std::string& answer,
                                     std::chrono::milliseconds timeout)
{
    const int number = tellRequest(Sending::request, request, "");
    const Delivery delivery = connection_->request(request, answer, timeout);
    tellAnswer(number, Sending::request, delivery, answer);
    return delivery;
}

Delivery ObservedConnection::subscribe(const std::string& request, std::string& answer,
                                       const std::string& channelName,
                                       std::chrono::milliseconds timeout)
{
    const int number = tellRequest(Sending::subscribe, request, channelName);
    const Delivery delivery = connection_->subscribe(request, answer, channelName, timeout);
    tellAnswer(number, Sending::subscribe, delivery, answer);
    return delivery;
}

Delivery ObservedConnection::post(const std::string& message)
{
    tellRequest(Sending::oneWay, message, "");
    return connection_->post(message);
}

Delivery ObservedConnection::control(const std::string& command, ControlAnswer& answer,
                                     std::chrono::milliseconds timeout)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::control;
    record.text = command;
    tell(record);
    return connection_->control(command, answer, timeout);
}

Delivery ObservedConnection::quietRequest(const std::string& request, std::string& answer,
                                          std::chrono::milliseconds timeout)
{
    return connection_->request(request, answer, timeout);
}

Delivery ObservedConnection::quietControl(const std::string& command, ControlAnswer& answer,
                                          std::chrono::milliseconds timeout)
{
    return connection_->control(command, answer, timeout);
}

std::string ObservedConnection::description() const
{
    return connection_->description();
}

int ObservedConnection::tellRequest(Sending sending, const std::string& text,
                                    const std::string& channel)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::request;
    record.sending = sending;
    record.text = text;
    record.channel = channel;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        record.number = ++number_;
    }
    const int number = record.number;
    tell(std::move(record));
    return number;
}

void ObservedConnection::tellAnswer(int number, Sending sending, Delivery delivery,
                                    const std::string& text)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::answer;
    record.number = number;
    record.sending = sending;
    record.delivery = delivery;
    if (delivery == Delivery::done)
        record.text = text;
    tell(std::move(record));
}

void ObservedConnection::tell(TraceRecord record)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    record.time = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - start_);
    observer_(record);
}

}  // namespace kit::phone

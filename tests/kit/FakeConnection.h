#ifndef TESTS_KIT_FAKE_CONNECTION_H
#define TESTS_KIT_FAKE_CONNECTION_H

#include "kit/framework/Connection.h"
#include "kit/protocol/Protocol.h"

#include <chrono>
#include <mutex>
#include <string>
#include <vector>

namespace kit::test
{

/// What the connection's service is like, shared with the test because the framework owns the
/// connection.
struct FakeService
{
    std::mutex mutex;
    Connection::EventSink sink;
    Connection::GoneSink goneSink;
    std::string whyGone;
    Delivery delivery = Delivery::done;
    std::string answer = "sfiSuccess";
    bool takesTime = true;
    std::vector<std::string> received;
    std::vector<std::chrono::milliseconds> timeouts;
    std::string channel;  ///< of the last subscription

    Delivery take(const std::string& text, std::chrono::milliseconds timeout, std::string* answerTo)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        received.push_back(text);
        timeouts.push_back(timeout);
        if (delivery == Delivery::done && answerTo != nullptr)
            *answerTo = answer;
        return delivery;
    }

    void send(const std::string& event) { sink(channel, event); }

    void sendHeld(int callId)
    {
        send(eventText(*findEvent("CallHeldEvent"), {{"callId", std::to_string(callId)}}));
    }
};

class FakeConnection : public Connection
{
public:
    explicit FakeConnection(FakeService& service) : service_(service) {}

    void setEventSink(EventSink sink) override { service_.sink = std::move(sink); }

    void setGoneSink(GoneSink sink) override { service_.goneSink = std::move(sink); }

    std::string whyGone() const override { return service_.whyGone; }

    void setComplaintSink(ComplaintSink) override {}

    Delivery request(const std::string& request, std::string& answer,
                     std::chrono::milliseconds timeout) override
    {
        return service_.take(request, timeout, &answer);
    }

    Delivery subscribe(const std::string& request, std::string& answer,
                       const std::string& channelName, std::chrono::milliseconds timeout) override
    {
        service_.channel = channelName;
        return service_.take(request, timeout, &answer);
    }

    Delivery post(const std::string& message) override
    {
        return service_.take(message, std::chrono::milliseconds(0), nullptr);
    }

    Delivery control(const std::string& command, ControlAnswer& answer,
                     std::chrono::milliseconds) override
    {
        answer = {true, command};
        return Delivery::done;
    }

    bool takesTime() const override { return service_.takesTime; }

    std::string description() const override { return "the fake service"; }

private:
    FakeService& service_;
};

}  // namespace kit::test

#endif

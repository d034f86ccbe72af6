#ifndef KIT_PHONE_OBSERVED_CONNECTION_H
#define KIT_PHONE_OBSERVED_CONNECTION_H

#include "kit/framework/Connection.h"
#include "kit/trace/Trace.h"

#include <memory>
#include <mutex>

namespace kit::phone
{

/// A connection that tells an observer what goes over it.
class ObservedConnection : public Connection
{
public:
    /// Called on the thread that sends or receives, one at a time. Must only take the record in.
    using Observer = std::function<void(const TraceRecord& record)>;

    ObservedConnection(std::unique_ptr<Connection> connection, Observer observer);

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
    std::string description() const override;

    /// Asks without telling the observer: for what the phone, not the application, wants to know.
    Delivery quietRequest(const std::string& request, std::string& answer,
                          std::chrono::milliseconds timeout);
    Delivery quietControl(const std::string& command, ControlAnswer& answer,
                          std::chrono::milliseconds timeout);

    /// Lets an event come in as if the service had sent it.
    void inject(const std::string& channelName, const std::string& event);

private:
    int tellRequest(Sending sending, const std::string& text, const std::string& channel);
    void tellAnswer(int number, Sending sending, Delivery delivery, const std::string& text);
    void tell(TraceRecord record);

    EventSink sink_;
    const Observer observer_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::mutex mutex_;
    int number_ = 0;
    const std::unique_ptr<Connection>
        connection_;  ///< last, and so gone before what its events use
};

}  // namespace kit::phone

#endif

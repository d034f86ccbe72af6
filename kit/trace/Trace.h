#ifndef KIT_TRACE_TRACE_H
#define KIT_TRACE_TRACE_H

#include "kit/framework/Connection.h"
#include "kit/protocol/Protocol.h"

#include <chrono>
#include <iosfwd>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kit::phone
{

/// One thing that went over the connection, at the moment when the application's side saw it.
struct Record
{
    enum class Kind
    {
        request,  ///< the application's; also one that is not answered
        answer,   ///< to the request of the same number
        event,
        control  ///< a command to the simulation, which a real service does not have
    };

    Kind kind = Kind::request;
    std::chrono::microseconds time{0};  ///< since the start of the trace
    int number = 0;                     ///< of the request, counted from 1; 0 for the others
    Sending sending = Sending::request;
    Delivery delivery = Delivery::done;  ///< of an answer
    std::string channel;                 ///< of a subscription or an event
    std::string text;                    ///< as it travelled; a control's command
};

/// One JSON object without a line end: {"time":0.001,"kind":"request","number":1,...}.
std::string toJson(const Record& record);

/// Raises std::runtime_error that says what is wrong with the line.
Record fromJson(const std::string& line);

/// Reads JSON Lines; empty lines are skipped. Errors begin with "NAME:LINE: ".
std::vector<Record> readTrace(std::istream& in, const std::string& name);

/// A connection that tells an observer what goes over it.
class ObservedConnection : public Connection
{
public:
    /// Called on the thread that sends or receives, one at a time. Must only take the record in.
    using Observer = std::function<void(const Record& record)>;

    ObservedConnection(std::unique_ptr<Connection> connection, Observer observer);

    void setEventSink(EventSink sink) override;
    Delivery request(const std::string& request, std::string& answer,
                     std::chrono::milliseconds timeout) override;
    Delivery subscribe(const std::string& request, std::string& answer,
                       const std::string& channelName, std::chrono::milliseconds timeout) override;
    Delivery post(const std::string& message) override;
    Delivery control(const std::string& command, std::string& answer,
                     std::chrono::milliseconds timeout) override;
    std::string description() const override;

    /// Asks without telling the observer: for what the phone, not the application, wants to know.
    Delivery quietRequest(const std::string& request, std::string& answer,
                          std::chrono::milliseconds timeout);
    Delivery quietControl(const std::string& command, std::string& answer,
                          std::chrono::milliseconds timeout);

    /// Lets an event come in as if the service had sent it.
    void inject(const std::string& channelName, const std::string& event);

private:
    int tellRequest(Sending sending, const std::string& text, const std::string& channel);
    void tellAnswer(int number, Sending sending, Delivery delivery, const std::string& text);
    void tell(Record record);

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

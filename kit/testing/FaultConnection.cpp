#include "kit/testing/FaultConnection.h"

#include "kit/framework/Exception.h"
#include "kit/framework/Sinks.h"
#include "kit/protocol/Protocol.h"
#include "kit/testing/Names.h"

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

namespace kit
{

namespace
{

const char* const garbage = "\x01<<<\xff garbage </Method><";

/// What comes through of a text.
std::string spoilt(Fault fault, const std::string& text)
{
    return fault == Fault::empty       ? std::string()
           : fault == Fault::garbage   ? std::string(garbage)
           : fault == Fault::truncated ? text.substr(0, text.size() / 2)
                                       : text;
}

using Exchange = std::function<Delivery(std::string& answer)>;

}  // namespace

class FaultConnection::Faults
{
public:
    explicit Faults(bool takesTime) : takesTime_(takesTime) {}

    GoneNotice goneNotice;

    struct Entry
    {
        Fault fault;
        std::string method;
        int times;
        std::chrono::milliseconds delay;
        int cleared;  ///< how often the faults had been cleared when it was taken
    };

    void add(const Entry& entry)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        entries_.push_back(entry);
    }

    void clear()
    {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            entries_.clear();
            ++cleared_;
        }
        changed_.notify_all();
    }

    int happened() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return happened_;
    }

    /// The fault for a message, if any; counts it as happened.
    std::optional<Entry> take(const std::string& method, bool isEvent)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        const auto found =
            std::find_if(entries_.begin(), entries_.end(),
                         [&](const Entry& entry) {
                             return entry.times != 0 &&
                                    (entry.method == method || (!isEvent && entry.method.empty()));
                         });
        if (found == entries_.end())
            return std::nullopt;
        if (found->times > 0)
            --found->times;
        ++happened_;
        found->cleared = cleared_;
        return *found;
    }

    /// False when the faults were cleared since the entry was taken.
    bool wait(const Entry& entry, std::chrono::milliseconds time)
    {
        if (!takesTime_)
            return true;
        std::unique_lock<std::mutex> lock(mutex_);
        return !changed_.wait_for(lock, time, [&] { return cleared_ != entry.cleared; });
    }

    Delivery exchange(const std::string& request, std::string& answer,
                      std::chrono::milliseconds timeout, const Exchange& send)
    {
        if (goneNotice.given())
            return Delivery::gone;
        const std::optional<Entry> entry = take(parse(request).method, false);
        if (!entry)
            return send(answer);
        if (goes(*entry))
            return Delivery::gone;
        if (entry->fault == Fault::failure)
        {
            answer = "sfiFailure";
            return Delivery::done;
        }
        std::string real;
        if (entry->fault == Fault::duplicate)
            send(real);
        const Delivery delivery = send(real);
        if (delivery != Delivery::done)
            return delivery;
        return spoil(*entry, real, answer, timeout);
    }

    Delivery post(const std::string& method, const std::function<Delivery()>& send)
    {
        if (goneNotice.given())
            return Delivery::gone;
        const std::optional<Entry> entry = take(method, false);
        if (entry && goes(*entry))
            return Delivery::gone;
        if (entry && entry->fault == Fault::duplicate)
            send();
        return send();
    }

    /// What becomes of an event: nothing, itself once or twice, or something else.
    std::vector<std::string> events(const std::string& event)
    {
        if (goneNotice.given())
            return {};
        const std::optional<Entry> entry = take(parse(event).method, true);
        if (!entry)
            return {event};
        if (entry->fault == Fault::gone)
            goneNotice.tell();
        if (entry->fault == Fault::gone || entry->fault == Fault::noAnswer)
            return {};
        if (entry->fault == Fault::duplicate)
            return {event, event};
        return {spoilt(entry->fault, event)};
    }

private:
    /// Whether the connection goes with this; throws where that is the fault.
    bool goes(const Entry& entry)
    {
        if (entry.fault == Fault::exception)
            throw ChannelException("the channel failed on command");
        if (entry.fault == Fault::gone)
            goneNotice.tell();
        return entry.fault == Fault::gone;
    }

    Delivery spoil(const Entry& entry, const std::string& real, std::string& answer,
                   std::chrono::milliseconds timeout)
    {
        if (entry.fault == Fault::noAnswer)
        {
            wait(entry, timeout);
            return Delivery::timedOut;
        }
        if (entry.fault == Fault::delay &&
            (!wait(entry, std::min(entry.delay, timeout)) || entry.delay >= timeout))
            return Delivery::timedOut;
        answer = spoilt(entry.fault, real);
        return Delivery::done;
    }

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Entry> entries_;
    int happened_ = 0;
    int cleared_ = 0;
    const bool takesTime_;
};

FaultConnection::FaultConnection(std::unique_ptr<Connection> connection)
    : ConnectionDecorator(std::move(connection)),
      faults_(std::make_shared<Faults>(inner->takesTime()))
{
}

FaultConnection::~FaultConnection() = default;

void FaultConnection::inject(Fault fault, const std::string& method, int times,
                             std::chrono::milliseconds delay)
{
    if (!method.empty() && findEvent(method) == nullptr)
        checkRequest(method);
    faults_->add({fault, method, times, delay, 0});
}

void FaultConnection::clear()
{
    faults_->clear();
}

int FaultConnection::happened() const
{
    return faults_->happened();
}

void FaultConnection::setEventSink(EventSink sink)
{
    inner->setEventSink(
        [faults = faults_, sink = std::move(sink)](const std::string& channelName,
                                                   const std::string& event)
        {
            for (const std::string& text : faults->events(event))
                sink(channelName, text);
        });
}

void FaultConnection::setGoneSink(GoneSink sink)
{
    faults_->goneNotice.set(sink);
    inner->setGoneSink([faults = faults_] { faults->goneNotice.tell(); });
}

std::string FaultConnection::whyGone() const
{
    const std::string why = inner->whyGone();
    return why.empty() && faults_->goneNotice.given() ? "on command" : why;
}

Delivery FaultConnection::request(const std::string& request, std::string& answer,
                                  std::chrono::milliseconds timeout)
{
    return faults_->exchange(request, answer, timeout,
                             [&](std::string& real)
                             { return inner->request(request, real, timeout); });
}

Delivery FaultConnection::subscribe(const std::string& request, std::string& answer,
                                    const std::string& channelName,
                                    std::chrono::milliseconds timeout)
{
    return faults_->exchange(request, answer, timeout,
                             [&](std::string& real)
                             { return inner->subscribe(request, real, channelName, timeout); });
}

Delivery FaultConnection::post(const std::string& message)
{
    return faults_->post(parse(message).method, [&] { return inner->post(message); });
}

}  // namespace kit

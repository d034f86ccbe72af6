#include "kit/framework/Framework.h"

#include "framework/FrameworkContext.h"
#include "framework/InvokerResponse.h"
#include "framework/ProxyRequest.h"
#include "kit/framework/Exception.h"
#include "kit/framework/Log.h"
#include "kit/language/Durations.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

// Opaque to everybody else, and empty here.
class Context
{
};

namespace kit
{

namespace
{

/// "AnswerCall" out of a request, for messages to people.
std::string nameOfRequest(const std::string& text)
{
    const std::string method = parse(text).method;
    return method.empty() ? "signalling data" : method;
}

std::string goneText(const Connection& connection)
{
    const std::string why = connection.whyGone();
    return connection.description() + " is gone" + (why.empty() ? "" : ": " + why);
}

void tell(const Framework::Observer& observer, Passage passage)
{
    if (!observer)
        return;
    passage.time = std::chrono::system_clock::now();
    observer(passage);
}

}  // namespace

class Framework::Core final : private FrameworkContext,
                              private ProxyRequest,
                              private InvokerResponse
{
public:
    Core(std::unique_ptr<Connection> connection, Options options)
        : options_(std::move(options)),
          library_(options_.library),
          invoker_(library_.createInvoker()),
          proxy_(library_.createProxy()),
          service_(dynamic_cast<CommunicationsServiceIfc*>(proxy_.get()))
    {
        inbox_->observer = options_.observer;
        if (service_ == nullptr)
            throw LibraryError("the proxy of " + library_.path() +
                               " does not implement CommunicationsServiceIfc");
        ProxyRequest::context = this;
        connect(std::move(connection));
        invoker_->initInvoker(this);
        proxy_->init(context_);
        proxy_->initProxy(*this);
        if (options_.events == Events::onOwnThread)
            dispatcher_ = std::thread([this] { dispatch(); });
    }

    ~Core()
    {
        // A callback that is running may still call operations: the connection goes last.
        {
            const std::lock_guard<std::mutex> lock(inbox_->mutex);
            inbox_->stopping = true;
        }
        inbox_->changed.notify_all();
        if (dispatcher_.joinable())
            dispatcher_.join();
        proxy_->shutdown();
    }

    Core(const Core&) = delete;
    Core& operator=(const Core&) = delete;

    CommunicationsServiceIfc& service() { return *service_; }

    std::shared_ptr<Connection> connection() const
    {
        const std::lock_guard<std::mutex> lock(inbox_->mutex);
        return connection_;
    }

    void connect(std::unique_ptr<Connection> fresh)
    {
        if (fresh == nullptr)
            throw std::invalid_argument("the framework needs a connection");
        std::shared_ptr<Connection> connection = std::move(fresh);
        const std::uint64_t era = ++connections_;
        // Not this object: a connection that somebody still holds may outlive it.
        connection->setEventSink(
            [inbox = inbox_, era](const std::string& channel, const std::string& event)
            { inbox->take(era, channel, event); });
        const std::shared_ptr<Connection> next = connection;
        {
            const std::lock_guard<std::mutex> lock(inbox_->mutex);
            connection_.swap(connection);
            inbox_->era = era;
            inbox_->waiting.clear();
        }
        inbox_->changed.notify_all();
        next->setGoneSink([inbox = inbox_, era] { inbox->takeGone(era); });
    }

    std::string channelOf(Executable& subscriber)
    {
        if (dynamic_cast<CommunicationsServiceEventIfc*>(&subscriber) == nullptr)
            throw ChannelException("a subscriber has to be both, an Executable and a "
                                   "CommunicationsServiceEventIfc: this one is an Executable only");
        const std::lock_guard<std::mutex> lock(inbox_->mutex);
        for (const auto& [channel, known] : subscribers_)
            if (known == &subscriber)
                return channel;
        const std::string channel = "subscriber-" + std::to_string(++channels_);
        subscribers_[channel] = &subscriber;
        return channel;
    }

    void inject(const std::string& channel, const std::string& event)
    {
        std::uint64_t era = 0;
        current(era);
        inbox_->take(era, channel, event);
    }

    bool remove(Executable& subscriber)
    {
        std::unique_lock<std::mutex> lock(inbox_->mutex);
        const auto found =
            std::find_if(subscribers_.begin(), subscribers_.end(),
                         [&](const auto& entry) { return entry.second == &subscriber; });
        const bool known = found != subscribers_.end();
        if (known)
            subscribers_.erase(found);
        inbox_->changed.wait(
            lock,
            [&] { return delivering_ != &subscriber || deliverer_ == std::this_thread::get_id(); });
        return known;
    }

    std::size_t pump(std::chrono::milliseconds wait)
    {
        if (options_.events != Events::onPump)
            return 0;
        std::unique_lock<std::mutex> lock(inbox_->mutex);
        if (deliverer_ == std::this_thread::get_id())
            return 0;
        // A wait that is over before it begins still costs a timer.
        if (wait.count() > 0)
            inbox_->changed.wait_for(lock, wait, [&] { return !inbox_->waiting.empty(); });
        std::size_t delivered = 0;
        while (!inbox_->waiting.empty())
        {
            inbox_->changed.wait(lock, [&] { return !busy(); });
            if (!inbox_->waiting.empty() && deliverNext(lock))
                ++delivered;
        }
        return delivered;
    }

    bool settle(std::chrono::milliseconds timeout)
    {
        std::unique_lock<std::mutex> lock(inbox_->mutex);
        return inbox_->changed.wait_for(lock, timeout,
                                        [&] { return inbox_->waiting.empty() && !busy(); });
    }

private:
    /// An event, or that the service has gone.
    struct Arrived
    {
        std::string channel;
        std::string text;
        bool gone;
    };

    /// Where connections put their events.
    struct Inbox
    {
        std::mutex mutex;
        std::condition_variable changed;
        std::deque<Arrived> waiting;
        Observer observer;
        std::uint64_t era = 0;     ///< the connection in use; what others bring is dropped
        std::uint64_t goneIn = 0;  ///< the connection whose going has been taken in
        bool stopping = false;

        void take(std::uint64_t from, const std::string& channel, const std::string& event)
        {
            {
                const std::lock_guard<std::mutex> lock(mutex);
                if (from != era || stopping)
                    return;
                waiting.push_back({channel, event, false});
                // In here, so that it sees them in their order and none behind the framework's end.
                tell(observer, {Passage::What::arrival, Sending::request, 0, channel, event});
            }
            changed.notify_all();
        }

        void takeGone(std::uint64_t from)
        {
            {
                const std::lock_guard<std::mutex> lock(mutex);
                if (from != era || from == goneIn || stopping)
                    return;
                goneIn = from;
                waiting.push_back({"", "", true});
            }
            changed.notify_all();
        }
    };

    // The context, for the library.
    std::string findChannel(Executable* executable) override { return channelOf(*executable); }

    // The channel, for the library.
    void sendRequest(const std::string& request, std::string& response) override
    {
        ask(Sending::request, request, response, "", options_.requestTimeout);
    }

    void sendRequestTimed(const std::string& request, std::string& response, int timeout) override
    {
        ask(Sending::timed, request, response, "", inTime(timeout));
    }

    void sendSubscribe(const std::string& request, std::string& response,
                       const std::string& channelName, int timeout) override
    {
        const std::string problem =
            ask(Sending::subscribe, request, response, channelName, inTime(timeout));
        if (!problem.empty())
            throw ChannelException(problem);
    }

    void sendOneWay(const std::string& message) override
    {
        std::uint64_t era = 0;
        const std::shared_ptr<Connection> service = current(era);
        observe({Passage::What::message, Sending::oneWay, 0, "", message});
        const Delivery delivery = service->post(message);
        if (delivery == Delivery::gone)
            inbox_->takeGone(era);
        if (delivery != Delivery::done)
            report(nameOfRequest(message) + " was not sent: " + goneText(*service));
    }

    void setProtocol(const std::string& protocolName) override
    {
        if (protocolName != "CommunicationsServiceProtocol")
            report("the library asks for the protocol \"" + protocolName +
                   "\", which no service here speaks");
    }

    // The response of the invoker: nothing waits for it here.
    void messageHandled() override {}

    std::chrono::milliseconds inTime(int timeout) const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(timeout *
                                                                     options_.timeoutUnit);
    }

    /// Returns "" when there was an answer, else what people are told.
    std::string ask(Sending sending, const std::string& request, std::string& response,
                    const std::string& channel, std::chrono::milliseconds timeout)
    {
        std::uint64_t era = 0;
        const std::shared_ptr<Connection> service = current(era);
        const std::uint64_t number = ++requests_;
        observe({Passage::What::request, sending, number, channel, request});
        const Delivery delivery = sending == Sending::subscribe
                                      ? service->subscribe(request, response, channel, timeout)
                                      : service->request(request, response, timeout);
        if (delivery != Delivery::done)
            response = options_.unanswered;
        observe({Passage::What::answer, sending, number, channel, response, delivery});
        if (delivery == Delivery::done)
            return std::string();
        const std::string problem =
            nameOfRequest(request) + " has no answer: " +
            (delivery == Delivery::gone
                 ? goneText(*service)
                 : service->description() + " did not answer within " + durationText(timeout));
        report(problem);
        // Not every connection notices by itself.
        if (delivery == Delivery::gone)
            inbox_->takeGone(era);
        return problem;
    }

    /// The connection in use, and which it is.
    std::shared_ptr<Connection> current(std::uint64_t& era) const
    {
        const std::lock_guard<std::mutex> lock(inbox_->mutex);
        era = inbox_->era;
        return connection_;
    }

    void observe(Passage passage) const { tell(options_.observer, std::move(passage)); }

    void report(const std::string& problem) const
    {
        log(1, problem);
        if (options_.problems)
            options_.problems(problem);
    }

    void dispatch()
    {
        std::unique_lock<std::mutex> lock(inbox_->mutex);
        for (;;)
        {
            inbox_->changed.wait(lock,
                                 [&] { return inbox_->stopping || !inbox_->waiting.empty(); });
            if (inbox_->stopping)
                return;
            deliverNext(lock);
        }
    }

    /// Takes the first event out and delivers it with the lock released; false when it has no
    /// subscriber any more.
    bool deliverNext(std::unique_lock<std::mutex>& lock)
    {
        const Arrived event = std::move(inbox_->waiting.front());
        inbox_->waiting.pop_front();
        const auto found = subscribers_.find(event.channel);
        Executable* const subscriber = found == subscribers_.end() ? nullptr : found->second;
        if (event.gone || subscriber != nullptr)
        {
            delivering_ = subscriber;
            deliverer_ = std::this_thread::get_id();
            lock.unlock();
            if (event.gone)
                tellGone();
            else
                deliver(*subscriber, event);
            lock.lock();
            delivering_ = nullptr;
            deliverer_ = std::thread::id();
        }
        inbox_->changed.notify_all();
        return subscriber != nullptr;
    }

    /// Whether a callback is running.
    bool busy() const { return deliverer_ != std::thread::id(); }

    void tellGone() const
    {
        const std::string problem = goneText(*connection());
        log(1, problem);
        if (options_.gone)
            options_.gone(problem);
    }

    void deliver(Executable& subscriber, const Arrived& event)
    {
        observe({Passage::What::event, Sending::request, 0, event.channel, event.text});
        try
        {
            invoker_->handleMessage(&subscriber, event.text.c_str(),
                                    static_cast<int>(event.text.size()), this);
        }
        catch (const std::exception& exception)
        {
            report("the callback of " + parse(event.text).method + " threw: " + exception.what());
        }
        catch (const MarloException& exception)
        {
            report("the callback of " + parse(event.text).method + " threw: " + textOf(exception));
        }
        catch (...)
        {
            report("the callback of " + parse(event.text).method + " threw");
        }
    }

    const Options options_;
    Library library_;
    Context context_;
    std::unique_ptr<Invoker> invoker_;
    std::unique_ptr<Proxy> proxy_;
    CommunicationsServiceIfc* service_;
    std::atomic<std::uint64_t> requests_{0};
    std::atomic<std::uint64_t> connections_{0};

    const std::shared_ptr<Inbox> inbox_ = std::make_shared<Inbox>();

    // The rest is guarded by the inbox's mutex.
    std::shared_ptr<Connection> connection_;
    std::uint64_t channels_ = 0;
    std::map<std::string, Executable*> subscribers_;
    Executable* delivering_ = nullptr;
    std::thread::id deliverer_;
    std::thread dispatcher_;
};

Framework::Framework(std::unique_ptr<Connection> connection)
    : Framework(std::move(connection), Options())
{
}

Framework::Framework(std::unique_ptr<Connection> connection, Options options)
    : core_(std::make_unique<Core>(std::move(connection), std::move(options)))
{
}

Framework::~Framework() = default;

CommunicationsServiceIfc& Framework::service()
{
    return core_->service();
}

std::shared_ptr<Connection> Framework::connection() const
{
    return core_->connection();
}

void Framework::reconnect(std::unique_ptr<Connection> connection)
{
    core_->connect(std::move(connection));
}

std::string Framework::channelOf(Executable& subscriber)
{
    return core_->channelOf(subscriber);
}

void Framework::inject(const std::string& channelName, const std::string& event)
{
    core_->inject(channelName, event);
}

bool Framework::remove(Executable& subscriber)
{
    return core_->remove(subscriber);
}

std::size_t Framework::pump(std::chrono::milliseconds wait)
{
    return core_->pump(wait);
}

bool Framework::settle(std::chrono::milliseconds timeout)
{
    return core_->settle(timeout);
}

}  // namespace kit

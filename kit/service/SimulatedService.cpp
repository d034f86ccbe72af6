#include "kit/service/SimulatedService.h"

#include "kit/service/Commands.h"
#include "kit/service/Requests.h"
#include "kit/service/World.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>

namespace kit
{

namespace
{

constexpr std::size_t maximumSubscriptions = 1000;
const std::vector<std::string> defaultLines = {"1001", "1002", "1003"};

}  // namespace

class SimulatedService::State
{
public:
    explicit State(const std::vector<std::string>& lines) : world(lines) {}

    /// What a client listens with.
    struct Sinks
    {
        EventSink event;
        Log complaint;
        Connection::GoneSink gone;
    };

    /// What waits to be delivered.
    struct Parcel
    {
        enum What
        {
            logLine,
            event,
            complaint,
            gone
        } what;
        ClientId client;  ///< 0 for the log
        std::string channel;
        std::shared_ptr<const std::string> text;
    };

    using Lock = std::unique_lock<std::mutex>;

    /// Delivers what the simulation has brought about, with the lock open meanwhile. Complaints are
    /// about the one who asked, if anybody did.
    void deliver(Lock& lock, ClientId asking = 0);
    void dropClients();

    mutable std::mutex mutex;
    std::condition_variable delivered;
    service::World world;
    std::map<ClientId, std::shared_ptr<Sinks>> sinks;
    std::deque<Parcel> outbox;
    std::thread::id deliverer;  ///< the thread that empties the outbox, if any
    ClientId receiver = 0;      ///< whose sink it is calling
    ClientId lastClient = 0;
    std::shared_ptr<Log> log;

private:
    void pack(ClientId asking);
    void hand(const Parcel& parcel, const std::shared_ptr<Log>& logTo,
              const std::shared_ptr<Sinks>& to);
};

void SimulatedService::State::pack(ClientId asking)
{
    for (std::string& line : world.simulation->outbox.takeComplaints())
    {
        world.note(line);
        const auto text = std::make_shared<std::string>(std::move(line));
        if (log != nullptr)
            outbox.push_back({Parcel::logLine, 0, "", text});
        if (asking != 0)
            outbox.push_back({Parcel::complaint, asking, "", text});
    }
    for (std::string& event : world.simulation->outbox.takeEvents())
    {
        const auto text = std::make_shared<std::string>(std::move(event));
        for (const auto& [id, client] : world.clients)
            for (const std::string& channel : client.channels)
                outbox.push_back({Parcel::event, id, channel, text});
    }
}

void SimulatedService::State::dropClients()
{
    for (const auto& entry : sinks)
        outbox.push_back({Parcel::gone, entry.first, "", nullptr});
}

void SimulatedService::State::deliver(Lock& lock, ClientId asking)
{
    pack(asking);
    if (deliverer == std::this_thread::get_id())
        return;
    delivered.wait(lock, [this] { return deliverer == std::thread::id(); });
    deliverer = std::this_thread::get_id();
    while (!outbox.empty())
    {
        const Parcel parcel = std::move(outbox.front());
        outbox.pop_front();
        const auto found = sinks.find(parcel.client);
        const std::shared_ptr<Sinks> to = found == sinks.end() ? nullptr : found->second;
        const std::shared_ptr<Log> logTo = log;
        if (parcel.what == Parcel::gone && to != nullptr)
            sinks.erase(found);
        receiver = parcel.client;
        lock.unlock();
        if (parcel.what == Parcel::logLine ? logTo != nullptr && *logTo != nullptr : to != nullptr)
            hand(parcel, logTo, to);
        lock.lock();
        receiver = 0;
    }
    deliverer = std::thread::id();
    delivered.notify_all();
}

/// Without the lock.
void SimulatedService::State::hand(const Parcel& parcel, const std::shared_ptr<Log>& logTo,
                                   const std::shared_ptr<Sinks>& to)
{
    switch (parcel.what)
    {
    case Parcel::logLine:
        (*logTo)(*parcel.text);
        break;
    case Parcel::event:
        if (to->event)
            to->event(parcel.channel, *parcel.text);
        break;
    case Parcel::complaint:
        if (to->complaint)
            to->complaint(*parcel.text);
        break;
    case Parcel::gone:
        if (to->gone)
            to->gone();
        break;
    }
}

SimulatedService::SimulatedService() : SimulatedService(defaultLines) {}

SimulatedService::SimulatedService(const std::vector<std::string>& lines)
    : state_(std::make_unique<State>(lines))
{
}

SimulatedService::~SimulatedService() = default;

void SimulatedService::setLog(Log log)
{
    const State::Lock lock(state_->mutex);
    state_->log = std::make_shared<Log>(std::move(log));
}

SimulatedService::ClientId SimulatedService::connect(EventSink sink, Log complaints,
                                                     Connection::GoneSink gone)
{
    const State::Lock lock(state_->mutex);
    const ClientId id = ++state_->lastClient;
    state_->sinks[id] = std::make_shared<State::Sinks>(
        State::Sinks{std::move(sink), std::move(complaints), std::move(gone)});
    state_->world.clients[id];
    return id;
}

void SimulatedService::disconnect(ClientId client)
{
    State::Lock lock(state_->mutex);
    state_->sinks.erase(client);
    state_->world.clients.erase(client);
    if (state_->deliverer != std::this_thread::get_id())
        state_->delivered.wait(lock, [&] { return state_->receiver != client; });
}

Delivery SimulatedService::exchange(ClientId client, Sending sending, const std::string& text,
                                    const std::string& channel, std::string& answer)
{
    State::Lock lock(state_->mutex);
    service::World& world = state_->world;
    service::Client* const known = world.findClient(client);
    if (known == nullptr)
        return Delivery::gone;
    ++known->requests;
    const bool subscribes = sending == Sending::subscribe;
    const std::optional<service::WrongAnswer> fault = world.faults.next(text);
    const bool silent = fault && fault->silent;
    if (!fault && subscribes && known->channels.size() >= maximumSubscriptions)
    {
        world.simulation->outbox.complain("Subscribe: client " + std::to_string(client) + " has " +
                                          std::to_string(maximumSubscriptions) +
                                          " subscriptions already");
        answer = service::failed;
    }
    else if (!fault)
    {
        answer = service::answerRequest(*world.simulation, text);
        if (subscribes && answer == service::success)
            known->channels.push_back(channel);
    }
    else if (!silent)
        answer = fault->text;
    state_->deliver(lock, client);
    return silent ? Delivery::timedOut : Delivery::done;
}

ControlAnswer SimulatedService::control(const std::string& command)
{
    State::Lock lock(state_->mutex);
    const ControlAnswer answer = service::carryOut(state_->world, command);
    if (std::exchange(state_->world.wentAway, false))
        state_->dropClients();
    state_->deliver(lock);
    return answer;
}

void SimulatedService::advance(std::chrono::milliseconds time)
{
    State::Lock lock(state_->mutex);
    state_->world.simulation->clock.advance(time);
    state_->deliver(lock);
}

std::chrono::milliseconds SimulatedService::advanceToNext(std::chrono::milliseconds limit)
{
    State::Lock lock(state_->mutex);
    const std::chrono::milliseconds time = state_->world.simulation->clock.quietFor(limit);
    state_->world.simulation->clock.advance(time);
    state_->deliver(lock);
    return time;
}

}  // namespace kit

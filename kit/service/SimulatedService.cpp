#include "kit/service/SimulatedService.h"

#include "kit/service/Control.h"
#include "kit/service/Simulation.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

namespace kit
{

namespace
{

const std::vector<std::string> defaultLines = {"1001", "1002", "1003"};

}  // namespace

class SimulatedService::State
{
public:
    explicit State(const std::vector<std::string>& lines) : simulation(lines), control(lines) {}

    /// What waits to be delivered: an event to a client, or a line to the log.
    struct Parcel
    {
        ClientId client;  ///< 0 for the log
        std::string channel;
        std::shared_ptr<const std::string> text;
    };

    using Lock = std::unique_lock<std::mutex>;

    /// Delivers what the simulation has brought about, with the lock open meanwhile.
    void deliver(Lock& lock);

    Reply ask(ClientId client, const std::string& text, std::string& answer,
              const std::string* channel);

    mutable std::mutex mutex;
    std::condition_variable delivered;
    service::Simulation simulation;
    service::Control control;
    std::map<ClientId, std::shared_ptr<EventSink>> sinks;
    std::deque<Parcel> outbox;
    std::thread::id deliverer;  ///< the thread that empties the outbox, if any
    ClientId receiver = 0;      ///< whose sink it is calling
    ClientId lastClient = 0;
    std::shared_ptr<Log> log;

private:
    void pack();
};

void SimulatedService::State::pack()
{
    for (std::string& line : simulation.takeComplaints())
    {
        control.note(line);
        if (log != nullptr)
            outbox.push_back({0, "", std::make_shared<std::string>(std::move(line))});
    }
    for (std::string& event : simulation.takeEvents())
    {
        const auto text = std::make_shared<std::string>(std::move(event));
        for (const auto& [id, client] : control.clients())
            for (const std::string& channel : client.channels)
                outbox.push_back({id, channel, text});
    }
}

void SimulatedService::State::deliver(Lock& lock)
{
    pack();
    if (deliverer == std::this_thread::get_id())
        return;
    delivered.wait(lock, [this] { return deliverer == std::thread::id(); });
    deliverer = std::this_thread::get_id();
    while (!outbox.empty())
    {
        const Parcel parcel = std::move(outbox.front());
        outbox.pop_front();
        if (parcel.client == 0)
        {
            const std::shared_ptr<Log> to = log;
            lock.unlock();
            if (to != nullptr && *to)
                (*to)(*parcel.text);
            lock.lock();
            continue;
        }
        const auto found = sinks.find(parcel.client);
        if (found == sinks.end())
            continue;
        const std::shared_ptr<EventSink> sink = found->second;
        receiver = parcel.client;
        lock.unlock();
        if (*sink)
            (*sink)(parcel.channel, *parcel.text);
        lock.lock();
        receiver = 0;
    }
    deliverer = std::thread::id();
    delivered.notify_all();
}

SimulatedService::Reply SimulatedService::State::ask(ClientId client, const std::string& text,
                                                     std::string& answer,
                                                     const std::string* channel)
{
    Lock lock(mutex);
    service::Client* const known = control.findClient(client);
    if (known == nullptr)
        return Reply::gone;
    ++known->requests;
    const service::Fault* const fault = control.nextFault(text);
    const bool silent = fault != nullptr && fault->silent;
    if (fault == nullptr)
    {
        answer = simulation.request(text);
        if (channel != nullptr && answer == "sfiSuccess")
            known->channels.push_back(*channel);
    }
    else if (!silent)
        answer = fault->text;
    deliver(lock);
    return silent ? Reply::silent : Reply::answered;
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

SimulatedService::ClientId SimulatedService::connect(EventSink sink)
{
    const State::Lock lock(state_->mutex);
    const ClientId id = ++state_->lastClient;
    state_->sinks[id] = std::make_shared<EventSink>(std::move(sink));
    state_->control.addClient(id);
    return id;
}

void SimulatedService::disconnect(ClientId client)
{
    State::Lock lock(state_->mutex);
    state_->sinks.erase(client);
    state_->control.removeClient(client);
    if (state_->deliverer != std::this_thread::get_id())
        state_->delivered.wait(lock, [&] { return state_->receiver != client; });
}

bool SimulatedService::connected(ClientId client) const
{
    const State::Lock lock(state_->mutex);
    return state_->control.findClient(client) != nullptr;
}

SimulatedService::Reply SimulatedService::exchange(ClientId client, const std::string& text,
                                                   std::string& answer)
{
    return state_->ask(client, text, answer, nullptr);
}

SimulatedService::Reply SimulatedService::exchangeSubscription(ClientId client,
                                                               const std::string& text,
                                                               std::string& answer,
                                                               const std::string& channelName)
{
    return state_->ask(client, text, answer, &channelName);
}

std::string SimulatedService::request(ClientId client, const std::string& text)
{
    std::string answer;
    exchange(client, text, answer);
    return answer;
}

std::string SimulatedService::subscribe(ClientId client, const std::string& text,
                                        const std::string& channelName)
{
    std::string answer;
    exchangeSubscription(client, text, answer, channelName);
    return answer;
}

void SimulatedService::post(ClientId client, const std::string& text)
{
    std::string nobodyAwaitsIt;
    exchange(client, text, nobodyAwaitsIt);
}

std::string SimulatedService::control(const std::string& command)
{
    State::Lock lock(state_->mutex);
    const std::string answer = state_->control.run(state_->simulation, command);
    if (state_->control.wentAway())
        state_->sinks.clear();
    state_->deliver(lock);
    return answer;
}

void SimulatedService::advance(std::chrono::milliseconds time)
{
    State::Lock lock(state_->mutex);
    state_->simulation.advance(time);
    state_->deliver(lock);
}

}  // namespace kit

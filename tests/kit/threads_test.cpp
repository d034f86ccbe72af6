// What several threads may do at once, and who waits there. That a lock is missing is seen by
// ThreadSanitizer.
#include "FakeConnection.h"
#include "framework/Logging.h"
#include "kit/framework/FrameStream.h"
#include "kit/framework/Framework.h"
#include "kit/framework/Log.h"
#include "kit/framework/Sinks.h"
#include "kit/framework/SocketConnection.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/Replay.h"
#include "kit/service/SimulatedService.h"
#include "kit/service/SocketServer.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/FaultConnection.h"
#include "kit/testing/LadderOnFailure.h"
#include "kit/testing/RecordingChannel.h"
#include "tests/support/Folder.h"

#include <future>
#include <sstream>
#include <unistd.h>

namespace kit
{

namespace
{

using namespace std::chrono_literals;
using Action = std::function<void()>;

const std::string hold = "<Method>HoldCall</Method>";

/// Each of the actions together with each, more than once.
void expectAtOnce(const std::vector<Action>& actions)
{
    const auto often = [](const Action& action)
    {
        for (int i = 0; i < 20; ++i)
            action();
    };
    for (const Action& one : actions)
        for (const Action& other : actions)
        {
            const std::future<void> meanwhile = std::async(std::launch::async, often, one);
            often(other);
        }
}

/// Asks a service as one of its clients.
Action asking(Service& service)
{
    return [&service, client = service.connect(nullptr)]
    {
        std::string answer;
        service.exchange(client, Sending::oneWay, "A", "", answer);
    };
}

/// Both ends of a connection; until the far one reads, more waits than it takes.
struct Streams
{
    Streams()
    {
        FrameStream::Socket one(io);
        FrameStream::Socket other(io);
        asio::local::connect_pair(one, other);
        near = std::make_shared<FrameStream>(std::move(one));
        far = std::make_shared<FrameStream>(std::move(other));
        near->start(ear);
        for (int i = 0; i < 20; ++i)
            near->send(large);
        thread = std::thread([this] { io.run(); });
    }

    ~Streams()
    {
        io.stop();
        thread.join();
    }

    const FrameStream::Ear ear{[](Frame&) {}, nullptr, nullptr, [](const std::string&) {}};
    const Frame large{Frame::post, 1, "", std::string(100000, 'x')};
    asio::io_context io;
    std::shared_ptr<FrameStream> near, far;
    const Action read = [this] { asio::post(io, [this] { far->start(ear); }); };
    const Action end = [this] { asio::post(io, [this] { near->end(""); }); };
    const Action finish = [this]
    {
        asio::post(io,
                   [this]
                   {
                       near->finish(large, "");
                       EXPECT_EQ(near->send(large), FrameStream::Sent::over);
                   });
    };
    std::thread thread;
};

TEST(Threads, DoAnythingAtOnce)
{
    test::FakeService fake;
    EventRecorder events;
    events.onCallHeldEvent("1001", 7);
    const ReceivedEvent held = events.events().front();
    Framework framework(std::make_unique<test::FakeConnection>(fake));
    framework.service().subscribe(&events);
    const Connection::EventSink arrive = fake.sink;
    const Connection::GoneSink go = fake.goneSink;
    SharedSink<std::string> sink;
    GoneNotice gone;
    FaultConnection faults(std::make_unique<test::FakeConnection>(fake));
    SimulatedService service;
    std::stringstream trace;
    for (int i = 1; i < 1000; ++i)
        trace << "{\"time\":0,\"kind\":\"request\",\"sending\":\"oneWay\",\"text\":\"A\"}\n";
    Replay replay(trace, "t");
    RecordingChannel channel;
    const Framework::Observer observer = LadderOnFailure::observer();
    const auto passes = [&](Passage::What what) {
        return [&, what] { observer({what, Sending::request, 1, "", hold}); };
    };
    LadderOnFailure ladder;
    Streams streams;
    streams.read();
    const auto unheard = [](const auto&) {};
    // clang-format off
    const std::vector<Action> rows[] = {
        {[&] { arrive(fake.channel, hold); }, go, [&] { (void)framework.connection(); },
         [&] { framework.channelOf(events); }, [&] { framework.remove(events); }, [&] { framework.settle(0ms); },
         [&] { framework.service().answerCall("1001", 1); },
         [&] { framework.reconnect(std::make_unique<EmbeddedConnection>()); },
         [] { Framework(std::make_unique<EmbeddedConnection>()); }},
        {[&] { setLogSink(unheard); }, [] { loggingOnAppOxa("", 1); }, [] { log(1, "told"); }},
        {[&] { sink.set(unheard); }, [&] { sink.tell(hold); }},
        {[&] { gone.set([] {}); }, [&] { gone.tell(); }, [&] { (void)gone.given(); }},
        {[&] { faults.inject(Fault::empty, ""); }, [&] { faults.clear(); }, [&] { (void)faults.happened(); },
         [&] { faults.post(hold); }},
        {asking(service), [&] { service.setLog(unheard); }, [&] { service.disconnect(service.connect(nullptr)); },
         [&] { service.control("show calls"); }, [&] { service.advance(1ms); }},
        {asking(replay), [&] { (void)replay.difference(); }, [&] { replay.setLog(unheard); },
         [&] { replay.disconnect(replay.connect(nullptr)); }, [&] { replay.disconnect(0); },
         [&] { replay.followAnswer(); }, [&] { replay.control("advance 1ms"); }, [&] { replay.advance(1ms); }},
        {[&] { events.onEvent(held); }, [&] { events.waitFor("CallHeldEvent", {}, 0ms); },
         [&] { (void)events.events(); }, [&] { events.forget(); }},
        {[&] { channel.service().answerCall("1001", 7); }, [&] { (void)channel.requests(); },
         [&] { channel.forget(); }, [&] { channel.answerOnce("AnswerCall", hold); },
         [&] { channel.answer("AnswerCall", hold); }, [&] { channel.answerAll(hold); }},
        {passes(Passage::What::request), passes(Passage::What::answer), passes(Passage::What::arrival),
         [&] { ladder.OnTestStart(*testing::UnitTest::GetInstance()->current_test_info()); }},
        {[&] { streams.near->send(streams.large); }, [&] { streams.near->takeBack(1); },
         [&] { (void)streams.near->held(); }, [&] { (void)streams.far->held(); }},
    };
    // clang-format on
    for (const std::vector<Action>& row : rows)
        expectAtOnce(row);
    setLogSink({});
    // And what happens once.
    for (const auto end : {&Streams::end, &Streams::finish})
    {
        Streams ending;
        const auto send = [&]
        {
            while (ending.near->send({Frame::post, 2, "", ""}) != FrameStream::Sent::over)
                std::this_thread::yield();
        };
        const std::future<void> sending = std::async(std::launch::async, send);
        sending.wait_for(5ms);
        (ending.*end)();
    }
}

TEST(Threads, AreWokenBeforeTheirTimeIsOver)
{
    constexpr auto time = 20s;
    alarm(60);  // some would wait for ever
    std::string answer;
    test::FakeService fake;
    EventRecorder events;
    Framework::Options options;
    options.events = Framework::Events::onPump;
    Framework framework(std::make_unique<test::FakeConnection>(fake), options);
    framework.service().subscribe(&events);
    FaultConnection faults(std::make_unique<test::FakeConnection>(fake));
    faults.inject(Fault::noAnswer, "");
    Streams sent;
    Streams ended;
    SimulatedService service;
    std::promise<void> reached;
    const auto client = service.connect(
        [&](const auto&, const auto&)
        {
            reached.set_value();
            std::this_thread::sleep_for(50ms);
        });
    service.exchange(client, Sending::subscribe, "<Method>Subscribe</Method>", "c", answer);
    const Folder folder;
    SocketServer server(service, folder / "socket");
    std::thread thread([&] { server.run(); });
    SocketConnection connection(folder / "socket");
    std::vector<std::future<void>> others;
    // clang-format off
    const auto meanwhile = [&](const Action& action) { others.push_back(std::async(std::launch::async, action)); };
    const auto nothing = [] {};
    const auto pump = [&] { framework.pump(time); };
    const auto settle = [&] { framework.settle(time); };
    const auto arrive = [&] { fake.sendHeld(1); };
    const auto go = [&] { fake.goneSink(); };
    const auto reconnect = [&] { framework.reconnect(std::make_unique<test::FakeConnection>(fake)); };
    const auto ask = [&] { connection.request("<Method>Activate</Method>", answer, time); };
    const auto tell = [&] { meanwhile([&] { service.control("system NORMAL"); }); reached.get_future().wait(); };
    const auto look = [&] { while (connection.whyGone().empty()) std::this_thread::yield(); };
    const std::tuple<const char*, Action, Action, Action> rows[] = {
        {"an event", nothing, pump, arrive},
        {"the service that goes", nothing, pump, go},
        {"the end of a callback", arrive, settle, pump},
        {"an event for nobody", [&] { framework.inject("?", hold); }, settle, pump},
        {"that the service has gone", go, settle, pump},
        {"another connection", arrive, settle, reconnect},
        {"the end of the framework", nothing, [] { const Framework brief(std::make_unique<EmbeddedConnection>());
                                                   std::this_thread::sleep_for(10ms); }, nothing},
        {"what is awaited", nothing, [&] { events.waitFor("DevicesChangedEvent", {}, time); },
         [&] { events.onDevicesChangedEvent(); }},
        {"faults that are cleared", nothing,
         [&] { EXPECT_EQ(faults.request(hold, answer, time), Delivery::timedOut); }, [&] { faults.clear(); }},
        {"all that is sent", nothing, [&] { sent.near->waitUntilSent(time); }, sent.read},
        {"the end of a stream", nothing, [&] { ended.near->waitUntilSent(time); }, ended.end},
        {"a sink that returns", tell, [&] { service.disconnect(client); }, nothing},
        {"the answer", nothing, ask, nothing},
        {"the service that went", [&] { service.control("silence *"); meanwhile(look); }, ask,
         [&] { service.control("go away"); }},
    };
    // clang-format on
    for (const auto& [by, first, waits, wakes] : rows)
    {
        reconnect();
        first();
        const std::future<void> waiting = std::async(std::launch::async, waits);
        waiting.wait_for(20ms);  // mostly it waits by then
        wakes();
        EXPECT_EQ(waiting.wait_for(time / 2), std::future_status::ready) << by;
    }
    server.stop();
    thread.join();
    alarm(0);
}

}  // namespace

}  // namespace kit

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

#include <atomic>
#include <future>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace kit
{

namespace
{

using namespace std::chrono_literals;
using Action = std::function<void()>;

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

constexpr auto tooLong = 20s;

/// Who waits is woken, and not by the end of its time.
void expectWoken(const char* why, const Action& waits, const Action& wakes)
{
    const std::future<void> waiting = std::async(std::launch::async, waits);
    waiting.wait_for(20ms);  // mostly it waits by then
    wakes();
    EXPECT_EQ(waiting.wait_for(tooLong / 2), std::future_status::ready) << why;
}

const std::string hold = "<Method>HoldCall</Method>";

TEST(Threads, UseTheFrameworkAtOnce)
{
    test::FakeService service;
    EventRecorder events;
    Framework framework(std::make_unique<test::FakeConnection>(service));
    framework.service().subscribe(&events);
    const Connection::EventSink sink = service.sink;
    const Connection::GoneSink gone = service.goneSink;
    expectAtOnce({[&] { sink(service.channel, hold); }, gone, [&] { (void)framework.connection(); },
                  [&] { framework.channelOf(events); }, [&] { framework.remove(events); },
                  [&] { framework.service().answerCall("1001", 1); },
                  [&] { framework.settle(0ms); },
                  [&] { framework.reconnect(std::make_unique<EmbeddedConnection>()); },
                  [] { Framework(std::make_unique<EmbeddedConnection>()); }});
}

TEST(Threads, LogAtOnce)
{
    expectAtOnce({[] { setLogSink([](const LogLine&) {}); }, [] { loggingOnAppOxa("", 1); },
                  [] { log(1, "told"); }});
    setLogSink({});
}

TEST(Threads, UseConnectionsAtOnce)
{
    SharedSink<std::string> sink;
    expectAtOnce({[&] { sink.set([](const std::string&) {}); }, [&] { sink.tell(hold); }});
    GoneNotice gone;
    expectAtOnce({[&] { gone.set([] {}); }, [&] { gone.tell(); }, [&] { (void)gone.given(); }});

    test::FakeService fake;
    FaultConnection faults(std::make_unique<test::FakeConnection>(fake));
    expectAtOnce({[&] { faults.inject(Fault::empty, ""); }, [&] { faults.clear(); },
                  [&] { (void)faults.happened(); }, [&] { faults.post(hold); }});

    SimulatedService service;
    const auto client = service.connect(nullptr);
    const auto exchange = [&]
    {
        std::string answer;
        service.exchange(client, Sending::request, hold, "", answer);
    };
    expectAtOnce({exchange, [&] { service.setLog([](const std::string&) {}); },
                  [&] { service.disconnect(service.connect(nullptr)); },
                  [&] { service.control("show calls"); }, [&] { service.advance(1ms); }});
}

TEST(Threads, ReplayAtOnce)
{
    std::stringstream trace;
    for (int i = 1; i < 1000; ++i)
        trace << R"({"time":0,"kind":"request","sending":"oneWay","text":"A"})"
              << "\n";
    Replay replay(trace, "t");
    const auto client = replay.connect(nullptr);
    const auto exchange = [&]
    {
        std::string answer;
        replay.exchange(client, Sending::oneWay, "A", "", answer);
    };
    expectAtOnce({exchange, [&] { (void)replay.difference(); },
                  [&] { replay.setLog([](const std::string&) {}); },
                  [&] { replay.connect(nullptr); }, [&] { replay.disconnect(client + 1); },
                  [&] { replay.followAnswer(); }, [&] { replay.control("advance 1ms"); },
                  [&] { replay.advance(1ms); }});
}

TEST(Threads, RecordAtOnce)
{
    EventRecorder events;
    events.onCallHeldEvent("1001", 7);
    const ReceivedEvent held = events.events().front();
    expectAtOnce({[&] { events.onEvent(held); }, [&] { events.waitFor("CallHeldEvent", {}, 0ms); },
                  [&] { (void)events.events(); }, [&] { events.forget(); }});

    RecordingChannel channel;
    expectAtOnce({[&] { channel.service().answerCall("1001", 7); },
                  [&] { (void)channel.requests(); }, [&] { channel.forget(); },
                  [&] { channel.answerOnce("AnswerCall", hold); },
                  [&] { channel.answer("AnswerCall", hold); }, [&] { channel.answerAll(hold); }});

    const Framework::Observer observer = LadderOnFailure::observer();
    const auto passage = [&](Passage::What what) {
        return [&, what] { observer({what, Sending::request, 1, "", hold}); };
    };
    LadderOnFailure ladder;
    expectAtOnce({passage(Passage::What::request), passage(Passage::What::answer),
                  passage(Passage::What::arrival), [&] {
                      ladder.OnTestStart(*testing::UnitTest::GetInstance()->current_test_info());
                  }});
}

/// Both ends of a connection, of which the far one reads when it is told to; until then more waits
/// than it takes.
struct Streams
{
    Streams()
    {
        FrameStream::Socket one(io);
        FrameStream::Socket other(io);
        asio::local::connect_pair(one, other);
        near = std::make_shared<FrameStream>(std::move(one));
        far = std::make_shared<FrameStream>(std::move(other));
        start(*near);
        for (int i = 0; i < 20; ++i)
            near->send(large);
        thread = std::thread([this] { io.run(); });
    }

    ~Streams()
    {
        io.stop();
        thread.join();
    }

    static void start(FrameStream& stream)
    {
        stream.start({[](Frame&) {}, nullptr, nullptr, [](const std::string&) {}});
    }

    const Frame large{Frame::post, 1, "", std::string(100000, 'x')};
    asio::io_context io;
    std::shared_ptr<FrameStream> near, far;
    const Action read = [this] { asio::post(io, [this] { start(*far); }); };
    const Action end = [this] { asio::post(io, [this] { near->end(""); }); };
    const Action finish = [this] { asio::post(io, [this] { near->finish(large, ""); }); };
    std::thread thread;
};

TEST(Threads, SendFramesAtOnce)
{
    Streams streams;
    streams.read();
    expectAtOnce({[&] { streams.near->send(streams.large); }, [&] { streams.near->takeBack(1); },
                  [&] { (void)streams.near->held(); }, [&] { (void)streams.far->held(); }});
    for (const auto end : {&Streams::end, &Streams::finish})
    {
        Streams ending;
        std::atomic<int> sent{0};
        const std::future<void> sending = std::async(
            std::launch::async,
            [&]
            {
                while (ending.near->send({Frame::post, 2, "", ""}) != FrameStream::Sent::over)
                    sent.fetch_add(1, std::memory_order_relaxed);
            });
        while (sent.load(std::memory_order_relaxed) == 0)
            std::this_thread::yield();
        (ending.*end)();
    }
}

class WokenTest : public testing::Test
{
protected:
    // Some would wait for ever.
    WokenTest() { alarm(60); }
    ~WokenTest() override { alarm(0); }
};

TEST_F(WokenTest, InTheFramework)
{
    test::FakeService service;
    EventRecorder events;
    Framework::Options options;
    const auto made = [&](Framework::Events where)
    {
        options.events = where;
        return std::make_unique<Framework>(std::make_unique<test::FakeConnection>(service),
                                           options);
    };
    expectWoken(
        "its thread, by its end",
        [&]
        {
            const auto ending = made(Framework::Events::onOwnThread);
            std::this_thread::sleep_for(10ms);  // mostly it waits by then
        },
        [] {});
    const auto framework = made(Framework::Events::onPump);
    framework->service().subscribe(&events);
    const auto pump = [&] { framework->pump(tooLong); };
    const auto arrive = [&] { service.sendHeld(1); };
    const auto gone = [&] { service.goneSink(); };
    expectWoken("by an event", pump, arrive);
    expectWoken("by the service that goes", pump, gone);
    const auto reconnect = [&]
    { framework->reconnect(std::make_unique<test::FakeConnection>(service)); };
    const auto nobodys = [&] { framework->inject("nobody", hold); };
    const std::tuple<const char*, Action, Action> rows[] = {
        {"by the end of a callback", arrive, pump},
        {"by an event for nobody", nobodys, pump},
        {"by a service that has gone", gone, pump},
        {"by another connection", arrive, reconnect},
    };
    reconnect();
    for (const auto& [why, arrives, ends] : rows)
    {
        arrives();
        EXPECT_FALSE(framework->settle(0ms));
        expectWoken(
            why, [&] { framework->settle(tooLong); }, ends);
    }
}

TEST_F(WokenTest, InConnections)
{
    std::string ignored;
    test::FakeService fake;
    FaultConnection faults(std::make_unique<test::FakeConnection>(fake));
    faults.inject(Fault::noAnswer, "");
    expectWoken(
        "by faults that are cleared", [&] { faults.request(hold, ignored, tooLong); },
        [&]
        {
            while (faults.happened() == 0)
                std::this_thread::yield();
            faults.clear();
        });

    for (const auto& [why, wakes] : {std::pair("when all has been sent", &Streams::read),
                                     std::pair("by the end of the stream", &Streams::end)})
    {
        Streams streams;
        expectWoken(
            why, [&] { streams.near->waitUntilSent(tooLong); }, streams.*wakes);
    }
}

TEST_F(WokenTest, ByTheService)
{
    SimulatedService service;
    std::promise<void> reached;
    std::promise<void> opened;
    const auto client = service.connect(
        [&](const std::string&, const std::string&)
        {
            reached.set_value();
            opened.get_future().wait();
        });
    std::string answer;
    service.exchange(client, Sending::subscribe, "<Method>Subscribe</Method>", "c", answer);
    const std::future<void> delivering =
        std::async(std::launch::async, [&] { service.control("system NORMAL"); });
    reached.get_future().wait();
    expectWoken(
        "when its sink has returned", [&] { service.disconnect(client); },
        [&] { opened.set_value(); });

    const TextFile file("");
    SocketServer server(service, file.path + ".socket");
    std::thread thread([&] { server.run(); });
    {
        SocketConnection connection(file.path + ".socket");
        const auto ask = [&] { connection.request("<Method>Activate</Method>", answer, tooLong); };
        expectWoken("by the answer", ask, [] {});
        service.control("silence *");
        expectWoken("by the service that goes", ask, [&] { service.control("go away"); });
    }
    server.stop();
    thread.join();
}

TEST_F(WokenTest, ByAnEvent)
{
    EventRecorder events;
    expectWoken(
        "who waits for it", [&] { events.waitFor("CallHeldEvent", {}, tooLong); },
        [&] { events.onCallHeldEvent("1001", 7); });
}

}  // namespace

}  // namespace kit

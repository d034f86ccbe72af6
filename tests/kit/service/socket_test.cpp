// The socket: frames, several applications, silence, nonsense.

#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"
#include "kit/protocol/Frame.h"
#include "kit/service/SimulatedService.h"
#include "kit/service/SocketServer.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/ServiceProcess.h"
#include "tests/kit/Complaint.h"
#include "tests/kit/service/Asking.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

using namespace std::chrono_literals;
using kit::Delivery;
using kit::Frame;
using kit::test::activate;
using kit::test::ask;
using kit::test::complaintOf;
using kit::test::control;
using kit::test::subscribe;

// --- frames ---

TEST(Frame, BytesOnTheWire)
{
    const Frame frame{Frame::subscribe, 0x0102030405060708, "ch", std::string("t\0", 2)};
    const std::string bytes = kit::encodeFrame(frame);
    EXPECT_EQ(bytes, std::string("\0\0\0\4\0\0\0\2\1\2\3\4\5\6\7\10\0\0\0\2cht\0", 24));
}

TEST(Frame, AnyPiecesGiveTheSameFrames)
{
    std::string bytes;
    const std::vector<Frame> frames = {{Frame::request, 1, "", "one"},
                                       {Frame::event, 0, "channel", ""},
                                       {Frame::answer, 18446744073709551615U, "", "three"},
                                       {Frame::post, 0, "", ""}};
    std::vector<std::string> sent;
    for (const Frame& frame : frames)
    {
        sent.push_back(kit::encodeFrame(frame));
        bytes += sent.back();
    }
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece)
    {
        kit::FrameReader reader;
        std::vector<std::string> got;
        for (std::size_t at = 0; at < bytes.size(); at += piece)
        {
            reader.append(bytes.data() + at, std::min(piece, bytes.size() - at));
            Frame frame;
            while (reader.next(frame))
                got.push_back(kit::encodeFrame(frame));
        }
        ASSERT_EQ(got, sent) << piece;
    }
}

struct WrongFrame
{
    const char* name;
    std::string header;
    const char* complaint;
};

const std::string zeros(12, '\0');

const WrongFrame wrongFrames[] = {
    {"type0", std::string("\0\0\0\0\0\0\0\0", 8) + zeros, "a message of the unknown type 0"},
    {"type10", std::string("\0\0\0\0\0\0\0\12", 8) + zeros, "a message of the unknown type 10"},
    {"tooLarge", std::string("\1\0\0\1\0\0\0\1", 8) + zeros,
     "a message of 16777217 bytes, 16777216 are possible"},
    {"channelTooLong", std::string("\0\0\0\1\0\0\0\1\0\0\0\0\0\0\0\0\0\0\0\2", 20),
     "a channel name of 2 bytes in a message of 1"},
};

TEST(Frame, WrongHeadersAreNamed)
{
    for (const WrongFrame& wrong : wrongFrames)
    {
        kit::FrameReader reader;
        reader.append(wrong.header.data(), wrong.header.size());
        Frame frame;
        EXPECT_EQ(complaintOf<kit::FrameError>([&] { reader.next(frame); }), wrong.complaint)
            << wrong.name;
    }
    EXPECT_THROW(
        kit::encodeFrame({Frame::post, 0, "", std::string(kit::maximumFrameContents + 1, 'x')}),
        kit::FrameError);
}

// --- a server in this process ---

class SocketService : public testing::Test
{
protected:
    explicit SocketService(std::size_t mostHeld = 256 * 1024 * 1024)
        : path(testing::TempDir() + "kit-socket-" + std::to_string(getpid())),
          server(service, path, options(mostHeld)),
          thread([this] { server.run(); })
    {
    }

    ~SocketService() override
    {
        server.stop();
        thread.join();
    }

    kit::SocketServer::Options options(std::size_t mostHeld)
    {
        kit::SocketServer::Options chosen;
        chosen.mostHeld = mostHeld;
        chosen.log = [this](const std::string& line)
        {
            const std::lock_guard<std::mutex> lock(mutex);
            log.push_back(line);
            logged.notify_all();
        };
        return chosen;
    }

    std::string firstLog()
    {
        std::unique_lock<std::mutex> lock(mutex);
        logged.wait_for(lock, 10s, [this] { return !log.empty(); });
        return log.empty() ? "" : log.front();
    }

    /// A socket without the manners of a connection.
    int rawSocket() const
    {
        const int raw = kit::test::connectTo(path);
        EXPECT_GE(raw, 0);
        return raw;
    }

    static void write(int raw, const std::string& bytes)
    {
        EXPECT_EQ(::write(raw, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    /// What the last frame before the end says; "" when that is no farewell.
    static std::string farewell(int raw)
    {
        kit::FrameReader reader;
        Frame frame;
        std::string last;
        char bytes[4096];
        for (ssize_t size = 0; (size = read(raw, bytes, sizeof bytes)) > 0;)
        {
            reader.append(bytes, static_cast<std::size_t>(size));
            while (reader.next(frame))
                last = frame.type == Frame::farewell ? frame.text : "";
        }
        return last;
    }

    std::mutex mutex;
    std::condition_variable logged;
    std::vector<std::string> log;
    const std::string path;
    kit::SimulatedService service;
    kit::SocketServer server;
    std::thread thread;
};

TEST_F(SocketService, SeveralApplicationsSeeTheSamePhone)
{
    kit::EventRecorder first;
    kit::EventRecorder second;
    kit::EventRecorder secondToo;
    kit::Framework one(std::make_unique<kit::SocketConnection>(path));
    kit::Framework two(std::make_unique<kit::SocketConnection>(path));
    ASSERT_EQ(one.service().subscribe(&first), sfiSuccess);
    ASSERT_EQ(two.service().subscribe(&second), sfiSuccess);
    ASSERT_EQ(two.service().subscribe(&secondToo), sfiSuccess);
    ASSERT_EQ(one.service().activate(), sfiSuccess);
    service.control("call 1002 from 4711");
    for (kit::EventRecorder* const events : {&first, &second, &secondToo})
    {
        const auto call = events->waitFor("IncomingCallEvent", {{"lineId", "1002"}});
        EXPECT_TRUE(call) << call.problem;
        EXPECT_EQ(events->count("RegistrationStateChangeEvent"), 3U);
    }
    EXPECT_EQ(two.service().answerCall("1002", 1), sfiSuccess);
    const auto answered = first.waitFor("CallStateChangeEvent", {{"callState", "connected"}});
    EXPECT_TRUE(answered) << answered.problem;
}

TEST_F(SocketService, AnswersFindTheirRequestsWhateverTheOrder)
{
    kit::SocketConnection connection(path);
    std::vector<std::future<std::string>> answers;
    for (int thread_ = 0; thread_ < 8; ++thread_)
        answers.push_back(std::async(std::launch::async,
                                     [&connection, thread_]
                                     {
                                         // A fault of its own for each: the answers differ, and are taken once.
                                         std::string wrong;
                                         for (int i = 0; i < 200; ++i)
                                         {
                                             const bool mute = (thread_ + i) % 2 == 0;
                                             const std::string answer =
                                                 ask(connection,
                                                     mute ? "<Method>GetMicrophoneMute</Method>"
                                                          : "<Method>GetServiceState</Method>");
                                             if (answer != (mute ? "false" : "sfiServiceInService"))
                                                 wrong += answer + " ";
                                         }
                                         return wrong;
                                     }));
    for (std::future<std::string>& answer : answers)
        EXPECT_EQ(answer.get(), "");
}

TEST_F(SocketService, SilenceEndsAtTheTimeOutAndLeavesTheAnswerAlone)
{
    kit::SocketConnection connection(path);
    EXPECT_TRUE(control(connection, "silence Activate").accepted);
    std::string answer = "untouched";
    EXPECT_EQ(connection.request(activate, answer, 20ms), Delivery::timedOut);
    EXPECT_EQ(answer, "untouched");
    EXPECT_EQ(ask(connection, activate), "sfiSuccess");
}

TEST_F(SocketService, GoingAwayWakesAllWhoWait)
{
    kit::SocketConnection connection(path);
    kit::SocketConnection other(path);
    const kit::ControlAnswer never = control(other, "silence * times 0");
    EXPECT_FALSE(never.accepted);
    EXPECT_EQ(never.text, "0 times is never");
    ASSERT_TRUE(control(other, "silence * times 3").accepted);
    std::vector<std::future<Delivery>> waiting;
    for (int i = 0; i < 3; ++i)
        waiting.push_back(std::async(std::launch::async,
                                     [&connection]
                                     {
                                         std::string nothing;
                                         return connection.request(activate, nothing, 1h);
                                     }));
    // All three have reached the service once the faults are used up.
    while (service.control("show faults").text != "no faults")
        std::this_thread::yield();
    EXPECT_EQ(control(other, "go away").text,
              "every client is dropped, connect and subscribe again");
    for (std::future<Delivery>& one : waiting)
        EXPECT_EQ(one.get(), Delivery::gone);
    EXPECT_EQ(ask(connection, activate), "(gone)");
    EXPECT_EQ(connection.post(activate), Delivery::gone);
    EXPECT_EQ(connection.whyGone(), "it was told to go away");

    kit::SocketConnection again(path);
    EXPECT_EQ(ask(again, activate), "sfiSuccess");
}

TEST_F(SocketService, WhatWasPostedArrivesThoughTheSenderLeaves)
{
    constexpr int count = 2000;
    const std::string post = "<Method>InitializeOrFinalizeServerFeatures</Method>"
                             "<Line>1001</Line><initialize>1</initialize>";
    kit::EventRecorder events;
    kit::Framework watching(std::make_unique<kit::SocketConnection>(path));
    ASSERT_EQ(watching.service().subscribe(&events), sfiSuccess);
    {
        // It is sent the events as well, and reads none once it has gone.
        kit::SocketConnection leaving(path);
        ASSERT_EQ(subscribe(leaving), "sfiSuccess");
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(leaving.post(post), Delivery::done);
    }
    service.control("system NORMAL info end");
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(events.waitFor("serverFeatureStatusEvent", {}, 10s)) << i;
}

TEST_F(SocketService, NonsenseEndsOneConnectionAndNoOther)
{
    kit::SocketConnection good(path);
    const int raw = rawSocket();
    write(raw, "GET / HTTP/1.1\r\nHost: phone\r\n\r\n");
    EXPECT_EQ(farewell(raw), "it was sent a message of the unknown type 790644820");
    close(raw);
    EXPECT_EQ(firstLog(),
              "client 2 sent a message of the unknown type 790644820, its connection is closed");
    // And half a message, from one who leaves.
    const int half = rawSocket();
    write(half, std::string(2, '\0'));
    close(half);
    EXPECT_EQ(ask(good, activate), "sfiSuccess");
}

TEST_F(SocketService, ComplaintsReachTheOneWhoAskedBeforeTheAnswer)
{
    kit::SocketConnection one(path);
    kit::SocketConnection other(path);
    std::vector<std::string> heard;
    std::vector<std::string> heardByOther;
    one.setComplaintSink([&](const std::string& complaint) { heard.push_back(complaint); });
    other.setComplaintSink([&](const std::string& complaint)
                           { heardByOther.push_back(complaint); });
    EXPECT_EQ(ask(one, "<Method>AnswerCall</Method><Line>1009</Line><CallID>1</CallID>"),
              "sfiFailure");
    EXPECT_EQ(heard,
              (std::vector<std::string>{"AnswerCall: no line \"1009\", did you mean 1001?"}));
    EXPECT_EQ(ask(other, activate), "sfiSuccess");
    EXPECT_TRUE(heardByOther.empty());
}

TEST_F(SocketService, ApplicationsAreToldWhyTheyAreLeft)
{
    std::promise<void> gone;
    kit::SocketConnection connection(path);
    connection.setGoneSink([&] { gone.set_value(); });
    EXPECT_EQ(ask(connection, activate), "sfiSuccess");
    EXPECT_EQ(connection.whyGone(), "");
    service.control("go away");
    EXPECT_EQ(gone.get_future().wait_for(10s), std::future_status::ready);
    EXPECT_EQ(connection.whyGone(), "it was told to go away");
}

TEST_F(SocketService, SubscriptionsOfOneClientAreCounted)
{
    std::string heard;
    kit::SocketConnection connection(path);
    connection.setComplaintSink([&](const std::string& complaint) { heard = complaint; });
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(subscribe(connection), "sfiSuccess") << i;
    EXPECT_EQ(subscribe(connection), "sfiFailure");
    EXPECT_EQ(heard, "Subscribe: client 1 has 1000 subscriptions already");
}

TEST_F(SocketService, OneWhoDoesNotReadIsLetGo)
{
    kit::SocketConnection good(path);
    const int raw = rawSocket();
    write(raw, kit::encodeFrame({Frame::subscribe, 1, "c", "<Method>Subscribe</Method>"}));
    char byte = 0;
    ASSERT_EQ(read(raw, &byte, 1), 1);
    const std::string large =
        "<Method>SendCSTARequest</Method><Line>1001</Line>" + std::string(8 * 1024 * 1024, 'x');
    for (int i = 0; i < 12; ++i)
        ASSERT_EQ(ask(good, large), "sfiSuccess");
    EXPECT_EQ(firstLog(), "client 2 does not read what is sent to it, its connection is closed");
    close(raw);
}

class CrowdedService : public SocketService
{
protected:
    CrowdedService() : SocketService(1024 * 1024) {}
};

/// Half a message, and what waits for others, count together; the one that has most of it goes.
TEST_F(CrowdedService, TheHeaviestClientGoes)
{
    kit::SocketConnection good(path);
    const int heavy = rawSocket();
    const int light = rawSocket();
    const auto half = [](int raw, std::size_t size)
    {
        std::string bytes = kit::encodeFrame({Frame::post, 0, "", std::string(2000000, 'x')});
        bytes.resize(size);
        // It may be closed before all of it has been sent.
        EXPECT_GT(send(raw, bytes.data(), size, MSG_NOSIGNAL), 0);
    };
    half(light, 200000);
    half(heavy, 1000000);
    EXPECT_EQ(firstLog().rfind("client 2 has ", 0), 0U) << firstLog();
    EXPECT_LT(firstLog().find(" KiB waiting, too much together with the others, its connection"),
              std::string("client 2 has 1000").size());
    char byte = 0;
    EXPECT_LE(read(heavy, &byte, 1), 0);
    half(light, 100);
    close(heavy);
    close(light);
    EXPECT_EQ(ask(good, activate), "sfiSuccess");
}

TEST_F(SocketService, ServiceThatSendsNonsenseIsLeft)
{
    // A listener that answers with something else altogether.
    const std::string elsewhere = path + "-false";
    unlink(elsewhere.c_str());
    const int listener = kit::test::bindTo(elsewhere);
    ASSERT_EQ(listen(listener, 1), 0);
    {
        kit::SocketConnection connection(elsewhere);
        const int accepted = accept(listener, nullptr, nullptr);
        write(accepted, kit::encodeFrame({Frame::request, 1, "", "misplaced"}));
        EXPECT_EQ(ask(connection, activate), "(gone)");
        EXPECT_EQ(connection.whyGone(), "it sent a message of the type 1, which is for services");
        close(accepted);
    }
    close(listener);
    unlink(elsewhere.c_str());
}

TEST(SocketConnection, SaysWhyThereIsNone)
{
    const auto complaint = [](const std::string& path)
    {
        return complaintOf<kit::ConnectionError>([&]
                                                 { const kit::SocketConnection connection(path); });
    };
    EXPECT_EQ(complaint(""), "the path of the service's socket is empty");
    EXPECT_EQ(complaint("/nowhere/s"), "no service at /nowhere/s: there is no such socket");
    const std::string longPath(108, 'a');
    EXPECT_EQ(complaint(longPath),
              "the path of the service's socket has 108 characters, 107 are possible: " + longPath);
    kit::ServiceProcess process;
    process.kill();
    EXPECT_EQ(complaint(process.socket()),
              "no service at " + process.socket() + ": nobody listens there any more");
}

}  // namespace

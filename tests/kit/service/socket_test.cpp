// The socket: frames, several applications, silence, nonsense, and the process's options.

#include "tests/kit/Complaint.h"

#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"
#include "kit/protocol/Frame.h"
#include "kit/service/SimulatedService.h"
#include "kit/service/SocketServer.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/ServiceProcess.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <fstream>
#include <future>
#include <gtest/gtest.h>
#include <mutex>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

using namespace std::chrono_literals;
using kit::Delivery;
using kit::Frame;
using kit::test::complaintOf;

const std::string activate = "<Method>Activate</Method>";

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
    for (const Frame& frame : frames)
        bytes += kit::encodeFrame(frame);
    for (std::size_t piece = 1; piece <= bytes.size(); ++piece)
    {
        kit::FrameReader reader;
        std::vector<Frame> got;
        for (std::size_t at = 0; at < bytes.size(); at += piece)
        {
            reader.append(bytes.data() + at, std::min(piece, bytes.size() - at));
            Frame frame;
            while (reader.next(frame))
                got.push_back(frame);
        }
        ASSERT_EQ(got.size(), frames.size()) << piece;
        for (std::size_t i = 0; i < frames.size(); ++i)
        {
            EXPECT_EQ(got[i].type, frames[i].type);
            EXPECT_EQ(got[i].id, frames[i].id);
            EXPECT_EQ(got[i].channel, frames[i].channel);
            EXPECT_EQ(got[i].text, frames[i].text);
        }
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
    SocketService()
        : path(testing::TempDir() + "kit-socket-" + std::to_string(getpid())),
          server(service, path, options()),
          thread([this] { server.run(); })
    {
    }

    ~SocketService() override
    {
        server.stop();
        thread.join();
    }

    kit::SocketServer::Options options()
    {
        kit::SocketServer::Options chosen;
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
    int rawSocket()
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const int raw = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(connect(raw, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        return raw;
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
        answers.push_back(std::async(
            std::launch::async,
            [&connection, thread_]
            {
                // A fault of its own for each: the answers differ, and are taken once.
                std::string wrong;
                for (int i = 0; i < 200; ++i)
                {
                    std::string answer;
                    const bool mute = (thread_ + i) % 2 == 0;
                    const std::string request = mute ? "<Method>GetMicrophoneMute</Method>"
                                                     : "<Method>GetServiceState</Method>";
                    const std::string expected = mute ? "false" : "sfiServiceInService";
                    if (connection.request(request, answer, 10s) != Delivery::done ||
                        answer != expected)
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
    kit::ControlAnswer said;
    ASSERT_EQ(connection.control("silence Activate", said, 10s), Delivery::done);
    EXPECT_TRUE(said.accepted);
    std::string answer = "untouched";
    EXPECT_EQ(connection.request(activate, answer, 20ms), Delivery::timedOut);
    EXPECT_EQ(answer, "untouched");
    EXPECT_EQ(connection.request(activate, answer, 10s), Delivery::done);
    EXPECT_EQ(answer, "sfiSuccess");
}

TEST_F(SocketService, GoingAwayWakesAllWhoWait)
{
    kit::SocketConnection connection(path);
    kit::SocketConnection other(path);
    kit::ControlAnswer said;
    ASSERT_EQ(other.control("silence * times 0", said, 10s), Delivery::done);
    EXPECT_FALSE(said.accepted);
    EXPECT_EQ(said.text, "0 times is never");
    ASSERT_EQ(other.control("silence * times 3", said, 10s), Delivery::done);
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
    EXPECT_EQ(other.control("go away", said, 10s), Delivery::done);
    EXPECT_EQ(said.text, "every client is dropped, connect and subscribe again");
    for (std::future<Delivery>& one : waiting)
        EXPECT_EQ(one.get(), Delivery::gone);
    std::string answer;
    EXPECT_EQ(connection.request(activate, answer, 1h), Delivery::gone);
    EXPECT_EQ(connection.post(activate), Delivery::gone);
    EXPECT_EQ(connection.whyGone(), "it was told to go away");

    kit::SocketConnection again(path);
    EXPECT_EQ(again.request(activate, answer, 10s), Delivery::done);
    EXPECT_EQ(answer, "sfiSuccess");
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
        std::string answer;
        ASSERT_EQ(leaving.subscribe("<Method>Subscribe</Method>", answer, "c", 10s),
                  Delivery::done);
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
    const std::string nonsense = "GET / HTTP/1.1\r\nHost: phone\r\n\r\n";
    ASSERT_EQ(write(raw, nonsense.data(), nonsense.size()), static_cast<ssize_t>(nonsense.size()));
    char byte = 0;
    EXPECT_EQ(read(raw, &byte, 1), 0);
    close(raw);
    EXPECT_EQ(firstLog(),
              "client 2 sent a message of the unknown type 790644820, its connection is closed");
    // And half a message, from one who leaves.
    const int half = rawSocket();
    ASSERT_EQ(write(half, "\0\0", 2), 2);
    close(half);
    std::string answer;
    EXPECT_EQ(good.request(activate, answer, 10s), Delivery::done);
    EXPECT_EQ(answer, "sfiSuccess");
}

TEST_F(SocketService, OneWhoDoesNotReadIsLetGo)
{
    kit::SocketConnection good(path);
    const int raw = rawSocket();
    const std::string subscribe =
        kit::encodeFrame({Frame::subscribe, 1, "c", "<Method>Subscribe</Method>"});
    ASSERT_EQ(write(raw, subscribe.data(), subscribe.size()),
              static_cast<ssize_t>(subscribe.size()));
    char byte = 0;
    ASSERT_EQ(read(raw, &byte, 1), 1);
    const std::string large =
        "<Method>SendCSTARequest</Method><Line>1001</Line>" + std::string(8 * 1024 * 1024, 'x');
    std::string answer;
    for (int i = 0; i < 12; ++i)
        ASSERT_EQ(good.request(large, answer, 60s), Delivery::done);
    EXPECT_EQ(firstLog(), "client 2 does not read what is sent to it, its connection is closed");
    close(raw);
}

TEST_F(SocketService, ServiceThatSendsNonsenseIsLeft)
{
    // A listener that answers with something else altogether.
    const std::string elsewhere = path + "-false";
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    elsewhere.copy(address.sun_path, sizeof address.sun_path - 1);
    unlink(elsewhere.c_str());
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    {
        kit::SocketConnection connection(elsewhere);
        const int accepted = accept(listener, nullptr, nullptr);
        const std::string request = kit::encodeFrame({Frame::request, 1, "", "misplaced"});
        ASSERT_EQ(write(accepted, request.data(), request.size()),
                  static_cast<ssize_t>(request.size()));
        std::string answer;
        EXPECT_EQ(connection.request(activate, answer, 1h), Delivery::gone);
        EXPECT_EQ(connection.whyGone(), "it sent a message of the type 1, which is for services");
        close(accepted);
    }
    close(listener);
    unlink(elsewhere.c_str());
}

TEST_F(SocketService, NoSecondServiceAtTheSamePlace)
{
    kit::SimulatedService another;
    EXPECT_EQ(complaintOf<kit::ListenError>([&] { const kit::SocketServer second(another, path); }),
              "cannot listen at " + path + ": another service listens there");
    std::string answer;
    EXPECT_EQ(kit::SocketConnection(path).request(activate, answer, 10s), Delivery::done);
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

// --- the process ---

struct Ended
{
    int status;
    std::string said;  ///< on both outputs
};

Ended runProcess(const std::string& options)
{
    FILE* const out = popen((std::string(SERVICE_PROGRAM) + " " + options + " 2>&1").c_str(), "r");
    Ended ended{-1, ""};
    char buffer[4096];
    while (fgets(buffer, sizeof buffer, out) != nullptr)
        ended.said += buffer;
    const int status = pclose(out);
    ended.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return ended;
}

TEST(ServiceProgram, WrongOptionsGetOneLineAndAStatus)
{
    const std::string longPath(130, 'a');
    const std::string file = testing::TempDir() + "kit-no-socket";
    std::ofstream(file) << "x";
    const struct
    {
        std::string options;
        int status;
        std::string said;
    } rows[] = {
        {"", 2, "--socket is required (--help tells more)"},
        {"--socket", 2, "--socket: 1 required PATH missing (--help tells more)"},
        {"--socket /tmp/x --realtme", 2,
         "The following argument was not expected: --realtme (--help tells more)"},
        {"--socket /tmp/x --realtime --speed 2", 2,
         "--realtime excludes --speed (--help tells more)"},
        {"--socket /tmp/x --lines 1,,1", 2, "--lines: \"1\" is no line, or there twice"},
        {"--socket /nowhere/x", 1, "cannot listen at /nowhere/x: there is no directory /nowhere"},
        {"--socket " + longPath, 1,
         "cannot listen at " + longPath + ": the path has 130 characters, 107 are possible"},
        {"--socket " + file, 1,
         "cannot listen at " + file + ": there is a file of that name, and it is no socket"},
        {"--socket /proc/x", 1, "cannot listen at /proc/x: "},
        {"--socket /tmp/x --log /nowhere/l", 1,
         "cannot write to /nowhere/l: No such file or directory"},
    };
    for (const auto& row : rows)
    {
        const Ended ended = runProcess(row.options);
        EXPECT_EQ(ended.status, row.status) << row.options;
        EXPECT_EQ(ended.said.rfind("communications-service-sim: " + row.said, 0), 0U)
            << row.options << ": " << ended.said;
        EXPECT_EQ(ended.said.find('\n'), ended.said.size() - 1) << ended.said;
    }
    std::remove(file.c_str());
    EXPECT_EQ(runProcess("--version").status, 0);
    EXPECT_EQ(runProcess("--help").status, 0);
}

TEST(ServiceProgram, ReplacesWhatADeadOneLeftAndCleansUpItself)
{
    const std::string path = testing::TempDir() + "kit-stale-" + std::to_string(getpid());
    {
        // What a process that was killed leaves behind.
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const int stale = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        ASSERT_EQ(bind(stale, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        close(stale);
    }
    // The shell ends it as soon as it has said that it is there.
    FILE* const out =
        popen(("sh -c 'echo $$ > " + path + ".pid; exec \"" SERVICE_PROGRAM "\" --socket " + path +
               "' | { read -r line; echo \"$line\"; kill -TERM $(cat " + path + ".pid); cat; }")
                  .c_str(),
              "r");
    char buffer[256] = "";
    ASSERT_NE(fgets(buffer, sizeof buffer, out), nullptr);
    EXPECT_EQ(std::string(buffer), "ready " + path + "\n");
    EXPECT_EQ(fgets(buffer, sizeof buffer, out), nullptr);
    pclose(out);
    struct stat entry = {};
    EXPECT_NE(stat(path.c_str(), &entry), 0) << "the socket is still there";
    std::remove((path + ".pid").c_str());
}

TEST(ServiceProgram, ClockThatRuns)
{
    kit::ServiceProcess process("", {"--speed", "1000"});
    kit::EventRecorder events;
    kit::Framework framework(std::make_unique<kit::SocketConnection>(process.socket()));
    ASSERT_EQ(framework.service().subscribe(&events), sfiSuccess);
    ASSERT_EQ(framework.service().activate(), sfiSuccess);
    ASSERT_EQ(framework.service().outgoingCallMake("1001", 1, "2001", false, false, false),
              sfiSuccess);
    const auto answered = events.waitFor("CallStateChangeEvent", {{"callState", "connected"}}, 20s);
    EXPECT_TRUE(answered) << answered.problem;
}

}  // namespace

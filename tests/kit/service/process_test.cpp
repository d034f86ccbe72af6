// The simulated service as a process: options, files, rights, descriptors, two on one path, and several
// applications at once.

#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/ServiceProcess.h"
#include "tests/kit/service/Asking.h"
#include "tests/support/Folder.h"
#include "tests/support/Program.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <set>
#include <spawn.h>
#include <sstream>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace
{

using namespace std::chrono_literals;
using kit::Delivery;
using kit::test::activate;
using kit::test::ask;
using kit::test::bindTo;
using kit::test::connectTo;
using kit::test::control;

const std::string doNotDisturb = "<Method>SetDoNotDisturb</Method><Line>1001</Line>"
                                 "<doNotDisturbOn>1</doNotDisturbOn>";

bool exists(const std::string& path)
{
    struct stat entry = {};
    return lstat(path.c_str(), &entry) == 0;
}

/// What a process that was killed leaves behind.
void leaveStale(const std::string& path)
{
    const int stale = bindTo(path);
    EXPECT_GE(stale, 0);
    close(stale);
}

/// True once it says that it is ready; false when it ends or says something else.
bool isReady(Program& program)
{
    return program.says("\n") && program.said().rfind("ready ", 0) == 0;
}

/// A program that listens.
struct Listening : Program
{
    explicit Listening(const std::string& path, std::vector<std::string> options = {},
                       const std::function<void()>& prepare = nullptr)
        : Program(SERVICE_PROGRAM, at(path, std::move(options)), prepare)
    {
        if (!isReady(*this))
            throw std::runtime_error(said());
    }

    static std::vector<std::string> at(const std::string& path, std::vector<std::string> options)
    {
        options.insert(options.begin(), {"--socket", path});
        return options;
    }
};

class ServiceProgram : public testing::Test
{
protected:
    const Folder folder;
    const std::string path = folder / "socket";
};

void limit(int resource, rlim_t value)
{
    struct rlimit limits = {};
    getrlimit(static_cast<__rlimit_resource>(resource), &limits);
    limits.rlim_cur = value;
    setrlimit(static_cast<__rlimit_resource>(resource), &limits);
}

TEST_F(ServiceProgram, WrongOptionsGetOneLineAndAStatus)
{
    const std::string longPath(130, 'a');
    const std::string file = folder / "no-socket";
    std::ofstream(file) << "x";
    const struct
    {
        std::string options;
        int status;
        std::string said;
    } rows[] = {
        {"", 2, "--socket is required (--help tells more)"},
        {"--socket", 2, "--socket: 1 required PATH missing (--help tells more)"},
        {"--socket " + path + " --realtme", 2,
         "The following argument was not expected: --realtme (--help tells more)"},
        {"--socket " + path + " --realtime --speed 2", 2,
         "--realtime excludes --speed (--help tells more)"},
        {"--socket " + path + " --lines 1,,1", 2, "--lines: \"1\" is no line, or there twice"},
        {"--socket " + path + " --mode 0668", 2, "--mode: \"0668\" is no mode, 0600 and 0660 are"},
        {"--socket " + path + " --mode 1777", 2, "--mode: \"1777\" is no mode"},
        {"--socket /nowhere/x", 1, "cannot listen at /nowhere/x: there is no directory /nowhere"},
        {"--socket " + longPath, 1,
         "cannot listen at " + longPath + ": the path has 130 characters, 107 are possible"},
        {"--socket " + file, 1,
         "cannot listen at " + file + ": there is a file of that name, and it is no socket"},
        {"--socket /proc/x", 1, "cannot listen at /proc/x: "},
        {"--socket " + path + " --robots " + file, 2,
         file + ":1:1: unknown word \"x\"; a line is: robot NUMBER [\"NAME\"] WHAT"},
        {"--socket " + path + " --robots " + file + " --replay " + file, 2,
         "--robots excludes --replay"},
        {"--socket " + path + " --log /nowhere/l", 1,
         "cannot write to /nowhere/l: No such file or directory"},
        {"--socket " + path + " --journal " + (folder / ""), 1,
         "cannot write to " + (folder / "") + ": Is a directory"},
    };
    for (const auto& row : rows)
    {
        std::istringstream words(row.options);
        Program program(SERVICE_PROGRAM, {std::istream_iterator<std::string>(words), {}});
        EXPECT_EQ(program.status(), row.status) << row.said;
        EXPECT_EQ(program.said().rfind("communications-service-sim: " + row.said, 0), 0U)
            << row.said << "\n"
            << program.said();
        EXPECT_EQ(program.said().find('\n'), program.said().size() - 1) << program.said();
        EXPECT_FALSE(exists(path));
    }
    EXPECT_EQ(Program(SERVICE_PROGRAM, {"--version"}).status(), 0);
    EXPECT_EQ(Program(SERVICE_PROGRAM, {"--help"}).status(), 0);
}

TEST_F(ServiceProgram, ReplacesWhatADeadOneLeftAndCleansUpItself)
{
    leaveStale(path);
    Listening program(path);
    EXPECT_EQ(program.said(), "ready " + path + "\n");
    kit::SocketConnection connection(path);
    EXPECT_EQ(program.endedBy(SIGTERM), 0);
    EXPECT_FALSE(exists(path));
    EXPECT_EQ(ask(connection, activate), "(gone)");
    EXPECT_EQ(connection.whyGone(), "it was ended");
}

/// The second comes while the first has bound the socket and does not listen yet; nobody can connect
/// before the socket has its rights.
TEST_F(ServiceProgram, OneOfTwoThatComeAtOnceListens)
{
    leaveStale(path);
    // When the file was made: its number may be used again.
    const auto made = [&]
    {
        struct stat entry = {};
        return stat(path.c_str(), &entry) == 0
                   ? std::make_pair(entry.st_ctim.tv_sec, entry.st_ctim.tv_nsec)
                   : std::make_pair(time_t(0), 0L);
    };
    const auto stale = made();
    const auto slow = []
    {
        umask(0);
        setenv("LD_PRELOAD", SLOW_LISTEN, 1);
        setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
    };
    Program first(SERVICE_PROGRAM, {"--socket", path}, slow);
    for (auto now = stale; now == stale || now.first == 0; now = made())
        std::this_thread::sleep_for(1ms);
    Program second(SERVICE_PROGRAM, {"--socket", path}, slow);
    int early = -1;
    for (int i = 0; early < 0 && i < 10000; ++i, std::this_thread::sleep_for(1ms))
        early = connectTo(path);
    struct stat entry = {};
    EXPECT_EQ(stat(path.c_str(), &entry), 0);
    EXPECT_EQ(entry.st_mode & 0777U, 0600U) << "it listens, and others may come in";
    close(early);
    EXPECT_TRUE(isReady(first)) << first.said();
    ASSERT_FALSE(isReady(second));
    EXPECT_EQ(second.status(), 1);
    EXPECT_EQ(second.said(), "communications-service-sim: cannot listen at " + path +
                                 ": another service listens there\n");
    const int raw = connectTo(path);
    EXPECT_GE(raw, 0) << "the one that is left cannot be reached";
    close(raw);
    EXPECT_EQ(first.endedBy(SIGTERM), 0);
}

TEST_F(ServiceProgram, TheSocketIsItsOwnersWhateverTheUmask)
{
    const struct
    {
        mode_t mask;
        std::vector<std::string> options;
        mode_t rights;
    } rows[] = {
        {0, {}, 0600},
        {022, {}, 0600},
        {0777, {}, 0600},
        {077, {"--mode", "0660"}, 0660},
        {0, {"--mode", "777"}, 0777},
    };
    for (const auto& row : rows)
    {
        const Listening program(path, row.options, [&] { umask(row.mask); });
        struct stat entry = {};
        ASSERT_EQ(stat(path.c_str(), &entry), 0);
        EXPECT_EQ(entry.st_mode & 0777U, row.rights);
    }
}

/// Subscribes, asks for A and gets an event of an hour later.
const char* const trace =
    R"({"time":0,"kind":"request","number":1,"sending":"subscribe","channel":"c","text":"S"}
{"time":0,"kind":"answer","number":1,"sending":"subscribe","delivery":"done","text":"sfiSuccess"}
{"time":0,"kind":"request","number":2,"sending":"request","text":"A"}
{"time":0,"kind":"answer","number":2,"sending":"request","delivery":"done","text":"yes"}
{"time":3600,"kind":"event","channel":"c","text":"E"}
)";

TEST_F(ServiceProgram, AReplayEndsWithWhetherAllWasAskedAsRecorded)
{
    std::ofstream(folder / "trace") << trace;
    const struct
    {
        std::vector<std::string> asked;
        int status;
    } rows[] = {{{}, 3}, {{"A"}, 0}, {{"B"}, 3}, {{"A", "A"}, 3}};
    for (const auto& row : rows)
    {
        Listening program(path, {"--replay", folder / "trace"});
        kit::SocketConnection connection(path);
        std::string answer;
        connection.subscribe("S", answer, "c", 10s);
        for (const std::string& text : row.asked)
            EXPECT_NE(ask(connection, text)[0], '(');
        EXPECT_EQ(program.endedBy(SIGTERM), row.status) << testing::PrintToString(row.asked);
    }
}

TEST_F(ServiceProgram, AReplayKeepsTheTimeThatItIsToldTo)
{
    std::ofstream(folder / "trace") << trace;
    const struct
    {
        std::vector<std::string> options;
        bool comesByItself;
    } rows[] = {{{}, true}, {{"--realtime"}, false}, {{"--speed", "1000000"}, true}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::PrintToString(row.options));
        std::vector<std::string> options = {"--replay", folder / "trace"};
        options.insert(options.end(), row.options.begin(), row.options.end());
        Listening program(path, options);
        std::atomic<bool> came{false};
        kit::SocketConnection connection(path);
        connection.setEventSink([&](const std::string&, const std::string&) { came = true; });
        std::string answer;
        connection.subscribe("S", answer, "c", 10s);
        ask(connection, "A");
        const kit::ControlAnswer said = control(connection, "replay");
        EXPECT_TRUE(said.accepted) << said.text;
        if (!row.comesByItself)
        {
            EXPECT_FALSE(came);
            control(connection, "advance 1h");
        }
        for (int i = 0; !came && i < 10000; ++i)
            std::this_thread::sleep_for(1ms);
        EXPECT_TRUE(came);
        EXPECT_EQ(program.endedBy(SIGTERM), 0);
    }
}

TEST_F(ServiceProgram, WhatTheJournalDoesNotTakeIsNotCarriedOut)
{
    Listening program(path, {"--journal", "/dev/full", "--log", folder / "log"});
    std::string heard;
    kit::SocketConnection connection(path);
    connection.setComplaintSink([&](const std::string& complaint) { heard = complaint; });
    EXPECT_EQ(ask(connection, doNotDisturb), "sfiFailure");
    EXPECT_EQ(heard, "the service's journal cannot be written");
    EXPECT_EQ(connection.post(activate), Delivery::done);
    EXPECT_EQ(kit::test::subscribe(connection), "sfiFailure");
    const std::string lines = control(connection, "show lines").text;
    EXPECT_EQ(lines.find("do not disturb"), std::string::npos) << lines;
    EXPECT_NE(lines.find("1001 not registered"), std::string::npos) << lines;
    EXPECT_EQ(contentsOf(folder / "log"),
              "the journal cannot be written: No space left on device; requests are refused until "
              "it can be\n");
    EXPECT_EQ(program.endedBy(SIGTERM), 1);
}

TEST_F(ServiceProgram, TheJournalHoldsWholeLinesAndWhatWasDone)
{
    const std::string journal = folder / "journal";
    Listening program(path, {"--journal", journal});
    const rlim_t room = 10 * (doNotDisturb.size() + 1) + 20;
    struct rlimit limits = {room, RLIM_INFINITY};
    ASSERT_EQ(prlimit(program.pid(), RLIMIT_FSIZE, &limits, nullptr), 0);
    kit::SocketConnection connection(path);
    int done = 0;
    for (int i = 0; i < 20; ++i)
    {
        const std::string answer = ask(connection, doNotDisturb);
        EXPECT_EQ(answer, i < 10 ? "sfiSuccess" : "sfiFailure") << i;
        done += answer == "sfiSuccess" ? 1 : 0;
    }
    limits.rlim_cur = RLIM_INFINITY;
    ASSERT_EQ(prlimit(program.pid(), RLIMIT_FSIZE, &limits, nullptr), 0);
    EXPECT_EQ(ask(connection, activate), "sfiSuccess");
    std::string expected;
    for (int i = 0; i < done; ++i)
        expected += doNotDisturb + "\n";
    EXPECT_EQ(contentsOf(journal), expected + activate + "\n");
    EXPECT_EQ(program.endedBy(SIGTERM), 1);
}

/// As a program: a forked child would lack the threads of its parent.
pid_t startApplication(std::string socket, std::string number)
{
    std::string program = APPLICATION_PROGRAM;
    char* const arguments[] = {program.data(), socket.data(), number.data(), nullptr};
    pid_t child = -1;
    EXPECT_EQ(posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ), 0);
    return child;
}

TEST_F(ServiceProgram, ServesSeveralApplicationsAtOnce)
{
    const std::string journal = folder / "journal";
    const Listening program(path, {"--journal", journal});
    std::vector<pid_t> children;
    for (const char* number : {"0", "1", "2"})
        children.push_back(startApplication(path, number));
    kit::SocketConnection watcher(path);
    std::string clients;
    const auto ready = [&]
    {
        const std::string wanted = "1 subscription, 201 requests";
        clients = control(watcher, "show clients").text;
        int count = 0;
        for (std::size_t at = clients.find(wanted); at != std::string::npos;
             at = clients.find(wanted, at + 1))
            ++count;
        return count == 3;
    };
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (!ready() && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    EXPECT_TRUE(control(watcher, "system NORMAL info all").accepted);
    for (const pid_t child : children)
    {
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << clients;
    }
    // Each request stands there once.
    const std::vector<std::string> lines = linesOf(journal);
    std::set<std::string> lamps;
    for (const std::string& line : lines)
    {
        const std::size_t at = line.find("<lampId>");
        EXPECT_TRUE(at == std::string::npos || lamps.insert(line.substr(at)).second) << line;
    }
    EXPECT_EQ(lamps.size(), 600U);
}

TEST_F(ServiceProgram, ALogThatCannotBeWrittenIsTold)
{
    Listening program(path, {"--log", "/dev/full"});
    kit::SocketConnection connection(path);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(ask(connection, "<Method>Nonsense</Method>"), "sfiFailure");
    EXPECT_EQ(program.endedBy(SIGTERM), 1);
    EXPECT_EQ(program.said(), "ready " + path +
                                  "\ncommunications-service-sim: cannot write to /dev/full: No "
                                  "space left on device\n");
}

TEST_F(ServiceProgram, WithoutDescriptorsItSaysSo)
{
    int refused = 0;
    int started = 0;
    for (rlim_t count = 5; count < 20; ++count)
    {
        Program program(SERVICE_PROGRAM, {"--socket", path}, [&] { limit(RLIMIT_NOFILE, count); });
        if (isReady(program))
        {
            ++started;
            EXPECT_EQ(program.endedBy(SIGTERM), 0) << count;
        }
        else
        {
            ++refused;
            EXPECT_EQ(program.status(), 1) << count << ": " << program.said();
            EXPECT_EQ(program.said(), "communications-service-sim: cannot listen at " + path +
                                          ": Too many open files\n");
        }
        EXPECT_FALSE(exists(path)) << count;
    }
    EXPECT_GT(refused, 0);
    EXPECT_GT(started, 0);
}

/// Those who come wait for those who leave, and the log has one line.
TEST_F(ServiceProgram, OutOfDescriptorsLaterIsToldOnce)
{
    const std::string log = folder / "log";
    Listening program(path, {"--log", log}, [] { limit(RLIMIT_NOFILE, 30); });
    std::vector<int> many;
    for (int i = 0; i < 40; ++i)
    {
        many.push_back(connectTo(path));
        ASSERT_GE(many.back(), 0);
    }
    while (contentsOf(log).empty())
        std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(200ms);
    for (const int raw : many)
        close(raw);
    kit::SocketConnection connection(path);
    EXPECT_EQ(ask(connection, activate), "sfiSuccess");
    EXPECT_EQ(contentsOf(log), "a connection could not be taken: Too many open files; it waits, "
                               "and others with it, until somebody leaves\n");
}

TEST_F(ServiceProgram, ClockThatRuns)
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

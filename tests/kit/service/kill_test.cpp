// The service dies, or hangs, in the middle of many requests.

#include "framework/MarloException.h"
#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/ServiceProcess.h"
#include "tests/kit/service/Asking.h"
#include "tests/support/Folder.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <mutex>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

using namespace std::chrono_literals;

constexpr int threadCount = 4;
constexpr int requestsPerThread = 2500;

struct Journal : TextFile
{
    /// How often each lamp, which stands for a request, was asked for.
    std::map<std::string, int> lamps() const
    {
        std::map<std::string, int> counts;
        for (const std::string& line : linesOf(path))
        {
            const std::size_t begin = line.find("<lampId>");
            if (begin != std::string::npos)
                ++counts[line.substr(begin + 8, line.find("</lampId>") - begin - 8)];
        }
        return counts;
    }
};

/// Asks from all threads at once, each request under a name of its own.
struct Callers
{
    std::map<std::string, int> results;
    std::chrono::steady_clock::duration longest{0};
    std::vector<std::thread> threads;
    std::mutex mutex;
    std::condition_variable progress;
    std::size_t failed = 0;

    void start(CommunicationsServiceIfc& service, int requests)
    {
        for (int thread = 0; thread < threadCount; ++thread)
            threads.emplace_back([this, &service, thread, requests]
                                 { ask(service, thread, requests); });
    }

    void ask(CommunicationsServiceIfc& service, int thread, int requests)
    {
        for (int i = 0; i < requests; ++i)
        {
            const std::string lamp = std::to_string(thread) + "-" + std::to_string(i);
            const auto begin = std::chrono::steady_clock::now();
            const int result = service.setLampMode("1001", lamp, 1);
            const std::lock_guard<std::mutex> lock(mutex);
            longest = std::max(longest, std::chrono::steady_clock::now() - begin);
            results[lamp] = result;
            failed += result == sfiSuccess ? 0 : 1;
            progress.notify_one();
        }
    }

    void waitFor(std::size_t count)
    {
        std::unique_lock<std::mutex> lock(mutex);
        progress.wait(lock, [&] { return results.size() >= count; });
    }

    /// Or until all requests are over.
    void waitForFailures(std::size_t count, std::size_t all)
    {
        std::unique_lock<std::mutex> lock(mutex);
        progress.wait(lock, [&] { return failed >= count || results.size() >= all; });
    }

    void join()
    {
        for (std::thread& thread : threads)
            thread.join();
    }
};

/// Every request has one outcome; what succeeded was done, and nothing was done twice.
void expectHonest(const Callers& callers, const Journal& journal, int requests, const char* what)
{
    const std::map<std::string, int>& results = callers.results;
    const std::map<std::string, int> done = journal.lamps();
    EXPECT_EQ(results.size(), static_cast<std::size_t>(requests));
    int succeeded = 0;
    for (const auto& [lamp, result] : results)
    {
        EXPECT_TRUE(result == sfiSuccess || result == sfiFailure) << lamp;
        succeeded += result == sfiSuccess ? 1 : 0;
        EXPECT_TRUE(result != sfiSuccess || done.count(lamp) == 1) << lamp;
    }
    int twice = 0;
    for (const auto& entry : done)
        twice += entry.second > 1 ? 1 : 0;
    EXPECT_EQ(twice, 0);
    EXPECT_GE(done.size(), static_cast<std::size_t>(succeeded));
    std::cout << what << ": " << results.size() << " requests, " << succeeded << " succeeded, "
              << done.size() << " reached the service, " << twice << " twice, longest call "
              << callers.longest / 1ms << " ms\n";
}

TEST(ServiceDies, KilledInTheMiddleOfTenThousandRequests)
{
    const Journal journal;
    kit::ServiceProcess process("", {"--journal", journal.path});
    kit::Framework::Options options;
    std::atomic<int> problems{0};
    options.problems = [&](const std::string&) { ++problems; };
    kit::EventRecorder events;
    kit::Framework framework(std::make_unique<kit::SocketConnection>(process.socket()), options);
    ASSERT_EQ(framework.service().subscribe(&events), sfiSuccess);

    Callers callers;
    callers.start(framework.service(), requestsPerThread);
    callers.waitFor(threadCount * requestsPerThread / 2);
    process.kill();
    callers.join();
    expectHonest(callers, journal, threadCount * requestsPerThread, "killed");
    EXPECT_GT(problems, 0);

    // Gone stays gone, and is said at once; then everything works again.
    EXPECT_THROW(framework.service().subscribe(&events), MarloException);
    process.restart();
    EXPECT_EQ(framework.service().activate(), sfiFailure);
    framework.reconnect(std::make_unique<kit::SocketConnection>(process.socket()));
    EXPECT_EQ(framework.service().subscribe(&events), sfiSuccess);
    EXPECT_EQ(framework.service().activate(), sfiSuccess);
    const auto registered = events.waitFor("RegistrationStateChangeEvent", {{"lineId", "1003"}});
    EXPECT_TRUE(registered) << registered.problem;
    Callers again;
    again.start(framework.service(), 10);
    again.join();
    for (const auto& [lamp, result] : again.results)
        EXPECT_EQ(result, sfiSuccess) << lamp;
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

TEST(ServiceProcesses, SeveralApplicationsAtOnce)
{
    const Journal journal;
    kit::ServiceProcess process("", {"--journal", journal.path});
    std::vector<pid_t> children;
    for (const char* number : {"0", "1", "2"})
        children.push_back(startApplication(process.socket(), number));
    kit::SocketConnection watcher(process.socket());
    std::string clients;
    const auto ready = [&]
    {
        const std::string wanted = "1 subscription, 201 requests";
        clients = kit::test::control(watcher, "show clients").text;
        int count = 0;
        for (std::size_t at = clients.find(wanted); at != std::string::npos;
             at = clients.find(wanted, at + 1))
            ++count;
        return count == 3;
    };
    const auto end = std::chrono::steady_clock::now() + 60s;
    while (!ready() && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    EXPECT_TRUE(kit::test::control(watcher, "system NORMAL info all").accepted);
    for (const pid_t child : children)
    {
        int status = -1;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(status, 0) << clients;
    }
    EXPECT_EQ(journal.lamps().size(), 600U);
}

TEST(ServiceDies, HangsAndComesBack)
{
    const Journal journal;
    kit::ServiceProcess process("", {"--journal", journal.path});
    kit::Framework::Options options;
    options.requestTimeout = 100ms;
    kit::Framework framework(std::make_unique<kit::SocketConnection>(process.socket()), options);
    ASSERT_EQ(framework.service().activate(), sfiSuccess);

    Callers callers;
    callers.start(framework.service(), requestsPerThread);
    callers.waitFor(20);
    process.freeze();
    callers.waitForFailures(2 * threadCount, threadCount * requestsPerThread);
    process.thaw();
    callers.join();
    expectHonest(callers, journal, threadCount * requestsPerThread, "hung");
    EXPECT_EQ(framework.service().setMicrophoneMute(true), sfiSuccess);
}

}  // namespace

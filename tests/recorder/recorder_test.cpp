// The recorder at work: what it writes, and what it does when it cannot.

#include "recorder/Recording.h"
#include "tests/support/Folder.h"
#include "tests/support/TracedFramework.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <map>
#include <regex>
#include <stdexcept>
#include <thread>

extern "C"
{
    CommunicationsServiceProxy* createCommunicationsServiceProxy();
    CommunicationsServiceEventInvoker* createCommunicationsServiceEventInvoker();
}

namespace
{

using namespace recorder;
using namespace std::chrono_literals;
using support::Lines;
using testing::ElementsAre;
using testing::HasSubstr;

/// The lines of a trace without their times, and without the head, which is looked at.
Lines recordsOf(const std::string& path)
{
    static const std::regex time("\"time\":[0-9]+\\.[0-9]{6},");
    Lines lines = linesOf(path);
    if (lines.empty() || lines[0].find("{\"trace\":2,\"start\":\"20") != 0)
        ADD_FAILURE() << path << " has no head";
    else
        lines.erase(lines.begin());
    for (std::string& line : lines)
    {
        EXPECT_TRUE(std::regex_search(line, time)) << line;
        line = std::regex_replace(line, time, "");
    }
    return lines;
}

/// What stands behind "name": in a line; 0 where it is missing.
unsigned long numberIn(const std::string& line, const std::string& name)
{
    const std::size_t at = line.find("\"" + name + "\":");
    return at == std::string::npos ? 0 : std::stoul(line.substr(at + name.size() + 3));
}

/// A proxy and an invoker that record.
struct Phone
{
    explicit Phone(const std::string& file, std::uint64_t size = 8U << 20)
        : recorder(std::make_shared<Recorder>(Settings{file, size, false}))
    {
        channel.context = &context;
        channel.answer = "sfiSuccess";
        proxy.initProxy(channel);
        support::takeTrace();
    }

    std::shared_ptr<Recorder> recorder;
    support::NamingContext context;
    support::Channel channel;
    support::Subscriber subscriber;
    RecordingProxy proxy{recorder};
    RecordingEventInvoker invoker{recorder};
};

const char* const held = "<Method>CallHeldEvent</Method><LineID>1</LineID><CallID>2</CallID>";

TEST(Recorder, WritesWhatCrosses)
{
    const Folder folder;
    Phone phone(folder / "t");
    phone.proxy.activate();
    phone.proxy.subscribe(&phone.subscriber);
    // A request from inside a callback stands behind its event.
    phone.subscriber.inCallback = [&] { phone.proxy.retrieveCall("1", 2); };
    phone.invoker.handleMessage(&phone.subscriber, held, 0, nullptr);
    phone.subscriber.inCallback = nullptr;
    std::thread([&] { phone.proxy.processSignallingComponentEvent("a\0b", 3); }).join();
    support::Subscriber stranger;
    phone.invoker.handleMessage(&stranger, "x", 0, nullptr);
    phone.recorder->stop();
    const std::string channel = phone.context.findChannel(&phone.subscriber);
    EXPECT_THAT(
        recordsOf(folder / "t"),
        ElementsAre(
            R"({"kind":"request","thread":1,"number":1,"sending":"timed","method":"Activate","text":"<Method>Activate</Method>"})",
            R"({"kind":"answer","thread":1,"number":1,"sending":"timed","delivery":"done","text":"sfiSuccess"})",
            R"({"kind":"request","thread":1,"number":2,"sending":"subscribe","channel":")" +
                channel + R"(","method":"Subscribe","text":"<Method>Subscribe</Method>"})",
            R"({"kind":"answer","thread":1,"number":2,"sending":"subscribe","delivery":"done","text":"sfiSuccess"})",
            R"({"kind":"event","thread":1,"channel":")" + channel +
                R"(","method":"CallHeldEvent","text":")" + held + R"("})",
            R"({"kind":"request","thread":1,"number":3,"sending":"request","method":"RetrieveCall","text":"<Method>RetrieveCall</Method><Line>1</Line><CallID>2</CallID>"})",
            R"({"kind":"answer","thread":1,"number":3,"sending":"request","delivery":"done","text":"sfiSuccess"})",
            R"({"kind":"request","thread":2,"number":4,"sending":"oneWay","text":"SigEvent:a\u0000b"})",
            R"({"kind":"event","thread":1,"text":"x"})"));
}

TEST(Recorder, WritesDownExceptions)
{
    const Folder folder;
    Phone phone(folder / "t");
    phone.channel.inRequest = [] { throw support::Exception(7); };
    EXPECT_THROW(phone.proxy.activate(), support::Exception);
    phone.channel.inRequest = [] { throw std::out_of_range("too far"); };
    EXPECT_THROW(phone.proxy.setIsInServiceInitiatedState("1", true), std::out_of_range);
    phone.channel.inRequest = [] { throw 5; };
    EXPECT_THROW(phone.proxy.alternateCalls("1"), int);
    phone.subscriber.inCallback = [] { throw std::runtime_error("no"); };
    EXPECT_THROW(phone.invoker.handleMessage(&phone.subscriber, held, 0, nullptr),
                 std::runtime_error);
    EXPECT_THROW(phone.invoker.handleMessage(&phone.subscriber, nullptr, 0, nullptr),
                 std::logic_error);
    phone.recorder->stop();
    Lines exceptions;
    for (const std::string& line : recordsOf(folder / "t"))
        if (line.find("\"exception\"") != std::string::npos)
            exceptions.push_back(line);
    EXPECT_THAT(
        exceptions,
        ElementsAre(
            R"({"kind":"exception","thread":1,"number":1,"text":"support::Exception"})",
            R"({"kind":"exception","thread":1,"number":2,"text":"std::out_of_range: too far"})",
            R"({"kind":"exception","thread":1,"number":3,"text":"int"})",
            R"({"kind":"exception","thread":1,"text":"std::runtime_error: no"})",
            R"({"kind":"exception","thread":1,"text":"std::logic_error: basic_string::_M_construct null not valid"})"));
}

TEST(Recorder, StaysWithinItsLimit)
{
    const Folder folder;
    Phone phone(folder / "t", 16384);
    for (int call = 1; call <= 400; ++call)
    {
        phone.proxy.answerCall("1001", call);
        // As often as not the file is full in the middle of a batch.
        if (call % 100 == 0)
            std::this_thread::sleep_for(300ms);
    }
    phone.recorder->stop();
    EXPECT_LE(std::filesystem::file_size(folder / "t"), 8192U);
    EXPECT_LE(std::filesystem::file_size(folder / "t.old"), 8192U);
    EXPECT_GE(std::filesystem::file_size(folder / "t.old"), 7500U);
    Lines lines = recordsOf(folder / "t.old");
    for (const std::string& line : recordsOf(folder / "t"))
        lines.push_back(line);
    // The end of all, without a gap: two lines for each call.
    EXPECT_EQ(numberIn(lines.back(), "number"), 400U);
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(numberIn(lines[i], "number"), 400 - (lines.size() - 1 - i) / 2);
}

TEST(Recorder, KeepsWhatWasThere)
{
    const Folder folder;
    std::ofstream(folder / "t") << "from before\n";
    Phone(folder / "t").proxy.activate();
    EXPECT_EQ(recordsOf(folder / "t").size(), 2U);
    EXPECT_THAT(linesOf(folder / "t.old"), ElementsAre("from before"));
}

TEST(Recorder, GivesEachProcessItsOwnFile)
{
    const Folder folder;
    {
        Phone first(folder / "t");
        Phone second(folder / "t");
        first.proxy.activate();
        second.proxy.activate();
        second.proxy.activate();
    }
    EXPECT_EQ(recordsOf(folder / "t").size(), 2U);
    EXPECT_EQ(recordsOf(folder / "t.2").size(), 4U);
    Phone(folder / "t").proxy.deactivate(true);
    EXPECT_THAT(recordsOf(folder / "t")[0], HasSubstr("Deactivate"));
    std::vector<std::unique_ptr<Phone>> nine;
    for (int i = 0; i < 9; ++i)
        nine.push_back(std::make_unique<Phone>(folder / "t"));
    EXPECT_THROW(Phone(folder / "t"), std::runtime_error);
}

/// Calls until the log has a line, which it returns.
std::string lineOfLog(Phone& phone, int& calls)
{
    support::loggingOn = 1;
    std::string found;
    for (int i = 0; i < 3000 && found.empty(); ++i, ++calls)
    {
        phone.proxy.activate();
        for (const std::string& line : support::takeTrace())
            if (line.find("logAppOxa") == 0)
                found = line;
        std::this_thread::sleep_for(10ms);
    }
    return found;
}

TEST(Recorder, GoesOnWhenTheDiskIsFull)
{
    Phone phone("/dev/full");
    int calls = 0;
    EXPECT_EQ(lineOfLog(phone, calls),
              "logAppOxa 'SIP Communications Service' './recorder/Recorder.cpp' 1 0 'recording: "
              "/dev/full cannot be written: No space left on device'");
    // Once, not each time.
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(phone.proxy.activate(), sfiSuccess);
        std::this_thread::sleep_for(150ms);
    }
    phone.recorder->stop();
    for (const std::string& line : support::takeTrace())
        EXPECT_EQ(line.find("logAppOxa"), std::string::npos) << line;
    support::loggingOn = 0;
}

TEST(Recorder, SaysWhatItCouldNotWrite)
{
    const Folder folder;
    Phone phone(folder / "t");
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit small = {3000, before.rlim_max};
    int calls = 0;
    setrlimit(RLIMIT_FSIZE, &small);
    const std::string log = lineOfLog(phone, calls);
    setrlimit(RLIMIT_FSIZE, &before);
    support::loggingOn = 0;
    EXPECT_THAT(log, HasSubstr((folder / "t") + " cannot be written: File too large'"));
    phone.proxy.activate();
    phone.recorder->stop();
    unsigned long written = 0;
    unsigned long dropped = 0;
    for (const std::string& line : recordsOf(folder / "t"))
    {
        EXPECT_EQ(line.back(), '}') << "no half lines";
        if (line.find("{\"kind\":\"dropped\"") == 0)
            dropped += numberIn(line, "count");
        else
            ++written;
    }
    EXPECT_GT(dropped, 0U);
    EXPECT_EQ(written + dropped, 2U * static_cast<unsigned long>(calls + 1));
}

TEST(Recorder, SaysWhatThereWasNoRoomFor)
{
    const Folder folder;
    Phone phone(folder / "t");
    phone.proxy.activate();
    phone.proxy.SendCSTARequest("1", std::string(300000, 'x'));
    phone.recorder->stop();
    const Lines lines = recordsOf(folder / "t");
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[2],
              R"({"kind":"dropped","count":1,"reason":"more at once than there is room for"})");
    EXPECT_THAT(lines[3], HasSubstr("\"kind\":\"answer\",\"thread\":1,\"number\":2"));
}

TEST(Recorder, TakesFromManyThreads)
{
    const Folder folder;
    constexpr unsigned long perThread = 3000;
    {
        Phone phone(folder / "t", 1U << 30);
        std::vector<std::thread> threads;
        std::atomic<int> ready{0};
        for (int number = 0; number < 8; ++number)
            threads.emplace_back(
                [&]
                {
                    // Not through the channel of the tests, which is for one thread.
                    const auto call = [&]
                    {
                        phone.recorder->answer(
                            Sending::request,
                            phone.recorder->request(Sending::request, "some text that takes room"),
                            "sfiSuccess");
                    };
                    call();
                    // All at once, and each with a handle of its own.
                    for (++ready; ready < 8;)
                        std::this_thread::yield();
                    for (unsigned long i = 1; i < perThread; ++i)
                        call();
                });
        for (std::thread& thread : threads)
            thread.join();
    }
    unsigned long dropped = 0;
    std::map<unsigned long, int> seen;
    std::map<unsigned long, unsigned long> lastOfThread;
    for (const std::string& line : recordsOf(folder / "t"))
    {
        if (line.find("{\"kind\":\"dropped\"") == 0)
        {
            dropped += numberIn(line, "count");
            continue;
        }
        const unsigned long number = numberIn(line, "number");
        ++seen[number];
        unsigned long& last = lastOfThread[numberIn(line, "thread")];
        EXPECT_GE(number, last) << "in the order of each thread";
        last = number;
    }
    unsigned long written = 0;
    for (const auto& [number, times] : seen)
    {
        EXPECT_LE(times, 2) << number;
        written += static_cast<unsigned long>(times);
    }
    EXPECT_EQ(written + dropped, 2 * 8 * perThread);
    EXPECT_EQ(lastOfThread.size(), 8U);
}

/// A proxy that records as the environment says, and which nobody deletes.
CommunicationsServiceProxy& proxyThatRecords(const std::string& file)
{
    setenv("COMMUNICATIONS_SERVICE_RECORDING", ("file=" + file).c_str(), 1);
    static support::Channel channel;
    static CommunicationsServiceProxy* const proxy = createCommunicationsServiceProxy();
    proxy->initProxy(channel);
    return *proxy;
}

const struct
{
    const char* name;
    void (*run)(const std::string& file);
    int signal;  ///< that ends it; 0 where it ends by itself
    std::size_t records;
} children[] = {
    {"killed: at most the last second is lost",
     [](const std::string& file)
     {
         Phone phone(file);
         for (int call = 1; call <= 100; ++call)
             phone.proxy.answerCall("1001", call);
         std::this_thread::sleep_for(1s);
         raise(SIGKILL);
     },
     SIGKILL, 200},
    {"at the very end it still may be used, and the rest is written",
     [](const std::string& file)
     {
         proxyThatRecords(file).activate();
         std::atexit([] {});
     },
     0, 2},
    {"forked processes are left alone",
     [](const std::string& file)
     {
         CommunicationsServiceProxy& proxy = proxyThatRecords(file);
         const pid_t grandchild = fork();
         if (grandchild == 0)
             std::exit(0);
         int end = 1;
         waitpid(grandchild, &end, 0);
         proxy.activate();
         if (end != 0)
             std::_Exit(1);
     },
     0, 2},
};

TEST(Recorder, WritesWhateverBecomesOfTheProcess)
{
    for (const auto& row : children)
    {
        SCOPED_TRACE(row.name);
        const Folder folder;
        const pid_t child = fork();
        if (child == 0)
        {
            alarm(60);
            row.run(folder / "t");
            std::exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, row.signal);
        EXPECT_EQ(recordsOf(folder / "t").size(), row.records);
    }
}

TEST(Recorder, DoesNotHoldUpAForkedProcess)
{
    const Folder folder;
    Phone phone(folder / "t");
    std::atomic<bool> stop{false};
    std::thread other(
        [&]
        {
            for (const std::string text(5000, 'x'); !stop;)
                phone.recorder->request(Sending::request, text);
        });
    for (int i = 0; i < 100 && !HasFailure(); ++i)
    {
        const pid_t child = fork();
        if (child == 0)
        {
            alarm(10);
            phone.recorder->know(&phone, "channel");
            phone.recorder->event(&phone, "x");
            phone.recorder->stop();
            std::_Exit(0);
        }
        int status = 1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    stop = true;
    other.join();
}

const struct
{
    const char* setting;
    const char* log;
} unusable[] = {
    {"", ""},
    {"# nothing", ""},
    {"file=x", "nothing is recorded: file=x is no whole path; it begins with /"},
    {"file=/proc/no/way", "nothing is recorded: /proc/no/way cannot be written: No such file or "
                          "directory"},
    {"file=/tmp", "nothing is recorded: /tmp cannot be written: Is a directory"},
};

TEST(Recorder, OffIsTheLibrary)
{
    for (const auto& row : unusable)
    {
        SCOPED_TRACE(row.setting);
        setenv("COMMUNICATIONS_SERVICE_RECORDING", row.setting, 1);
        support::loggingOn = 1;
        support::takeTrace();
        const std::unique_ptr<CommunicationsServiceProxy> proxy(createCommunicationsServiceProxy());
        const std::unique_ptr<CommunicationsServiceEventInvoker> invoker(
            createCommunicationsServiceEventInvoker());
        Lines log = support::takeTrace();
        log.erase(std::remove_if(log.begin(), log.end(),
                                 [](const std::string& line)
                                 { return line.find("logAppOxa") != 0; }),
                  log.end());
        support::loggingOn = 0;
        const Executable& proxyMade = *proxy;
        const Invoker& invokerMade = *invoker;
        EXPECT_EQ(typeid(proxyMade), typeid(CommunicationsServiceProxy));
        EXPECT_EQ(typeid(invokerMade), typeid(CommunicationsServiceEventInvoker));
        // Once, though proxy and invoker ask for a recorder each.
        Lines complaints;
        if (*row.log != '\0')
            complaints.push_back("logAppOxa 'SIP Communications Service' "
                                 "'./recorder/Recorder.cpp' 1 0 '" +
                                 std::string(row.log) + "'");
        EXPECT_EQ(log, complaints);
    }
    unsetenv("COMMUNICATIONS_SERVICE_RECORDING");
}

}  // namespace

// Four applications use a simulated service in a process of its own, at random, while it is killed,
// frozen, told to go away and made to give wrong answers. For as long as asked for:
//
//     kit-soak SECONDS [REQUESTS PER SECOND] [SEED]
//
// Every request must be answered, refused or reported lost; the service's journal tells that nothing
// was carried out twice, and that all that was answered was written down before.

#include "framework/MarloException.h"
#include "kit/binding/Caller.h"
#include "kit/binding/Subscriber.h"
#include "kit/framework/Exception.h"
#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"
#include "kit/testing/ServiceProcess.h"
#include "tests/support/Folder.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <unistd.h>
#include <unordered_map>
#include <vector>

namespace
{

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr int applicationCount = 4;
constexpr auto requestTimeout = 300ms;
constexpr auto watchdog = 60s;  ///< no call may take as long

struct Total
{
    using Count = std::atomic<unsigned long long>;
    Count sent{0};
    Count messages{0};  ///< sent without an answer
    Count answered{0};
    Count refused{0};
    Count timedOut{0};
    Count gone{0};
    Count events{0};
    Count comebacks{0};
    Count restarts{0};
    Count freezes{0};
    Count farewells{0};
    Count faults{0};
};

/// What became of each text that was sent, and of how many it is too much.
class Ledger
{
public:
    void sent(const std::string& text, bool awaited)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++entries_[key(text)].sent;
        ++(awaited ? total.sent : total.messages);
    }

    void answered(const std::string& text, const std::string& answer)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++entries_[key(text)].answered;
        ++(answer.find("sfiFailure") == std::string::npos ? total.answered : total.refused);
    }

    void lost(kit::Delivery delivery)
    {
        ++(delivery == kit::Delivery::timedOut ? total.timedOut : total.gone);
    }

    void written(const std::string& text)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++entries_[key(text)].written;
    }

    void complain(const std::string& text)
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (++complaints_ <= 20)
            std::cerr << "kit-soak: " << text << std::endl;
    }

    unsigned long long complaints()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return complaints_;
    }

    /// When nobody asks any more and the journal has been read.
    void close()
    {
        unsigned long long twice = 0;
        unsigned long long unwritten = 0;
        for (const auto& entry : entries_)
        {
            twice += entry.second.written > entry.second.sent;
            unwritten += entry.second.answered > entry.second.written;
        }
        if (twice != 0)
            complain(std::to_string(twice) + " requests were carried out more often than sent");
        if (unwritten != 0)
            complain(std::to_string(unwritten) + " requests were answered but never written down");
        if (total.answered + total.refused + total.timedOut + total.gone != total.sent)
            complain("some request has no outcome");
    }

    Total total;

private:
    struct Entry
    {
        unsigned sent = 0;
        unsigned answered = 0;
        unsigned written = 0;
    };

    static std::size_t key(const std::string& text) { return std::hash<std::string>()(text); }

    std::mutex mutex_;
    std::unordered_map<std::size_t, Entry> entries_;  ///< by the hash of the text: there are many
    unsigned long long complaints_ = 0;
};

class Application
{
public:
    Application(int number, const std::string& socket, Ledger& ledger, std::uint64_t seed)
        : number_(number), socket_(socket), ledger_(ledger), random_(seed), ear_(*this)
    {
    }

    ~Application() { framework_->remove(ear_); }

    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Asks until told to stop, not more often than once in `pause`.
    void run(const std::atomic<bool>& stop, std::chrono::microseconds pause)
    {
        auto next = Clock::now();
        while (!stop)
        {
            if (framework_ == nullptr || gone_.exchange(false))
                comeBack();
            else
                ask();
            began_ = 0;
            next = std::max(next + pause, Clock::now() - 100ms);
            std::this_thread::sleep_until(next);
        }
    }

    /// Since when a call has been running; 0 for none.
    Clock::rep began() const { return began_; }
    Clock::duration longest() const { return longest_; }

private:
    class Ear : public kit::Subscriber
    {
    public:
        explicit Ear(Application& owner) : owner_(owner) {}
        void onEvent(const kit::ReceivedEvent& event) override { owner_.hear(event); }

    private:
        Application& owner_;
    };

    std::size_t below(std::size_t limit) { return random_() % limit; }

    std::string unique() { return std::to_string(number_) + "-" + std::to_string(++last_); }

    template <typename Call>
    void timed(Call call)
    {
        const auto begin = Clock::now();
        began_ = begin.time_since_epoch().count();
        problems_ = 0;
        unanswered_ = 0;
        try
        {
            call();
        }
        catch (const MarloException&)
        {
            // A subscription that could not be made; reported like the others.
        }
        longest_ = std::max(longest_, Clock::now() - begin);
        if (unanswered_ > problems_)
            ledger_.complain(std::to_string(unanswered_) + " requests were lost and " +
                             std::to_string(problems_) + " problems told, at last: " + problem_);
    }

    void comeBack()
    {
        try
        {
            auto connection = std::make_unique<kit::SocketConnection>(socket_);
            if (framework_ == nullptr)
                framework_ = std::make_unique<kit::Framework>(std::move(connection), options());
            else
                framework_->reconnect(std::move(connection));
        }
        catch (const kit::ConnectionError&)
        {
            gone_ = true;
            std::this_thread::sleep_for(5ms);
            return;
        }
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            heard_.clear();
        }
        ++ledger_.total.comebacks;
        timed([&] { framework_->service().activate(); });
        timed([&] { framework_->service().subscribe(&ear_); });
    }

    kit::Framework::Options options()
    {
        kit::Framework::Options options;
        options.requestTimeout = requestTimeout;
        // 100000 units, for two of the requests, are three tenths of a second as well.
        options.timeoutUnit = std::chrono::microseconds(3);
        options.observer = [this](const kit::Passage& passage) { see(passage); };
        options.problems = [this](const std::string& problem)
        {
            ++problems_;
            problem_ = problem;
        };
        options.gone = [this](const std::string&) { gone_ = true; };
        return options;
    }

    void see(const kit::Passage& passage)
    {
        switch (passage.what)
        {
        case kit::Passage::What::request:
            asked_ = passage.text;
            ledger_.sent(asked_, true);
            break;
        case kit::Passage::What::answer:
            if (passage.delivery == kit::Delivery::done)
                ledger_.answered(asked_, passage.text);
            else
            {
                ++unanswered_;
                ledger_.lost(passage.delivery);
            }
            break;
        case kit::Passage::What::message:
            ledger_.sent(passage.text, false);
            unanswered_ += passage.delivery == kit::Delivery::done ? 0 : 1;
            break;
        default:
            break;
        }
    }

    /// A random operation with random values; many of them are refused.
    void ask()
    {
        if (below(3) == 0)
        {
            timed([&] { framework_->service().setLampMode("1001", unique(), 1); });
            return;
        }
        const std::vector<kit::Operation>& all = kit::operations();
        const kit::Operation& operation = all[below(all.size())];
        // More subscriptions would only multiply the events, and without service nothing happens.
        for (const char* not_now : {"subscribe", "deactivate", "setServiceState"})
            if (operation.name == std::string(not_now))
                return;
        kit::Values values;
        for (const kit::Field& field : operation.arguments)
            if (field.kind != kit::Kind::subscriber)
                values.emplace_back(field.argument, value(field));
        timed([&] { kit::call(framework_->service(), operation, values); });
    }

    std::string value(const kit::Field& field)
    {
        const std::string tag = field.tag;
        if (kit::isFlag(field.kind))
            return below(2) == 0 ? "0" : "1";
        if (field.kind == kit::Kind::state)
            return "sfiServiceInService";
        if (kit::isNumber(field.kind))
        {
            const std::vector<kit::NumberName>& names = kit::namesOf(field.names);
            if (!names.empty() && below(20) != 0)
                return std::to_string(names[below(names.size())].number);
            return std::to_string(below(16));
        }
        if (tag == "Line" || tag == "deviceID")
            return "100" + std::to_string(1 + below(below(20) == 0 ? 9 : 3));
        if (tag == "Destination" || tag == "uri" || tag == "URI")
            return "200" + std::to_string(1 + below(9));
        if (tag == "SystemStatus")
            return "NORMAL";
        return unique();
    }

    void hear(const kit::ReceivedEvent& event)
    {
        ++ledger_.total.events;
        if (event.method() != "systemStatusEvent")
            return;
        const std::string info = event.value("statusInfo");
        const std::lock_guard<std::mutex> lock(mutex_);
        if (!info.empty() && ++heard_[info] > 1)
            ledger_.complain("the event of " + info + " came twice");
    }

    const int number_;
    const std::string socket_;
    Ledger& ledger_;
    std::mt19937_64 random_;
    Ear ear_;
    std::atomic<bool> gone_{false};
    std::atomic<Clock::rep> began_{0};
    unsigned problems_ = 0;  ///< all of this on the application's thread
    unsigned unanswered_ = 0;
    std::string problem_;
    Clock::duration longest_{0};
    unsigned long long last_ = 0;
    std::string asked_;
    std::mutex mutex_;
    std::map<std::string, int> heard_;
    std::unique_ptr<kit::Framework> framework_;
};

/// Goes wrong at random: the process, the connections, the answers; and lets time pass.
class Trouble
{
public:
    Trouble(kit::ServiceProcess& process, Ledger& ledger, std::uint64_t seed)
        : process_(process), ledger_(ledger), random_(seed)
    {
    }

    void once()
    {
        switch (random_() % 12)
        {
        case 0:
            process_.kill();
            std::this_thread::sleep_for(std::chrono::milliseconds(random_() % 100));
            process_.restart();
            ++ledger_.total.restarts;
            break;
        case 1:
            process_.freeze();
            std::this_thread::sleep_for(std::chrono::milliseconds(random_() % 800));
            process_.thaw();
            ++ledger_.total.freezes;
            break;
        case 2:
            command("go away");
            ++ledger_.total.farewells;
            break;
        case 3:
            command("silence * times 3");
            ++ledger_.total.faults;
            break;
        case 4:
            command("fail * with garbage times 5");
            ++ledger_.total.faults;
            break;
        case 5:
        case 6:
            command("call 100" + std::to_string(1 + random_() % 3) + " from 2001");
            break;
        default:
            command("advance " + std::to_string(random_() % 20000) + "ms");
        }
    }

private:
    void command(const std::string& text)
    {
        try
        {
            kit::ControlAnswer answer;
            kit::SocketConnection(process_.socket()).control(text, answer, 5s);
        }
        catch (const kit::ConnectionError& error)
        {
            ledger_.complain(std::string("while nothing is wrong: ") + error.what());
        }
    }

    kit::ServiceProcess& process_;
    Ledger& ledger_;
    std::mt19937_64 random_;
};

long residentKiB(pid_t pid)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/statm");
    long size = 0;
    long resident = 0;
    file >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

int soak(long seconds, double rate, std::uint64_t seed)
{
    const TextFile journal;
    Ledger ledger;
    long most = 0;
    Clock::duration longest{0};
    {
        kit::ServiceProcess process("", {"--journal", journal.path, "--log", "/dev/null"});
        std::vector<std::unique_ptr<Application>> applications;
        std::vector<std::thread> threads;
        std::atomic<bool> stop{false};
        const std::chrono::microseconds pause(
            rate <= 0 ? 0 : static_cast<long>(1e6 * applicationCount / rate));
        for (int i = 0; i < applicationCount; ++i)
            applications.push_back(std::make_unique<Application>(
                i, process.socket(), ledger, seed * 100 + static_cast<std::uint64_t>(i)));
        for (const auto& application : applications)
            threads.emplace_back([&, one = application.get()] { one->run(stop, pause); });

        Trouble trouble(process, ledger, seed * 100 + 99);
        std::mt19937_64 random(seed);
        const auto end = Clock::now() + std::chrono::seconds(seconds);
        while (Clock::now() < end)
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(random() % 400));
            trouble.once();
            most = std::max(most, residentKiB(process.pid()));
            for (const auto& application : applications)
            {
                const Clock::rep began = application->began();
                if (began != 0 &&
                    Clock::now().time_since_epoch() - Clock::duration(began) > watchdog)
                {
                    std::cerr << "kit-soak: a call does not return" << std::endl;
                    std::abort();
                }
            }
        }
        stop = true;
        for (std::thread& thread : threads)
            thread.join();
        for (const auto& application : applications)
            longest = std::max(longest, application->longest());
        applications.clear();
        // The last answer of all comes behind everything that was posted.
        kit::ControlAnswer answer;
        kit::SocketConnection(process.socket()).control("show clients", answer, 10s);
    }
    const std::vector<std::string> lines = linesOf(journal.path);
    for (const std::string& line : lines)
        ledger.written(line);
    if (const std::string whole = contentsOf(journal.path); whole.empty() || whole.back() != '\n')
        ledger.complain("the last line of the journal is not whole");
    ledger.close();
    const Total& total = ledger.total;
    std::cout << seconds << " s, seed " << seed << ": " << total.sent << " requests, "
              << total.answered << " answered, " << total.refused << " refused, "
              << total.timedOut + total.gone << " reported lost (" << total.timedOut
              << " timed out, " << total.gone << " gone); " << total.messages << " messages; "
              << lines.size() << " lines of journal; " << total.events << " events; "
              << total.restarts << " restarts, " << total.freezes << " freezes, " << total.farewells
              << " times told to go away, " << total.faults << " times wrong answers, "
              << total.comebacks << " new connections; longest call "
              << std::chrono::duration_cast<std::chrono::milliseconds>(longest).count()
              << " ms; service at most " << most << " KiB; " << ledger.complaints() << " complaints"
              << std::endl;
    return ledger.complaints() == 0 && total.answered > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
try
{
    if (argc < 2 || argc > 4)
    {
        std::cerr << "kit-soak SECONDS [REQUESTS PER SECOND] [SEED]\n";
        return 2;
    }
    const std::uint64_t seed = argc > 3 ? std::stoull(argv[3]) : 1;
    return soak(std::stol(argv[1]), argc > 2 ? std::stod(argv[2]) : 0, seed);
}
catch (const std::exception& error)
{
    std::cerr << "kit-soak: " << error.what() << "\n";
    return 1;
}

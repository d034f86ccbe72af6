// Events and requests with changing content, as many as asked for. Memory must stay what it is after
// the first tenth, and now and then a value is compared with the reference implementation.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Events.h"
#include "tests/support/Reference.h"
#include "tests/support/Requests.h"
#include "tests/support/Tested.h"
#include "tests/support/WritingSubscriber.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>

namespace
{

constexpr long allowedGrowth = 256;    // KiB
constexpr long enoughToTell = 100000;  // rounds; before, the largest texts have not all come up

long residentKiB()
{
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    file >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

class Soak
{
public:
    Soak() { proxy_.initProxy(channel_); }

    void round(bool compares)
    {
        event(compares);
        request(compares);
    }

private:
    std::size_t below(std::size_t limit) { return random_() % limit; }

    /// Mostly a short text, now and then one of some kilobytes.
    std::string text()
    {
        return std::string(below(50) == 0 ? below(4000) : below(60),
                           static_cast<char>('a' + below(26)));
    }

    std::string fields(std::size_t count)
    {
        std::string all;
        for (std::size_t i = 0; i < count; ++i)
        {
            const std::string& tag = tags_[below(tags_.size())];
            const std::string value = below(2) == 0 ? text() : std::to_string(random_());
            all += "<" + tag + ">" + value + "</" + tag + ">";
        }
        return all;
    }

    void event(bool compares)
    {
        const std::string message =
            samples::method(samples::events[below(28)].method) + fields(below(20));
        subscriber_.said.clear();
        invoker_.handleMessage(&subscriber_, message.c_str(), 0, &response_);
        if (!compares)
            return;
        WritingSubscriber told;
        ReferenceInvoker().handleMessage(&told, message.c_str(), 0, nullptr);
        demand(subscriber_.said == told.said, message);
    }

    void request(bool compares)
    {
        const std::string line = text();
        const std::string uri = text();
        const int number = static_cast<int>(random_());
        const sfiForwardingType type = static_cast<sfiForwardingType>(number);
        channel_.answer = fields(below(10));
        proxy_.setForwardingConfiguration(line, type, true, uri, -number, false);
        if (compares)
        {
            const std::string sent = channel_.sent;
            ReferenceProxy(channel_).setForwardingConfiguration(line, type, true, uri, -number,
                                                                false);
            demand(sent == channel_.sent, sent);
        }
        samples::requests[below(std::size(samples::requests))].call(proxy_);
    }

    static void demand(bool holds, const std::string& message)
    {
        if (holds)
            return;
        std::printf("wrong value: %s\n", message.c_str());
        std::exit(1);
    }

    const std::vector<std::string> tags_ = samples::allTags();
    std::minstd_rand random_{1};
    FrameworkOfOne context_;
    Channel channel_{context_};
    TestedProxy proxy_;
    TestedEventInvoker invoker_;
    WritingSubscriber subscriber_;
    Response response_;
};

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::printf("usage: %s ROUNDS (an event and two requests each)\n", argv[0]);
        return 2;
    }
    const long rounds = std::atol(argv[1]);
    const auto start = std::chrono::steady_clock::now();
    Soak soak;
    long early = 0;
    for (long i = 0; i < rounds; ++i)
    {
        if (i == rounds / 10)
            early = residentKiB();
        soak.round(i % 100 == 0);
    }
    const long late = residentKiB();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
    std::printf("%ld events and %ld requests in %.0f s; resident %ld KiB after a tenth, %ld KiB at "
                "the end\n",
                rounds, 2 * rounds, time.count(), early, late);
    if (rounds >= enoughToTell && late - early > allowedGrowth)
    {
        std::printf("memory has grown by more than %ld KiB\n", allowedGrowth);
        return 1;
    }
    return 0;
}

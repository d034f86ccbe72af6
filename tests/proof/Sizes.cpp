// Hostile sizes: how time and memory grow with the length of a text. Time is a figure, not a check;
// memory is held against the copies that the calls themselves ask for.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Tested.h"
#include "tests/support/WritingSubscriber.h"

#include <malloc.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>

namespace
{

std::size_t live = 0;
std::size_t peak = 0;

void* count(void* memory)
{
    live += malloc_usable_size(memory);
    peak = live > peak ? live : peak;
    return memory;
}

void uncount(void* memory)
{
    live -= malloc_usable_size(memory);
}

}  // namespace

// The linker sends the library's malloc and free through these.
extern "C"
{
    void* __real_malloc(std::size_t size);
    void __real_free(void* memory);
    void* __wrap_malloc(std::size_t size)
    {
        return count(__real_malloc(size));
    }
    void __wrap_free(void* memory)
    {
        uncount(memory);
        __real_free(memory);
    }
}

void* operator new(std::size_t size)
{
    void* memory = std::malloc(size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
void operator delete(void* memory) noexcept
{
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace
{

/// A channel whose answer stands in a string of its own, so that it is copied once.
struct Bench
{
    Bench()
    {
        proxy.initProxy(channel);
        subscriber.writes = false;
    }
    FrameworkOfOne context;
    Channel channel{context};
    TestedProxy proxy;
    TestedEventInvoker invoker;
    WritingSubscriber subscriber;
};

std::string repeated(const char* piece, std::size_t size)
{
    const std::string one = piece;
    std::string all;
    all.reserve(size + one.size());
    while (all.size() < size)
        all += one;
    return all;
}

std::string method(const char* name)
{
    return "<Method>" + std::string(name) + "</Method>";
}

std::string element(const std::string& tag, const std::string& value)
{
    return "<" + tag + ">" + value + "</" + tag + ">";
}

void event(Bench& bench, const std::string& text)
{
    bench.invoker.handleMessage(&bench.subscriber, text.c_str(), 0, nullptr);
}

void forwarding(Bench& bench, const std::string&)
{
    bool status;
    std::string uri;
    int count;
    bench.proxy.getForwardingConfiguration(static_cast<sfiForwardingType>(1), status, uri, count);
}

void messageWaiting(Bench& bench, const std::string&)
{
    int i;
    unsigned int u;
    std::string mailbox;
    bench.proxy.getMessageWaitingIndicator(i, u, u, u, u, i, i, i, mailbox);
}

void devices(Bench& bench, const std::string&)
{
    std::vector<std::string> items;
    bench.proxy.getDevices(items);
}

void microphone(Bench& bench, const std::string&)
{
    bool muted;
    bench.proxy.getMicrophoneMute(muted);
}

void setForwarding(Bench& bench, const std::string& text)
{
    bench.proxy.setForwardingConfiguration(text, static_cast<sfiForwardingType>(1), true, text, 2,
                                           false);
}

void signalling(Bench& bench, const std::string& text)
{
    bench.proxy.processSignallingComponentEvent(text.data(), static_cast<int>(text.size()));
}

/// What the memory alone costs, to hold the others against.
void copy(Bench&, const std::string& text)
{
    const std::string other = text;
    asm volatile("" : : "g"(other.data()) : "memory");
}

struct Case
{
    const char* name;
    std::string (*text)(std::size_t size);
    void (*call)(Bench& bench, const std::string& text);
    double copies;  ///< how often the call itself has to hold the text, or more
    bool isAnswer = false;
};

const std::string openings = "<LineID><URI><Name><FullPAI><AlertInformation_AlertURI>"
                             "<AlertInformation_InfoParam><DiversionURI><DiversionName>";
const std::string closings = "</LineID></URI></Name></FullPAI></AlertInformation_AlertURI>"
                             "</AlertInformation_InfoParam></DiversionURI></DiversionName>";

// An event is copied once, and each text that is found in it once more. An answer is copied by the
// channel, and an item of one byte takes a whole string in a list that grows by doubling. A request is
// written once, into one string; what the channel keeps of it counts too.
const Case cases[] = {
    {"one plain copy, for comparison", [](std::size_t n) { return repeated("x", n); }, copy, 1},
    {"event, one long text",
     [](std::size_t n) { return method("CallHeldEvent") + element("LineID", repeated("x", n)); },
     event, 2},
    {"event, all texts the same long text",
     [](std::size_t n)
     { return method("IncomingCallEvent") + openings + repeated("x", n) + closings; },
     event, 9},
    {"event, no end tags",
     [](std::size_t n) { return method("IncomingCallEvent") + repeated("<LineID><CallID>", n); },
     event, 1},
    {"event, only end tags",
     [](std::size_t n) { return method("IncomingCallEvent") + repeated("</LineID></CallID>", n); },
     event, 1},
    {"event, unknown tags",
     [](std::size_t n)
     { return method("IncomingCallEvent") + repeated("<a></a>", n) + element("LineID", "1"); },
     event, 1},
    {"event, tags that nearly match",
     [](std::size_t n)
     { return method("IncomingCallEvent") + repeated("<LineID</LineID<CallI>", n); },
     event, 1},
    {"event, nested brackets",
     [](std::size_t n)
     { return method("IncomingCallEvent") + repeated("<", n / 2) + repeated(">", n / 2); },
     event, 1},
    {"event, long texts of the record",
     [](std::size_t n)
     {
         return method("CallStateChangeEvent") + element("GPUCLG", repeated("1", n / 2)) +
                element("GPUCLDName", repeated("2", n / 2));
     },
     event, 2},
    {"event, long name",
     [](std::size_t n) { return element("Method", repeated("CallStateChangeEvent", n)); }, event,
     1},
    {"event, long payload",
     [](std::size_t n)
     { return method("b2buaCSTAResponse") + element("success", "1") + repeated("<x/>", n); },
     event, 1},
    {"answer, no end tags", [](std::size_t n) { return repeated("<uri>", n); }, forwarding, 2,
     true},
    {"answer, end tag in front", [](std::size_t n) { return "</uri><uri>" + repeated("x", n); },
     forwarding, 2, true},
    {"answer, unknown tags", [](std::size_t n) { return repeated("<a></a>", n); }, messageWaiting,
     1, true},
    {"answer, zero bytes",
     [](std::size_t n) { return std::string(n, '\0') + element("func_return_val", "sfiSuccess"); },
     messageWaiting, 1, true},
    {"answer, word at the end", [](std::size_t n) { return repeated("sfiFailur", n) + "true"; },
     microphone, 1, true},
    {"answer, items of one byte", [](std::size_t n) { return repeated("<1>", n); }, devices, 28,
     true},
    {"answer, brackets never closed", [](std::size_t n) { return repeated("<", n); }, devices, 1,
     true},
    {"request, long texts", [](std::size_t n) { return repeated("x", n / 2); }, setForwarding, 2},
    {"request, signalling data", [](std::size_t n) { return std::string(n, '\0'); }, signalling, 2},
};

double seconds()
{
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

/// Best of some calls, in seconds.
double timed(Bench& bench, const Case& which, const std::string& text)
{
    double best = 1e9;
    double spent = 0;
    for (int i = 0; i < 3 || (spent < 0.02 && i < 10000); ++i)
    {
        const double start = seconds();
        which.call(bench, text);
        const double time = seconds() - start;
        best = time < best ? time : best;
        spent += time;
    }
    return best;
}

/// The slope of log(time) over log(size) from `smallest` on: 1 is linear.
double exponent(const std::vector<double>& allSizes, const std::vector<double>& allTimes,
                double smallest)
{
    std::vector<double> sizes;
    std::vector<double> times;
    for (std::size_t i = 0; i < allSizes.size(); ++i)
        if (allSizes[i] >= smallest)
        {
            sizes.push_back(allSizes[i]);
            times.push_back(allTimes[i]);
        }

    double x = 0, y = 0, xx = 0, xy = 0;
    const double n = static_cast<double>(sizes.size());
    for (std::size_t i = 0; i < sizes.size(); ++i)
    {
        const double a = std::log(sizes[i]);
        const double b = std::log(times[i]);
        x += a;
        y += b;
        xx += a * a;
        xy += a * b;
    }
    return (n * xy - x * y) / (n * xx - x * x);
}

}  // namespace

int main(int argc, char** argv)
{
    const std::size_t largest = (argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 16384) * 1024;
    int failures = 0;
    // Memory is kept, so that what is measured is not how the system hands out pages.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    std::printf("exponents from 16 KiB and from 1 MiB on; the rest at %zu KiB\n", largest / 1024);
    std::printf("%-36s %12s %12s %10s %10s %10s\n", "case", "exp. 16 KiB", "exp. 1 MiB", "ns/byte",
                "peak/size", "at most");
    for (const Case& which : cases)
    {
        std::vector<double> sizes;
        std::vector<double> times;
        double perByte = 0;
        double copies = 0;
        for (std::size_t size = 1024; size <= largest; size *= 4)
        {
            Bench bench;
            const std::string text = which.text(size);
            if (which.isAnswer)
                bench.channel.answer = text;
            const std::size_t before = live;
            peak = live;
            which.call(bench, text);
            const double needed = static_cast<double>(peak - before);
            copies = needed / static_cast<double>(size);
            if (needed > which.copies * static_cast<double>(size) + 4096)
            {
                ++failures;
                std::printf("too much memory: %s, %zu bytes, needed %.0f\n", which.name, size,
                            needed);
            }
            const double time = timed(bench, which, text);
            perByte = 1e9 * time / static_cast<double>(size);
            sizes.push_back(static_cast<double>(size));
            times.push_back(time);
        }
        // Copies leave one cache after the other as they grow; from 1 MiB on they are in none.
        std::printf("%-36s %12.2f %12.2f %10.3f %10.2f %10.0f\n", which.name,
                    exponent(sizes, times, 16384), exponent(sizes, times, 1048576), perByte, copies,
                    which.copies);
    }
    return failures == 0 ? 0 : 1;
}

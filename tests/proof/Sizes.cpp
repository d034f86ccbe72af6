// Hostile sizes: memory is held against the copies that the calls themselves ask for.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Events.h"
#include "tests/support/Tested.h"
#include "tests/support/WritingSubscriber.h"

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
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

using samples::method;

std::string element(const char* tag, const std::string& value)
{
    return samples::element({samples::text, tag}, value);
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

// Of an event each text that is found in it is copied, and nothing else. An answer is copied by the
// channel, and an item of one byte takes a whole string in a list that grows by doubling. A request is
// written once, into one string; what the channel keeps of it counts too.
// clang-format off
const Case cases[] = {
    {"event, one long text",
     [](std::size_t n) { return method("CallHeldEvent") + element("LineID", repeated("x", n)); }, event, 1},
    {"event, all texts the same long text",
     [](std::size_t n) { return method("IncomingCallEvent") + openings + repeated("x", n) + closings; }, event, 8},
    {"event, no end tags",
     [](std::size_t n) { return method("IncomingCallEvent") + repeated("<LineID><CallID>", n); }, event, 0},
    {"event, only end tags",
     [](std::size_t n) { return method("IncomingCallEvent") + repeated("</LineID></CallID>", n); }, event, 0},
    {"event, unknown tags",
     [](std::size_t n) { return method("IncomingCallEvent") + repeated("<a></a>", n) +
          element("LineID", "1"); }, event, 0},
    {"event, tags that nearly match",
     [](std::size_t n) { return method("IncomingCallEvent") + repeated("<LineID</LineID<CallI>", n); }, event, 0},
    {"event, nested brackets",
     [](std::size_t n) { return method("IncomingCallEvent") + repeated("<", n / 2) +
          repeated(">", n / 2); }, event, 0},
    {"event, long texts of the record",
     [](std::size_t n) { return method("CallStateChangeEvent") + element("GPUCLG", repeated("1", n / 2)) +
          element("GPUCLDName", repeated("2", n / 2)); }, event, 1},
    {"event, long name",
     [](std::size_t n) { return element("Method", repeated("CallStateChangeEvent", n)); }, event, 0},
    {"event, long payload",
     [](std::size_t n) { return method("b2buaCSTAResponse") + element("success", "1") +
          repeated("<x/>", n); }, event, 1},
    {"answer, no end tags", [](std::size_t n) { return repeated("<uri>", n); }, forwarding, 2, true},
    {"answer, end tag in front", [](std::size_t n) { return "</uri><uri>" + repeated("x", n); }, forwarding, 2, true},
    {"answer, unknown tags", [](std::size_t n) { return repeated("<a></a>", n); }, messageWaiting, 1, true},
    {"answer, zero bytes",
     [](std::size_t n) { return std::string(n, '\0') +
          element("func_return_val", "sfiSuccess"); }, messageWaiting, 1, true},
    {"answer, word at the end", [](std::size_t n) { return repeated("sfiFailur", n) + "true"; }, microphone, 1, true},
    {"answer, items of one byte", [](std::size_t n) { return repeated("<1>", n); }, devices, 28, true},
    {"answer, brackets never closed", [](std::size_t n) { return repeated("<", n); }, devices, 1, true},
    {"request, long texts", [](std::size_t n) { return repeated("x", n / 2); }, setForwarding, 2},
    {"request, signalling data", [](std::size_t n) { return std::string(n, '\0'); }, signalling, 2},
};
// clang-format on

}  // namespace

int main()
{
    int failures = 0;
    for (const Case& which : cases)
        for (std::size_t size = 1024; size <= 1024 * 1024; size *= 4)
        {
            Bench bench;
            const std::string text = which.text(size);
            if (which.isAnswer)
                bench.channel.answer = text;
            const std::size_t before = live;
            peak = live;
            which.call(bench, text);
            const double needed = static_cast<double>(peak - before);
            const bool tooMuch = needed > which.copies * static_cast<double>(size) + 4096;
            failures += tooMuch ? 1 : 0;
            if (tooMuch || size == 1024 * 1024)
                std::printf("%-36s %8zu bytes take %10.0f, %.2f times as much; at most %.0f%s\n",
                            which.name, size, needed, needed / static_cast<double>(size),
                            which.copies, tooMuch ? ": too much" : "");
        }
    return failures == 0 ? 0 : 1;
}

// Every allocation fails once: for each operation and each event the first allocation fails, then the
// second, and so on until none does. The record of CallStateChangeEvent comes from malloc, whose
// result the library uses without a test, on purpose: that one allocation is never made to fail here.
// And memory is held against the copies that the calls themselves ask for.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Events.h"
#include "tests/support/Requests.h"
#include "tests/support/Tested.h"
#include "tests/support/WritingSubscriber.h"

#include <gtest/gtest.h>

#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <new>

extern "C"
{
    CommunicationsServiceProxy* createCommunicationsServiceProxy();
    CommunicationsServiceEventInvoker* createCommunicationsServiceEventInvoker();
}

namespace
{

long allocations = 0;    // made by operator new and not given back
long failingOne = 0;     // the how many-th from now on fails; 0 for none
bool failed = false;     // whether it has
void* record = nullptr;  // the last from malloc that was not given back
long records = 0;        // how many there are

std::size_t live = 0;  // bytes
std::size_t peak = 0;

void* counted(void* memory)
{
    live += malloc_usable_size(memory);
    peak = std::max(peak, live);
    return memory;
}

}  // namespace

// The forms for arrays come here, too.
void* operator new(std::size_t size)
{
    const bool fails = failingOne > 0 && --failingOne == 0;
    failed = failed || fails;
    void* memory = fails ? nullptr : std::aligned_alloc(16, (size + 16) & ~std::size_t(15));
    if (memory == nullptr)
        throw std::bad_alloc();
    ++allocations;
    return counted(memory);
}
void operator delete(void* memory) noexcept
{
    allocations -= memory != nullptr;
    live -= malloc_usable_size(memory);
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    operator delete(memory);
}

// The linker sends the calls of malloc and free in the library, and in this file, through these.
extern "C"
{
    void* __real_malloc(std::size_t size);
    void __real_free(void* memory);

    void* __wrap_malloc(std::size_t size)
    {
        ++records;
        return record = counted(__real_malloc(size));
    }

    void __wrap_free(void* memory)
    {
        if (memory != nullptr && memory == record)
        {
            --records;
            record = nullptr;
            live -= malloc_usable_size(memory);
        }
        __real_free(memory);
    }
}

namespace
{

class AllocationFaults : public testing::Test
{
protected:
    AllocationFaults()
    {
        channel.answer = samples::answerToAll();
        proxy.initProxy(channel);
    }

    /// Calls with the first, second ... allocation failing, and `check`s after each.
    /// Returns how many allocations one undisturbed call makes.
    static long failEach(const std::function<void()>& call, const std::function<void(bool)>& check)
    {
        for (long n = 1;; ++n)
        {
            const long before = allocations;
            bool thrown = false;
            failed = false;
            failingOne = n;
            try
            {
                call();
            }
            catch (const std::bad_alloc&)
            {
                thrown = true;
            }
            failingOne = 0;
            const long after = allocations;
            EXPECT_EQ(thrown, failed) << "the failure reaches the caller, and nothing else does";
            EXPECT_EQ(after, before) << "leak after allocation " << n << " failed";
            EXPECT_EQ(records, 0) << "record leaked after allocation " << n << " failed";
            check(thrown);
            if (!failed)
                return n - 1;
        }
    }

    /// The same for a request: all of it is sent or nothing. The answer may be what cannot be stored.
    long sending(const std::string& whole, const std::function<void()>& call)
    {
        return failEach(
            [&]
            {
                channel.sent.clear();
                call();
            },
            [&](bool thrown) {
                EXPECT_TRUE(channel.sent == whole || (thrown && channel.sent.empty()))
                    << channel.sent;
            });
    }

    static constexpr std::size_t room = 16384;  // the test's own texts never allocate

    FrameworkOfOne context;
    Channel channel{context, room};
    TestedProxy proxy;
    TestedEventInvoker invoker;
    WritingSubscriber subscriber{room};
};

TEST_F(AllocationFaults, EveryOperation)
{
    for (const samples::Request& request : samples::requests)
    {
        SCOPED_TRACE(request.sent);
        const long made = sending(request.sent, [&] { request.call(proxy); });
        EXPECT_TRUE(made > 0 || request.sent.size() < 16) << "it fits into a string";
    }
    EXPECT_GT(sending("<Method>Subscribe</Method>", [&] { proxy.subscribe(&subscriber); }), 0);
}

TEST_F(AllocationFaults, EveryEvent)
{
    for (const samples::Sample& sample : samples::eventSamples)
    {
        SCOPED_TRACE(sample.text);
        Response response;
        const long made = failEach(
            [&]
            {
                subscriber.said.clear();
                response.times = 0;
                invoker.handleMessage(&subscriber, sample.text.c_str(), 0, &response);
            },
            [&](bool thrown)
            {
                // All allocations are made before the callback, so it comes whole or not at all.
                EXPECT_EQ(subscriber.said, thrown ? "" : sample.said);
                EXPECT_EQ(response.times, thrown ? 0 : 1);
            });
        EXPECT_EQ(made > 0, sample.said != std::string("onDevicesChangedEvent()\n"));
    }
}

/// What cannot be stored leaves everything as it was.
TEST_F(AllocationFaults, OutputsOfQueries)
{
    const std::string longText(100, '1');
    channel.answer = "<sfiResult>sfiFailureCallBackAllreadyExists</sfiResult><status>0</status>"
                     "<cfnrRingCount>1</cfnrRingCount><uri>" +
                     longText +
                     "</uri><func_return_val>sfiFailureCallBackAllreadyExists</func_return_val>"
                     "<Type>10</Type><newMsgs>11</newMsgs><oldMsgs>12</oldMsgs>"
                     "<newUrgMsgs>13</newUrgMsgs><oldUrgMsgs>14</oldUrgMsgs>"
                     "<return_type>15</return_type><available_info>16</available_info>"
                     "<messages_waiting>17</messages_waiting><voiceMailNumber>" +
                     longText + "</voiceMailNumber>";
    bool flag = true;
    int n[4];
    unsigned int c[4];
    std::string left;
    left.reserve(200);
    const auto expect = [&](const auto& query, const std::string& after)
    {
        const auto call = [&]
        {
            std::string text = "before";
            flag = true;
            std::fill_n(n, 4, 77);
            std::fill_n(c, 4, 77);
            try
            {
                query(text);
            }
            catch (const std::bad_alloc&)
            {
                left = text;
                throw;
            }
            left = text;
        };
        const auto check = [&](bool thrown)
        {
            EXPECT_EQ(shown(left, flag, n[0], n[1], n[2], n[3], c[0], c[1], c[2], c[3]),
                      thrown ? "'before', true, 77, 77, 77, 77, 77u, 77u, 77u, 77u"
                             : show(longText) + after);
        };
        EXPECT_EQ(3, failEach(call, check)) << "request, answer, and text";
    };
    expect([&](std::string& text)
           { proxy.getForwardingConfiguration(sfiForwardingType(1), flag, text, n[0]); },
           ", false, 1, 77, 77, 77, 77u, 77u, 77u, 77u");
    expect(
        [&](std::string& text)
        { proxy.getMessageWaitingIndicator(n[0], c[0], c[1], c[2], c[3], n[1], n[2], n[3], text); },
        ", true, 10, 15, 16, 17, 11u, 12u, 13u, 14u");
}

TEST_F(AllocationFaults, EachIsAllocatedOnce)
{
    const auto made = [](const auto& call) { return failEach(call, [](bool) {}); };
    channel.answer = "sfiSuccess";
    for (const std::size_t length : {0U, 64U, 65U, 1000U})
    {
        const std::string line(length, '1');
        const std::string payload(2 * length, '2');
        EXPECT_EQ(1, made([&] { proxy.SendCSTARequest(line, payload); }));
        EXPECT_EQ(1, made([&] { proxy.setLampMode(line, payload, 3); }));
        EXPECT_EQ(1, made([&] { proxy.systemStatus(line.c_str(), payload.c_str()); }));
    }
    EXPECT_EQ(1, made([] { delete createCommunicationsServiceProxy(); }));
    EXPECT_EQ(1, made([] { delete createCommunicationsServiceEventInvoker(); }));

    channel.answer.clear();
    for (int i = 0; i < 20; ++i)
        channel.answer += "<device-with-a-name-of-some-length>";
    const auto getDevices = [&]
    {
        std::vector<std::string> devices;
        proxy.getDevices(devices);
    };
    EXPECT_EQ(1 + 1 + 1 + 20, made(getDevices)) << "request, answer, list, and items";
}

/// The record alone is lost when its callback throws; nothing is with any other.
TEST_F(AllocationFaults, ThrowingCallbacks)
{
    ThrowingSubscriber throwing(room);
    for (const samples::Sample& sample : samples::eventSamples)
    {
        SCOPED_TRACE(sample.text);
        Response response;
        const long before = allocations;
        throwing.said.clear();
        EXPECT_THROW(invoker.handleMessage(&throwing, sample.text.c_str(), 0, &response), Thrown);
        EXPECT_EQ(allocations, before);
        EXPECT_EQ(throwing.said, sample.said);
        EXPECT_EQ(response.times, 0);
        EXPECT_EQ(records, &sample == &samples::eventSamples[0] ? 1 : 0);
        std::free(record);

        subscriber.said.clear();
        invoker.handleMessage(&subscriber, sample.text.c_str(), 0, &response);
        EXPECT_EQ(subscriber.said, sample.said) << "the invoker works afterwards";
    }
}

std::string repeated(const std::string& piece, std::size_t size)
{
    std::string all;
    while (all.size() < size)
        all += piece;
    return all;
}

std::string element(const char* tag, const std::string& value)
{
    return samples::element({samples::text, tag}, value);
}

// Hostile sizes.

const std::string openings = "<LineID><URI><Name><FullPAI><AlertInformation_AlertURI>"
                             "<AlertInformation_InfoParam><DiversionURI><DiversionName>";
const std::string closings = "</LineID></URI></Name></FullPAI></AlertInformation_AlertURI>"
                             "</AlertInformation_InfoParam></DiversionURI></DiversionName>";

// Of an event each text that is found in it is copied, and nothing else. An answer is copied by the
// channel, and an item of one byte takes a whole string in a list that grows by doubling.
// clang-format off
const struct
{
    const char* name;
    std::string (*text)(std::size_t size);
    const char* request;  ///< what the text is an answer to; null for an event
    double copies;        ///< how often the call itself has to hold the text, or more
} cases[] = {
    {"event, one long text",
     [](std::size_t n) { return samples::method("CallHeldEvent") + element("LineID", repeated("x", n)); }, nullptr, 1},
    {"event, all texts the same long text",
     [](std::size_t n) { return samples::method("IncomingCallEvent") + openings + repeated("x", n) + closings; }, nullptr, 8},
    {"event, no end tags",
     [](std::size_t n) { return samples::method("IncomingCallEvent") + repeated("<LineID><CallID>", n); }, nullptr, 0},
    {"event, only end tags",
     [](std::size_t n) { return samples::method("IncomingCallEvent") + repeated("</LineID></CallID>", n); }, nullptr, 0},
    {"event, unknown tags",
     [](std::size_t n) { return samples::method("IncomingCallEvent") + repeated("<a></a>", n) +
          element("LineID", "1"); }, nullptr, 0},
    {"event, tags that nearly match",
     [](std::size_t n) { return samples::method("IncomingCallEvent") + repeated("<LineID</LineID<CallI>", n); }, nullptr, 0},
    {"event, nested brackets",
     [](std::size_t n) { return samples::method("IncomingCallEvent") + repeated("<", n / 2) +
          repeated(">", n / 2); }, nullptr, 0},
    {"event, long texts of the record",
     [](std::size_t n) { return samples::method("CallStateChangeEvent") + element("GPUCLG", repeated("1", n / 2)) +
          element("GPUCLDName", repeated("2", n / 2)); }, nullptr, 1},
    {"event, long name",
     [](std::size_t n) { return element("Method", repeated("CallStateChangeEvent", n)); }, nullptr, 0},
    {"event, long payload",
     [](std::size_t n) { return samples::method("b2buaCSTAResponse") + element("success", "1") +
          repeated("<x/>", n); }, nullptr, 1},
    {"answer, no end tags", [](std::size_t n) { return repeated("<uri>", n); }, "getForwardingConfiguration", 2},
    {"answer, end tag in front", [](std::size_t n) { return "</uri><uri>" + repeated("x", n); }, "getForwardingConfiguration", 2},
    {"answer, unknown tags", [](std::size_t n) { return repeated("<a></a>", n); }, "GetMessageWaiting", 1},
    {"answer, zero bytes",
     [](std::size_t n) { return std::string(n, '\0') +
          element("func_return_val", "sfiSuccess"); }, "GetMessageWaiting", 1},
    {"answer, word at the end", [](std::size_t n) { return repeated("sfiFailur", n) + "true"; }, "GetMicrophoneMute", 1},
    {"answer, items of one byte", [](std::size_t n) { return repeated("<1>", n); }, "GetDevices", 28},
    {"answer, a short item before a long one",
     [](std::size_t n) { return "<1><" + repeated("x", n) + ">"; }, "GetDevices", 2},
    {"answer, brackets never closed", [](std::size_t n) { return repeated("<", n); }, "GetDevices", 1},
};
// clang-format on

TEST_F(AllocationFaults, TextsOfAnySizeAreHeldNoOftenerThanTheCallAsks)
{
    const auto needed = [](const auto& call)
    {
        const std::size_t before = live;
        peak = live;
        call();
        return static_cast<double>(peak - before);
    };
    subscriber.writes = false;
    for (std::size_t size = 1024; size <= 1024 * 1024; size *= 4)
    {
        // A large one may be given whole pages.
        const auto most = [size](double copies) { return copies * (double(size) + 4096) + 4096; };
        for (const auto& row : cases)
        {
            const std::string text = row.text(size);
            double bytes = 0;
            if (row.request == nullptr)
                bytes =
                    needed([&] { invoker.handleMessage(&subscriber, text.c_str(), 0, nullptr); });
            channel.answer = text;
            for (const samples::Request& request : samples::requests)
                if (row.request != nullptr && request.sent.find(row.request) != std::string::npos)
                    bytes = needed([&] { request.call(proxy); });
            EXPECT_LE(bytes, most(row.copies)) << row.name << ": " << size;
        }
        // A request is written once, into one string.
        channel.answer.clear();
        channel.sent.reserve(2 * size);
        const std::string half(size / 2, 'x'), whole(size, '\0');
        EXPECT_LE(needed([&] { proxy.setAgentState(half, half); }), most(1));
        EXPECT_LE(needed([&] { proxy.processSignallingComponentEvent(whole.data(), int(size)); }),
                  most(1));
    }
}

}  // namespace

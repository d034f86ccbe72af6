// Every allocation fails once: for each operation and each event the first allocation fails, then the
// second, and so on until none does. The record of CallStateChangeEvent comes from malloc, whose
// result the library uses without a test, on purpose: that one allocation is never made to fail here.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Events.h"
#include "tests/support/Requests.h"
#include "tests/support/Tested.h"
#include "tests/support/WritingSubscriber.h"

#include <gtest/gtest.h>

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
    return memory;
}
void operator delete(void* memory) noexcept
{
    allocations -= memory != nullptr;
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
        return record = __real_malloc(size);
    }

    void __wrap_free(void* memory)
    {
        if (memory != nullptr && memory == record)
        {
            --records;
            record = nullptr;
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

TEST_F(AllocationFaults, RefusedSubscription)
{
    channel.refuses = true;
    const long before = allocations;
    EXPECT_THROW(proxy.subscribe(&subscriber), MarloException);
    const long after = allocations;
    EXPECT_EQ(after, before);
    channel.refuses = false;
    channel.answer = "sfiSuccess";
    EXPECT_EQ(proxy.subscribe(&subscriber), sfiSuccess);
}

}  // namespace

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

void* allocate(std::size_t size)
{
    if (failingOne > 0 && --failingOne == 0)
    {
        failed = true;
        throw std::bad_alloc();
    }
    void* memory = std::aligned_alloc(16, (size + 16) & ~std::size_t(15));
    if (memory == nullptr)
        throw std::bad_alloc();
    ++allocations;
    return memory;
}

void release(void* memory) noexcept
{
    allocations -= memory != nullptr;
    std::free(memory);
}

}  // namespace

void* operator new(std::size_t size)
{
    return allocate(size);
}
void* operator new[](std::size_t size)
{
    return allocate(size);
}
void operator delete(void* memory) noexcept
{
    release(memory);
}
void operator delete[](void* memory) noexcept
{
    release(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    release(memory);
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
                     longText + "</uri>";
    const auto forwarding = [&]
    {
        std::string uri = "before";
        bool status = true;
        int rings = 77;
        const auto expect = [&](bool thrown)
        {
            EXPECT_TRUE(uri == (thrown ? "before" : longText.c_str()));
            EXPECT_EQ(status, thrown);
            EXPECT_EQ(rings, thrown ? 77 : 1);
        };
        try
        {
            proxy.getForwardingConfiguration(sfiForwardingType(1), status, uri, rings);
        }
        catch (const std::bad_alloc&)
        {
            expect(true);
            throw;
        }
        expect(false);
    };
    EXPECT_EQ(3, failEach(forwarding, [](bool) {})) << "request, answer, and URI";

    channel.answer = "<func_return_val>sfiFailureCallBackAllreadyExists</func_return_val>"
                     "<Type>0</Type><newMsgs>1</newMsgs><oldMsgs>2</oldMsgs>"
                     "<newUrgMsgs>3</newUrgMsgs><oldUrgMsgs>4</oldUrgMsgs>"
                     "<return_type>5</return_type><available_info>6</available_info>"
                     "<messages_waiting>7</messages_waiting><voiceMailNumber>" +
                     longText + "</voiceMailNumber>";
    const auto messageWaiting = [&]
    {
        std::string number = "before";
        int type = 77, returnType = 77, available = 77, waiting = 77;
        unsigned int counts[] = {77, 77, 77, 77};
        const auto expect = [&](bool thrown)
        {
            EXPECT_TRUE(number == (thrown ? "before" : longText.c_str()));
            EXPECT_EQ(type, thrown ? 77 : 0);
            for (unsigned int i = 0; i < 4; ++i)
                EXPECT_EQ(counts[i], thrown ? 77 : i + 1);
            EXPECT_EQ(returnType, thrown ? 77 : 5);
            EXPECT_EQ(available, thrown ? 77 : 6);
            EXPECT_EQ(waiting, thrown ? 77 : 7);
        };
        try
        {
            proxy.getMessageWaitingIndicator(type, counts[0], counts[1], counts[2], counts[3],
                                             returnType, available, waiting, number);
        }
        catch (const std::bad_alloc&)
        {
            expect(true);
            throw;
        }
        expect(false);
    };
    EXPECT_EQ(3, failEach(messageWaiting, [](bool) {})) << "request, answer, and number";
}

TEST_F(AllocationFaults, LongQueries)
{
    channel.answer.clear();
    for (int i = 0; i < 20; ++i)
        channel.answer += "<device-with-a-name-of-some-length>";
    const long made = failEach(
        [&]
        {
            std::vector<std::string> devices;
            proxy.getDevices(devices);
        },
        [](bool) {});
    EXPECT_EQ(made, 1 + 1 + 1 + 20) << "request, answer, list, and items";
}

TEST_F(AllocationFaults, ARequestIsOneAllocation)
{
    channel.answer = "sfiSuccess";
    for (const std::size_t length : {0U, 64U, 65U, 1000U})
    {
        const std::string line(length, '1');
        const std::string payload(2 * length, '2');
        EXPECT_EQ(1, failEach([&] { proxy.SendCSTARequest(line, payload); }, [](bool) {}));
        EXPECT_EQ(1, failEach([&] { proxy.setLampMode(line, payload, 3); }, [](bool) {}));
        EXPECT_EQ(
            1, failEach([&] { proxy.systemStatus(line.c_str(), payload.c_str()); }, [](bool) {}));
    }
}

TEST_F(AllocationFaults, Factories)
{
    EXPECT_EQ(1, failEach([] { delete createCommunicationsServiceProxy(); }, [](bool) {}));
    EXPECT_EQ(1, failEach([] { delete createCommunicationsServiceEventInvoker(); }, [](bool) {}));
}

struct CallbackFailure
{
};

struct ThrowingSubscriber : WritingSubscriber
{
    using WritingSubscriber::WritingSubscriber;
    void told() override { throw CallbackFailure(); }
};

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
        bool thrown = false;
        try
        {
            invoker.handleMessage(&throwing, sample.text.c_str(), 0, &response);
        }
        catch (const CallbackFailure&)
        {
            thrown = true;
        }
        const long after = allocations;
        EXPECT_TRUE(thrown);
        EXPECT_EQ(after, before);
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

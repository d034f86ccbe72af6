// One proxy and one invoker, used by eight threads at once. Built with ThreadSanitizer, any data that
// the library shares between calls is reported; in every build each thread checks what it gets.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Channel.h"
#include "tests/support/Events.h"
#include "tests/support/Requests.h"
#include "tests/support/Tested.h"
#include "tests/support/WritingSubscriber.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace
{

/// What this thread has sent last; what it is answered names its own request.
thread_local std::string sentHere;

/// A channel that any number of threads may use: each has its own last request.
struct SharedChannel : Channel
{
    using Channel::Channel;
    void sendRequest(const std::string& request, std::string& response) override
    {
        sentHere = request;
        response = samples::answerToAll();
    }
    void sendRequestTimed(const std::string& request, std::string& response, int) override
    {
        sendRequest(request, response);
    }
    void sendSubscribe(const std::string& request, std::string& response, const std::string& name,
                       int) override
    {
        sendRequest(request + name, response);
    }
    void sendOneWay(const std::string& message) override { sentHere = message; }
};

class Threads : public testing::Test
{
protected:
    Threads() { proxy.initProxy(channel); }

    template <typename Work>
    static void inEight(Work work)
    {
        std::vector<std::thread> threads;
        for (int number = 0; number < 8; ++number)
            threads.emplace_back(work, number);
        for (std::thread& thread : threads)
            thread.join();
    }

    FrameworkOfOne context;
    SharedChannel channel{context};
    TestedProxy proxy;
    TestedEventInvoker invoker;
};

TEST_F(Threads, OneProxyAndOneInvoker)
{
    inEight(
        [this](int number)
        {
            WritingSubscriber subscriber;
            Response response;
            for (int i = 0; i < 100; ++i)
            {
                for (const samples::Request& request : samples::requests)
                {
                    request.call(proxy);
                    ASSERT_EQ(sentHere, request.sent);
                }
                proxy.subscribe(&subscriber);
                ASSERT_EQ(sentHere, "<Method>Subscribe</Method>channel of one");
                const int callId = 1000 * number + i;
                ASSERT_EQ(proxy.answerCall("1001", callId), sfiFailure);
                ASSERT_NE(sentHere.find("<CallID>" + std::to_string(callId) + "<"),
                          std::string::npos);
                for (const samples::Sample& sample : samples::eventSamples)
                {
                    subscriber.said.clear();
                    invoker.handleMessage(&subscriber, sample.text.c_str(), 0, &response);
                    ASSERT_EQ(subscriber.said, sample.said);
                }
            }
            EXPECT_EQ(response.times, 100 * 28);
        });
}

/// Calls every operation, and handles a further event, from inside each callback.
struct Nested : WritingSubscriber
{
    Nested(CommunicationsServiceProxy& p, CommunicationsServiceEventInvoker& i)
        : proxy(p), invoker(i)
    {
    }

    void told() override
    {
        for (const samples::Request& request : samples::requests)
            request.call(proxy);
        proxy.subscribe(this);
        WritingSubscriber other;
        invoker.handleMessage(&other, samples::eventSamples[4].text.c_str(), 0, nullptr);
        inside += other.said == samples::eventSamples[4].said;
    }

    CommunicationsServiceProxy& proxy;
    CommunicationsServiceEventInvoker& invoker;
    int inside = 0;
};

/// Deletes itself in its callback: the library must not look at a subscriber again after that.
struct Leaving : WritingSubscriber
{
    explicit Leaving(int& count) : left(count) {}
    ~Leaving() override { ++left; }
    void told() override { delete this; }
    int& left;
};

TEST_F(Threads, CallbacksThatCallOrDeleteTheirSubscriber)
{
    inEight(
        [this](int)
        {
            Nested nested(proxy, invoker);
            Response response;
            int left = 0;
            for (const samples::Sample& sample : samples::eventSamples)
            {
                const char* const text = sample.text.c_str();
                nested.said.clear();
                invoker.handleMessage(&nested, text, 0, &response);
                ASSERT_EQ(nested.said, sample.said);

                auto subscriber = std::make_unique<WritingSubscriber>();
                invoker.handleMessage(subscriber.get(), text, 0, nullptr);
                ASSERT_EQ(subscriber->said, sample.said);
                subscriber.reset();
                invoker.handleMessage(new Leaving(left), text, 0, &response);
            }
            EXPECT_EQ(nested.inside, 28);
            EXPECT_EQ(left, 28);
            EXPECT_EQ(response.times, 2 * 28);
        });
}

}  // namespace

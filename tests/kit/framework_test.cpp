// The stand-in framework over a connection that does what the test tells it.
#include "kit/framework/Framework.h"

#include "Complaint.h"
#include "FakeConnection.h"

#include "framework/Logging.h"
#include "framework/Serializer.h"
#include "kit/framework/Exception.h"
#include "kit/framework/Log.h"
#include "kit/framework/Subscription.h"
#include "kit/testing/EventRecorder.h"

#include <atomic>
#include <future>
#include <gmock/gmock.h>
#include <mutex>
#include <set>
#include <thread>

namespace
{

using kit::Delivery;
using kit::EventRecorder;
using kit::Framework;
using kit::Passage;
using kit::Subscription;
using kit::test::complaintOf;
using kit::test::FakeConnection;
using kit::test::FakeService;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;

class FrameworkTest : public testing::Test
{
protected:
    std::unique_ptr<Framework> make(Framework::Options options = {})
    {
        options.problems = [this](const std::string& problem)
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            problems_.push_back(problem);
        };
        return std::make_unique<Framework>(std::make_unique<FakeConnection>(service_), options);
    }

    std::unique_ptr<Framework> makePumped(Framework::Options options = {})
    {
        options.events = Framework::Events::onPump;
        return make(options);
    }

    /// The same, with the recorder for a subscriber.
    std::unique_ptr<Framework> subscribed(std::unique_ptr<Framework> framework)
    {
        EXPECT_EQ(framework->service().subscribe(&recorder_), sfiSuccess);
        return framework;
    }

    std::vector<std::string> problems()
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return problems_;
    }

    FakeService service_;
    EventRecorder recorder_;

private:
    std::mutex mutex_;
    std::vector<std::string> problems_;
};

TEST_F(FrameworkTest, TimeOutsReachTheConnection)
{
    Framework::Options options;
    options.requestTimeout = milliseconds(70);
    options.timeoutUnit = std::chrono::microseconds(20);
    const std::unique_ptr<Framework> framework = make(options);
    framework->service().answerCall("1001", 7);
    framework->service().activate();
    framework->service().subscribe(&recorder_);
    EXPECT_THAT(service_.timeouts,
                ElementsAre(milliseconds(70), milliseconds(2000), milliseconds(2000)));
}

TEST_F(FrameworkTest, WhoDoesNotAnswerIsReportedByNameAndNotAskedAgain)
{
    const std::unique_ptr<Framework> framework = make();
    service_.whyGone = "closed";
    service_.delivery = Delivery::timedOut;
    EXPECT_EQ(framework->service().answerCall("1001", 7), sfiFailure);
    EXPECT_EQ(framework->service().activate(), sfiFailure);
    service_.delivery = Delivery::gone;
    EXPECT_EQ(framework->service().deactivate(true), sfiFailure);
    framework->service().setIsInServiceInitiatedState("1001", true);
    framework->service().processSignallingComponentEvent("x", 1);
    EXPECT_THAT(
        problems(),
        ElementsAre("AnswerCall has no answer: the fake service did not answer within 5 s",
                    "Activate has no answer: the fake service did not answer within 100 s",
                    "Deactivate has no answer: the fake service is gone: closed",
                    "setIsInServiceInitiatedState was not sent: the fake service is gone: closed",
                    "signalling data was not sent: the fake service is gone: closed"));
    EXPECT_EQ(service_.received.size(), 5u);
}

TEST_F(FrameworkTest, ASubscriptionThatCannotBeMadeThrows)
{
    const std::unique_ptr<Framework> framework = make();
    for (const auto& [delivery, text] :
         {std::pair(Delivery::gone, "Subscribe has no answer: the fake service is gone"),
          std::pair(Delivery::timedOut,
                    "Subscribe has no answer: the fake service did not answer within 100 s")})
    {
        service_.delivery = delivery;
        EXPECT_EQ(complaintOf<MarloException>([&] { framework->service().subscribe(&recorder_); }),
                  text);
    }
    EXPECT_EQ(service_.received.size(), 2u);
}

TEST_F(FrameworkTest, WhatIsLeftInTheResponseCanBeChosen)
{
    Framework::Options options;
    std::vector<std::string> devices;
    service_.delivery = Delivery::gone;
    EXPECT_EQ(make(options)->service().getDevices(devices), sfiSuccess);
    options.unanswered = "sfiFailure";
    EXPECT_EQ(make(options)->service().getDevices(devices), sfiFailure);
    EXPECT_TRUE(devices.empty());
}

TEST_F(FrameworkTest, EventsComeInOrderOnAThreadOfTheirOwn)
{
    const std::unique_ptr<Framework> framework = subscribed(make());
    std::set<std::thread::id> threads;
    recorder_.onEach([&](const kit::ReceivedEvent&)
                     { threads.insert(std::this_thread::get_id()); });
    for (int i = 0; i < 100; ++i)
        service_.sendHeld(i);
    ASSERT_TRUE(framework->settle(seconds(10)));
    const std::vector<kit::ReceivedEvent> events = recorder_.events();
    ASSERT_EQ(events.size(), 100u);
    for (std::size_t i = 0; i < events.size(); ++i)
        EXPECT_EQ(events[i].value("callId"), std::to_string(i));
    EXPECT_EQ(threads.size(), 1u);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0u);
}

TEST_F(FrameworkTest, EachSubscriberGetsTheEventsOfItsChannel)
{
    const std::unique_ptr<Framework> framework = makePumped();
    EventRecorder other;
    framework->service().subscribe(&recorder_);
    const std::string first = service_.channel;
    framework->service().subscribe(&other);
    EXPECT_NE(service_.channel, first);
    EXPECT_EQ(framework->channelOf(recorder_), first);
    service_.sendHeld(2);
    service_.sink(first, "<Method>CallHeldEvent</Method><CallID>1</CallID>");
    service_.sink("nobody's", "<Method>CallHeldEvent</Method><CallID>3</CallID>");
    EXPECT_EQ(framework->pump(), 2u);
    ASSERT_EQ(recorder_.events().size(), 1u);
    ASSERT_EQ(other.events().size(), 1u);
    EXPECT_EQ(recorder_.events().front().value("callId"), "1");
    EXPECT_EQ(other.events().front().value("callId"), "2");
}

TEST_F(FrameworkTest, PumpDeliversOnTheCallersThreadAndWaits)
{
    const std::unique_ptr<Framework> framework = subscribed(makePumped());
    std::set<std::thread::id> threads;
    recorder_.onEach(
        [&](const kit::ReceivedEvent& event)
        {
            threads.insert(std::this_thread::get_id());
            if (event.value("callId") == "1")
                service_.sendHeld(2);
            EXPECT_EQ(framework->pump(), 0u) << "an event within an event";
        });
    EXPECT_EQ(framework->pump(), 0u);
    EXPECT_TRUE(framework->settle(milliseconds(0)));
    std::thread sender([&] { service_.sendHeld(1); });
    EXPECT_EQ(framework->pump(seconds(10)), 2u);
    sender.join();
    EXPECT_THAT(threads, ElementsAre(std::this_thread::get_id()));
    service_.sendHeld(3);
    EXPECT_FALSE(framework->settle(milliseconds(0)));
    EXPECT_EQ(make()->pump(), 0u);
}

TEST_F(FrameworkTest, OperationsWorkInsideACallback)
{
    const std::unique_ptr<Framework> framework = subscribed(make());
    std::vector<int> results;
    recorder_.onEach(
        [&](const kit::ReceivedEvent& event)
        {
            if (event.value("callId") != "1")
                return;
            results.push_back(framework->service().answerCall("1001", 1));
            results.push_back(framework->service().subscribe(&recorder_));
            service_.sendHeld(2);  // caused by the operation: comes after this callback
            EXPECT_EQ(recorder_.events().size(), 0u);
        });
    service_.sendHeld(1);
    EXPECT_TRUE(recorder_.waitFor("CallHeldEvent", {{"callId", "1"}}));
    EXPECT_TRUE(recorder_.waitFor("CallHeldEvent", {{"callId", "2"}}));
    EXPECT_THAT(results, ElementsAre(sfiSuccess, sfiSuccess));
}

TEST_F(FrameworkTest, ACallbackThatThrowsIsReportedAndTheNextEventComes)
{
    const std::unique_ptr<Framework> framework = subscribed(make());
    recorder_.onEach(
        [](const kit::ReceivedEvent& event)
        {
            const std::string call = event.value("callId");
            if (call == "1")
                throw std::runtime_error("one");
            if (call == "2")
                throw kit::ChannelException("two");
            if (call == "3")
                throw 3;
        });
    for (const int call : {1, 2, 3, 4})
        service_.sendHeld(call);
    EXPECT_TRUE(recorder_.waitFor("CallHeldEvent", {{"callId", "4"}}));
    EXPECT_EQ(recorder_.events().size(), 1u);
    EXPECT_THAT(problems(), ElementsAre("the callback of CallHeldEvent threw: one",
                                        "the callback of CallHeldEvent threw: two",
                                        "the callback of CallHeldEvent threw"));
}

TEST_F(FrameworkTest, ASubscriberThatTakesNoEventsIsRefused)
{
    struct Plain : Executable
    {
        void init(Context&) override {}
        void shutdown() override {}
    } plain;
    const std::unique_ptr<Framework> framework = makePumped();
    EXPECT_EQ(complaintOf<MarloException>([&] { framework->service().subscribe(&plain); }),
              "a subscriber has to be both, an Executable and a CommunicationsServiceEventIfc: "
              "this one is an Executable only");
    EXPECT_TRUE(service_.received.empty());
    EXPECT_FALSE(framework->remove(plain));
}

TEST_F(FrameworkTest, ASubscriptionEndsWithItsScope)
{
    const std::unique_ptr<Framework> framework = makePumped();
    const auto left = [&]
    {
        EventRecorder short_;
        const Subscription subscription(*framework, short_);
        service_.sendHeld(1);
        framework->pump();
        EXPECT_EQ(short_.count("CallHeldEvent"), 1u);
        service_.sendHeld(2);
        throw std::runtime_error("as an assertion that fails");
    };
    EXPECT_THROW(left(), std::runtime_error);
    EXPECT_EQ(framework->pump(), 0u);

    framework->reconnect(std::make_unique<FakeConnection>(service_));
    EventRecorder again;
    const Subscription subscription(*framework, again);
    service_.channel.clear();
    subscription.renew();
    service_.sendHeld(3);
    EXPECT_EQ(framework->pump(), 1u);
    EXPECT_EQ(again.count("CallHeldEvent"), 1u);
}

TEST_F(FrameworkTest, ASubscriptionThatIsRefusedLeavesNothing)
{
    const std::unique_ptr<Framework> framework = makePumped();
    service_.answer = "sfiFailure";
    EXPECT_EQ(complaintOf<MarloException>([&] { Subscription(*framework, recorder_); }),
              "Subscribe was refused: sfiFailure");
    service_.delivery = Delivery::gone;
    EXPECT_THROW(Subscription(*framework, recorder_), MarloException);
    EXPECT_FALSE(framework->remove(recorder_));
}

/// Lets a callback be held where it is; later ones pass once it is open.
class Gate
{
public:
    void pass()
    {
        if (!passed_.exchange(true))
            entered_.set_value();
        opened_.wait();
    }
    void awaitEntered() { entered_.get_future().wait(); }
    void open() { opening_.set_value(); }

private:
    std::atomic<bool> passed_{false};
    std::promise<void> entered_, opening_;
    const std::shared_future<void> opened_ = opening_.get_future();
};

TEST_F(FrameworkTest, RequestsOfOtherThreadsDoNotWaitForACallback)
{
    const std::unique_ptr<Framework> framework = subscribed(make());
    Gate gate;
    recorder_.onEach([&](const kit::ReceivedEvent&) { gate.pass(); });
    service_.sendHeld(1);
    gate.awaitEntered();
    EXPECT_EQ(framework->service().answerCall("1001", 1), sfiSuccess);
    EXPECT_FALSE(framework->settle(milliseconds(1)));
    gate.open();
    EXPECT_TRUE(framework->settle(seconds(10)));
}

TEST_F(FrameworkTest, RemovingWaitsForTheCallbackThatIsRunning)
{
    const std::unique_ptr<Framework> framework = subscribed(make());
    Gate gate;
    std::atomic<std::size_t> begun{0};
    recorder_.onEach(
        [&](const kit::ReceivedEvent&)
        {
            ++begun;
            gate.pass();
        });
    service_.sendHeld(1);
    service_.sendHeld(2);
    gate.awaitEntered();
    std::future<bool> removed =
        std::async(std::launch::async, [&] { return framework->remove(recorder_); });
    // The callback cannot end before the gate opens, however long this waits.
    EXPECT_EQ(removed.wait_for(milliseconds(20)), std::future_status::timeout);
    gate.open();
    EXPECT_TRUE(removed.get());
    const std::size_t ended = recorder_.events().size();
    EXPECT_EQ(ended, begun) << "a callback was still running";
    service_.sendHeld(3);
    EXPECT_TRUE(framework->settle(seconds(10)));
    EXPECT_EQ(recorder_.events().size(), ended) << "an event came after the removal";
    EXPECT_FALSE(framework->remove(recorder_));
}

TEST_F(FrameworkTest, ASubscriberMayRemoveItselfInItsCallback)
{
    const std::unique_ptr<Framework> framework = subscribed(make());
    recorder_.onEach([&](const kit::ReceivedEvent&) { EXPECT_TRUE(framework->remove(recorder_)); });
    service_.sendHeld(1);
    service_.sendHeld(2);
    ASSERT_TRUE(framework->settle(seconds(10)));
    EXPECT_EQ(recorder_.events().size(), 1u);
}

TEST_F(FrameworkTest, AfterReconnectingOnlyTheNewServiceIsHeard)
{
    const std::unique_ptr<Framework> framework = subscribed(makePumped());
    service_.sendHeld(1);
    const kit::Connection::EventSink oldSink = service_.sink;
    service_.delivery = Delivery::gone;

    FakeService next;
    framework->reconnect(std::make_unique<FakeConnection>(next));
    EXPECT_TRUE(next.received.empty()) << "something was sent again";
    oldSink(service_.channel, "<Method>CallHeldEvent</Method><CallID>2</CallID>");
    EXPECT_EQ(framework->pump(), 0u);

    EXPECT_EQ(framework->service().subscribe(&recorder_), sfiSuccess);
    next.sendHeld(3);
    EXPECT_EQ(framework->pump(), 1u);
    EXPECT_EQ(recorder_.events().front().value("callId"), "3");
    EXPECT_THAT(next.received, ElementsAre("<Method>Subscribe</Method>"));
}

TEST_F(FrameworkTest, ThatTheServiceHasGoneIsToldOnceAndInItsTurn)
{
    std::vector<std::string> told;
    Framework* made = nullptr;
    FakeService next;
    Framework::Options options;
    options.gone = [&](const std::string& problem)
    {
        told.push_back(problem + " after " + std::to_string(recorder_.events().size()));
        made->reconnect(std::make_unique<FakeConnection>(next));
        made->service().subscribe(&recorder_);
    };
    const std::unique_ptr<Framework> framework = subscribed(makePumped(options));
    made = framework.get();
    service_.sendHeld(1);
    const kit::Connection::GoneSink old = service_.goneSink;
    old();
    old();
    EXPECT_FALSE(framework->settle(milliseconds(0)));
    EXPECT_EQ(framework->pump(), 1u);
    old();  // of a connection that is no longer in use
    next.sendHeld(2);
    EXPECT_EQ(framework->pump(), 1u);
    EXPECT_THAT(told, ElementsAre("the fake service is gone after 1"));

    // One that does not notice by itself: with the first request that finds it gone.
    next.delivery = Delivery::gone;
    framework->service().answerCall("1001", 1);
    framework->service().setIsInServiceInitiatedState("1001", true);
    FakeService third;
    framework->reconnect(std::make_unique<FakeConnection>(third));
    third.delivery = Delivery::gone;
    framework->service().setIsInServiceInitiatedState("1001", true);
    framework->service().answerCall("1001", 1);
    third.delivery = Delivery::done;
    next.delivery = Delivery::done;
    framework->pump();
    EXPECT_THAT(
        told, ElementsAre("the fake service is gone after 1", "the fake service is gone after 2"));
}

TEST_F(FrameworkTest, ACallbackMayCallWhileTheFrameworkIsDestroyed)
{
    std::unique_ptr<Framework> framework = make();
    CommunicationsServiceIfc& service = framework->service();
    Gate gate;
    int result = sfiFailure;
    recorder_.onEach(
        [&](const kit::ReceivedEvent&)
        {
            gate.pass();
            result = service.answerCall("1001", 1);
        });
    service.subscribe(&recorder_);
    service_.sendHeld(1);
    gate.awaitEntered();
    std::future<void> destroyed = std::async(std::launch::async, [&] { framework.reset(); });
    EXPECT_EQ(destroyed.wait_for(milliseconds(20)), std::future_status::timeout);
    gate.open();
    destroyed.get();
    EXPECT_EQ(result, sfiSuccess);
}

TEST_F(FrameworkTest, ThereIsAlwaysAConnection)
{
    EXPECT_EQ(complaintOf<std::invalid_argument>([] { Framework(nullptr); }),
              "the framework needs a connection");
    const std::unique_ptr<Framework> framework = make();
    EXPECT_THROW(framework->reconnect(nullptr), std::invalid_argument);
    EXPECT_EQ(framework->service().answerCall("1001", 7), sfiSuccess) << "the old one is lost";
}

TEST_F(FrameworkTest, AConnectionMayOutliveTheFramework)
{
    std::unique_ptr<Framework> framework = subscribed(make());
    const std::shared_ptr<kit::Connection> held = framework->connection();
    framework.reset();
    service_.sendHeld(1);
    EXPECT_TRUE(recorder_.events().empty());
}

TEST_F(FrameworkTest, TheObserverSeesAllThatPasses)
{
    std::vector<std::string> seen;
    Framework::Options options;
    options.observer = [&](const Passage& passage)
    {
        static const char* const what[] = {"request", "answer", "message", "arrival", "event"};
        EXPECT_NE(passage.time, std::chrono::system_clock::time_point());
        seen.push_back(std::string(what[static_cast<int>(passage.what)]) + " " +
                       std::to_string(passage.number) + " " +
                       std::to_string(static_cast<int>(passage.delivery)) + " " + passage.channel +
                       " " + passage.text);
    };
    const std::unique_ptr<Framework> framework = subscribed(makePumped(options));
    framework->service().InitializeOrFinalizeServerFeatures("1", true);
    service_.sendHeld(7);
    framework->inject("subscriber-1", "<Method>x</Method>");
    framework->pump();
    service_.delivery = Delivery::gone;
    framework->service().alternateCalls("1");
    EXPECT_THAT(seen, ElementsAre("request 1 0 subscriber-1 <Method>Subscribe</Method>",
                                  "answer 1 0 subscriber-1 sfiSuccess",
                                  "message 0 0  <Method>InitializeOrFinalizeServerFeatures</Method>"
                                  "<Line>1</Line><initialize>1</initialize>",
                                  "arrival 0 0 subscriber-1 <Method>CallHeldEvent</Method>"
                                  "<CallID>7</CallID>",
                                  "arrival 0 0 subscriber-1 <Method>x</Method>",
                                  "event 0 0 subscriber-1 <Method>CallHeldEvent</Method>"
                                  "<CallID>7</CallID>",
                                  "event 0 0 subscriber-1 <Method>x</Method>",
                                  "request 2 0  <Method>AlternateCalls</Method><Line>1</Line>",
                                  "answer 2 2  "));
}

/// Why the library cannot be used.
std::string refusal(const std::string& path)
{
    return complaintOf<kit::LibraryError>([&] { const kit::Library library(path); });
}

TEST(LibraryFile, SaysWhyItCannotBeUsed)
{
    const std::string noInvoker = NO_INVOKER_LIBRARY;
    const std::string openSymbol = OPEN_SYMBOL_LIBRARY;
    EXPECT_EQ(refusal("/nowhere/lib.so"), "there is no library /nowhere/lib.so");
    EXPECT_THAT(refusal("libNobodyHas.so"),
                HasSubstr("the library libNobodyHas.so cannot be opened: "));
    EXPECT_THAT(refusal("/dev/null"), HasSubstr("the library /dev/null cannot be opened: "));
    EXPECT_EQ(refusal(noInvoker),
              "the library " + noInvoker + " has no createCommunicationsServiceEventInvoker");
    EXPECT_THAT(refusal(openSymbol), HasSubstr("undefined symbol"));
}

TEST(LibraryFile, TheEnvironmentNamesAnother)
{
    const std::string usual = kit::Library().path();
    setenv("COMMUNICATIONS_SERVICE_LIBRARY", "/nowhere/else.so", 1);
    EXPECT_EQ(refusal(""), "there is no library /nowhere/else.so");
    EXPECT_EQ(refusal(usual), "nothing") << "a path given goes first";
    unsetenv("COMMUNICATIONS_SERVICE_LIBRARY");
}

TEST(ExceptionText, SurvivesACopyOfTheBase)
{
    for (const std::size_t length : {0U, 1U, 1023U, 1024U, 5000U})
    {
        const std::string text(length, 'x');
        const kit::ChannelException thrown(text);
        const MarloException copy(thrown);
        EXPECT_EQ(kit::textOf(copy), text.substr(0, 1023));
    }
}

TEST(Logging, IsOffUntilASinkIsSet)
{
    std::vector<std::string> lines;
    EXPECT_EQ(loggingOnAppOxa("x", 1), 0);
    kit::setLogSink(
        [&](const kit::LogLine& line)
        {
            lines.push_back(line.component + " " + line.sourceFile + " " +
                            std::to_string(line.level) + " " + std::to_string(line.line) + " " +
                            line.message);
        },
        5);
    EXPECT_NE(loggingOnAppOxa("x", 5), 0);
    EXPECT_EQ(loggingOnAppOxa("x", 6), 0);
    logAppOxa("part", "file.cpp", 5, 12, "told");
    logAppOxa("part", "file.cpp", 6, 13, "not told");
    kit::log(1, "ours");
    kit::setLogSink({});
    EXPECT_EQ(loggingOnAppOxa("x", 1), 0);
    kit::log(1, "nobody hears");
    EXPECT_THAT(lines, ElementsAre("part file.cpp 5 12 told", "framework  1 0 ours"));
}

TEST(SerializerLists, NumbersAreAddedToTheVector)
{
    std::string text = "1,2,";
    std::vector<int> numbers = {7};
    Serializer::deserialize(text, numbers);
    EXPECT_THAT(numbers, ElementsAre(7, 1, 2));
}

}  // namespace

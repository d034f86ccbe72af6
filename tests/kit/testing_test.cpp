// The helpers for applications' tests.
#include "Complaint.h"
#include "FakeConnection.h"
#include "kit/binding/Caller.h"
#include "kit/framework/Exception.h"
#include "kit/framework/Framework.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/testing/EventInjector.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/FaultConnection.h"
#include "kit/testing/MockCommunicationsService.h"
#include "kit/testing/MockCommunicationsServiceEvents.h"
#include "kit/testing/RecordingChannel.h"
#include "kit/testing/ServiceProcess.h"
#include "tests/support/Folder.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace
{

using kit::Delivery;
using kit::Fault;
using kit::test::complaintOf;
using kit::test::FakeConnection;
using kit::test::FakeService;
using kit::test::refused;
using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::_;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::Return;

TEST(RecordingChannelTest, AnswersAsScripted)
{
    kit::RecordingChannel channel;
    CommunicationsServiceIfc& service = channel.service();
    channel.answer("AnswerCall", "sfiFailure");
    channel.answerOnce("AnswerCall", "sfiFailureCallBackToMany");
    channel.answerOnce("AnswerCall", "sfiSuccess");
    EXPECT_EQ(service.answerCall("1", 1), sfiFailureCallBackToMany);
    EXPECT_EQ(service.answerCall("1", 2), sfiSuccess);
    EXPECT_EQ(service.answerCall("1", 3), sfiFailure);
    EXPECT_EQ(service.retrieveCall("1", 4), sfiSuccess) << "not scripted";
    channel.answerAll("sfiFailureCallBackNoCallInfo");
    EXPECT_EQ(service.retrieveCall("1", 5), sfiFailureCallBackNoCallInfo);
    EXPECT_EQ(service.answerCall("1", 6), sfiFailure);
    channel.answerWith("AnswerCall", [](const kit::RecordingChannel::Record& request)
                       { return request.field("CallID") == "7" ? "sfiSuccess" : "sfiFailure"; });
    EXPECT_EQ(service.answerCall("1", 7), sfiSuccess);
    EXPECT_EQ(service.answerCall("1", 8), sfiFailure);
    channel.throwOn("Subscribe", "no service");
    kit::EventRecorder events;
    EXPECT_EQ(complaintOf<MarloException>([&] { service.subscribe(&events); }), "no service");
}

TEST(RecordingChannelTest, RecordsWhatIsSent)
{
    kit::RecordingChannel channel;
    channel.service().answerCall("1001", 7);
    channel.service().setIsInServiceInitiatedState("1001", false);
    channel.service().answerCall("1002", 8);
    EXPECT_EQ(channel.requests().size(), 3u);
    const std::vector<kit::RecordingChannel::Record> answered = channel.requests("AnswerCall");
    ASSERT_EQ(answered.size(), 2u);
    EXPECT_EQ(answered[1].text, "<Method>AnswerCall</Method><Line>1002</Line><CallID>8</CallID>");
    EXPECT_EQ(answered[1].field("Line"), "1002");
    EXPECT_EQ(answered[1].field("callId"), "8");
    EXPECT_EQ(channel.requests()[1].sending, kit::Sending::oneWay);
    channel.forget();
    EXPECT_TRUE(channel.requests().empty());
}

TEST(RecordingChannelTest, AMisspeltNameIsNotTaken)
{
    kit::RecordingChannel channel;
    EXPECT_EQ(refused([&] { channel.answer("answercall", ""); }),
              "there is no request answercall, did you mean AnswerCall?");
    EXPECT_EQ(refused([&] { channel.requests("Bananas"); }), "there is no request Bananas");
    channel.service().answerCall("1001", 7);
    channel.service().SendCSTARequest("1001", "<a>1</a>");
    channel.service().processSignallingComponentEvent("x:y", 3);
    EXPECT_EQ(refused([&] { channel.requests()[0].field("calID"); }),
              "unknown field calID in AnswerCall, did you mean callId?");
    EXPECT_EQ(channel.requests()[1].field("cstaRequest"), "<a>1</a>");
    EXPECT_EQ(channel.requests()[2].field("data"), "x:y");
}

class EventsTest : public testing::Test
{
protected:
    kit::EventRecorder events;
    kit::EventInjector injector{events};
};

TEST_F(EventsTest, AreSentAsFieldsAndAsTextsOfAnyKind)
{
    injector.inject("DoNotDisturbEvent", {{"deviceId", "1001"}});
    injector.injectWithout({"doNotDisturbOn"}, "DoNotDisturbEvent", {{"deviceId", "1001"}});
    injector.raw("<Method>DoNotDisturbEvent</Method><deviceId>1001</deviceId>"
                 "<doNotDisturbOn>2x</doNotDisturbOn>");
    injector.raw("no message at all");
    ASSERT_EQ(events.events().size(), 3u);
    EXPECT_THAT(events.events()[0].values, ElementsAre("1001", "0"));
    EXPECT_THAT(events.events()[1].values, ElementsAre("1001", "1"));
    EXPECT_THAT(events.events()[2].values, ElementsAre("1001", "1"));
    EXPECT_EQ(injector.handled(), 4);
}

TEST_F(EventsTest, PassOnWhatACallbackThrows)
{
    events.onEach([](const kit::ReceivedEvent&) { throw std::runtime_error("from a callback"); });
    EXPECT_THROW(injector.inject("DevicesChangedEvent"), std::runtime_error);
    EXPECT_EQ(injector.handled(), 0);
}

TEST_F(EventsTest, AreRefusedWithWhatIsWrong)
{
    struct Plain : Executable
    {
        void init(Context&) override {}
        void shutdown() override {}
    } plain;
    EXPECT_EQ(refused([&] { kit::EventInjector none(plain); }),
              "the subscriber does not implement CommunicationsServiceEventIfc");
    EXPECT_EQ(refused([&] { injector.inject("CallHeldEvnt"); }),
              "there is no event CallHeldEvnt, did you mean CallHeldEvent?");
    const kit::Values misspelt = {{"calId", "1"}};
    EXPECT_EQ(refused([&] { injector.inject("CallHeldEvent", misspelt); }),
              "unknown field calId in CallHeldEvent, did you mean callId?");
    EXPECT_EQ(refused([&] { injector.injectWithout({"line"}, "CallHeldEvent"); }),
              "unknown field line in CallHeldEvent, did you mean lineId?");
}

TEST_F(EventsTest, AreAwaitedAsAskedAndCountedOnce)
{
    injector.inject("CallHeldEvent", {{"lineId", "1001"}, {"callId", "1"}});
    injector.inject("CallHeldEvent", {{"lineId", "1001"}, {"callId", "2"}});
    // Out of the order in which they came.
    EXPECT_TRUE(events.waitFor("CallHeldEvent", {{"callId", "2"}}, milliseconds(0)));
    const auto first = events.waitFor("CallHeldEvent", {{"LineID", "1001"}}, milliseconds(0));
    ASSERT_TRUE(first);
    EXPECT_EQ(first.event.value("callId"), "1");
    EXPECT_FALSE(events.waitFor("CallHeldEvent", {}, milliseconds(0)));

    std::thread later([&] { injector.inject("DevicesChangedEvent"); });
    EXPECT_TRUE(events.waitFor("DevicesChangedEvent", {}, seconds(10)));
    later.join();
    EXPECT_EQ(events.count("CallHeldEvent"), 2u);
    EXPECT_EQ(events.events().size(), 3u);
    events.forget();
    EXPECT_EQ(events.count("CallHeldEvent"), 0u);
}

TEST_F(EventsTest, ThatAreMissingHaveANearestOne)
{
    const kit::Values wanted = {{"lineId", "1001"}, {"feature", "hold"}};
    EXPECT_EQ(events.waitFor("FeatureSuccessEvent", wanted, milliseconds(0)).problem,
              "no FeatureSuccessEvent lineId=1001 feature=hold within 0 s; nothing else came");
    injector.inject("FeatureSuccessEvent", {{"lineId", "1001"}, {"feature", "retrieve"}});
    injector.inject("FeatureSuccessEvent", {{"lineId", "1002"}, {"feature", "retrieve"}});
    injector.inject("CallHeldEvent", {{"lineId", "1001"}});
    EXPECT_EQ(events.waitFor("FeatureSuccessEvent", wanted, milliseconds(0)).problem,
              "no FeatureSuccessEvent lineId=1001 feature=hold within 0 s; nearest: "
              "FeatureSuccessEvent lineId=1001 callId=0 feature=retrieve (feature is retrieve)");
    EXPECT_THAT(events.waitFor("AgentStateEvent", {}, milliseconds(0)).problem,
                HasSubstr("(it is CallHeldEvent)"));
    EXPECT_EQ(refused([&] { events.waitFor("CallHeld", {}); }),
              "there is no event CallHeld, did you mean CallHeldEvent?");
    const kit::Values noNumber = {{"callId", "x"}};
    EXPECT_EQ(refused([&] { events.waitFor("CallHeldEvent", noNumber); }),
              "callId is a number, not \"x\"");
}

TEST_F(EventsTest, HaveNamesForNumbers)
{
    injector.inject("securityStatusChanged", {{"lineURI", "sip:1"},
                                              {"callId", "7"},
                                              {"securityStatus", "encrypted"},
                                              {"callIdsRecorded", "7,8"}});
    injector.inject("AgentStateEvent", {{"deviceId", "the desk"}});
    EXPECT_EQ(events.events()[0].inWords(),
              "securityStatusChanged lineURI=sip:1 callId=7 securityStatus=encrypted "
              "callIdsRecorded=7,8 callLineURIsRecorded=\"\"");
    EXPECT_EQ(events.events()[1].inWords(),
              "AgentStateEvent deviceId=\"the desk\" agentState=\"\"");
}

TEST_F(EventsTest, HaveNoMisspeltFields)
{
    injector.inject("CallHeldEvent", {{"callId", "7"}});
    const kit::ReceivedEvent held = events.events().front();
    EXPECT_EQ(held.value("CallID"), "7");
    EXPECT_TRUE(held.has("callId"));
    EXPECT_FALSE(held.has("callState"));
    for (const auto read : {&kit::ReceivedEvent::value, &kit::ReceivedEvent::text})
        EXPECT_EQ(refused([&] { (held.*read)("calId"); }),
                  "unknown field calId in CallHeldEvent, did you mean callId?");
}

TEST(MocksTest, RequestsSucceedUnlessToldOtherwise)
{
    testing::NiceMock<kit::MockCommunicationsService> service;
    CommunicationsServiceIfc& ifc = service;
    kit::EventRecorder events;
    for (const kit::Operation& operation : kit::operations())
    {
        const kit::Outcome outcome = kit::call(ifc, operation, {}, &events);
        EXPECT_EQ(outcome.number, outcome.returned == kit::Outcome::Returned::result ? 5 : 0)
            << operation.name;
    }
    EXPECT_CALL(service, answerCall("1001", 7)).WillOnce(Return(sfiFailure));
    EXPECT_EQ(ifc.answerCall("1001", 7), sfiFailure);
}

TEST(MocksTest, EventsComeFromTheRealInvoker)
{
    testing::StrictMock<kit::MockCommunicationsServiceEvents> events;
    kit::EventInjector injector(events);
    EXPECT_CALL(events, onCallHeldEvent("1001", 7));
    injector.inject("CallHeldEvent", {{"lineId", "1001"}, {"callId", "7"}});
    // The three flags, each one alone.
    for (int on = 0; on < 3; ++on)
    {
        communications::IncomingCallEvent call = {};
        EXPECT_CALL(events, onIncomingCall).WillOnce(testing::SaveArg<0>(&call));
        injector.raw(kit::event("IncomingCallEvent", "1", 2, "3", "4", "5", "6", "7", on == 0, 9,
                                "10", "11", 12, on == 1, 14, 15, 16, on == 2));
        EXPECT_EQ(std::tie(call.lineId, call.callId, call.uri, call.name, call.fullPai,
                           call.alertUri, call.alertInfoParam, call.callType, call.diversionUri,
                           call.diversionName, call.diversionReason, call.resourcePriority,
                           call.ilCallLevel, call.ilLocalLevel),
                  std::make_tuple("1", 2, "3", "4", "5", "6", "7", 9, "10", "11", 12, 14, 15, 16));
        EXPECT_EQ(std::tie(call.alertAutoAnswer, call.zipAutoAnswer, call.isVideoCall),
                  std::make_tuple(on == 0, on == 1, on == 2));
    }
}

class FaultTest : public testing::Test
{
protected:
    FaultTest()
    {
        connection_.setEventSink([this](const std::string&, const std::string& event)
                                 { events_.push_back(event); });
    }

    /// How a request ends, and what is in the answer.
    std::string ask(milliseconds timeout = milliseconds(20))
    {
        std::string answer = "untouched";
        switch (connection_.request("<Method>AnswerCall</Method>", answer, timeout))
        {
        case Delivery::done:
            return answer;
        case Delivery::timedOut:
            return "timed out, " + answer;
        case Delivery::gone:
            break;
        }
        return "gone, " + answer;
    }

    FakeService service_;
    kit::FaultConnection connection_{std::make_unique<FakeConnection>(service_)};
    std::vector<std::string> events_;
};

TEST_F(FaultTest, EachFaultSpoilsARequest)
{
    const struct
    {
        Fault fault;
        const char* outcome;
        std::size_t reached;  ///< how often the service got it
    } cases[] = {
        {Fault::noAnswer, "timed out, untouched", 1},
        {Fault::failure, "sfiFailure", 0},
        {Fault::empty, "", 1},
        {Fault::truncated, "sfiSu", 1},
        {Fault::duplicate, "sfiSuccess", 2},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.outcome);
        service_.received.clear();
        connection_.inject(c.fault, "AnswerCall", 1);
        EXPECT_EQ(ask(), c.outcome);
        EXPECT_EQ(service_.received.size(), c.reached);
        EXPECT_EQ(ask(), "sfiSuccess") << "once, and then no more";
    }
    connection_.inject(Fault::garbage, "", 1);
    EXPECT_EQ(ask(), "\x01<<<\xff garbage </Method><");
    connection_.inject(Fault::exception, "", 1);
    EXPECT_EQ(complaintOf<MarloException>([&] { ask(); }), "the channel failed on command");
    EXPECT_EQ(connection_.happened(), 7);
}

TEST_F(FaultTest, GoneStaysGoneAndIsToldOnce)
{
    int told = 0;
    connection_.setGoneSink([&] { ++told; });
    connection_.inject(Fault::gone, "AnswerCall", 1);
    EXPECT_EQ(ask(), "gone, untouched");
    EXPECT_EQ(told, 1);
    EXPECT_EQ(connection_.whyGone(), "on command");
    connection_.clear();
    EXPECT_EQ(ask(), "gone, untouched");
    EXPECT_EQ(connection_.post("SigEvent:x"), Delivery::gone);
    service_.sink("channel", "<Method>DevicesChangedEvent</Method>");
    service_.goneSink();
    EXPECT_TRUE(events_.empty());
    EXPECT_TRUE(service_.received.empty());
    EXPECT_EQ(told, 1);
    connection_.setGoneSink([&] { told += 10; });
    EXPECT_EQ(told, 11) << "who asks later is told at once";
}

TEST_F(FaultTest, OverAServiceInThisProcessNothingWaits)
{
    service_.takesTime = false;
    kit::FaultConnection connection(std::make_unique<FakeConnection>(service_));
    std::string answer = "untouched";
    connection.inject(Fault::noAnswer, "Activate", 1);
    connection.inject(Fault::delay, "Activate", 1, seconds(3600));
    connection.inject(Fault::delay, "Activate", 1, seconds(3599));
    const std::string request = "<Method>Activate</Method>";
    EXPECT_EQ(connection.request(request, answer, seconds(3600)), Delivery::timedOut);
    EXPECT_EQ(connection.request(request, answer, seconds(3600)), Delivery::timedOut);
    EXPECT_EQ(answer, "untouched");
    EXPECT_EQ(connection.request(request, answer, seconds(3600)), Delivery::done);
    EXPECT_EQ(answer, "sfiSuccess");
    EXPECT_FALSE(connection.takesTime());
    EXPECT_FALSE(kit::EmbeddedConnection().takesTime());
}

TEST_F(FaultTest, ALateAnswerIsLate)
{
    connection_.inject(Fault::delay, "AnswerCall", 1, milliseconds(5));
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(ask(seconds(60)), "sfiSuccess");
    EXPECT_GE(std::chrono::steady_clock::now() - before, milliseconds(5));
    connection_.inject(Fault::delay, "AnswerCall", 1, seconds(3600));
    EXPECT_EQ(ask(milliseconds(1)), "timed out, untouched");
}

TEST_F(FaultTest, FailsNTimesAndThenSucceeds)
{
    connection_.inject(Fault::failure, "AnswerCall", 2);
    connection_.inject(Fault::empty, "AnswerCall", 1);
    for (const char* answer : {"sfiFailure", "sfiFailure", "", "sfiSuccess"})
        EXPECT_EQ(ask(), answer);
}

TEST_F(FaultTest, EventsAreSpoiltToo)
{
    const std::string event = "<Method>DevicesChangedEvent</Method>";
    const std::pair<Fault, std::vector<std::string>> cases[] = {
        {Fault::noAnswer, {}},
        {Fault::empty, {""}},
        {Fault::truncated, {"<Method>DevicesCha"}},
        {Fault::duplicate, {event, event}},
    };
    connection_.inject(Fault::duplicate, "", 1);  // of any request: no event takes it
    for (const auto& [fault, expected] : cases)
    {
        connection_.inject(fault, "DevicesChangedEvent", 1);
        service_.sink("channel", event);
        EXPECT_EQ(events_, expected);
        events_.clear();
    }
    connection_.inject(Fault::gone, "DevicesChangedEvent", 1);
    service_.sink("channel", event);
    service_.sink("channel", event);
    EXPECT_TRUE(events_.empty());
    EXPECT_EQ(refused([&] { connection_.inject(Fault::empty, "DeviceChangedRequest"); }),
              "there is no request DeviceChangedRequest");
}

TEST_F(FaultTest, OneWayMessages)
{
    const std::string message = "<Method>setIsInServiceInitiatedState</Method>";
    connection_.inject(Fault::exception, "", 1);
    EXPECT_THROW(connection_.post("SigEvent:x"), MarloException);
    connection_.inject(Fault::gone, "Subscribe", 1);
    EXPECT_EQ(connection_.post(std::string("<Method>Subscribe\0</Method>", 27)), Delivery::done);
    for (const auto& [fault, reached] :
         {std::pair(Fault::duplicate, 2U), std::pair(Fault::gone, 0U)})
    {
        service_.received.clear();
        connection_.inject(fault, "setIsInServiceInitiatedState", 1);
        EXPECT_EQ(connection_.post(message), reached != 0 ? Delivery::done : Delivery::gone);
        EXPECT_EQ(service_.received.size(), reached);
    }
}

/// A program that takes the place of the service, written as a shell script.
class Script
{
public:
    explicit Script(const std::string& body)
    {
        std::ofstream(path()) << "#!/bin/sh\n" << body << "\n";
        chmod(path().c_str(), 0700);
    }

    std::string path() const { return folder_ / "script"; }

private:
    const Folder folder_;
};

bool exists(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0;
}

TEST(ServiceProcessTest, StartsKillsAndRestarts)
{
    const Script script(
        "test ! -e \"$2\" || exit 1; : > \"$2\"; echo \"ready $2\"; exec sleep 600");
    std::string socket;
    {
        kit::ServiceProcess process(script.path());
        socket = process.socket();
        const pid_t first = process.pid();
        EXPECT_TRUE(exists(socket));
        EXPECT_EQ(::kill(first, 0), 0);
        process.freeze();
        process.thaw();
        process.kill();
        EXPECT_FALSE(process.running());
        EXPECT_NE(::kill(first, 0), 0);
        process.restart();
        EXPECT_TRUE(process.running());
        EXPECT_EQ(process.socket(), socket);
        process.restart();
        kit::ServiceProcess another(script.path());
        EXPECT_NE(another.socket(), socket);
    }
    EXPECT_FALSE(exists(socket));
    EXPECT_FALSE(exists(socket.substr(0, socket.rfind('/'))));
}

std::string refusal(const std::string& program)
{
    return complaintOf<std::runtime_error>(
        [&] { const kit::ServiceProcess process(program, {}, seconds(10)); });
}

TEST(ServiceProcessTest, SaysWhyItDoesNotRun)
{
    EXPECT_EQ(refusal("/nowhere/service"),
              "the service /nowhere/service cannot be started: No such file or directory");
    setenv("COMMUNICATIONS_SERVICE_SIM", "/named", 1);
    EXPECT_EQ(refusal(""), "the service /named cannot be started: No such file or directory");
    unsetenv("COMMUNICATIONS_SERVICE_SIM");
    const Script silent("exit 3");
    EXPECT_THAT(refusal(silent.path()), HasSubstr("does not listen at "));
    const Script talkative("echo no socket today; exec sleep 600");
    EXPECT_THAT(refusal(talkative.path()), HasSubstr("; it said: no socket today"));
    const Script dumb("exec sleep 600");
    EXPECT_THROW(kit::ServiceProcess(dumb.path(), {}, milliseconds(20)), std::runtime_error);
}

}  // namespace

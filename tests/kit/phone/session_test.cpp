// Lines that are carried out over a service in this process.

#include "kit/phone/Session.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/SimulatedService.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <unistd.h>

namespace kit::phone
{

namespace
{

class Phone : public testing::Test
{
protected:
    Phone() : display_(out_, errors_, false) { connect(); }

    /// A phone at a fresh service.
    void connect()
    {
        service_ = std::make_shared<SimulatedService>();
        Session::Settings settings;
        settings.phone.connect = [this] { return std::make_unique<EmbeddedConnection>(service_); };
        settings.phone.advance = [this](Timekeeper::Time limit)
        {
            ++steps_;
            return service_->advanceToNext(limit);
        };
        settings.phone.realTime = false;
        session_ = std::make_unique<Session>(settings, display_);
    }

    void subscribe()
    {
        EXPECT_EQ(run("subscribe"), Verdict::met);
        EXPECT_EQ(run("activate"), Verdict::met);
        EXPECT_EQ(run("forget"), Verdict::met);
    }

    /// As line 3 of the file "s".
    Verdict run(const std::string& line)
    {
        out_.str("");
        errors_.str("");
        return session_->execute(line, {"s", 3});
    }

    std::shared_ptr<SimulatedService> service_;
    int steps_ = 0;
    std::ostringstream out_;
    std::ostringstream errors_;
    Display display_;
    std::unique_ptr<Session> session_;
};

TEST_F(Phone, JudgesEachLine)
{
    subscribe();
    const struct
    {
        const char* line;
        Verdict verdict;
        const char* error;
    } rows[] = {
        {"", Verdict::met, ""},
        {"# nothing", Verdict::met, ""},
        {"getDevices", Verdict::met, ""},
        {"! getDevices", Verdict::unmet, "s:3: getDevices was to fail, but it was carried out\n"},
        {"hold 99", Verdict::unmet, "s:3: holdCall returned sfiFailure\n"},
        {"! hold 99", Verdict::met, ""},
        {"isCallHoldPossible 1001", Verdict::met, ""},
        {"! isCallHoldPossible 1001", Verdict::met, ""},
        {"expect CallHeldEvent within 10ms", Verdict::unmet,
         "s:3: expected CallHeldEvent within 10 ms\n  events that came: FeatureFailedEvent\n"},
        {"! expect CallHeldEvent within 10ms", Verdict::met, ""},
        {"expect no CallHeldEvent within 10ms", Verdict::met, ""},
        {"expect no FeatureFailedEvent within 10ms", Verdict::unmet,
         "s:3: no FeatureFailedEvent was to come, but it came\n"
         "  came: FeatureFailedEvent lineId=1001 callId=99 feature=hold "
         "featureFailure=noSuchCall\n"},
        {"sim show nothing", Verdict::unmet,
         "s:3: sim: nothing called \"nothing\" to show, one of lines, calls, lamps, clients, "
         "callbacks, mailbox, faults, robots, system, log\n"},
        {"! sim show nothing", Verdict::met, ""},
        {"holdd", Verdict::mistake, "s:3:1: there is no command holdd, did you mean hold?\n"},
        {"! holdd", Verdict::mistake, "s:3:3: there is no command holdd, did you mean hold?\n"},
        {"wire maybe", Verdict::mistake, "s:3:6: \"maybe\" is no switch; on and off are\n"},
        {"wait 1x", Verdict::mistake,
         "s:3:6: 1x is no time; write it as 250ms, 1.5s, 2min or 1h\n"},
        {"lines now", Verdict::mistake, "s:3:7: lines stands alone; what is now?\n"},
        {"raw <Method>Activate</Method>", Verdict::met, ""},
        {"raw <Method>Activat</Method>", Verdict::unmet, "s:3: the answer is sfiFailure\n"},
    };
    for (const auto& row : rows)
    {
        EXPECT_EQ(run(row.line), row.verdict) << row.line;
        EXPECT_EQ(errors_.str(), row.error) << row.line;
    }
}

TEST_F(Phone, ACallWithoutASingleNumberOfACall)
{
    subscribe();
    EXPECT_EQ(run("dial 2001"), Verdict::met);
    EXPECT_EQ(out_.str(),
              "outgoingCallMake line=1001 callId=0 destination=2001: sfiSuccess\n"
              "* CallStateChangeEvent lineId=1001 callId=1 callState=initiated uri=sip:2001 "
              "name=\"Anna Answer\"\n"
              "* CallStateChangeEvent lineId=1001 callId=1 callState=delivered uri=sip:2001 "
              "name=\"Anna Answer\" callBackFeatureAvailable=true\n");
    EXPECT_EQ(run("expect CallStateChangeEvent callState=connected within 1s"), Verdict::unmet);
    EXPECT_EQ(run("expect CallStateChangeEvent callState=connected as call"), Verdict::met);
    EXPECT_EQ(run("calls"), Verdict::met);
    EXPECT_EQ(out_.str(), "1 line=1001 connected sip:2001\n");
    EXPECT_EQ(run("hold $call"), Verdict::met);
    EXPECT_EQ(run("retrieve"), Verdict::met);
    EXPECT_EQ(run("hangup"), Verdict::met);
    EXPECT_EQ(run("hangup"), Verdict::mistake);
    EXPECT_EQ(errors_.str(),
              "s:3: callClear needs callId: no call is there to be ended; there is no call\n");
}

TEST_F(Phone, AnExpectationPassesWhatCameBeforeTheEventThatItMet)
{
    subscribe();
    run("event CallHeldEvent callId=1");
    run("event CallHeldEvent callId=2");
    run("event CallHeldEvent callId=3");
    EXPECT_EQ(run("expect CallHeldEvent callId=2 within 0s"), Verdict::met);
    EXPECT_EQ(run("expect CallHeldEvent callId=2 within 0s"), Verdict::unmet);
    EXPECT_EQ(run("expect CallHeldEvent callId=1 within 0s"), Verdict::unmet);
    EXPECT_EQ(run("expect CallHeldEvent callId=3 within 0s"), Verdict::met);
    run("event CallHeldEvent callId=4");
    run("forget");
    EXPECT_EQ(run("expect CallHeldEvent within 0s"), Verdict::unmet);
    EXPECT_NE(errors_.str().find("such an event came earlier"), std::string::npos);
}

TEST_F(Phone, InjectsEventsWithFieldsLeftOut)
{
    EXPECT_EQ(run("event RegistrationStateChangeEvent registrationResult=done"), Verdict::met);
    EXPECT_EQ(out_.str(),
              "* RegistrationStateChangeEvent registered=true registrationResult=done\n");
    EXPECT_EQ(run("event <Method>CallHeldEvent</Method><CallID>7</CallID>"), Verdict::met);
    EXPECT_EQ(out_.str(), "* CallHeldEvent callId=7\n");
    EXPECT_EQ(run("event \"<Method>unheard</Method>\""), Verdict::met);
    EXPECT_EQ(out_.str(), "the library has no callback for it\n");
    EXPECT_EQ(run("event CallHeldEvent callId=seven"), Verdict::mistake);
    EXPECT_EQ(errors_.str(), "s:3:21: callId is a number, not \"seven\"\n");
}

TEST_F(Phone, ChecksWhatTheLastOperationReturned)
{
    EXPECT_EQ(run("check result=sfiSuccess"), Verdict::mistake);
    subscribe();
    run("forward busy 2001");
    run("forward busy");
    EXPECT_EQ(run("check result=sfiSuccess status=on uri=20*"), Verdict::met);
    EXPECT_EQ(run("check uri=\"20*\""), Verdict::unmet);
    EXPECT_EQ(errors_.str(),
              "s:3: getForwardingConfiguration returned uri=2001, awaited was 20*\n");
    EXPECT_EQ(run("check cfnrRingCount=4"), Verdict::unmet);
    EXPECT_EQ(run("check state=on"), Verdict::mistake);
    EXPECT_EQ(errors_.str(),
              "s:3:7: getForwardingConfiguration returns result, status, uri, cfnrRingCount, not "
              "state\n");
    run("messages");
    EXPECT_EQ(run("check type=voice returnType=dial"), Verdict::met);
}

TEST_F(Phone, ShowsWhatTravels)
{
    run("wire on");
    EXPECT_EQ(run("setMicrophoneMute on"), Verdict::met);
    EXPECT_EQ(out_.str(), "  -> <Method>SetMicrophoneMute</Method><Status>1</Status>\n"
                          "  <- sfiSuccess\n"
                          "setMicrophoneMute status=true: sfiSuccess\n");
    run("subscribe");
    run("event CallHeldEvent callId=7");
    EXPECT_EQ(out_.str(), "  <= <Method>CallHeldEvent</Method><CallID>7</CallID>\n"
                          "* CallHeldEvent callId=7\n");
}

TEST_F(Phone, TellsAtOnceThatTheServiceIsGone)
{
    const std::string gone = "the service in this process is gone; \"reconnect\" connects anew\n";
    subscribe();
    run("dial 2001");
    EXPECT_EQ(run("sim go away"), Verdict::met);
    EXPECT_NE(out_.str().find(gone), std::string::npos) << out_.str();
    EXPECT_EQ(run("calls"), Verdict::met);
    EXPECT_EQ(out_.str(), "no calls\n") << "what was believed of calls is forgotten";
    EXPECT_EQ(run("getDevices"), Verdict::unreachable);
    EXPECT_EQ(out_.str(), "getDevices: sfiFailure\n");
    EXPECT_EQ(errors_.str(), "s:3: GetDevices has no answer: " + gone);
    EXPECT_EQ(run("hold"), Verdict::unreachable);
    EXPECT_EQ(errors_.str(), "s:3: " + gone);
    EXPECT_EQ(run("hold x=1"), Verdict::mistake);
    EXPECT_EQ(run("subscribe"), Verdict::unreachable);
    EXPECT_EQ(out_.str(), "subscribe: MarloException\n");
    EXPECT_EQ(run("! getDevices"), Verdict::met);
    EXPECT_EQ(run("raw <Method>Activate</Method>"), Verdict::unreachable);
    EXPECT_EQ(errors_.str(), "s:3: " + gone);
}

TEST_F(Phone, NothingIsExpectedOfAServiceThatIsGone)
{
    subscribe();
    run("event CallHeldEvent callId=1");
    run("event CallHeldEvent callId=2");
    run("sim go away");
    EXPECT_EQ(run("expect CallHeldEvent callId=1"), Verdict::met) << "it had come before";
    steps_ = 0;
    EXPECT_EQ(run("expect CallRetrievedEvent within 24h"), Verdict::unreachable);
    EXPECT_EQ(run("expect no CallRetrievedEvent within 24h"), Verdict::unreachable);
    EXPECT_EQ(run("expect no CallHeldEvent within 24h"), Verdict::unmet);
    EXPECT_EQ(steps_, 0) << "time was let pass";
}

TEST_F(Phone, BeginsAnewAfterAReconnection)
{
    subscribe();
    run("dial 2001");
    EXPECT_EQ(run("reconnect"), Verdict::met);
    EXPECT_EQ(out_.str(), "connected to the service in this process\n");
    EXPECT_EQ(run("calls"), Verdict::met);
    EXPECT_EQ(out_.str(), "no calls\n");
    EXPECT_EQ(run("getDevices"), Verdict::met);
    EXPECT_EQ(run("expect CallStateChangeEvent within 0s"), Verdict::unmet);
    EXPECT_NE(errors_.str().find("the phone has not subscribed"), std::string::npos)
        << "a script subscribes in its own lines";
    out_.str("");
    EXPECT_EQ(session_->execute("reconnect", {}), Verdict::met);
    EXPECT_NE(out_.str().find("\nsubscribe: sfiSuccess\nactivate: sfiSuccess\n* Registration"),
              std::string::npos)
        << out_.str();
}

TEST_F(Phone, LongWaitsTakeAsManyStepsAsSomethingHappens)
{
    subscribe();
    steps_ = 0;
    EXPECT_EQ(run("wait 24h"), Verdict::met);
    EXPECT_EQ(steps_, 1);
    EXPECT_EQ(run("expect no CallHeldEvent within 60min"), Verdict::met);
    EXPECT_EQ(steps_, 2);
    run("dial 2001");
    EXPECT_EQ(run("expect CallStateChangeEvent callState=connected within 60min"), Verdict::met);
    EXPECT_EQ(steps_, 3) << "it is answered in the next moment at which something happens";
}

TEST_F(Phone, ARecordingPassesWhenItIsRunAgain)
{
    const std::string file = testing::TempDir() + "recording-" + std::to_string(getpid());
    EXPECT_EQ(run("record off"), Verdict::mistake);
    EXPECT_EQ(run("record /nowhere/x"), Verdict::mistake);
    EXPECT_EQ(errors_.str(), "s:3: cannot write /nowhere/x: No such file or directory\n");
    for (const char* line :
         {"record ", "subscribe", "dial 2001", "activate", "dial 2001", "wait 3s", "calls",
          "expect CallStateChangeEvent callState=connected as mine", "! hold 99", "hold $mine",
          "getDevices", "! sim show nothing", "nonsense", "record off"})
        (void)run(std::string(line) == "record " ? line + file : line);
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    const std::string recorded = text.str();
    EXPECT_EQ(recorded, R"(# Recorded by communications-phone.
subscribe
! dial 2001
activate
expect RegistrationStateChangeEvent lineId=1001 callId=0 registered=true registrationResult=done
expect RegistrationStateChangeEvent lineId=1002 callId=0 registered=true registrationResult=done
expect RegistrationStateChangeEvent lineId=1003 callId=0 registered=true registrationResult=done
dial 2001
expect CallStateChangeEvent lineId=1001 callState=initiated uri=sip:2001 name="Anna Answer" as call1
expect CallStateChangeEvent lineId=1001 callId=$call1 callState=delivered uri=sip:2001 name="Anna Answer" callBackFeatureAvailable=true
wait 3s
expect CallStateChangeEvent lineId=1001 callId=$call1 callState=connected sendOptions=digits uri=sip:2001 name="Anna Answer"
! hold 99
expect FeatureFailedEvent lineId=1001 feature=hold featureFailure=noSuchCall as call2
hold $call1
expect CallStateChangeEvent lineId=1001 callId=$call1 callState=held uri=sip:2001 name="Anna Answer"
expect CallHeldEvent lineId=1001 callId=$call1
expect FeatureSuccessEvent lineId=1001 callId=$call1 feature=hold
getDevices
check result=sfiSuccess devices=1001,1002,1003
! sim show nothing
)");
    connect();
    errors_.str("");
    EXPECT_EQ(session_->runScript(file), Verdict::met) << errors_.str();
    // Without one of the things that were done it does not pass.
    connect();
    std::ofstream(file) << std::string(recorded).erase(recorded.find("hold $call1\n"), 12);
    EXPECT_EQ(session_->runScript(file), Verdict::unmet);
    std::remove(file.c_str());
}

TEST(ScriptWriter, WritesTheTimeThatPassed)
{
    using Time = ScriptWriter::Time;
    const std::string file = testing::TempDir() + "script-" + std::to_string(getpid());
    ScriptWriter writer;
    writer.remember();
    ReceivedEvent held;
    held.event = findEvent("CallHeldEvent");
    held.values = {"1001", "7"};
    const auto line = [&](int milliseconds, const char* text)
    {
        const int number = writer.begin(Time(milliseconds), text, {});
        writer.end(number, Time(milliseconds), Verdict::met, {});
    };
    line(5000, "hold");
    writer.add(Time(5400), held);
    writer.add(Time(8000), held);
    line(8900, "retrieve");
    line(11340, "hangup");
    for (const int time : {11800, 12300, 12800})
        writer.end(writer.begin(Time(time), "hlod", {}), Time(time), Verdict::mistake, {});
    writer.add(Time(13000), held);
    writer.open(file);
    EXPECT_EQ(writer.close(), file);
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    EXPECT_EQ(text.str(), "# Recorded by communications-phone.\n"
                          "hold\n"
                          "expect CallHeldEvent lineId=1001 as call1\n"
                          "expect CallHeldEvent lineId=1001 callId=$call1 within 4s\n"
                          "retrieve\n"
                          "wait 3300ms\n"
                          "hangup\n"
                          "wait 1s\n"
                          "expect CallHeldEvent lineId=1001 callId=$call1 within 2s\n");
    std::remove(file.c_str());
    writer.open("/dev/full");
    line(13000, "hold");
    EXPECT_EQ(writer.takeProblem(), "the recording ends here: /dev/full cannot be written");
    line(13000, "hold");
    EXPECT_EQ(writer.takeProblem(), "") << "told once";
}

TEST_F(Phone, FindsMistakesWithoutCarryingOut)
{
    const struct
    {
        const char* line;
        bool right;
    } rows[] = {
        {"hold", true},
        {"hold 12 13 14", false},
        {"expect CallHeldEvent as call", true},
        {"hold $call", true},
        {"hold $cal", false},
        {"sim anything", true},
        {"forward always 2001", false},
        {"run somewhere", true},
        {"run", false},
        {"wire", false},
        {"event CallHeldEvent callId=x", false},
        {"say \"open", false},
    };
    Variables captured;
    for (const auto& row : rows)
        try
        {
            session_->check(row.line, captured);
            EXPECT_TRUE(row.right) << row.line;
        }
        catch (const Mistake&)
        {
            EXPECT_FALSE(row.right) << row.line;
        }
    EXPECT_EQ(out_.str() + errors_.str(), "");
}

}  // namespace

}  // namespace kit::phone

// A recorded service that is played again: to who asks the same, and to who does not.

#include "kit/service/Replay.h"

#include "application/Subscriber.h"
#include "kit/framework/Exception.h"
#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"
#include "kit/phone/Session.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/SimulatedService.h"
#include "kit/testing/ServiceProcess.h"
#include "tests/kit/Complaint.h"
#include "tests/kit/service/Asking.h"
#include "tests/support/Folder.h"

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

namespace kit
{

namespace
{

using namespace std::chrono_literals;
using test::ask;
using test::complaintOf;
using test::control;
using testing::ElementsAre;

std::string request(int number, const std::string& text, const std::string& more = "")
{
    return R"({"time":0,"kind":"request","number":)" + std::to_string(number) + more +
           R"(,"sending":"request","text":")" + text + "\"}\n";
}

std::string answer(int number, const std::string& text)
{
    return R"({"time":0,"kind":"answer","number":)" + std::to_string(number) +
           R"(,"sending":"request","delivery":"done","text":")" + text + "\"}\n";
}

std::string event(const std::string& text, const std::string& channel = "c", double time = 0)
{
    return "{\"time\":" + std::to_string(time) + R"(,"kind":"event","channel":")" + channel +
           R"(","text":")" + text + "\"}\n";
}

std::string subscription(int number, const std::string& channel)
{
    return R"({"time":0,"kind":"request","number":)" + std::to_string(number) +
           R"(,"sending":"subscribe","channel":")" + channel + R"(","text":"<Method>Subscribe"})" +
           "\n" + answer(number, "sfiSuccess");
}

std::string call(const std::string& method, int callId)
{
    return "<Method>" + method + "</Method><Line>1001</Line><CallID>" + std::to_string(callId) +
           "</CallID>";
}

/// An application over a replay of a text, which writes down what it gets.
struct Asking
{
    explicit Asking(const std::string& trace, Replay::Pace pace = Replay::Pace::fast)
        : text(trace), replay(text, "t", pace), connection(replay.connection())
    {
        connection->setEventSink([this](const std::string& channel, const std::string& received)
                                 { got.push_back(channel + ": " + received); });
    }

    std::string ask(const std::string& what) { return test::ask(*connection, what); }

    void subscribe(const std::string& channel)
    {
        std::string answered;
        connection->subscribe("<Method>Subscribe", answered, channel, 1s);
    }

    std::vector<std::string> events() { return std::exchange(got, {}); }

    std::istringstream text;
    Replay replay;
    std::vector<std::string> got;
    std::unique_ptr<Connection> connection;
};

TEST(Replay, AnswersAndSendsAsRecorded)
{
    Asking app(subscription(1, "c") + event("E0") + request(2, "A") + event("E1") +
               answer(2, "first") + event("E2") + request(3, "A") + answer(3, "second") +
               event("E3"));
    EXPECT_THAT(app.events(), ElementsAre());
    app.subscribe("mine");
    EXPECT_THAT(app.events(), ElementsAre("mine: E0"));
    EXPECT_EQ(app.ask("A"), "first");
    EXPECT_THAT(app.events(), ElementsAre("mine: E1", "mine: E2"));
    EXPECT_EQ(app.replay.difference(), "t:8: a request has not come\n  recorded: A");
    EXPECT_EQ(app.ask("A"), "second");
    EXPECT_THAT(app.events(), ElementsAre("mine: E3"));
    EXPECT_EQ(app.replay.difference(), "");
}

TEST(Replay, SendsEventsBehindTheAnswerBehindIt)
{
    std::istringstream text(subscription(1, "c") + event("E1") + request(2, "A") + event("E2") +
                            answer(2, "yes") + event("E3"));
    Replay replay(text, "t");
    std::vector<std::string> got;
    const Service::ClientId client =
        replay.connect([&](const std::string&, const std::string& one) { got.push_back(one); });
    std::string answered;
    replay.exchange(client, Sending::subscribe, "<Method>Subscribe", "c", answered);
    EXPECT_THAT(got, ElementsAre());
    replay.followAnswer();
    EXPECT_THAT(got, ElementsAre("E1"));
    replay.exchange(client, Sending::request, "A", "", answered);
    EXPECT_THAT(got, ElementsAre("E1", "E2"));
    replay.followAnswer();
    EXPECT_THAT(got, ElementsAre("E1", "E2", "E3"));
}

TEST(Replay, SendsToTheSubscriberOfThen)
{
    Asking app(subscription(1, "left") + subscription(2, "right") + event("R", "right") +
               event("L", "left") + event("X", "stranger"));
    app.subscribe("a");
    app.subscribe("b");
    EXPECT_THAT(app.events(), ElementsAre("b: R", "a: L", "a: X", "b: X"));
}

TEST(Replay, TellsOperationsOfTheChannelApart)
{
    Asking posted(request(1, "A"));
    posted.connection->post("A");
    EXPECT_EQ(posted.replay.difference(),
              "t:1: a request differs\n  recorded: A\n  came:     A\n"
              "  nearest:  that, which was a request and is a message without an answer here");
    Asking asked(R"({"time":0,"kind":"request","sending":"oneWay","text":"A"})"
                 "\n" +
                 request(1, "B") + answer(1, "yes"));
    asked.connection->post("A");
    EXPECT_EQ(asked.ask("B"), "yes");
    EXPECT_EQ(asked.replay.difference(), "");
}

TEST(Replay, KeepsSilentWhereNobodyAnswered)
{
    Asking app(
        request(1, "A") +
        R"({"time":9,"kind":"answer","number":1,"sending":"request","delivery":"timedOut","text":""})"
        "\n" +
        request(2, "B") +
        R"({"time":9,"kind":"exception","number":2,"text":"Failure"})"
        "\n" +
        request(3, "C"));
    EXPECT_EQ(app.ask("A"), "(no answer in time)");
    EXPECT_EQ(app.ask("B"), "(no answer in time)");
    EXPECT_EQ(app.ask("C"), "(no answer in time)");
    EXPECT_EQ(app.replay.difference(), "");
}

TEST(Replay, ThreadsMayOvertakeEachOther)
{
    const std::string one = ",\"thread\":1";
    const std::string two = ",\"thread\":2";
    const std::string trace = request(1, "A", one) + answer(1, "a") + request(2, "B", two) +
                              answer(2, "b") + request(3, "C", one) + answer(3, "c");
    Asking app(trace);
    EXPECT_EQ(app.ask("B"), "b");
    EXPECT_EQ(app.ask("A"), "a");
    EXPECT_EQ(app.ask("C"), "c");
    EXPECT_EQ(app.replay.difference(), "");
    // But not what comes on the same one.
    Asking other(trace);
    EXPECT_EQ(other.ask("C"), "c");
    EXPECT_EQ(other.replay.difference(), "t:1: a request differs\n  recorded: A\n  came:     C\n"
                                         "  nearest:  t:5: C, which was to come later");
}

TEST(Replay, KeepsTimeIfAskedTo)
{
    const std::string trace = request(1, "A") + answer(1, "a") + event("E1", "c", 2.0) +
                              event("E2", "c", 3.0) + request(2, "B") + answer(2, "b");
    Asking app(subscription(9, "c") + trace, Replay::Pace::recorded);
    app.subscribe("c");
    app.replay.advance(10s);
    app.ask("A");
    EXPECT_THAT(app.events(), ElementsAre());
    app.replay.advance(1999ms);
    EXPECT_THAT(app.events(), ElementsAre());
    EXPECT_TRUE(control(*app.connection, "advance 1ms").accepted);
    EXPECT_THAT(app.events(), ElementsAre("c: E1"));
    // Who does not wait for it gets it in its place.
    EXPECT_EQ(app.ask("B"), "b");
    EXPECT_THAT(app.events(), ElementsAre("c: E2"));
}

const struct
{
    const char* name;
    std::vector<std::string> asked;
    std::vector<std::string> answered;
    const char* difference;
} differences[] = {
    {"nothing differs",
     {call("HoldCall", 1), call("RetrieveCall", 1), call("HoldCall", 2)},
     {"h1", "r1", "h2"},
     ""},
    {"another value",
     {call("HoldCall", 1), call("RetrieveCall", 7), call("HoldCall", 2)},
     {"h1", "r1", "h2"},
     "t:3: a request differs\n"
     "  recorded: RetrieveCall Line=1001 CallID=1\n"
     "  came:     RetrieveCall Line=1001 CallID=7\n"
     "  nearest:  that, where CallID is 1 there and 7 here"},
    {"one is left out",
     {call("HoldCall", 1), call("HoldCall", 2)},
     {"h1", "h2"},
     "t:3: a request differs\n"
     "  recorded: RetrieveCall Line=1001 CallID=1\n"
     "  came:     HoldCall Line=1001 CallID=2\n"
     "  nearest:  t:5: HoldCall Line=1001 CallID=2, which was to come later"},
    {"one is new",
     {call("HoldCall", 1), call("AnswerCall", 1), call("RetrieveCall", 1), call("HoldCall", 2)},
     {"h1", "sfiFailure", "r1", "h2"},
     "t:3: a request differs\n"
     "  recorded: RetrieveCall Line=1001 CallID=1\n"
     "  came:     AnswerCall Line=1001 CallID=1"},
    {"one too many",
     {call("HoldCall", 1), call("RetrieveCall", 1), call("HoldCall", 2), call("HoldCall", 3)},
     {"h1", "r1", "h2", "sfiFailure"},
     "t: no further request was recorded\n"
     "  came:     HoldCall Line=1001 CallID=3"},
    {"other fields, later",
     {"<Method>HoldCall</Method><CallID>2</CallID><X>1</X>more"},
     {"h1"},
     "t:1: a request differs\n"
     "  recorded: HoldCall Line=1001 CallID=1\n"
     "  came:     HoldCall CallID=2 X=1 more\n"
     "  nearest:  t:5: HoldCall Line=1001 CallID=2, where Line is missing here, X is missing "
     "there, the payload is another one"},
    {"the end does not come",
     {call("HoldCall", 1), call("RetrieveCall", 1)},
     {"h1", "r1"},
     "t:5: a request has not come\n  recorded: HoldCall Line=1001 CallID=2"},
};

TEST(Replay, SaysWhatDiffers)
{
    for (const auto& row : differences)
    {
        SCOPED_TRACE(row.name);
        Asking app(request(1, call("HoldCall", 1)) + answer(1, "h1") +
                   request(2, call("RetrieveCall", 1)) + answer(2, "r1") +
                   request(3, call("HoldCall", 2)) + answer(3, "h2"));
        std::vector<std::string> log;
        app.replay.setLog([&](const std::string& line) { log.push_back(line); });
        std::vector<std::string> answered;
        for (const std::string& text : row.asked)
            answered.push_back(app.ask(text));
        EXPECT_EQ(answered, row.answered);
        EXPECT_EQ(app.replay.difference(), row.difference);
        // At once and once, but for what never came.
        const bool told = std::string(row.difference).find("came:") != std::string::npos;
        EXPECT_EQ(log,
                  told ? std::vector<std::string>{row.difference} : std::vector<std::string>());
        EXPECT_EQ(control(*app.connection, "replay").accepted, *row.difference == '\0');
    }
}

TEST(Replay, SaysWhereTheTraceHasGaps)
{
    Asking app(R"({"time":0,"kind":"dropped","count":12})"
               "\n" +
               request(1, "A"));
    app.ask("B");
    EXPECT_EQ(app.replay.difference(), "t:2: a request differs\n  recorded: A\n  came:     B\n"
                                       "  note:     12 records before are missing in the trace");
}

TEST(Replay, CommandsHaveTheirPlace)
{
    const std::string command = R"({"time":0,"kind":"control","text":"call 1001 from 2001"})"
                                "\n";
    const auto app = [&]
    {
        auto fresh = std::make_unique<Asking>(subscription(1, "c") + command + event("E") +
                                              request(2, "A") + answer(2, "a"));
        fresh->subscribe("c");
        EXPECT_THAT(fresh->events(), ElementsAre());
        return fresh;
    };
    auto same = app();
    control(*same->connection, "call 1001 from 2001");
    EXPECT_THAT(same->events(), ElementsAre("c: E"));
    auto other = app();
    control(*other->connection, "call 1002 from 2001");
    EXPECT_EQ(other->replay.difference(),
              "t:3: a command differs\n  recorded: call 1001 from 2001\n"
              "  came:     call 1002 from 2001");
    // An application that gives none gets what they brought about, before its next request.
    auto without = app();
    EXPECT_EQ(without->ask("A"), "a");
    EXPECT_THAT(without->events(), ElementsAre("c: E"));
    EXPECT_EQ(without->replay.difference(), "");
}

TEST(Replay, TellsTheLinesAtAnyTime)
{
    const std::string devices = "<Method>GetDevices</Method>";
    const std::string held = "<Method>CallHeldEvent</Method><LineID>1002</LineID>";
    Asking unknown(request(1, call("HoldCall", 1)) + event(held));
    EXPECT_EQ(unknown.ask(devices), "<1001><1002>") << "those that occur";
    Asking app(request(1, devices) + answer(1, "<1001>") + request(2, devices) +
               answer(2, "<1001><1003>") + request(3, "A"));
    EXPECT_EQ(app.ask(devices), "<1001>");
    EXPECT_EQ(app.ask(devices), "<1001><1003>");
    EXPECT_EQ(app.ask(devices), "<1001><1003>");
    app.ask("A");
    EXPECT_EQ(app.replay.difference(), "");
}

const struct
{
    std::string text;
    const char* complaint;
} damaged[] = {
    {"", "t: there is nothing in this trace"},
    {"\n\n", "t: there is nothing in this trace"},
    {"hello\n", "t:1: not JSON (byte 1)"},
    {"hello\n{}\n", "t:1: not JSON (byte 1); no line of it is one of a trace"},
};

TEST(Replay, RefusesWhatIsNoTrace)
{
    for (const auto& row : damaged)
    {
        std::istringstream in(row.text);
        EXPECT_EQ(complaintOf<std::runtime_error>([&] { const Replay replay(in, "t"); }),
                  row.complaint);
    }
    EXPECT_EQ(complaintOf<std::runtime_error>([] { const Replay replay("/no/such/trace"); }),
              "/no/such/trace cannot be read: No such file or directory");
}

TEST(Replay, PlaysWhatCanBeReadOfACutTrace)
{
    const std::string whole = request(1, "A") + answer(1, "a") + request(2, "B");
    const std::string cut = whole.substr(0, whole.size() - 9);
    const char* const complaint = ":3: cut off in the middle of the line";
    Asking app(cut);
    EXPECT_EQ(app.replay.complaint(), "t" + std::string(complaint));
    EXPECT_EQ(app.ask("A"), "a");
    EXPECT_EQ(app.replay.difference(), "");
    // As a test of an application it is not good enough.
    const TextFile file(cut);
    EXPECT_EQ(complaintOf<std::runtime_error>([&] { const Replay replay(file.path); }),
              file.path + complaint);
}

TEST(Replay, ServesAnApplicationThroughTheFramework)
{
    std::istringstream text(
        R"({"time":0,"kind":"request","number":1,"sending":"subscribe","channel":"x","text":"<Method>Subscribe</Method>"})"
        "\n"
        R"({"time":0,"kind":"exception","number":1,"text":"MarloException"})"
        "\n"
        R"({"time":0,"kind":"request","number":2,"sending":"timed","text":"<Method>Activate</Method>"})"
        "\n" +
        answer(2, "sfiSuccess"));
    Replay replay(text, "t");
    communications::QuietSubscriber subscriber;
    Framework framework(replay.connection());
    EXPECT_THROW(framework.service().subscribe(&subscriber), MarloException);
    EXPECT_EQ(framework.service().activate(), sfiSuccess);
    EXPECT_EQ(replay.difference(), "");
}

/// The console phone, carrying out a script over a connection; what it has to complain of.
std::string runScript(const std::string& script, const phone::Phone::Connect& connect,
                      const phone::Timekeeper::Advance& advance, const std::string& traceFile,
                      const std::string& library = "")
{
    std::ostringstream out;
    std::ostringstream errors;
    phone::Display display(out, errors, false);
    phone::Session::Settings settings;
    settings.phone.connect = connect;
    settings.phone.advance = advance;
    settings.phone.realTime = false;
    settings.phone.library = library;
    settings.recorder.traceFile = traceFile;
    phone::Session session(settings, display);
    if (session.runScript(script) != phone::Verdict::met)
        errors << out.str();
    session.finish();
    return errors.str();
}

class Recorded : public testing::TestWithParam<const char*>
{
protected:
    /// Records a script by the phone or, for the second, by the plug-in.
    void record(const std::string& library)
    {
        const auto service = std::make_shared<SimulatedService>();
        ASSERT_EQ(runScript(
                      script_, [&] { return std::make_unique<EmbeddedConnection>(service); },
                      [&](phone::Timekeeper::Time limit) { return service->advanceToNext(limit); },
                      library.empty() ? trace_.path : "", library),
                  "");
    }

    void replayInProcess()
    {
        Replay replay(trace_.path);
        EXPECT_EQ(runScript(
                      script_, [&] { return replay.connection(); },
                      [&](phone::Timekeeper::Time limit)
                      {
                          replay.advance(limit);
                          return limit;
                      },
                      ""),
                  "");
        EXPECT_EQ(replay.difference(), "");
    }

    void replayOverASocket()
    {
        ServiceProcess process("", {"--replay", trace_.path});
        EXPECT_EQ(runScript(
                      script_, [&] { return std::make_unique<SocketConnection>(process.socket()); },
                      nullptr, ""),
                  "");
        SocketConnection asking(process.socket());
        const ControlAnswer verdict = control(asking, "replay");
        EXPECT_EQ(verdict.text, "everything was asked as it was recorded");
        EXPECT_TRUE(verdict.accepted);
    }

    const std::string script_ = std::string(PHONE_SCRIPTS "/") + GetParam();
    const TextFile trace_;
};

TEST_P(Recorded, ByThePhone)
{
    record("");
    replayInProcess();
    replayOverASocket();
}

#ifdef RECORDER_PLUGIN
TEST_P(Recorded, ByThePlugin)
{
    // A copy, since what is once opened stays.
    const std::string copy = trace_.folder / "plugin.so";
    std::ofstream(copy) << std::ifstream(RECORDER_PLUGIN).rdbuf();
    setenv("COMMUNICATIONS_SERVICE_RECORDING", ("file=" + trace_.path).c_str(), 1);
    record(copy);
    unsetenv("COMMUNICATIONS_SERVICE_RECORDING");
    std::this_thread::sleep_for(1s);
    replayInProcess();
    replayOverASocket();
}
#endif

INSTANTIATE_TEST_SUITE_P(Scripts, Recorded, testing::Values("tour", "everything"),
                         [](const auto& name) { return std::string(name.param); });

TEST(Replay, OverASocketTellsTheDifference)
{
    const TextFile trace(request(1, "A") + answer(1, "a"));
    const std::string log = trace.folder / "log";
    ServiceProcess process("", {"--replay", trace.path, "--log", log});
    SocketConnection connection(process.socket());
    EXPECT_EQ(ask(connection, "B"), "a");
    const ControlAnswer verdict = control(connection, "replay");
    EXPECT_FALSE(verdict.accepted);
    EXPECT_EQ(verdict.text, trace.path + ":1: a request differs; recorded: A; came:     B");
    EXPECT_THAT(linesOf(log), ElementsAre(testing::HasSubstr(":1: a request differs")));
}

}  // namespace

}  // namespace kit

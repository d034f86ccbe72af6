// Lines that are carried out over a service in this process.

#include "kit/phone/Interruptions.h"
#include "kit/phone/Session.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/SimulatedService.h"

#include "tests/kit/Complaint.h"
#include "tests/kit/Transcript.h"
#include "tests/support/Folder.h"

#include <atomic>
#include <fstream>
#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sstream>
#include <thread>

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
        out_.str("");
    }

    Verdict run(const std::string& line)
    {
        out_.str("");
        errors_.str("");
        return session_->execute(line, place_);
    }

    /// All that comes of a line, as the transcripts show it.
    std::string type(const std::string& line)
    {
        static const std::map<Verdict, const char*> words = {
            {Verdict::met, ""},
            {Verdict::unmet, " unmet"},
            {Verdict::mistake, " mistake"},
            {Verdict::unreachable, " unreachable"}};
        steps_ = 0;
        std::string came = words.at(run(line));
        if (steps_ != 0)
            came += " steps: " + std::to_string(steps_);
        std::istringstream errors(errors_.str());
        std::string text = out_.str();
        for (std::string error; std::getline(errors, error);)
            text += "! " + error + "\n";
        return text + (came.empty() ? "" : "=" + came + "\n");
    }

    /// What is wrong with a line, looked at alone.
    std::string check(const std::string& line)
    {
        const std::string mistake =
            test::complaintOf<Mistake>([&] { session_->check(line, captured_); });
        return (mistake == "nothing" ? "" : "! " + mistake + "\n") + out_.str() + errors_.str();
    }

    std::shared_ptr<SimulatedService> service_;
    int steps_ = 0;
    Place place_ = {"s", 3};
    std::ostringstream out_;
    std::ostringstream errors_;
    Display display_;
    std::unique_ptr<Session> session_;
    Variables captured_;
};

TEST_F(Phone, DoesWhatItsTranscriptSays)
{
    test::replay("session",
                 [this](const std::string& part) -> test::Typing
                 {
                     connect();
                     place_ = part.rfind("typed", 0) == 0 ? Place() : Place{"s", 3};
                     if (part == "looks for mistakes without carrying out")
                         return [this](const std::string& line) { return check(line); };
                     return [this](const std::string& line) { return type(line); };
                 });
}

TEST_F(Phone, ARecordingPassesWhenItIsRunAgain)
{
    const Folder folder;
    const std::string file = folder / "recording";
    EXPECT_EQ(run("record off"), Verdict::mistake);
    EXPECT_EQ(run("record /nowhere/x"), Verdict::mistake);
    EXPECT_EQ(errors_.str(), "s:3: cannot write /nowhere/x: No such file or directory\n");
    for (const char* line :
         {"record ", "subscribe", "dial 2001", "activate", "dial 2001", "wait 1h", "wait 500ms",
          "calls", "expect CallStateChangeEvent callState=connected within 9s as mine", "! hold 99",
          "hold $mine", "getDevices", "! sim show nothing", "nonsense", "record off"})
    {
        // Nobody waits where Ctrl-C was pressed, and so much time has not passed.
        setInterruptions(std::string(line) == "wait 1h" ? 1 : 0);
        const Verdict verdict = run(std::string(line) == "record " ? line + file : line);
        EXPECT_EQ(verdict == Verdict::interrupted, interruptions() > 0) << line;
    }
    setInterruptions(0);
    const std::string recorded = contentsOf(file);
    EXPECT_EQ(recorded, contentsOf(TRANSCRIPTS "/recording"));

    connect();
    errors_.str("");
    EXPECT_EQ(session_->runScript(file), Verdict::met) << errors_.str();
    // Without one of the things that were done it does not pass.
    connect();
    std::ofstream(file) << std::string(recorded).erase(recorded.find("hold $call1\n"), 12);
    EXPECT_EQ(session_->runScript(file), Verdict::unmet);
}

TEST_F(Phone, RecordingsOfWhateverWasDonePass)
{
    const Folder folder;
    const std::string file = folder / "recording";
    std::istringstream all(R"(dial 2001;dial 2002;dial 2006;dial 2007;dial 2009;dial 2010;dial 5000
sim call 1001 from 2001;sim call 1002 from 2042 name "Zoe # x";accept;answer;refuse busy;deflect 2001
hold;hold $a;! hold 99;hold 99;retrieve;hangup;hangup $a;consult 2001;consult 2002;transfer;conf;swap
transfer 2003;digits 12#;callback;ringback;cancelCallbacks;pickup;dnd on;dnd;messages;csta <a/>
forward busy 2001;unforward busy;deactivate;activate;raw <Method>GetDevices</Method>;say hi $a;calls
sim message;sim hold;sim retrieve;sim hang up;sim hang up $a;sim reset;sim go away;wait 1s;wait 20s
expect CallStateChangeEvent as a;expect CallStateChangeEvent callState=connected within 5s
expect CallHeldEvent within 8s;expect no CallHeldEvent within 3s;event CallHeldEvent callId=77
check result=sfiSuccess)");
    std::vector<std::string> lines;
    for (std::string row; std::getline(all, row);)
        for (std::istringstream some(row); std::getline(some, row, ';');)
            lines.push_back(row);
    for (unsigned seed = 0; seed < 100; ++seed)
    {
        std::mt19937 random(seed);
        connect();
        for (const std::string& line :
             {"record " + file, std::string("subscribe"), std::string("activate")})
            run(line);
        for (int i = 0; i < 25; ++i)
            run(lines[random() % lines.size()]);
        run("record off");
        connect();
        errors_.str("");
        EXPECT_EQ(session_->runScript(file), Verdict::met)
            << seed << ": " << errors_.str() << contentsOf(file);
    }
}

TEST(ScriptWriter, WritesTheTimeThatPassed)
{
    using Time = ScriptWriter::Time;
    const Folder folder;
    const std::string file = folder / "script";
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
    EXPECT_EQ(contentsOf(file), "# Recorded by communications-phone.\n"
                                "hold\n"
                                "expect CallHeldEvent lineId=1001 as call1\n"
                                "expect CallHeldEvent lineId=1001 callId=$call1 within 4s\n"
                                "retrieve\n"
                                "wait 3300ms\n"
                                "hangup\n"
                                "expect CallHeldEvent lineId=1001 callId=$call1 within 3s\n");
    writer.open("/dev/full");
    line(13000, "hold");
    EXPECT_EQ(writer.takeProblem(), "the recording ends here: /dev/full cannot be written");
    line(13000, "hold");
    EXPECT_EQ(writer.takeProblem(), "") << "told once";
}

TEST(PhoneRecorder, TakesOnAnyThreadWhatItShowsOnItsOwn)
{
    const Folder folder;
    std::ostringstream out;
    Display display(out, out, false);
    Recorder::Settings settings;
    settings.traceFile = folder / "trace";
    settings.pageFile = folder / "page";
    Recorder recorder(settings, display);
    const std::function<void()> actions[] = {
        [&] { recorder.show(); }, [&] { recorder.setWire(true); },
        [&] { recorder.setLadder(true); }, [&] { recorder.finish(); }};
    std::atomic<unsigned> taken{0};
    for (const auto& show : actions)
    {
        std::atomic<bool> over{false};
        const auto take = [&]
        {
            for (; !over; ++taken)
            {
                recorder.tracer().control("advance 1ms");
                recorder.addComplaint("told");
            }
        };
        const std::future<void> one = std::async(std::launch::async, take);
        const std::future<void> other = std::async(std::launch::async, take);
        for (const unsigned before = taken; taken < before + 10;)
            std::this_thread::yield();
        show();
        over = true;
    }
    EXPECT_EQ(linesOf(settings.traceFile).size(), 1 + taken);
}

}  // namespace

}  // namespace kit::phone

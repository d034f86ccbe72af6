// What is drawn and written down: traces, call flows; and what expectations say.

#include "tests/kit/Complaint.h"
#include "tests/kit/Transcript.h"
#include "tests/kit/phone/Records.h"
#include "tests/support/Folder.h"

#include "kit/language/Wording.h"
#include "kit/phone/Expectation.h"
#include "kit/trace/Filter.h"
#include "kit/trace/Labels.h"
#include "kit/trace/Ladder.h"
#include "kit/trace/Width.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <sstream>

namespace kit::phone
{

namespace
{

using test::record;
using RecordKind = TraceRecord::Kind;

TraceRecord event(const std::string& text)
{
    return record(RecordKind::event, text);
}

/// What is drawn of a trace, record by record.
struct Drawing
{
    std::string add(const std::string& line)
    {
        if (line == "end")
            return draw(flow.finish());
        const std::optional<TraceRecord> record = reader.take(line);
        EXPECT_TRUE(record) << reader.complaint();
        records.push_back(record.value());
        return draw(flow.add(records.back()));
    }

    std::string draw(const std::vector<FlowStep>& steps)
    {
        std::string drawn;
        for (const FlowStep& step : steps)
            drawn += text.add(step) + mermaid.add(step);
        return drawn;
    }

    std::vector<TraceRecord> records;
    TraceReader reader{"t"};
    Flow flow;
    TextLadder text{80};
    MermaidLadder mermaid;
};

/// The far end NAME calls, and is gone after it in "NAME leaves".
FlowStep callOf(const std::string& line)
{
    FlowStep step;
    step.farEnd = FlowStep::Between::fromService;
    step.farEndName = line.substr(0, 4);
    step.farEndText = "calls";
    step.leaves = line.size() > 4 ? step.farEndName : "";
    return step;
}

/// An event as it would be received.
ReceivedEvent received(const std::string& method, const Values& values)
{
    ReceivedEvent made;
    made.event = findEvent(method);
    for (const Field& field : made.event->arguments)
    {
        const std::string* const value = valueFor(field, values);
        made.values.push_back(value != nullptr ? toWire(field, *value) : "");
    }
    return made;
}

Expectation expectation(const std::string& text)
{
    return Expectation::parse(splitWords(text));
}

std::string reasonWhyNot(const std::string& line)
{
    static const std::deque<ReceivedEvent> log = {
        received("CallHeldEvent", {{"lineId", "1001"}, {"callId", "1"}}),
        received("CallHeldEvent", {{"lineId", "1002"}, {"callId", "2"}}),
        received("DevicesChangedEvent", {}),
        received("CallHeldEvent", {{"lineId", "1003"}, {"callId", "3"}}),
    };
    std::string text;
    for (const std::string& each :
         expectation(line.substr(2)).explain(log, static_cast<std::size_t>(line[0] - '0')))
        text += each + "\n";
    return text;
}

std::string complaintAbout(const std::string& line)
{
    std::istringstream file(toJson(event("x")) + "\n" + line + "\n" + toJson(event("y")) + "\n");
    const Trace trace = readTrace(file, "t");
    EXPECT_EQ(trace.records.size(), 2U) << line;
    EXPECT_EQ(trace.records.back().text, "y") << line;
    return trace.complaint + "\n";
}

/// Which of some records are chosen by words like line=1001 call=7 method=HoldCall.
struct Choice
{
    std::string add(const std::string& line)
    {
        if (line[0] == '{')
        {
            records.push_back(reader.take(line).value());
            return "";
        }
        TraceFilter::Wanted wanted;
        for (const Word& word : splitWords(line))
            if (word.name == "method")
                wanted.methods.insert(word.text);
            else if (word.name == "line")
                wanted.line = word.text;
            else if (word.name == "call")
                wanted.call = word.text;
        TraceFilter filter(wanted);
        std::vector<bool> decisions;
        for (const TraceRecord& record : records)
            for (const bool chosen : filter.add(record))
                decisions.push_back(chosen);
        for (const bool chosen : filter.finish())
            decisions.push_back(chosen);
        EXPECT_EQ(decisions.size(), records.size());
        std::vector<std::string> chosen;
        for (std::size_t i = 0; i < decisions.size(); ++i)
            if (decisions[i])
                chosen.push_back(std::to_string(i));
        EXPECT_EQ(filtered(records, wanted).size(), chosen.size());
        return listed(chosen) + "\n";
    }

    std::vector<TraceRecord> records;
    TraceReader reader{"t"};
};

TEST(Trace, IsShownAsItsTranscriptSays)
{
    const ReceivedEvent call =
        received("CallStateChangeEvent", {{"lineId", "1001"},
                                          {"callId", "12"},
                                          {"callState", "connected"},
                                          {"uri", "sip:2001@host"},
                                          {"callBackFeatureAvailable", "false"}});
    TextLadder wide(80);
    TextLadder narrow(40);
    Choice choice;
    const std::map<std::string, test::Typing> parts = {
        {"far ends in 80 columns", [&](const std::string& line) { return wide.add(callOf(line)); }},
        {"far ends in 40 columns",
         [&](const std::string& line) { return narrow.add(callOf(line)); }},
        {"labels", [](const std::string& text) { return messageLabel(text) + "\n"; }},
        {"lines that are none of a trace", complaintAbout},
        {"what is chosen", [&](const std::string& line) { return choice.add(line); }},
        {"columns", [](const std::string& text)
         { return std::to_string(displayWidth(splitWords(text)[0].text)) + "\n"; }},
        {"what is left of a text in so many columns", [](const std::string& line)
         { return cutToWidth(line.substr(2), static_cast<std::size_t>(line[0] - '0')) + "\n"; }},
        {"whether a text is as a pattern",
         [](const std::string& line)
         {
             const std::vector<Word> words = splitWords(line);
             return matchesPattern(words[0].text, words[1].text) ? "yes\n" : "no\n";
         }},
        {"whether an event is expected", [&](const std::string& text)
         { return expectation(text).matches(call) ? "yes\n" : "no\n"; }},
        {"mistakes in what is expected", [](const std::string& text)
         { return test::complaintOf<Mistake>([&] { expectation(text); }) + "\n"; }},
        {"why an event has not come", reasonWhyNot},
    };
    test::replay("trace",
                 [&](const std::string& part) -> test::Typing
                 {
                     if (part.rfind("draw ", 0) != 0)
                         return parts.at(part);
                     const auto drawing = std::make_shared<Drawing>();
                     return [drawing](const std::string& line) { return drawing->add(line); };
                 });
}

TEST(Ladder, EscapesWhatMermaidUnderstands)
{
    FlowStep step;
    step.application = FlowStep::Between::toService;
    step.text = "a;b#c <d>";
    EXPECT_EQ(mermaidLadder({step}), "sequenceDiagram\n"
                                     "    participant application\n"
                                     "    participant service\n"
                                     "    application->>service: a#59;b#35;c #lt;d#gt;\n");
}

TEST(Ladder, NoLineIsWiderThanTold)
{
    const std::string name = "\xe5\xbc\xa0\xe4\xbc\x9f";
    std::vector<TraceRecord> records = {
        record(RecordKind::request,
               "<Method>OutgoingCallMakeRequest</Method><Line>1001</Line><CallID>0</CallID>"
               "<Destination>2001</Destination>",
               1),
        record(RecordKind::answer, "sfiSuccess", 1),
        record(RecordKind::request, "<Method>GetDevices</Method>", 2)};
    for (int call = 20; call < 29; ++call)
        records.push_back(event("<Method>IncomingCallEvent</Method><LineID>1001</LineID>" +
                                element("CallID", std::to_string(call)) +
                                element("URI", "sip:" + name + std::to_string(call) + "@host") +
                                element("Name", name + " and very much more than fits")));
    records.push_back(record(RecordKind::control, "x" + std::string(200, 'y')));
    for (const std::size_t width : {40U, 60U, 80U, 81U, 132U})
    {
        std::istringstream lines(textLadder(stepsOf(records), width));
        std::size_t widest = 0;
        for (std::string line; std::getline(lines, line);)
        {
            widest = std::max(widest, displayWidth(line));
            EXPECT_LE(displayWidth(line), width) << line;
            EXPECT_NE(line.back(), ' ') << line;
        }
        EXPECT_EQ(widest, width) << "there is room that is not used";
    }
}

TEST(Ladder, WideCharactersKeepTheColumnsInLine)
{
    FlowStep step;
    step.application = FlowStep::Between::toService;
    step.text = "Name=\xe5\xbc\xa0\xe4\xbc\x9f";
    TextLadder ladder(60);
    (void)ladder.add(step);
    EXPECT_EQ(ladder.add(step), "|--Name=\xe5\xbc\xa0\xe4\xbc\x9f" + std::string(33, '-') + ">|\n");
}

TEST(LadderOnFailure, PrintsTheCallFlowOfTheTestThatFailedAlone)
{
    FILE* const program = popen(LADDER_ON_FAILURE_PROGRAM " 2>&1", "r");
    ASSERT_NE(program, nullptr);
    std::string out;
    char bytes[4096];
    for (std::size_t got = 0; (got = fread(bytes, 1, sizeof bytes, program)) > 0;)
        out.append(bytes, got);
    EXPECT_NE(pclose(program), 0);
    const std::string title = "What went over the framework in ";
    const std::size_t first = out.find(title);
    ASSERT_NE(first, std::string::npos) << out;
    EXPECT_EQ(out.find(title, first + 1), std::string::npos) << out;
    EXPECT_EQ(out.substr(first, out.find("[", first) - first), title + R"(Calls.Failing:
application                                             service
|                                                          |
|--AlternateCalls Line=1002------------------------------->|
|<..sfiFailure.............................................|
)");
}

TEST(Trace, ComesBackAsItWasWritten)
{
    const std::string path = TRANSCRIPTS "/records";
    std::ifstream file(path);
    const Trace trace = readTrace(file, "t");
    EXPECT_EQ(trace.complaint, "");
    std::vector<std::string> written = {toJson(trace.head)};
    for (const TraceRecord& record : trace.records)
        written.push_back(toJson(record));
    EXPECT_EQ(written, linesOf(path));

    using std::chrono::microseconds;
    ASSERT_EQ(trace.records.size(), 10U);
    EXPECT_EQ(trace.head.start->time_since_epoch(), microseconds(1772357400000012));
    const TraceRecord& first = trace.records[0];
    EXPECT_EQ(
        std::tie(first.time, first.kind, first.thread, first.number, first.sending),
        std::make_tuple(microseconds(1234567), RecordKind::request, 3, 7, Sending::subscribe));
    EXPECT_EQ(first.channel + " " + first.text, "subscriber-1 <Method>Subscribe</Method>");
    EXPECT_EQ(trace.records[1].sending, Sending::timed);
    EXPECT_EQ(trace.records[2].sending, Sending::oneWay);
    EXPECT_EQ(trace.records[2].text, std::string("SigEvent:\0\xff\x01", 12));
    EXPECT_EQ(trace.records[3].delivery, Delivery::done);
    EXPECT_EQ(trace.records[3].text, "sfi \"x\"\n\\");
    EXPECT_EQ(trace.records[4].delivery, Delivery::timedOut);
    EXPECT_EQ(trace.records[5].delivery, Delivery::gone);
    EXPECT_EQ(trace.records[6].text, "gr\xc3\xbc\xc3\x9f");
    EXPECT_EQ(trace.records[9].count, 5000000000U);
}

TEST(Trace, OfTheFirstFormatIsRead)
{
    std::istringstream file(
        R"({"time":0.5,"kind":"request","number":2,"sending":"request","method":"X","text":"t"})");
    const Trace trace = readTrace(file, "t");
    EXPECT_EQ(trace.complaint, "");
    EXPECT_EQ(trace.head.format, 1);
    EXPECT_FALSE(trace.head.start);
    ASSERT_EQ(trace.records.size(), 1U);
    EXPECT_EQ(trace.records[0].number, 2);
}

TEST(Trace, SaysWhatItCannotReadAndReadsTheRest)
{
    EXPECT_EQ(complaintAbout("\xff"), "t:2: not JSON (byte 1)\n");
    EXPECT_EQ(complaintAbout("{}\n{}"), "t:2: not a record of a trace: \"time\" or \"kind\" is "
                                        "missing; lines that cannot be read: 2\n");
    const std::string whole = toJson(event("x")) + "\n";
    for (std::size_t size = 1; size + 2 < whole.size(); size += 7)
    {
        std::istringstream file(whole + whole.substr(0, size));
        const Trace trace = readTrace(file, "t");
        EXPECT_EQ(trace.complaint, "t:2: cut off in the middle of the line") << size;
        EXPECT_EQ(trace.records.size(), 1U) << size;
    }
    std::istringstream other("no\ntrace\n");
    EXPECT_EQ(readTrace(other, "t").complaint,
              "t:1: not JSON (byte 2); no line of it is one of a trace");
}

TEST(Expectation, IsReadWithItsTimeAndName)
{
    const Expectation read = expectation("no CallHeldEvent callId=3 within 2s as first");
    EXPECT_TRUE(read.none);
    EXPECT_EQ(read.within, std::chrono::seconds(2));
    EXPECT_EQ(read.name, "first");
    EXPECT_EQ(expectation("CallHeldEvent").within, std::chrono::seconds(1));
    EXPECT_EQ(expectation("CallStateChangeEvent callId=3 callState=5").description(),
              "CallStateChangeEvent callId=3 callState=connected");
    EXPECT_EQ(test::complaintOf<Mistake>([] { expectation(""); }).rfind("expect needs an event", 0),
              0U);
}

TEST(Labels, TellWhatAPersonWantsToKnow)
{
    EXPECT_EQ(messageLabel(std::string("SigEvent:\0x", 11)), "SigEvent:\\x00x");
    EXPECT_EQ(eventLabel(received("DoNotDisturbEvent",
                                  {{"deviceId", "1001"}, {"doNotDisturbOn", "false"}})),
              "DoNotDisturbEvent deviceId=1001 doNotDisturbOn=false");
    EXPECT_EQ(shortNumber("sip:2001@host;x"), "2001");
    EXPECT_EQ(shortNumber("2001"), "2001");
}

}  // namespace

}  // namespace kit::phone

// What is drawn and written down: traces, call flows; and what expectations say.

#include "tests/kit/Complaint.h"

#include "kit/phone/Expectation.h"
#include "kit/trace/Filter.h"
#include "kit/trace/Labels.h"
#include "kit/trace/Ladder.h"
#include "kit/trace/Width.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <sstream>

namespace kit::phone
{

namespace
{

TraceRecord request(int number, const std::string& text, Sending sending = Sending::request)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::request;
    record.number = number;
    record.sending = sending;
    record.text = text;
    return record;
}

TraceRecord answer(int number, const std::string& text, Delivery delivery = Delivery::done)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::answer;
    record.number = number;
    record.delivery = delivery;
    record.text = text;
    return record;
}

TraceRecord event(const std::string& text)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::event;
    record.channel = "subscriber-1";
    record.text = text;
    return record;
}

TraceRecord control(const std::string& text)
{
    TraceRecord record;
    record.kind = TraceRecord::Kind::control;
    record.text = text;
    return record;
}

std::string callState(int call, int state, int reason = numbers::reasonNormal)
{
    return "<Method>CallStateChangeEvent</Method><LineID>1001</LineID><CallID>" +
           std::to_string(call) + "</CallID><CallState>" + std::to_string(state) +
           "</CallState><Reason>" + std::to_string(reason) +
           "</Reason><URI>sip:2001@host</URI><Name>Anna</Name>";
}

/// A call in which everything occurs that is drawn.
std::vector<TraceRecord> aCall()
{
    return {
        request(1, "<Method>Activate</Method>", Sending::timed),
        answer(1, "sfiSuccess"),
        request(2, "<Method>OutgoingCallMakeRequest</Method><Line>1001</Line><CallID>0</CallID>"
                   "<Destination>2001</Destination><DSSDirectCall>0</DSSDirectCall>"),
        event(callState(5, numbers::callDelivered)),
        answer(2, "sfiSuccess"),
        control("advance 2s"),
        event(callState(5, numbers::callConnected)),
        request(3, "<Method>HoldCall</Method><Line>1001</Line><CallID>9</CallID>"),
        answer(3, "sfiFailure"),
        request(4, "<Method>SendCSTARequest</Method><Line>1001</Line><a/>"),
        answer(4, "", Delivery::gone),
        request(0, "<Method>RemoveConfParticipant</Method><callID>5</callID>", Sending::oneWay),
        event("<Method>CallHeldEvent</Method><LineID>1001</LineID><CallID>6</CallID>"),
        event(callState(5, numbers::callCleared, numbers::reasonFarEndCleared)),
        request(5, "<Method>GetDevices</Method>"),
    };
}

TEST(Ladder, DrawsACall)
{
    EXPECT_EQ("\n" + textLadder(stepsOf(aCall())),
              R"(
application                                             service
|                                                          |
|--Activate----------------------------------------------->|
|<..sfiSuccess.............................................|
application                                             service             2001
|                                                          |                   |
|--OutgoingCallMakeRequest Line=1001 Destination=2001----->|--call------------>|
|<--CallStateChangeEvent delivered CallID=5----------------|                   |
|<..sfiSuccess.............................................|                   |
|                                                   ( advance 2s )             |
|<--CallStateChangeEvent connected CallID=5----------------|<--answers---------|
|--HoldCall CallID=9-------------------------------------->|                   |
|<..sfiFailure.............................................|                   |
|--SendCSTARequest Line=1001 + 4 bytes-------------------->|                   |
|<..(the service is gone)..................................|                   |
|--RemoveConfParticipant callID=5------------------------->|                   |
|<--CallHeldEvent CallID=6---------------------------------|                   |
|<--CallStateChangeEvent cleared (farEndCleared) CallID=5--|<--clears----------|
|--GetDevices--------------------------------------------->|
)");
}

TEST(Ladder, DrawsACallInMermaid)
{
    EXPECT_EQ(mermaidLadder(stepsOf(aCall())),
              R"(sequenceDiagram
    participant application
    participant service
    application->>service: Activate
    service-->>application: sfiSuccess
    participant far1 as 2001
    application->>service: OutgoingCallMakeRequest Line=1001 Destination=2001
    service->>far1: call
    service->>application: CallStateChangeEvent delivered CallID=5
    service-->>application: sfiSuccess
    Note over service: advance 2s
    far1->>service: answers
    service->>application: CallStateChangeEvent connected CallID=5
    application->>service: HoldCall CallID=9
    service-->>application: sfiFailure
    application->>service: SendCSTARequest Line=1001 + 4 bytes
    service-->>application: (the service is gone)
    application->>service: RemoveConfParticipant callID=5
    service->>application: CallHeldEvent CallID=6
    far1->>service: clears
    service->>application: CallStateChangeEvent cleared (farEndCleared) CallID=5
    application->>service: GetDevices
)");
    MermaidLadder ladder;
    FlowStep step;
    step.application = FlowStep::Between::toService;
    step.text = "a;b#c <d>";
    EXPECT_EQ(ladder.add(step), "    application->>service: a#59;b#35;c #lt;d#gt;\n");
}

TEST(Ladder, FarEndsComeAndGo)
{
    const auto step = [](const std::string& farEnd, const std::string& leaves = "")
    {
        FlowStep made;
        made.farEnd = FlowStep::Between::fromService;
        made.farEndName = farEnd;
        made.farEndText = "calls";
        made.leaves = leaves;
        return made;
    };
    const auto drawn = [&](std::size_t width)
    {
        TextLadder ladder(width);
        std::string text = "\n";
        for (const FlowStep& each : {step("2001", "2001"), step("2002"), step("2003"),
                                     step("2002", "2002"), step("2004"), step("2005")})
            text += ladder.add(each);
        return text;
    };
    EXPECT_EQ(drawn(80), R"(
application                                             service             2001
|                                                          |                   |
|                                                          |<--calls-----------|
application                                             service             2002
|                                                          |                   |
|                                                          |<--calls-----------|
application                                     service        2002         2003
|                                                  |             |             |
|                                                  |<--calls-------------------|
|                                                  |<--calls-----|             |
application                                     service        2004         2003
|                                                  |             |             |
|                                                  |<--calls-----|             |
|                                                  |<--2005 calls--------------|
)");
    EXPECT_EQ(drawn(40), R"(
application            service      2001
|                         |            |
|                         |<--calls----|
application            service      2002
|                         |            |
|                         |<--calls----|
|                         |<--2003 c..-|
|                         |<--calls----|
application            service      2004
|                         |            |
|                         |<--calls----|
|                         |<--2005 c..-|
)") << "there is room for one only";
}

TEST(Ladder, NoLineIsWiderThanTold)
{
    std::vector<TraceRecord> records = aCall();
    for (int call = 20; call < 29; ++call)
        records.push_back(event("<Method>IncomingCallEvent</Method><LineID>1001</LineID><CallID>" +
                                std::to_string(call) +
                                "</CallID><URI>sip:\xe5\xbc\xa0\xe4\xbc\x9f" +
                                std::to_string(call) +
                                "@host</URI><Name>\xe5\xbc\xa0\xe4\xbc\x9f and very much "
                                "more than fits</Name>"));
    records.push_back(control("x" + std::string(200, 'y')));
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

TEST(Filter, PicksLinesCallsAndMethods)
{
    TraceRecord threw = request(2, "lost");
    threw.kind = TraceRecord::Kind::exception;
    TraceRecord dropped = request(0, "");
    dropped.kind = TraceRecord::Kind::dropped;
    const auto held = [](const char* line, const char* call)
    {
        return event("<Method>CallHeldEvent</Method><LineID>" + std::string(line) +
                     "</LineID><CallID>" + call + "</CallID>");
    };
    const std::vector<TraceRecord> records = {
        request(1, "<Method>GetDevices</Method>"),  // 0
        answer(1, "<1001>"),                        // 1
        request(2, "<Method>OutgoingCallMakeRequest</Method><Line>1001</Line>"
                   "<CallID>0</CallID><Destination>2001</Destination>"),               // 2
        held("1002", "8"),                                                             // 3
        held("1001", "7"),                                                             // 4
        answer(2, "sfiSuccess"),                                                       // 5
        request(3, "<Method>GetServiceState</Method>"),                                // 6
        request(4, "<Method>AnswerCall</Method><Line>1001</Line><CallID>7</CallID>"),  // 7
        answer(3, "in service"),                                                       // 8
        threw,                                                                         // 9
        answer(4, "sfiSuccess"),                                                       // 10
        request(0, "<Method>RemoveConfParticipant</Method><callID>7</callID>",
                Sending::oneWay),  // 11
        control("hang up 1001"),   // 12
        dropped,                   // 13
    };
    using Indexes = std::vector<std::size_t>;
    const auto chosen = [&](const TraceFilter::Wanted& wanted)
    {
        TraceFilter filter(wanted);
        std::vector<bool> decisions;
        for (const TraceRecord& record : records)
            for (const bool wantedNow : filter.add(record))
                decisions.push_back(wantedNow);
        for (const bool wantedNow : filter.finish())
            decisions.push_back(wantedNow);
        EXPECT_EQ(decisions.size(), records.size());
        Indexes indexes;
        for (std::size_t i = 0; i < decisions.size(); ++i)
            if (decisions[i])
                indexes.push_back(i);
        EXPECT_EQ(filtered(records, wanted).size(), indexes.size());
        return indexes;
    };
    EXPECT_EQ(chosen({}), (Indexes{0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13}));
    EXPECT_EQ(chosen({"1001", "", {}}), (Indexes{2, 4, 5, 7, 10, 11, 12, 13}));
    EXPECT_EQ(chosen({"1002", "", {}}), (Indexes{3, 13}));
    EXPECT_EQ(chosen({"", "7", {}}), (Indexes{2, 4, 5, 7, 10, 11, 13}));
    EXPECT_EQ(chosen({"", "9", {}}), (Indexes{13}));
    EXPECT_EQ(chosen({"", "", {"AnswerCall", "CallHeldEvent"}}), (Indexes{3, 4, 7, 10, 13}));
    EXPECT_EQ(chosen({"1002", "", {"AnswerCall", "CallHeldEvent"}}), (Indexes{3, 13}));
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

TEST(Width, CountsColumnsOfATerminal)
{
    const struct
    {
        const char* text;
        std::size_t width;
    } rows[] = {
        {"", 0},
        {"abc", 3},
        {"gr\xc3\xbc\xc3\x9f", 4},
        {"\xe5\xbc\xa0\xe4\xbc\x9f", 4},  // ideographs
        {"\xef\xbc\xa1", 2},              // full-width A
        {"\xea\xb0\x80", 2},              // a syllable
        {"\xf0\x9f\x93\x9e", 2},          // a telephone
        {"u\xcc\x88", 1},                 // u and the dots above it
        {"\xe2\x82\xac", 1},              // a currency
        {"\xff\xfe", 2},                  // no UTF-8
    };
    for (const auto& row : rows)
        EXPECT_EQ(displayWidth(row.text), row.width) << row.text;
    EXPECT_EQ(cutToWidth("abcdef", 6), "abcdef");
    EXPECT_EQ(cutToWidth("abcdefg", 6), "abcd..");
    EXPECT_EQ(cutToWidth("\xe5\xbc\xa0\xe4\xbc\x9f\xe5\xbc\xa0", 5), "\xe5\xbc\xa0..");
    EXPECT_EQ(cutToWidth("abc", 1), ".");
}

TEST(Flow, ARequestWaitsForItsAnswerAndWhatComesMeanwhileBehindIt)
{
    Flow flow;
    const auto first = request(1, "<Method>HoldCall</Method><CallID>5</CallID>");
    const auto second = request(2, "<Method>GetDevices</Method>");
    EXPECT_TRUE(flow.add(event(callState(5, numbers::callConnected))).size() == 1);
    EXPECT_TRUE(flow.add(first).empty());
    EXPECT_TRUE(flow.add(second).empty());
    EXPECT_TRUE(flow.add(answer(2, "<1001>")).empty());
    const std::vector<FlowStep> steps = flow.add(answer(1, "sfiSuccess"));
    ASSERT_EQ(steps.size(), 4U);
    EXPECT_EQ(steps[0].text, "HoldCall CallID=5");
    EXPECT_EQ(steps[0].farEndName, "2001");
    EXPECT_EQ(steps[1].text, "GetDevices");
    EXPECT_EQ(steps[2].text, "<1001>");
    EXPECT_EQ(steps[3].text, "sfiSuccess");
    EXPECT_TRUE(flow.add(first).empty());
    const std::vector<FlowStep> rest = flow.finish();
    ASSERT_EQ(rest.size(), 1U);
    EXPECT_EQ(rest[0].farEndName, "");
}

TEST(Trace, ComesBackAsItWasWritten)
{
    TraceRecord full = request(7, "<Method>Subscribe</Method>", Sending::subscribe);
    full.channel = "subscriber-1";
    full.thread = 3;
    full.time = std::chrono::microseconds(1234567);
    TraceRecord threw = request(9, "std::bad_alloc");
    threw.kind = TraceRecord::Kind::exception;
    TraceRecord dropped = request(0, "");
    dropped.kind = TraceRecord::Kind::dropped;
    dropped.count = 5000000000;
    const std::vector<TraceRecord> records = {
        full,
        answer(7, "sfi \"x\"\n\\", Delivery::done),
        request(8, "<Method>Activate</Method>", Sending::timed),
        answer(8, "", Delivery::timedOut),
        answer(8, "", Delivery::gone),
        request(9, std::string("SigEvent:\0\xff\x01", 12), Sending::oneWay),
        event("gr\xc3\xbc\xc3\x9f"),
        control("call 1001 from 2001"),
        threw,
        dropped};
    TraceHead head;
    head.format = traceFormat;
    head.start = std::chrono::system_clock::time_point(std::chrono::microseconds(1772357400000012));
    head.program = "test";
    std::stringstream file;
    file << toJson(head) << "\n";
    for (const TraceRecord& record : records)
    {
        const std::string line = toJson(record);
        EXPECT_EQ(line.find('\n'), std::string::npos);
        file << line << "\n\n";
    }
    const Trace trace = readTrace(file, "t");
    EXPECT_EQ(trace.complaint, "");
    EXPECT_EQ(trace.head.format, traceFormat);
    EXPECT_EQ(trace.head.start, head.start);
    EXPECT_EQ(trace.head.program, "test");
    const std::vector<TraceRecord>& back = trace.records;
    ASSERT_EQ(back.size(), records.size());
    for (std::size_t i = 0; i < back.size(); ++i)
    {
        EXPECT_EQ(back[i].kind, records[i].kind) << i;
        EXPECT_EQ(back[i].time, records[i].time) << i;
        EXPECT_EQ(back[i].thread, records[i].thread) << i;
        EXPECT_EQ(back[i].number, records[i].number) << i;
        EXPECT_EQ(back[i].sending, records[i].sending) << i;
        EXPECT_EQ(back[i].delivery, records[i].delivery) << i;
        EXPECT_EQ(back[i].channel, records[i].channel) << i;
        EXPECT_EQ(back[i].count, records[i].count) << i;
        EXPECT_EQ(back[i].text, records[i].text) << i;
    }
    EXPECT_EQ(toJson(head),
              R"({"trace":2,"start":"2026-03-01T09:30:00.000012Z","program":"test"})");
    EXPECT_EQ(toJson(full),
              R"({"time":1.234567,"kind":"request","thread":3,"number":7,"sending":"subscribe",)"
              R"("channel":"subscriber-1","method":"Subscribe",)"
              R"("text":"<Method>Subscribe</Method>"})");
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

TEST(Trace, SaysWhichLineIsWrongAndHowAndReadsTheRest)
{
    const struct
    {
        const char* line;
        const char* error;
    } rows[] = {
        {"{", "t:2: not JSON (byte 2)"},
        {"\xff", "t:2: not JSON (byte 1)"},
        {"[]", "t:2: not a JSON object"},
        {"{\"time\":1}", "t:2: not a record of a trace: \"time\" or \"kind\" is missing"},
        {"{\"kind\":\"event\",\"text\":\"\"}",
         "t:2: not a record of a trace: \"time\" or \"kind\" is missing"},
        {"{\"time\":1,\"kind\":\"evnt\",\"text\":\"\"}",
         "t:2: \"kind\" is \"evnt\", which is none of its words"},
        {"{\"time\":1,\"kind\":\"event\"}", "t:2: \"text\" is missing"},
        {"{\"time\":1e300,\"kind\":\"event\",\"text\":\"\"}",
         "t:2: \"time\" is no time since the start"},
        {"{\"time\":1,\"kind\":\"event\",\"text\":7}",
         "t:2: not a record of a trace: a member is of the wrong type"},
        {"{\"time\":1,\"kind\":\"event\",\"textHex\":\"0g\"}",
         "t:2: \"textHex\" is not hexadecimal"},
        {"{\"time\":1,\"kind\":\"event\",\"number\":1e30,\"text\":\"\"}",
         "t:2: \"number\" is no count"},
        {"{\"time\":1,\"kind\":\"event\",\"thread\":4294967296,\"text\":\"\"}",
         "t:2: \"thread\" is no count"},
        {"{\"trace\":3}", "t:2: written in format 3, and only 2 is known here"},
        {"{\"trace\":2,\"start\":\"noon\"}", "t:2: \"start\" is no time of day"},
        {"{}\n{}", "t:2: not a record of a trace: \"time\" or \"kind\" is missing; lines that "
                   "cannot be read: 2"},
    };
    for (const auto& row : rows)
    {
        std::istringstream file(toJson(event("x")) + "\n" + row.line + "\n" + toJson(event("y")) +
                                "\n");
        const Trace trace = readTrace(file, "t");
        EXPECT_EQ(trace.complaint, row.error);
        ASSERT_EQ(trace.records.size(), 2U) << row.error;
        EXPECT_EQ(trace.records[1].text, "y") << row.error;
    }
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

TEST(Flow, TellsOfExceptionsAndOfWhatIsMissing)
{
    TraceRecord threw = request(1, "std::bad_alloc");
    threw.kind = TraceRecord::Kind::exception;
    TraceRecord dropped = request(0, "");
    dropped.kind = TraceRecord::Kind::dropped;
    dropped.count = 12;
    TraceRecord callback = threw;
    callback.number = 0;
    const std::vector<FlowStep> steps =
        stepsOf({request(1, "<Method>GetDevices</Method>"), threw, callback, dropped});
    ASSERT_EQ(steps.size(), 4U);
    EXPECT_EQ(steps[1].application, FlowStep::Between::answer);
    EXPECT_EQ(steps[1].text, "(threw std::bad_alloc)");
    EXPECT_TRUE(steps[2].isNote());
    EXPECT_EQ(steps[2].text, "the callback threw std::bad_alloc");
    EXPECT_EQ(steps[3].text, "records that are missing here: 12");
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

TEST(Expectation, LooksAtEveryFieldThatItNames)
{
    const ReceivedEvent call =
        received("CallStateChangeEvent", {{"lineId", "1001"},
                                          {"callId", "12"},
                                          {"callState", "connected"},
                                          {"uri", "sip:2001@host"},
                                          {"callBackFeatureAvailable", "false"}});
    const struct
    {
        const char* text;
        bool matches;
    } rows[] = {
        {"CallStateChangeEvent", true},
        {"onCallStateChangeEvent callId=12", true},
        {"CallHeldEvent", false},
        {"CallStateChangeEvent callId=13", false},
        {"CallStateChangeEvent callState=connected", true},
        {"CallStateChangeEvent CallState=5", true},
        {"CallStateChangeEvent callState=held", false},
        {"CallStateChangeEvent lineId=1001 callId=12 callState=held", false},
        {"CallStateChangeEvent uri=sip:2001@host", true},
        {"CallStateChangeEvent uri=2001", false},
        {"CallStateChangeEvent uri=*2001*", true},
        {"CallStateChangeEvent uri=sip:*@h*t", true},
        {"CallStateChangeEvent uri=*2002*", false},
        {"CallStateChangeEvent uri=\"*2001*\"", false},
        {"CallStateChangeEvent name=\"\"", true},
        {"CallStateChangeEvent callBackFeatureAvailable=off", true},
        {"CallStateChangeEvent callBackFeatureAvailable=on", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(expectation(row.text).matches(call), row.matches) << row.text;
    EXPECT_TRUE(matchesPattern("*", ""));
    EXPECT_TRUE(matchesPattern("a*b*c", "aXbbYc"));
    EXPECT_FALSE(matchesPattern("a*b", "abc"));
    EXPECT_FALSE(matchesPattern("", "a"));
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
    const struct
    {
        const char* text;
        const char* mistake;
    } rows[] = {
        {"", "expect needs an event"},
        {"no", "expect needs an event"},
        {"callId=3", "expect needs an event"},
        {"CallHeldEvnt", "there is no event CallHeldEvnt, did you mean CallHeldEvent?"},
        {"CallHeldEvent calId=3", "CallHeldEvent has no field calId, did you mean callId?"},
        {"CallHeldEvent callId=x", "callId is a number, not \"x\""},
        {"CallHeldEvent within", "\"within\" needs a time"},
        {"CallHeldEvent within 3", "3 is no time"},
        {"CallHeldEvent as", "\"as\" needs a name"},
        {"CallHeldEvent 12", "expect takes field=value, \"within TIME\" and \"as NAME\", not 12"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(test::complaintOf<Mistake>([&] { expectation(row.text); }).rfind(row.mistake, 0),
                  0U)
            << row.text;
}

TEST(Expectation, SaysWhatWasNearestAndWhatDiffers)
{
    const std::deque<ReceivedEvent> log = {
        received("CallHeldEvent", {{"lineId", "1001"}, {"callId", "1"}}),
        received("CallHeldEvent", {{"lineId", "1002"}, {"callId", "2"}}),
        received("DevicesChangedEvent", {}),
        received("CallHeldEvent", {{"lineId", "1003"}, {"callId", "3"}}),
    };
    using Lines = std::vector<std::string>;
    EXPECT_EQ(expectation("CallHeldEvent lineId=1002 callId=9").explain(log, 0),
              (Lines{"nearest: CallHeldEvent lineId=1002 callId=2",
                     "differs: callId=9 was awaited, callId=2 came"}));
    EXPECT_EQ(expectation("CallHeldEvent lineId=7 callId=9").explain(log, 1),
              (Lines{"nearest: CallHeldEvent lineId=1003 callId=3",
                     "differs: lineId=7 was awaited, lineId=1003 came",
                     "differs: callId=9 was awaited, callId=3 came"}));
    EXPECT_EQ(expectation("CallRetrievedEvent").explain(log, 1),
              (Lines{"events that came: CallHeldEvent, DevicesChangedEvent"}));
    EXPECT_EQ(expectation("CallHeldEvent callId=3").explain(log, 4),
              (Lines{"nearest: such an event came earlier, before the one that was expected last",
                     "no event came"}));
}

TEST(Labels, TellStateAndReasonFirst)
{
    EXPECT_EQ(messageLabel(callState(5, numbers::callFailed, numbers::reasonBusy)),
              "CallStateChangeEvent failed (busy) CallID=5");
    EXPECT_EQ(messageLabel(callState(5, 77, 88)),
              "CallStateChangeEvent CallID=5 CallState=77 Reason=88");
    EXPECT_EQ(messageLabel("<Method>FeatureFailedEvent</Method><LineID>1001</LineID>"
                           "<CallID>3</CallID><Feature>1</Feature>"
                           "<FeatureFailure>2</FeatureFailure>"),
              "FeatureFailedEvent hold (noSuchCall) CallID=3");
}

TEST(Labels, TellWhatAPersonWantsToKnow)
{
    EXPECT_EQ(messageLabel("<Method>RegistrationStateChangeEvent</Method><LineID>1001</LineID>"
                           "<CallID>0</CallID><Registered>0</Registered>"),
              "RegistrationStateChangeEvent not registered LineID=1001");
    EXPECT_EQ(messageLabel("<sfiResult>sfiSuccess</sfiResult><uri>2001</uri>"),
              "sfiResult=sfiSuccess uri=2001");
    EXPECT_EQ(messageLabel(std::string("SigEvent:\0x", 11)), "SigEvent:\\x00x");
    EXPECT_EQ(eventLabel(received("DoNotDisturbEvent",
                                  {{"deviceId", "1001"}, {"doNotDisturbOn", "false"}})),
              "DoNotDisturbEvent deviceId=1001 doNotDisturbOn=false");
    EXPECT_EQ(shortNumber("sip:2001@host;x"), "2001");
    EXPECT_EQ(shortNumber("2001"), "2001");
}

}  // namespace

}  // namespace kit::phone

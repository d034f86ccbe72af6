// How two traces differ, times and identifiers aside.

#include "kit/language/Words.h"
#include "kit/trace/Comparison.h"
#include "tests/kit/Transcript.h"
#include "tests/kit/phone/Records.h"

#include <gtest/gtest.h>
#include <map>

namespace kit
{

namespace
{

using test::record;
using Records = std::vector<TraceRecord>;

TraceRecord state(const std::string& uri)
{
    return record(TraceRecord::Kind::event,
                  "<Method>CallStateChangeEvent</Method><CallID>0</CallID><URI>" + uri + "</URI>");
}

/// A record as the transcript writes it.
TraceRecord recordOf(const std::vector<Word>& words)
{
    const auto word = [&](std::size_t i, const std::string& otherwise)
    { return i < words.size() ? words[i].whole() : otherwise; };
    const std::string kind = word(0, "");
    const std::string first = word(1, "");
    if (kind == "held")
        return record(TraceRecord::Kind::event,
                      "<Method>CallHeldEvent</Method><LineID>1001</LineID>"
                      "<CallID>" +
                          first + "</CallID>");
    if (kind == "state")
        return state(first);
    if (kind == "event")
        return record(TraceRecord::Kind::event, words.at(1).text);
    if (kind == "control")
        return record(TraceRecord::Kind::control, first);
    if (kind == "dropped")
        return record(TraceRecord::Kind::dropped, "");
    const int number = std::stoi(first);
    if (kind == "hold")
        return record(TraceRecord::Kind::request,
                      "<Method>HoldCall</Method><Line>1001</Line><CallID>" + word(2, "") +
                          "</CallID><HoldCallReason>" + word(3, "1") + "</HoldCallReason>",
                      number);
    if (kind == "activate")
        return record(TraceRecord::Kind::request, "<Method>Activate</Method>", number);
    if (kind == "exception")
        return record(TraceRecord::Kind::exception, word(2, ""), number);
    static const std::map<std::string, Delivery> deliveries = {{"answer", Delivery::done},
                                                               {"late", Delivery::timedOut},
                                                               {"gone", Delivery::gone}};
    TraceRecord answer = record(TraceRecord::Kind::answer, word(2, "sfiSuccess"), number);
    answer.delivery = deliveries.at(kind);
    return answer;
}

TEST(TraceComparison, TellsWhatItsTranscriptSays)
{
    const auto compare = [](const std::string& line)
    {
        Records traces[2];
        std::size_t trace = 0;
        std::vector<Word> words;
        for (const Word& word : splitWords(line + " ;", 1, ";|"))
            if (word.text != ";" && word.text != "|")
                words.push_back(word);
            else
            {
                if (!words.empty())
                    traces[trace].push_back(recordOf(words));
                words.clear();
                trace += word.text == "|" ? 1 : 0;
            }
        return differences(traces[0], traces[1]);
    };
    test::replay("comparison", [&](const std::string&) -> test::Typing { return compare; });
}

TEST(TraceComparison, TimesAndChannelsDoNotCount)
{
    const Records one = {record(TraceRecord::Kind::request, "<Method>Activate</Method>", 1),
                         state("sip:2001")};
    Records other = one;
    for (TraceRecord& record : other)
    {
        record.time += std::chrono::seconds(3);
        record.thread = 4;
        record.channel = "another";
    }
    EXPECT_EQ(differences(one, other), "");
}

TEST(TraceComparison, TracesThatHaveNothingInCommon)
{
    Records one;
    Records other;
    for (int i = 0; i < 30000; ++i)
    {
        one.push_back(state("sip:" + std::to_string(i)));
        other.push_back(state("tel:" + std::to_string(i)));
    }
    const std::string text = differences(one, other);
    EXPECT_NE(text.find("and 29980 more | 29980 more"), std::string::npos) << text;
    EXPECT_LT(text.size(), 10000U);
}

}  // namespace

}  // namespace kit

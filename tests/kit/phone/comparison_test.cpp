// How two traces differ, times and identifiers aside.

#include "kit/trace/Comparison.h"

#include <gtest/gtest.h>

namespace kit
{

namespace
{

using Records = std::vector<TraceRecord>;

TraceRecord make(TraceRecord::Kind kind, const std::string& text, int number = 0)
{
    TraceRecord record;
    record.kind = kind;
    record.number = number;
    record.text = text;
    return record;
}

TraceRecord hold(int number, int call, int reason = 1)
{
    return make(TraceRecord::Kind::request,
                "<Method>HoldCall</Method><Line>1001</Line><CallID>" + std::to_string(call) +
                    "</CallID><HoldCallReason>" + std::to_string(reason) + "</HoldCallReason>",
                number);
}

TraceRecord answer(int number, const std::string& text = "sfiSuccess")
{
    return make(TraceRecord::Kind::answer, text, number);
}

TraceRecord held(int call)
{
    return make(TraceRecord::Kind::event,
                "<Method>CallHeldEvent</Method><LineID>1001</LineID><CallID>" +
                    std::to_string(call) + "</CallID>");
}

TraceRecord state(const std::string& uri)
{
    return make(TraceRecord::Kind::event,
                "<Method>CallStateChangeEvent</Method><CallID>0</CallID><URI>" + uri + "</URI>");
}

TEST(TraceComparison, TimesAndIdentifiersDoNotCount)
{
    Records one = {hold(1, 5), held(5), answer(1), hold(2, 6), answer(2)};
    Records other = {hold(11, 8), held(8), answer(11), hold(12, 5), answer(12)};
    for (TraceRecord& record : other)
    {
        record.time += std::chrono::seconds(3);
        record.thread = 4;
        record.channel = "another";
    }
    other.insert(other.begin() + 1, make(TraceRecord::Kind::control, "advance 2s"));
    EXPECT_EQ(differences(one, other), "");
    EXPECT_EQ(differences(other, one), "");
}

TEST(TraceComparison, ACallIsTheSameEverywhere)
{
    EXPECT_EQ(differences({hold(1, 5), held(5)}, {hold(1, 8), held(9)}),
              "2 | 2\n"
              "- event CallHeldEvent LineID=1001 CallID=5\n"
              "+ event CallHeldEvent LineID=1001 CallID=9\n"
              "  CallID: another call, 5 | 9\n");
    // Two calls of one are not one call of the other.
    EXPECT_EQ(differences({held(5), held(6)}, {held(8), held(8)}),
              "2 | 2\n"
              "- event CallHeldEvent LineID=1001 CallID=6\n"
              "+ event CallHeldEvent LineID=1001 CallID=8\n"
              "  CallID: another call, 6 | 8\n");
    // No call is not some call.
    EXPECT_NE(differences({held(0)}, {held(8)}), "");
}

TEST(TraceComparison, TellsTheFieldsThatDiffer)
{
    EXPECT_EQ(differences({hold(1, 5), answer(1), state("sip:2001"), held(5)},
                          {hold(1, 7, 3), answer(1), state("sip:2002"), held(7)}),
              "1 | 1\n"
              "- request HoldCall Line=1001 CallID=5 HoldCallReason=hold\n"
              "+ request HoldCall Line=1001 CallID=7 HoldCallReason=attendedTransfer\n"
              "  HoldCallReason: hold | attendedTransfer\n"
              "\n"
              "3 | 3\n"
              "- event CallStateChangeEvent CallID=0 URI=sip:2001\n"
              "+ event CallStateChangeEvent CallID=0 URI=sip:2002\n"
              "  URI: sip:2001 | sip:2002\n");
    EXPECT_EQ(differences({make(TraceRecord::Kind::event, "<Method>X</Method><a>1</a>")},
                          {make(TraceRecord::Kind::event, "<Method>X</Method><b>1</b>\x01")}),
              "1 | 1\n"
              "- event X a=1\n"
              "+ event X b=1 \\x01\n"
              "  a: 1 | (missing)\n"
              "  b: (missing) | 1\n");
}

TEST(TraceComparison, AnswersBelongToTheirRequests)
{
    const TraceRecord activate = make(TraceRecord::Kind::request, "<Method>Activate</Method>", 2);
    EXPECT_EQ(differences({hold(1, 5), activate, answer(1), answer(2)},
                          {hold(1, 5), activate, answer(1), answer(2, "sfiFailure")}),
              "4 | 4\n- answer to Activate sfiSuccess\n+ answer to Activate sfiFailure\n");
    TraceRecord late = answer(2, "");
    late.delivery = Delivery::timedOut;
    EXPECT_EQ(differences({hold(1, 5), activate, answer(2, "")}, {hold(1, 5), activate, late}),
              "3 | 3\n- answer to Activate\n+ no answer in time to Activate\n");
    EXPECT_EQ(differences({activate, make(TraceRecord::Kind::exception, "one", 2)},
                          {activate, make(TraceRecord::Kind::exception, "two", 2)}),
              "2 | 2\n- exception to Activate one\n+ exception to Activate two\n");
}

TEST(TraceComparison, WhatIsMissingAndWhatIsMore)
{
    const Records one = {hold(1, 5), held(5), answer(1), hold(2, 5), answer(2)};
    const Records other = {hold(1, 5), answer(1), hold(2, 5), state("sip:2001"), answer(2)};
    EXPECT_EQ(differences(one, other),
              "2 | 2\n- event CallHeldEvent LineID=1001 CallID=5\n"
              "\n5 | 4\n+ event CallStateChangeEvent CallID=0 URI=sip:2001\n");
    EXPECT_EQ(differences({held(5)}, {held(5), state("sip:2001")}),
              "end | 2\n+ event CallStateChangeEvent CallID=0 URI=sip:2001\n");
    EXPECT_EQ(differences({held(5)}, {}), "1 | end\n- event CallHeldEvent LineID=1001 CallID=5\n");
    EXPECT_EQ(differences({}, {}), "");
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

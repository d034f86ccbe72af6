// What applications are given: the book of calls.
#include "application/Application.h"
#include "kit/protocol/Numbers.h"
#include "kit/testing/EventInjector.h"

#include <gtest/gtest.h>

namespace
{

using communications::CallBook;

/// "7 1001 held sip:2001 Anna; 8 ..."
std::string inWords(const CallBook& book)
{
    std::string text;
    for (const CallBook::Call& call : book.calls())
        text += (text.empty() ? "" : "; ") + std::to_string(call.id) + " " + call.line + " " +
                kit::nameOf(kit::Meaning::callState, call.state) + " " + call.farEnd + " " +
                call.farEndName;
    return text;
}

TEST(CallBookTest, KnowsWhatTheEventsHaveTold)
{
    CallBook book(kit::callStates());
    kit::EventInjector events(book);
    // clang-format off
    const struct
    {
        const char* event;
        kit::Values values;
        const char* book;
    } steps[] = {
        {"IncomingCallEvent", {{"lineId", "1001"}, {"callId", "7"}, {"uri", "sip:2001"}, {"name", "Anna"}},
         "7 1001 offered sip:2001 Anna"},
        {"CallStateChangeEvent", {{"lineId", "1001"}, {"callId", "7"}, {"callState", "ringing"}},
         "7 1001 ringing sip:2001 Anna"},
        // A call that is known is not offered once more.
        {"IncomingCallEvent", {{"callId", "7"}}, "7 1001 ringing sip:2001 Anna"},
        {"CallHeldEvent", {{"callId", "7"}}, "7 1001 held sip:2001 Anna"},
        {"CallStateChangeEvent",
         {{"lineId", "1002"}, {"callId", "8"}, {"callState", "delivered"}, {"uri", "sip:2002"}},
         "7 1001 held sip:2001 Anna; 8 1002 delivered sip:2002 "},
        {"CallRetrievedEvent", {{"callId", "7"}, {"uri", "sip:2003"}, {"name", "Ben"}},
         "7 1001 connected sip:2003 Ben; 8 1002 delivered sip:2002 "},
        {"RemoteEndpointDetailsChangedEvent", {{"callId", "8"}, {"uri", "sip:2004"}, {"name", "Cem"}},
         "7 1001 connected sip:2003 Ben; 8 1002 delivered sip:2004 Cem"},
        // Nothing is learnt of a call whose state nobody has told.
        {"RemoteEndpointDetailsChangedEvent", {{"callId", "9"}, {"uri", "sip:2005"}},
         "7 1001 connected sip:2003 Ben; 8 1002 delivered sip:2004 Cem"},
        {"CallStateChangeEvent", {{"callId", "7"}, {"callState", "cleared"}}, "8 1002 delivered sip:2004 Cem"},
        {"CallStateChangeEvent", {{"callId", "8"}, {"callState", "idle"}}, ""},
        {"CallHeldEvent", {{"lineId", "1003"}, {"callId", "10"}}, "10 1003 held  "},
        {"IncomingCallMissedEvent", {{"callId", "10"}}, ""},
        {"CallHeldEvent", {{"lineId", "1003"}, {"callId", "11"}}, "11 1003 held  "},
        {"CallForwardedEvent", {{"callId", "11"}}, ""},
    };
    // clang-format on
    for (const auto& step : steps)
    {
        events.inject(step.event, step.values);
        EXPECT_EQ(inWords(book), step.book) << step.event;
    }
}

TEST(CallBookTest, FindsCallsByNumberAndByState)
{
    // Other numbers than the simulator's.
    CallBook book({90, 91, 92, 93, 94, 95, 96});
    kit::EventInjector events(book);
    for (const auto& [id, state] : {std::pair("1", "94"), {"2", "95"}, {"3", "94"}, {"4", "93"}})
        events.inject("CallStateChangeEvent",
                      {{"lineId", "1001"}, {"callId", id}, {"callState", state}});
    ASSERT_EQ(book.calls().size(), 4u);
    EXPECT_EQ(book.find("1001", 94), book.find(1));
    EXPECT_EQ(book.find("1001", 95), book.find(2));
    EXPECT_EQ(book.find("1002", 95), nullptr);
    EXPECT_EQ(book.find(5), nullptr);
    EXPECT_TRUE(book.held(*book.find(3)));
    EXPECT_FALSE(book.held(*book.find(2)));
    EXPECT_TRUE(book.inConference(*book.find(2)));
    EXPECT_FALSE(book.inConference(*book.find(4)));
    events.inject("CallStateChangeEvent", {{"callId", "1"}, {"callState", "96"}});
    EXPECT_EQ(book.find("1001", 94), book.find(3));
    book.clear();
    EXPECT_TRUE(book.calls().empty());
}

}  // namespace

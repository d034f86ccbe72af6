// The proxy's life, subscriptions, result words, field readers, and the framework's default bodies.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "tests/support/Tested.h"
#include "tests/support/TracedFramework.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <new>
#include <type_traits>

using support::Exception;
using support::Lines;

namespace
{

const std::string askLogging = "loggingOnAppOxa 'SIP Communications Service' 5";
const std::string logFront =
    "logAppOxa 'SIP Communications Service' './src/CommunicationsServiceProxy.cpp' 5 ";
const std::string sent = "sendSubscribe <Method>Subscribe</Method> channel-7 100000";

class ProxyTest : public testing::Test
{
protected:
    ProxyTest()
    {
        channel.context = &context;
        proxy.initProxy(channel);
        support::takeTrace();
        support::hooks.copies = 0;
    }
    ~ProxyTest() override { support::loggingOn = 0; }

    support::NamingContext context;
    support::Channel channel;
    support::Subscriber subscriber;
    TestedProxy proxy;
};

TEST_F(ProxyTest, IsBoundToEachChannelThatItIsGiven)
{
    support::Channel other;
    proxy.initProxy(other);
    EXPECT_EQ(support::takeTrace(), Lines{"setProtocol CommunicationsServiceProtocol"});
    other.answer = "sfiSuccess";
    EXPECT_EQ(proxy.activate(), 5);
    Proxy& base = proxy;
    base.shutdown();
    base.timerEvent(3);
    EXPECT_EQ(proxy.activate(), 5);
    support::takeTrace();
}

/// The trace of a subscription, with what is logged before and behind it.
Lines traced(const Lines& calls, const std::string& end = "")
{
    Lines lines{askLogging};
    if (support::loggingOn != 0)
        lines.push_back(logFront + "277 'subscribe start'");
    lines.insert(lines.end(), calls.begin(), calls.end());
    if (!end.empty())
        lines.push_back(askLogging);
    if (!end.empty() && support::loggingOn != 0)
        lines.push_back(logFront + end);
    return lines;
}

TEST_F(ProxyTest, SubscribesTheChannelThatTheContextNames)
{
    for (const int on : {0, 1, -1, 256})
        for (const auto& [answer, result] :
             {std::pair("sfiSuccess", 5), std::pair("sfiFailureCallBackToMany", 3),
              std::pair("", 0)})
        {
            support::loggingOn = on;
            channel.answer = answer;
            EXPECT_EQ(proxy.subscribe(&subscriber), result);
            EXPECT_EQ(context.asked, &subscriber);
            EXPECT_EQ(support::takeTrace(), traced({"findChannel", sent}, "302 'subscribe end'"));
            EXPECT_EQ(proxy.subscribe(nullptr), 0) << "nobody, without sending";
            EXPECT_EQ(support::takeTrace(), traced({}));
        }
}

TEST_F(ProxyTest, ThrowsACopyOfTheChannelsException)
{
    channel.inRequest = [] { throw Exception(4711); };
    for (const int on : {0, 1})
    {
        support::loggingOn = on;
        support::hooks.copies = 0;
        try
        {
            proxy.subscribe(&subscriber);
            ADD_FAILURE() << "nothing thrown";
        }
        catch (const MarloException& caught)
        {
            EXPECT_EQ(Exception::numberOf(caught), 4711);
            EXPECT_EQ(support::hooks.copies, 1);
            EXPECT_TRUE(typeid(caught) == typeid(MarloException)) << "not the object itself";
            EXPECT_EQ(support::hooks.exceptions, 1) << "the first one is gone";
        }
        EXPECT_EQ(support::hooks.exceptions, 0);
        EXPECT_EQ(support::takeTrace(),
                  traced({"findChannel", sent}, "298 'subscribe exception caught:'"));
    }
}

TEST_F(ProxyTest, LetsEveryOtherExceptionPassUnlogged)
{
    support::loggingOn = 1;
    channel.inRequest = [] { throw std::string("other"); };
    EXPECT_THROW(proxy.subscribe(&subscriber), std::string);
    EXPECT_EQ(support::takeTrace(), traced({"findChannel", sent}));

    // It is the object itself, from the context and from other operations.
    context.inFindChannel = [] { throw Exception(12); };
    EXPECT_THROW(proxy.subscribe(&subscriber), Exception);
    EXPECT_EQ(support::takeTrace(), traced({"findChannel"}));
    channel.inRequest = [] { throw Exception(13); };
    EXPECT_THROW(proxy.activate(), Exception);
    EXPECT_EQ(support::hooks.copies, 0);
    support::takeTrace();
}

TEST(Defaults, DoNothing)
{
    class PlainContext final : public FrameworkContext
    {
    } context;
    support::Bystander executable;
    EXPECT_EQ(context.findChannel(&executable), "");
    executable.timerEvent(1);
    TestedEventInvoker invoker;
    Invoker& base = invoker;
    base.initInvoker(&context);
    EXPECT_EQ(support::takeTrace(), Lines());
}

/// Makes an object where there was something else before.
template <typename Object>
struct InUsedMemory
{
    InUsedMemory()
    {
        std::memset(memory, 0xAA, sizeof memory);
        object = new (memory) Object;
    }
    ~InUsedMemory() { object->~Object(); }

    alignas(Object) unsigned char memory[sizeof(Object)];
    Object* object;
};

TEST(Defaults, NothingPointsAnywhereAtFirst)
{
    InUsedMemory<support::Channel> channel;
    EXPECT_EQ(channel.object->context, nullptr);
    // The channel's pointer is all that the proxy keeps, behind its two tables.
    InUsedMemory<CommunicationsServiceProxy> proxy;
    ASSERT_EQ(sizeof(CommunicationsServiceProxy), 3 * sizeof(void*));
    void* kept;
    std::memcpy(&kept, proxy.memory + 2 * sizeof(void*), sizeof kept);
    EXPECT_EQ(kept, nullptr);
}

// Applications do not delete what they are given.
static_assert(!std::is_destructible<CommunicationsServiceIfc>::value, "");
static_assert(!std::is_destructible<CommunicationsServiceEventIfc>::value, "");
static_assert(!std::has_virtual_destructor<CommunicationsServiceIfc>::value, "");
static_assert(!std::has_virtual_destructor<CommunicationsServiceEventIfc>::value, "");

/// White space, signs and digits are what they are in the C locale; all other bytes end a number.
TEST(Readers, EachByteInFrontOfANumber)
{
    const support::ForeignLocale foreign;
    for (int byte = 0; byte < 256; ++byte)
    {
        const char c = static_cast<char>(byte);
        long expected = 0;
        if (std::strchr(" \t\n\v\f\r+", c) != nullptr && c != '\0')
            expected = 7;
        else if (c == '-')
            expected = -7;
        else if (c >= '0' && c <= '9')
            expected = 10 * (c - '0') + 7;
        const std::string message = std::string("<b>") + c + "7</b>";
        EXPECT_EQ(CommunicationsServiceProxy::getParamAsLong("<b>", message, "</b>"), expected)
            << byte;
        EXPECT_EQ(CommunicationsServiceEventInvoker::getParamAsLong("<b>", message, "</b>"),
                  expected)
            << byte;
    }
}

TEST(Readers, OfAnswersAndEventsDifferInHowTheyFindTheEnd)
{
    using Answer = CommunicationsServiceProxy;
    using Event = CommunicationsServiceEventInvoker;
    using namespace std::string_literals;
    const struct
    {
        std::string message;
        std::string answerText;
        long answerNumber;
        std::string eventText;
        long eventNumber;
    } rows[] = {
        {"<b>2</b>", "2", 2, "2", 2},
        {"", "", -1, "", -1},
        {"2</b>", "", -1, "", -1},
        {"<b>2", "2", 2, "", -1},
        {"</b><b>2x", "2x", 2, "", -1},
        {"<a>1</a><b>2</b>", "2", 2, "2", 2},
        {"</b><b>2</b>", "2</b>", 2, "2", 2},
        {"</b>1<b>", "", 0, "", -1},
        {"<b></b>", "", 0, "", 0},
        {"<b>x</b>", "x", 0, "x", 0},
        {"<b> 42abc</b>", " 42abc", 42, " 42abc", 42},
        {"<b>1</b><b>2</b>", "1", 1, "1", 1},
        {std::string(70000, 'x') + "<b>2</b>", "2", 2, "2", 2},
        {"<b><b>3</b></b>", "<b>3", 0, "<b>3", 0},
        {"x<b>4</b>", "4", 4, "4", 4},
        {"<b>\0005</b>"s, "\0005"s, 0, "\0005"s, 0},
        {"<b>6\0007</b>"s, "6\0007"s, 6, "6\0007"s, 6},
        {"<b>2147483648</b>", "2147483648", 2147483647, "2147483648", 2147483647},
        {"<b>-2147483649</b>", "-2147483649", -2147483647 - 1, "-2147483649", -2147483647 - 1},
        {"<B>1</B>", "", -1, "", -1},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.message);
        EXPECT_EQ(Answer::getParamAsString("<b>", row.message, "</b>"), row.answerText);
        EXPECT_EQ(Answer::getParamAsLong("<b>", row.message, "</b>"), row.answerNumber);
        EXPECT_EQ(Event::getParamAsString("<b>", row.message, "</b>"), row.eventText);
        EXPECT_EQ(Event::getParamAsLong("<b>", row.message, "</b>"), row.eventNumber);
    }
    // Any two texts serve as tags.
    EXPECT_EQ(Answer::getParamAsString("<a>", "<a>1</a><b>2</b>", "</b>"), "1</a><b>2");
    EXPECT_EQ(Event::getParamAsString("<b>", "<a>1</a><b>2</b>", "</a>"), "");
    EXPECT_EQ(Answer::getParamAsString("<b>", "<a>1</a><b>2</b>", "</a>"), "2</b>");
    EXPECT_EQ(Event::getParamAsString("aba", "xababa!", "ba"), "");
    EXPECT_EQ(Event::getParamAsString("ab", "xababa!", "ba"), "a");
    for (const auto read : {Answer::getParamAsString, Event::getParamAsString})
        EXPECT_EQ(read("a\0"s, "a1a\0002b3b\0"s, "b\0"s), "2b3") << "also with zero bytes";
    for (const auto read : {Answer::getParamAsLong, Event::getParamAsLong})
        EXPECT_EQ(read("a\0"s, "a1a\0001323\0"s, "3\0"s), 132);
    // A number ends where its value does, also before a further digit.
    EXPECT_EQ(Answer::getParamAsLong("a", "a1234", "34"), 12);
    EXPECT_EQ(Event::getParamAsLong("a", "a1234", "34"), 12);
}

}  // namespace

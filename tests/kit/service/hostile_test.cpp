// Whatever comes in, the service answers and stays as it was for everybody else.

#include "kit/protocol/Protocol.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/Robots.h"
#include "kit/service/SimulatedService.h"
#include "tests/kit/service/Asking.h"

#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

using kit::test::activate;
using kit::test::ask;
using kit::test::subscribe;

/// A request that is right in form, for every method.
std::vector<std::string> seeds()
{
    std::vector<std::string> texts = {"SigEvent:abc", "<Method></Method>", ""};
    for (const kit::Operation& operation : kit::operations())
    {
        if (operation.sending == kit::Sending::nothing || *operation.method == '\0')
            continue;
        std::string text = kit::element("Method", operation.method);
        for (const kit::Field& field : operation.arguments)
            if (*field.tag != '\0')
                text += kit::element(field.tag, std::string(field.tag) == "Line"          ? "1001"
                                                : std::string(field.tag) == "Destination" ? "1002"
                                                                                          : "1");
        texts.push_back(text);
    }
    return texts;
}

class Mutator
{
public:
    explicit Mutator(unsigned seed) : random_(seed) {}

    std::size_t below(std::size_t limit)
    {
        return limit == 0 ? 0 : std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
    }

    std::string bytes(std::size_t length)
    {
        std::string text;
        for (std::size_t i = 0; i < length; ++i)
            text += static_cast<char>(below(256));
        return text;
    }

    std::string mutate(std::string text, const std::vector<std::string>& others)
    {
        for (std::size_t times = 1 + below(4); times > 0; --times)
        {
            const std::size_t at = below(text.size() + 1);
            switch (below(6))
            {
            case 0:
                text.insert(at, bytes(1 + below(4)));
                break;
            case 1:
                text.erase(at, 1 + below(6));
                break;
            case 2:
                text.resize(at);
                break;
            case 3:
                if (at < text.size())
                    text[at] = static_cast<char>(below(256));
                break;
            case 4:
                text += others[below(others.size())];
                break;
            default:
                text.insert(at, text.substr(below(text.size() + 1), below(40)));
                break;
            }
        }
        return text;
    }

private:
    std::mt19937 random_;
};

const std::vector<std::string> commandSeeds = {"call 1001 from 2001 name \"a b\" priority flash",
                                               "call 1002 from 4711 auto-answer",
                                               "answer",
                                               "hang up",
                                               "hold 1",
                                               "transfer 1 to 2001",
                                               "ring 3001 from 2001",
                                               "preempt 1 priority flash",
                                               "advance 10s",
                                               "message urgent",
                                               "mailbox new 3",
                                               "show calls",
                                               "event <Method>x</Method>",
                                               "fail AnswerCall times 2",
                                               "heal",
                                               "add line 1010",
                                               "remove line 1010",
                                               "csta 1001 <x>",
                                               "secure 1 state open",
                                               "help",
                                               "record 1 on"};

/// A sane request still has a sane answer.
void expectAlive(const std::shared_ptr<kit::SimulatedService>& service)
{
    service->control("reset");
    kit::EmbeddedConnection application(service);
    EXPECT_EQ(ask(application, activate), "sfiSuccess");
    EXPECT_EQ(service->control("call 1001 from 4711").text, "call 1");
    EXPECT_EQ(ask(application, "<Method>AnswerCall</Method><Line>1001</Line><CallID>1</CallID>"),
              "sfiSuccess");
}

TEST(ServiceHostile, RequestsAndCommandsThatAreMutated)
{
    kit::EmbeddedConnection application;
    kit::SimulatedService& service = *application.service();
    std::size_t events = 0;
    std::size_t complaints = 0;
    service.setLog(
        [&](const std::string& line)
        {
            ++complaints;
            EXPECT_EQ(line.find('\n'), std::string::npos);
        });
    application.setEventSink([&](const std::string&, const std::string&) { ++events; });
    subscribe(application);
    ask(application, activate);
    const std::vector<std::string> texts = seeds();
    Mutator mutator(20240611);
    for (int i = 0; i < 20000; ++i)
    {
        const std::size_t kind = mutator.below(10);
        if (kind == 0)
            ask(application, mutator.bytes(mutator.below(200)));
        else if (kind == 1)
            service.control(
                mutator.mutate(commandSeeds[mutator.below(commandSeeds.size())], commandSeeds));
        else if (kind == 2)
            service.control(commandSeeds[mutator.below(commandSeeds.size())]);
        else if (kind == 3)
            ask(application, texts[mutator.below(texts.size())]);
        else
        {
            const std::string text = mutator.mutate(texts[mutator.below(texts.size())], texts);
            const std::string answer = ask(application, text);
            // Only what is not to be answered is not.
            const kit::Operation* const known = kit::findRequest(kit::parse(text).method);
            const bool oneWay = text.rfind("SigEvent:", 0) == 0 ||
                                (known != nullptr && known->sending == kit::Sending::oneWay);
            EXPECT_TRUE(oneWay || (!answer.empty() && answer[0] != '(')) << text << ": " << answer;
        }
    }
    // Both sides of the checks have been reached.
    EXPECT_GT(events, 100U);
    EXPECT_GT(complaints, 1000U);
    expectAlive(application.service());
}

/// Requests in random order, as an application without sense might send them: the state of calls
/// that belong together has to survive it.
TEST(ServiceHostile, RightRequestsInAnyOrder)
{
    // All that concern a line or a call; one that disturbs nobody any more would keep calls away.
    std::vector<kit::Operation> operations;
    for (const kit::Operation& operation : kit::operations())
    {
        const std::string first = operation.arguments.empty() ? "" : operation.arguments[0].tag;
        if ((first == "Line" || first == "callID") &&
            operation.method != std::string("SetDoNotDisturb"))
            operations.push_back(operation);
    }
    std::vector<std::string> destinations = {"1001", "1002", "1003", "5000", "4711"};
    const kit::service::Robots robots;
    for (const auto& robot : robots.all())
        destinations.push_back(robot.first);
    kit::EmbeddedConnection application;
    kit::SimulatedService& service = *application.service();
    std::size_t done = 0;
    subscribe(application);
    ask(application, activate);
    Mutator mutator(7);
    for (int i = 0; i < 75000; ++i)
    {
        const kit::Operation& operation = operations[mutator.below(operations.size())];
        std::string text = kit::element("Method", operation.method);
        for (const kit::Field& field : operation.arguments)
        {
            const std::string tag = field.tag;
            std::string value = std::to_string(mutator.below(2));
            if (tag == "Line")
                value = destinations[mutator.below(3)];
            else if (tag == "Destination" || tag == "uri" || tag == "CallToBePickedUp" ||
                     tag == "remoteParticipant")
                value = destinations[mutator.below(destinations.size())];
            else if (tag == "IsInServiceInitiatedState")
                value = mutator.below(2) == 0 ? "TRUE" : "FALSE";
            else if (tag == "fwType" || tag == "RefuseCallReason" || tag == "cfnrRingCount")
                value = std::to_string(1 + mutator.below(3));
            else if (tag == "CallID" || tag == "callID" || tag == "activeCall" || tag == "heldCall")
            {
                // One of the calls that there are, most of the time.
                const std::string calls = "\n" + service.control("show calls").text;
                std::vector<std::string> ids = {"0"};
                for (std::size_t at = calls.find('\n'); at != std::string::npos;
                     at = calls.find('\n', at + 1))
                    ids.push_back(calls.substr(at + 1, calls.find(' ', at + 1) - at - 1));
                value = ids[mutator.below(ids.size())];
                if (value == "no")
                    value = "0";
            }
            text += kit::element(tag, value);
        }
        if (ask(application, text) == "sfiSuccess")
            ++done;
        if (mutator.below(4) == 0)
            service.advance(std::chrono::milliseconds(mutator.below(4000)));
        if (mutator.below(8) == 0)
            service.control(std::string("call 100") + std::to_string(1 + mutator.below(3)) +
                            " from " + destinations[mutator.below(destinations.size())] +
                            " priority " + std::to_string(mutator.below(5)));
    }
    EXPECT_GT(done, 7500U);
    service.advance(std::chrono::hours(1));
    expectAlive(application.service());
}

TEST(ServiceHostile, ManyMistakesOfOneRequestAreCounted)
{
    kit::EmbeddedConnection application;
    std::vector<std::string> log;
    application.service()->setLog([&](const std::string& line) { log.push_back(line); });
    std::string text = "<Method>HoldCall</Method><Line>1001</Line><CallID>1</CallID>"
                       "<HoldCallReason>1</HoldCallReason><Manual>1</Manual>";
    for (int i = 0; i < 1000; ++i)
        text += "<Lime></Lime><Line></Line>";
    EXPECT_EQ(ask(application, text), "sfiFailure");
    ASSERT_EQ(log.size(), 21U);
    EXPECT_EQ(log[0], "unknown tag <Lime> in HoldCall, did you mean <Line>?");
    EXPECT_EQ(log[19], "tag <Line> twice in HoldCall");
    EXPECT_EQ(log[20], "1980 more such tags in HoldCall");
    log.clear();
    EXPECT_EQ(ask(application, "<Method>HoldCall</Method>" + std::string(20000, '<')),
              "sfiFailure");
    EXPECT_EQ(log,
              (std::vector<std::string>{"20002 times \"<\" in a request, 10000 are possible"}));
    EXPECT_EQ(ask(application,
                  "<Method>SendCSTARequest</Method><Line>1001</Line>" + std::string(20000, '<')),
              "sfiSuccess");
}

TEST(ServiceHostile, LargeTexts)
{
    kit::EmbeddedConnection application;
    const std::string large(1000000, 'x');
    const std::string open(1000000, '<');
    for (const std::string& text :
         {large, open, "<Method>" + large + "</Method>",
          "<Method>HoldCall</Method><" + large + ">1</" + large + ">",
          "<Method>HoldCall</Method><Line>" + large + "</Line><CallID>" + large + "</CallID>",
          "<Method>HoldCall</Method>" + open})
        EXPECT_EQ(ask(application, text), "sfiFailure");
    for (const std::string& command : {large, "call " + large + " from 1", "show " + large,
                                       "advance " + large, "\"" + large, "call 1001 from " + large})
        EXPECT_FALSE(application.service()->control(command).accepted);
    expectAlive(application.service());
}

}  // namespace

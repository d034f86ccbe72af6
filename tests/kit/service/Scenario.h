#ifndef TESTS_KIT_SERVICE_SCENARIO_H
#define TESTS_KIT_SERVICE_SCENARIO_H

#include "kit/language/Words.h"
#include "kit/protocol/Protocol.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/SimulatedService.h"
#include "tests/kit/service/Asking.h"

#include <algorithm>
#include <deque>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

inline std::string trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(" \t");
    if (begin == std::string::npos)
        return std::string();
    return text.substr(begin, text.find_last_not_of(" \t") - begin + 1);
}

/// The named words of a text.
inline kit::Values valuesOf(const std::string& text)
{
    kit::Values values;
    for (const kit::Word& word : kit::splitWords(text))
        values.emplace_back(word.name, word.text);
    return values;
}

/// Runs a script against the simulated service, strictly: whatever it says or does and the script
/// does not expect is a failure. A line is one of
///
///     operation name=value ... -> answer   a request; without an answer "sfiSuccess" or, when
///                                          none is awaited, nothing
///     raw TEXT -> answer                   a request as it stands
///     * command -> answer                  a command; without an answer any but an error; "|"
///                                          stands between the lines of one
///     : Event name=value ...               the next event, and fields of it
///     ? complaint                          the next line of the log
///     ! request or command                 it must fail; the answer is "sfiFailure", or why
///     ~ request or command                 the way there: its events are what another script tells
///     # comment
///
/// Words, quotes, comments and times are those of the whole kit.
class Scenario
{
public:
    /// A phone whose lines are registered, with nothing of that left to expect.
    Scenario()
    {
        application_.setEventSink(
            [this](const std::string& channel, const std::string& event)
            {
                EXPECT_EQ(channel, "channel");
                events_.push_back(event);
            });
        service_.setLog([this](const std::string& line) { complaints_.push_back(line); });
        EXPECT_EQ(kit::test::subscribe(application_), "sfiSuccess");
        EXPECT_EQ(kit::test::ask(application_, kit::test::activate), "sfiSuccess");
        events_.clear();
    }

    /// `first` is the number of the script's first line, for what is said of the others.
    void run(const std::string& script, int first = 1)
    {
        std::istringstream in(script);
        std::string line;
        for (int number = first; std::getline(in, line); ++number)
        {
            line = trimmed(line);
            if (line.empty() || line[0] == '#')
                continue;
            SCOPED_TRACE("line " + std::to_string(number) + ": " + line);
            runLine(line);
            if (testing::Test::HasFailure())
                return;
        }
        SCOPED_TRACE("at the end");
        expectQuiet();
    }

private:
    void runLine(const std::string& line)
    {
        if (line[0] == ':')
        {
            expectEvent(trimmed(line.substr(1)));
            return;
        }
        if (line[0] == '~')
        {
            runLine(trimmed(line.substr(1)));
            events_.clear();
            return;
        }
        if (line[0] == '?')
        {
            ASSERT_FALSE(complaints_.empty()) << "no complaint";
            EXPECT_EQ(complaints_.front(), trimmed(line.substr(1)));
            complaints_.pop_front();
            return;
        }
        expectQuiet();
        const bool mustFail = line[0] == '!';
        const std::size_t begin = mustFail ? 1 : 0;
        const std::size_t arrow = line.find(" -> ");
        const std::string command = trimmed(line.substr(begin, arrow - begin));
        const bool told = arrow != std::string::npos;
        const std::string answer = told       ? trimmed(line.substr(arrow + 4))
                                   : mustFail ? "sfiFailure"
                                              : "sfiSuccess";
        if (command[0] == '*')
        {
            kit::ControlAnswer got = service_.control(trimmed(command.substr(1)));
            std::replace(got.text.begin(), got.text.end(), '\n', '|');
            EXPECT_EQ(got.accepted, !mustFail) << got.text;
            EXPECT_EQ(got.text, told ? answer : got.text);
            return;
        }
        const std::size_t blank = command.find(' ');
        const std::string word = command.substr(0, blank);
        const std::string rest = blank == std::string::npos ? "" : trimmed(command.substr(blank));
        if (word == "raw")
        {
            request(rest, true, answer);
            return;
        }
        const kit::Operation* const operation = kit::findOperation(word);
        ASSERT_NE(operation, nullptr) << "no operation";
        request(kit::requestText(*operation, valuesOf(rest)),
                operation->sending != kit::Sending::oneWay, answer);
    }

    void request(const std::string& text, bool answered, const std::string& answer)
    {
        if (!answered)
            EXPECT_EQ(application_.post(text), kit::Delivery::done);
        else
            EXPECT_EQ(kit::test::ask(application_, text), answer);
    }

    void expectEvent(const std::string& expected)
    {
        ASSERT_FALSE(events_.empty()) << "no event";
        const kit::Message message = kit::parse(events_.front());
        events_.pop_front();
        const std::size_t blank = expected.find(' ');
        ASSERT_EQ(message.method, expected.substr(0, blank));
        const kit::Event* const event = kit::findEvent(message.method);
        ASSERT_NE(event, nullptr);
        // Whatever a scenario looks at, no field is left out and none is added.
        std::vector<std::string> tags;
        std::vector<std::string> sent;
        for (const kit::Field& field : event->arguments)
            if (*field.tag != '\0')
                tags.push_back(field.tag);
        for (const kit::Message::Element& element : message.elements)
            sent.push_back(element.tag);
        EXPECT_EQ(sent, tags);
        if (blank == std::string::npos)
            return;
        for (const auto& [name, value] : valuesOf(expected.substr(blank + 1)))
        {
            const std::size_t place = kit::placeOf(event->arguments, name);
            ASSERT_LT(place, event->arguments.size()) << "no field " << name;
            const kit::Field& field = event->arguments[place];
            const std::string* const got =
                field.kind == kit::Kind::payload ? &message.payload : message.find(field.tag);
            ASSERT_NE(got, nullptr) << name;
            EXPECT_EQ(kit::toPeople(field, *got), value) << name;
        }
    }

    void expectQuiet()
    {
        for (const std::string& event : events_)
            ADD_FAILURE() << "not expected: " << event;
        for (const std::string& complaint : complaints_)
            ADD_FAILURE() << "not expected: " << complaint;
        events_.clear();
        complaints_.clear();
    }

    kit::EmbeddedConnection application_;
    kit::SimulatedService& service_ = *application_.service();
    std::deque<std::string> events_;
    std::deque<std::string> complaints_;
};

#endif

#include "Scenario.h"

#include "kit/service/Robots.h"
#include "kit/service/Usage.h"
#include "tests/support/Folder.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <ostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace
{

struct Row
{
    std::string name;
    std::string script;
    int line;  ///< of the file on which the script begins
};

/// The scenarios of the file: "== Name", then lines up to the next.
std::vector<Row> scenarios()
{
    std::ifstream file(SCENARIOS);
    std::vector<Row> rows;
    std::string line;
    for (int number = 1; std::getline(file, line); ++number)
        if (line.compare(0, 3, "== ") == 0)
            rows.push_back({line.substr(3), "", number + 1});
        else if (!rows.empty())
            rows.back().script += line + "\n";
    if (rows.empty())
        throw std::runtime_error("no scenarios in " SCENARIOS);
    return rows;
}

/// So that a failure names the row.
void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

class ServiceScenario : public testing::TestWithParam<Row>
{
};

TEST_P(ServiceScenario, Runs)
{
    Scenario scenario;
    scenario.run(GetParam().script, GetParam().line);
}

INSTANTIATE_TEST_SUITE_P(Rows, ServiceScenario, testing::ValuesIn(scenarios()),
                         [](const auto& row) { return row.param.name; });

/// What a service says of its commands comes out of the text as it went in.
TEST(ServiceCommands, AreDataAgain)
{
    kit::SimulatedService service;
    const std::vector<kit::CommandUsage> known = kit::simulationCommands();
    const std::vector<kit::CommandUsage> read =
        kit::parseCommandHelp("something else\n" + service.control("help").text);
    ASSERT_EQ(read.size(), known.size());
    for (std::size_t i = 0; i < known.size(); ++i)
    {
        EXPECT_EQ(read[i].name, known[i].name);
        EXPECT_EQ(read[i].usage, known[i].usage);
        EXPECT_EQ(read[i].help, known[i].help);
    }
    const std::vector<kit::UsageSlot> slots =
        kit::CommandUsage{"x", "LINE from NUMBER [name TEXT] [video] [CALL]", ""}.slots();
    std::string text;
    for (const kit::UsageSlot& slot : slots)
        text += slot.keyword + ":" + slot.value + (slot.optional ? "? " : " ");
    EXPECT_EQ(text, ":LINE from:NUMBER name:TEXT? video:? :CALL? ");
}

/// Every kind of value that stands in a usage is one that completion and checks know.
TEST(ServiceCommands, KindsHaveWords)
{
    const std::set<std::string> open = {"LINE", "NUMBER", "TEXT", "CALL",
                                        "REST", "COUNT",  "TIME", "FILE"};
    for (const kit::CommandUsage& command : kit::simulationCommands())
        for (const kit::UsageSlot& slot : command.slots())
            if (!slot.value.empty())
            {
                EXPECT_EQ(kit::wordsFor(slot.value).empty(), open.count(slot.value) == 1)
                    << slot.value;
            }
}

TEST(ServiceRobots, OfAFileDoWhatItSays)
{
    const TextFile file("# far ends\r\n"
                        "robot 2042 \"Zoe\" answers 1s, holds 2s, retrieves 3s, holds 500ms,"
                        " transfers 1s to sip:2047@x  # and so on\r\n"
                        "\n"
                        "robot tel:2043 'Al \"A\", B' answers,joins 1s,leaves 2s,hangs up 1s\n"
                        "robot 2044 is busy, stays busy 3s\n"
                        "robot 2045 refuses 1s, calls back 2s\n"
                        "robot 2001 \"Other\" is unobtainable\n"
                        "robot 2046 answers, holds, hangs up 1s\n"
                        "robot 2047 refuses, is never free");
    Scenario scenario;
    scenario.run("* robots " + file.path + " -> 7 robots\n" + contentsOf(ROBOTS_SCENARIO), 0);
}

TEST(ServiceRobots, OfAFileWithAMistakeAreNone)
{
    const struct
    {
        const char* line;
        const char* refusal;  ///< column and text, or the beginning of it
    } rows[] = {
        {"robt 2042", "1: unknown word \"robt\", did you mean robot?"},
        {"2042 answers", "1: unknown word \"2042\"; a line is: robot NUMBER [\"NAME\"] WHAT"},
        {"! robot 2042", "3: unknown word \"!robot\", did you mean robot?"},
        {"robot \x01", "7: the byte 0x01 is no text; write it as \\x01 in a word"},
        {"robot # 2042", "7: a number is missing; a line is: "},
        {"robot \"\" 'Zoe'", "7: \"\" is no number to call"},
        {"robot 20<42", "7: \"20<42\" is no number to call"},
        {"robot  1002 'Zoe'", "8: 1002 is a line of the phone"},
        {"robot 2041", "7: 2041 is there already, in line 1"},
        {"robot 2042 'Zoe", "12: the quote ' is not closed"},
        {"robot 2042 Zoe",
         "12: a robot never \"Zoe\", only: answers, refuses, calls back, holds, "},
        {"robot 2042 'Zoe' hold 2s", "18: a robot never \"hold\", did you mean holds?"},
        {"robot 2042 hang up 2s", "12: a robot never \"hang up\", did you mean hangs up?"},
        {"robot 2042 'answers' answer", "22: a robot never \"answer\", did you mean answers?"},
        {"robot 2042 answers 1s holds", "23: what is \"holds\"? A comma stands before what comes"},
        {"robot 2042 is busy 2s", "20: what is \"2s\"? A comma stands before what comes next"},
        {"robot 2042 answers 1s,", "23: nothing stands behind the comma"},
        {"robot 2042 answers,, holds", "20: nothing stands behind the comma"},
        {"robot 2042 answers soon", "20: soon is no time; write it as 250ms, 1.5s, 2min or 1h"},
        {"robot 2042 answers 25h", "20: 25h is longer than a day"},
        {"robot 2042 holds 1s", "12: \"holds\" cannot come first"},
        {"robot 2042 answers, answers", "21: \"answers\" cannot follow \"answers\""},
        {"robot 2042 refuses, holds", "21: \"holds\" cannot follow \"refuses\""},
        {"robot 2042 answers, retrieves", "21: \"retrieves\" cannot follow \"answers\""},
        {"robot 2042 answers, calls back", "21: \"calls back\" cannot follow \"answers\""},
        {"robot 2042 is busy, answers", "21: \"answers\" cannot follow \"is busy\""},
        {"robot 2042 is free, stays busy", "21: \"stays busy\" cannot follow \"is free\""},
        {"robot 2042 answers, hangs up, holds", "31: \"holds\" cannot follow \"hangs up\""},
        {"robot 2042 answers, transfers 2s", "33: \"transfers\" needs \"to NUMBER\""},
        {"robot 2042 answers, transfers to", "33: a number is missing"},
    };
    kit::SimulatedService service;
    const std::string before = service.control("show robots").text;
    const auto refused = [&](const std::string& text)
    {
        const TextFile file(text);
        const kit::ControlAnswer got = service.control("robots " + file.path);
        EXPECT_FALSE(got.accepted) << text;
        EXPECT_EQ(service.control("show robots").text, before) << text;
        const std::string place = file.path + ":";
        EXPECT_EQ(got.text.substr(0, place.size()), place);
        return got.text.substr(std::min(place.size(), got.text.size()));
    };
    for (const auto& row : rows)
    {
        const std::string wanted = std::string("3:") + row.refusal;
        const std::string got =
            refused(std::string("robot 2041 answers\n\n") + row.line + "\nrobot x y\n");
        EXPECT_EQ(got.substr(0, wanted.size()), wanted) << row.line;
        EXPECT_EQ(got.find('\n'), std::string::npos) << got;
    }
    std::string long33 = "robot 2042 answers";
    for (int i = 0; i < 31; ++i)
        long33 += ",joins";
    const TextFile enough(long33);
    EXPECT_EQ(kit::SimulatedService().control("robots " + enough.path).text, "1 robot");
    EXPECT_EQ(refused(long33 + ",joins"), "1:206: a robot does no more than 32 things");

    const std::string folder = testing::TempDir();
    const std::pair<std::string, std::string> files[] = {
        {"/nowhere/robots", "cannot read /nowhere/robots: No such file or directory"},
        {"/dev/zero", "cannot read /dev/zero: it is no file"},
        {folder, "cannot read " + folder + ": it is no file"},
    };
    for (const auto& [path, refusal] : files)
        EXPECT_EQ(service.control("robots " + path).text, refusal);
    const TextFile huge(std::string((1U << 20U) + 1, '\n'));
    EXPECT_EQ(service.control("robots " + huge.path).text,
              "cannot read " + huge.path + ": it is longer than 1 MiB");
}

/// The page for people names every number and every command, as they are.
TEST(ServicePage, NamesAllNumbersAndCommands)
{
    std::ifstream in(SERVICE_PAGE);
    const std::string page((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    kit::SimulatedService service;
    const kit::service::Robots robots;
    for (const auto& [number, robot] : robots.all())
    {
        const std::string row = "| " + number + " | " + robot->name + " | " + robot->habit + " |";
        EXPECT_NE(page.find(row), std::string::npos) << row;
    }
    for (const kit::CommandUsage& command : kit::simulationCommands())
    {
        const std::string entry = command.line() + "\n    " + command.help + "\n";
        EXPECT_NE(page.find(entry), std::string::npos) << entry;
    }
}

}  // namespace

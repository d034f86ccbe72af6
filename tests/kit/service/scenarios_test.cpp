#include "Scenario.h"

#include "kit/service/Robots.h"
#include "kit/service/Usage.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <ostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
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
    const std::set<std::string> open = {"LINE", "NUMBER", "TEXT", "CALL", "REST", "COUNT", "TIME"};
    for (const kit::CommandUsage& command : kit::simulationCommands())
        for (const kit::UsageSlot& slot : command.slots())
            if (!slot.value.empty())
            {
                EXPECT_EQ(kit::wordsFor(slot.value).empty(), open.count(slot.value) == 1)
                    << slot.value;
            }
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

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Commands.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sys/stat.h>
#include <unistd.h>

// The session's part that reads scripts.
namespace kit::phone
{

namespace
{

constexpr int deepestRun = 10;
constexpr int mostMistakesShown = 10;
constexpr std::size_t longestScript = 4U << 20U;

bool isFile(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Where the scripts lie that are installed with the program, "" when they are not.
std::string installedScript(const std::string& name)
{
    char program[4096];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program);
    if (length <= 0 || name.find('/') != std::string::npos)
        return "";
    std::string path(program, static_cast<std::size_t>(length));
    path.erase(path.rfind('/'));
    path += "/../share/communications-service/scripts/" + name;
    return isFile(path) ? path : "";
}

std::vector<std::string> readScript(const std::string& path)
{
    const std::string installed = isFile(path) ? "" : installedScript(path);
    std::ifstream in(installed.empty() ? path : installed, std::ios::binary);
    const std::string what = "cannot read the script " + shown(path, 200) + ": ";
    struct stat status = {};
    if (in && installed.empty() && stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        throw Mistake(what + "it is a directory");
    if (!in)
        throw Mistake(what + std::strerror(errno));
    std::vector<std::string> lines;
    std::string line;
    std::size_t size = 0;
    while (std::getline(in, line))
    {
        size += line.size() + 1;
        if (size > longestScript)
            throw Mistake(what + "it is longer than 4 MiB");
        lines.push_back(line);
    }
    if (in.bad())
        throw Mistake(what + std::strerror(errno));
    return lines;
}

std::string nameOfFile(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

void Session::check(const std::string& line, Variables& captured) const
{
    const Statement statement = parseStatement(line);
    if (statement.empty())
        return;
    if (const Command* command = findCommand(statement.command.text))
    {
        if (command->check != nullptr)
            command->check(statement, captured);
        return;
    }
    std::vector<Word> words = splitWords(statement.rest, statement.restColumn);
    const Operation& operation = resolve(statement, words);
    fillIn(words, captured);
    (void)bindArguments(operation, words, book_, Purpose::looking);
}

Verdict Session::runScript(const std::string& path)
{
    if (depth_ == deepestRun)
        throw Mistake("scripts run each other " + std::to_string(deepestRun) +
                      " deep; does one run itself?");
    const std::vector<std::string> lines = readScript(path);
    const std::string name = nameOfFile(path);
    if (linesAreStale_)
        learnLines();
    // All mistakes at once, before anything has been carried out.
    Verdict verdict = Verdict::met;
    Variables captured = variables_;
    int mistakes = 0;
    for (std::size_t i = 0; i < lines.size(); ++i)
        try
        {
            check(lines[i], captured);
        }
        catch (const Mistake& mistake)
        {
            verdict = Verdict::mistake;
            if (++mistakes > mostMistakesShown)
                continue;
            const std::string column =
                mistake.column() == 0 ? "" : std::to_string(mistake.column()) + ":";
            display_.complain(name + ":" + std::to_string(i + 1) + ":" + column + " " +
                              mistake.what());
        }
    if (mistakes > mostMistakesShown)
        display_.complain(name + ": and " + std::to_string(mistakes - mostMistakesShown) +
                          " more mistakes");
    if (verdict != Verdict::met)
        return verdict;

    ++depth_;
    const auto outerProgress = progressText_;
    for (std::size_t i = 0; i < lines.size() && verdict == Verdict::met && !ended_; ++i)
    {
        progressText_ = [&]
        {
            return name + ": line " + std::to_string(i + 1) + " of " +
                   std::to_string(lines.size()) + ", " +
                   durationText(std::chrono::duration_cast<std::chrono::seconds>(
                       std::chrono::steady_clock::now() - started_));
        };
        showProgress();
        verdict = execute(lines[i], {name, static_cast<int>(i + 1)});
    }
    progressText_ = outerProgress;
    --depth_;
    // Told where it happened; the line that ran this script has nothing to add.
    explanation_.clear();
    return verdict;
}

Verdict Session::runLines(std::istream& in, const std::string& name)
{
    Verdict first = Verdict::met;
    std::string line;
    for (int number = 1; !ended_ && std::getline(in, line); ++number)
    {
        const Verdict verdict = execute(line, {name, number});
        if (verdict == Verdict::interrupted)
            return verdict;
        if (first == Verdict::met)
            first = verdict;
    }
    return interruptions() > 0 ? Verdict::interrupted : first;
}

}  // namespace kit::phone

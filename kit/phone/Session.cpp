#include "kit/phone/Session.h"

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Commands.h"
#include "kit/phone/Interruptions.h"
#include "kit/phone/Script.h"

#include <istream>
#include <utility>

namespace kit::phone
{

namespace
{

constexpr int deepestRun = 10;
constexpr int mostMistakesShown = 10;

/// These print what they have to say.
bool speaksForItself(const Statement& statement)
{
    return statement.command.text == "say" || statement.command.text == "echo" ||
           statement.command.text == "wire";
}

}  // namespace

Session::Session(Settings settings, Display& display)
    : display_(display),
      recorder_(settings.recorder, display),
      phone_(std::move(settings.phone), recorder_, display),
      echo_(settings.echo),
      progress_(settings.progress)
{
    phone_.setWhileWaiting([this] { showProgress(); });
    phone_.setOnEach([this](const ReceivedEvent& received)
                     { scriptWriter_.add(phone_.timePassed(), received); });
    if (settings.remember)
        scriptWriter_.remember();
}

void Session::start()
{
    for (const char* line : {"subscribe", "activate"})
        execute(line, {});
}

Verdict Session::execute(const std::string& line, const Place& place)
{
    // What has come belongs before the line.
    phone_.pump();
    const Place before = std::exchange(place_, place);
    const int written = scriptWriter_.begin(phone_.timePassed(), line, variables_);
    phone_.events().shorten();
    Verdict verdict = Verdict::met;
    Values returned;
    try
    {
        const Statement statement = parseStatement(line);
        if (!statement.empty())
        {
            if (echo_ && !recorder_.draws() && !place.typed() && !speaksForItself(statement))
                display_.print("> " + printable(line.substr(line.find_first_not_of(" \t"))),
                               Display::Style::strong);
            const Report report = carryOut(statement);
            phone_.pump();
            verdict = judge(statement, report);
            if (findCommand(statement.command.text) == nullptr)
                returned = phone_.returned();
            // That it was carried out says as much.
            if (returned.size() == 1 &&
                (returned[0].second.empty() || returned[0].second == resultName(sfiSuccess)))
                returned.clear();
        }
    }
    catch (const Mistake& mistake)
    {
        phone_.pump();
        complain(mistake.column(), mistake.what());
        verdict = Verdict::mistake;
    }
    scriptWriter_.end(written, phone_.timePassed(), verdict, returned);
    const std::string problem = scriptWriter_.takeProblem();
    if (!problem.empty())
        display_.complain(problem);
    place_ = before;
    return interruptions() > 0 ? Verdict::interrupted : verdict;
}

Report Session::carryOut(const Statement& statement)
{
    if (const Command* command = findCommand(statement.command.text))
    {
        Variables captured = variables_;
        return command->read(statement, captured)(*this);
    }
    std::vector<Word> words = splitWords(statement.rest, statement.restColumn);
    const Operation& operation = resolve(statement.command, words);
    fillIn(words, variables_);
    return phone_.call(operation, words, statement.mustFail);
}

Verdict Session::judge(const Statement& statement, const Report& report)
{
    if (statement.mustFail && report.verdict == Verdict::met)
    {
        complain(0, shown(statement.command.text, 40) + " was to fail, but it was carried out");
        return Verdict::unmet;
    }
    if (statement.mustFail &&
        (report.verdict == Verdict::unmet || report.verdict == Verdict::unreachable))
        return Verdict::met;
    if (report.why.empty() || (report.shown && place_.typed()))
        return report.verdict;
    complain(0, report.why.front());
    for (std::size_t i = 1; i < report.why.size(); ++i)
        display_.complain("  " + report.why[i]);
    return report.verdict;
}

void Session::complain(std::size_t column, const std::string& text)
{
    std::string where = place_.typed() ? "" : place_.text() + ":";
    if (column != 0)
        where += (place_.typed() ? "column " : "") + std::to_string(column) + ":";
    display_.complain(where + (where.empty() ? "" : " ") + text);
}

void Session::check(const std::string& line, Variables& captured) const
{
    const Statement statement = parseStatement(line);
    if (statement.empty())
        return;
    if (const Command* command = findCommand(statement.command.text))
    {
        (void)command->read(statement, captured);
        return;
    }
    std::vector<Word> words = splitWords(statement.rest, statement.restColumn);
    const Operation& operation = resolve(statement.command, words);
    fillIn(words, captured);
    (void)bindArguments(operation, words, phone_.knownBook(), Purpose::looking);
}

/// All mistakes at once, before anything has been carried out.
Verdict Session::checkAll(const std::vector<std::string>& lines, const std::string& name)
{
    (void)phone_.book();  // which words are lines
    const Place before = place_;
    Variables captured = variables_;
    int mistakes = 0;
    for (std::size_t i = 0; i < lines.size(); ++i)
        try
        {
            check(lines[i], captured);
        }
        catch (const Mistake& mistake)
        {
            place_ = {name, static_cast<int>(i + 1)};
            if (++mistakes <= mostMistakesShown)
                complain(mistake.column(), mistake.what());
        }
    place_ = before;
    if (mistakes > mostMistakesShown)
        display_.complain(
            name + ": and " +
            counted(static_cast<std::size_t>(mistakes - mostMistakesShown), "more mistake"));
    return mistakes > 0 ? Verdict::mistake : Verdict::met;
}

Verdict Session::runScript(const std::string& path)
{
    if (depth_ == deepestRun)
        throw Mistake("scripts run each other " + std::to_string(deepestRun) +
                      " deep; does one run itself?");
    const Script script = readScript(path);
    Verdict verdict = checkAll(script.lines, script.name);
    ++depth_;
    const auto outerProgress = progressText_;
    for (std::size_t i = 0; i < script.lines.size() && verdict == Verdict::met && !ended_; ++i)
    {
        progressText_ = [&]
        {
            return script.name + ": line " + std::to_string(i + 1) + " of " +
                   std::to_string(script.lines.size()) + ", " +
                   durationText(std::chrono::duration_cast<std::chrono::seconds>(
                       std::chrono::steady_clock::now() - started_));
        };
        showProgress();
        verdict = execute(script.lines[i], {script.name, static_cast<int>(i + 1)});
    }
    progressText_ = outerProgress;
    --depth_;
    return verdict;
}

Verdict Session::runLines(std::istream& in, const std::string& name)
{
    Verdict first = Verdict::met;
    std::string line;
    for (int number = 1; !ended_ && std::getline(in, line); ++number)
    {
        const Verdict verdict = execute(number == 1 ? withoutMark(line) : line, {name, number});
        if (verdict == Verdict::interrupted)
            return verdict;
        if (first == Verdict::met)
            first = verdict;
    }
    return interruptions() > 0 ? Verdict::interrupted : first;
}

bool Session::finish()
{
    phone_.pump();
    const bool complete = recorder_.finish();
    display_.endProgress();
    return complete;
}

Completions Session::completionsFor(const std::string& line)
{
    if (simulation_.empty())
        simulation_ = parseCommandHelp(phone_.ask("help"));
    return complete(line, phone_.knownBook(), variables_, simulation_);
}

void Session::showProgress()
{
    if (progress_ && progressText_ &&
        std::chrono::steady_clock::now() - started_ > std::chrono::seconds(2))
        display_.progress(progressText_());
}

}  // namespace kit::phone

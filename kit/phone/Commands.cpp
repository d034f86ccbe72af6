#include "kit/phone/Commands.h"

#include "kit/language/Durations.h"
#include "kit/language/Switches.h"
#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Help.h"
#include "kit/protocol/Columns.h"
#include "kit/trace/Labels.h"

#include <algorithm>
#include <stdexcept>

namespace kit::phone
{

namespace
{

std::vector<Word> wordsOf(const Statement& statement)
{
    return splitWords(statement.rest, statement.restColumn);
}

std::vector<Word> wordsOf(const Statement& statement, const Variables& captured)
{
    std::vector<Word> words = wordsOf(statement);
    fillIn(words, captured);
    return words;
}

/// The one word behind a command.
Word onlyWord(const Statement& statement, const std::string& what)
{
    const std::vector<Word> words = wordsOf(statement);
    const std::string needs = statement.command.text + " needs " + what;
    if (words.empty())
        throw Mistake(needs);
    if (words.size() > 1)
        throw Mistake(needs + " and nothing else; what is " + shown(words[1].text, 40) + "?",
                      words[1].column);
    // What looks like name=value is one word here.
    Word word = words[0];
    word.text = word.whole();
    return word;
}

bool isQuoted(const Statement& statement)
{
    return statement.rest[0] == '"' || statement.rest[0] == '\'';
}

/// The rest of the line as it stands, or, when it is one quoted word, what the quotes hold.
std::string rawText(const Statement& statement, const std::string& what)
{
    if (statement.rest.empty())
        throw Mistake(statement.command.text + " needs " + what);
    return isQuoted(statement) ? onlyWord(statement, what).text : statement.rest;
}

// Two ways to read what many commands have behind them.

auto alone(Report (*run)(Session& session))
{
    return [run](const Statement& statement, Variables&) -> Action
    {
        const std::vector<Word> words = wordsOf(statement);
        if (!words.empty())
            throw Mistake(statement.command.text + " stands alone; what is " +
                              shown(words[0].text, 40) + "?",
                          words[0].column);
        return run;
    };
}

auto onOff(void (*set)(Session& session, bool on))
{
    return [set](const Statement& statement, Variables&) -> Action
    {
        const bool on = parseSwitch(onlyWord(statement, "on or off"));
        return [set, on](Session& session)
        {
            set(session, on);
            return Report();
        };
    };
}

std::string featuresText(const std::map<std::string, std::string>& features)
{
    std::string text;
    for (const auto& [name, value] : features)
        text += " " + name + "=" + shown(value, 40);
    return text;
}

Action help(const Statement& statement, Variables&)
{
    const std::vector<Word> words = wordsOf(statement);
    return [topic = words.empty() ? Word() : words[0]](Session& session)
    {
        session.display().print(helpOn(topic));
        return Report();
    };
}

Report lines(Session& session)
{
    const CallBook& book = session.phone().book();
    for (const std::string& line : book.lines())
    {
        const auto known = book.features().find(line);
        session.display().print(
            printable(line) + (known == book.features().end() ? "" : featuresText(known->second)));
    }
    if (book.lines().empty())
        session.display().print("no lines");
    return {};
}

Report calls(Session& session)
{
    const CallBook& book = session.phone().knownBook();
    for (const CallBook::Call& call : book.calls())
        session.display().print(std::to_string(call.id) + " line=" + printable(call.line) + " " +
                                nameOf(Meaning::callState, call.state) +
                                (call.farEnd.empty() ? "" : " " + printable(call.farEnd, 80)));
    if (book.calls().empty())
        session.display().print("no calls");
    return {};
}

Report lamps(Session& session)
{
    const auto& all = session.phone().knownBook().lamps();
    for (const auto& [line, lamps] : all)
        session.display().print(line + featuresText(lamps));
    if (all.empty())
        session.display().print("no lamp was set in this session");
    return {};
}

Action lastEvents(const Statement& statement, Variables&)
{
    int count = 10;
    if (!wordsOf(statement).empty())
    {
        const Word word = onlyWord(statement, "a number of events");
        if (!numberOf(Meaning::none, word.text, count) || count < 1)
            throw Mistake("events takes a number from 1, not " + shown(word.text, 40), word.column);
    }
    return [count](Session& session)
    {
        const std::deque<ReceivedEvent>& all = session.phone().events().events();
        for (std::size_t i = all.size() - std::min(all.size(), static_cast<std::size_t>(count));
             i < all.size(); ++i)
            session.display().print("* " + fullEventLabel(all[i]), Display::Style::event);
        if (all.empty())
            session.display().print("no events yet");
        return Report();
    };
}

Action expect(const Statement& statement, Variables& captured)
{
    const Expectation expectation = Expectation::parse(wordsOf(statement, captured));
    if (!expectation.name.empty())
        captured[expectation.name] = "1";
    return [expectation](Session& session)
    {
        std::string call;
        const Report report = session.phone().expect(expectation, call);
        if (!call.empty() && !expectation.name.empty())
            session.variables()[expectation.name] = call;
        return report;
    };
}

Action check(const Statement& statement, Variables& captured)
{
    return [words = wordsOf(statement, captured)](Session& session)
    { return session.phone().check(words); };
}

Report forget(Session& session)
{
    session.phone().events().passAll();
    return {};
}

Action wait(const Statement& statement, Variables&)
{
    const auto time = parseDuration(onlyWord(statement, "a time, as in \"wait 2s\""));
    return [time](Session& session) { return session.phone().wait(time); };
}

Action sim(const Statement& statement, Variables& captured)
{
    if (statement.rest.empty())
        throw Mistake("sim needs a command to the simulation; \"sim help\" lists them");
    return [command = filledIn(statement.rest, captured)](Session& session)
    { return session.phone().control(command); };
}

Action raw(const Statement& statement, Variables&)
{
    return [text = rawText(statement, "the text of a request")](Session& session)
    { return session.phone().raw(text); };
}

const char* const anEvent = "an event: its text, or its name and fields";

/// An event as it travels, from its name and some of its fields.
std::string eventFrom(const std::vector<Word>& words)
{
    if (words.empty())
        throw Mistake(std::string("event needs ") + anEvent);
    const Event& event = eventNamed(
        words[0], "; \"help events\" lists them, and a raw text begins with < or a quote");
    Values values;
    for (auto word = words.begin() + 1; word != words.end(); ++word)
    {
        if (word->name.empty())
            throw Mistake("fields of an event are written as field=value, not " +
                              shown(word->text, 40),
                          word->column);
        values.emplace_back(word->name, word->text);
        try
        {
            (void)eventText(event, values);
        }
        catch (const std::invalid_argument& error)
        {
            throw Mistake(printable(error.what(), 200), word->column);
        }
    }
    return eventText(event, values);
}

Action event(const Statement& statement, Variables& captured)
{
    std::string text = rawText(statement, anEvent);
    if (text[0] != '<' && !isQuoted(statement))
        text = eventFrom(wordsOf(statement, captured));
    return [text](Session& session)
    {
        if (!session.phone().inject(text))
            session.display().print("the library has no callback for it", Display::Style::faint);
        return Report();
    };
}

void wire(Session& session, bool on)
{
    session.recorder().setWire(on);
}

void ladder(Session& session, bool on)
{
    session.phone().pump();
    session.recorder().setLadder(on);
}

Action say(const Statement& statement, Variables&)
{
    return [text = statement.rest.empty() ? "" : rawText(statement, "a text")](Session& session)
    {
        if (session.recorder().picture() == Recorder::Picture::mermaid)
            session.display().print("    %% " + printable(text));
        else if (!session.recorder().draws())
            session.display().print(printable(text), Display::Style::strong);
        return Report();
    };
}

void echo(Session& session, bool on)
{
    session.setEcho(on);
}

Action run(const Statement& statement, Variables&)
{
    // What went wrong has been told where it happened.
    return [file = onlyWord(statement, "a script").text](Session& session)
    { return Report(session.runScript(file), {}); };
}

Action record(const Statement& statement, Variables&)
{
    return [file = onlyWord(statement, "a file, or off").text](Session& session)
    {
        if (file != "off")
        {
            session.scriptWriter().open(file);
            return Report();
        }
        const std::string written = session.scriptWriter().close();
        if (written.empty())
            throw Mistake("nothing is being recorded");
        session.display().print("recorded in " + printable(written), Display::Style::faint);
        return Report();
    };
}

Report reconnect(Session& session)
{
    const Report report = session.phone().reconnect();
    // A script says for itself what it wants.
    if (report.verdict == Verdict::met && session.place().typed())
        session.start();
    return report;
}

Report quit(Session& session)
{
    session.end();
    return {};
}

}  // namespace

const std::vector<Command>& commands()
{
    static const std::vector<Command> table = {
        {"help", "[OPERATION|EVENT|COMMAND]", "explains; alone, lists everything", help},
        {"lines", "", "the lines, and what the events have told about them", alone(lines)},
        {"calls", "", "the calls, as the events have told them", alone(calls)},
        {"lamps", "", "the lamps that were set in this session", alone(lamps)},
        {"events", "[NUMBER]", "the last events with all their fields", lastEvents},
        {"expect", "[no] EVENT [field=value ...] [within TIME] [as NAME]",
         "waits for an event, 1 s unless told otherwise; $NAME is its call from then on", expect},
        {"check", "result=VALUE field=value ...", "compares what the last operation returned",
         check},
        {"forget", "", "lets the next expect look at later events only", alone(forget)},
        {"wait", "TIME", "lets time pass", wait},
        {"sim", "COMMAND", "drives the simulation: far end, clock, faults; \"sim help\" lists all",
         sim},
        {"raw", "TEXT", "sends a request as it stands, without the library", raw},
        {"event", "TEXT | EVENT [field=value ...]",
         "lets an event come in as if the service had sent it", event},
        {"wire", "on|off", "shows what goes over the channel", onOff(wire)},
        {"ladder", "on|off", "draws what happens as a call flow", onOff(ladder)},
        {"say", "TEXT", "prints the text", say},
        {"echo", "on|off", "prints each line of a script before it is carried out", onOff(echo)},
        {"run", "FILE", "carries out a script", run},
        {"record", "FILE|off",
         "writes what was typed and what came as a script that expects the same", record},
        {"reconnect", "", "connects anew, after the service went away", alone(reconnect)},
        {"quit", "", "ends the phone, as Ctrl-D does", alone(quit)},
        {"exit", "", "the same", alone(quit)},
    };
    return table;
}

const Command* findCommand(const std::string& name)
{
    for (const Command& command : commands())
        if (name == command.name)
            return &command;
    return nullptr;
}

std::vector<std::string> commandWords()
{
    std::vector<std::string> words = columnOf(commands(), &Command::name);
    for (const ShortWord& shortWord : shortWords())
        if (words.back() != shortWord.word)
            words.push_back(shortWord.word);
    for (const Operation& operation : operations())
        words.push_back(operation.name);
    return words;
}

const Operation& resolve(const Word& command, std::vector<Word>& words)
{
    if (const Operation* operation = findOperation(command.text))
        return *operation;
    const auto positionals =
        std::count_if(words.begin(), words.end(), [](const Word& w) { return w.name.empty(); });
    const ShortWord* const shortWord =
        findShortWord(command.text, static_cast<std::size_t>(positionals));
    if (shortWord == nullptr)
        throw Mistake("there is no command " + shown(command.text, 40) +
                          didYouMean(command.text, commandWords(), " (\"help\" lists all)"),
                      command.column);
    words = expand(*shortWord, words);
    return *findOperation(shortWord->operation);
}

}  // namespace kit::phone

#include "kit/phone/Commands.h"

#include "kit/language/Durations.h"
#include "kit/language/Switches.h"
#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Help.h"
#include "kit/trace/Labels.h"

#include <algorithm>
#include <stdexcept>

namespace kit::phone
{

namespace
{

const char* const aTime = "a time, as in \"wait 2s\"";

std::vector<Word> wordsOf(const Statement& statement)
{
    return splitWords(statement.rest, statement.restColumn);
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
    if (!word.name.empty())
        word.text = word.name + "=" + word.text;
    return word;
}

bool onOff(const Statement& statement)
{
    const Word word = onlyWord(statement, "on or off");
    return parseSwitch(word);
}

void nothingBehind(const Statement& statement)
{
    const std::vector<Word> words = wordsOf(statement);
    if (!words.empty())
        throw Mistake(statement.command.text + " stands alone; what is " +
                          shown(words[0].text, 40) + "?",
                      words[0].column);
}

/// The rest of the line as it stands, or, when it is one quoted word, what the quotes hold.
std::string rawText(const Statement& statement, const std::string& what)
{
    if (statement.rest.empty())
        throw Mistake(statement.command.text + " needs " + what);
    if (statement.rest[0] != '"' && statement.rest[0] != '\'')
        return statement.rest;
    return onlyWord(statement, what).text;
}

/// An event as it travels, from raw text or from its name and some of its fields.
std::string eventFrom(const Statement& statement, const Variables& variables)
{
    std::string raw = rawText(statement, "an event: its text, or its name and fields");
    if (raw[0] == '<' || statement.rest[0] == '"' || statement.rest[0] == '\'')
        return raw;
    std::vector<Word> words = wordsOf(statement);
    if (words.empty())
        throw Mistake("event needs an event: its text, or its name and fields");
    const Event* const event = findEvent(words[0].text);
    if (event == nullptr)
    {
        throw Mistake("there is no event " + shown(words[0].text, 40) +
                          didYouMean(words[0].text, eventNames(),
                                     "; \"help events\" lists them, and a raw text begins with < "
                                     "or a quote"),
                      words[0].column);
    }
    fillIn(words, variables);
    Values values;
    for (auto word = words.begin() + 1; word != words.end(); ++word)
    {
        if (word->name.empty())
            throw Mistake("fields of an event are written as field=value, not " +
                              shown(word->text, 40),
                          word->column);
        try
        {
            values.assign(1, {word->name, word->text});
            (void)eventText(*event, values);
        }
        catch (const std::invalid_argument& error)
        {
            throw Mistake(printable(error.what(), 200), word->column);
        }
    }
    values.clear();
    for (auto word = words.begin() + 1; word != words.end(); ++word)
        values.emplace_back(word->name, word->text);
    return eventText(*event, values);
}

/// Puts captured values in; everything else is for the simulation to read.
std::string filledIn(const std::string& text, const Variables& variables)
{
    std::string filled = text;
    for (const auto& [name, value] : variables)
    {
        const std::string mark = "$" + name;
        for (std::size_t at = filled.find(mark); at != std::string::npos;
             at = filled.find(mark, at + value.size()))
        {
            const std::size_t end = at + mark.size();
            if ((at == 0 || filled[at - 1] == ' ') && (end == filled.size() || filled[end] == ' '))
                filled.replace(at, mark.size(), value);
        }
    }
    return filled;
}

void checkEvent(const Statement& statement, Variables& captured)
{
    (void)eventFrom(statement, captured);
}

void checkExpect(const Statement& statement, Variables& captured)
{
    std::vector<Word> words = wordsOf(statement);
    fillIn(words, captured);
    const Expectation expectation = Expectation::parse(words);
    if (!expectation.name.empty())
        captured[expectation.name] = "1";
}

void checkWait(const Statement& statement, Variables&)
{
    (void)parseDuration(onlyWord(statement, aTime));
}

void checkOnOff(const Statement& statement, Variables&)
{
    (void)onOff(statement);
}

void checkAlone(const Statement& statement, Variables&)
{
    nothingBehind(statement);
}

void checkRun(const Statement& statement, Variables&)
{
    (void)onlyWord(statement, "a script");
}

void checkRecord(const Statement& statement, Variables&)
{
    (void)onlyWord(statement, "a file, or off");
}

void checkRaw(const Statement& statement, Variables&)
{
    (void)rawText(statement, "the text of a request");
}

void checkSay(const Statement& statement, Variables&)
{
    if (!statement.rest.empty())
        (void)rawText(statement, "a text");
}

std::string featuresText(const std::map<std::string, std::string>& features)
{
    std::string text;
    for (const auto& [name, value] : features)
        text += " " + name + "=" + shown(value, 40);
    return text;
}

Report help(Session& session, const Statement& statement)
{
    const std::vector<Word> words = wordsOf(statement);
    session.display().print(helpOn(words.empty() ? "" : words[0].text));
    return {};
}

Report expect(Session& session, const Statement& statement)
{
    std::vector<Word> words = wordsOf(statement);
    fillIn(words, session.variables());
    const Expectation expectation = Expectation::parse(words);
    std::string call;
    const Report report = session.phone().expect(expectation, call);
    if (!call.empty() && !expectation.name.empty())
        session.variables()[expectation.name] = call;
    return report;
}

Report check(Session& session, const Statement& statement)
{
    std::vector<Word> words = wordsOf(statement);
    fillIn(words, session.variables());
    return session.phone().check(words);
}

Report wait(Session& session, const Statement& statement)
{
    session.phone().wait(parseDuration(onlyWord(statement, aTime)));
    return {};
}

Report forget(Session& session, const Statement& statement)
{
    nothingBehind(statement);
    session.phone().events().passAll();
    return {};
}

Report sim(Session& session, const Statement& statement)
{
    if (statement.rest.empty())
        throw Mistake("sim needs a command to the simulation; \"sim help\" lists them");
    return session.phone().control(filledIn(statement.rest, session.variables()));
}

Report raw(Session& session, const Statement& statement)
{
    return session.phone().raw(rawText(statement, "the text of a request"));
}

Report event(Session& session, const Statement& statement)
{
    if (!session.phone().inject(eventFrom(statement, session.variables())))
        session.display().print("the library has no callback for it", Display::Style::faint);
    return {};
}

Report lines(Session& session, const Statement& statement)
{
    nothingBehind(statement);
    const CallBook& book = session.phone().book();
    for (const std::string& line : book.lines())
    {
        const auto known = book.features().find(line);
        session.display().print(
            line + (known == book.features().end() ? "" : featuresText(known->second)));
    }
    if (book.lines().empty())
        session.display().print("no lines");
    return {};
}

Report calls(Session& session, const Statement& statement)
{
    nothingBehind(statement);
    const CallBook& book = session.phone().knownBook();
    for (const CallBook::Call& call : book.calls())
        session.display().print(std::to_string(call.id) + " line=" + call.line + " " +
                                nameOf(Meaning::callState, call.state) +
                                (call.farEnd.empty() ? "" : " " + printable(call.farEnd, 80)));
    if (book.calls().empty())
        session.display().print("no calls");
    return {};
}

Report lamps(Session& session, const Statement& statement)
{
    nothingBehind(statement);
    const auto& all = session.phone().knownBook().lamps();
    for (const auto& [line, lamps] : all)
        session.display().print(line + featuresText(lamps));
    if (all.empty())
        session.display().print("no lamp was set in this session");
    return {};
}

Report lastEvents(Session& session, const Statement& statement)
{
    std::size_t count = 10;
    if (!statement.rest.empty())
    {
        const Word word = onlyWord(statement, "a number of events");
        int number = 0;
        if (!numberOf(Meaning::none, word.text, number) || number < 1)
            throw Mistake("events takes a number from 1, not " + shown(word.text, 40), word.column);
        count = static_cast<std::size_t>(number);
    }
    const std::deque<ReceivedEvent>& all = session.phone().events().events();
    for (std::size_t i = all.size() - std::min(all.size(), count); i < all.size(); ++i)
        session.display().print("* " + fullEventLabel(all[i]), Display::Style::event);
    if (all.empty())
        session.display().print("no events yet");
    return {};
}

Report say(Session& session, const Statement& statement)
{
    const std::string text = statement.rest.empty() ? "" : rawText(statement, "a text");
    if (session.recorder().picture() == Recorder::Picture::mermaid)
        session.display().print("    %% " + printable(text));
    else if (!session.recorder().draws())
        session.display().print(printable(text), Display::Style::heading);
    return {};
}

Report echo(Session& session, const Statement& statement)
{
    session.setEcho(onOff(statement));
    return {};
}

Report wire(Session& session, const Statement& statement)
{
    session.recorder().setWire(onOff(statement));
    return {};
}

Report ladder(Session& session, const Statement& statement)
{
    const bool on = onOff(statement);
    session.phone().pump();
    session.recorder().setLadder(on);
    return {};
}

Report run(Session& session, const Statement& statement)
{
    // What went wrong has been told where it happened.
    return {session.runScript(onlyWord(statement, "a script").text), {}};
}

Report record(Session& session, const Statement& statement)
{
    const Word word = onlyWord(statement, "a file, or off");
    if (word.text != "off")
    {
        session.scriptWriter().open(word.text);
        return {};
    }
    const std::string file = session.scriptWriter().close();
    if (file.empty())
        throw Mistake("nothing is being recorded");
    session.display().print("recorded in " + printable(file), Display::Style::faint);
    return {};
}

Report reconnect(Session& session, const Statement& statement)
{
    nothingBehind(statement);
    const Report report = session.phone().reconnect();
    // A script says for itself what it wants.
    if (report.verdict == Verdict::met && session.place().typed())
        session.start();
    return report;
}

Report quit(Session& session, const Statement& statement)
{
    nothingBehind(statement);
    session.end();
    return {};
}

}  // namespace

const std::vector<Command>& commands()
{
    static const std::vector<Command> table = {
        {"help", "[OPERATION|EVENT|COMMAND]", "explains; alone, lists everything", help, nullptr},
        {"lines", "", "the lines, and what the events have told about them", lines, checkAlone},
        {"calls", "", "the calls, as the events have told them", calls, checkAlone},
        {"lamps", "", "the lamps that were set in this session", lamps, checkAlone},
        {"events", "[NUMBER]", "the last events with all their fields", lastEvents, nullptr},
        {"expect", "[no] EVENT [field=value ...] [within TIME] [as NAME]",
         "waits for an event, 1 s unless told otherwise; $NAME is its call from then on", expect,
         checkExpect},
        {"check", "result=VALUE field=value ...", "compares what the last operation returned",
         check, nullptr},
        {"forget", "", "lets the next expect look at later events only", forget, checkAlone},
        {"wait", "TIME", "lets time pass", wait, checkWait},
        {"sim", "COMMAND", "drives the simulation: far end, clock, faults; \"sim help\" lists all",
         sim, nullptr},
        {"raw", "TEXT", "sends a request as it stands, without the library", raw, checkRaw},
        {"event", "TEXT | EVENT [field=value ...]",
         "lets an event come in as if the service had sent it", event, checkEvent},
        {"wire", "on|off", "shows what goes over the channel", wire, checkOnOff},
        {"ladder", "on|off", "draws what happens as a call flow", ladder, checkOnOff},
        {"say", "TEXT", "prints the text", say, checkSay},
        {"echo", "on|off", "prints each line of a script before it is carried out", echo,
         checkOnOff},
        {"run", "FILE", "carries out a script", run, checkRun},
        {"record", "FILE|off",
         "writes what was typed and what came as a script that expects the same", record,
         checkRecord},
        {"reconnect", "", "connects anew, after the service went away", reconnect, checkAlone},
        {"quit", "", "ends the phone, as Ctrl-D does", quit, checkAlone},
        {"exit", "", "the same", quit, checkAlone},
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
    std::vector<std::string> words;
    for (const Command& command : commands())
        words.push_back(command.name);
    for (const ShortWord& shortWord : shortWords())
        if (words.back() != shortWord.word)
            words.push_back(shortWord.word);
    for (const Operation& operation : operations())
        words.push_back(operation.name);
    return words;
}

}  // namespace kit::phone

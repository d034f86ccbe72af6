#include "kit/phone/Commands.h"

#include "kit/language/Durations.h"
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
    if (word.text != "on" && word.text != "off")
        throw Mistake(statement.command.text + " is switched on or off, not " +
                          shown(word.text, 40),
                      word.column);
    return word.text == "on";
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
        const std::string near = nearest(words[0].text, eventNames());
        throw Mistake("there is no event " + shown(words[0].text, 40) +
                          (near.empty() ? "; \"help events\" lists them, and a raw text begins "
                                          "with < or a quote"
                                        : ", did you mean " + near + "?"),
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
    (void)parseDuration(onlyWord(statement, "a time, as in \"wait 2s\""));
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

}  // namespace

/// One function for each command.
struct Commands
{
    static Verdict help(Session& session, const Statement& statement)
    {
        const std::vector<Word> words = wordsOf(statement);
        session.say(helpOn(words.empty() ? "" : words[0].text));
        return Verdict::met;
    }

    static Verdict expect(Session& session, const Statement& statement)
    {
        std::vector<Word> words = wordsOf(statement);
        fillIn(words, session.variables_);
        return session.carryOutExpectation(words);
    }

    static Verdict check(Session& session, const Statement& statement)
    {
        std::vector<Word> words = wordsOf(statement);
        fillIn(words, session.variables_);
        return session.carryOutCheck(words);
    }

    static Verdict wait(Session& session, const Statement& statement)
    {
        const auto time = parseDuration(onlyWord(statement, "a time, as in \"wait 2s\""));
        session.waitFor(time, [] { return false; });
        return Verdict::met;
    }

    static Verdict forget(Session& session, const Statement& statement)
    {
        nothingBehind(statement);
        session.next_ = session.log_.size();
        return Verdict::met;
    }

    static Verdict sim(Session& session, const Statement& statement)
    {
        if (statement.rest.empty())
            throw Mistake("sim needs a command to the simulation; \"sim help\" lists them");
        return session.carryOutControl(filledIn(statement.rest, session.variables_));
    }

    static Verdict raw(Session& session, const Statement& statement)
    {
        return session.carryOutRaw(rawText(statement, "the text of a request"));
    }

    static Verdict event(Session& session, const Statement& statement)
    {
        const std::string text = eventFrom(statement, session.variables_);
        session.connection()->inject(session.framework_->channelOf(*session.ear_), text);
        const std::size_t before = session.log_.size();
        session.pump();
        if (session.log_.size() == before)
            session.say("the library has no callback for it", Display::Style::faint);
        return Verdict::met;
    }

    static Verdict lines(Session& session, const Statement& statement)
    {
        nothingBehind(statement);
        if (session.linesAreStale_)
            session.learnLines();
        for (const std::string& line : session.book_.lines())
        {
            const auto known = session.book_.features().find(line);
            session.say(line + (known == session.book_.features().end()
                                    ? ""
                                    : featuresText(known->second)));
        }
        if (session.book_.lines().empty())
            session.say("no lines");
        return Verdict::met;
    }

    static Verdict calls(Session& session, const Statement& statement)
    {
        nothingBehind(statement);
        for (const CallBook::Call& call : session.book_.calls())
            session.say(std::to_string(call.id) + " line=" + call.line + " " +
                        nameOf(Meaning::callState, call.state) +
                        (call.farEnd.empty() ? "" : " " + printable(call.farEnd, 80)));
        if (session.book_.calls().empty())
            session.say("no calls");
        return Verdict::met;
    }

    static Verdict lamps(Session& session, const Statement& statement)
    {
        nothingBehind(statement);
        for (const auto& [line, lamps] : session.book_.lamps())
            session.say(line + featuresText(lamps));
        if (session.book_.lamps().empty())
            session.say("no lamp was set in this session");
        return Verdict::met;
    }

    static Verdict events(Session& session, const Statement& statement)
    {
        std::size_t count = 10;
        if (!statement.rest.empty())
        {
            const Word word = onlyWord(statement, "a number of events");
            int number = 0;
            if (!numberOf(Meaning::none, word.text, number) || number < 1)
                throw Mistake("events takes a number from 1, not " + shown(word.text, 40),
                              word.column);
            count = static_cast<std::size_t>(number);
        }
        const std::size_t begin = session.log_.size() - std::min(session.log_.size(), count);
        for (std::size_t i = begin; i < session.log_.size(); ++i)
            session.say("* " + fullEventLabel(session.log_[i]), Display::Style::event);
        if (session.log_.empty())
            session.say("no events yet");
        return Verdict::met;
    }

    static Verdict say(Session& session, const Statement& statement)
    {
        const std::string text = statement.rest.empty() ? "" : rawText(statement, "a text");
        if (session.picture_ == Session::Picture::mermaid)
            session.say("    %% " + printable(text));
        else if (session.picture_ == Session::Picture::none)
            session.say(printable(text), Display::Style::heading);
        return Verdict::met;
    }

    static Verdict echo(Session& session, const Statement& statement)
    {
        session.echo_ = onOff(statement);
        return Verdict::met;
    }

    static Verdict wire(Session& session, const Statement& statement)
    {
        const std::lock_guard<std::mutex> lock(session.recordsMutex_);
        session.wire_ = onOff(statement);
        return Verdict::met;
    }

    static Verdict ladder(Session& session, const Statement& statement)
    {
        const bool on = onOff(statement);
        session.pump();
        if (!on && session.picture_ == Session::Picture::text)
            session.draw(session.flow_.finish());
        const std::lock_guard<std::mutex> lock(session.recordsMutex_);
        if (session.picture_ != Session::Picture::mermaid)
            session.picture_ = on ? Session::Picture::text : Session::Picture::none;
        if (on)
            session.textLadder_ = TextLadder();
        return Verdict::met;
    }

    static Verdict run(Session& session, const Statement& statement)
    {
        return session.runScript(onlyWord(statement, "a script").text);
    }

    static Verdict reconnect(Session& session, const Statement& statement)
    {
        nothingBehind(statement);
        return session.reconnect();
    }

    static Verdict quit(Session& session, const Statement& statement)
    {
        nothingBehind(statement);
        session.ended_ = true;
        return Verdict::met;
    }
};

const std::vector<Command>& commands()
{
    using C = Commands;
    static const std::vector<Command> table = {
        {"help", "[OPERATION|EVENT|COMMAND]", "explains; alone, lists everything", C::help,
         nullptr},
        {"lines", "", "the lines, and what the events have told about them", C::lines, checkAlone},
        {"calls", "", "the calls, as the events have told them", C::calls, checkAlone},
        {"lamps", "", "the lamps that were set in this session", C::lamps, checkAlone},
        {"events", "[NUMBER]", "the last events with all their fields", C::events, nullptr},
        {"expect", "[no] EVENT [field=value ...] [within TIME] [as NAME]",
         "waits for an event, 1 s unless told otherwise; $NAME is its call from then on", C::expect,
         checkExpect},
        {"check", "result=VALUE field=value ...", "compares what the last operation returned",
         C::check, nullptr},
        {"forget", "", "lets the next expect look at later events only", C::forget, checkAlone},
        {"wait", "TIME", "lets time pass", C::wait, checkWait},
        {"sim", "COMMAND", "drives the simulation: far end, clock, faults; \"sim help\" lists all",
         C::sim, nullptr},
        {"raw", "TEXT", "sends a request as it stands, without the library", C::raw, checkRaw},
        {"event", "TEXT | EVENT [field=value ...]",
         "lets an event come in as if the service had sent it", C::event, checkEvent},
        {"wire", "on|off", "shows what goes over the channel", C::wire, checkOnOff},
        {"ladder", "on|off", "draws what happens as a call flow", C::ladder, checkOnOff},
        {"say", "TEXT", "prints the text", C::say, checkSay},
        {"echo", "on|off", "prints each line of a script before it is carried out", C::echo,
         checkOnOff},
        {"run", "FILE", "carries out a script", C::run, checkRun},
        {"reconnect", "", "connects anew, after the service went away", C::reconnect, checkAlone},
        {"quit", "", "ends the phone, as Ctrl-D does", C::quit, checkAlone},
        {"exit", "", "the same", C::quit, checkAlone},
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

#include "kit/phone/ScriptWriter.h"

#include "kit/language/Wording.h"
#include "kit/phone/Expectation.h"
#include "kit/trace/Labels.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

namespace kit::phone
{

namespace
{

/// They only look, or the events that are written say the same.
bool isLeftOut(const std::string& command)
{
    static const char* const names[] = {"help",   "lines",  "calls", "lamps",  "events",
                                        "expect", "forget", "wire",  "ladder", "echo",
                                        "run",    "record", "quit",  "exit"};
    return std::find(std::begin(names), std::end(names), command) != std::end(names);
}

/// "1.5s", at least as it is typed.
std::string typed(ScriptWriter::Time time)
{
    return time.count() % 1000 == 0 ? std::to_string(time.count() / 1000) + "s"
                                    : std::to_string(time.count()) + "ms";
}

}  // namespace

int ScriptWriter::begin(Time now, const std::string& line, const Variables& variables)
{
    if (!wanted_)
        return 0;
    // A line that has others carried out has done its own part.
    if (open_)
        finish(Verdict::met, {});
    ++number_;
    open_ = true;
    line_.clear();
    wait_.clear();
    before_ = last_;
    try
    {
        const Statement statement = parseStatement(line);
        mustFail_ = statement.mustFail;
        if (statement.empty() || isLeftOut(statement.command.text))
            return number_;
        line_ = statement.command.text + (statement.rest.empty() ? "" : " " + statement.rest);
    }
    catch (const Mistake&)
    {
        return number_;
    }
    // Names under which expectations have kept calls: those expectations are not written.
    Variables renamed = variables;
    for (auto& [name, value] : renamed)
        if (const auto known = calls_.find(value); known != calls_.end())
            value = "$" + known->second;
    line_ = filledIn(line_, renamed);
    started_ = now;
    const Time quiet = (now - last_) / 100 * 100;
    if (calls_.empty())
    {
        last_ = now;
    }
    else if (quiet >= std::chrono::seconds(1))
    {
        wait_ = "wait " + typed(quiet) + "\n";
        last_ += quiet;
    }
    return number_;
}

void ScriptWriter::end(int line, Time now, Verdict verdict, const Values& returned)
{
    if (line != number_ || !open_)
        return;
    // What is left of the time before it, and that of a line which is not written, counts later.
    if (finish(verdict, returned))
        last_ = last_ < started_ ? last_ + (now - started_) : now;
}

bool ScriptWriter::finish(Verdict verdict, const Values& returned)
{
    open_ = false;
    const bool written =
        !line_.empty() && verdict != Verdict::mistake && verdict != Verdict::interrupted;
    // What is not written needs no time before it.
    if (written || !events_.empty())
        text_ += wait_;
    else
        last_ = before_;
    if (written)
    {
        // Met with "!" in front is failed, and the other way round.
        const bool failed = (verdict != Verdict::met) != mustFail_;
        text_ += (failed ? "! " : "") + line_ + "\n";
        if (!failed && !returned.empty())
        {
            text_ += "check";
            for (const auto& [name, value] : returned)
                text_ += " " + name + "=" + quote(value);
            text_ += "\n";
        }
    }
    text_ += std::exchange(events_, {});
    write();
    return written;
}

void ScriptWriter::add(Time now, const ReceivedEvent& received)
{
    if (!wanted_)
        return;
    std::string text = "expect " + received.method();
    std::string captured;
    for (std::size_t i = 0; i < received.values.size(); ++i)
    {
        const Field& field = received.event->arguments[i];
        const std::string& value = received.values[i];
        if (saysNothing(field, value))
            continue;
        const bool call = value != "0" && isCall(field);
        if (call && calls_.count(value) == 0 && field.argument == capturedBy(received))
        {
            const std::string name = "call" + std::to_string(calls_.size() + 1);
            calls_[value] = name;
            captured = " as " + name;
            continue;
        }
        const auto known = calls_.find(value);
        text +=
            std::string(" ") + field.argument + "=" +
            (call && known != calls_.end() ? "$" + known->second : quote(toPeople(field, value)));
    }
    const Time took = now - last_;
    if (took > Time(500))
        text += " within " + typed((took / 1000 + Time(2)) * 1000);
    (open_ ? events_ : text_) += text + captured + "\n";
    last_ = now;
    if (!open_)
        write();
}

void ScriptWriter::open(const std::string& path)
{
    std::ofstream out(path, std::ios::trunc);
    if (!out)
        throw Mistake("cannot write " + path + ": " + std::strerror(errno));
    wanted_ = true;
    path_ = path;
    out_ = std::move(out);
    text_ = "# Recorded by communications-phone.\n" + text_;
}

std::string ScriptWriter::close()
{
    if (!out_.is_open())
        return "";
    write();
    out_.close();
    return path_;
}

void ScriptWriter::write()
{
    if (!out_.is_open())
        return;
    out_ << std::exchange(text_, {}) << std::flush;
    if (out_)
        return;
    problem_ = "the recording ends here: " + path_ + " cannot be written";
    out_.close();
}

}  // namespace kit::phone

#include "kit/service/RobotFile.h"

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/language/Words.h"
#include "kit/protocol/Columns.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <sys/stat.h>

namespace kit::service
{

using namespace numbers;

namespace
{

constexpr std::streamoff longestFile = 1U << 20U;
constexpr std::size_t longestNumber = 64;
constexpr std::size_t mostSteps = 32;
constexpr const char* form = R"(a line is: robot NUMBER ["NAME"] WHAT [TIME], WHAT [TIME])";

/// How far the call is when a robot comes to what is said next.
enum Stage : unsigned
{
    ringing = 1,
    talking = 2,
    holding = 4,
    refused = 8,
    over = 16,
    any = 31
};

/// What can be said of a robot.
struct Saying
{
    const char* words;
    unsigned during;
    Stage then;  ///< any: it stays
    bool timed;
    bool ofCallBacks;  ///< only one of these
    void (*apply)(Robot& robot, const Step& step);
};

template <Act act>
void does(Robot& robot, const Step& step)
{
    robot.steps.push_back(step);
    robot.steps.back().act = act;
}

template <Reach reach>
void is(Robot& robot, const Step&)
{
    robot.reach = reach;
}

template <CallBackOutcome outcome>
void whenAwaited(Robot& robot, const Step& step)
{
    robot.callBack = outcome;
    robot.callBackAfter = step.after;
}

void callsBack(Robot& robot, const Step& step)
{
    robot.steps.back().act = Act::refuseAndCallBack;
    robot.callBackAfter = step.after;
}

constexpr Saying sayings[] = {
    {"answers", ringing, talking, true, false, does<Act::answer>},
    {"refuses", ringing, refused, true, false, does<Act::refuse>},
    {"calls back", refused, over, true, true, callsBack},
    {"holds", talking, holding, true, false, does<Act::hold>},
    {"retrieves", holding, talking, true, false, does<Act::retrieve>},
    {"joins", talking, any, true, false, does<Act::joinConference>},
    {"leaves", talking, any, true, false, does<Act::leaveConference>},
    {"transfers", talking | holding, over, true, false, does<Act::transfer>},
    {"hangs up", talking | holding, over, true, false, does<Act::hangUp>},
    {"is busy", ringing, over, false, false, is<Reach::busy>},
    {"is unobtainable", ringing, over, false, false, is<Reach::unobtainable>},
    {"is free", any, any, true, true, whenAwaited<CallBackOutcome::available>},
    {"stays busy", any, any, true, true, whenAwaited<CallBackOutcome::stillBusy>},
    {"is never free", any, any, false, true, whenAwaited<CallBackOutcome::never>},
};

CallState stateOf(Stage stage)
{
    return stage == ringing ? callDelivered : stage == talking ? callConnected : callHeldByFarEnd;
}

/// One line, from its first word to its last.
class RobotLine
{
public:
    explicit RobotLine(const Statement& line)
        : words_(splitWords(line.rest, line.restColumn, ",")), end_(line.restColumn)
    {
        if (line.mustFail || line.command.text != "robot")
            throw Mistake("unknown word " + quoted((line.mustFail ? "!" : "") + line.command.text) +
                              didYouMean(line.command.text, {"robot"}, std::string("; ") + form),
                          line.command.column);
        if (!words_.empty())
            end_ = words_.back().column + words_.back().whole().size();
    }

    Robot read()
    {
        robot_.number = number();
        if (!atEnd() && words_[at_].quoted)
            robot_.name = words_[at_++].text;
        for (bool first = true; !atEnd(); first = false)
        {
            if (!first && !take(","))
                throw Mistake("what is " + quoted(words_[at_].whole()) +
                                  "? A comma stands before what comes next",
                              column());
            say();
        }
        if (robot_.habit.empty())
            robot_.habit = "rings until told otherwise";
        return robot_;
    }

private:
    bool atEnd() const { return at_ == words_.size(); }
    std::size_t column() const { return atEnd() ? end_ : words_[at_].column; }

    bool take(const std::string& text)
    {
        const bool there = !atEnd() && !words_[at_].quoted && words_[at_].whole() == text;
        at_ += there ? 1 : 0;
        return there;
    }

    std::string number()
    {
        if (atEnd())
            throw Mistake(std::string("a number is missing; ") + form, column());
        const std::string text = words_[at_].whole();
        std::string plain = plainNumber(text);
        if (plain.empty() || text.size() > longestNumber ||
            text.find_first_of("<>\",") != std::string::npos)
            throw Mistake(quoted(text) + " is no number to call", column());
        ++at_;
        return plain;
    }

    const Saying& saying()
    {
        const std::size_t begin = at_;
        for (const Saying& saying : sayings)
        {
            const std::vector<Word> wanted = splitWords(saying.words);
            at_ = begin;
            if (std::all_of(wanted.begin(), wanted.end(),
                            [this](const Word& word) { return take(word.text); }))
                return saying;
        }
        at_ = begin;
        if (atEnd() || words_[at_].text == ",")
            throw Mistake("nothing stands behind the comma", column());
        const std::vector<std::string> known = columnOf(sayings, &Saying::words);
        // Up to a time, a target or a comma it is meant as one.
        std::string text = words_[at_].whole();
        for (std::size_t i = at_ + 1; i < words_.size() && words_[i].text != "to" &&
                                      words_[i].text.find_first_of("0123456789,") != 0;
             ++i)
            text += " " + words_[i].whole();
        throw Mistake("a robot never " + quoted(text) +
                          didYouMean(text, known,
                                     ", only: " + listed(known) +
                                         (robot_.name.empty() ? "; a name stands in quotes" : "")),
                      words_[begin].column);
    }

    void say()
    {
        const std::size_t where = column();
        const Saying& said = saying();
        if ((said.during & stage_) == 0 || (said.ofCallBacks && toldOfCallBacks_))
            throw Mistake(quoted(said.words) + (last_ == nullptr
                                                    ? std::string(" cannot come first")
                                                    : " cannot follow " + quoted(last_->words)),
                          where);
        const bool inCall = !said.ofCallBacks && said.timed;
        if (inCall && robot_.steps.size() == mostSteps)
            throw Mistake("a robot does no more than " + std::to_string(mostSteps) + " things",
                          where);
        Step step = {stateOf(stage_), Time(0), Act::answer};
        if (said.timed && !atEnd() && words_[at_].whole() != "," && words_[at_].whole() != "to")
            step.after = parseDuration(words_[at_++]);
        std::string habit = said.words;
        if (said.apply == does<Act::transfer>)
        {
            if (!take("to"))
                throw Mistake(R"("transfers" needs "to NUMBER")", column());
            step.target = number();
            habit += " to " + step.target;
        }
        if (said.timed)
            habit += step.after == Time(0) ? " at once" : " after " + durationText(step.after);
        robot_.habit += (robot_.habit.empty() ? "" : ", ") + habit;
        // A step's time is that in its state.
        if (inCall)
            step.after = sinceStage_ += step.after;
        said.apply(robot_, step);
        toldOfCallBacks_ = toldOfCallBacks_ || said.ofCallBacks;
        last_ = &said;
        if (said.then == any)
            return;
        stage_ = said.then;
        sinceStage_ = Time(0);
    }

    const std::vector<Word> words_;
    std::size_t at_ = 0;
    std::size_t end_;
    Robot robot_;
    Stage stage_ = ringing;
    Time sinceStage_{0};
    bool toldOfCallBacks_ = false;
    const Saying* last_ = nullptr;
};

}  // namespace

std::vector<Robot> readRobots(const std::string& path, const std::vector<std::string>& lines)
{
    const std::string what = "cannot read " + shown(path, 200) + ": ";
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0)
        throw Mistake(what + std::strerror(errno));
    if (!S_ISREG(status.st_mode))
        throw Mistake(what + "it is no file");
    if (status.st_size > longestFile)
        throw Mistake(what + "it is longer than 1 MiB");
    std::ifstream in(path, std::ios::binary);
    if (!in)
        throw Mistake(what + std::strerror(errno));
    std::vector<Robot> robots;
    std::map<std::string, int> lineOf;
    std::string text;
    for (int line = 1; std::getline(in, text); ++line)
        try
        {
            const Statement statement = parseStatement(text);
            if (statement.empty())
                continue;
            const Robot robot = RobotLine(statement).read();
            if (contains(lines, robot.number))
                throw Mistake(robot.number + " is a line of the phone", statement.restColumn);
            const auto [there, added] = lineOf.emplace(robot.number, line);
            if (!added)
                throw Mistake(robot.number + " is there already, in line " +
                                  std::to_string(there->second),
                              statement.restColumn);
            robots.push_back(robot);
        }
        catch (const Mistake& mistake)
        {
            throw Mistake(printable(path, 200) + ":" + std::to_string(line) + ":" +
                          std::to_string(mistake.column()) + ": " + mistake.what());
        }
    if (in.bad())
        throw Mistake(what + std::strerror(errno));
    return robots;
}

}  // namespace kit::service

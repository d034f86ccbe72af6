#include "kit/phone/Session.h"

#include "framework/MarloException.h"
#include "kit/framework/Exception.h"
#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Commands.h"
#include "kit/trace/Labels.h"
#include "kit/trace/Page.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace kit::phone
{

namespace
{

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr std::size_t longestLog = 10000;
constexpr milliseconds slice(20);

volatile std::sig_atomic_t interruptionCount = 0;

extern "C" void countInterruption(int)
{
    interruptionCount = interruptionCount + 1;
    // Something hangs, and the person insists.
    if (interruptionCount > 2)
        _exit(static_cast<int>(Verdict::interrupted));
}

/// These print what they have to say.
bool speaksForItself(const Statement& statement)
{
    return statement.command.text == "say" || statement.command.text == "echo" ||
           statement.command.text == "wire";
}

}  // namespace

int interruptions()
{
    return interruptionCount;
}

void setInterruptions(int count)
{
    interruptionCount = count;
}

void catchInterruptions()
{
    struct sigaction action = {};
    action.sa_handler = countInterruption;
    sigaction(SIGINT, &action, nullptr);
}

/// The phone's subscriber.
class Session::Ear : public Subscriber
{
public:
    explicit Ear(Session& session) : session_(session) {}

    void onEvent(const ReceivedEvent& received) override { session_.hear(received); }

private:
    Session& session_;
};

namespace
{

void openFor(std::ofstream& out, const std::string& file)
{
    if (file.empty())
        return;
    out.open(file, std::ios::trunc);
    if (!out)
        throw std::runtime_error("cannot write " + file + ": " + std::strerror(errno));
}

}  // namespace

Session::Session(Settings settings, Display& display)
    : settings_(std::move(settings)),
      display_(display),
      picture_(settings_.picture),
      echo_(settings_.echo),
      wire_(settings_.wire),
      ear_(std::make_unique<Ear>(*this))
{
    pageTrace_.head = {traceFormat, std::chrono::system_clock::now(), "communications-phone"};
    openFor(trace_, settings_.traceFile);
    if (trace_.is_open())
        trace_ << toJson(pageTrace_.head) << '\n';
    openFor(page_, settings_.pageFile);
    if (pipe2(wake_, O_NONBLOCK | O_CLOEXEC) != 0)
        throw std::runtime_error(std::string("no pipe: ") + std::strerror(errno));
    Framework::Options options;
    options.library = settings_.library;
    options.events = Framework::Events::onPump;
    options.requestTimeout = settings_.timeout;
    // The library gives 100000, which would be more than a person waits.
    options.timeoutUnit =
        std::chrono::duration_cast<std::chrono::microseconds>(settings_.timeout) / 100000;
    options.unanswered = "sfiFailure";
    options.problems = [this](const std::string& problem) { problems_.push_back(problem); };
    framework_ = std::make_unique<Framework>(observed(), std::move(options));
    if (picture_ == Picture::mermaid)
        display_.print(mermaidLadder_.head().substr(0, mermaidLadder_.head().size() - 1));
}

Session::~Session()
{
    framework_.reset();
    close(wake_[0]);
    close(wake_[1]);
}

std::unique_ptr<Connection> Session::observed()
{
    auto observed = std::make_unique<ObservedConnection>(
        settings_.connect(), [this](const TraceRecord& record) { this->record(record); });
    observed->setComplaintSink([this](const std::string& text) { addComplaint(text); });
    return observed;
}

std::shared_ptr<ObservedConnection> Session::connection() const
{
    return std::static_pointer_cast<ObservedConnection>(framework_->connection());
}

Verdict Session::execute(const std::string& line, const Place& place)
{
    const Place before = std::exchange(place_, place);
    problems_.clear();
    explanation_.clear();
    for (; log_.size() > longestLog; next_ -= std::min<std::size_t>(next_, 1))
        log_.pop_front();
    Verdict verdict = Verdict::met;
    try
    {
        const Statement statement = parseStatement(line);
        if (!statement.empty())
        {
            if (echo_ && picture_ == Picture::none && !place.file.empty() &&
                !speaksForItself(statement))
                say("> " + printable(line.substr(line.find_first_not_of(" \t"))),
                    Display::Style::echo);
            verdict = judge(statement, carryOut(statement));
        }
    }
    catch (const Mistake& mistake)
    {
        pump();
        display_.complain(whereIs(mistake.column()) + mistake.what());
        verdict = Verdict::mistake;
    }
    place_ = before;
    return interruptions() > 0 ? Verdict::interrupted : verdict;
}

Verdict Session::judge(const Statement& statement, Verdict verdict)
{
    pump();
    if (statement.mustFail && verdict == Verdict::met)
    {
        display_.complain(whereIs(0) + shown(statement.command.text, 40) +
                          " was to fail, but it was carried out");
        return Verdict::unmet;
    }
    if (statement.mustFail && (verdict == Verdict::unmet || verdict == Verdict::unreachable))
        return Verdict::met;
    for (std::size_t i = 0; i < explanation_.size(); ++i)
        display_.complain(i == 0 ? whereIs(0) + explanation_[i] : "  " + explanation_[i]);
    return verdict;
}

std::string Session::whereIs(std::size_t column) const
{
    if (place_.file.empty())
        return column == 0 ? "" : "column " + std::to_string(column) + ": ";
    return place_.text() + (column == 0 ? "" : ":" + std::to_string(column)) + ": ";
}

Verdict Session::carryOut(const Statement& statement)
{
    if (const Command* command = findCommand(statement.command.text))
        return command->run(*this, statement);
    std::vector<Word> words = splitWords(statement.rest, statement.restColumn);
    const Operation& operation = resolve(statement, words);
    fillIn(words, variables_);
    return carryOutOperation(operation, words, statement.mustFail);
}

const Operation& Session::resolve(const Statement& statement, std::vector<Word>& words)
{
    const std::string& word = statement.command.text;
    if (const Operation* operation = findOperation(word))
        return *operation;
    const auto positionals =
        std::count_if(words.begin(), words.end(), [](const Word& w) { return w.name.empty(); });
    const ShortWord* const shortWord = findShortWord(word, static_cast<std::size_t>(positionals));
    if (shortWord == nullptr)
    {
        const std::string near = nearest(word, commandWords());
        throw Mistake("there is no command " + shown(word, 40) +
                          (near.empty() ? " (\"help\" lists all)" : ", did you mean " + near + "?"),
                      statement.command.column);
    }
    words = expand(*shortWord, words);
    return *findOperation(shortWord->operation);
}

Verdict Session::carryOutOperation(const Operation& operation, const std::vector<Word>& words,
                                   bool falseIsFailure)
{
    // Events that have come meanwhile may decide which call is meant.
    pump();
    if (linesAreStale_)
        learnLines();
    const Binding binding = bindArguments(operation, words, book_);
    lastOperation_ = &operation;
    lastOutcome_ = Outcome();
    std::string thrown;
    try
    {
        lastOutcome_ =
            call(framework_->service(), operation, binding.values, ear_.get(), binding.nulls);
    }
    catch (const MarloException& exception)
    {
        thrown = textOf(exception);
    }
    takeRecords();
    const bool failed = lastOutcome_.failed() || !thrown.empty() || !problems_.empty();
    std::string line = callLabel(operation, binding.values, binding.nulls);
    if (!thrown.empty())
        line += ": MarloException";
    if (lastOutcome_.returned != Outcome::Returned::nothing)
        line += ": " + (lastOutcome_.inWords().empty() ? "\"\"" : lastOutcome_.inWords());
    if (!failed)
        for (std::size_t i = 0; i < lastOutcome_.outputs.size(); ++i)
            line += std::string(" ") + operation.outputs[i].argument + "=" +
                    shown(toPeople(operation.outputs[i], lastOutcome_.outputs[i]), 400);
    if (picture_ == Picture::none)
        say(line, failed ? Display::Style::bad : Display::Style::good);

    const std::string name = operation.name;
    if (!failed && name == "subscribe")
        subscribed_ = true;
    if (!failed && name == "setLampMode")
        book_.setLamp(binding.values[0].second, binding.values[1].second,
                      toPeople(operation.arguments[2], binding.values[2].second));
    if (name == "activate" || name == "getDevices")
        linesAreStale_ = true;
    if (!problems_.empty() || !thrown.empty())
    {
        explanation_ = problems_.empty() ? std::vector<std::string>{thrown} : problems_;
        if (explanation_.back().find(" is gone") != std::string::npos)
            explanation_.back() += "; \"reconnect\" connects anew";
        return Verdict::unreachable;
    }
    if (failed)
    {
        // A typed line shows it already.
        if (!place_.file.empty())
            explanation_ = {std::string(operation.name) + " returned " + lastOutcome_.inWords()};
        return Verdict::unmet;
    }
    const bool isFalse =
        lastOutcome_.returned == Outcome::Returned::flag && lastOutcome_.number == 0;
    return falseIsFailure && isFalse ? Verdict::unmet : Verdict::met;
}

Verdict Session::carryOutExpectation(const std::vector<Word>& words)
{
    const Expectation expectation = Expectation::parse(words);
    std::size_t looked = next_;
    std::size_t found = 0;
    const bool came = waitFor(expectation.within,
                              [&]
                              {
                                  for (; looked < log_.size(); ++looked)
                                      if (expectation.matches(log_[looked]))
                                      {
                                          found = looked;
                                          return true;
                                      }
                                  return false;
                              });
    if (interruptions() > 0)
        return Verdict::interrupted;
    if (came == expectation.none)
    {
        explanation_ = came ? std::vector<std::string>{"no " + expectation.description() +
                                                           " was to come, but it came",
                                                       "came: " + fullEventLabel(log_[found])}
                            : expectation.explain(log_, next_);
        if (!came)
            explanation_.insert(explanation_.begin(), "expected " + expectation.description() +
                                                          " within " +
                                                          durationText(expectation.within));
        if (!came && !subscribed_)
            explanation_.push_back("the phone has not subscribed; \"subscribe\" lets events come");
        return Verdict::unmet;
    }
    if (came)
    {
        next_ = found + 1;
        if (!expectation.name.empty())
            for (const char* argument : {"callId", "newCallId", "currentCallId"})
                if (!log_[found].value(argument).empty())
                {
                    variables_[expectation.name] = log_[found].value(argument);
                    break;
                }
    }
    return Verdict::met;
}

Verdict Session::carryOutControl(const std::string& command)
{
    ControlAnswer answer;
    const Delivery delivery = connection()->control(command, answer, settings_.timeout);
    takeRecords();
    if (delivery != Delivery::done)
    {
        explanation_ = {"the simulation has not answered: " + connection()->description() +
                        (delivery == Delivery::gone ? " is gone" : " did not answer in time")};
        return Verdict::unreachable;
    }
    if (!answer.accepted)
    {
        explanation_ = {"sim: " + printable(answer.text, 400)};
        return Verdict::unmet;
    }
    if (picture_ == Picture::none && !answer.text.empty())
        say(answer.text, Display::Style::faint);
    return Verdict::met;
}

Verdict Session::carryOutCheck(const std::vector<Word>& words)
{
    if (words.empty())
        throw Mistake("check needs result=VALUE or field=value");
    if (lastOperation_ == nullptr)
        throw Mistake("check compares what the last operation returned; there was none");
    std::vector<std::string> names = {"result"};
    for (const Field& output : lastOperation_->outputs)
        names.push_back(output.argument);
    for (const Word& word : words)
    {
        const auto found = std::find(names.begin(), names.end(), word.name);
        if (word.name.empty() || found == names.end())
        {
            std::string all;
            for (const std::string& name : names)
                all += (all.empty() ? "" : ", ") + name;
            throw Mistake(std::string(lastOperation_->name) + " returns " + all + ", not " +
                              shown(word.name.empty() ? word.text : word.name, 40),
                          word.column);
        }
        std::string wanted = word.text;
        std::string came = lastOutcome_.inWords();
        if (found != names.begin())
        {
            const auto i = static_cast<std::size_t>(found - names.begin() - 1);
            const Field& output = lastOperation_->outputs[i];
            came = i < lastOutcome_.outputs.size() ? toPeople(output, lastOutcome_.outputs[i]) : "";
            wanted = toPeople(output, readValue(output, word));
        }
        const bool pattern = !word.quoted && wanted.find('*') != std::string::npos;
        if (pattern ? matchesPattern(wanted, came) : wanted == came)
            continue;
        explanation_ = {std::string(lastOperation_->name) + " returned " + word.name + "=" +
                        shown(came, 200) + ", awaited was " + shown(wanted, 200)};
        return Verdict::unmet;
    }
    return Verdict::met;
}

Verdict Session::carryOutRaw(const std::string& text)
{
    const Operation* const operation = findRequest(parse(text).method);
    const Sending sending = text.rfind("SigEvent:", 0) == 0 ? Sending::oneWay
                            : operation != nullptr          ? operation->sending
                                                            : Sending::request;
    const std::shared_ptr<ObservedConnection> channel = connection();
    std::string answer;
    Delivery delivery = Delivery::done;
    if (sending == Sending::oneWay)
        delivery = channel->post(text);
    else if (sending == Sending::subscribe)
        delivery =
            channel->subscribe(text, answer, framework_->channelOf(*ear_), settings_.timeout);
    else
        delivery = channel->request(text, answer, settings_.timeout);
    takeRecords();
    if (delivery != Delivery::done)
    {
        explanation_ = {channel->description() +
                        (delivery == Delivery::gone ? " is gone" : " did not answer in time")};
        return Verdict::unreachable;
    }
    if (sending == Sending::oneWay)
        answer = "(sent, no answer is awaited)";
    if (picture_ == Picture::none)
        say(answer.empty() ? "(empty answer)" : printable(answer));
    if (answer != resultName(sfiFailure))
        return Verdict::met;
    if (!place_.file.empty())
        explanation_ = {"the answer is sfiFailure"};
    return Verdict::unmet;
}

Verdict Session::reconnect()
{
    try
    {
        framework_->reconnect(observed());
    }
    catch (const std::exception& error)
    {
        explanation_ = {error.what()};
        return Verdict::unreachable;
    }
    book_.clear();
    subscribed_ = false;
    linesAreStale_ = true;
    say("connected to " + connection()->description() + "; subscribe again to get its events",
        Display::Style::faint);
    return Verdict::met;
}

void Session::hear(const ReceivedEvent& received)
{
    book_.take(received);
    if (received.method() == "DevicesChangedEvent" ||
        received.method() == "RegistrationStateChangeEvent")
        linesAreStale_ = true;
    log_.push_back(received);
    if (picture_ == Picture::none)
        say("* " + eventLabel(received), Display::Style::event);
}

void Session::pump()
{
    char bytes[64];
    while (read(wake_[0], bytes, sizeof bytes) > 0)
    {
    }
    takeRecords();
    framework_->pump();
}

void Session::record(const TraceRecord& record)
{
    {
        const std::lock_guard<std::mutex> lock(recordsMutex_);
        if (trace_.is_open())
            trace_ << toJson(record) << '\n' << std::flush;
        if (page_.is_open())
            pageTrace_.records.push_back(record);
        if (picture_ != Picture::none || wire_)
            records_.push_back(record);
    }
    // Full is as good as written.
    const ssize_t written = write(wake_[1], "", 1);
    (void)written;
}

void Session::takeRecords()
{
    std::deque<TraceRecord> records;
    std::vector<std::string> complaints;
    {
        const std::lock_guard<std::mutex> lock(recordsMutex_);
        records.swap(records_);
        complaints.swap(complaints_);
    }
    for (const TraceRecord& record : records)
        if (picture_ != Picture::none)
            draw(flow_.add(record));
        else if (record.kind == TraceRecord::Kind::request)
            say("  -> " + printable(record.text), Display::Style::outgoing);
        else if (record.kind == TraceRecord::Kind::answer)
            say("  <- " + (record.delivery == Delivery::done ? printable(record.text)
                                                             : std::string("(no answer)")),
                Display::Style::incoming);
        else if (record.kind == TraceRecord::Kind::event)
            say("  <= " + printable(record.text), Display::Style::incoming);
    if (picture_ == Picture::none)
        for (const std::string& complaint : complaints)
            say("  service: " + printable(complaint, 400), Display::Style::faint);
}

void Session::addComplaint(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(recordsMutex_);
    complaints_.push_back(text);
}

void Session::drive(const std::string& command)
{
    ControlAnswer answer;
    connection()->quietControl(command, answer, settings_.timeout);
}

Completions Session::completionsFor(const std::string& line)
{
    ControlAnswer help;
    if (simulationHelp_.empty() &&
        connection()->quietControl("help", help, settings_.timeout) == Delivery::done)
        simulationHelp_ = help.text;
    return complete(line, book_, variables_, simulationHelp_);
}

void Session::draw(const std::vector<FlowStep>& steps)
{
    for (const FlowStep& step : steps)
    {
        std::string text =
            picture_ == Picture::mermaid ? mermaidLadder_.add(step) : textLadder_.add(step);
        text.pop_back();
        display_.print(text);
    }
}

bool Session::finish()
{
    pump();
    if (picture_ != Picture::none)
        draw(flow_.finish());
    display_.endProgress();
    const std::lock_guard<std::mutex> lock(recordsMutex_);
    if (page_.is_open())
    {
        writePage(page_, pageTrace_, settings_.pageTitle);
        page_.close();
    }
    for (const auto& [stream, file] :
         {std::pair(&trace_, settings_.traceFile), std::pair(&page_, settings_.pageFile)})
        if (!*stream)
            display_.complain("the trace is not complete: " + file +
                              " could not be written to the end");
    return trace_ && page_;
}

void Session::keepTime()
{
    const Clock::time_point now = Clock::now();
    const auto passed = std::chrono::duration_cast<milliseconds>(now - timeKept_);
    if (!settings_.realTime || !settings_.advance || passed.count() == 0)
        return;
    timeKept_ += passed;
    settings_.advance(passed);
}

bool Session::waitFor(milliseconds limit, const std::function<bool()>& done)
{
    pump();
    const Clock::time_point end = Clock::now() + limit;
    milliseconds left = limit;
    while (!done())
    {
        if (interruptions() > 0)
            return false;
        showProgress();
        if (settings_.advance && !settings_.realTime)
        {
            if (left.count() == 0)
                return false;
            const milliseconds step = std::min(left, milliseconds(10));
            settings_.advance(step);
            left -= step;
            pump();
            continue;
        }
        const auto remaining = std::chrono::duration_cast<milliseconds>(end - Clock::now());
        if (remaining.count() <= 0)
            return false;
        keepTime();
        framework_->pump(std::min(remaining, slice));
        pump();
    }
    return true;
}

void Session::showProgress()
{
    if (settings_.progress && progressText_ && Clock::now() - started_ > std::chrono::seconds(2))
        display_.progress(progressText_());
}

void Session::say(const std::string& text, Display::Style style)
{
    display_.print(text, style);
}

void Session::learnLines()
{
    std::string answer;
    if (connection()->quietRequest("<Method>GetDevices</Method>", answer, settings_.timeout) !=
        Delivery::done)
        return;
    std::vector<std::string> lines;
    for (std::size_t open = answer.find('<'); open != std::string::npos;
         open = answer.find('<', open + 1))
    {
        const std::size_t end = answer.find('>', open);
        if (end == std::string::npos)
            break;
        lines.push_back(answer.substr(open + 1, end - open - 1));
    }
    book_.setLines(lines);
    linesAreStale_ = lines.empty();
}

}  // namespace kit::phone

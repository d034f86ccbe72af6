#include "kit/phone/Phone.h"

#include "framework/MarloException.h"
#include "kit/framework/Exception.h"
#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/language/Words.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Interruptions.h"
#include "kit/protocol/Columns.h"
#include "kit/trace/Labels.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace kit::phone
{

namespace
{

const char* const comeBack = "; \"reconnect\" connects anew";

}  // namespace

Phone::Phone(Settings settings, Recorder& recorder, Display& display)
    : settings_(std::move(settings)),
      recorder_(recorder),
      display_(display),
      timekeeper_(settings_.advance, settings_.realTime)
{
    Framework::Options options;
    options.library = settings_.library;
    options.events = Framework::Events::onPump;
    options.requestTimeout = settings_.timeout;
    // The library gives 100000, which would be more than a person waits.
    options.timeoutUnit =
        std::chrono::duration_cast<std::chrono::microseconds>(settings_.timeout) / 100000;
    options.unanswered = "sfiFailure";
    options.problems = [this](const std::string& problem) { problems_.push_back(problem); };
    options.gone = [this](const std::string& problem) { takeGone(problem); };
    options.observer = [this](const Passage& passage) { recorder_.tracer().take(passage); };
    framework_ = std::make_unique<Framework>(connect(), std::move(options));
}

Phone::~Phone()
{
    framework_.reset();
}

std::unique_ptr<Connection> Phone::connect()
{
    std::unique_ptr<Connection> connection = settings_.connect();
    connection->setComplaintSink([this](const std::string& complaint)
                                 { recorder_.addComplaint(complaint); });
    return connection;
}

Report Phone::call(const Operation& operation, const std::vector<Word>& words, bool falseIsUnmet)
{
    // Events that have come meanwhile may decide which call is meant.
    pump();
    (void)bindArguments(operation, words, book(), Purpose::looking);
    Binding binding;
    try
    {
        binding = bindArguments(operation, words, book_);
    }
    catch (const Mistake&)
    {
        // No call follows from what is known, and nothing is known any more.
        if (gone_.empty())
            throw;
        return {Verdict::unreachable, {gone_ + comeBack}};
    }
    problems_.clear();
    lastOperation_ = &operation;
    lastOutcome_ = Outcome();
    std::string thrown;
    try
    {
        lastOutcome_ =
            kit::call(framework_->service(), operation, binding.values, this, binding.nulls);
    }
    catch (const MarloException& exception)
    {
        thrown = textOf(exception);
    }
    recorder_.show();
    if (!thrown.empty() && problems_.empty())
        problems_ = {thrown};
    const bool failed = lastOutcome_.failed() || !problems_.empty();
    if (!recorder_.draws())
        display_.print(resultLine(operation, binding.values, binding.nulls, failed) +
                           (thrown.empty() ? "" : ": MarloException"),
                       failed ? Display::Style::bad : Display::Style::good);

    const std::string name = operation.name;
    if (!failed && name == "subscribe")
        subscribed_ = true;
    if (!failed && name == "setLampMode")
        book_.setLamp(binding.values[0].second, binding.values[1].second,
                      toPeople(operation.arguments[2], binding.values[2].second));
    if (name == "activate" || name == "getDevices")
        linesAreStale_ = true;
    const std::vector<std::string> problems = std::exchange(problems_, {});
    pump();
    if (!problems.empty())
    {
        Report report(Verdict::unreachable, problems);
        if (!gone_.empty())
            report.why.back() += comeBack;
        return report;
    }
    if (failed)
    {
        Report report(Verdict::unmet, {name + " returned " + lastOutcome_.inWords()});
        report.shown = !recorder_.draws();
        return report;
    }
    const bool isFalse =
        lastOutcome_.returned == Outcome::Returned::flag && lastOutcome_.number == 0;
    return {falseIsUnmet && isFalse ? Verdict::unmet : Verdict::met, {}};
}

std::string Phone::resultLine(const Operation& operation, const Values& values,
                              const std::vector<std::string>& nulls, bool failed) const
{
    std::string line = callLabel(operation, values, nulls);
    if (lastOutcome_.returned != Outcome::Returned::nothing)
        line += ": " + (lastOutcome_.inWords().empty() ? "\"\"" : lastOutcome_.inWords());
    if (!failed)
        for (std::size_t i = 0; i < lastOutcome_.outputs.size(); ++i)
            line += std::string(" ") + operation.outputs[i].argument + "=" +
                    shown(toPeople(operation.outputs[i], lastOutcome_.outputs[i]), 400);
    return line;
}

Report Phone::check(const std::vector<Word>& words) const
{
    if (words.empty())
        throw Mistake("check needs result=VALUE or field=value");
    if (lastOperation_ == nullptr)
        throw Mistake("check compares what the last operation returned; there was none");
    const Values came = returned();
    for (const Word& word : words)
    {
        const auto found = std::find_if(
            came.begin(), came.end(), [&](const auto& value) { return value.first == word.name; });
        if (word.name.empty())
            throw Mistake("check takes result=VALUE or field=value, not " + shown(word.text, 40),
                          word.column);
        if (found == came.end())
        {
            const auto names = columnOf(came, &Values::value_type::first);
            throw Mistake(std::string(lastOperation_->name) + " returns " + listed(names) +
                              ", not " + shown(word.name, 40),
                          word.column);
        }
        std::string wanted = word.text;
        if (found != came.begin())
        {
            const Field& output =
                lastOperation_->outputs[static_cast<std::size_t>(found - came.begin() - 1)];
            wanted = toPeople(output, readValue(output, word));
        }
        const bool pattern = !word.quoted && wanted.find('*') != std::string::npos;
        if (pattern ? !matchesPattern(wanted, found->second) : wanted != found->second)
            return {Verdict::unmet,
                    {std::string(lastOperation_->name) + " returned " + word.name + "=" +
                     shown(found->second, 200) + ", awaited was " + shown(wanted, 200)}};
    }
    return {};
}

Values Phone::returned() const
{
    Values values = {{"result", lastOutcome_.inWords()}};
    for (std::size_t i = 0; lastOperation_ != nullptr && i < lastOperation_->outputs.size(); ++i)
    {
        const Field& output = lastOperation_->outputs[i];
        values.emplace_back(output.argument, i < lastOutcome_.outputs.size()
                                                 ? toPeople(output, lastOutcome_.outputs[i])
                                                 : "");
    }
    return values;
}

Report Phone::expect(const Expectation& expectation, std::string& call)
{
    std::size_t looked = events_.next();
    const auto came = [&]
    {
        looked = events_.find(expectation, looked);
        return looked < events_.events().size();
    };
    waitFor(expectation.within, [&] { return came() || !gone_.empty(); });
    if (interruptions() > 0)
        return {Verdict::interrupted, {}};
    if (!came())
    {
        if (!gone_.empty())
            return {Verdict::unreachable,
                    {(expectation.none ? "expected no " : "expected ") + expectation.description() +
                         ", but nothing comes any more",
                     gone_ + comeBack}};
        if (expectation.none)
            return {};
        Report report(Verdict::unmet, expectation.explain(events_.events(), events_.next()));
        report.why.insert(report.why.begin(), "expected " + expectation.description() + " within " +
                                                  durationText(expectation.within));
        if (!subscribed_)
            report.why.push_back("the phone has not subscribed; \"subscribe\" lets events come");
        return report;
    }
    const ReceivedEvent& event = events_.events()[looked];
    if (expectation.none)
        return {Verdict::unmet,
                {"no " + expectation.description() + " was to come, but it came",
                 "came: " + fullEventLabel(event)}};
    events_.pass(looked);
    const std::string argument = capturedBy(event);
    call = argument.empty() ? "" : event.value(argument);
    return {};
}

Report Phone::control(const std::string& command)
{
    recorder_.tracer().control(command);
    ControlAnswer answer;
    const Delivery delivery = framework_->connection()->control(command, answer, settings_.timeout);
    recorder_.show();
    if (delivery != Delivery::done)
        return unreachable(delivery, "the simulation has not answered: ");
    if (!answer.accepted)
        return {Verdict::unmet, {"sim: " + printable(answer.text, 400)}};
    std::istringstream lines(answer.text);
    for (std::string line; !recorder_.draws() && std::getline(lines, line);)
        display_.print(printable(line), Display::Style::faint);
    return {};
}

Report Phone::unreachable(Delivery delivery, const std::string& what)
{
    pump();
    const std::string who = framework_->connection()->description();
    return {Verdict::unreachable,
            {what + (delivery == Delivery::timedOut ? who + " did not answer in time"
                     : gone_.empty()                ? who + " is gone"
                                                    : gone_ + comeBack)}};
}

std::string Phone::ask(const std::string& command)
{
    ControlAnswer answer;
    framework_->connection()->control(command, answer, settings_.timeout);
    return answer.text;
}

Report Phone::raw(const std::string& text)
{
    const Operation* const operation = findRequest(parse(text).method);
    const Sending sending = text.rfind("SigEvent:", 0) == 0 ? Sending::oneWay
                            : operation != nullptr          ? operation->sending
                                                            : Sending::request;
    const std::shared_ptr<Connection> connection = framework_->connection();
    const std::string channel =
        sending == Sending::subscribe ? framework_->channelOf(*this) : std::string();
    const int number = recorder_.tracer().request(sending, text, channel);
    std::string answer;
    Delivery delivery = Delivery::done;
    if (sending == Sending::oneWay)
        delivery = connection->post(text);
    else
    {
        delivery = sending == Sending::subscribe
                       ? connection->subscribe(text, answer, channel, settings_.timeout)
                       : connection->request(text, answer, settings_.timeout);
        recorder_.tracer().answer(number, sending, delivery, answer);
    }
    recorder_.show();
    if (delivery != Delivery::done)
        return unreachable(delivery, "");
    if (sending == Sending::oneWay)
        answer = "(sent, no answer is awaited)";
    if (!recorder_.draws())
        display_.print(answer.empty() ? "(empty answer)" : printable(answer));
    if (answer != resultName(sfiFailure))
        return {};
    Report report(Verdict::unmet, {"the answer is sfiFailure"});
    report.shown = !recorder_.draws();
    return report;
}

bool Phone::inject(const std::string& text)
{
    framework_->inject(framework_->channelOf(*this), text);
    const std::size_t before = events_.events().size();
    pump();
    return events_.events().size() > before;
}

Report Phone::reconnect()
{
    try
    {
        framework_->reconnect(connect());
    }
    catch (const std::exception& error)
    {
        return {Verdict::unreachable, {error.what()}};
    }
    book_.clear();
    events_.passAll();
    subscribed_ = false;
    gone_.clear();
    linesAreStale_ = true;
    recorder_.note("connected to " + framework_->connection()->description(),
                   Display::Style::faint);
    return {};
}

void Phone::takeGone(const std::string& problem)
{
    gone_ = problem;
    book_.clear();
    subscribed_ = false;
    recorder_.note(gone_ + comeBack, Display::Style::bad);
}

void Phone::onEvent(const ReceivedEvent& received)
{
    book_.take(received);
    if (received.method() == "DevicesChangedEvent" ||
        received.method() == "RegistrationStateChangeEvent")
        linesAreStale_ = true;
    events_.add(received);
    if (onEach_)
        onEach_(received);
    if (!recorder_.draws())
        display_.print("* " + eventLabel(received), Display::Style::event);
}

void Phone::pump()
{
    recorder_.show();
    framework_->pump();
}

Report Phone::wait(std::chrono::milliseconds time)
{
    waitFor(time, [] { return false; });
    return {interruptions() > 0 ? Verdict::interrupted : Verdict::met, {}};
}

bool Phone::waitFor(std::chrono::milliseconds limit, const std::function<bool()>& done)
{
    return timekeeper_.wait(limit, done,
                            [this](std::chrono::milliseconds time)
                            {
                                if (whileWaiting_)
                                    whileWaiting_();
                                recorder_.show();
                                framework_->pump(time);
                                recorder_.show();
                            });
}

const CallBook& Phone::book()
{
    if (linesAreStale_)
        learnLines();
    return book_;
}

void Phone::learnLines()
{
    // The phone wants to know, not the application: this is not told to the recorder.
    std::string answer;
    if (framework_->connection()->request("<Method>GetDevices</Method>", answer,
                                          settings_.timeout) != Delivery::done)
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

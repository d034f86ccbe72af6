#include "kit/service/Replay.h"

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/protocol/Columns.h"
#include "kit/protocol/Protocol.h"
#include "kit/service/EmbeddedConnection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace kit
{

namespace
{

using RecordKind = TraceRecord::Kind;

constexpr const char* devices = "<Method>GetDevices</Method>";

/// On the wire a request with a time-out looks like any other.
Sending wayOf(Sending sending)
{
    return sending == Sending::timed ? Sending::request : sending;
}

/// "AnswerCall Line=1001 CallID=3"
std::string inWords(const std::string& text)
{
    const Message message = parse(text);
    if (message.method.empty())
        return text;
    std::string words = message.method;
    for (const Message::Element& field : message.elements)
        words += " " + field.tag + "=" + field.value;
    return message.payload.empty() ? words : words + " " + message.payload;
}

/// "CallID is 3 there and 5 here" for each field that differs.
std::vector<std::string> differencesOf(const std::string& there, const std::string& here)
{
    const Message before = parse(there);
    const Message now = parse(here);
    std::vector<std::string> all;
    for (const Message::Element& field : before.elements)
    {
        const std::string* const value = now.find(field.tag);
        if (value == nullptr)
            all.push_back(field.tag + " is missing here");
        else if (*value != field.value)
            all.push_back(field.tag + " is " + field.value + " there and " + *value + " here");
    }
    for (const Message::Element& field : now.elements)
        if (before.find(field.tag) == nullptr)
            all.push_back(field.tag + " is missing there");
    if (before.payload != now.payload)
        all.push_back("the payload is another one");
    return all;
}

const char* nameOf(Sending sending)
{
    return sending == Sending::oneWay      ? "a message without an answer"
           : sending == Sending::subscribe ? "a subscription"
                                           : "a request";
}

}  // namespace

Replay::Replay(const std::string& file, Pace pace) : name_(file), pace_(pace)
{
    std::ifstream in(file);
    if (!in)
        throw std::runtime_error(file + " cannot be read: " + std::strerror(errno));
    read(in);
    if (!complaint_.empty())
        throw std::runtime_error(complaint_);
}

Replay::Replay(std::istream& in, std::string name, Pace pace) : name_(std::move(name)), pace_(pace)
{
    read(in);
}

void Replay::read(std::istream& in)
{
    TraceReader reader(name_);
    std::string text;
    for (std::size_t line = 1; std::getline(in, text); ++line)
        if (std::optional<TraceRecord> record = reader.take(text, !in.eof()))
            steps_.push_back({std::move(*record), line, none, false});
    complaint_ = reader.complaint();
    if (steps_.empty())
        throw std::runtime_error(complaint_.empty() ? name_ + ": there is nothing in this trace"
                                                    : complaint_);
    std::map<int, std::size_t> unanswered;
    for (std::size_t i = 0; i < steps_.size(); ++i)
    {
        const TraceRecord& record = steps_[i].record;
        if (record.kind == RecordKind::request)
        {
            requests_[record.thread].push_back(i);
            if (record.number != 0)
                unanswered[record.number] = i;
        }
        else if (record.kind == RecordKind::control)
            hasControls_ = true;
        else if ((record.kind == RecordKind::answer || record.kind == RecordKind::exception) &&
                 unanswered.count(record.number) > 0)
        {
            steps_[unanswered[record.number]].answer = i;
            unanswered.erase(record.number);
        }
    }
    play(steps_.size(), false);
}

std::unique_ptr<Connection> Replay::connection()
{
    // Does not own it.
    return std::make_unique<EmbeddedConnection>(
        std::shared_ptr<Service>(std::shared_ptr<Service>(), this));
}

/// The records that do not come by themselves.
bool Replay::awaits(const Step& step) const
{
    return !step.done &&
           (step.record.kind == RecordKind::request || step.record.kind == RecordKind::control);
}

std::string Replay::place(std::size_t step) const
{
    return name_ + ":" + std::to_string(steps_[step].line);
}

std::size_t Replay::nextRequest() const
{
    std::size_t next = none;
    for (const auto& [thread, requests] : requests_)
        if (!requests.empty())
            next = std::min(next, requests.front());
    return next;
}

/// The request that has come: the next one of a thread.
std::size_t Replay::find(Sending sending, const std::string& text) const
{
    std::size_t found = none;
    for (const auto& [thread, requests] : requests_)
        if (!requests.empty())
        {
            const TraceRecord& next = steps_[requests.front()].record;
            if (wayOf(next.sending) == sending && next.text == text)
                found = std::min(found, requests.front());
        }
    return found;
}

void Replay::finish(std::size_t step)
{
    steps_[step].done = true;
    for (auto& [thread, requests] : requests_)
        while (!requests.empty() && steps_[requests.front()].done)
            requests.pop_front();
}

/// The same, and where there is none what comes nearest, which is told.
std::size_t Replay::take(Sending sending, const std::string& text)
{
    std::size_t step = find(sending, text);
    if (step == none)
    {
        const std::size_t expected = nextRequest();
        differ(sending, text, expected);
        // Perhaps something was left out; or it is what was expected with another value in it.
        for (std::size_t i = at_; i < steps_.size() && step == none; ++i)
            if (awaits(steps_[i]) && steps_[i].record.kind == RecordKind::request &&
                wayOf(steps_[i].record.sending) == sending && steps_[i].record.text == text)
                step = i;
        for (std::size_t i = at_; i < step && step != none; ++i)
            finish(i);
        if (step == none && expected != none &&
            parse(steps_[expected].record.text).method == parse(text).method)
            step = expected;
        if (step == none)
            return none;
    }
    // Commands that were not given again.
    const bool isFirst = step == nextRequest();
    for (std::size_t i = at_; i < step && isFirst; ++i)
        if (steps_[i].record.kind == RecordKind::control)
            finish(i);
    // What was sent before it was not waited for.
    if (isFirst)
        play(step, true);
    finish(step);
    if (isFirst)
        offset_ = steps_[step].record.time - clock_;
    return step;
}

/// Everything up to a step that comes by itself.
void Replay::play(std::size_t end, bool atOnce)
{
    for (; at_ < std::min(end, steps_.size()); ++at_)
    {
        const Step& step = steps_[at_];
        if (awaits(step))
            return;
        if (step.record.kind != RecordKind::event)
            continue;
        if (pace_ == Pace::recorded && !atOnce && step.record.time > clock_ + offset_)
            return;
        deliver(step.record);
    }
}

void Replay::deliver(const TraceRecord& event)
{
    const auto send = [&](const Receiver& to)
    {
        const auto client = clients_.find(to.client);
        if (client != clients_.end() && client->second)
            client->second(to.channel, event.text);
    };
    const auto known = receivers_.find(event.channel);
    if (known != receivers_.end())
        send(known->second);
    else
        // Its subscription was not recorded.
        for (const Receiver& subscription : subscriptions_)
            send(subscription);
}

void Replay::differ(Sending sending, const std::string& text, std::size_t expected)
{
    if (++differences_ > 1)
        return;
    const bool isControl = sending == Sending::nothing;
    const char* const what = isControl ? "command" : "request";
    std::string told;
    if (expected == none)
        told = name_ + ": no further " + what + " was recorded\n";
    else
        told = place(expected) + ": a " + what +
               " differs\n  recorded: " + inWords(steps_[expected].record.text) + "\n";
    told += "  came:     " + inWords(text);
    std::size_t nearest = none;
    std::vector<std::string> differences;
    const std::string method = parse(text).method;
    for (std::size_t i = at_; i < steps_.size() && !isControl; ++i)
    {
        const TraceRecord& record = steps_[i].record;
        if (!awaits(steps_[i]) ||
            (record.text != text && (method.empty() || parse(record.text).method != method)))
            continue;
        std::vector<std::string> here = differencesOf(record.text, text);
        if (nearest == none || here.size() < differences.size())
        {
            nearest = i;
            differences = std::move(here);
        }
    }
    if (nearest != none)
    {
        const TraceRecord& record = steps_[nearest].record;
        told += "\n  nearest:  " +
                (nearest == expected ? "that" : place(nearest) + ": " + inWords(record.text));
        if (!differences.empty())
            told += ", where " + listed(differences);
        else if (wayOf(record.sending) != sending)
            told += std::string(", which was ") + nameOf(record.sending) + " and is " +
                    nameOf(sending) + " here";
        else
            told += ", which was to come later";
    }
    std::uint64_t dropped = 0;
    for (std::size_t i = 0; i < std::min(expected, steps_.size()); ++i)
        dropped += steps_[i].record.count;
    if (dropped > 0)
        told +=
            "\n  note:     " + std::to_string(dropped) + " records before are missing in the trace";
    difference_ = told;
    if (log_)
        log_(told);
}

std::string Replay::difference() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!difference_.empty())
        return difference_;
    const std::size_t missing = nextRequest();
    return missing == none ? ""
                           : place(missing) + ": a request has not come\n  recorded: " +
                                 inWords(steps_[missing].record.text);
}

void Replay::setLog(Log log)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    log_ = std::move(log);
}

Service::ClientId Replay::connect(EventSink sink, Log, Connection::GoneSink)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    clients_[++lastClient_] = std::move(sink);
    return lastClient_;
}

void Replay::disconnect(ClientId client)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    clients_.erase(client);
}

/// The lines that occur in the trace, as an answer to GetDevices.
std::string Replay::lines() const
{
    std::vector<std::string> found;
    for (const Step& step : steps_)
    {
        if (step.record.kind == RecordKind::request && step.record.text == devices &&
            step.answer != none)
            return steps_[step.answer].record.text;
        const Message message = parse(step.record.text);
        for (const char* const tag : {"Line", "LineID"})
            if (const std::string* const line = message.find(tag))
                if (!line->empty() && !contains(found, *line))
                    found.push_back(*line);
    }
    std::string text;
    for (const std::string& line : found)
        text += "<" + line + ">";
    return text;
}

Delivery Replay::exchange(ClientId client, Sending sending, const std::string& text,
                          const std::string& channel, std::string& answer)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    if (clients_.count(client) == 0)
        return Delivery::gone;
    if (text == devices && find(sending, text) == none)
    {
        answer = devices_.empty() ? lines() : devices_;
        return Delivery::done;
    }
    const std::size_t step = take(sending, text);
    if (step == none)
    {
        answer = "sfiFailure";
        return Delivery::done;
    }
    const std::size_t answering = steps_[step].answer;
    const bool isAnswered = answering != none &&
                            steps_[answering].record.kind == RecordKind::answer &&
                            steps_[answering].record.delivery == Delivery::done;
    if (sending == Sending::subscribe && isAnswered)
    {
        receivers_[steps_[step].record.channel] = {client, channel};
        subscriptions_.push_back({client, channel});
    }
    if (isAnswered)
        answer = steps_[answering].record.text;
    if (isAnswered && text == devices)
        devices_ = answer;
    play(answering == none ? steps_.size() : answering, false);
    return isAnswered ? Delivery::done : Delivery::timedOut;
}

void Replay::followAnswer()
{
    const std::lock_guard<std::mutex> lock(mutex_);
    play(steps_.size(), false);
}

ControlAnswer Replay::control(const std::string& command)
{
    if (command == "replay")
    {
        std::string verdict = difference();
        // In one line.
        for (std::size_t end = 0; (end = verdict.find("\n  ")) != std::string::npos;)
            verdict.replace(end, 3, "; ");
        return {verdict.empty(),
                verdict.empty() ? "everything was asked as it was recorded" : verdict};
    }
    if (command == "help")
        return {true,
                "replay         refuses, and says why, unless everything was asked as recorded\n"
                "advance TIME   lets time pass"};
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto awaited = std::find_if(
        steps_.begin() + static_cast<std::ptrdiff_t>(at_), steps_.end(),
        [&](const Step& step) { return awaits(step) && step.record.kind == RecordKind::control; });
    if (awaited != steps_.end() && awaited->record.text == command)
    {
        awaited->done = true;
        offset_ = awaited->record.time - clock_;
    }
    else if (command.rfind("advance ", 0) == 0)
    {
        try
        {
            for (const Word& word : splitWords(command.substr(8)))
                clock_ += parseDuration(word);
        }
        catch (const Mistake& mistake)
        {
            return {false, mistake.what()};
        }
    }
    else if (hasControls_)
        differ(Sending::nothing, command,
               awaited == steps_.end() ? none : static_cast<std::size_t>(awaited - steps_.begin()));
    play(steps_.size(), false);
    return {true, ""};
}

void Replay::advance(std::chrono::milliseconds time)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    clock_ += time;
    play(steps_.size(), false);
}

}  // namespace kit

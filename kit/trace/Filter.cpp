#include "kit/trace/Filter.h"

#include "kit/protocol/Columns.h"
#include "kit/trace/Labels.h"

#include <utility>

namespace kit
{

namespace
{

using RecordKind = TraceRecord::Kind;

/// Values of the message's fields that name a line, or a call.
std::vector<std::string> valuesOf(const Message& message, bool (*what)(const Field& field))
{
    const std::vector<Field>* const fields = fieldsOf(message.method);
    std::vector<std::string> values;
    if (fields == nullptr)
        return values;
    for (const Field& field : *fields)
        if (const std::string* value = what(field) ? message.find(field.tag) : nullptr)
            if (!value->empty() && *value != "0")
                values.push_back(*value);
    return values;
}

bool hasWord(const std::string& text, const std::string& word)
{
    return (" " + text + " ").find(" " + word + " ") != std::string::npos;
}

}  // namespace

TraceFilter::TraceFilter(Wanted wanted) : wanted_(std::move(wanted)) {}

std::vector<bool> TraceFilter::add(const TraceRecord& record)
{
    const bool wanted = isWanted(record);
    const bool undecided =
        record.kind == RecordKind::request && undecided_.count(record.number) != 0;
    records_.push_back({undecided ? record.number : 0, wanted});
    return known();
}

bool TraceFilter::isWanted(const TraceRecord& record)
{
    if (record.kind == RecordKind::dropped ||
        (record.kind == RecordKind::exception && record.number == 0))
        return true;
    if (record.kind == RecordKind::control)
        return wanted_.call.empty() && wanted_.methods.empty() &&
               (wanted_.line.empty() || hasWord(record.text, wanted_.line));
    if (record.kind == RecordKind::answer || record.kind == RecordKind::exception)
    {
        decide(record.number, false);
        return requests_.erase(record.number) != 0;
    }
    const Message message = parse(record.text);
    if (!wanted_.methods.empty() && wanted_.methods.count(message.method) == 0)
        return false;
    const std::vector<std::string> lines = valuesOf(message, isLine);
    if (record.kind == RecordKind::request && record.number != 0 && !wanted_.call.empty() &&
        !callSeen_ && valuesOf(message, isCall).empty() &&
        (wanted_.line.empty() || contains(lines, wanted_.line)))
    {
        undecided_.insert(record.number);
        return false;
    }
    if (!fitsLineAndCall(message))
        return false;
    if (record.kind == RecordKind::request && record.number != 0)
        requests_.insert(record.number);
    // The request that is under way when a call is first heard of has made it.
    if (!callSeen_ && !undecided_.empty())
        decide(*undecided_.rbegin(), true);
    callSeen_ = true;
    return true;
}

bool TraceFilter::fitsLineAndCall(const Message& message)
{
    std::vector<std::string> lines = valuesOf(message, isLine);
    const std::vector<std::string> calls = valuesOf(message, isCall);
    for (const std::string& call : calls)
        if (lines.empty())
            lines.push_back(lines_[call]);
        else
            lines_[call] = lines.front();
    return (wanted_.line.empty() || contains(lines, wanted_.line)) &&
           (wanted_.call.empty() || contains(calls, wanted_.call));
}

void TraceFilter::decide(int request, bool wanted)
{
    if (undecided_.erase(request) == 0)
        return;
    for (Record& record : records_)
        if (record.undecided == request)
            record = {0, wanted};
    if (wanted)
        requests_.insert(request);
}

std::vector<bool> TraceFilter::known()
{
    std::vector<bool> decisions;
    for (; !records_.empty() && records_.front().undecided == 0; records_.pop_front())
        decisions.push_back(records_.front().wanted);
    return decisions;
}

std::vector<bool> TraceFilter::finish()
{
    while (!undecided_.empty())
        decide(*undecided_.begin(), false);
    return known();
}

std::vector<TraceRecord> filtered(const std::vector<TraceRecord>& records,
                                  const TraceFilter::Wanted& wanted)
{
    TraceFilter filter(wanted);
    std::vector<bool> decisions;
    const auto take = [&](const std::vector<bool>& more)
    { decisions.insert(decisions.end(), more.begin(), more.end()); };
    for (const TraceRecord& record : records)
        take(filter.add(record));
    take(filter.finish());
    std::vector<TraceRecord> chosen;
    for (std::size_t i = 0; i < records.size(); ++i)
        if (decisions[i])
            chosen.push_back(records[i]);
    return chosen;
}

}  // namespace kit

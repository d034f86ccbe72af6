#include "kit/trace/Page.h"

#include "kit/language/Wording.h"
#include "kit/trace/Labels.h"
#include "kit/trace/Ladder.h"

#include <map>
#include <nlohmann/json.hpp>
#include <ostream>

namespace kit
{

// The page's source, as it stands before and behind the trace; page/ and CMake make it.
extern const char pageBefore[];
extern const char pageBehind[];

namespace
{

using Json = nlohmann::ordered_json;

/// JSON that can stand in a page: nothing in it can end the element around it.
std::string dump(const Json& json)
{
    std::string text = json.dump(-1, ' ', true);
    for (std::size_t at = 0; (at = text.find('<', at)) != std::string::npos; at += 6)
        text.replace(at, 1, "\\u003c");
    return text;
}

/// Texts of a record that is not UTF-8 are shown as they are printed everywhere.
std::string readable(const std::string& text)
{
    return isUtf8(text) ? text : printable(text);
}

/// The kinds of messages that occur, each with its fields' names and meanings: told once, at the
/// end of the page, and referred to by number.
class Kinds
{
public:
    std::size_t numberOf(const std::string& name, const char* summary,
                         const std::vector<Field>* fields)
    {
        const auto known = numbers_.find(name);
        if (known != numbers_.end())
            return known->second;
        Json described = Json::array();
        if (fields != nullptr)
            for (const Field& field : *fields)
                described.push_back({field.argument, field.tag, field.explanation,
                                     isLine(field)   ? "line"
                                     : isCall(field) ? "call"
                                                     : ""});
        kinds_.push_back({{"name", readable(name)}, {"summary", summary}, {"fields", described}});
        return numbers_[name] = kinds_.size() - 1;
    }

    const Json& json() const { return kinds_; }

private:
    std::map<std::string, std::size_t> numbers_;
    Json kinds_ = Json::array();
};

/// Turns records into JSON, one by one and in their order.
class Describer
{
public:
    /// Short names, since there are as many as messages; page/page.js tells what they mean.
    Json describe(const TraceRecord& record, const FlowStep& step)
    {
        const Message message = parse(record.text);
        const std::vector<Field>* fields = nullptr;
        Json json;
        json["t"] = record.time.count();
        json["k"] = static_cast<int>(record.kind);
        json["l"] = readable(step.text);
        if (record.number != 0)
            json["n"] = record.number;
        json["d"] = static_cast<int>(step.application);
        if (record.thread != 0)
            json["h"] = record.thread;
        if (record.sending != Sending::request)
            json["s"] = static_cast<int>(record.sending);
        if (!record.channel.empty())
            json["c"] = readable(record.channel);
        if (step.farEnd != FlowStep::Between::none)
            json["b"] = {step.farEnd == FlowStep::Between::toService ? 1 : -1,
                         readable(step.farEndName), readable(step.farEndText)};
        if (record.kind == TraceRecord::Kind::request)
        {
            const Operation* const operation = findRequest(message.method);
            requests_[record.number] = operation;
            fields = operation != nullptr ? &operation->arguments : nullptr;
            json["m"] = kinds_.numberOf(message.method,
                                        operation != nullptr ? operation->summary : "", fields);
        }
        else if (record.kind == TraceRecord::Kind::event)
        {
            const Event* const event = findEvent(message.method);
            fields = event != nullptr ? &event->arguments : nullptr;
            json["m"] =
                kinds_.numberOf(message.method, event != nullptr ? event->summary : "", fields);
        }
        else if (record.kind == TraceRecord::Kind::answer)
        {
            const Operation* const operation = requests_[record.number];
            requests_.erase(record.number);
            fields = operation != nullptr ? &operation->outputs : nullptr;
            if (fields != nullptr && !fields->empty())
                json["m"] =
                    kinds_.numberOf(operation->method + std::string(" answered"), "", fields);
            if (isRefused(record, message, operation))
                json["r"] = 1;
        }
        if (record.kind == TraceRecord::Kind::exception || message.method == "FeatureFailedEvent")
            json["r"] = 1;
        putText(json, record, message, fields);
        return json;
    }

    const Json& kinds() const { return kinds_.json(); }

private:
    static bool isRefused(const TraceRecord& record, const Message& message,
                          const Operation* operation)
    {
        if (record.delivery != Delivery::done)
            return true;
        if (operation != nullptr && operation->answer == Answer::result)
            return record.text != resultName(sfiSuccess);
        if (operation != nullptr && operation->answer == Answer::fields)
        {
            const std::string* const result = message.find(operation->resultTag);
            return result == nullptr || *result != resultName(sfiSuccess);
        }
        return record.text.find(resultName(sfiFailure)) != std::string::npos;
    }

    /// The elements, from which the page puts the text together again: method, elements, rest.
    static void putText(Json& json, const TraceRecord& record, const Message& message,
                        const std::vector<Field>* fields)
    {
        Json elements = Json::array();
        for (const Message::Element& element : message.elements)
        {
            Json row = {readable(element.tag), readable(element.value)};
            if (const Field* const field = fieldWithTag(fields, element.tag))
            {
                row[0] = field - fields->data();
                const std::string value = toPeople(*field, element.value);
                if (value != element.value)
                    row.push_back(readable(value));
            }
            elements.push_back(row);
        }
        if (!elements.empty())
            json["e"] = elements;
        if (!message.payload.empty())
            json["p"] = readable(message.payload);
        if (!isUtf8(record.text))
            json["x"] = hexOf(record.text);
    }

    Kinds kinds_;
    std::map<int, const Operation*> requests_;  ///< open ones, null when of no known operation
};

}  // namespace

void writePage(std::ostream& out, const Trace& trace, const std::string& name)
{
    const std::vector<FlowStep> steps = stepsOf(trace.records);  // one for each record
    Describer describer;
    out << pageBefore << "{\"records\":[\n";
    for (std::size_t i = 0; i < trace.records.size(); ++i)
        out << (i == 0 ? "" : ",\n") << dump(describer.describe(trace.records[i], steps.at(i)));
    Json rest = {{"kinds", describer.kinds()},
                 {"name", readable(name)},
                 {"program", readable(trace.head.program)},
                 {"complaint", readable(trace.complaint)}};
    if (trace.head.start)
        rest["start"] = std::chrono::duration_cast<std::chrono::milliseconds>(
                            trace.head.start->time_since_epoch())
                            .count();
    out << "\n],\n" << dump(rest).substr(1) << '\n' << pageBehind;
}

}  // namespace kit

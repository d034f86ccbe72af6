#include "kit/service/Requests.h"

#include "kit/language/Wording.h"
#include "kit/protocol/Columns.h"
#include "kit/service/Handlers.h"

#include <algorithm>
#include <set>
#include <utility>

namespace kit::service
{

using namespace numbers;

namespace
{

/// About the tags of one request; the others are counted.
constexpr std::size_t mostComplaints = 20;
/// More would keep everybody else waiting, but for a payload, which is not looked into.
constexpr std::ptrdiff_t mostBrackets = 10000;
constexpr std::size_t longestMethod = 256;

const std::string signallingPrefix = "SigEvent:";

bool checkValue(Outbox& outbox, const Operation& operation, const Field& field,
                const std::string& value)
{
    const auto wrong = [&](const std::string& possible)
    {
        outbox.complain("wrong value " + quoted(value) + " for <" + field.tag + "> in " +
                        operation.method + ", " + possible);
        return false;
    };
    const std::vector<std::string> names = columnOf(namesOf(field.names), &NumberName::name);
    int number = 0;
    switch (field.kind)
    {
    case Kind::number:
    case Kind::count:
    case Kind::cause:
    case Kind::feature:
        return numberOf(Meaning::none, value, number) || wrong("a number is needed");
    case Kind::refusal:
    case Kind::cancelType:
    case Kind::forwarding:
        return (numberOf(Meaning::none, value, number) &&
                contains(names, nameOf(field.names, number))) ||
               wrong("one of " + choices(field.names) + " is possible");
    case Kind::flag:
        return value == "1" || value == "0" || wrong("1 or 0 is needed");
    case Kind::word:
        return value == "TRUE" || value == "FALSE" || wrong("TRUE or FALSE is needed");
    case Kind::state:
        return contains(names, value) || wrong("one of " + listed(names) + " is needed");
    default:
        return true;
    }
}

/// Complains about everything that is wrong with the fields; false when something is.
bool checkFields(Outbox& outbox, const Operation& operation, const Message& message)
{
    std::vector<std::string> known;
    for (const Field& field : operation.arguments)
        if (*field.tag != '\0')
            known.push_back(field.tag);
    std::set<std::string> seen;
    std::size_t wrong = 0;
    for (const Message::Element& element : message.elements)
    {
        if (element.tag == "Method")
            continue;
        const bool unknown = !contains(known, element.tag);
        if (!unknown && seen.insert(element.tag).second)
            continue;
        if (++wrong <= mostComplaints)
            outbox.complain(unknown ? "unknown tag <" + printable(element.tag, 64) + "> in " +
                                          operation.method +
                                          didYouMean(element.tag, known, "", "<", ">")
                                    : "tag <" + element.tag + "> twice in " + operation.method);
    }
    if (wrong > mostComplaints)
        outbox.complain(std::to_string(wrong - mostComplaints) + " more such tags in " +
                        operation.method);
    bool right = wrong == 0;
    for (const Field& field : operation.arguments)
    {
        if (*field.tag == '\0')
            continue;
        const std::string* const value = message.find(field.tag);
        if (value == nullptr)
        {
            outbox.complain(std::string("missing <") + field.tag + "> in " + operation.method);
            right = false;
        }
        else if (!checkValue(outbox, operation, field, *value))
            right = false;
    }
    if (!hasPayload(&operation.arguments) && !message.payload.empty())
    {
        outbox.complain("unexpected text " + quoted(message.payload) + " behind the fields of " +
                        operation.method);
        right = false;
    }
    return right;
}

const Handler* findHandler(const std::string& method)
{
    for (const std::vector<Handler>* const handlers : {&callHandlers(), &featureHandlers()})
        for (const Handler& handler : *handlers)
            if (handler.method == method)
                return &handler;
    return nullptr;
}

std::vector<std::string> methods()
{
    std::vector<std::string> names;
    for (const Operation& operation : operations())
        if (findHandler(operation.method) != nullptr)
            names.push_back(operation.method);
    return names;
}

}  // namespace

std::string choices(Meaning meaning)
{
    std::vector<std::string> all;
    for (const NumberName& entry : namesOf(meaning))
        all.push_back(std::to_string(entry.number) + " (" + entry.name + ")");
    return listed(all);
}

Request::Request(Simulation& simulation, const Operation& operation, Message message)
    : s_(simulation), operation_(operation), message_(std::move(message))
{
}

const std::string& Request::text(const char* tag) const
{
    static const std::string empty;
    const std::string* const value = message_.find(tag);
    return value == nullptr ? empty : *value;
}

int Request::number(const char* tag) const
{
    int value = 0;
    numberOf(Meaning::none, text(tag), value);
    return value;
}

bool Request::flag(const char* tag) const
{
    return text(tag) == "1" || text(tag) == "TRUE";
}

Line& Request::line(const char* tag) const
{
    Line* const line = s_.lines.find(text(tag));
    if (line == nullptr)
        refuse("no line " + quoted(text(tag)) + didYouMean(text(tag), s_.lines.names()));
    return *line;
}

Line& Request::readyLine() const
{
    Line& ready = line();
    if (!ready.registered)
        refuse("line " + ready.name + " is not registered, activate first");
    return ready;
}

Call& Request::call(const char* tag, int feature, const std::vector<CallState>& states) const
{
    const Line& line = readyLine();
    const int id = number(tag);
    Call* const found = s_.calls.find(id);
    if (found == nullptr || found->line != line.name)
        refuseFeature(id, feature, failureNoSuchCall,
                      "no call " + std::to_string(id) + " on line " + line.name);
    if (!contains(states, found->state))
        refuseFeature(id, feature, failureWrongState,
                      "call " + std::to_string(id) + " is " +
                          nameOf(Meaning::callState, found->state));
    return *found;
}

void Request::needFreeLine(int feature, int exceptCall) const
{
    const std::string& line = text("Line");
    const Call* const other =
        s_.calls.find(line, [&](const Call& any) { return any.active() && any.id != exceptCall; });
    if (other != nullptr)
        refuseFeature(exceptCall, feature, failureBusy,
                      "call " + std::to_string(other->id) + " on line " + line + " is " +
                          nameOf(Meaning::callState, other->state) + ", hold it first");
}

const std::string& Request::word(const char* tag, Meaning meaning, const char* what) const
{
    const std::string& given = text(tag);
    const std::vector<std::string> known = columnOf(namesOf(meaning), &NumberName::name);
    if (!contains(known, given))
        refuse(std::string("unknown ") + what + " " + quoted(given) + didYouMean(given, known));
    return given;
}

void Request::refuse(const std::string& why, const char* answer) const
{
    s_.outbox.complain(operation_.method + (": " + why));
    throw Refusal{answer};
}

void Request::refuseFeature(int callId, int feature, int failure, const std::string& why) const
{
    s_.outbox.featureFailed(text("Line"), callId, feature, failure);
    refuse(why);
}

std::string Request::featureSuccess(int callId, int feature) const
{
    s_.outbox.featureSuccess(text("Line"), callId, feature);
    return success;
}

std::string answerRequest(Simulation& simulation, const std::string& text)
{
    if (text.rfind(signallingPrefix, 0) == 0)
    {
        simulation.settings.lastSignalling = text.substr(signallingPrefix.size());
        return "";
    }
    if (const auto brackets = std::count(text.begin(), text.end(), '<');
        brackets > mostBrackets &&
        !hasPayload(fieldsOf(parse(text.substr(0, longestMethod)).method)))
    {
        simulation.outbox.complain(std::to_string(brackets) + " times \"<\" in a request, " +
                                   std::to_string(mostBrackets) + " are possible");
        return failed;
    }
    const Message message = parse(text);
    const Operation* const operation = findRequest(message.method);
    const Handler* const handler = findHandler(message.method);
    if (operation == nullptr || handler == nullptr)
    {
        simulation.outbox.complain(message.method.empty()
                                       ? "no method in " + quoted(text)
                                       : "unknown method " + quoted(message.method) +
                                             didYouMean(message.method, methods()));
        return failed;
    }
    if (!checkFields(simulation.outbox, *operation, message))
        return failed;
    try
    {
        return handler->run(simulation, Request(simulation, *operation, message));
    }
    catch (const Refusal& refusal)
    {
        return operation->answer == Answer::none ? "" : refusal.answer;
    }
}

}  // namespace kit::service

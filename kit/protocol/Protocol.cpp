#include "kit/protocol/Protocol.h"

#include "kit/protocol/Columns.h"
#include "kit/protocol/Lists.h"

#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace kit
{

namespace
{

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

template <typename Row>
const Row* findRow(const std::vector<Row>& rows, const char* Row::*column, const std::string& text)
{
    for (const Row& row : rows)
        if (row.*column == text)
            return &row;
    return nullptr;
}

/// Letters to insert, leave out, replace or swap to get from one word to the other.
std::size_t distance(const std::string& a, const std::string& b)
{
    std::vector<std::vector<std::size_t>> d(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        d[i][0] = i;
    for (std::size_t j = 0; j <= b.size(); ++j)
        d[0][j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i)
        for (std::size_t j = 1; j <= b.size(); ++j)
        {
            const std::size_t same = a[i - 1] == b[j - 1] ? 0 : 1;
            d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + same});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
        }
    return d[a.size()][b.size()];
}

std::size_t taggedFields(const std::vector<Field>& fields)
{
    return static_cast<std::size_t>(std::count_if(
        fields.begin(), fields.end(), [](const Field& field) { return *field.tag != '\0'; }));
}

/// Number of fields before the payload of a message with this method; npos when none is known.
std::size_t fieldsBeforePayload(const std::string& method)
{
    const std::vector<Field>* const fields = fieldsOf(method);
    return hasPayload(fields) ? taggedFields(*fields) : std::string::npos;
}

/// Takes one element off the front of `text` at `at`; false when none stands there.
bool takeElement(const std::string& text, std::size_t& at, Message::Element& taken)
{
    if (at >= text.size() || text[at] != '<')
        return false;
    const std::size_t tagEnd = text.find('>', at);
    if (tagEnd == std::string::npos)
        return false;
    const std::string tag = text.substr(at + 1, tagEnd - at - 1);
    const std::string closing = "</" + tag + ">";
    const std::size_t end = text.find(closing, tagEnd + 1);
    if (end == std::string::npos)
        return false;
    taken = {tag, text.substr(tagEnd + 1, end - tagEnd - 1)};
    at = end + closing.size();
    return true;
}

std::string build(const std::string& method, const std::vector<Field>& fields, const Values& values,
                  Others others)
{
    checkNames(method, fields, values);
    std::string text = element("Method", method);
    for (const Field& field : fields)
    {
        const std::string* const value = valueFor(field, values);
        if (field.kind == Kind::subscriber || (value == nullptr && others == Others::leftOut))
            continue;
        const bool zero = value == nullptr && (isNumber(field.kind) || isFlag(field.kind));
        const std::string wire = toWire(field, value != nullptr ? *value : zero ? "0" : "");
        text += field.kind == Kind::payload ? wire : element(field.tag, wire);
    }
    return text;
}

bool flagValue(const Field& field, const std::string& value)
{
    bool on = false;
    if (switchOf(value, on))
        return on;
    throw std::invalid_argument(std::string(field.argument) + " is a flag, true or false, not \"" +
                                value + "\"");
}

std::string countText(const Field& field, const std::string& value)
{
    const bool digits = !value.empty() && value.size() <= 10 &&
                        value.find_first_not_of("0123456789") == std::string::npos;
    if (!digits || std::stoull(value) > 4294967295ULL)
        throw std::invalid_argument(std::string(field.argument) +
                                    " is a number from 0 to 4294967295, not \"" + value + "\"");
    return std::to_string(std::stoull(value));
}

std::string numberText(const Field& field, const std::string& value)
{
    int number = 0;
    if (numberOf(field.names, value, number))
        return std::to_string(number);
    const std::vector<std::string> names = columnOf(namesOf(field.names), &NumberName::name);
    const std::string near = nearest(value, names);
    throw std::invalid_argument(std::string(field.argument) + " is a number" +
                                (names.empty() ? "" : " or one of its names") + ", not \"" + value +
                                "\"" + (near.empty() ? "" : "; did you mean " + near + "?"));
}

std::string numbersText(const Field& field, const std::string& value)
{
    std::vector<int> numbers;
    for (const std::string& item : decodeTexts(value))
    {
        int number = 0;
        if (!numberOf(field.names, item, number))
            throw std::invalid_argument(std::string(field.argument) +
                                        " is a list of numbers, not \"" + value + "\"");
        numbers.push_back(number);
    }
    return encodeList(numbers);
}

}  // namespace

std::size_t placeOf(const std::vector<Field>& fields, const std::string& name)
{
    const auto found =
        std::find_if(fields.begin(), fields.end(),
                     [&](const Field& field) {
                         return name == field.argument || (*field.tag != '\0' && name == field.tag);
                     });
    return static_cast<std::size_t>(found - fields.begin());
}

std::size_t checkedPlaceOf(const std::string& message, const std::vector<Field>& fields,
                           const std::string& name)
{
    const std::size_t place = placeOf(fields, name);
    if (place < fields.size())
        return place;
    const std::string near = nearest(name, columnOf(fields, &Field::argument));
    throw std::invalid_argument("unknown field " + name + " in " + message +
                                (near.empty() ? "" : ", did you mean " + near + "?"));
}

const std::string* valueFor(const Field& field, const Values& values)
{
    for (const auto& [name, value] : values)
        if (placeOf({field}, name) == 0)
            return &value;
    return nullptr;
}

void checkNames(const std::string& message, const std::vector<Field>& fields, const Values& values)
{
    std::vector<bool> given(fields.size());
    for (const auto& [name, value] : values)
    {
        const std::size_t place = checkedPlaceOf(message, fields, name);
        if (given[place])
            throw std::invalid_argument(message + ": " + name + " is given twice");
        given[place] = true;
    }
}

const Operation* findOperation(const std::string& name)
{
    return findRow(operations(), &Operation::name, name);
}

const Operation* findRequest(const std::string& method)
{
    return method.empty() ? nullptr : findRow(operations(), &Operation::method, method);
}

const Event* findEvent(const std::string& method)
{
    return findRow(events(), &Event::method, method);
}

const Event* findCallback(const std::string& callback)
{
    return findRow(events(), &Event::callback, callback);
}

const std::vector<Field>* fieldsOf(const std::string& method)
{
    if (const Operation* const operation = findRequest(method))
        return &operation->arguments;
    const Event* const event = findEvent(method);
    return event == nullptr ? nullptr : &event->arguments;
}

bool hasPayload(const std::vector<Field>* fields)
{
    return fields != nullptr && !fields->empty() && fields->back().kind == Kind::payload;
}

const Field* fieldWithTag(const std::vector<Field>* fields, const std::string& tag)
{
    if (fields != nullptr)
        for (const Field& field : *fields)
            if (tag == field.tag)
                return &field;
    return nullptr;
}

std::string nearest(const std::string& word, const std::vector<std::string>& list)
{
    const std::string wanted = lower(word);
    // A third of the word may be wrong, and of a short one a letter.
    std::size_t best = std::max<std::size_t>(1, wanted.size() / 3) + 1;
    std::string found;
    for (const std::string& candidate : list)
    {
        const std::string known = lower(candidate);
        const bool begins = wanted.size() >= 3 && known.compare(0, wanted.size(), wanted) == 0;
        const std::size_t away = known == wanted ? 0 : begins ? 1 : distance(wanted, known);
        if (away < best)
        {
            best = away;
            found = candidate;
        }
    }
    return found;
}

bool switchOf(const std::string& word, bool& on)
{
    const std::string small = lower(word);
    for (const char* yes : {"true", "on", "yes", "1"})
        if (small == yes)
            return on = true;
    on = false;
    for (const char* no : {"false", "off", "no", "0"})
        if (small == no)
            return true;
    return false;
}

const std::string* Message::find(const std::string& tag) const
{
    for (const Element& candidate : elements)
        if (candidate.tag == tag)
            return &candidate.value;
    return nullptr;
}

Message parse(const std::string& text)
{
    Message message;
    std::size_t at = 0;
    Message::Element taken;
    std::size_t room = std::string::npos;
    if (text.compare(0, 8, "<Method>") == 0 && takeElement(text, at, taken))
    {
        message.method = taken.value;
        room = fieldsBeforePayload(message.method);
    }
    while (message.elements.size() < room && takeElement(text, at, taken))
        message.elements.push_back(taken);
    message.payload = text.substr(at);
    return message;
}

std::string element(const std::string& tag, const std::string& value)
{
    return "<" + tag + ">" + value + "</" + tag + ">";
}

std::string inWords(Answer answer)
{
    switch (answer)
    {
    case Answer::none:
        return "none is awaited";
    case Answer::result:
        return "a result word and nothing else; its code is returned";
    case Answer::contains:
        return "any text: with `sfiFailure` in it 0 is returned, else 5, and the output is whether "
               "`true` is in it";
    case Answer::stateName:
        return "any text: with `sfiFailure` or no state's name in it 0 is returned, else 5";
    case Answer::fields:
        return "fields; all outputs are written whatever the result";
    case Answer::items:
        return "items, each in angle brackets; `sfiFailure` alone returns 0, anything else 5";
    case Answer::whole:
        return "`true` and nothing else returns true, anything else false";
    }
    return "";
}

bool isNumber(Kind kind)
{
    switch (kind)
    {
    case Kind::number:
    case Kind::count:
    case Kind::cause:
    case Kind::feature:
    case Kind::refusal:
    case Kind::cancelType:
    case Kind::forwarding:
        return true;
    default:
        return false;
    }
}

bool isFlag(Kind kind)
{
    return kind == Kind::flag || kind == Kind::word;
}

std::string toWire(const Field& field, const std::string& value)
{
    if (field.kind == Kind::flag)
        return flagValue(field, value) ? "1" : "0";
    if (field.kind == Kind::word)
        return flagValue(field, value) ? "TRUE" : "FALSE";
    if (field.kind == Kind::count)
        return countText(field, value);
    if (isNumber(field.kind))
        return numberText(field, value);
    if (field.kind == Kind::ints)
        return numbersText(field, value);
    if (field.kind == Kind::texts)
        return encodeList(decodeTexts(value));
    return value;
}

std::string toPeople(const Field& field, const std::string& value)
{
    if (field.kind == Kind::flag)
        return value == "0" ? "false" : value == "1" ? "true" : value;
    if (field.kind == Kind::word)
        return lower(value);
    int number = 0;
    if (isNumber(field.kind) && field.names != Meaning::none &&
        numberOf(Meaning::none, value, number))
        return nameOf(field.names, number);
    if ((field.kind == Kind::ints || field.kind == Kind::texts) && !value.empty() &&
        value.back() == ',')
        return value.substr(0, value.size() - 1);
    return value;
}

std::string eventText(const Event& event, const Values& values, Others others)
{
    return build(event.method, event.arguments, values, others);
}

std::string requestText(const Operation& operation, const Values& values)
{
    if (operation.sending == Sending::nothing)
        return std::string();
    if (*operation.method != '\0')
        return build(operation.method, operation.arguments, values, Others::plain);
    checkNames(operation.name, operation.arguments, values);
    const std::string* const data = valueFor(operation.arguments.front(), values);
    return "SigEvent:" + (data != nullptr ? *data : std::string());
}

}  // namespace kit

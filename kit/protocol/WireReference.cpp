// Writes what is made from the table of the protocol: the wire reference as Markdown, and the
// dictionary of the fuzzers.
#include "kit/protocol/Protocol.h"

#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>

namespace
{

using kit::Field;
using kit::Kind;
using kit::Meaning;
using kit::Sending;

const std::map<Kind, const char*> kinds = {
    {Kind::text, "text, byte for byte"},
    {Kind::cString, "text; null cuts the request off here"},
    {Kind::number, "decimal number"},
    {Kind::feature, "decimal number"},
    {Kind::refusal, "decimal number"},
    {Kind::cancelType, "decimal number"},
    {Kind::forwarding, "decimal number"},
    {Kind::cause, "decimal number of the CSTA cause"},
    {Kind::count, "decimal number without a sign"},
    {Kind::flag, "flag, `1` or `0`"},
    {Kind::word, "flag, `TRUE` or `FALSE`"},
    {Kind::state, "name of a service state"},
    {Kind::payload, "the rest of the message, without a tag"},
    {Kind::raw, "bytes, without a tag"},
    {Kind::subscriber, "does not travel"},
    {Kind::ints, "list of numbers"},
    {Kind::texts, "list of texts"},
    {Kind::party, "text; arrives in the record `CallPartyInfo`"},
};

const std::map<Sending, const char*> sendings = {
    {Sending::request, "`sendRequest`"},
    {Sending::timed, "`sendRequestTimed`, time-out 100000"},
    {Sending::subscribe, "`sendSubscribe`, time-out 100000"},
    {Sending::oneWay, "`sendOneWay`"},
};

void fieldTable(std::ostream& out, const std::vector<Field>& fields, const char* first)
{
    out << "| " << first << " | Tag | Value | Meaning |\n|---|---|---|---|\n";
    for (const Field& field : fields)
        out << "| `" << field.argument << "` | "
            << (*field.tag != '\0' ? "`" + std::string(field.tag) + "`" : std::string("none"))
            << " | " << kinds.at(field.kind) << " | " << field.explanation << " |\n";
    out << "\n";
}

std::string shape(const std::string& method, const std::vector<Field>& fields)
{
    std::string text = kit::element("Method", method);
    for (const Field& field : fields)
        if (field.kind == Kind::payload)
            text += field.argument;
        else if (field.kind != Kind::subscriber)
            text += kit::element(field.tag, field.argument);
    return text;
}

void writeOperation(std::ostream& out, const kit::Operation& operation)
{
    out << "### " << operation.name << "\n\n" << operation.summary << "\n\n";
    if (operation.sending == Sending::nothing)
    {
        out << "Not sent.\n\n";
        return;
    }
    out << "    "
        << (*operation.method != '\0' ? shape(operation.method, operation.arguments)
                                      : std::string("SigEvent:data"))
        << "\n\n";
    if (!operation.arguments.empty())
        fieldTable(out, operation.arguments, "Argument");
    out << "Sent with " << sendings.at(operation.sending)
        << ". Answer: " << kit::inWords(operation.answer)
        << (*operation.resultTag != '\0'
                ? ", which comes from `" + std::string(operation.resultTag) + "`"
                : std::string())
        << ".\n\n";
    if (!operation.outputs.empty())
        fieldTable(out, operation.outputs, "Output");
}

void writeEvent(std::ostream& out, const kit::Event& event)
{
    out << "### " << event.method << "\n\n"
        << event.summary << " Calls `" << event.callback << "`"
        << (event.exact ? "; the name must match whole" : "") << ".\n\n    "
        << shape(event.method, event.arguments) << "\n\n";
    if (!event.arguments.empty())
        fieldTable(out, event.arguments, "Argument");
}

/// The numbers that a group of fields shares, under the first field's name.
void writeNumbers(std::ostream& out)
{
    std::vector<std::pair<Meaning, std::string>> seen;
    const auto note = [&](const std::vector<Field>& fields)
    {
        for (const Field& field : fields)
        {
            bool known = field.names == Meaning::none;
            for (const auto& entry : seen)
                known = known || entry.first == field.names;
            if (!known)
                seen.emplace_back(field.names, field.argument);
        }
    };
    for (const kit::Operation& operation : kit::operations())
    {
        note(operation.arguments);
        note(operation.outputs);
    }
    for (const kit::Event& event : kit::events())
        note(event.arguments);
    for (const auto& [group, argument] : seen)
    {
        out << "- `" << argument << "`:";
        // A word stands for itself; only numbers have a number.
        const bool words = group == Meaning::agentState || group == Meaning::systemStatus ||
                           group == Meaning::serverFeature || group == Meaning::recording ||
                           group == Meaning::serviceState;
        const char* separator = " ";
        for (const kit::NumberName& entry : kit::namesOf(group))
        {
            out << separator << entry.name;
            if (!words)
                out << " " << entry.number;
            separator = ", ";
        }
        out << "\n";
    }
}

std::string reference()
{
    std::ostringstream out;
    out << R"(# Wire reference

Written by the program `wire-reference` from the table in `kit/protocol`; do not edit, build the target `update-wire-reference`.

Every message is a flat text: the method's element and then one element for each field, in this order and with nothing between them. Nothing is escaped. In events the order is free, and an absent text is empty, an absent number -1 (without a sign: 4294967295), an absent flag true.

Result words and their codes: `sfiSuccess` 5, `sfiFailureCallBackInvalidState` 1, `sfiFailureCallBackNoCallInfo` 2, `sfiFailureCallBackToMany` 3, `sfiFailureCallBackAllreadyExists` 4; every other text is 0.

## Operations

)";
    for (const kit::Operation& operation : kit::operations())
        writeOperation(out, operation);
    out << "## Events\n\n";
    for (const kit::Event& event : kit::events())
        writeEvent(out, event);
    out << R"(## Numbers and words of the simulator

The library carries them unread. Those of the service states and of the CSTA causes are fixed; all others are inventions of the simulator, and a phone's service has its own. So is the encoding of lists: each item is followed by a comma; a comma or a backslash inside an item has a backslash before it.

)";
    writeNumbers(out);
    return out.str();
}

/// What the fuzzers put together messages from: all that events and answers consist of, and numbers
/// at the limits.
std::string dictionary()
{
    std::set<std::string> tags;
    const auto add = [&tags](const std::vector<Field>& fields)
    {
        for (const Field& field : fields)
            tags.insert(field.tag);
    };
    for (const kit::Operation& operation : kit::operations())
    {
        add(operation.outputs);
        tags.insert(operation.resultTag);
    }
    std::string text;
    for (const kit::Event& event : kit::events())
    {
        add(event.arguments);
        text += '"' + std::string(event.method) + "\"\n";
    }
    tags.erase("");
    for (const std::string& tag : tags)
        text += "\"<" + tag + ">\"\n\"</" + tag + ">\"\n\"/" + tag + ">\"\n";
    for (const Meaning meaning : {Meaning::result, Meaning::serviceState})
        for (const kit::NumberName& entry : kit::namesOf(meaning))
            text += '"' + std::string(entry.name) + "\"\n";
    for (const char* const word :
         {"<Method>", "</Method>", "true", "false", "-1", "4294967295", "2147483647", "-2147483648",
          "2147483648", "99999999999", "\\x00"})
        text += '"' + std::string(word) + "\"\n";
    return text;
}

std::string contentsOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream contents;
    contents << file.rdbuf();
    return contents.str();
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool isDictionary = !arguments.empty() && arguments[0] == "--dictionary";
    if (isDictionary)
        arguments.erase(arguments.begin());
    const std::string text = isDictionary ? dictionary() : reference();
    if (arguments.empty())
    {
        std::cout << text;
        return 0;
    }
    if (arguments.size() == 2 && arguments[0] == "--check")
    {
        if (contentsOf(arguments[1]) == text)
            return 0;
        std::cerr << arguments[1] << " is not what the table says: build update-wire-reference\n";
        return 1;
    }
    if (arguments.size() != 1 || arguments[0].rfind("-", 0) == 0)
    {
        std::cerr << "usage: wire-reference [--dictionary] [[--check] FILE]\n";
        return 2;
    }
    std::ofstream file(arguments[0], std::ios::binary);
    file << text;
    file.close();
    if (!file)
    {
        std::cerr << arguments[0] << " cannot be written\n";
        return 1;
    }
    return 0;
}

#include "kit/service/Control.h"

#include "kit/language/Wording.h"
#include "kit/service/Commands.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace kit::service
{

using namespace numbers;

namespace
{

constexpr std::size_t logLength = 200;

std::vector<Word> split(const std::string& command)
{
    std::vector<Word> words;
    std::size_t at = 0;
    while ((at = command.find_first_not_of(" \t\r\n", at)) != std::string::npos)
    {
        Word word{"", at, false};
        bool open = false;
        for (; at < command.size(); ++at)
        {
            const char c = command[at];
            if (c == '\\' && at + 1 < command.size())
                word.text += command[++at];
            else if (c == '"')
            {
                open = !open;
                word.quoted = true;
            }
            else if (!open && (c == ' ' || c == '\t' || c == '\r' || c == '\n'))
                break;
            else
                word.text += c;
        }
        if (open)
            throw Refusal("the text that begins at column " + std::to_string(word.begin + 1) +
                          " has no closing \"");
        words.push_back(word);
    }
    return words;
}

/// "LINE from NUMBER [name TEXT] [video]" taken apart.
std::vector<Slot> slotsOf(const std::string& usage)
{
    std::vector<Slot> slots;
    std::istringstream in(usage);
    std::string word;
    while (in >> word)
    {
        Slot slot{"", "", false};
        bool closed = true;
        if (word.front() == '[')
        {
            slot.optional = true;
            word.erase(0, 1);
            closed = word.back() == ']';
            if (closed)
                word.pop_back();
        }
        if (std::isupper(static_cast<unsigned char>(word.front())) != 0)
            slot.value = word;
        else
        {
            slot.keyword = word;
            if (!slot.optional || !closed)
            {
                in >> slot.value;
                if (slot.value.back() == ']')
                    slot.value.pop_back();
            }
        }
        slots.push_back(slot);
    }
    return slots;
}

/// Kinds of values that have names, and whether their numbers or their words count.
struct NamedValue
{
    const char* value;
    Meaning meaning;
    const char* what;
};

constexpr NamedValue namedValues[] = {
    {"LEVEL", Meaning::impactLevel, "impact level"},
    {"PRIORITY", Meaning::priority, "priority"},
    {"SECURITY", Meaning::security, "security status"},
    {"CAUSE", Meaning::preemptionCause, "pre-emption cause"},
    {"CALLTYPE", Meaning::callType, "call type"},
    {"DIVERSION", Meaning::diversionReason, "diversion reason"},
    {"RESULT", Meaning::registrationResult, "registration result"},
    {"AGENTSTATE", Meaning::agentState, "agent state"},
    {"STATUS", Meaning::systemStatus, "system status"},
};

}  // namespace

/// The only call that a command can mean.
int Commands::onlyCall(const Row& row) const
{
    int only = 0;
    for (const auto& [id, call] : s.calls_)
        if (row.states.empty() ||
            std::find(row.states.begin(), row.states.end(), call.state) != row.states.end())
        {
            if (only != 0)
                throw Refusal(std::string(row.name) + ": several calls are possible, " +
                              std::to_string(only) + " and " + std::to_string(id) + ", say which");
            only = id;
        }
    if (only == 0)
        throw Refusal(std::string(row.name) + ": no call is in a state for it");
    return only;
}

std::string Commands::checked(const Slot& slot, const std::string& text, const Row& row) const
{
    const std::string what = std::string(row.name) + ": ";
    int number = 0;
    const auto among = [&](const std::vector<std::string>& names, const std::string& kind)
    {
        if (std::find(names.begin(), names.end(), text) != names.end())
            return text;
        std::string all;
        for (const std::string& name : names)
            all += (all.empty() ? ", one of " : ", ") + name;
        const std::string meant = didYouMean(text, names);
        throw Refusal(what + "no " + kind + " " + quoted(text) + (meant.empty() ? all : meant));
    };
    if (slot.value == "LINE")
    {
        std::vector<std::string> names;
        for (const Line& line : s.lines_)
            names.push_back(line.name);
        return among(names, "line");
    }
    if (slot.value == "CALL")
    {
        if (!numberOf(Meaning::none, text, number) || s.calls_.count(number) == 0)
            throw Refusal(what + "no call " + quoted(text));
        const Call& call = s.calls_.at(number);
        if (!row.states.empty() &&
            std::find(row.states.begin(), row.states.end(), call.state) == row.states.end())
            throw Refusal(what + "call " + text + " is " + nameOf(Meaning::callState, call.state));
        return std::to_string(number);
    }
    if (slot.value == "NUMBER" &&
        (text.empty() || text.size() > 64 || text.find_first_of("<>\"") != std::string::npos))
        throw Refusal(what + quoted(text) + " is no number to call");
    if (slot.value == "COUNT" &&
        (!numberOf(Meaning::none, text, number) || number < 0 || number > 1000000))
        throw Refusal(what + quoted(text) + " is no number from 0 to 1000000");
    if (slot.value == "ON")
        return among({"on", "off"}, "switch");
    if (slot.value == "METHOD" && text != "*")
    {
        std::vector<std::string> names;
        for (const Operation& operation : operations())
            if (*operation.method != '\0')
                names.push_back(operation.method);
        return among(names, "method");
    }
    for (const NamedValue& named : namedValues)
        if (slot.value == named.value)
        {
            // Numbers pass as they are: a real service may have more of them.
            if (slot.value != "AGENTSTATE" && slot.value != "STATUS" &&
                numberOf(Meaning::none, text, number))
                return text;
            std::vector<std::string> names;
            for (const NumberName& entry : namesOf(named.meaning))
                names.push_back(entry.name);
            return among(names, named.what);
        }
    return text;
}

void Commands::read(const Row& row, const std::string& command, const std::vector<Word>& words,
                    std::size_t first)
{
    const std::vector<Slot> slots = slotsOf(row.usage);
    const std::string usage = std::string(row.name) +
                              (*row.usage == '\0' ? " stands alone" : std::string(" ") + row.usage);
    const auto isKeyword = [&](const Word& word)
    {
        return !word.quoted &&
               std::any_of(slots.begin(), slots.end(),
                           [&](const Slot& slot)
                           { return !slot.keyword.empty() && slot.keyword == word.text; });
    };
    std::size_t at = first;
    // What is known by its place comes first.
    for (const Slot& slot : slots)
    {
        if (!slot.keyword.empty())
            continue;
        if (slot.value == "REST")
        {
            if (at >= words.size())
                throw Refusal(std::string(row.name) + ": REST is missing, usage: " + usage);
            a.rest = command.substr(words[at].begin);
            return;
        }
        const bool there = at < words.size() && !isKeyword(words[at]);
        if (there)
            a.values[slot.value] = checked(slot, words[at++].text, row);
        else if (slot.optional && slot.value == "CALL")
            a.values[slot.value] = std::to_string(onlyCall(row));
        else if (!slot.optional)
            throw Refusal(std::string(row.name) + ": " + slot.value +
                          " is missing, usage: " + usage);
    }
    while (at < words.size())
    {
        const std::string& word = words[at].text;
        std::vector<std::string> keywords;
        const Slot* slot = nullptr;
        for (const Slot& any : slots)
            if (!any.keyword.empty())
            {
                keywords.push_back(any.keyword);
                if (any.keyword == word)
                    slot = &any;
            }
        if (slot == nullptr)
        {
            const std::string meant = didYouMean(word, keywords);
            throw Refusal(std::string(row.name) + ": unknown word " + quoted(word) +
                          (meant.empty() ? ", usage: " + usage : meant));
        }
        ++at;
        if (slot->value.empty())
            a.values[slot->keyword] = "on";
        else if (at >= words.size())
            throw Refusal(std::string(row.name) + ": " + slot->value + " is missing after " + word);
        else
            a.values[slot->keyword] = checked(*slot, words[at++].text, row);
    }
    for (const Slot& slot : slots)
        if (!slot.optional && !slot.keyword.empty() && !a.has(slot.keyword))
            throw Refusal(std::string(row.name) + ": \"" + slot.keyword + " " + slot.value +
                          "\" is missing, usage: " + usage);
}

Client* Control::findClient(int id)
{
    const auto found = clients_.find(id);
    return found == clients_.end() ? nullptr : &found->second;
}

const Fault* Control::nextFault(const std::string& request)
{
    if (faults_.empty())
        return nullptr;
    const std::string method = parse(request).method;
    for (Fault& fault : faults_)
        if (fault.method == "*" || fault.method == method)
        {
            met_ = fault;
            if (--fault.times == 0)
                faults_.erase(faults_.begin() + (&fault - faults_.data()));
            return &met_;
        }
    return nullptr;
}

void Control::note(const std::string& complaint)
{
    log_.push_back(complaint);
    if (log_.size() > logLength)
        log_.pop_front();
}

ControlAnswer Control::run(Simulation& simulation, const std::string& command)
{
    try
    {
        const std::vector<Word> words = split(command);
        if (words.empty())
            throw Refusal("no command");
        std::vector<std::string> names;
        for (const Commands::Row& row : Commands::table())
        {
            const std::string name = row.name;
            names.push_back(name);
            const std::size_t blank = name.find(' ');
            const bool two = blank != std::string::npos;
            if (two ? words.size() > 1 && words[0].text == name.substr(0, blank) &&
                          words[1].text == name.substr(blank + 1)
                    : words[0].text == name)
            {
                Commands commands{simulation, *this};
                commands.read(row, command, words, two ? 2 : 1);
                return {true, (commands.*row.run)()};
            }
        }
        const std::string& word = words[0].text;
        const std::string meant = didYouMean(word, names);
        throw Refusal("unknown command " + quoted(word) +
                      (meant.empty() ? ", one of " + listed(names) : meant));
    }
    catch (const Refusal& refusal)
    {
        return {false, refusal.what()};
    }
}

}  // namespace kit::service

#include "kit/phone/Completion.h"

#include "kit/phone/Arguments.h"
#include "kit/phone/Commands.h"

#include <algorithm>
#include <sstream>

namespace kit::phone
{

namespace
{

bool beginsWith(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// The words before the one that is being typed, and that one.
struct Typed
{
    std::vector<std::string> before;
    std::string last;
    std::size_t begin = 0;
};

Typed split(const std::string& line)
{
    Typed typed;
    std::istringstream in(line);
    std::string word;
    while (in >> word)
        typed.before.push_back(word);
    typed.begin = line.size();
    const bool open = !line.empty() && line.back() != ' ' && line.back() != '\t';
    if (open && !typed.before.empty())
    {
        typed.last = typed.before.back();
        typed.before.pop_back();
        typed.begin -= typed.last.size();
    }
    if (!typed.before.empty() && typed.before[0] == "!")
        typed.before.erase(typed.before.begin());
    // "!hold" is "! hold".
    if (typed.before.empty() && beginsWith(typed.last, "!"))
    {
        typed.last.erase(0, 1);
        ++typed.begin;
    }
    else if (!typed.before.empty() && beginsWith(typed.before[0], "!"))
        typed.before[0].erase(0, 1);
    return typed;
}

class Finder
{
public:
    Finder(const CallBook& book, const Variables& variables,
           const std::vector<CommandUsage>& simulation)
        : book_(book), variables_(variables), simulation_(simulation)
    {
    }

    std::vector<std::string> find(const Typed& typed)
    {
        if (typed.before.empty())
            return commandWords();
        const std::string& command = typed.before[0];
        if (command == "help")
            return topics();
        if (command == "wire" || command == "echo" || command == "ladder")
            return {"on", "off"};
        if (command == "expect" || command == "event")
            return forEvent(typed, command == "expect");
        if (command == "sim")
            return forSimulation(typed);
        if (findCommand(command) != nullptr)
            return {};
        return forOperation(typed);
    }

private:
    static std::vector<std::string> topics()
    {
        std::vector<std::string> words = commandWords();
        words.push_back("operations");
        for (const std::string& name : eventNames())
            words.push_back(name);
        return words;
    }

    std::vector<std::string> valuesOf(const Field& field) const
    {
        std::vector<std::string> values = namesFor(field);
        const std::string name = field.argument;
        if (isLineArgument(field) || name == "lineId" || name == "lineURI")
            for (const std::string& line : book_.lines())
                values.push_back(line);
        if (isCallArgument(field))
        {
            for (const CallBook::Call& call : book_.calls())
                values.push_back(std::to_string(call.id));
            for (const auto& variable : variables_)
                values.push_back("$" + variable.first);
        }
        return values;
    }

    /// "name=" for the fields that are not there yet, or "name=value" for the one that is.
    std::vector<std::string> named(const Typed& typed, const std::vector<Field>& fields) const
    {
        std::vector<std::string> words;
        for (const Field& field : fields)
        {
            if (field.kind == Kind::subscriber)
                continue;
            const std::string begin = std::string(field.argument) + "=";
            const bool there =
                std::any_of(typed.before.begin(), typed.before.end(),
                            [&](const std::string& word) { return beginsWith(word, begin); });
            if (there)
                continue;
            if (beginsWith(typed.last, begin))
                for (const std::string& value : valuesOf(field))
                    words.push_back(begin + value);
            else
                words.push_back(begin);
        }
        return words;
    }

    std::vector<std::string> forEvent(const Typed& typed, bool expect) const
    {
        const std::size_t at = expect && typed.before.size() > 1 && typed.before[1] == "no" ? 2 : 1;
        if (typed.before.size() <= at)
        {
            std::vector<std::string> words = eventNames();
            if (expect && at == 1)
                words.push_back("no");
            return words;
        }
        const Event* const event = findEvent(typed.before[at]);
        if (event == nullptr)
            return {};
        std::vector<std::string> words = named(typed, event->arguments);
        if (expect && typed.before.back() != "within" && typed.before.back() != "as")
        {
            words.push_back("within");
            words.push_back("as");
        }
        return words;
    }

    std::vector<std::string> forOperation(const Typed& typed) const
    {
        const Operation* operation = findOperation(typed.before[0]);
        const ShortWord* shortWord = nullptr;
        if (operation == nullptr)
        {
            shortWord = findShortWord(typed.before[0], typed.before.size());
            if (shortWord == nullptr)
                return {};
            operation = findOperation(shortWord->operation);
        }
        std::vector<std::string> words;
        // The value that comes next when none is named.
        std::size_t place = typed.before.size() - 1;
        for (const Field& field : operation->arguments)
        {
            const bool next = shortWord != nullptr
                                  ? place < shortWord->positional.size() &&
                                        std::string(shortWord->positional[place]) == field.argument
                                  : &field == &operation->arguments[0] + place;
            if (next)
                for (const std::string& value : valuesOf(field))
                    words.push_back(value);
        }
        for (const std::string& word : named(typed, operation->arguments))
            words.push_back(word);
        return words;
    }

    std::vector<std::string> forSimulation(const Typed& typed) const
    {
        std::vector<std::string> words;
        for (const CommandUsage& command : simulation_)
        {
            const std::size_t blank = command.name.find(' ');
            const std::string first = command.name.substr(0, blank);
            if (typed.before.size() == 1)
                words.push_back(first);
            else if (typed.before[1] == first)
            {
                if (blank != std::string::npos && typed.before.size() == 2)
                    words.push_back(command.name.substr(blank + 1));
                for (const UsageSlot& slot : command.slots())
                {
                    words.push_back(slot.keyword);
                    const std::vector<std::string> values = simulationValues(slot.value);
                    words.insert(words.end(), values.begin(), values.end());
                }
            }
        }
        return words;
    }

    std::vector<std::string> simulationValues(const std::string& kind) const
    {
        std::vector<std::string> values = wordsFor(kind);
        if (kind == "LINE")
            values = book_.lines();
        if (kind == "CALL")
            for (const CallBook::Call& call : book_.calls())
                values.push_back(std::to_string(call.id));
        return values;
    }

    const CallBook& book_;
    const Variables& variables_;
    const std::vector<CommandUsage>& simulation_;
};

}  // namespace

std::string Completions::commonPart() const
{
    std::string common = words.empty() ? "" : words.front();
    for (const std::string& word : words)
    {
        std::size_t same = 0;
        while (same < common.size() && same < word.size() && common[same] == word[same])
            ++same;
        common.erase(same);
    }
    return common;
}

Completions complete(const std::string& line, const CallBook& book, const Variables& variables,
                     const std::vector<CommandUsage>& simulation)
{
    const Typed typed = split(line);
    Completions completions;
    completions.begin = typed.begin;
    for (const std::string& word : Finder(book, variables, simulation).find(typed))
        if (!word.empty() && beginsWith(word, typed.last) &&
            std::find(completions.words.begin(), completions.words.end(), word) ==
                completions.words.end())
            completions.words.push_back(word);
    return completions;
}

}  // namespace kit::phone

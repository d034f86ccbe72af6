#include "kit/phone/Completion.h"

#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Commands.h"
#include "kit/phone/Expectation.h"
#include "kit/protocol/Columns.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace kit::phone
{

namespace
{

bool beginsWith(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// A line up to the cursor.
struct Typed
{
    std::string command;       ///< "" while it is being typed itself
    std::vector<Word> before;  ///< the words between it and the last
    std::string last;          ///< the word that is being typed
    std::size_t begin = 0;     ///< of that
};

/// False where nothing can be completed: in quotes, in a comment, behind a mistake.
bool split(const std::string& line, Typed& typed)
{
    // The cursor stands for one more character of the word that is being typed.
    const Statement statement = parseStatement(line + "_");
    typed.before = splitWords(statement.rest, statement.restColumn);
    Word last = statement.command;
    if (!statement.rest.empty() && !typed.before.empty())
    {
        typed.command = statement.command.text;
        last = typed.before.back();
        typed.before.pop_back();
    }
    typed.begin = last.column - 1;
    typed.last = line.substr(typed.begin);
    return last.whole() == typed.last + "_";
}

std::size_t positionals(const std::vector<Word>& words)
{
    return static_cast<std::size_t>(std::count_if(
        words.begin(), words.end(), [](const Word& word) { return word.name.empty(); }));
}

/// Paths that begin so; of a folder with the "/" behind it.
std::vector<std::string> filesAt(const std::string& typed)
{
    namespace fs = std::filesystem;
    const std::string folder = typed.substr(0, typed.rfind('/') + 1);
    const bool hidden = typed.compare(folder.size(), 1, ".") == 0;
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator at(folder.empty() ? "." : folder, error), end; !error && at != end;
         at.increment(error))
    {
        const std::string name = at->path().filename().string();
        if ((name[0] == '.') == hidden && quote(name) == name)
            names.push_back(folder + name + (at->is_directory(error) ? "/" : ""));
    }
    std::sort(names.begin(), names.end());
    return names;
}

class Finder
{
public:
    Finder(const CallBook& book, const Variables& variables,
           const std::vector<CommandUsage>& simulation)
        : book_(book), variables_(variables), simulation_(simulation)
    {
    }

    std::vector<std::string> find(const Typed& typed) const
    {
        if (typed.command.empty())
            return commandWords();
        if (typed.command == "expect" || typed.command == "event")
            return forEvent(typed, typed.command == "expect");
        if (typed.command == "sim")
            return forSimulation(typed);
        const Command* const command = findCommand(typed.command);
        if (command == nullptr)
            return forOperation(typed);
        if (!typed.before.empty())
            return {};
        return typed.command == "help" ? topics() : alternatives(command->usage, typed.last);
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

    /// What a usage like "FILE|off" offers.
    static std::vector<std::string> alternatives(const std::string& usage, const std::string& typed)
    {
        std::vector<std::string> words;
        for (const Word& word : splitWords(usage, 1, "|"))
            if (word.text == "FILE")
                words = filesAt(typed);
            else if (word.name.empty() && std::islower(word.text[0]) != 0)
                words.push_back(word.text);
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
            const bool there =
                std::any_of(typed.before.begin(), typed.before.end(),
                            [&](const Word& word) { return word.name == field.argument; });
            if (there || field.kind == Kind::subscriber)
                continue;
            const std::string begin = std::string(field.argument) + "=";
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
        const std::size_t at = expect && !typed.before.empty() && typed.before[0].text == "no";
        if (typed.before.size() <= at)
        {
            std::vector<std::string> words = eventNames();
            if (expect && at == 0)
                words.push_back("no");
            return words;
        }
        const Event* const event = findEvent(typed.before[at].text);
        if (event == nullptr)
            return {};
        std::vector<std::string> words = named(typed, event->arguments);
        const std::string& last = typed.before.back().text;
        if (expect && last != "within" && last != "as")
            words.insert(words.end(), {"within", "as"});
        return words;
    }

    std::vector<std::string> forOperation(const Typed& typed) const
    {
        // The value that comes next when none is named.
        const std::size_t place = positionals(typed.before);
        const Operation* operation = findOperation(typed.command);
        const ShortWord* const shortWord = findShortWord(typed.command, place + 1);
        std::string next;
        if (operation != nullptr)
            next = place < operation->arguments.size() ? operation->arguments[place].argument : "";
        else if (shortWord != nullptr)
        {
            operation = findOperation(shortWord->operation);
            next = place < shortWord->positional.size() ? shortWord->positional[place] : "";
        }
        else
            return {};
        std::vector<std::string> words;
        for (const Field& field : operation->arguments)
            if (next == field.argument)
                words = valuesOf(field);
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
            if (typed.before.empty())
                words.push_back(first);
            else if (typed.before[0].text == first)
            {
                if (blank != std::string::npos && typed.before.size() == 1)
                    words.push_back(command.name.substr(blank + 1));
                for (const UsageSlot& slot : command.slots())
                {
                    words.push_back(slot.keyword);
                    const std::vector<std::string> values = valuesOf(slot.value, typed.last);
                    words.insert(words.end(), values.begin(), values.end());
                }
            }
        }
        return words;
    }

    std::vector<std::string> valuesOf(const std::string& kind, const std::string& typed) const
    {
        std::vector<std::string> values = wordsFor(kind);
        if (kind == "FILE")
            values = filesAt(typed);
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
    Completions completions;
    Typed typed;
    try
    {
        if (!split(line, typed))
            return completions;
    }
    catch (const Mistake&)
    {
        return completions;
    }
    completions.begin = typed.begin;
    for (const std::string& word : Finder(book, variables, simulation).find(typed))
        if (!word.empty() && beginsWith(word, typed.last) && !contains(completions.words, word))
            completions.words.push_back(word);
    return completions;
}

}  // namespace kit::phone

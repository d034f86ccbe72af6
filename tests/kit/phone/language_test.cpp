// What is typed: words, times, values, arguments, short words, completion.

#include "kit/language/Durations.h"
#include "kit/language/Switches.h"
#include "kit/language/Wording.h"
#include "kit/language/Words.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Commands.h"
#include "kit/phone/Completion.h"
#include "tests/kit/Transcript.h"
#include "tests/support/Folder.h"

#include <gtest/gtest.h>
#include <map>

namespace kit::phone
{

namespace
{

/// "[text]" for each word, "name=[text]" for a named one, "'" before what was quoted.
std::string inWords(const std::vector<Word>& words)
{
    std::string text;
    for (const Word& word : words)
        text += (word.name.empty() ? "" : word.name + "=") + (word.quoted ? "'" : "") + "[" +
                printable(word.text) + "]";
    return text;
}

/// The text that comes of it, or what a Mistake says, "COLUMN: text".
template <typename Action>
std::string outcomeOf(Action action)
{
    try
    {
        return action();
    }
    catch (const Mistake& mistake)
    {
        return std::to_string(mistake.column()) + ": " + mistake.what();
    }
}

Word wordAt(std::size_t column, const std::string& text)
{
    Word word;
    word.text = text;
    word.column = column;
    return word;
}

/// "call NUMBER LINE STATE [FAR END]" puts a call into the book.
bool tookCall(const std::string& line, CallBook& book)
{
    if (line.rfind("call ", 0) != 0)
        return false;
    std::vector<Word> words = splitWords(line);
    words.resize(5);
    ReceivedEvent event;
    event.event = findEvent("CallStateChangeEvent");
    event.values = {
        words[2].text, words[1].text, readValue(event.event->arguments[2], words[3]), "", "",
        words[4].text};
    event.values.resize(event.event->arguments.size());
    book.take(event);
    return true;
}

/// Values that an operation or a short word gets, "name=value" each.
std::string bound(const std::string& line, const CallBook& book)
{
    const Statement statement = parseStatement(line);
    std::vector<Word> words = splitWords(statement.rest, statement.restColumn);
    const Operation& operation = resolve(statement.command, words);
    const Binding binding = bindArguments(operation, words, book);
    std::string text = operation.name;
    for (const auto& [name, value] : binding.values)
        text += " " + name + "=" + value;
    for (const std::string& name : binding.nulls)
        text += " null:" + name;
    return text;
}

std::string offered(const std::string& line, const CallBook& book)
{
    static const std::vector<CommandUsage> simulation =
        parseCommandHelp("call LINE from NUMBER [video]: somebody calls a line\n"
                         "hang up [CALL]: the far end hangs up\n"
                         "record [CALL] [ON]: a call is recorded\n"
                         "robots FILE: those of a text file can be called\n"
                         "show WHAT: one of the views");
    const Completions found =
        complete(line.substr(0, line.size() - 1), book, {{"first", "7"}}, simulation);
    std::string text = std::to_string(found.begin) + ":";
    for (const std::string& word : found.words)
        text += " " + word;
    return text;
}

TEST(Language, IsReadAsItsTranscriptSays)
{
    CallBook book;
    const std::map<std::string, test::Typing> parts = {
        {"words", [](const std::string& text) { return inWords(splitWords(text)); }},
        {"words with captured values",
         [](const std::string& text)
         {
             std::vector<Word> words = splitWords(text);
             fillIn(words, {{"call", "12"}});
             return inWords(words);
         }},
        {"a text with captured values",
         [](const std::string& text) {
             return filledIn(text, {{"call", "12"}});
         }},
        {"times", [](const std::string& text)
         { return std::to_string(parseDuration(wordAt(4, text)).count()); }},
        {"switches",
         [](const std::string& text) { return parseSwitch(wordAt(4, text)) ? "on" : "off"; }},
        {"completions", [&](const std::string& line) { return offered(line, book); }},
    };
    test::replay(
        "language",
        [&](const std::string& part) -> test::Typing
        {
            book = CallBook();
            if (part.find("without lines") == std::string::npos)
                book.setLines({"1001", "1002"});
            const test::Typing type = part.rfind("arguments", 0) != 0 ? parts.at(part)
                                                                      : [&](const std::string& line)
            { return bound(line, book); };
            return [&book, type](const std::string& line)
            { return tookCall(line, book) ? "" : outcomeOf([&] { return type(line); }) + "\n"; };
        });
}

TEST(Language, CompletesNamesOfFiles)
{
    const Folder folder;
    for (const char* name : {"tour", "tower", "other", ".hidden", "two words"})
        std::ofstream(folder / name) << "x";
    std::filesystem::create_directory(folder / "to");
    const auto names = [&](const std::string& command, const std::string& typed)
    {
        std::string words = offered(command + folder / typed + "|", {});
        for (std::size_t at = 0; (at = words.find(folder / "")) != std::string::npos;)
            words.erase(at, (folder / "").size());
        return words;
    };
    EXPECT_EQ(names("run ", "to"), "4: to/ tour tower");
    EXPECT_EQ(names("record ", "tou"), "7: tour");
    EXPECT_EQ(names("sim robots ", "o"), "11: other");
    EXPECT_EQ(names("run ", "."), "4: .hidden");
    EXPECT_EQ(names("run ", "tw"), "4:") << "it needs quotes";
    EXPECT_EQ(names("run ", "nowhere/"), "4:");
    EXPECT_EQ(offered("record of|", {}), "7: off");
}

TEST(Language, KnowsBytesThatAreNoText)
{
    EXPECT_EQ(inWords(splitWords(" \t ")), "");
    EXPECT_EQ(inWords(splitWords("a b\tc")), "[a][b][c]");
    EXPECT_EQ(splitWords("\\x41\\x00z")[0].text, std::string("A\0z", 3));
    EXPECT_EQ(splitWords("ab  cd", 10)[1].column, 14U);
    const auto mistake = [](const std::string& line)
    { return outcomeOf([&] { return parseStatement(line).rest; }); };
    EXPECT_EQ(mistake(std::string("hold\0", 5)),
              "5: the byte 0x00 is no text; write it as \\x00 in a word");
    EXPECT_EQ(mistake("a\x1b[2J"), "2: the byte 0x1b is no text; write it as \\x1b in a word");
    EXPECT_EQ(mistake(" ! # x"), "1: \"!\" stands before a command that must fail; there is none");
}

TEST(Language, TakesALineApart)
{
    const Statement statement = parseStatement("  !hold  12 # x \r");
    EXPECT_TRUE(statement.mustFail);
    EXPECT_EQ(statement.command.text, "hold");
    EXPECT_EQ(statement.command.column, 4U);
    EXPECT_EQ(statement.rest, "12 # x");
    EXPECT_EQ(statement.restColumn, 10U);
    EXPECT_TRUE(parseStatement("   ").empty());
    EXPECT_TRUE(parseStatement(" # only a comment").empty());
    EXPECT_FALSE(parseStatement("! x").empty());
}

TEST(Language, ShowsAValueAsItHasToBeTyped)
{
    for (const std::string& text :
         {std::string("plain"), std::string("two words"), std::string("a=b"),
          std::string("\"q\" \\ '"), std::string("$x"), std::string("#"), std::string(),
          std::string("\x01\n\t\x7f\0z", 6), std::string("\xff\xfe"),
          std::string("gr\xc3\xbc\xc3\x9f")})
    {
        const std::vector<Word> words = splitWords(shown(text));
        ASSERT_EQ(words.size(), 1U) << shown(text);
        EXPECT_EQ(words[0].text, text);
        EXPECT_EQ(words[0].name, "");
    }
    EXPECT_EQ(printable("\xe4 \xc3\xa4 \xc2\x9b \x1b[2J"), "\\xe4 \xc3\xa4 \\xc2\\x9b \\x1b[2J");
    EXPECT_EQ(printable("abcdef", 3), "abc... (6 bytes)");
}

TEST(Language, ReadsTimesAndSwitches)
{
    const auto mistake = [](const std::string& text)
    { return outcomeOf([&] { return std::to_string(parseDuration(wordAt(0, text)).count()); }); };
    EXPECT_EQ(mistake(""), "0: \"\" is no time; write it as 250ms, 1.5s, 2min or 1h");
    EXPECT_EQ(mistake(std::string(400, '9') + "s").rfind("0: 999", 0), 0U);
    EXPECT_EQ(outcomeOf([] { return parseSwitch(wordAt(4, "")) ? "on" : "off"; }),
              "4: \"\" is no switch; on and off are");
    EXPECT_EQ(durationText(std::chrono::milliseconds(1250)), "1.25 s");
    EXPECT_EQ(durationText(std::chrono::milliseconds(30)), "30 ms");
    EXPECT_EQ(durationText(std::chrono::seconds(10)), "10 s");
}

TEST(Language, PutsWordsTogether)
{
    EXPECT_EQ(listed({}), "");
    EXPECT_EQ(listed({"a"}, "or"), "a");
    EXPECT_EQ(listed({"a", "b", "c"}), "a, b, c");
    EXPECT_EQ(listed({"a", "b", "c"}, "or"), "a, b or c");
    EXPECT_EQ(counted(1, "call") + ", " + counted(0, "line"), "1 call, 0 lines");
    EXPECT_EQ(didYouMean("hodl", {"dial", "hold"}), ", did you mean hold?");
    EXPECT_EQ(didYouMean("Lin", {"Line"}, "", "<", ">"), ", did you mean <Line>?");
    EXPECT_EQ(didYouMean("zzz", {"hold"}, "; nothing near"), "; nothing near");
    EXPECT_EQ(quoted("a\x1b" + std::string(80, 'b')),
              "\"a\\x1b" + std::string(62, 'b') + "... (82 bytes)\"");
}

TEST(Language, GivesTheRestAsItStands)
{
    Words words("a 'b c'  <x> # \"it's\"", 5);
    Word word;
    ASSERT_TRUE(words.next(word));
    ASSERT_TRUE(words.next(word));
    EXPECT_EQ(word.text, "b c");
    EXPECT_EQ(words.rest(), "<x> # \"it's\"");
    EXPECT_FALSE(words.next(word));
}

TEST(Arguments, EveryShortWordIsAnOperationWithItsArguments)
{
    for (const ShortWord& shortWord : shortWords())
    {
        const Operation* const operation = findOperation(shortWord.operation);
        ASSERT_NE(operation, nullptr) << shortWord.word;
        EXPECT_EQ(findOperation(shortWord.word), nullptr) << shortWord.word;
        std::vector<std::string> names;
        for (const Field& argument : operation->arguments)
            names.push_back(argument.argument);
        std::vector<std::string> used(shortWord.positional.begin(), shortWord.positional.end());
        for (const auto& preset : shortWord.presets)
            used.push_back(preset.first);
        for (const std::string& name : used)
            EXPECT_NE(std::find(names.begin(), names.end(), name), names.end())
                << shortWord.word << " " << name;
    }
}

TEST(Completion, TypesWhatAllHaveInCommon)
{
    const CallBook book;
    EXPECT_EQ(complete("expect CallF", book, {}, {}).commonPart(), "CallForwardedEvent");
    EXPECT_EQ(complete("activateC", book, {}, {}).commonPart(), "activateCallback");
}

}  // namespace

}  // namespace kit::phone

// What is typed: words, times, values, arguments, short words, completion.

#include "kit/language/Durations.h"
#include "kit/language/Switches.h"
#include "kit/language/Wording.h"
#include "kit/language/Words.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Completion.h"

#include <gtest/gtest.h>

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
                word.text + "]";
    return text;
}

/// What a Mistake says, "COLUMN: text"; "" when there is none.
template <typename Action>
std::string mistakeOf(Action action)
{
    try
    {
        action();
    }
    catch (const Mistake& mistake)
    {
        return std::to_string(mistake.column()) + ": " + mistake.what();
    }
    return "";
}

CallBook::Call call(int id, const std::string& line, int state, const std::string& farEnd)
{
    CallBook::Call made;
    made.id = id;
    made.line = line;
    made.state = state;
    made.farEnd = farEnd;
    return made;
}

/// A phone with the lines 1001 and 1002 and these calls.
CallBook bookWith(const std::vector<CallBook::Call>& calls)
{
    CallBook book;
    book.setLines({"1001", "1002"});
    for (const CallBook::Call& made : calls)
    {
        ReceivedEvent event;
        event.event = findEvent("CallStateChangeEvent");
        event.values.resize(event.event->arguments.size());
        event.values[0] = made.line;
        event.values[1] = std::to_string(made.id);
        event.values[2] = std::to_string(made.state);
        event.values[5] = made.farEnd;
        book.take(event);
    }
    return book;
}

/// Values that an operation or a short word gets, "name=value" each.
std::string bound(const std::string& line, const CallBook& book)
{
    const Statement statement = parseStatement(line);
    std::vector<Word> words = splitWords(statement.rest, statement.restColumn);
    const Operation* operation = findOperation(statement.command.text);
    if (operation == nullptr)
    {
        const ShortWord* const shortWord = findShortWord(statement.command.text, words.size());
        words = expand(*shortWord, words);
        operation = findOperation(shortWord->operation);
    }
    const Binding binding = bindArguments(*operation, words, book);
    std::string text = operation->name;
    for (const auto& [name, value] : binding.values)
        text += " " + name + "=" + value;
    for (const std::string& name : binding.nulls)
        text += " null:" + name;
    return text;
}

TEST(Language, SplitsALineIntoWords)
{
    const struct
    {
        const char* text;
        const char* words;
    } rows[] = {
        {"", ""},
        {" \t ", ""},
        {"a b\tc", "[a][b][c]"},
        {"line=1001 callId=", "line=[1001]callId=[]"},
        {"a=b=c", "a=[b=c]"},
        {"sip:2001@host;user=phone", "[sip:2001@host;user=phone]"},
        {"1=2", "[1=2]"},
        {"=x", "[=x]"},
        {"\"a=b\" c\\=d", "'[a=b]'[c=d]"},
        {"name=\"a b\"c", "name='[a bc]"},
        {"'a\\n\"' \"b\\n'\\\"\\\\\"", "'[a\\n\"]'[b\n'\"\\]"},
        {"\"\" ''", "'[]'[]"},
        {"a # b c", "[a]"},
        {"a#b", "[a#b]"},
        {"\"#\" x", "'[#][x]"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(inWords(splitWords(row.text)), row.words) << row.text;
    EXPECT_EQ(splitWords("\\x41\\x00z")[0].text, std::string("A\0z", 3));
    EXPECT_EQ(splitWords("ab  cd", 10)[1].column, 14U);
}

TEST(Language, SaysWhereAWordIsWrong)
{
    EXPECT_EQ(mistakeOf([] { splitWords("a \"b c"); }), "3: the quote \" is not closed");
    EXPECT_EQ(mistakeOf([] { splitWords("it's"); }), "3: the quote ' is not closed");
    EXPECT_EQ(mistakeOf([] { splitWords("ab\\"); }), "3: nothing stands behind the last \\");
    EXPECT_EQ(mistakeOf([] { splitWords("\\x4"); }),
              "1: \\x must be followed by two hexadecimal digits");
    EXPECT_EQ(mistakeOf([] { parseStatement(std::string("hold\0", 5)); }),
              "5: the byte 0x00 is no text; write it as \\x00 in a word");
    EXPECT_EQ(mistakeOf([] { parseStatement("a\x1b[2J"); }),
              "2: the byte 0x1b is no text; write it as \\x1b in a word");
    EXPECT_EQ(mistakeOf([] { parseStatement(" ! # x"); }),
              "1: \"!\" stands before a command that must fail; there is none");
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

TEST(Language, ReadsTimes)
{
    const auto time = [](const char* text)
    {
        Word word;
        word.text = text;
        return parseDuration(word).count();
    };
    EXPECT_EQ(time("250ms"), 250);
    EXPECT_EQ(time("1.5s"), 1500);
    EXPECT_EQ(time("0s"), 0);
    EXPECT_EQ(time("2min"), 120000);
    EXPECT_EQ(time("2h"), 7200000);
    EXPECT_EQ(time("24h"), 86400000);
    for (const char* text :
         {"", "1", "s", ".", ".s", "1 s", "-1s", "1d", "nans", "1e3s", "0x1s", "1..2s"})
        EXPECT_EQ(mistakeOf([&] { time(text); }),
                  "0: " + shown(text) + " is no time; write it as 250ms, 1.5s, 2min or 1h");
    EXPECT_EQ(mistakeOf([&] { time("1441min"); }), "0: 1441min is longer than a day");
    EXPECT_NE(mistakeOf([&] { time((std::string(400, '9') + "s").c_str()); }), "");
    EXPECT_EQ(durationText(std::chrono::milliseconds(1250)), "1.25 s");
    EXPECT_EQ(durationText(std::chrono::milliseconds(30)), "30 ms");
    EXPECT_EQ(durationText(std::chrono::seconds(10)), "10 s");
}

TEST(Language, ReadsSwitches)
{
    const auto isOn = [](const char* text)
    {
        Word word;
        word.text = text;
        word.column = 4;
        return parseSwitch(word);
    };
    for (const char* text : {"on", "true", "yes", "1", "ON", "True"})
        EXPECT_TRUE(isOn(text)) << text;
    for (const char* text : {"off", "false", "no", "0"})
        EXPECT_FALSE(isOn(text)) << text;
    for (const char* text : {"", "2", "onn"})
        EXPECT_EQ(mistakeOf([&] { isOn(text); }),
                  "4: " + quoted(text) + " is no switch; on and off are");
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

TEST(Language, PutsCapturedValuesIn)
{
    std::vector<Word> words = splitWords("$call callId=$call \"$call\" $ a$call");
    fillIn(words, {{"call", "12"}});
    EXPECT_EQ(inWords(words), "[12]callId=[12]'[$call][$][a$call]");
    words = splitWords("x $cal");
    EXPECT_EQ(mistakeOf(
                  [&] {
                      fillIn(words, {{"call", "12"}});
                  }),
              "3: $cal has not been captured (expect ... as cal); known: $call");
}

TEST(Arguments, FollowFromWordsCallsAndDefaults)
{
    using namespace numbers;
    const CallBook book =
        bookWith({call(7, "1002", callConnected, "2001"), call(8, "1001", callHeld, "2002")});
    const struct
    {
        const char* line;
        const char* values;
    } rows[] = {
        {"holdCall", "holdCall line=1002 callId=7 holdCallReason=1 manual=1"},
        {"holdCall 1001 12 conference off",
         "holdCall line=1001 callId=12 holdCallReason=5 manual=0"},
        {"holdCall 8", "holdCall line=1001 callId=8 holdCallReason=1 manual=1"},
        {"holdCall consultation", "holdCall line=1002 callId=7 holdCallReason=2 manual=1"},
        {"holdCall manual=no CallID=99 HoldCallReason=77 Line=x",
         "holdCall line=x callId=99 holdCallReason=77 manual=0"},
        {"retrieveCall", "retrieveCall line=1001 callId=8"},
        {"attendedTransferCall", "attendedTransferCall line=1001 activeCall=7 heldCall=8"},
        {"outgoingCallMake 2001",
         "outgoingCallMake line=1001 callId=0 destination=2001 dssDirectCall=0 bridgeCall=0 "
         "callCompletionCall=0"},
        {"outgoingCallMake 1002",
         "outgoingCallMake line=1001 callId=0 destination=1002 dssDirectCall=0 bridgeCall=0 "
         "callCompletionCall=0"},
        {"outgoingCallMake 1002 5 2001 on off yes",
         "outgoingCallMake line=1002 callId=5 destination=2001 dssDirectCall=1 bridgeCall=0 "
         "callCompletionCall=1"},
        {"deflectCall 3 destination=null", "deflectCall line=1001 callId=3 destination= "
                                           "null:destination"},
        {"deflectCall 3 \"null\"", "deflectCall line=1001 callId=3 destination=null"},
        {"callClear cause=busy", "callClear line=1002 callId=7 cause=3"},
        {"setDoNotDisturb 1002 on", "setDoNotDisturb line=1002 doNotDisturbOn=1"},
        {"setDoNotDisturb off", "setDoNotDisturb line=1001 doNotDisturbOn=0"},
        {"setServiceState sfiServiceOutOfService", "setServiceState state=sfiServiceOutOfService"},
        {"setServiceState 2", "setServiceState state=sfiServiceDoNotDisturb"},
        {"setServiceState 9", "setServiceState state=9"},
        {"setIsInServiceInitiatedState on",
         "setIsInServiceInitiatedState line=1001 isInServiceInitiatedState=TRUE"},
        {"setForwardingConfiguration busy on 2001",
         "setForwardingConfiguration line=1001 fwType=2 status=1 uri=2001 cfnrRingCount=3 "
         "forceTKVSUpdate=0"},
        {"subscribe", "subscribe"},
        {"dial 2001",
         "outgoingCallMake line=1001 callId=0 destination=2001 dssDirectCall=0 bridgeCall=0 "
         "callCompletionCall=0"},
        {"hangup", "callClear line=1002 callId=7 cause=48"},
        {"hangup 8", "callClear line=1001 callId=8 cause=48"},
        {"transfer", "attendedTransferCall line=1001 activeCall=7 heldCall=8"},
        {"transfer 2003", "blindTransferCall line=1002 callId=7 destination=2003"},
        {"conf", "conferenceCall line=1001 activeCall=7 heldCall=8 feature=5"},
        {"dnd on", "setDoNotDisturb line=1001 doNotDisturbOn=1"},
        {"dnd", "getDoNotDisturb deviceId=1001"},
        {"forward busy", "getForwardingConfiguration fwType=2"},
        {"forward busy 2001",
         "setForwardingConfiguration line=1001 fwType=2 status=1 uri=2001 cfnrRingCount=3 "
         "forceTKVSUpdate=0"},
        {"unforward busy",
         "setForwardingConfiguration line=1001 fwType=2 status=0 uri= cfnrRingCount=3 "
         "forceTKVSUpdate=0"},
    };
    for (const auto& row : rows)
    {
        std::string values;
        EXPECT_EQ(mistakeOf([&] { values = bound(row.line, book); }), "") << row.line;
        EXPECT_EQ(values, row.values) << row.line;
    }
}

TEST(Arguments, MistakesSayWhatIsWrongAndWhere)
{
    using namespace numbers;
    const CallBook book =
        bookWith({call(7, "1001", callConnected, "2001"), call(8, "1001", callConferenced, ""),
                  call(9, "1002", callFailed, "2002")});
    const struct
    {
        const char* line;
        const char* mistake;
    } rows[] = {
        {"answerCall", "0: answerCall needs callId: no call rings; there is 7 (connected, 2001), 8 "
                       "(conferenced), 9 (failed, 2002)"},
        {"holdCall", "0: holdCall needs callId: more than one call fits: 7 (connected, 2001), 8 "
                     "(conferenced)"},
        {"answerCall 1002 7 x", "19: there is nothing left for x (answerCall [line] [callId])"},
        {"holdCall callID=3 callId=4", "10: holdCall has no argument callID, did you mean callId?"},
        {"holdCall callId=3 CallID=4", "19: CallID is given twice"},
        {"deflectCall 3", "0: deflectCall needs callId: no call is offered or rings"},
        {"deflectCall callId=3", "0: deflectCall needs destination: number or URI of the far end"},
        {"setDoNotDisturb perhaps", "17: doNotDisturbOn is a flag, true or false, not \"perhaps\""},
        {"refuseCall 7 refuseCallReason=bussy", "14: refuseCallReason is a number or one of its "
                                                "names, not \"bussy\"; did you mean busy?"},
        {"setServiceState sfiServiceInServise",
         "17: state is one of sfiServiceInService, sfiServiceOutOfService, "
         "sfiServiceDoNotDisturb, not sfiServiceInServise, did you mean sfiServiceInService?"},
        {"subscribe subscriber=me", "11: subscribe has no argument subscriber"},
        {"dial 2001 now", "11: dial takes no more than destination; what is now?"},
        {"swap 1", "6: swap takes no words; what is 1?"},
    };
    for (const auto& row : rows)
    {
        const std::string said = mistakeOf([&] { bound(row.line, book); });
        EXPECT_EQ(said.substr(0, std::string(row.mistake).size()), row.mistake) << row.line;
    }
    CallBook empty;
    EXPECT_EQ(mistakeOf([&] { bound("alternateCalls", empty); }),
              "0: alternateCalls needs line: the phone has no lines");
    EXPECT_EQ(mistakeOf([&] { bound("hold", empty); }),
              "0: holdCall needs callId: no call is connected; there is no call");
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

TEST(Completion, OffersWhatCanStandThere)
{
    const CallBook book = bookWith({call(7, "1002", numbers::callConnected, "2001")});
    const Variables variables = {{"first", "7"}};
    const std::vector<CommandUsage> simulation =
        parseCommandHelp("call LINE from NUMBER [video]: somebody calls a line\n"
                         "hang up [CALL]: the far end hangs up\n"
                         "record [CALL] [ON]: a call is recorded\n"
                         "show WHAT: one of the views");
    const struct
    {
        const char* line;
        const char* words;
        std::size_t begin;
    } rows[] = {
        {"holdC", "holdCall", 0},
        {"! holdC", "holdCall", 2},
        {"!holdC", "holdCall", 1},
        {"nothing", "", 0},
        {"setD", "setDoNotDisturb", 0},
        {"holdCall ", "1001 1002 line= callId= holdCallReason= manual=", 9},
        {"holdCall ca", "callId=", 9},
        {"holdCall callId=", "callId=7 callId=$first", 9},
        {"holdCall callId=7 c", "", 18},
        {"holdCall manual=t", "manual=true", 9},
        {"dnd o", "", 4},
        {"dnd ", "true false line= doNotDisturbOn=", 4},
        {"refuse b", "busy", 7},
        {"expect CallHeld", "CallHeldEvent", 7},
        {"expect no CallHeld", "CallHeldEvent", 10},
        {"expect CallHeldEvent ", "lineId= callId= within as", 21},
        {"expect CallHeldEvent lineId=", "lineId=1001 lineId=1002", 21},
        {"expect DoNotDisturbEvent doNotDisturbOn=f", "doNotDisturbOn=false", 25},
        {"event CallHeldEvent ", "lineId= callId=", 20},
        {"help CallHeld", "CallHeldEvent", 5},
        {"wire ", "on off", 5},
        {"sim ", "call hang record show", 4},
        {"sim call 1", "1001 1002", 9},
        {"sim call f", "from", 9},
        {"sim hang ", "up 7", 9},
        {"sim record 7 o", "on off", 13},
        {"sim show la", "lamps", 9},
        {"lines ", "", 6},
    };
    for (const auto& row : rows)
    {
        const Completions found = complete(row.line, book, variables, simulation);
        std::string words;
        for (const std::string& word : found.words)
            words += (words.empty() ? "" : " ") + word;
        EXPECT_EQ(words, row.words) << row.line;
        EXPECT_EQ(found.begin, row.begin) << row.line;
    }
    EXPECT_EQ(complete("expect CallF", book, {}, {}).commonPart(), "CallForwardedEvent");
    EXPECT_EQ(complete("activateC", book, {}, {}).commonPart(), "activateCallback");
}

}  // namespace

}  // namespace kit::phone

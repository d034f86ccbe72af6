#include "kit/phone/Arguments.h"

#include "kit/language/Wording.h"
#include "kit/protocol/Columns.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace kit::phone
{

namespace
{

struct Default
{
    const char* operation;
    const char* argument;
    const char* value;
};

// What is not listed here has to be given.
const Default defaults[] = {
    {"deactivate", "allowAutoActivate", "false"},
    {"callClear", "cause", "normalClearing"},
    {"outgoingCallMake", "callId", "0"},
    {"outgoingCallMake", "dssDirectCall", "false"},
    {"outgoingCallMake", "bridgeCall", "false"},
    {"outgoingCallMake", "callCompletionCall", "false"},
    {"acceptCall", "autoAnswer", "false"},
    {"holdCall", "holdCallReason", "hold"},
    {"holdCall", "manual", "true"},
    {"cancelCallbacks", "callId", "0"},
    {"cancelCallbacks", "uri", ""},
    {"cancelCallbacks", "cancelCallBackType", "all"},
    {"cancelCallbacks", "displayOutcomeCallUI", "false"},
    {"refuseCall", "refuseCallReason", "decline"},
    {"directedPickupCall", "callId", "0"},
    {"directedPickupCall", "blfPickup", "false"},
    {"groupPickupCall", "callId", "0"},
    {"systemStatus", "systemStatusInfo", ""},
    {"conferenceCall", "feature", "conference"},
    {"RemoveConfParticipant", "conferenceMemberId", ""},
    {"makeSecurityChangeReinvite", "forceFlag", "false"},
    {"setForwardingConfiguration", "uri", ""},
    {"setForwardingConfiguration", "cfnrRingCount", "3"},
    {"setForwardingConfiguration", "forceTKVSUpdate", "false"},
    {"csCommunicationsService", "name", ""},
};

bool isNumberWord(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

bool isNull(const Field& field, const Word& word)
{
    return field.kind == Kind::cString && !word.quoted && word.text == "null";
}

std::vector<std::string> argumentNames(const Operation& operation)
{
    std::vector<std::string> names;
    for (const Field& argument : operation.arguments)
        if (argument.kind != Kind::subscriber)
            names.push_back(argument.argument);
    return names;
}

/// Puts each word to its argument; what is not given stays null.
std::vector<const Word*> distribute(const Operation& operation, const std::vector<Word>& words,
                                    const CallBook& book)
{
    const std::vector<Field>& arguments = operation.arguments;
    std::vector<const Word*> given(arguments.size(), nullptr);
    std::vector<const Word*> positional;
    for (const Word& word : words)
    {
        if (word.name.empty())
        {
            positional.push_back(&word);
            continue;
        }
        const std::size_t i = placeOf(arguments, word.name);
        if (i == arguments.size() || arguments[i].kind == Kind::subscriber)
            throw Mistake(std::string(operation.name) + " has no argument " + word.name +
                              didYouMean(word.name, argumentNames(operation)) + " (" +
                              usageOf(operation) + ")",
                          word.column);
        if (given[i] != nullptr)
            throw Mistake(word.name + " is given twice", word.column);
        given[i] = &word;
    }

    std::size_t left = positional.size();
    std::size_t needed = 0;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (given[i] == nullptr && !canBeLeftOut(operation, arguments[i]))
            ++needed;
    auto next = positional.begin();
    for (std::size_t i = 0; i < arguments.size() && left > 0; ++i)
    {
        if (given[i] != nullptr || arguments[i].kind == Kind::subscriber)
            continue;
        const bool optional = canBeLeftOut(operation, arguments[i]);
        const std::string& text = (*next)->text;
        const bool taken = !optional                      ? true
                           : left <= needed               ? false
                           : isLineArgument(arguments[i]) ? book.isLine(text)
                           : isCallArgument(arguments[i]) ? isNumberWord(text)
                                                          : true;
        if (!taken)
            continue;
        given[i] = *next++;
        --left;
        if (!optional)
            --needed;
    }
    if (left > 0)
        throw Mistake("there is nothing left for " + shown((*next)->text, 40) + " (" +
                          usageOf(operation) + ")",
                      (*next)->column);
    return given;
}

}  // namespace

std::string usageOf(const Operation& operation)
{
    std::string text = operation.name;
    for (const Field& argument : operation.arguments)
    {
        if (argument.kind == Kind::subscriber)
            continue;
        text += canBeLeftOut(operation, argument) ? " [" + std::string(argument.argument) + "]"
                                                  : " " + std::string(argument.argument);
    }
    return text;
}

Binding bindArguments(const Operation& operation, const std::vector<Word>& words,
                      const CallBook& book, Purpose purpose)
{
    const std::vector<Field>& arguments = operation.arguments;
    const std::vector<const Word*> given = distribute(operation, words, book);
    std::vector<std::string> texts(arguments.size());
    Binding binding;
    std::string line;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (given[i] != nullptr)
        {
            texts[i] = readValue(arguments[i], *given[i]);
            if (isNull(arguments[i], *given[i]))
                binding.nulls.push_back(arguments[i].argument);
            if (isLineArgument(arguments[i]))
                line = texts[i];
        }

    const CallBook::Call* call = nullptr;
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        const Field& argument = arguments[i];
        const char* const otherwise = defaultOf(operation, argument);
        if (argument.kind == Kind::subscriber)
            continue;
        if (given[i] != nullptr)
        {
            int id = 0;
            if (isCallArgument(argument) && numberOf(Meaning::none, texts[i], id) &&
                book.find(id) != nullptr)
                call = book.find(id);
        }
        else if (otherwise != nullptr)
        {
            texts[i] = toWire(argument, otherwise);
        }
        else if (isCallArgument(argument))
        {
            if (purpose == Purpose::calling)
                call = &book.pick(operation, argument, line);
            texts[i] = call != nullptr ? std::to_string(call->id) : "0";
        }
        else if (!isLineArgument(argument))
            throw Mistake(std::string(operation.name) + " needs " + argument.argument + ": " +
                          argument.explanation + " (" + usageOf(operation) + ")");
    }

    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        if (given[i] == nullptr && isLineArgument(arguments[i]) && purpose == Purpose::calling)
        {
            if (call == nullptr && book.lines().empty())
                throw Mistake(std::string(operation.name) + " needs " + arguments[i].argument +
                              ": the phone has no lines");
            texts[i] = call != nullptr && !call->line.empty() ? call->line : book.lines().front();
        }
        if (arguments[i].kind != Kind::subscriber)
            binding.values.emplace_back(arguments[i].argument, texts[i]);
    }
    return binding;
}

const char* defaultOf(const Operation& operation, const Field& argument)
{
    for (const Default& row : defaults)
        if (std::strcmp(row.operation, operation.name) == 0 &&
            std::strcmp(row.argument, argument.argument) == 0)
            return row.value;
    return nullptr;
}

bool canBeLeftOut(const Operation& operation, const Field& argument)
{
    return argument.kind == Kind::subscriber || isLineArgument(argument) ||
           isCallArgument(argument) || defaultOf(operation, argument) != nullptr;
}

bool isLineArgument(const Field& argument)
{
    return std::strcmp(argument.argument, "line") == 0 ||
           std::strcmp(argument.argument, "deviceId") == 0;
}

bool isCallArgument(const Field& argument)
{
    return argument.kind == Kind::number && (std::strcmp(argument.argument, "callId") == 0 ||
                                             std::strcmp(argument.argument, "activeCall") == 0 ||
                                             std::strcmp(argument.argument, "heldCall") == 0);
}

std::string readValue(const Field& field, const Word& word)
{
    if (isNull(field, word))
        return "";
    if (field.kind == Kind::state)
    {
        // Any number passes, so that a value without a name can be tried.
        int number = 0;
        if (numberOf(field.names, word.text, number))
            return nameOf(field.names, number);
        throw Mistake(std::string(field.argument) + " is one of " + listed(namesFor(field)) +
                          ", not " + shown(word.text, 40) + didYouMean(word.text, namesFor(field)),
                      word.column);
    }
    try
    {
        return toWire(field, word.text);
    }
    catch (const std::invalid_argument& error)
    {
        const std::vector<std::string> names = namesFor(field);
        const bool few = isNumber(field.kind) && !names.empty() && names.size() < 20;
        throw Mistake(printable(error.what(), 200) + (few ? " (" + listed(names) + ")" : ""),
                      word.column);
    }
}

std::vector<std::string> namesFor(const Field& field)
{
    if (isFlag(field.kind))
        return {"true", "false"};
    return columnOf(namesOf(field.names), &NumberName::name);
}

const std::vector<ShortWord>& shortWords()
{
    static const std::vector<ShortWord> table = {
        {"dial", "outgoingCallMake", {"destination"}},
        {"answer", "answerCall", {"callId"}},
        {"accept", "acceptCall", {"callId"}},
        {"refuse", "refuseCall", {"refuseCallReason"}},
        {"deflect", "deflectCall", {"destination"}},
        {"hold", "holdCall", {"callId"}},
        {"retrieve", "retrieveCall", {"callId"}},
        {"swap", "alternateCalls", {}},
        {"hangup", "callClear", {"callId"}},
        {"consult", "consultationCall", {"destination"}},
        {"transfer", "attendedTransferCall", {}},
        {"transfer", "blindTransferCall", {"destination"}},
        {"conf", "conferenceCall", {}},
        {"digits", "generateDigits", {"digits"}},
        {"pickup", "groupPickupCall", {}},
        {"pickup", "directedPickupCall", {"callToBePickedUp"}},
        {"callback", "activateCallbackBusy", {"callId"}},
        {"ringback", "activateCallbackRinging", {"callId"}},
        {"dnd", "getDoNotDisturb", {}},
        {"dnd", "setDoNotDisturb", {"doNotDisturbOn"}},
        {"mute", "getMicrophoneMute", {}},
        {"mute", "setMicrophoneMute", {"status"}},
        {"forward", "getForwardingConfiguration", {"fwType"}},
        {"forward", "setForwardingConfiguration", {"fwType", "uri"}, {{"status", "true"}}},
        {"unforward", "setForwardingConfiguration", {"fwType"}, {{"status", "false"}}},
        {"agent", "setAgentState", {"agentState"}},
        {"messages", "getMessageWaitingIndicator", {}},
        {"lamp", "setLampMode", {"lampId", "lampMode"}},
        {"state", "getServiceState", {}},
        {"state", "setServiceState", {"state"}},
        {"csta", "SendCSTARequest", {"cstaRequest"}},
    };
    return table;
}

const ShortWord* findShortWord(const std::string& word, std::size_t positionals)
{
    const ShortWord* found = nullptr;
    for (const ShortWord& row : shortWords())
        if (word == row.word)
        {
            found = &row;
            if (row.positional.size() == positionals)
                break;
        }
    return found;
}

std::vector<Word> expand(const ShortWord& shortWord, const std::vector<Word>& words)
{
    std::vector<Word> expanded = words;
    std::size_t next = 0;
    for (Word& word : expanded)
    {
        if (!word.name.empty())
            continue;
        if (next == shortWord.positional.size())
        {
            std::string takes;
            for (const char* argument : shortWord.positional)
                takes += std::string(" ") + argument;
            throw Mistake(std::string(shortWord.word) +
                              (takes.empty() ? " takes no words" : " takes no more than" + takes) +
                              "; what is " + shown(word.text, 40) + "?",
                          word.column);
        }
        word.name = shortWord.positional[next++];
    }
    for (const auto& preset : shortWord.presets)
    {
        const bool given = std::any_of(expanded.begin(), expanded.end(),
                                       [&](const Word& word) { return word.name == preset.first; });
        if (given)
            continue;
        Word word;
        word.name = preset.first;
        word.text = preset.second;
        expanded.push_back(word);
    }
    return expanded;
}

}  // namespace kit::phone

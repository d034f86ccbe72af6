#include "kit/phone/Arguments.h"

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
    {"subscribe", "subscriber", ""},
};

bool canBeLeftOut(const Operation& operation, const Field& argument)
{
    return isLineArgument(argument) || isCallArgument(argument) ||
           defaultOf(operation, argument) != nullptr;
}

bool isNumberWord(const std::string& text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

std::vector<std::string> argumentNames(const Operation& operation)
{
    std::vector<std::string> names;
    for (const Field& argument : operation.arguments)
        if (argument.kind != Kind::subscriber)
            names.push_back(argument.argument);
    return names;
}

std::string usage(const Operation& operation)
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

/// Puts each word to its argument; what is not given stays null.
std::vector<const Word*> distribute(const Operation& operation, const std::vector<Word>& words,
                                    const CallBook* book)
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
        std::size_t i = 0;
        while (i < arguments.size() && word.name != arguments[i].argument &&
               (*arguments[i].tag == '\0' || word.name != arguments[i].tag))
            ++i;
        if (i == arguments.size())
        {
            const std::vector<std::string> names = argumentNames(operation);
            const std::string near = nearest(word.name, names);
            throw Mistake(std::string(operation.name) + " has no argument " + word.name +
                              (near.empty() ? "" : ", did you mean " + near + "?") + " (" +
                              usage(operation) + ")",
                          word.column);
        }
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
        // Without a book a line cannot be told from anything else; the number of words decides.
        const bool isLine = book != nullptr ? book->isLine(text)
                                            : left >= arguments.size() - i;
        const bool taken = !optional                     ? true
                           : left <= needed              ? false
                           : isLineArgument(arguments[i]) ? isLine
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
        throw Mistake("there is nothing left for " + quote(printable((*next)->text, 40)) + " (" +
                          usage(operation) + ")",
                      (*next)->column);
    return given;
}

}  // namespace

std::vector<Value> bind(const Operation& operation, const std::vector<Word>& words,
                        const CallBook* book)
{
    const std::vector<Field>& arguments = operation.arguments;
    const std::vector<const Word*> given = distribute(operation, words, book);
    std::vector<Value> values(arguments.size());
    std::string line;
    for (std::size_t i = 0; i < arguments.size(); ++i)
        if (given[i] != nullptr)
        {
            values[i] = readValue(arguments[i], *given[i]);
            if (isLineArgument(arguments[i]))
                line = values[i].text;
        }
    const CallBook::Call* call = nullptr;
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        const Field& argument = arguments[i];
        const char* const otherwise = defaultOf(operation, argument);
        if (given[i] != nullptr)
        {
            int id = 0;
            if (book != nullptr && isCallArgument(argument) &&
                numberOf(Meaning::none, values[i].text, id) && book->find(id) != nullptr)
                call = book->find(id);
        }
        else if (otherwise != nullptr)
        {
            Word word;
            word.text = otherwise;
            values[i] = readValue(argument, word);
        }
        else if (isCallArgument(argument))
        {
            if (book != nullptr)
                call = &book->pick(operation, argument, line);
            values[i].text = call != nullptr ? std::to_string(call->id) : "0";
        }
        else if (!isLineArgument(argument))
            throw Mistake(std::string(operation.name) + " needs " + argument.argument + ": " +
                          argument.meaning + " (" + usage(operation) + ")");
    }
    for (std::size_t i = 0; i < arguments.size(); ++i)
    {
        if (given[i] != nullptr || !isLineArgument(arguments[i]) || book == nullptr)
            continue;
        if (call != nullptr && !call->line.empty())
            values[i].text = call->line;
        else if (!book->lines().empty())
            values[i].text = book->lines().front();
        else
            throw Mistake(std::string(operation.name) + " needs " + arguments[i].argument +
                          ": the phone has no lines");
    }
    return values;
}

const char* defaultOf(const Operation& operation, const Field& argument)
{
    for (const Default& row : defaults)
        if (std::strcmp(row.operation, operation.name) == 0 &&
            std::strcmp(row.argument, argument.argument) == 0)
            return row.value;
    return nullptr;
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

Value readValue(const Field& field, const Word& word)
{
    Value value;
    if (field.kind == Kind::cString && !word.quoted && word.text == "null")
    {
        value.null = true;
        return value;
    }
    if (field.kind == Kind::subscriber)
    {
        if (!word.text.empty())
            throw Mistake("the subscriber is the phone itself and cannot be given", word.column);
        return value;
    }
    if (field.kind == Kind::state)
    {
        // Any number passes, so that a value without a name can be tried.
        int number = 0;
        if (!numberOf(field.names, word.text, number))
        {
            const std::string near = nearest(word.text, namesFor(field));
            throw Mistake(std::string(field.argument) + " is one of sfiServiceInService, "
                          "sfiServiceOutOfService, sfiServiceDoNotDisturb, not " +
                              quote(printable(word.text, 40)) +
                              (near.empty() ? "" : "; did you mean " + near + "?"),
                          word.column);
        }
        value.text = std::to_string(number);
        return value;
    }
    try
    {
        value.text = toWire(field, word.text);
    }
    catch (const std::invalid_argument& error)
    {
        throw Mistake(printable(error.what(), 200), word.column);
    }
    return value;
}

std::vector<std::string> namesFor(const Field& field)
{
    if (isFlag(field.kind))
        return {"true", "false"};
    std::vector<std::string> names;
    for (const NumberName& entry : namesOf(field.names))
        names.push_back(entry.name);
    return names;
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
            throw Mistake(std::string(shortWord.word) + " takes " +
                              (takes.empty() ? "no words" : "no more than" + takes) +
                              "; what is " + quote(printable(word.text, 40)) +
                              "? (\"help " + shortWord.operation + "\" shows the operation)",
                          word.column);
        }
        word.name = shortWord.positional[next++];
    }
    for (const auto& preset : shortWord.presets)
    {
        const bool given = std::any_of(expanded.begin(),
                                       expanded.end(),
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

#include "kit/phone/Help.h"

#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Commands.h"
#include "kit/phone/Display.h"
#include "kit/protocol/Columns.h"

#include <algorithm>

namespace kit::phone
{

namespace
{

std::string padded(const std::string& text, std::size_t width)
{
    return text + std::string(width - std::min(width, text.size()), ' ');
}

/// What is too long for the first column has a row to itself.
std::string twoColumns(const std::string& first, const std::string& second)
{
    constexpr std::size_t width = 30;
    return "  " +
           (first.size() > width ? first + "\n  " + std::string(width, ' ')
                                 : padded(first, width)) +
           " " + second + "\n";
}

std::string commandUsage(const Command& command)
{
    return command.name + std::string(*command.usage == '\0' ? "" : " ") + command.usage;
}

std::string wordUsage(const ShortWord& shortWord)
{
    std::string text = shortWord.word;
    const Operation& operation = *findOperation(shortWord.operation);
    for (const char* argument : shortWord.positional)
        for (const Field& field : operation.arguments)
            if (std::string(field.argument) == argument)
                text += canBeLeftOut(operation, field) ? " [" + std::string(argument) + "]"
                                                       : " " + std::string(argument);
    return text;
}

std::string overview()
{
    std::string text = "Commands:\n";
    for (const Command& command : commands())
        text += twoColumns(commandUsage(command), command.summary);
    text += "Short words, each for an operation; line and call follow from what the phone does:\n";
    for (const ShortWord& shortWord : shortWords())
    {
        std::string presets;
        for (const auto& [argument, value] : shortWord.presets)
            presets += std::string(" (") + argument + "=" + value + ")";
        const Operation& operation = *findOperation(shortWord.operation);
        text += twoColumns(wordUsage(shortWord),
                           padded(operation.name, 27) + " " + operation.summary + presets);
    }
    text += "Operations (help OPERATION shows arguments and wire text):\n";
    text += sideBySide(columnOf(operations(), &Operation::name), 90, 2) +
            "Events (help EVENT shows the fields):\n";
    text += sideBySide(eventNames(), 90, 2);
    text += "Language: word name=value \"two words\" # comment. \"!\" before a command that must "
            "fail.\nTry: dial 2001. Far ends that can be called: sim show robots.\n";
    return text;
}

std::string fieldLine(const Field& field, const std::string& more)
{
    const std::string text =
        "  " + padded(field.argument, 26) + " " + field.explanation + more + "\n";
    return isFlag(field.kind) ? text : text + sideBySide(namesFor(field), 91, 31);
}

std::string wireText(const std::string& method, const std::vector<Field>& fields)
{
    std::string text = element("Method", method);
    for (const Field& field : fields)
        if (field.kind == Kind::payload)
            text += std::string("...") + field.argument + "...";
        else if (field.kind != Kind::subscriber)
            text += element(field.tag, isFlag(field.kind)     ? "1"
                                       : isNumber(field.kind) ? "7"
                                                              : "...");
    return text;
}

std::string answerText(const Operation& operation)
{
    if (operation.sending == Sending::nothing)
        return "nothing is sent";
    std::string text = inWords(operation.answer);
    std::replace(text.begin(), text.end(), '`', '"');
    return *operation.resultTag == '\0' ? text
                                        : text + "; the result word is in " + operation.resultTag;
}

std::string helpOnOperation(const Operation& operation)
{
    std::string text = usageOf(operation) + "\n  " + operation.summary + "\n";
    for (const Field& argument : operation.arguments)
    {
        if (argument.kind == Kind::subscriber)
            continue;
        const char* const otherwise = defaultOf(operation, argument);
        std::string more;
        if (otherwise != nullptr)
            more = std::string(" [") + (*otherwise == '\0' ? "\"\"" : otherwise) + "]";
        else if (isLineArgument(argument))
            more = " [that of the call, or the first]";
        else if (isCallArgument(argument))
            more = " [the one that fits]";
        text += fieldLine(argument, more);
    }
    for (const Field& output : operation.outputs)
        text += fieldLine(output, " (returned)");
    if (operation.sending != Sending::nothing)
        text += "  wire:   " +
                (*operation.method != '\0' ? wireText(operation.method, operation.arguments)
                                           : std::string("SigEvent:...data...")) +
                "\n";
    text += "  answer: " + answerText(operation) + "\n";
    std::vector<std::string> words;
    for (const ShortWord& shortWord : shortWords())
        if (operation.name == std::string(shortWord.operation))
            words.push_back(wordUsage(shortWord));
    return words.empty() ? text : text + "  short:  " + listed(words) + "\n";
}

std::string helpOnEvent(const Event& event)
{
    std::string text =
        std::string(event.method) + ", callback " + event.callback + "\n  " + event.summary + "\n";
    for (const Field& argument : event.arguments)
        text += fieldLine(argument, "");
    return text + "  wire: " + wireText(event.method, event.arguments) + "\n";
}

/// "" when there is nothing of that name.
std::string helpOnName(const std::string& topic)
{
    std::string text;
    if (topic == "events")
    {
        for (const Event& event : events())
            text += "  " + padded(event.method, 34) + " " + event.summary + "\n";
        return text;
    }
    if (topic == "operations")
    {
        for (const Operation& operation : operations())
            text += "  " + padded(operation.name, 34) + " " + operation.summary + "\n";
        return text;
    }
    if (const Command* command = findCommand(topic))
        return commandUsage(*command) + "\n  " + command->summary + "\n";
    for (const ShortWord& shortWord : shortWords())
        if (topic == shortWord.word)
            text += wordUsage(shortWord) + ": short for\n" +
                    helpOnOperation(*findOperation(shortWord.operation));
    for (const Operation* operation : {findOperation(topic), findRequest(topic)})
        if (operation != nullptr && text.empty())
            text = helpOnOperation(*operation);
    for (const Event* event : {findEvent(topic), findCallback(topic)})
        if (event != nullptr && text.empty())
            text = helpOnEvent(*event);
    return text;
}

}  // namespace

std::string helpOn(const Word& topic)
{
    std::string text = topic.text.empty() ? overview() : helpOnName(topic.text);
    if (text.empty())
    {
        std::vector<std::string> topics = commandWords();
        for (const std::string& name : eventNames())
            topics.push_back(name);
        throw Mistake("there is no help on " + shown(topic.text, 40) +
                          didYouMean(topic.text, topics, "; \"help\" alone lists everything"),
                      topic.column);
    }
    text.pop_back();
    return text;
}

}  // namespace kit::phone

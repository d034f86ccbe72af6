#include "kit/phone/Help.h"

#include "kit/language/Wording.h"
#include "kit/phone/Arguments.h"
#include "kit/phone/Commands.h"

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

/// Words side by side, in lines of some 90 characters.
std::string paragraph(const std::vector<std::string>& words)
{
    std::string text;
    std::string line = " ";
    for (const std::string& word : words)
    {
        if (line.size() + word.size() > 90)
        {
            text += line + "\n";
            line = " ";
        }
        line += " " + word;
    }
    return text + line;
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

std::string shortWordList()
{
    std::string text;
    for (const ShortWord& shortWord : shortWords())
    {
        const Operation& operation = *findOperation(shortWord.operation);
        text +=
            twoColumns(wordUsage(shortWord), padded(operation.name, 27) + " " + operation.summary);
    }
    return text;
}

std::string overview()
{
    std::string text = "Commands:\n";
    for (const Command& command : commands())
        text += twoColumns(std::string(command.name) + " " + command.usage, command.summary);
    text += "Short words, each for an operation; line and call follow from what the phone does:\n";
    text += shortWordList();
    text += "Operations (help OPERATION shows arguments and wire text):\n";
    std::vector<std::string> names;
    for (const Operation& operation : operations())
        names.push_back(operation.name);
    text += paragraph(names) + "\nEvents (help EVENT shows the fields):\n";
    text += paragraph(eventNames());
    text += "\nLanguage: word name=value \"two words\" # comment. \"!\" before a command that must "
            "fail.\nTry: dial 2001. Far ends that can be called: sim show robots.";
    return text;
}

std::string fieldLine(const Field& field, const std::string& more)
{
    std::string text = "  " + padded(field.argument, 26) + " " + field.explanation + more;
    if (isFlag(field.kind))
        return text;
    std::string line;
    for (const std::string& name : namesFor(field))
    {
        if (line.size() + name.size() > 60)
        {
            text += "\n" + std::string(31, ' ') + line;
            line.clear();
        }
        line += (line.empty() ? "" : " ") + name;
    }
    return line.empty() ? text : text + "\n" + std::string(31, ' ') + line;
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
    std::string text = usageOf(operation) + "\n  " + operation.summary;
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
        text += "\n" + fieldLine(argument, more);
    }
    for (const Field& output : operation.outputs)
        text += "\n" + fieldLine(output, " (returned)");
    if (operation.sending != Sending::nothing)
        text += "\n  wire:   " + (*operation.method != '\0'
                                      ? wireText(operation.method, operation.arguments)
                                      : std::string("SigEvent:...data..."));
    text += "\n  answer: " + answerText(operation);
    std::vector<std::string> words;
    for (const ShortWord& shortWord : shortWords())
        if (operation.name == std::string(shortWord.operation))
            words.push_back(wordUsage(shortWord));
    if (!words.empty())
        text += "\n  short:  " + listed(words);
    return text;
}

std::string helpOnEvent(const Event& event)
{
    std::string text =
        std::string(event.method) + ", callback " + event.callback + "\n  " + event.summary;
    for (const Field& argument : event.arguments)
        text += "\n" + fieldLine(argument, "");
    return text + "\n  wire: " + wireText(event.method, event.arguments);
}

std::string eventList()
{
    std::string text;
    for (const Event& event : events())
        text += (text.empty() ? "  " : "\n  ") + padded(event.method, 34) + " " + event.summary;
    return text;
}

std::string operationList()
{
    std::string text;
    for (const Operation& operation : operations())
        text +=
            (text.empty() ? "  " : "\n  ") + padded(operation.name, 34) + " " + operation.summary;
    return text;
}

}  // namespace

std::string helpOn(const Word& word)
{
    const std::string& topic = word.text;
    if (topic.empty())
        return overview();
    if (const Command* command = findCommand(topic))
        if (topic != "events")
            return std::string(command->name) + " " + command->usage + "\n  " + command->summary;
    if (topic == "events")
        return eventList();
    if (topic == "operations")
        return operationList();
    std::string shorts;
    for (const ShortWord& shortWord : shortWords())
        if (topic == shortWord.word)
            shorts += (shorts.empty() ? "" : "\n") + wordUsage(shortWord) + ": short for\n" +
                      helpOnOperation(*findOperation(shortWord.operation));
    if (!shorts.empty())
        return shorts;
    if (const Operation* operation = findOperation(topic))
        return helpOnOperation(*operation);
    if (const Operation* operation = findRequest(topic))
        return helpOnOperation(*operation);
    if (const Event* event = findEvent(topic))
        return helpOnEvent(*event);
    if (const Event* event = findCallback(topic))
        return helpOnEvent(*event);
    std::vector<std::string> topics = commandWords();
    for (const std::string& name : eventNames())
        topics.push_back(name);
    throw Mistake("there is no help on " + shown(topic, 40) +
                      didYouMean(topic, topics, "; \"help\" alone lists everything"),
                  word.column);
}

}  // namespace kit::phone

#include "kit/service/Usage.h"

#include "kit/protocol/Columns.h"
#include "kit/protocol/Protocol.h"
#include "kit/service/Commands.h"
#include "kit/service/Views.h"

#include <cctype>
#include <sstream>

namespace kit
{

namespace
{

bool beginsSmall(const std::string& word)
{
    return !word.empty() && std::islower(static_cast<unsigned char>(word.front())) != 0;
}

}  // namespace

std::vector<UsageSlot> CommandUsage::slots() const
{
    std::vector<UsageSlot> slots;
    std::istringstream in(usage);
    std::string word;
    while (in >> word)
    {
        UsageSlot slot;
        slot.optional = word.front() == '[';
        if (slot.optional)
            word.erase(0, 1);
        const bool closed = !word.empty() && word.back() == ']';
        if (closed)
            word.pop_back();
        if (!beginsSmall(word))
            slot.value = word;
        else
        {
            slot.keyword = word;
            if (!slot.optional || !closed)
                in >> slot.value;
            if (!slot.value.empty() && slot.value.back() == ']')
                slot.value.pop_back();
        }
        slots.push_back(slot);
    }
    return slots;
}

std::vector<CommandUsage> simulationCommands()
{
    std::vector<CommandUsage> usages;
    for (const service::Command& command : service::commands())
        usages.push_back({command.name, command.usage, command.help});
    return usages;
}

std::string commandHelp(const std::vector<CommandUsage>& commands)
{
    std::string text;
    for (const CommandUsage& command : commands)
        text += (text.empty() ? "" : "\n") + command.line() + ": " + command.help;
    return text;
}

std::vector<CommandUsage> parseCommandHelp(const std::string& help)
{
    std::vector<CommandUsage> commands;
    std::istringstream in(help);
    std::string line;
    while (std::getline(in, line))
    {
        const std::size_t colon = line.find(": ");
        if (colon == std::string::npos)
            continue;
        CommandUsage command;
        command.help = line.substr(colon + 2);
        std::istringstream words(line.substr(0, colon));
        std::string word;
        // The name is the small words in front; no usage begins with one.
        while (words >> word)
            if (command.usage.empty() && beginsSmall(word))
                command.name += (command.name.empty() ? "" : " ") + word;
            else
                command.usage += (command.usage.empty() ? "" : " ") + word;
        if (!command.name.empty())
            commands.push_back(command);
    }
    return commands;
}

const ValueKind* valueKind(const std::string& value)
{
    static const ValueKind kinds[] = {
        {"LEVEL", "impact level", Meaning::impactLevel, true},
        {"PRIORITY", "priority", Meaning::priority, true},
        {"SECURITY", "security status", Meaning::security, true},
        {"CAUSE", "pre-emption cause", Meaning::preemptionCause, true},
        {"CALLTYPE", "call type", Meaning::callType, true},
        {"DIVERSION", "diversion reason", Meaning::diversionReason, true},
        {"RESULT", "registration result", Meaning::registrationResult, true},
        {"AGENTSTATE", "agent state", Meaning::agentState, false},
        {"STATUS", "system status", Meaning::systemStatus, false},
        {"METHOD", "method", Meaning::none, false},
    };
    for (const ValueKind& kind : kinds)
        if (value == kind.value)
            return &kind;
    return nullptr;
}

std::vector<std::string> wordsFor(const std::string& kind)
{
    if (kind == "ON")
        return {"on", "off"};
    if (kind == "WHAT")
        return columnOf(service::views(), &service::View::name);
    std::vector<std::string> words;
    if (kind == "METHOD")
    {
        for (const Operation& operation : operations())
            if (*operation.method != '\0')
                words.push_back(operation.method);
    }
    else if (const ValueKind* const named = valueKind(kind))
        words = columnOf(namesOf(named->meaning), &NumberName::name);
    return words;
}

}  // namespace kit

#include "kit/trace/Ladder.h"

#include <algorithm>
#include <utility>

namespace kit
{

namespace
{

constexpr std::size_t applicationColumn = 5;
constexpr std::size_t serviceColumn = 66;
constexpr std::size_t farEndGap = 20;

std::size_t farEndColumn(std::size_t index)
{
    return serviceColumn + (index + 1) * farEndGap;
}

/// Characters, not bytes, so that columns stay in line; continuation bytes do not count.
std::size_t width(const std::string& text)
{
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(),
                      [](char c) { return (static_cast<unsigned char>(c) & 0xc0U) != 0x80U; }));
}

std::string cut(const std::string& text, std::size_t limit)
{
    if (width(text) <= limit)
        return text;
    std::string shorter;
    std::size_t characters = 0;
    for (const char c : text)
    {
        if ((static_cast<unsigned char>(c) & 0xc0U) != 0x80U && ++characters > limit - 2)
            break;
        shorter += c;
    }
    return shorter + "..";
}

/// The arrow's text between two columns that are `room` characters apart.
std::string arrow(const std::string& text, std::size_t room, bool toTheRight, char stroke)
{
    const std::string label = cut(text, room - 4);
    const std::string rest(room - 3 - width(label), stroke);
    const std::string two(2, stroke);
    return toTheRight ? two + label + rest + ">" : "<" + two + label + rest;
}

void center(std::string& line, std::size_t column, const std::string& text)
{
    const std::size_t begin = column - std::min(column, width(text) / 2);
    if (line.size() < begin)
        line.resize(begin, ' ');
    line += text;
}

bool toTheRight(FlowStep::Between between)
{
    return between == FlowStep::Between::toService;
}

std::string trimmed(std::string line)
{
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

}  // namespace

TextLadder::TextLadder(std::vector<std::string> farEnds) : farEnds_(std::move(farEnds)) {}

std::string TextLadder::head() const
{
    std::string line;
    center(line, applicationColumn, "application");
    center(line, serviceColumn, "service");
    for (std::size_t i = 0; i < farEnds_.size(); ++i)
        center(line, farEndColumn(i), cut(farEnds_[i], farEndGap - 2));
    return trimmed(line) + trimmed(lifelines());
}

std::string TextLadder::add(const FlowStep& step)
{
    std::string before;
    if (!step.farEndName.empty() &&
        std::find(farEnds_.begin(), farEnds_.end(), step.farEndName) == farEnds_.end())
    {
        farEnds_.push_back(step.farEndName);
        headShown_ = false;
    }
    if (!headShown_)
        before = head();
    headShown_ = true;

    if (step.isNote())
    {
        std::string line = lifelines();
        const std::string note = "( " + cut(step.text, 50) + " )";
        line.replace(serviceColumn - width(note) / 2, width(note), note);
        return before + trimmed(line);
    }
    std::string line(applicationColumn, ' ');
    const std::size_t room = serviceColumn - applicationColumn - 1;
    line += "|";
    line += step.application == FlowStep::Between::none
                ? std::string(room, ' ')
                : arrow(step.text, room, toTheRight(step.application),
                        step.application == FlowStep::Between::answer ? '.' : '-');
    const std::size_t target =
        step.farEnd == FlowStep::Between::none ? serviceColumn : columnOf(step.farEndName);
    if (target > serviceColumn)
        line +=
            "|" + arrow(step.farEndText, target - serviceColumn - 1, toTheRight(step.farEnd), '-');
    const std::string behind = lifelines();
    return before + trimmed(line + behind.substr(target));
}

std::size_t TextLadder::columnOf(const std::string& farEnd) const
{
    const auto found = std::find(farEnds_.begin(), farEnds_.end(), farEnd);
    return farEndColumn(static_cast<std::size_t>(found - farEnds_.begin()));
}

std::string TextLadder::lifelines() const
{
    std::string line(farEndColumn(farEnds_.size()), ' ');
    line[applicationColumn] = '|';
    line[serviceColumn] = '|';
    for (std::size_t i = 0; i < farEnds_.size(); ++i)
        line[farEndColumn(i)] = '|';
    return line;
}

namespace
{

/// Mermaid ends a text at ";" and reads "#" as the beginning of a code.
std::string mermaidText(const std::string& text)
{
    std::string escaped;
    for (const char c : text)
        if (c == '#')
            escaped += "#35;";
        else if (c == ';')
            escaped += "#59;";
        else if (c == '<')
            escaped += "#lt;";
        else if (c == '>')
            escaped += "#gt;";
        else
            escaped += c;
    return escaped;
}

}  // namespace

std::string MermaidLadder::head() const
{
    return "sequenceDiagram\n    participant application\n    participant service\n";
}

std::string MermaidLadder::add(const FlowStep& step)
{
    std::string text;
    if (step.isNote())
        return "    Note over service: " + mermaidText(step.text) + "\n";
    std::string farEnd;
    if (step.farEnd != FlowStep::Between::none)
        farEnd = participant(step.farEndName, text);
    const std::string behind =
        toTheRight(step.farEnd)
            ? "    service->>" + farEnd + ": " + mermaidText(step.farEndText) + "\n"
            : "    " + farEnd + "->>service: " + mermaidText(step.farEndText) + "\n";
    if (step.farEnd == FlowStep::Between::fromService)
        text += behind;
    if (step.application == FlowStep::Between::toService)
        text += "    application->>service: " + mermaidText(step.text) + "\n";
    else if (step.application == FlowStep::Between::fromService)
        text += "    service->>application: " + mermaidText(step.text) + "\n";
    else if (step.application == FlowStep::Between::answer)
        text += "    service-->>application: " + mermaidText(step.text) + "\n";
    if (step.farEnd == FlowStep::Between::toService)
        text += behind;
    return text;
}

std::string MermaidLadder::participant(const std::string& farEnd, std::string& declaration)
{
    auto found = std::find(farEnds_.begin(), farEnds_.end(), farEnd);
    std::string name = "far" + std::to_string(found - farEnds_.begin() + 1);
    if (found == farEnds_.end())
    {
        farEnds_.push_back(farEnd);
        declaration = "    participant " + name + " as " + mermaidText(farEnd) + "\n";
    }
    return name;
}

std::vector<FlowStep> stepsOf(const std::vector<TraceRecord>& records)
{
    Flow flow;
    std::vector<FlowStep> steps;
    for (const TraceRecord& record : records)
        for (FlowStep& step : flow.add(record))
            steps.push_back(std::move(step));
    for (FlowStep& step : flow.finish())
        steps.push_back(std::move(step));
    return steps;
}

std::string textLadder(const std::vector<FlowStep>& steps)
{
    std::vector<std::string> farEnds;
    for (const FlowStep& step : steps)
        if (!step.farEndName.empty() &&
            std::find(farEnds.begin(), farEnds.end(), step.farEndName) == farEnds.end())
            farEnds.push_back(step.farEndName);
    TextLadder ladder(farEnds);
    std::string text;
    for (const FlowStep& step : steps)
        text += ladder.add(step);
    return steps.empty() ? ladder.head() : text;
}

std::string mermaidLadder(const std::vector<FlowStep>& steps)
{
    MermaidLadder ladder;
    std::string text = ladder.head();
    for (const FlowStep& step : steps)
        text += ladder.add(step);
    return text;
}

}  // namespace kit

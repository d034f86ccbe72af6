#include "kit/trace/Ladder.h"

#include "kit/trace/Width.h"

#include <algorithm>
#include <set>
#include <utility>

namespace kit
{

namespace
{

constexpr std::size_t smallestGap = 13;
constexpr std::size_t widestGap = 20;
constexpr std::size_t smallestLabel = 46;  ///< between application and service, where it can be had

/// The arrow's text between two columns that are `room` characters apart.
std::string arrow(const std::string& text, std::size_t room, bool toTheRight, char stroke)
{
    const std::string label = cutToWidth(text, room - 4);
    const std::string rest(room - 3 - displayWidth(label), stroke);
    const std::string two(2, stroke);
    return toTheRight ? two + label + rest + ">" : "<" + two + label + rest;
}

/// Puts a text into a line of blanks and strokes, around a column.
std::string centered(std::string line, std::size_t column, const std::string& text,
                     std::size_t width)
{
    const std::size_t size = displayWidth(text);
    line.resize(std::max(line.size(), width), ' ');
    const std::size_t begin = std::min(column - std::min(column, size / 2), width - size);
    return line.substr(0, begin) + text + line.substr(begin + size);
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

TextLadder::TextLadder(std::size_t width, std::size_t farEndsAtOnce)
    : width_(std::max(width, narrowest))
{
    makeRoom(std::max<std::size_t>(farEndsAtOnce, 1));
}

/// As many columns as there is room for; who finds none shares the last.
void TextLadder::makeRoom(std::size_t farEnds)
{
    const std::size_t room = width_ - std::min(width_, smallestLabel + 6);
    places_.resize(std::max<std::size_t>(1, std::min(farEnds, room / smallestGap)));
    gap_ = std::min(widestGap, std::max(smallestGap, room / places_.size()));
    service_ = width_ - 1 - gap_ * places_.size();
    headShown_ = false;
}

std::string TextLadder::head() const
{
    std::string line = centered("application", service_, "service", width_);
    for (std::size_t i = 0; i < places_.size(); ++i)
        if (!places_[i].empty())
        {
            const std::string name = cutToWidth(places_[i], gap_ * 2 / 3);
            // From the right, so that no wide character before it counts.
            const std::size_t size = displayWidth(name);
            const std::size_t begin = std::min(farEndColumn(i) - size / 2, width_ - size);
            line = line.substr(0, begin + line.size() - displayWidth(line)) + name;
            line.resize(line.size() + width_ - displayWidth(line), ' ');
        }
    return trimmed(line) + trimmed("|" + std::string(service_ - 1, ' ') + lifelines(service_));
}

std::string TextLadder::add(const FlowStep& step)
{
    const std::string row =
        step.isNote()
            ? trimmed(centered("|" + std::string(service_ - 1, ' ') + lifelines(service_), service_,
                               "( " + cutToWidth(step.text, width_ - 30) + " )", width_))
            : arrowOf(step);
    const std::string before = headShown_ ? "" : head();
    headShown_ = true;
    const auto left = std::find(places_.begin(), places_.end(), step.leaves);
    if (!step.leaves.empty() && left != places_.end())
        left->clear();
    return before + row;
}

std::string TextLadder::arrowOf(const FlowStep& step)
{
    const bool behind = step.farEnd != FlowStep::Between::none;
    const std::size_t place = behind ? placeOf(step.farEndName) : 0;
    const std::size_t room = service_ - 1;
    std::string line = "|";
    line += step.application == FlowStep::Between::none
                ? std::string(room, ' ')
                : arrow(step.text, room, toTheRight(step.application),
                        step.application == FlowStep::Between::answer ? '.' : '-');
    if (!behind)
        return trimmed(line + lifelines(service_));
    const bool shared = places_[place] != step.farEndName;
    const std::size_t target = farEndColumn(place);
    return trimmed(line + "|" +
                   arrow(shared ? step.farEndName + " " + step.farEndText : step.farEndText,
                         target - service_ - 1, toTheRight(step.farEnd), '-') +
                   lifelines(target));
}

std::size_t TextLadder::placeOf(const std::string& farEnd)
{
    auto place = std::find(places_.begin(), places_.end(), farEnd);
    if (place != places_.end())
        return static_cast<std::size_t>(place - places_.begin());
    place = std::find(places_.begin(), places_.end(), "");
    if (place == places_.end())
    {
        const std::size_t before = places_.size();
        const bool headed = headShown_;
        makeRoom(before + 1);
        if (places_.size() == before)
        {
            headShown_ = headed;
            return before - 1;
        }
        place = places_.end() - 1;
    }
    *place = farEnd;
    headShown_ = false;
    return static_cast<std::size_t>(place - places_.begin());
}

std::size_t TextLadder::farEndColumn(std::size_t place) const
{
    return service_ + (place + 1) * gap_;
}

/// From a column on.
std::string TextLadder::lifelines(std::size_t from) const
{
    std::string line(width_, ' ');
    line[service_] = '|';
    for (std::size_t i = 0; i < places_.size(); ++i)
        if (!places_[i].empty())
            line[farEndColumn(i)] = '|';
    line[from] = '|';
    return line.substr(from);
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

std::string textLadder(const std::vector<FlowStep>& steps, std::size_t width)
{
    std::set<std::string> there;
    std::size_t atOnce = 0;
    for (const FlowStep& step : steps)
    {
        if (!step.farEndName.empty())
            there.insert(step.farEndName);
        atOnce = std::max(atOnce, there.size());
        there.erase(step.leaves);
    }
    TextLadder ladder(width, atOnce);
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

#ifndef KIT_TRACE_LADDER_H
#define KIT_TRACE_LADDER_H

#include "kit/trace/Flow.h"

#include <string>
#include <vector>

namespace kit
{

/// The call flow as text, for screens and files: one column for the application, one for the service
/// and one for each far end.
///
///     application                        service        2001
///          |--HoldCall CallID=1------------>|--hold------>|
///          |<..sfiSuccess...................|             |
class TextLadder
{
public:
    /// Far ends that are known beforehand get their columns at once; others when they first appear.
    explicit TextLadder(std::vector<std::string> farEnds = {});

    /// Each line ends with '\n'.
    std::string head() const;
    std::string add(const FlowStep& step);

private:
    std::size_t columnOf(const std::string& farEnd) const;
    std::string lifelines() const;

    std::vector<std::string> farEnds_;
    bool headShown_ = false;
};

/// The same as a Mermaid sequence diagram.
class MermaidLadder
{
public:
    std::string head() const;
    std::string add(const FlowStep& step);

private:
    std::string participant(const std::string& farEnd, std::string& declaration);

    std::vector<std::string> farEnds_;
};

/// The steps of a whole trace.
std::vector<FlowStep> stepsOf(const std::vector<TraceRecord>& records);

std::string textLadder(const std::vector<FlowStep>& steps);
std::string mermaidLadder(const std::vector<FlowStep>& steps);

}  // namespace kit

#endif

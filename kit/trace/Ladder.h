#ifndef KIT_TRACE_LADDER_H
#define KIT_TRACE_LADDER_H

#include "kit/trace/Flow.h"

#include <string>
#include <vector>

namespace kit
{

/// The call flow as text, for screens and files: one column for the application, one for the service
/// and one for each far end that is there. Far ends come and go; where the columns change, they are
/// headed anew. No line is wider than told.
///
///     application                        service        2001
///     |--HoldCall CallID=1--------------->|--hold------>|
///     |<..sfiSuccess......................|             |
class TextLadder
{
public:
    static constexpr std::size_t narrowest = 40;

    /// @param farEndsAtOnce  for how many there is room from the start
    explicit TextLadder(std::size_t width = 80, std::size_t farEndsAtOnce = 1);

    /// Each line ends with '\n'.
    std::string add(const FlowStep& step);

    /// What stands above an empty picture.
    std::string head() const;

private:
    std::string arrowOf(const FlowStep& step);
    std::size_t placeOf(const std::string& farEnd);
    void makeRoom(std::size_t farEnds);
    std::size_t farEndColumn(std::size_t place) const;
    std::string lifelines(std::size_t from) const;

    std::size_t width_;
    std::size_t gap_ = 0;              ///< between the columns behind the service
    std::size_t service_ = 0;          ///< its column
    std::vector<std::string> places_;  ///< of far ends; "" where nobody is
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

std::string textLadder(const std::vector<FlowStep>& steps, std::size_t width = 80);
std::string mermaidLadder(const std::vector<FlowStep>& steps);

}  // namespace kit

#endif

#ifndef KIT_TRACE_FLOW_H
#define KIT_TRACE_FLOW_H

#include "kit/trace/Trace.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace kit
{

/// One row of a call-flow picture: up to two arrows, or a note.
struct FlowStep
{
    enum class Between
    {
        none,
        toService,    ///< a request
        fromService,  ///< an event
        answer
    };

    Between application = Between::none;  ///< the arrow between application and service
    std::string text;                     ///< what stands on it, or the note
    Between farEnd = Between::none;       ///< the arrow between service and far end
    std::string farEndText;
    std::string farEndName;  ///< "2001"; "" when there is no such arrow
    std::string leaves;      ///< the far end whose last call has ended with this

    bool isNote() const { return application == Between::none && farEnd == Between::none; }
};

/// Turns the records of a trace into steps, and finds out who was at the far end.
///
/// The trace shows only what passed between application and service. What passed behind the service
/// follows from it: a request that was carried out went on to the far end of its call; an event that
/// came while no request was under way was caused by the far end.
class Flow
{
public:
    /// Steps that are complete now. A request waits for its answer, since only the answer tells
    /// whether it went on to the far end; what came meanwhile waits behind it.
    std::vector<FlowStep> add(const TraceRecord& record);

    /// The steps that still wait.
    std::vector<FlowStep> finish();

private:
    struct Waiting
    {
        FlowStep step;
        int request = 0;  ///< 0 when it waits for no answer
        std::string farEnd;
        std::string farEndText;
    };

    void addRequest(const TraceRecord& record);
    void addAnswer(const TraceRecord& record);
    void addEvent(const TraceRecord& record);
    void addException(const TraceRecord& record);
    void addNote(const std::string& text);
    void addStep(FlowStep::Between application, const std::string& text);
    void endOf(int request, bool carriedOut);
    void learn(const Message& message);
    std::string farEndOf(const Message& message) const;
    std::string leaving(const Message& message);
    std::vector<FlowStep> takeReady();

    std::deque<Waiting> waiting_;
    std::map<int, Waiting*> open_;                ///< requests that have not been answered yet
    std::map<std::string, std::string> farEnds_;  ///< by call identifier
};

}  // namespace kit

#endif

#ifndef KIT_TRACE_TRACE_H
#define KIT_TRACE_TRACE_H

#include "kit/framework/Connection.h"
#include "kit/protocol/Protocol.h"

#include <chrono>
#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace kit
{

/// The format of docs/trace-format.md that is written here. Earlier ones are read as well, and of
/// later ones what is known.
constexpr int traceFormat = 2;

/// One line of a trace: what passed, at the moment when the application's side saw it.
struct TraceRecord
{
    enum class Kind
    {
        request,    ///< the application's; also one that is not answered
        answer,     ///< to the request of the same number
        event,      ///< to a subscriber
        exception,  ///< out of the request of the same number, or out of a callback
        control,    ///< a command to the simulation, which a real service does not have
        dropped     ///< records that are missing here; `count` says how many
    };

    Kind kind = Kind::request;
    std::chrono::microseconds time{0};  ///< since the start of the trace
    int thread = 0;                     ///< counted from 1; 0 where it is not known
    int number = 0;                     ///< of the request, counted from 1; 0 for the others
    Sending sending = Sending::request;
    Delivery delivery = Delivery::done;  ///< of an answer
    std::string channel;                 ///< of a subscription, an event or its callback
    std::uint64_t count = 0;             ///< of dropped records
    std::string text;  ///< as it travelled; a control's command; what an exception says
};

/// The first line of a trace. One of format 1 has none.
struct TraceHead
{
    int format = 1;
    std::optional<std::chrono::system_clock::time_point> start;  ///< when `time` was 0
    std::string program;                                         ///< what has written it
};

/// One JSON object without a line end: {"time":0.001,"kind":"request","number":1,...}.
std::string toJson(const TraceRecord& record);
std::string toJson(const TraceHead& head);

/// What JSON can hold as it stands, and what stands there for the rest.
bool isUtf8(const std::string& text);
std::string hexOf(const std::string& text);

/// Reads a trace line by line. A line that makes no sense is passed over, and told in the end.
class TraceReader
{
public:
    /// @param name  of the file, for what there is to complain about
    explicit TraceReader(std::string name);

    /// The record in the next line; none in the head, in an empty line and in a damaged one.
    /// @param whole  false for a last line without its end
    std::optional<TraceRecord> take(const std::string& line, bool whole = true);

    const TraceHead& head() const { return head_; }

    /// One line, beginning with "NAME:LINE: "; "" when there is nothing to complain about.
    std::string complaint() const;

private:
    void complain(const std::string& what);
    void damaged(const std::string& what);

    const std::string name_;
    TraceHead head_;
    std::string complaint_;
    std::size_t line_ = 0;
    std::size_t records_ = 0;
    std::size_t damaged_ = 0;
};

/// A whole trace, as far as it could be read.
struct Trace
{
    TraceHead head;
    std::vector<TraceRecord> records;
    std::string complaint;  ///< see TraceReader
};

Trace readTrace(std::istream& in, const std::string& name);

}  // namespace kit

#endif

#ifndef RECORDER_TRACE_LINE_H
#define RECORDER_TRACE_LINE_H

#include <cstdint>
#include <string>
#include <string_view>

namespace recorder
{

enum class Kind : std::uint8_t
{
    request,
    answer,
    event,
    exception
};

enum class Sending : std::uint8_t
{
    request,
    timed,
    subscribe,
    oneWay
};

/// What one line of a trace says.
struct Record
{
    Kind kind = Kind::request;
    Sending sending = Sending::request;
    std::int64_t time = 0;  ///< microseconds since the start
    int thread = 0;         ///< 0 for one of too many
    std::uint32_t number = 0;
    std::string_view channel;
    std::string_view text;
};

/// Each appends one line, with its end, as docs/trace-format.md has it.
void appendHead(std::string& out, std::int64_t start, std::string_view program, long process,
                bool masked);
void appendRecord(std::string& out, const Record& record);
void appendDropped(std::string& out, std::int64_t time, std::uint64_t count, const char* reason);

}  // namespace recorder

#endif

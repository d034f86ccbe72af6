#ifndef KIT_TRACE_TRACE_FILE_H
#define KIT_TRACE_TRACE_FILE_H

#include "kit/trace/Trace.h"

#include <string>

namespace kit
{

/// A trace on its way to a file. Each line is written at once, and whole or not at all: the first
/// that cannot be written ends the trace.
class TraceFile
{
public:
    /// Throws std::runtime_error for a file that cannot be written.
    TraceFile(std::string path, const TraceHead& head);
    ~TraceFile();

    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    void add(const TraceRecord& record);

    /// One line that says why it has ended; "" while all is written.
    const std::string& problem() const { return problem_; }

private:
    void write(const std::string& line);

    const std::string path_;
    const int file_;
    long long written_ = 0;
    std::string problem_;
};

}  // namespace kit

#endif

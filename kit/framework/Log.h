#ifndef KIT_FRAMEWORK_LOG_H
#define KIT_FRAMEWORK_LOG_H

#include <functional>
#include <string>

namespace kit
{

/// One line of the framework's log. Problems of the kit have level 1, the library's lines level 5.
struct LogLine
{
    std::string component;
    int level;
    std::string sourceFile;
    int line;
    std::string message;
};

using LogSink = std::function<void(const LogLine& line)>;

/// Where log lines of the whole process go: the library's and the kit's, up to `level`. Off by
/// default; an empty sink switches it off again. The sink is called on any thread, one call at a
/// time, and must not log itself nor call operations. On return the sink before is no longer called.
void setLogSink(LogSink sink, int level = 9);

/// Writes a line of the kit's own if logging is on.
void log(int level, const std::string& message);

}  // namespace kit

#endif

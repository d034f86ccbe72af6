#include "kit/framework/Log.h"

#include "framework/Logging.h"

#include <mutex>
#include <utility>

namespace
{

struct Settings
{
    std::mutex mutex;
    kit::LogSink sink;
    int level = 0;
};

// Never destroyed: threads may still log while the process ends.
Settings& settings()
{
    static Settings& instance = *new Settings;
    return instance;
}

}  // namespace

int loggingOnAppOxa(const char*, int level)
{
    Settings& log = settings();
    const std::lock_guard<std::mutex> lock(log.mutex);
    return log.sink && level <= log.level ? 1 : 0;
}

void logAppOxa(const char* component, const char* sourceFile, int level, int line,
               const char* message)
{
    Settings& log = settings();
    const std::lock_guard<std::mutex> lock(log.mutex);
    if (log.sink && level <= log.level)
        log.sink({component, level, sourceFile, line, message});
}

namespace kit
{

void setLogSink(LogSink sink, int level)
{
    Settings& log = settings();
    const std::lock_guard<std::mutex> lock(log.mutex);
    log.sink = std::move(sink);
    log.level = level;
}

void log(int level, const std::string& message)
{
    logAppOxa("framework", "", level, 0, message.c_str());
}

}  // namespace kit

#ifndef RECORDER_RECORDER_H
#define RECORDER_RECORDER_H

#include "recorder/Mask.h"
#include "recorder/Settings.h"
#include "recorder/TraceFile.h"
#include "recorder/TraceLine.h"

#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace recorder
{

/// Takes in what passes, on any thread, and lets a thread of its own write it down.
///
/// To take something in is to copy it into a buffer: nothing is allocated, nothing waits for the
/// disk, nothing is thrown. What finds no room is counted, and the trace says so. What was taken in
/// is in the file a quarter of a second later. A trouble with the file is told to the framework's
/// log by the next thread that comes by, since only those are known to the framework.
class Recorder
{
public:
    /// Throws std::exception when it cannot record; the text is for people.
    explicit Recorder(const Settings& settings);
    ~Recorder();

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Returns the number of the request, for its answer.
    std::uint32_t request(Sending sending, std::string_view text,
                          std::string_view channel = std::string_view()) noexcept;
    void answer(Sending sending, std::uint32_t number, std::string_view text) noexcept;

    /// Remembers the channel of a subscriber, for its events.
    void know(const void* subscriber, std::string_view channel) noexcept;
    void event(const void* subscriber, std::string_view text) noexcept;

    /// The exception that is being handled, on its way out of a request or, with the number 0, out of
    /// a subscriber's callback.
    void exception(std::uint32_t number, const void* subscriber = nullptr) noexcept;

    /// Writes what there is, and takes nothing in any more.
    void stop() noexcept;

private:
    struct Entry;
    struct Subscriber
    {
        const void* object;
        std::size_t length;
        char channel[64];
    };

    void take(Kind kind, Sending sending, std::uint32_t number, std::string_view text,
              std::string_view channel, const void* subscriber) noexcept;
    void put(const void* bytes, std::size_t size);
    void tellTrouble() noexcept;
    bool isForked() const;

    // The writer's, on its thread alone.
    void run() noexcept;
    void writeDown(std::size_t length, std::uint64_t dropped) noexcept;
    void add(const Record& record);
    void addDropped(std::uint64_t count, std::int64_t time, const char* reason);
    void flush();
    void fail(int error);
    int threadNumber(pthread_t thread);
    std::int64_t now() const;

    const Settings settings_;
    const long process_;
    const unsigned int forks_;
    const std::int64_t wallStart_;    ///< microseconds since 1970
    const std::int64_t steadyStart_;  ///< microseconds of the steady clock
    TraceFile file_;
    std::atomic<std::uint32_t> requests_{0};

    std::mutex mutex_;
    std::condition_variable changed_;
    std::unique_ptr<char[]> filling_;
    std::unique_ptr<char[]> writing_;  ///< the writer's
    std::size_t filled_ = 0;
    std::uint64_t dropped_ = 0;
    bool stopping_ = false;
    Subscriber subscribers_[64] = {};
    std::size_t subscriberCount_ = 0;

    std::atomic<bool> troubled_{false};
    char trouble_[512] = {};  ///< guarded by the mutex

    // The writer's.
    Mask mask_;
    std::string line_;
    std::string text_;
    std::uint64_t inText_ = 0;  ///< records in `text_`, the dropped ones that it tells of included
    std::uint64_t lost_ = 0;    ///< records that could not be written
    std::int64_t lastTime_ = 0;
    bool failing_ = false;
    pthread_t threads_[256] = {};
    std::size_t threadCount_ = 0;
    std::thread writer_;
};

/// One line to the framework's log.
void logLine(const char* text) noexcept;

}  // namespace recorder

#endif

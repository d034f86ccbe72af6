#include "recorder/Recorder.h"

#include "framework/Logging.h"

#include <cxxabi.h>
#include <pthread.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iterator>
#include <typeinfo>
#include <utility>

namespace recorder
{

namespace
{

constexpr std::size_t capacity = 256U << 10;  // of each of the two buffers
constexpr std::size_t piece = 64U << 10;      // that is written at once
constexpr std::chrono::milliseconds period(250);
constexpr const char* noRoom = "more at once than there is room for";

/// How often this process is the child of a fork(): what its parent recorded with is not its own.
/// It lacks the thread, and the lock may be held for ever.
std::atomic<unsigned int> forks{0};
[[maybe_unused]] const int counting = pthread_atfork(nullptr, nullptr, [] { ++forks; });

template <typename Clock>
std::int64_t microseconds()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(Clock::now().time_since_epoch())
        .count();
}

/// No signal of the application's is to be handled on the writer's thread; and one that a full file
/// or a broken pipe sends shall not end the process.
std::thread withoutSignals(void (*run)(void*), void* argument)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    struct Restore
    {
        ~Restore() { pthread_sigmask(SIG_SETMASK, set, nullptr); }
        const sigset_t* set;
    };
    const Restore restore{&before};
    return std::thread(run, argument);
}

/// "std::runtime_error: what it says" of the exception that is being handled.
void describeException(char* text, std::size_t size)
{
    const std::type_info* const type = abi::__cxa_current_exception_type();
    // None for what is not of this language, such as the end of a thread.
    if (type == nullptr)
    {
        std::snprintf(text, size, "unknown");
        return;
    }
    const auto describe = [&](const std::type_info& of, const char* separator, const char* what)
    {
        int status = 0;
        char* const name = abi::__cxa_demangle(of.name(), nullptr, nullptr, &status);
        std::snprintf(text, size, "%s%s%s", name != nullptr ? name : of.name(), separator, what);
        std::free(name);
    };
    try
    {
        throw;
    }
    catch (const std::exception& exception)
    {
        describe(typeid(exception), ": ", exception.what());
    }
    catch (...)
    {
        describe(*type, "", "");
    }
}

}  // namespace

void logLine(const char* text) noexcept
{
    constexpr const char* component = "SIP Communications Service";
    constexpr int level = 1;
    if (loggingOnAppOxa(component, level) != 0)
        logAppOxa(component, "./recorder/Recorder.cpp", level, 0, text);
}

/// In a buffer, in front of the channel's and the message's text.
struct Recorder::Entry
{
    std::int64_t time;
    pthread_t thread;
    std::uint32_t number;
    std::uint32_t channelLength;
    std::uint32_t textLength;
    Kind kind;
    Sending sending;
    std::uint64_t dropped;  ///< in front of it
};

Recorder::Recorder(const Settings& settings)
    : settings_(settings),
      process_(::getpid()),
      forks_(forks),
      wallStart_(microseconds<std::chrono::system_clock>()),
      steadyStart_(microseconds<std::chrono::steady_clock>()),
      file_(settings_.file, settings_.size),
      filling_(new char[capacity]),
      writing_(new char[capacity])
{
    // Room for the longest line, every byte of it escaped. What is never used costs no memory.
    line_.reserve(6 * capacity + piece);
    text_.reserve(6 * capacity + 2 * piece);
    writer_ = withoutSignals([](void* recorder) { static_cast<Recorder*>(recorder)->run(); }, this);
}

Recorder::~Recorder()
{
    stop();
}

bool Recorder::isForked() const
{
    return forks_ != forks.load(std::memory_order_relaxed);
}

std::int64_t Recorder::now() const
{
    return microseconds<std::chrono::steady_clock>() - steadyStart_;
}

std::uint32_t Recorder::request(Sending sending, std::string_view text,
                                std::string_view channel) noexcept
{
    const std::uint32_t number = ++requests_;
    take(Kind::request, sending, number, text, channel, nullptr);
    return number;
}

void Recorder::answer(Sending sending, std::uint32_t number, std::string_view text) noexcept
{
    take(Kind::answer, sending, number, text, std::string_view(), nullptr);
}

void Recorder::event(const void* subscriber, std::string_view text) noexcept
{
    take(Kind::event, Sending::request, 0, text, std::string_view(), subscriber);
}

void Recorder::exception(std::uint32_t number, const void* subscriber) noexcept
{
    char text[512];
    describeException(text, sizeof text);
    take(Kind::exception, Sending::request, number, text, std::string_view(), subscriber);
}

void Recorder::know(const void* subscriber, std::string_view channel) noexcept
{
    if (isForked())
        return;
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::size_t places = std::size(subscribers_);
    std::size_t place = 0;
    while (place < std::min(subscriberCount_, places) && subscribers_[place].object != subscriber)
        ++place;
    // Of too many the oldest goes.
    if (place == std::min(subscriberCount_, places))
        place = subscriberCount_++ % places;
    Subscriber& entry = subscribers_[place];
    entry.object = subscriber;
    entry.length = channel.copy(entry.channel, sizeof entry.channel);
}

void Recorder::take(Kind kind, Sending sending, std::uint32_t number, std::string_view text,
                    std::string_view channel, const void* subscriber) noexcept
{
    if (isForked())
        return;
    bool wake = false;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (stopping_)
            return;
        if (subscriber != nullptr)
            for (std::size_t i = 0; i < std::min(subscriberCount_, std::size(subscribers_)); ++i)
                if (subscribers_[i].object == subscriber)
                    channel = {subscribers_[i].channel, subscribers_[i].length};
        const std::size_t room = capacity - filled_;
        if (text.size() > room || channel.size() > room ||
            sizeof(Entry) + channel.size() + text.size() > room)
        {
            wake = dropped_++ == 0;
        }
        else
        {
            const std::size_t before = filled_;
            const Entry entry = {now(),
                                 pthread_self(),
                                 number,
                                 static_cast<std::uint32_t>(channel.size()),
                                 static_cast<std::uint32_t>(text.size()),
                                 kind,
                                 sending,
                                 std::exchange(dropped_, 0)};
            put(&entry, sizeof entry);
            put(channel.data(), channel.size());
            put(text.data(), text.size());
            // The first wakes the writer, which then waits for more until half the room is gone.
            wake = before == 0 || (before < capacity / 2 && filled_ >= capacity / 2);
        }
    }
    if (wake)
        changed_.notify_one();
    if (troubled_.load(std::memory_order_relaxed))
        tellTrouble();
}

void Recorder::put(const void* bytes, std::size_t size)
{
    if (size > 0)
        std::memcpy(filling_.get() + filled_, bytes, size);
    filled_ += size;
}

void Recorder::tellTrouble() noexcept
{
    if (!troubled_.exchange(false))
        return;
    char text[sizeof trouble_];
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::memcpy(text, trouble_, sizeof text);
    }
    logLine(text);
}

void Recorder::stop() noexcept
{
    if (isForked())
    {
        if (writer_.joinable())
            writer_.detach();
        return;
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_one();
    if (writer_.joinable())
        writer_.join();
    if (troubled_.load())
        tellTrouble();
}

void Recorder::run() noexcept
{
    std::unique_lock<std::mutex> lock(mutex_);
    for (bool last = false; !last;)
    {
        changed_.wait(lock, [this] { return stopping_ || filled_ > 0 || dropped_ > 0; });
        changed_.wait_for(lock, period,
                          [this] { return stopping_ || filled_ >= capacity / 2 || dropped_ > 0; });
        last = stopping_;
        filling_.swap(writing_);
        const std::size_t length = std::exchange(filled_, 0);
        const std::uint64_t dropped = std::exchange(dropped_, 0);
        lock.unlock();
        writeDown(length, dropped);
        lock.lock();
    }
}

void Recorder::writeDown(std::size_t length, std::uint64_t dropped) noexcept
{
    const char* const from = writing_.get();
    for (std::size_t at = 0; at < length;)
    {
        Entry entry;
        std::memcpy(&entry, from + at, sizeof entry);
        at += sizeof entry;
        const std::string_view channel(from + at, entry.channelLength);
        at += entry.channelLength;
        const std::string_view text(from + at, entry.textLength);
        at += entry.textLength;
        try
        {
            lastTime_ = entry.time;
            if (entry.dropped > 0)
                addDropped(entry.dropped, entry.time, noRoom);
            Record record = {entry.kind,   entry.sending, entry.time, threadNumber(entry.thread),
                             entry.number, channel,       text};
            std::string masked;
            if (settings_.mask)
            {
                masked = mask_.masked(entry.kind, text);
                record.text = masked;
            }
            add(record);
        }
        catch (const std::exception&)
        {
            // No memory.
            ++lost_;
        }
    }
    try
    {
        if (dropped > 0)
            addDropped(dropped, lastTime_, noRoom);
        flush();
    }
    catch (const std::exception&)
    {
        lost_ += dropped;
    }
}

void Recorder::add(const Record& record)
{
    line_.clear();
    appendRecord(line_, record);
    if (line_.size() > file_.longest() - 512)
    {
        ++lost_;
        return;
    }
    constexpr std::size_t roomForDropped = 400;  // three lines at most come before the next look
    if (!file_.hasRoom(text_.size() + line_.size() + roomForDropped))
    {
        flush();
        if (const int error = file_.startAnew())
            fail(error);
    }
    if (text_.empty() && file_.isNew())
        appendHead(text_, wallStart_, "recording plug-in", process_, settings_.mask);
    if (lost_ > 0)
        addDropped(std::exchange(lost_, 0), record.time, "could not be written");
    text_ += line_;
    ++inText_;
    if (text_.size() >= piece)
        flush();
}

void Recorder::addDropped(std::uint64_t count, std::int64_t time, const char* reason)
{
    if (text_.empty() && file_.isNew())
        appendHead(text_, wallStart_, "recording plug-in", process_, settings_.mask);
    appendDropped(text_, time, count, reason);
    inText_ += count;
}

void Recorder::flush()
{
    if (text_.empty())
        return;
    const int error = file_.write(text_);
    text_.clear();
    const std::uint64_t records = std::exchange(inText_, 0);
    if (error == 0)
    {
        failing_ = false;
        return;
    }
    lost_ += records;
    fail(error);
}

void Recorder::fail(int error)
{
    if (failing_)
        return;
    failing_ = true;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::snprintf(trouble_, sizeof trouble_, "recording: %s cannot be written: %s",
                      settings_.file.c_str(), std::strerror(error));
    }
    troubled_ = true;
}

int Recorder::threadNumber(pthread_t thread)
{
    std::size_t place = 0;
    while (place < threadCount_ && threads_[place] != thread)
        ++place;
    if (place == threadCount_)
    {
        if (place == std::size(threads_))
            return 0;
        threads_[threadCount_++] = thread;
    }
    return static_cast<int>(place) + 1;
}

}  // namespace recorder

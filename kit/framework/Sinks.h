#ifndef KIT_FRAMEWORK_SINKS_H
#define KIT_FRAMEWORK_SINKS_H

#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace kit
{

/// Somebody who is told something, and may be another from one moment to the next. Any thread may
/// call anything; the sink is called without a lock.
template <typename... Arguments>
class SharedSink
{
public:
    using Sink = std::function<void(const Arguments&...)>;

    void set(Sink sink)
    {
        auto shared = std::make_shared<const Sink>(std::move(sink));
        const std::lock_guard<std::mutex> lock(mutex_);
        sink_.swap(shared);
    }

    void tell(const Arguments&... arguments) const
    {
        const std::shared_ptr<const Sink> to = current();
        if (to != nullptr && *to)
            (*to)(arguments...);
    }

private:
    std::shared_ptr<const Sink> current() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return sink_;
    }

    mutable std::mutex mutex_;
    std::shared_ptr<const Sink> sink_;
};

/// Who is told once that a service has gone: when it goes, or at once when it has gone already.
class GoneNotice
{
public:
    void set(const std::function<void()>& sink)
    {
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            sink_ = sink;
            if (!gone_)
                return;
        }
        if (sink)
            sink();
    }

    void tell()
    {
        std::function<void()> to;
        {
            const std::lock_guard<std::mutex> lock(mutex_);
            if (std::exchange(gone_, true))
                return;
            to = sink_;
        }
        if (to)
            to();
    }

    bool given() const
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        return gone_;
    }

private:
    mutable std::mutex mutex_;
    std::function<void()> sink_;
    bool gone_ = false;
};

}  // namespace kit

#endif

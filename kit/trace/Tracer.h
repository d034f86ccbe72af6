#ifndef KIT_TRACE_TRACER_H
#define KIT_TRACE_TRACER_H

#include "kit/framework/Framework.h"
#include "kit/trace/Trace.h"

#include <functional>
#include <map>
#include <mutex>
#include <thread>

namespace kit
{

/// Makes the records of a trace: out of what a framework's observer sees, and of what goes past it.
/// Any thread may call.
///
///     kit::Tracer tracer(sink);
///     options.observer = [&](const kit::Passage& passage) { tracer.take(passage); };
class Tracer
{
public:
    /// Called with one record at a time, in their order; must only take it in.
    using Sink = std::function<void(const TraceRecord& record)>;

    explicit Tracer(Sink sink);

    /// For the first line of the trace.
    TraceHead head(const std::string& program) const;

    /// An event counts when it arrives, not again when it is delivered.
    void take(const Passage& passage);

    /// What is asked past the framework: the number is for the answer.
    int request(Sending sending, const std::string& text, const std::string& channel = "");
    void answer(int number, Sending sending, Delivery delivery, const std::string& text);
    void control(const std::string& command);

private:
    void tell(TraceRecord record);

    const Sink sink_;
    const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    const std::chrono::system_clock::time_point timeOfDay_ = std::chrono::system_clock::now();
    std::mutex mutex_;
    std::map<std::thread::id, int> threads_;
    std::map<std::uint64_t, int> numbers_;  ///< of the framework's requests that wait for an answer
    int requests_ = 0;
};

}  // namespace kit

#endif

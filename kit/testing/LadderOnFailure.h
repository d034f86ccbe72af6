#ifndef KIT_TESTING_LADDER_ON_FAILURE_H
#define KIT_TESTING_LADDER_ON_FAILURE_H

#include "kit/trace/Ladder.h"
#include "kit/trace/Tracer.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace kit
{

/// Prints what went over the frameworks of a GoogleTest test as a call flow when the test has failed,
/// and only then. One line for each framework that is to be watched:
///
///     options.observer = kit::LadderOnFailure::observer();
class LadderOnFailure : public testing::EmptyTestEventListener
{
public:
    /// For Framework::Options. Good for any thread, and for as long as the program runs.
    static Framework::Observer observer()
    {
        return [seen = seenSoFar()](const Passage& passage) { seen->tracer.take(passage); };
    }

    void OnTestStart(const testing::TestInfo&) override { (void)seenSoFar()->take(); }

    void OnTestEnd(const testing::TestInfo& test) override
    {
        const std::vector<TraceRecord> records = seenSoFar()->take();
        if (test.result()->Failed() && !records.empty())
            std::printf("What went over the framework in %s.%s:\n%s", test.test_suite_name(),
                        test.name(), textLadder(stepsOf(records)).c_str());
    }

private:
    struct Seen
    {
        std::vector<TraceRecord> take()
        {
            const std::lock_guard<std::mutex> lock(mutex);
            return std::exchange(records, {});
        }

        std::mutex mutex;
        std::vector<TraceRecord> records;
        Tracer tracer{[this](const TraceRecord& record)
                      {
                          const std::lock_guard<std::mutex> lock(mutex);
                          records.push_back(record);
                      }};
    };

    /// The first who asks makes the listener, which GoogleTest owns from then on.
    static std::shared_ptr<Seen> seenSoFar()
    {
        static const std::shared_ptr<Seen> seen = []
        {
            testing::UnitTest::GetInstance()->listeners().Append(new LadderOnFailure);
            return std::make_shared<Seen>();
        }();
        return seen;
    }
};

}  // namespace kit

#endif

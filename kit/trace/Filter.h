#ifndef KIT_TRACE_FILTER_H
#define KIT_TRACE_FILTER_H

#include "kit/trace/Trace.h"

#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace kit
{

/// Picks records out of a trace: those of a line, of a call, of some methods, or what has all of it.
/// An answer goes with its request, a call with the request that has made it.
class TraceFilter
{
public:
    struct Wanted
    {
        std::string line;  ///< "" for any
        std::string call;
        std::set<std::string> methods;  ///< empty for any
    };

    explicit TraceFilter(Wanted wanted);

    /// Whether records are wanted, one after the other, as far as it is known by now. It is not while
    /// a request may still turn out to have made the call.
    std::vector<bool> add(const TraceRecord& record);

    /// Those that were not known yet.
    std::vector<bool> finish();

private:
    bool isWanted(const TraceRecord& record);
    bool fitsLineAndCall(const Message& message);
    void decide(int request, bool wanted);
    std::vector<bool> known();

    const Wanted wanted_;
    std::map<std::string, std::string> lines_;  ///< by call
    std::set<int> requests_;                    ///< wanted, and not answered yet
    std::set<int> undecided_;                   ///< may have made the call
    bool callSeen_ = false;

    struct Record
    {
        int undecided;  ///< the request, or 0
        bool wanted;
    };
    std::deque<Record> records_;
};

/// The records of a trace that are wanted.
std::vector<TraceRecord> filtered(const std::vector<TraceRecord>& records,
                                  const TraceFilter::Wanted& wanted);

}  // namespace kit

#endif

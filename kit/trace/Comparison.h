#ifndef KIT_TRACE_COMPARISON_H
#define KIT_TRACE_COMPARISON_H

#include "kit/trace/Trace.h"

#include <string>
#include <vector>

namespace kit
{

/// How two traces differ, for people; "" where they do not. Times, threads, numbers of requests, and
/// commands to the simulation do not count. A call may have another identifier in the other trace,
/// but then has it everywhere.
///
///     41 | 41
///     - request HoldCall Line=1001 CallID=2 HoldCallReason=hold Manual=true
///     + request HoldCall Line=1001 CallID=7 HoldCallReason=deflect Manual=true
///       HoldCallReason: hold | deflect
///
/// Numbers count the records from 1, as the page of a trace does.
std::string differences(const std::vector<TraceRecord>& one, const std::vector<TraceRecord>& other);

}  // namespace kit

#endif

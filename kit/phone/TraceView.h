#ifndef KIT_PHONE_TRACE_VIEW_H
#define KIT_PHONE_TRACE_VIEW_H

#include "kit/phone/Verdict.h"
#include "kit/trace/Filter.h"

#include <string>

namespace kit::phone
{

/// How a trace that was recorded is to be looked at.
struct TraceView
{
    std::string file;
    TraceFilter::Wanted wanted;
    std::string other;  ///< a trace to compare with, or ""
    std::string page;   ///< where a page for a browser goes, or ""
    bool mermaid = false;
    bool watch = false;  ///< go on with what is written into it
    std::size_t width = 80;
};

/// Prints it. Raises std::runtime_error for files that cannot be read or written; what is wrong inside
/// of a trace is told, and is a mistake.
Verdict viewTrace(const TraceView& view);

}  // namespace kit::phone

#endif

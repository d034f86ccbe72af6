#ifndef KIT_TRACE_PAGE_H
#define KIT_TRACE_PAGE_H

#include "kit/trace/Trace.h"

#include <iosfwd>
#include <string>

namespace kit
{

/// Writes a page for a browser: the call flow of a trace, drawn, with the whole text of each
/// message. It needs nothing besides itself. `name` is its title.
void writePage(std::ostream& out, const Trace& trace, const std::string& name);

}  // namespace kit

#endif

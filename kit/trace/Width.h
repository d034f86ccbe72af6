#ifndef KIT_TRACE_WIDTH_H
#define KIT_TRACE_WIDTH_H

#include <cstddef>
#include <string>

namespace kit
{

/// Columns that a UTF-8 text takes on a terminal: two for a wide character, none for one that is put
/// over the character before it. Whatever the locale.
std::size_t displayWidth(const std::string& text);

/// The text, or its beginning and ".." in at most `limit` columns.
std::string cutToWidth(const std::string& text, std::size_t limit);

}  // namespace kit

#endif

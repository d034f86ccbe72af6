#ifndef KIT_PROTOCOL_LISTS_H
#define KIT_PROTOCOL_LISTS_H

#include <string>
#include <vector>

/// The list encoding, an invention: each item is followed by a comma, and a comma or a backslash
/// that belongs to the item has a backslash before it. So "" is the empty list, "," one empty item,
/// "1001,1002," two. The last comma may be missing. Numbers are decimal; an item that is none is 0.
namespace kit
{

std::string encodeList(const std::vector<std::string>& items);
std::string encodeList(const std::vector<int>& items);

std::vector<std::string> decodeTexts(const std::string& text);
std::vector<int> decodeNumbers(const std::string& text);

}  // namespace kit

#endif

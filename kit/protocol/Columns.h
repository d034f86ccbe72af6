#ifndef KIT_PROTOCOL_COLUMNS_H
#define KIT_PROTOCOL_COLUMNS_H

#include <algorithm>
#include <string>
#include <vector>

namespace kit
{

/// One column of a table, as in columnOf(events(), &Event::method).
template <typename Rows, typename Row, typename Text>
std::vector<std::string> columnOf(const Rows& rows, Text Row::*column)
{
    std::vector<std::string> texts;
    for (const Row& row : rows)
        texts.push_back(row.*column);
    return texts;
}

template <typename Item, typename Value>
bool contains(const std::vector<Item>& list, const Value& value)
{
    return std::find(list.begin(), list.end(), value) != list.end();
}

}  // namespace kit

#endif

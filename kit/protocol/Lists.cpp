#include "kit/protocol/Lists.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace kit
{

std::string encodeList(const std::vector<std::string>& items)
{
    std::string text;
    for (const std::string& item : items)
    {
        for (const char c : item)
        {
            if (c == ',' || c == '\\')
                text += '\\';
            text += c;
        }
        text += ',';
    }
    return text;
}

std::string encodeList(const std::vector<int>& items)
{
    std::string text;
    for (const int item : items)
        text += std::to_string(item) + ',';
    return text;
}

std::vector<std::string> decodeTexts(const std::string& text)
{
    std::vector<std::string> items;
    std::string item;
    bool open = false;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] == ',')
        {
            items.push_back(item);
            item.clear();
            open = false;
            continue;
        }
        if (text[i] == '\\' && i + 1 < text.size())
            ++i;
        item += text[i];
        open = true;
    }
    if (open)
        items.push_back(item);
    return items;
}

std::vector<int> decodeNumbers(const std::string& text)
{
    std::vector<int> numbers;
    for (const std::string& item : decodeTexts(text))
    {
        const long long number = std::strtoll(item.c_str(), nullptr, 10);
        const long long lowest = std::numeric_limits<int>::min();
        const long long highest = std::numeric_limits<int>::max();
        numbers.push_back(static_cast<int>(std::clamp(number, lowest, highest)));
    }
    return numbers;
}

}  // namespace kit

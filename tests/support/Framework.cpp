// What the library expects of the framework, done as simply as possible.

#include "framework/ClientUtils.h"
#include "framework/Logging.h"
#include "framework/MarloException.h"
#include "framework/Serializer.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

COMMUNICATIONS_SERVICE_VISIBLE int loggingOnAppOxa(const char*, int)
{
    return 1;
}

COMMUNICATIONS_SERVICE_VISIBLE void logAppOxa(const char*, const char*, int, int, const char*) {}

MarloException::MarloException() : contents() {}
MarloException::MarloException(const MarloException&) : contents() {}
MarloException::~MarloException() = default;

std::string ClientUtils::itos(int number)
{
    return std::to_string(number);
}

// Lists are items with commas between them, or behind each.

std::vector<std::string> Serializer::deserialize(std::string& text)
{
    std::vector<std::string> items;
    for (std::size_t begin = 0; begin < text.size();)
    {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        items.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return items;
}

void Serializer::deserialize(std::string& text, std::vector<int>& values)
{
    for (std::size_t begin = 0; begin < text.size();
         begin = std::min(text.find(',', begin), text.size()) + 1)
        values.push_back(static_cast<int>(std::strtol(text.c_str() + begin, nullptr, 10)));
}

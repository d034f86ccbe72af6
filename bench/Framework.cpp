// What the library expects of the framework, done as simply as possible, for the programs here.

#include "framework/ClientUtils.h"
#include "framework/Logging.h"
#include "framework/MarloException.h"
#include "framework/Serializer.h"

#include <cstdlib>

std::string ClientUtils::itos(int number)
{
    return std::to_string(number);
}

int loggingOnAppOxa(const char*, int)
{
    return 0;
}

void logAppOxa(const char*, const char*, int, int, const char*) {}

MarloException::MarloException() : contents() {}
MarloException::MarloException(const MarloException&) : contents() {}
MarloException::~MarloException() = default;

// Lists are written as items that each end with a comma.

std::vector<std::string> Serializer::deserialize(std::string& text)
{
    std::vector<std::string> items;
    std::size_t at = 0;
    for (std::size_t end = text.find(','); end != std::string::npos; end = text.find(',', at))
    {
        items.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return items;
}

void Serializer::deserialize(std::string& text, std::vector<int>& values)
{
    std::size_t at = 0;
    for (std::size_t end = text.find(','); end != std::string::npos; end = text.find(',', at))
    {
        values.push_back(std::atoi(text.c_str() + at));
        at = end + 1;
    }
}

#include "tests/support/Framework.h"

#include "framework/ClientUtils.h"
#include "framework/Logging.h"
#include "framework/MarloException.h"
#include "framework/Serializer.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace support
{

Hooks hooks;

}  // namespace support

using support::hooks;

int loggingOnAppOxa(const char* component, int level)
{
    return hooks.isLogging != nullptr ? hooks.isLogging(component, level) : 1;
}

void logAppOxa(const char* component, const char* sourceFile, int level, int line,
               const char* message)
{
    if (hooks.log != nullptr)
        hooks.log(component, sourceFile, level, line, message);
}

MarloException::MarloException() : contents()
{
    ++hooks.exceptions;
}

MarloException::MarloException(const MarloException& other)
{
    std::memcpy(contents, other.contents, sizeof contents);
    ++hooks.exceptions;
    ++hooks.copies;
}

MarloException::~MarloException()
{
    --hooks.exceptions;
}

std::string ClientUtils::itos(int number)
{
    if (hooks.inFramework)
        hooks.inFramework();
    return "itos(" + std::to_string(number) + ")";
}

// The text is spoilt, as it may be, so that none of it must be used afterwards.

std::vector<std::string> Serializer::deserialize(std::string& text)
{
    if (hooks.inFramework)
        hooks.inFramework();
    std::vector<std::string> items;
    for (std::size_t begin = 0; begin < text.size();)
    {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        items.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    text = "spoilt";
    return items;
}

void Serializer::deserialize(std::string& text, std::vector<int>& values)
{
    if (hooks.inFramework)
        hooks.inFramework();
    for (std::size_t begin = 0; begin < text.size();
         begin = std::min(text.find(',', begin), text.size()) + 1)
        values.push_back(std::atoi(text.c_str() + begin));
    text = "spoilt";
}

#include "kit/framework/Exception.h"

#include <algorithm>
#include <cstring>

MarloException::MarloException()
{
    std::memset(contents, 0, sizeof contents);
}

MarloException::MarloException(const MarloException& other)
{
    std::memcpy(contents, other.contents, sizeof contents);
}

MarloException::~MarloException() = default;

namespace kit
{

namespace
{

/// Reaches what only the framework may reach.
class Contents : public MarloException
{
public:
    static const char* of(const MarloException& exception)
    {
        return reinterpret_cast<const char*>(exception.*(&Contents::contents));
    }
};

}  // namespace

ChannelException::ChannelException(const std::string& text)
{
    const std::size_t length = std::min(text.size(), sizeof contents - 1);
    std::memcpy(contents, text.data(), length);
}

std::string textOf(const MarloException& exception)
{
    return Contents::of(exception);
}

}  // namespace kit

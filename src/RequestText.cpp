#include "RequestText.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <stdexcept>

namespace
{

constexpr std::size_t longestNumber = 11;  // -2147483648

/// memcpy for what mostly is 8 to 32 bytes long: two copies of a fixed length, which may overlap,
/// cost less than a call.
void copy(char* to, const char* from, std::size_t length)
{
    if (length < 8 || length > 32)
        std::memcpy(to, from, length);
    else if (length > 16)
    {
        std::memcpy(to, from, 16);
        std::memcpy(to + length - 16, from + length - 16, 16);
    }
    else
    {
        std::memcpy(to, from, 8);
        std::memcpy(to + length - 8, from + length - 8, 8);
    }
}

}  // namespace

RequestText::RequestText(std::string_view method) : at_(room_)
{
    text("Method", method);
}

RequestText::RequestText(std::string_view method, std::string_view line) : at_(room_)
{
    text("Method", method).text("Line", line);
}

RequestText::RequestText(std::string_view method, std::string_view line, int callId) : at_(room_)
{
    text("Method", method).text("Line", line).number("CallID", callId);
}

void RequestText::outgrown()
{
    throw std::length_error("request");
}

char* RequestText::put(std::string_view value, char* to)
{
    const std::size_t left = static_cast<std::size_t>(room_ + sizeof room_ - to);
    if (value.size() <= std::min(longestShortValue, left))
    {
        copy(to, value.data(), value.size());
        return to + value.size();
    }
    if (cut_ == nullptr)
    {
        if (longCount_ == std::size(longValues_))
            outgrown();
        longValues_[longCount_++] = {to, value.data(), value.size()};
    }
    return to;
}

char* RequestText::put(int value, char* to)
{
    return std::to_chars(to, to + longestNumber, value).ptr;
}

char* RequestText::putOrCut(const char* value, char* to)
{
    if (value != nullptr)
        return put(std::string_view(value), to);
    if (cut_ == nullptr)
        cut_ = to;
    return to;
}

std::string RequestText::str() const
{
    const char* const end = cut_ != nullptr ? cut_ : at_;
    if (longCount_ == 0)
        return std::string(room_, end);
    return withLongValues(end);
}

std::string RequestText::withLongValues(const char* end) const
{
    const LongValue* const last = longValues_ + longCount_;
    std::size_t length = static_cast<std::size_t>(end - room_);
    for (const LongValue* value = longValues_; value != last; ++value)
        length += value->length;
    std::string text;
    text.reserve(length);
    const char* from = room_;
    for (const LongValue* value = longValues_; value != last; from = value++->place)
        text.append(from, static_cast<std::size_t>(value->place - from))
            .append(value->begin, value->length);
    text.append(from, static_cast<std::size_t>(end - from));
    return text;
}

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
    opening("Method");
    put(method);
    closing("Method");
}

void RequestText::outgrown()
{
    throw std::length_error("request");
}

RequestText& RequestText::line(const std::string& value)
{
    return text("Line", value);
}

RequestText& RequestText::callId(int value)
{
    return number("CallID", value);
}

void RequestText::put(std::string_view value)
{
    const std::size_t left = static_cast<std::size_t>(room_ + sizeof room_ - at_);
    if (value.size() <= std::min(longestShortValue, left))
    {
        copy(at_, value.data(), value.size());
        at_ += value.size();
    }
    else if (cut_ == nullptr)
    {
        if (longCount_ == std::size(longValues_))
            outgrown();
        longValues_[longCount_++] = {static_cast<std::size_t>(at_ - room_), value};
    }
}

void RequestText::put(int value)
{
    at_ = std::to_chars(at_, at_ + longestNumber, value).ptr;
}

void RequestText::putOrCut(const char* value)
{
    if (value != nullptr)
        put(std::string_view(value));
    else if (cut_ == nullptr)
        cut_ = at_;
}

std::string RequestText::str() const
{
    const std::size_t end = static_cast<std::size_t>((cut_ != nullptr ? cut_ : at_) - room_);
    if (longCount_ == 0)
        return std::string(room_, end);
    std::size_t length = end;
    for (std::size_t i = 0; i < longCount_; ++i)
        length += longValues_[i].value.size();
    std::string text;
    text.reserve(length);
    std::size_t from = 0;
    for (std::size_t i = 0; i < longCount_; ++i)
    {
        text.append(room_ + from, longValues_[i].place - from);
        text.append(longValues_[i].value);
        from = longValues_[i].place;
    }
    text.append(room_ + from, end - from);
    return text;
}

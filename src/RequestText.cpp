#include "RequestText.h"

#include <charconv>

namespace
{

/// memcpy for the short pieces that a request is made of: two copies of a fixed length, which may
/// overlap, cost less than a call.
inline char* put(char* to, const char* from, std::size_t length)
{
    if (length >= 16 && length <= 32)
    {
        std::memcpy(to, from, 16);
        std::memcpy(to + length - 16, from + length - 16, 16);
    }
    else if (length >= 8 && length < 16)
    {
        std::memcpy(to, from, 8);
        std::memcpy(to + length - 8, from + length - 8, 8);
    }
    else if (length >= 4 && length < 8)
    {
        std::memcpy(to, from, 4);
        std::memcpy(to + length - 4, from + length - 4, 4);
    }
    else if (length == 1)
        *to = *from;
    else
        std::memcpy(to, from, length);
    return to + length;
}

}  // namespace

std::string RequestText::str() const
{
    std::size_t longest = payload_ != nullptr ? payload_->size() : 0;
    for (std::size_t i = 0; i < count_; ++i)
        longest += 2 * fields_[i].tagLength + fields_[i].length + 5;
    std::string text(longest, '\0');
    char* to = &text[0];
    for (std::size_t i = 0; i < count_; ++i)
    {
        const Field& field = fields_[i];
        *to++ = '<';
        to = put(to, field.tag, field.tagLength);
        *to++ = '>';
        if (field.kind == Kind::cut)
            break;
        if (field.kind == Kind::number)
            to = std::to_chars(to, to + longestNumber, field.number).ptr;
        else
            to = put(to, field.value, field.length);
        *to++ = '<';
        *to++ = '/';
        to = put(to, field.tag, field.tagLength);
        *to++ = '>';
    }
    to += payload_ != nullptr ? payload_->copy(to, payload_->size()) : 0;
    text.resize(static_cast<std::size_t>(to - &text[0]));
    return text;
}

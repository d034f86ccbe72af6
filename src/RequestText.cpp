#include "RequestText.h"

std::string RequestText::str() const
{
    const std::size_t payloadLength = payload_ != nullptr ? payload_->size() : 0;
    std::string text;
    text.reserve(flushed_.size() + used_ + payloadLength);
    text.append(flushed_);
    text.append(buffer_, used_);
    if (payload_ != nullptr)
        text.append(*payload_);
    return text;
}

RequestText& RequestText::cutOff(const char* tag)
{
    if (cut_)
        return *this;
    const std::size_t length = std::strlen(tag);
    char* to = room(length + 2);
    *to++ = '<';
    std::memcpy(to, tag, length);
    to[length] = '>';
    cut_ = true;
    return *this;
}

char* RequestText::roomBehindBuffer(std::size_t length)
{
    flushed_.append(buffer_, used_);
    used_ = 0;
    if (length <= sizeof buffer_)
        return room(length);
    flushed_.append(length, '\0');
    return &flushed_[flushed_.size() - length];
}

#ifndef COMMUNICATIONS_SERVICE_REQUEST_TEXT_H
#define COMMUNICATIONS_SERVICE_REQUEST_TEXT_H

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string>

/// Writes one request: the method, then the fields in the order of the calls.
///
/// The pieces are put together in a buffer on the stack, so that the text itself is the only
/// allocation of an ordinary request. The functions stand here so that the compiler sees the length
/// of each literal. Numbers are written without the locale. Values are only read until str().
class RequestText
{
public:
    explicit RequestText(const char* method) { field("Method", method, std::strlen(method)); }

    RequestText(const RequestText&) = delete;
    RequestText& operator=(const RequestText&) = delete;

    RequestText& text(const char* tag, const std::string& value)
    {
        return field(tag, value.data(), value.size());
    }

    /// A null value cuts the request off behind the opening tag, on purpose: nothing that follows
    /// is written.
    RequestText& text(const char* tag, const char* value)
    {
        return value != nullptr ? field(tag, value, std::strlen(value)) : cutOff(tag);
    }

    RequestText& number(const char* tag, int value)
    {
        char digits[16];
        const char* end = std::to_chars(digits, digits + sizeof digits, value).ptr;
        return field(tag, digits, static_cast<std::size_t>(end - digits));
    }

    RequestText& flag(const char* tag, bool value) { return field(tag, value ? "1" : "0", 1); }

    /// Raw bytes behind the last field, with no element around them.
    RequestText& payload(const std::string& value)
    {
        payload_ = &value;
        return *this;
    }

    std::string str() const;

private:
    RequestText& field(const char* tag, const char* value, std::size_t length)
    {
        if (cut_)
            return *this;
        const std::size_t tagLength = std::strlen(tag);
        char* to = room(2 * tagLength + length + 5);
        *to++ = '<';
        std::memcpy(to, tag, tagLength);
        to += tagLength;
        *to++ = '>';
        std::memcpy(to, value, length);
        to += length;
        *to++ = '<';
        *to++ = '/';
        std::memcpy(to, tag, tagLength);
        to += tagLength;
        *to = '>';
        return *this;
    }

    RequestText& cutOff(const char* tag);

    char* room(std::size_t length)
    {
        if (length > sizeof buffer_ - used_)
            return roomBehindBuffer(length);
        char* to = buffer_ + used_;
        used_ += length;
        return to;
    }

    char* roomBehindBuffer(std::size_t length);

    char buffer_[512];
    std::size_t used_ = 0;
    std::string flushed_;  ///< what stands before the buffer, once it was full
    const std::string* payload_ = nullptr;
    bool cut_ = false;
};

#endif

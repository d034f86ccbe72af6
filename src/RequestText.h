#ifndef COMMUNICATIONS_SERVICE_REQUEST_TEXT_H
#define COMMUNICATIONS_SERVICE_REQUEST_TEXT_H

#include <cstddef>
#include <cstring>
#include <string>

/// Collects one request: the method, then the fields in the order of the calls.
///
/// Elements are written at once, into a room on the stack that holds the longest request there is
/// with short values. Of a long value only the place is kept, until str() puts the whole together:
/// it must live, unchanged, until then. So the text is the only allocation.
///
/// Tags are literals. They are written inline, so that the compiler knows their length; whatever
/// has a length of its own is written by functions that exist once.
class RequestText
{
public:
    explicit RequestText(const char* method) : RequestText(method, std::strlen(method)) {}

    RequestText(const RequestText&) = delete;
    RequestText& operator=(const RequestText&) = delete;

    RequestText& text(const char* tag, const std::string& value)
    {
        opening(tag);
        put(value.data(), value.size());
        return closing(tag);
    }

    /// A null value cuts the request off behind the opening tag, on purpose: nothing that follows
    /// is written.
    RequestText& text(const char* tag, const char* value)
    {
        opening(tag);
        putOrCut(value);
        return closing(tag);
    }

    RequestText& number(const char* tag, int value)
    {
        opening(tag);
        put(value);
        return closing(tag);
    }

    RequestText& flag(const char* tag, bool value)
    {
        opening(tag);
        *at_++ = value ? '1' : '0';
        return closing(tag);
    }

    // The two fields that most requests begin with.
    RequestText& line(const std::string& value);
    RequestText& callId(int value);

    /// Raw bytes behind the last field, with no element around them.
    RequestText& payload(const std::string& value)
    {
        put(value.data(), value.size());
        return *this;
    }

    std::string str() const;

private:
    RequestText(const char* method, std::size_t length);

    [[gnu::always_inline]] void opening(const char* tag)
    {
        const std::size_t length = std::strlen(tag);
        char* const to = at_;
        to[0] = '<';
        std::memcpy(to + 1, tag, length);
        to[length + 1] = '>';
        at_ = to + length + 2;
    }

    [[gnu::always_inline]] RequestText& closing(const char* tag)
    {
        const std::size_t length = std::strlen(tag);
        char* const to = at_;
        to[0] = '<';
        to[1] = '/';
        std::memcpy(to + 2, tag, length);
        to[length + 2] = '>';
        at_ = to + length + 3;
        return *this;
    }

    void put(const char* value, std::size_t length);
    void put(int value);
    void putOrCut(const char* value);

    struct LongValue
    {
        std::size_t place;
        const char* value;
        std::size_t length;
    };

    char* at_;
    const char* cut_ = nullptr;
    std::size_t longCount_ = 0;
    LongValue longValues_[3];
    char room_[512];
};

#endif

#ifndef COMMUNICATIONS_SERVICE_REQUEST_TEXT_H
#define COMMUNICATIONS_SERVICE_REQUEST_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

/// Collects one request: the method, then the fields in the order of the calls.
///
/// Elements are written at once, into a room on the stack. Of a long value only the place is kept,
/// until str() puts the whole together: it must live, unchanged, until then. So the text is the only
/// allocation here. The longest request there is takes 336 bytes of the room; a longer one than the
/// room holds, or one with more long values, ends in std::length_error.
///
/// Tags are literals. They are written inline, so that the compiler knows their length; whatever
/// has a length of its own is written by functions that exist once.
class RequestText
{
public:
    explicit RequestText(std::string_view method);

    RequestText(const RequestText&) = delete;
    RequestText& operator=(const RequestText&) = delete;

    [[gnu::always_inline]] RequestText& text(std::string_view tag, const std::string& value)
    {
        opening(tag);
        put(value);
        return closing(tag);
    }

    /// A null value cuts the request off behind the opening tag, on purpose: nothing that follows
    /// is written.
    [[gnu::always_inline]] RequestText& text(std::string_view tag, const char* value)
    {
        opening(tag);
        putOrCut(value);
        return closing(tag);
    }

    [[gnu::always_inline]] RequestText& number(std::string_view tag, int value)
    {
        opening(tag);
        put(value);
        return closing(tag);
    }

    [[gnu::always_inline]] RequestText& flag(std::string_view tag, bool value)
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
        put(value);
        return *this;
    }

    std::string str() const;

private:
    static constexpr std::size_t longestShortValue = 64;
    /// What stands around the two tags of an element, and between them.
    static constexpr std::size_t around = std::string_view("<></>").size() + longestShortValue;

    [[noreturn]] static void outgrown();

    [[gnu::always_inline]] void opening(std::string_view tag)
    {
        if (room_ + sizeof room_ - at_ < static_cast<std::ptrdiff_t>(2 * tag.size() + around))
            outgrown();
        char* const to = at_;
        to[0] = '<';
        tag.copy(to + 1, tag.size());
        to[tag.size() + 1] = '>';
        at_ = to + tag.size() + 2;
    }

    [[gnu::always_inline]] RequestText& closing(std::string_view tag)
    {
        char* const to = at_;
        to[0] = '<';
        to[1] = '/';
        tag.copy(to + 2, tag.size());
        to[tag.size() + 2] = '>';
        at_ = to + tag.size() + 3;
        return *this;
    }

    void put(std::string_view value);
    void put(int value);
    void putOrCut(const char* value);

    struct LongValue
    {
        std::size_t place;
        std::string_view value;
    };

    char* at_;
    const char* cut_ = nullptr;
    std::size_t longCount_ = 0;
    LongValue longValues_[3];
    char room_[512];
};

#endif

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

    // With the two fields that most requests begin with.
    RequestText(std::string_view method, std::string_view line);
    RequestText(std::string_view method, std::string_view line, int callId);

    RequestText(const RequestText&) = delete;
    RequestText& operator=(const RequestText&) = delete;

    [[gnu::always_inline]] RequestText& text(std::string_view tag, std::string_view value)
    {
        return closing(tag, put(value, opening(tag)));
    }

    /// A null value cuts the request off behind the opening tag, on purpose: nothing that follows
    /// is written.
    [[gnu::always_inline]] RequestText& text(std::string_view tag, const char* value)
    {
        return closing(tag, putOrCut(value, opening(tag)));
    }

    [[gnu::always_inline]] RequestText& number(std::string_view tag, int value)
    {
        return closing(tag, put(value, opening(tag)));
    }

    [[gnu::always_inline]] RequestText& flag(std::string_view tag, bool value)
    {
        char* const to = opening(tag);
        *to = value ? '1' : '0';
        return closing(tag, to + 1);
    }

    /// Raw bytes behind the last field, with no element around them.
    RequestText& payload(std::string_view value)
    {
        at_ = put(value, at_);
        return *this;
    }

    std::string str() const;

private:
    static constexpr std::size_t longestShortValue = 64;
    /// What stands around the two tags of an element, and between them.
    static constexpr std::size_t around = std::string_view("<></>").size() + longestShortValue;

    [[noreturn]] static void outgrown();

    // Where the next byte goes is handed from one to the next: kept in memory, each would wait for it.

    [[gnu::always_inline]] char* opening(std::string_view tag)
    {
        char* const to = at_;
        if (room_ + sizeof room_ - to < static_cast<std::ptrdiff_t>(2 * tag.size() + around))
            outgrown();
        to[0] = '<';
        tag.copy(to + 1, tag.size());
        to[tag.size() + 1] = '>';
        return to + tag.size() + 2;
    }

    [[gnu::always_inline]] RequestText& closing(std::string_view tag, char* to)
    {
        to[0] = '<';
        to[1] = '/';
        tag.copy(to + 2, tag.size());
        to[tag.size() + 2] = '>';
        at_ = to + tag.size() + 3;
        return *this;
    }

    char* put(std::string_view value, char* to);
    static char* put(int value, char* to);
    char* putOrCut(const char* value, char* to);
    std::string withLongValues(const char* end) const;

    struct LongValue
    {
        const char* place;
        const char* begin;
        std::size_t length;
    };

    char* at_;
    const char* cut_ = nullptr;
    std::size_t longCount_ = 0;
    LongValue longValues_[3];
    char room_[512];
};

#endif

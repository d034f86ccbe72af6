#ifndef COMMUNICATIONS_SERVICE_REQUEST_TEXT_H
#define COMMUNICATIONS_SERVICE_REQUEST_TEXT_H

#include <cassert>
#include <cstddef>
#include <cstring>
#include <string>

/// Collects one request: the method, then the fields in the order of the calls.
///
/// Only the addresses of the values are kept: they must live, unchanged, until str() writes them
/// all, once the length of the whole is known. So the text is the only allocation, and there is
/// nothing to tidy up in the operations. The functions stand here so that the compiler sees the
/// length of each literal.
class RequestText
{
public:
    explicit RequestText(const char* method)
    {
        add(Kind::text, "Method", method, std::strlen(method));
    }

    RequestText(const RequestText&) = delete;
    RequestText& operator=(const RequestText&) = delete;

    RequestText& text(const char* tag, const std::string& value)
    {
        return add(Kind::text, tag, value.data(), value.size());
    }

    /// A null value cuts the request off behind the opening tag, on purpose: nothing that follows
    /// is written.
    RequestText& text(const char* tag, const char* value)
    {
        return value != nullptr ? add(Kind::text, tag, value, std::strlen(value))
                                : add(Kind::cut, tag, nullptr, 0);
    }

    RequestText& number(const char* tag, int value)
    {
        return add(Kind::number, tag, nullptr, longestNumber, value);
    }

    RequestText& flag(const char* tag, bool value)
    {
        return add(Kind::text, tag, value ? "1" : "0", 1);
    }

    /// Raw bytes behind the last field, with no element around them.
    RequestText& payload(const std::string& value)
    {
        payload_ = &value;
        return *this;
    }

    std::string str() const;

private:
    enum class Kind
    {
        text,
        number,
        cut
    };

    struct Field
    {
        Kind kind;
        int number;
        const char* tag;
        std::size_t tagLength;
        const char* value;
        std::size_t length;  ///< of the value; the most that it can be for a number
    };

    RequestText& add(Kind kind, const char* tag, const char* value, std::size_t length,
                     int number = 0)
    {
        assert(count_ < room);
        fields_[count_++] = {kind, number, tag, std::strlen(tag), value, length};
        return *this;
    }

    static constexpr std::size_t longestNumber = 11;  // -2147483648
    static constexpr std::size_t room = 7;            // the method and six fields

    Field fields_[room];
    std::size_t count_ = 0;
    const std::string* payload_ = nullptr;
};

#endif

#include "FieldReaders.h"

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace
{

std::uint32_t four(const char* bytes)
{
    std::uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

std::uint64_t eight(const char* bytes)
{
    std::uint64_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// The next "<", or the end. Most values are so short that looking at eight bytes at once beats
/// memchr.
inline const char* nextBracket(const char* at, const char* end)
{
    constexpr bool firstByteIsLowest = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    constexpr std::uint64_t ones = 0x0101010101010101;
    for (; end - at >= 8; at += 8)
    {
        const std::uint64_t bytes = eight(at) ^ '<' * ones;  // 0 where a "<" stands
        const std::uint64_t found = (bytes - ones) & ~bytes & 0x80 * ones;
        if (found != 0)
            return firstByteIsLowest ? at + static_cast<unsigned int>(__builtin_ctzll(found)) / 8
                                     : std::find(at, end, '<');
    }
    while (at != end && *at != '<')
        ++at;
    return at;
}

constexpr std::ptrdiff_t shortestTag = 5;  // "<URI>"

}  // namespace

MessageFields::~MessageFields()
{
    for (Field* field = fields_; field != given_; ++field)
        if (field->kind == Kind::text)
            field->text.~basic_string();
}

void MessageFields::read(std::string_view message)
{
    find(message);
    Field* const last = fields_ + count_;
    if (ends_ == Ends::anywhere)
        for (Field* field = fields_; field != last; ++field)
            if (field->end < field->begin)  // also when there is none
                field->end = message.data() + message.size();
    for (; given_ != last; ++given_)
        give(*given_);
}

/// Makes the value out of what has been found.
inline void MessageFields::give(Field& field)
{
    const bool isThere = field.begin != nullptr && field.end != nullptr;
    const std::size_t length = isThere ? static_cast<std::size_t>(field.end - field.begin) : 0;
    if (field.kind == Kind::text)
        new (&field.text) std::string(isThere ? field.begin : "", length);
    else if (field.kind == Kind::view)
        field.view = std::string_view(field.begin, length);
    else
    {
        const int absent = field.kind == Kind::numberOfText ? 0 : -1;
        const int number = isThere ? decimal({field.begin, length}) : absent;
        if (field.kind == Kind::flag)
            field.flag = number != 0;
        else
            field.number = number;
    }
}

/// Whether the field's tag and its ">" stand at `name`. Comparisons of a fixed length, which may
/// overlap, cost less than a call of memcmp.
inline bool MessageFields::isTagAt(const char* name, const char* end, const Field& field)
{
    const std::size_t length = field.length;
    if (end - name <= static_cast<std::ptrdiff_t>(length) || name[length] != '>')
        return false;
    const char* const tag = field.tag;
    const char* const nameEnd = name + length;
    const char* const tagEnd = tag + length;
    if (length < 4)
        return name[0] == tag[0] && name[1] == tag[1] && name[2] == tag[2];
    if (length < 8)
        return four(name) == four(tag) && four(nameEnd - 4) == four(tagEnd - 4);
    if (eight(name) != eight(tag) || eight(nameEnd - 8) != eight(tagEnd - 8))
        return false;
    return length <= 16 ||
           (eight(name + 8) == eight(tag + 8) && eight(nameEnd - 16) == eight(tagEnd - 16));
}

/// Whether the field's end stands at `at`.
inline bool MessageFields::isEndAt(const char* at, const char* end, const Field& field)
{
    return at[0] == '<' && at[1] == '/' && isTagAt(at + 2, end, field);
}

void MessageFields::find(std::string_view message)
{
    const char* const end = message.data() + message.size();
    Field* const last = fields_ + count_;
    Field* next = fields_;      // the one that is expected
    Field* open = nullptr;      // the last one whose value holds a "<"
    std::size_t left = count_;  // fields of which the opening or the end has not been found
    const char* at = nextBracket(message.data(), end);
    while (end - at >= shortestTag && left != 0)
    {
        // Elements that stand in the order of the fields are taken whole.
        while (next != last && *at == '<' && isTagAt(at + 1, end, *next) && next->begin == nullptr)
        {
            Field& field = *next++;
            field.begin = at + field.length + 2;
            at = nextBracket(field.begin, end);
            if (field.end != nullptr)  // it stands before the opening
            {
                --left;
                break;
            }
            if (!isEndAt(at, end, field))
            {
                open = &field;
                break;
            }
            field.end = at;
            at += field.length + 3;
            --left;
        }
        if (*at != '<')
        {
            at = nextBracket(at, end);
            continue;
        }
        const bool isEnd = at[1] == '/';
        const char* const name = at + (isEnd ? 2 : 1);
        if ((firstLetters_ & letter(*name)) != 0)
        {
            Field* const field = isEnd && open != nullptr && isTagAt(name, end, *open)
                                     ? open
                                     : fieldAt(name, end, next);
            if (field != nullptr && !isEnd && field->begin == nullptr)
            {
                next = field;
                continue;
            }
            if (field != nullptr && isEnd && field->end == nullptr &&
                (ends_ == Ends::anywhere || field->begin != nullptr))
            {
                field->end = at;
                left -= field->begin != nullptr;
            }
        }
        ++at;
        if (*at != '<')  // it may well be when there is nothing but "<"
            at = nextBracket(at, end);
    }
}

/// The field whose tag stands at `name`, or null. Those behind the expected one are the likeliest.
MessageFields::Field* MessageFields::fieldAt(const char* name, const char* end, Field* next)
{
    for (Field* field = next; field != fields_ + count_; ++field)
        if (isTagAt(name, end, *field))
            return field;
    for (Field* field = next; field-- != fields_;)
        if (isTagAt(name, end, *field))
            return field;
    return nullptr;
}

EventMessage::EventMessage(std::string_view whole) : text(whole), withFields(whole)
{
    constexpr std::string_view opening = "<Method>";
    constexpr std::string_view closing = "</Method>";
    // Mostly it stands in front and holds no tag, so that no field can begin before its end.
    if (text.substr(0, opening.size()) == opening)
    {
        const std::size_t end = text.find('<', opening.size());
        if (end != std::string_view::npos && text.substr(end, closing.size()) == closing)
        {
            method = text.substr(opening.size(), end - opening.size());
            withFields.remove_prefix(end + closing.size());
            return;
        }
    }
    EventFields event;
    const std::string_view& found = event.view("Method");
    event.read(*this);
    method = found;
}

int decimal(std::string_view text)
{
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    const char* at = text.data();
    const char* const end = at + text.size();
    bool isNegative = false;
    if (at != end && !isDigit(*at))
    {
        while (at != end && (*at == ' ' || (*at >= '\t' && *at <= '\r')))
            ++at;
        isNegative = at != end && *at == '-';
        if (isNegative || (at != end && *at == '+'))
            ++at;
    }
    const std::int64_t highest = isNegative ? 2147483648 : 2147483647;
    std::int64_t value = 0;
    for (; at != end && isDigit(*at); ++at)
        value = std::min(value * 10 + (*at - '0'), highest);
    return static_cast<int>(isNegative ? -value : value);
}

int resultOf(std::string_view word)
{
    if (word == "sfiSuccess")
        return sfiSuccess;
    if (word == "sfiFailureCallBackInvalidState")
        return sfiFailureCallBackInvalidState;
    if (word == "sfiFailureCallBackNoCallInfo")
        return sfiFailureCallBackNoCallInfo;
    if (word == "sfiFailureCallBackToMany")
        return sfiFailureCallBackToMany;
    if (word == "sfiFailureCallBackAllreadyExists")
        return sfiFailureCallBackAllreadyExists;
    return sfiFailure;
}

const char* stateName(sfiServiceState state)
{
    switch (state)
    {
    case sfiServiceInService:
        return "sfiServiceInService";
    case sfiServiceOutOfService:
        return "sfiServiceOutOfService";
    case sfiServiceDoNotDisturb:
        return "sfiServiceDoNotDisturb";
    }
    return "";
}

std::string serialize(sfiServiceState state)
{
    return stateName(state);
}

int CommunicationsServiceProxy::getResult(const std::string& response)
{
    return resultOf(response);
}

// The named readers of both classes are part of the contract: the rules above, for one field that is
// given by its two whole tags, whatever these hold.

namespace
{

std::string_view valueInEvent(std::string_view startTag, std::string_view message,
                              std::string_view endTag)
{
    const std::size_t start = message.find(startTag);
    if (start == std::string_view::npos)
        return {};
    const std::size_t begin = start + startTag.size();
    const std::size_t end = message.find(endTag, begin);
    if (end == std::string_view::npos)
        return {};
    return message.substr(begin, end - begin);
}

std::string_view valueInAnswer(std::string_view startTag, std::string_view message,
                               std::string_view endTag)
{
    const std::size_t start = message.find(startTag);
    if (start == std::string_view::npos)
        return {};
    const std::size_t begin = start + startTag.size();
    // An end before the begin, or none, wraps round to a length beyond the message, on purpose.
    return message.substr(begin, message.find(endTag) - begin);
}

long numberOf(std::string_view value)
{
    return value.data() != nullptr ? decimal(value) : -1;
}

}  // namespace

std::string CommunicationsServiceProxy::getParamAsString(const std::string& startTag,
                                                         const std::string& message,
                                                         const std::string& endTag)
{
    return std::string(valueInAnswer(startTag, message, endTag));
}

long CommunicationsServiceProxy::getParamAsLong(const std::string& startTag,
                                                const std::string& message,
                                                const std::string& endTag)
{
    return numberOf(valueInAnswer(startTag, message, endTag));
}

std::string CommunicationsServiceEventInvoker::getParamAsString(const std::string& startTag,
                                                                const std::string& message,
                                                                const std::string& endTag)
{
    return std::string(valueInEvent(startTag, message, endTag));
}

long CommunicationsServiceEventInvoker::getParamAsLong(const std::string& startTag,
                                                       const std::string& message,
                                                       const std::string& endTag)
{
    return numberOf(valueInEvent(startTag, message, endTag));
}

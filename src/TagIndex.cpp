#include "TagIndex.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <iterator>

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

/// memcmp for names: comparisons of a fixed length, which may overlap, cost less than a call.
inline bool same(const char* left, const char* right, std::size_t length)
{
    assert(length >= 3 && length <= 32);
    const char* const leftEnd = left + length;
    const char* const rightEnd = right + length;
    if (length < 4)
        return left[0] == right[0] && left[1] == right[1] && left[2] == right[2];
    if (length < 8)
        return four(left) == four(right) && four(leftEnd - 4) == four(rightEnd - 4);
    if (length > 16 &&
        (eight(left + 8) != eight(right + 8) || eight(leftEnd - 16) != eight(rightEnd - 16)))
        return false;
    return eight(left) == eight(right) && eight(leftEnd - 8) == eight(rightEnd - 8);
}

/// Whether the tag's name and its ">" stand at `name`.
inline bool isTagAt(const char* name, const char* end, std::string_view tag)
{
    return end - name > static_cast<std::ptrdiff_t>(tag.size()) && name[tag.size()] == '>' &&
           same(name, tag.data(), tag.size());
}

/// Whether the tag's end stands at `bracket`.
inline bool isClosingAt(const char* bracket, const char* end, std::string_view tag)
{
    return bracket[0] == '<' && bracket[1] == '/' && isTagAt(bracket + 2, end, tag);
}

/// The next "<", or the end. Values are so short that looking at eight bytes at once beats memchr.
inline const char* nextBracket(const char* at, const char* end)
{
    constexpr bool firstByteIsLowest = __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;
    constexpr std::uint64_t ones = 0x0101010101010101;
    for (; end - at >= 8; at += 8)
    {
        const std::uint64_t bytes = eight(at) ^ '<' * ones;  // 0 where a "<" stands
        const std::uint64_t found = (bytes - ones) & ~bytes & 0x80 * ones;
        if (found != 0)
            return firstByteIsLowest ? at + __builtin_ctzll(found) / 8 : std::find(at, end, '<');
    }
    while (at != end && *at != '<')
        ++at;
    return at;
}

/// Whether a tag may begin at this "<": a name and ">" follow. The text's NUL ends a name at the latest.
bool canBeTag(const char* bracket)
{
    const char* at = bracket + (bracket[1] == '/' ? 2 : 1);
    while ((*at >= 'a' && *at <= 'z') || (*at >= 'A' && *at <= 'Z') || (*at >= '0' && *at <= '9') ||
           *at == '_')
        ++at;
    return *at == '>';
}

constexpr std::ptrdiff_t shortestTag = 5;  // "<URI>"

}  // namespace

std::string_view TagIndex::next(std::string_view tag)
{
    // The text's own NUL stands behind its last byte.
    if (*at_ != '<' || !isTagAt(at_ + 1, end_, tag))
        return {};
    const char* const bracket = nextBracket(at_ + tag.size() + 2, end_);
    return isClosingAt(bracket, end_, tag) ? take(tag, bracket) : nextWithBrackets(tag, bracket);
}

/// Goes on for a value that holds "<": as long as no tag can begin there.
std::string_view TagIndex::nextWithBrackets(std::string_view tag, const char* bracket)
{
    while (bracket != end_ && !canBeTag(bracket))
    {
        bracket = nextBracket(bracket + 1, end_);
        if (isClosingAt(bracket, end_, tag))
            return take(tag, bracket);
    }
    return {};
}

inline std::string_view TagIndex::take(std::string_view tag, const char* bracket)
{
    assert(message_.data() + message_.find("<" + std::string(tag) + ">") == at_);
    const char* const value = at_ + tag.size() + 2;
    at_ = bracket + tag.size() + 3;
    return std::string_view(value, static_cast<std::size_t>(bracket - value));
}

TagIndex::Place TagIndex::opening(std::string_view tag)
{
    if (!isNoted_)
        note();
    const Place found = firstNoted(tag);
    const Place place = found.at != npos ? found : Place{search("<", tag, rest_), noteCount_};
    assert(place.at == message_.find("<" + std::string(tag) + ">"));
    return place;
}

TagIndex::Place TagIndex::firstNoted(std::string_view tag) const
{
    const char bytes[] = {tag[0], tag[1], tag[2], tag.size() > 3 ? tag[3] : '>'};
    const std::uint32_t head = four(bytes);
    for (std::size_t i = chains_[head % std::size(chains_)]; i != room; i = notes_[i].next)
        if (notes_[i].head == head && isTagAt(notes_[i].at + 1, end_, tag))
            return {position(notes_[i].at), i};
    return {npos, noteCount_};
}

std::size_t TagIndex::closing(std::string_view tag, const Place& from) const
{
    for (std::size_t i = from.note; i < noteCount_; ++i)
        if (isClosingAt(notes_[i].at, end_, tag))
            return position(notes_[i].at);
    return search("</", tag, std::max(from.at, rest_));
}

void TagIndex::note()
{
    isNoted_ = true;
    const char* at = nextBracket(at_, end_);
    for (; end_ - at >= shortestTag && noteCount_ < room; at = nextBracket(at + 1, end_))
        notes_[noteCount_++] = {at, four(at + 1), room};
    rest_ = position(at);
    // From the last to the first, so that each chain begins with its first.
    std::fill(std::begin(chains_), std::end(chains_), room);
    for (std::size_t i = noteCount_; i-- > 0;)
    {
        std::uint8_t& first = chains_[notes_[i].head % std::size(chains_)];
        notes_[i].next = first;
        first = static_cast<std::uint8_t>(i);
    }
}

std::size_t TagIndex::search(std::string_view start, std::string_view tag, std::size_t from) const
{
    std::size_t at = message_.find(start, from);
    while (at != npos && !isTagAt(message_.data() + at + start.size(), end_, tag))
        at = message_.find(start, at + 1);
    return at;
}

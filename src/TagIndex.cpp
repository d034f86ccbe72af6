#include "TagIndex.h"

#include <cassert>
#include <cstring>

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

/// memcmp for names, which are short: two comparisons of a fixed length, which may overlap, cost
/// less than a call.
inline bool same(const char* left, const char* right, std::size_t length)
{
    if (length > 16)
        return std::memcmp(left, right, length) == 0;
    const char* const leftEnd = left + length;
    const char* const rightEnd = right + length;
    if (length >= 8)
        return eight(left) == eight(right) && eight(leftEnd - 8) == eight(rightEnd - 8);
    if (length >= 4)
        return four(left) == four(right) && four(leftEnd - 4) == four(rightEnd - 4);
    return left[0] == right[0] && left[1] == right[1] && left[2] == right[2];
}

/// Whether the tag's name and its ">" stand at `name`.
inline bool isTagAt(const char* name, const char* end, std::string_view tag)
{
    return end - name > static_cast<std::ptrdiff_t>(tag.size()) && name[tag.size()] == '>' &&
           same(name, tag.data(), tag.size());
}

/// The next "<", or the end. Most values are so short that a call costs more than looking.
inline const char* nextBracket(const char* at, const char* end)
{
    if (end - at > 4)
        for (int looks = 0; looks < 4; ++looks, ++at)
            if (*at == '<')
                return at;
    const void* const found = std::memchr(at, '<', static_cast<std::size_t>(end - at));
    return found != nullptr ? static_cast<const char*>(found) : end;
}

/// Whether a tag may begin at this "<": a name and ">" follow.
bool canBeTag(const char* bracket)
{
    const char* at = bracket + (bracket[1] == '/' ? 2 : 1);
    while ((*at >= 'a' && *at <= 'z') || (*at >= 'A' && *at <= 'Z') || (*at >= '0' && *at <= '9') ||
           *at == '_')
        ++at;
    return *at == '>';
}

/// The first four bytes of a tag as they stand in a message.
std::uint32_t head(std::string_view tag)
{
    const char bytes[4] = {tag[0], tag[1], tag[2], tag.size() > 3 ? tag[3] : '>'};
    return four(bytes);
}

}  // namespace

std::string_view TagIndex::next(std::string_view tag)
{
    // The text's own NUL stands behind its last byte, and ends a name at the latest.
    const char* const end = message_.data() + message_.size();
    if (*at_ != '<' || !isTagAt(at_ + 1, end, tag))
        return {};
    const char* const value = at_ + tag.size() + 2;
    const char* bracket = nextBracket(value, end);
    while (bracket[0] != '<' || bracket[1] != '/' || !isTagAt(bracket + 2, end, tag))
    {
        if (bracket == end || canBeTag(bracket))
            return {};
        bracket = nextBracket(bracket + 1, end);
    }
    assert(message_.data() + message_.find("<" + std::string(tag) + ">") == at_);
    at_ = bracket + tag.size() + 3;
    return std::string_view(value, static_cast<std::size_t>(bracket - value));
}

std::size_t TagIndex::behindOpening(std::string_view tag)
{
    if (!isNoted_)
        note();
    const std::uint32_t tagHead = head(tag);
    for (std::size_t i = 0; i < openingCount_; ++i)
        if (openings_[i].head == tagHead && isTag(openings_[i].name, tag))
            return openings_[i].name + tag.size() + 1;
    const std::size_t found = searchRest("<", tag, 0);
    return found == npos ? npos : found + tag.size() + 2;
}

std::size_t TagIndex::closing(std::string_view tag, std::size_t from)
{
    if (!isNoted_)
        note();
    const std::uint32_t tagHead = head(tag);
    for (std::size_t i = 0; i < closingCount_; ++i)
        if (closings_[i].head == tagHead && closings_[i].name >= from + 2 &&
            isTag(closings_[i].name, tag))
            return closings_[i].name - 2;
    return searchRest("</", tag, from);
}

void TagIndex::note()
{
    isNoted_ = true;
    const char* const begin = message_.data();
    const char* const end = begin + message_.size();
    const char* at = begin;
    while (at != end)
    {
        at = static_cast<const char*>(std::memchr(at, '<', static_cast<std::size_t>(end - at)));
        if (at == nullptr)
            return;
        const bool isClosing = at[1] == '/';  // the text's own NUL stands behind its last byte
        const char* const name = at + (isClosing ? 2 : 1);
        if (end - name < 4)
            return;  // too short for any tag
        std::size_t& count = isClosing ? closingCount_ : openingCount_;
        if (count == room)
        {
            rest_ = static_cast<std::size_t>(at - begin);
            return;
        }
        Note* const notes = isClosing ? closings_ : openings_;
        notes[count++] = {static_cast<std::size_t>(name - begin), four(name)};
        at = name;
    }
}

bool TagIndex::isTag(std::size_t name, std::string_view tag) const
{
    return isTagAt(message_.data() + name, message_.data() + message_.size(), tag);
}

std::size_t TagIndex::searchRest(std::string_view bracket, std::string_view tag,
                                 std::size_t from) const
{
    if (rest_ == npos)
        return npos;
    std::size_t at = message_.find(bracket, from > rest_ ? from : rest_);
    while (at != npos && !isTag(at + bracket.size(), tag))
        at = message_.find(bracket, at + 1);
    return at;
}

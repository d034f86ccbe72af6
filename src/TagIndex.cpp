#include "TagIndex.h"

#include <cassert>
#include <cstring>

namespace
{

std::uint32_t load(const char* bytes)
{
    std::uint32_t value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

/// The first four bytes of a tag as they stand in a message.
std::uint32_t head(std::string_view tag)
{
    const char bytes[4] = {tag[0], tag[1], tag[2], tag.size() > 3 ? tag[3] : '>'};
    return load(bytes);
}

}  // namespace

std::optional<std::string_view> TagIndex::next(std::string_view tag)
{
    const char* const end = message_.data() + message_.size();
    const char* const opening = message_.data() + read_;
    const std::size_t left = message_.size() - read_;
    if (left < 2 * tag.size() + 5 || *opening != '<' || !isTag(read_ + 1, tag))
        return std::nullopt;
    const char* const value = opening + tag.size() + 2;
    const void* const found = std::memchr(value, '<', static_cast<std::size_t>(end - value));
    const char* const closing = static_cast<const char*>(found);
    if (closing == nullptr || closing[1] != '/' ||
        !isTag(static_cast<std::size_t>(closing + 2 - message_.data()), tag))
        return std::nullopt;
    assert(message_.find("<" + std::string(tag) + ">") == read_);
    read_ = static_cast<std::size_t>(closing + tag.size() + 3 - message_.data());
    return std::string_view(value, static_cast<std::size_t>(closing - value));
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
        notes[count++] = {static_cast<std::size_t>(name - begin), load(name)};
        at = name;
    }
}

/// Whether the tag's name and its ">" stand at `name`.
bool TagIndex::isTag(std::size_t name, std::string_view tag) const
{
    return message_.size() - name > tag.size() && message_[name + tag.size()] == '>' &&
           std::memcmp(message_.data() + name, tag.data(), tag.size()) == 0;
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

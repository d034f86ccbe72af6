#ifndef COMMUNICATIONS_SERVICE_TAG_INDEX_H
#define COMMUNICATIONS_SERVICE_TAG_INDEX_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Answers "where does this tag occur first?" as a plain substring search from the front of the
/// message would, after one pass over it instead of one for each tag.
///
/// Why that is exact: a tag holds "<" only as its first byte, so it can only occur where the message
/// has a "<". Noting all of these in order, with the bytes that follow, loses no occurrence, also
/// none inside a value or of a tag that is never closed. The room for notes is fixed; from the first
/// "<" that finds none on, the message is searched as it stands.
///
/// Tag names are literals of three or more letters, given without brackets. The message must outlive
/// the index, unchanged.
class TagIndex
{
public:
    static constexpr std::size_t npos = std::string::npos;

    explicit TagIndex(const std::string& message);

    TagIndex(const TagIndex&) = delete;
    TagIndex& operator=(const TagIndex&) = delete;

    const std::string& message() const { return message_; }

    /// Position behind the first "<tag>", or npos.
    std::size_t behindOpening(std::string_view tag) const;

    /// Position of the first "</tag>" at or behind `from`, or npos.
    std::size_t closing(std::string_view tag, std::size_t from) const;

private:
    bool isTag(std::size_t name, std::string_view tag) const;
    std::size_t searchRest(std::string_view bracket, std::string_view tag, std::size_t from) const;

    static constexpr std::size_t room = 40;

    struct Note
    {
        std::size_t name;    ///< position behind "<" or "</"
        std::uint32_t head;  ///< the four bytes there
    };

    const std::string& message_;
    Note openings_[room];
    Note closings_[room];
    std::size_t openingCount_ = 0;
    std::size_t closingCount_ = 0;
    std::size_t rest_ = npos;  ///< first "<" without a note
};

#endif

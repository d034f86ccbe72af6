#ifndef COMMUNICATIONS_SERVICE_TAG_INDEX_H
#define COMMUNICATIONS_SERVICE_TAG_INDEX_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Answers "where does this tag occur first?" as a plain substring search from the front of the
/// message would, without making that search for each tag. It rests on one fact: a tag holds "<"
/// only as its first byte and ">" only as its last, so it can only occur where the message has "<".
///
/// Fields mostly arrive in the order in which they are read. As long as they do, the front of the
/// message is a run of whole elements that have been read. Each "<" in it begins one of their tags,
/// or, inside a value, nothing that can be a tag, as in "<sip:1001@example.com>". So no tag of
/// another name occurs there: what stands next is the first of its name, and so is its end tag.
///
/// For the other fields one pass notes each "<" with the bytes behind it, in order, which loses no
/// occurrence, also none inside a value or of a tag that is never closed. The room for notes is
/// fixed; from the first "<" that finds none on, the message is searched as it stands.
///
/// Tag names are literals of three or more letters, digits and "_", given without brackets. The
/// message must outlive the index, unchanged.
class TagIndex
{
public:
    static constexpr std::size_t npos = std::string::npos;

    explicit TagIndex(const std::string& message) : message_(message), at_(message.data()) {}

    TagIndex(const TagIndex&) = delete;
    TagIndex& operator=(const TagIndex&) = delete;

    const std::string& message() const { return message_; }

    /// Value of the tag if its element stands right behind those that this function has found, and
    /// a null view otherwise. It must not have been found before: ask for each tag once.
    std::string_view next(std::string_view tag);

    /// Position behind the first "<tag>", or npos.
    std::size_t behindOpening(std::string_view tag);

    /// Position of the first "</tag>" at or behind `from`, or npos.
    std::size_t closing(std::string_view tag, std::size_t from);

private:
    void note();
    bool isTag(std::size_t name, std::string_view tag) const;
    std::size_t searchRest(std::string_view bracket, std::string_view tag, std::size_t from) const;

    static constexpr std::size_t room = 40;

    struct Note
    {
        std::size_t name;    ///< position behind "<" or "</"
        std::uint32_t head;  ///< the four bytes there
    };

    const std::string& message_;
    const char* at_;  ///< end of the elements found by next()
    bool isNoted_ = false;
    std::size_t openingCount_ = 0;
    std::size_t closingCount_ = 0;
    std::size_t rest_ = npos;  ///< first "<" without a note
    Note openings_[room];
    Note closings_[room];
};

#endif

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
/// For the other fields one pass over what is left notes each "<" with the bytes behind it, in order,
/// which loses no occurrence, also none inside a value or of a tag that is never closed. Notes are
/// chained by some bits of these bytes, in order too, so that few have to be looked at. The room for
/// notes is fixed; from the first "<" that finds none on, the message is searched as it stands.
///
/// Ask for each tag once. Tag names are literals of 3 to 32 letters, digits and "_", given without
/// brackets. The message must outlive the index, unchanged.
class TagIndex
{
public:
    static constexpr std::size_t npos = std::string::npos;

    explicit TagIndex(const std::string& message)
        : message_(message), at_(message.data()), end_(at_ + message.size())
    {
    }

    TagIndex(const TagIndex&) = delete;
    TagIndex& operator=(const TagIndex&) = delete;

    const std::string& message() const { return message_; }

    /// Value of the tag if its element stands right behind those that this function has found, and
    /// a null view otherwise.
    std::string_view next(std::string_view tag);

    /// Where a tag begins, npos when there is none, and a note from which on all is behind that.
    struct Place
    {
        std::size_t at;
        std::size_t note;
    };

    /// Before all tags.
    static constexpr Place front = {};

    /// The first "<tag>".
    Place opening(std::string_view tag);

    /// Position of the first "</tag>" behind `from`, or npos. Call opening() first.
    std::size_t closing(std::string_view tag, const Place& from) const;

private:
    std::string_view nextWithBrackets(std::string_view tag, const char* bracket);
    inline std::string_view take(std::string_view tag, const char* bracket);
    void note();
    Place firstNoted(std::string_view tag) const;
    std::size_t search(std::string_view start, std::string_view tag, std::size_t from) const;
    std::size_t position(const char* at) const
    {
        return static_cast<std::size_t>(at - message_.data());
    }

    static constexpr std::uint8_t room = 80;

    struct Note
    {
        const char* at;      ///< of the "<"
        std::uint32_t head;  ///< the four bytes behind it
        std::uint8_t next;   ///< note of the same chain; room when there is none
    };

    const std::string& message_;
    const char* at_;  ///< end of the elements found by next()
    const char* const end_;
    bool isNoted_ = false;
    std::size_t noteCount_ = 0;
    std::size_t rest_ = npos;  ///< where what is not noted begins
    Note notes_[room];
    std::uint8_t chains_[64];  ///< first note of each; room when there is none
};

#endif

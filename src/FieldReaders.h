#ifndef COMMUNICATIONS_SERVICE_FIELD_READERS_H
#define COMMUNICATIONS_SERVICE_FIELD_READERS_H

#include "CommunicationsServiceTypes.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

/// Name of a service state as it travels; any value that is not an enumerator gives "".
const char* stateName(sfiServiceState state);

/// Number at the front of a text, as strtol reads it in base 10, but saturating at the 32-bit
/// limits whatever the size of long, and without the locale.
int decimal(std::string_view text);

/// Result code of a result word; any other text is a failure.
int resultOf(std::string_view word);

/// Reads the fields of a message in one pass. They are told first, each tag once, best in the order
/// of the message; what a field is known by from then on gets its value from read().
///
/// The rule is that of a plain search for each tag: the first opening counts wherever its bytes
/// stand, also inside a value. Since a tag has its "<" in front and nowhere else, the pass looks at
/// each "<" of the message once, in order, keeps the first of everything that it finds, and ends when
/// nothing is left to be found. It allocates nothing but the texts.
///
/// Tags are literals of 3 to 32 letters, digits and "_", given without brackets.
class MessageFields
{
public:
    MessageFields(const MessageFields&) = delete;
    MessageFields& operator=(const MessageFields&) = delete;

    /// "" when absent.
    const std::string& text(std::string_view tag) { return add(tag, Kind::text).text; }

    /// The same where it stands in the message.
    const std::string_view& view(std::string_view tag) { return add(tag, Kind::view).view; }

    /// -1 when absent.
    const int& number(std::string_view tag) { return add(tag, Kind::number).number; }

    /// The number's 32 bits without a sign; so absent is 4294967295.
    const unsigned int& count(std::string_view tag)
    {
        return reinterpret_cast<const unsigned int&>(number(tag));
    }

    /// A number that is not 0; so absent is true, on purpose.
    const bool& flag(std::string_view tag) { return add(tag, Kind::flag).flag; }

    /// 0 when absent.
    const int& numberOfText(std::string_view tag) { return add(tag, Kind::numberOfText).number; }
    const unsigned int& countOfText(std::string_view tag)
    {
        return reinterpret_cast<const unsigned int&>(numberOfText(tag));
    }

protected:
    /// Which end of a value counts.
    enum class Ends
    {
        behindOpening,  ///< the first behind the opening; without one the field is absent
        anywhere        ///< the first in the message; a value that it does not end goes on to the
                        ///< end of the message
    };

    explicit MessageFields(Ends ends) : ends_(ends) {}
    ~MessageFields();

    /// A NUL must stand behind the message, which must live as long as this.
    void read(std::string_view message);

private:
    enum class Kind : std::uint16_t
    {
        text,
        view,
        number,
        numberOfText,
        flag
    };

    struct Field
    {
        Field() {}
        ~Field() {}

        const char* tag;
        std::uint16_t length;  ///< of the tag
        Kind kind;
        const char* begin;  ///< of the value, behind the first opening; null when there is none
        const char* end;    ///< where the end that counts begins; null when there is none
        union               ///< once the message has been read
        {
            std::string text;
            std::string_view view;
            int number;
            bool flag;
        };
    };

    /// Where the tags are literals all of this is known to the compiler, which leaves only stores.
    [[gnu::always_inline]] const Field& add(std::string_view tag, Kind kind)
    {
        if (count_ == room)
            throw std::length_error("too many fields");
        Field& field = fields_[count_++];
        field.tag = tag.data();
        field.length = static_cast<std::uint16_t>(tag.size());
        field.kind = kind;
        field.begin = nullptr;
        field.end = nullptr;
        firstLetters_ |= letter(tag[0]);
        return field;
    }

    static constexpr std::uint64_t letter(char c) { return std::uint64_t{1} << (c & 63); }
    static bool isTagAt(const char* name, const char* end, const Field& field);
    static bool isEndAt(const char* at, const char* end, const Field& field);
    Field* fieldAt(const char* name, const char* end, Field* next);
    void find(std::string_view message);
    void give(Field& field);

    static constexpr std::size_t room = 18;

    const Ends ends_;
    std::uint64_t firstLetters_ = 0;
    std::size_t count_ = 0;
    Field fields_[room];
    Field* given_ = fields_;  ///< those before it have their values
};

/// An event: a NUL must stand behind its text, which must live as long as this.
struct EventMessage
{
    explicit EventMessage(std::string_view whole);

    std::string_view text;
    std::string_view method;      ///< "" when absent
    std::string_view withFields;  ///< the text without the method, if that stands in front
};

class EventFields : public MessageFields
{
public:
    EventFields() : MessageFields(Ends::behindOpening) {}

    void read(const EventMessage& message) { MessageFields::read(message.withFields); }
};

/// The ends of values are searched from the start of the message, on purpose.
class AnswerFields : public MessageFields
{
public:
    AnswerFields() : MessageFields(Ends::anywhere) {}

    void read(const std::string& answer) { MessageFields::read(answer); }
};

#endif

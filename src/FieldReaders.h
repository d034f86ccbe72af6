#ifndef COMMUNICATIONS_SERVICE_FIELD_READERS_H
#define COMMUNICATIONS_SERVICE_FIELD_READERS_H

#include "CommunicationsServiceTypes.h"
#include "TagIndex.h"

#include <string>
#include <string_view>

/// Name of a service state as it travels; any value that is not an enumerator gives "".
const char* stateName(sfiServiceState state);

/// Number at the front of a text, as strtol reads it in base 10, but saturating at the 32-bit
/// limits whatever the size of long, and without the locale.
long decimal(std::string_view text);

/// Value between two whole tags as events are read: the end tag counts only behind the start tag.
/// A null view when either is missing.
std::string_view eventValue(std::string_view startTag, std::string_view message,
                            std::string_view endTag);

/// Value between two whole tags as answers are read: the end tag is searched from the start of the
/// message, on purpose; one that is missing or stands before the value lets it run to the end.
/// A null view when the start tag is missing.
std::string_view answerValue(std::string_view startTag, std::string_view message,
                             std::string_view endTag);

/// The fields of one event, read as eventValue does, each tag once: fastest in the order of the
/// message. The message must stay, unchanged, as long as fields are read.
class EventFields
{
public:
    explicit EventFields(const std::string& message);

    /// Name of the event, "" when absent.
    std::string_view method() const { return method_; }

    /// "" when absent.
    std::string text(std::string_view tag) const;

    /// The same where it stands in the message; a null view when absent.
    std::string_view view(std::string_view tag) const;

    /// -1 when absent.
    int number(std::string_view tag) const;

    /// The number's 32 bits without a sign; so absent is 4294967295.
    unsigned int count(std::string_view tag) const
    {
        return static_cast<unsigned int>(number(tag));
    }

    /// A number that is not 0; so absent is true, on purpose.
    bool flag(std::string_view tag) const { return number(tag) != 0; }

private:
    std::string_view search(std::string_view tag) const;

    mutable TagIndex index_;   // where tags are found does not depend on what was asked before
    std::string_view method_;  // read first, since it stands before the fields
};

/// The fields of one answer, read as answerValue does, each tag once. The message must outlive this,
/// unchanged.
class AnswerFields
{
public:
    explicit AnswerFields(const std::string& message) : index_(message) {}

    /// "" when absent.
    std::string text(std::string_view tag) const;

    /// -1 when absent.
    int number(std::string_view tag) const;

    /// 0 when absent.
    int numberOfText(std::string_view tag) const;

    /// The same without a sign: -1 is 4294967295.
    unsigned int countOfText(std::string_view tag) const
    {
        return static_cast<unsigned int>(numberOfText(tag));
    }

    /// A number that is not 0; so absent is true, on purpose.
    bool flag(std::string_view tag) const { return number(tag) != 0; }

private:
    std::string_view value(std::string_view tag) const;
    std::string_view search(std::string_view tag) const;

    mutable TagIndex index_;  // where tags are found does not depend on what was asked before
};

#endif

#include "FieldReaders.h"

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"

#include <algorithm>
#include <cstdint>

namespace
{

constexpr std::string_view absent;

long numberOf(std::string_view value)
{
    return value.data() != nullptr ? decimal(value) : -1;
}

}  // namespace

long decimal(std::string_view text)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end && (*at == ' ' || (*at >= '\t' && *at <= '\r')))
        ++at;
    const bool negative = at != end && *at == '-';
    if (negative || (at != end && *at == '+'))
        ++at;
    const std::int64_t highest = 2147483647;
    std::int64_t value = 0;
    for (; at != end && *at >= '0' && *at <= '9'; ++at)
        value = std::min(value * 10 + (*at - '0'), highest + 1);
    return static_cast<long>(negative ? -value : std::min(value, highest));
}

std::string_view eventValue(std::string_view startTag, std::string_view message,
                            std::string_view endTag)
{
    const std::size_t start = message.find(startTag);
    if (start == std::string_view::npos)
        return absent;
    const std::size_t begin = start + startTag.size();
    const std::size_t end = message.find(endTag, begin);
    if (end == std::string_view::npos)
        return absent;
    return message.substr(begin, end - begin);
}

std::string_view answerValue(std::string_view startTag, std::string_view message,
                             std::string_view endTag)
{
    const std::size_t start = message.find(startTag);
    if (start == std::string_view::npos)
        return absent;
    const std::size_t begin = start + startTag.size();
    // An end before the begin, or none, wraps round to a length beyond the message, on purpose.
    return message.substr(begin, message.find(endTag) - begin);
}

EventFields::EventFields(const std::string& message) : index_(message), method_(view("Method")) {}

std::string_view EventFields::view(std::string_view tag) const
{
    const std::string_view next = index_.next(tag);
    return next.data() != nullptr ? next : search(tag);
}

std::string_view EventFields::search(std::string_view tag) const
{
    const TagIndex::Place opening = index_.opening(tag);
    if (opening.at == TagIndex::npos)
        return absent;
    const std::size_t end = index_.closing(tag, opening);
    if (end == TagIndex::npos)
        return absent;
    const std::size_t begin = opening.at + tag.size() + 2;
    return std::string_view(index_.message()).substr(begin, end - begin);
}

std::string EventFields::text(std::string_view tag) const
{
    return std::string(view(tag));
}

int EventFields::number(std::string_view tag) const
{
    return static_cast<int>(numberOf(view(tag)));
}

std::string_view AnswerFields::value(std::string_view tag) const
{
    const std::string_view next = index_.next(tag);
    return next.data() != nullptr ? next : search(tag);
}

std::string_view AnswerFields::search(std::string_view tag) const
{
    const TagIndex::Place opening = index_.opening(tag);
    if (opening.at == TagIndex::npos)
        return absent;
    const std::size_t begin = opening.at + tag.size() + 2;
    const std::size_t end = index_.closing(tag, TagIndex::front);
    // An end before the begin, or none, wraps round to a length beyond the message, on purpose.
    return std::string_view(index_.message()).substr(begin, end - begin);
}

std::string AnswerFields::text(std::string_view tag) const
{
    return std::string(value(tag));
}

int AnswerFields::number(std::string_view tag) const
{
    return static_cast<int>(numberOf(value(tag)));
}

int AnswerFields::numberOfText(std::string_view tag) const
{
    return static_cast<int>(decimal(value(tag)));
}

std::string CommunicationsServiceProxy::getParamAsString(const std::string& startTag,
                                                         const std::string& message,
                                                         const std::string& endTag)
{
    return std::string(answerValue(startTag, message, endTag));
}

long CommunicationsServiceProxy::getParamAsLong(const std::string& startTag,
                                                const std::string& message,
                                                const std::string& endTag)
{
    return numberOf(answerValue(startTag, message, endTag));
}

int CommunicationsServiceProxy::getResult(const std::string& response)
{
    struct Word
    {
        std::string_view text;
        sfiResult result;
    };
    static constexpr Word words[] = {
        {"sfiSuccess", sfiSuccess},
        {"sfiFailureCallBackInvalidState", sfiFailureCallBackInvalidState},
        {"sfiFailureCallBackNoCallInfo", sfiFailureCallBackNoCallInfo},
        {"sfiFailureCallBackToMany", sfiFailureCallBackToMany},
        {"sfiFailureCallBackAllreadyExists", sfiFailureCallBackAllreadyExists},
    };
    for (const Word& word : words)
        if (response == word.text)
            return word.result;
    return sfiFailure;
}

std::string CommunicationsServiceEventInvoker::getParamAsString(const std::string& startTag,
                                                                const std::string& message,
                                                                const std::string& endTag)
{
    return std::string(eventValue(startTag, message, endTag));
}

long CommunicationsServiceEventInvoker::getParamAsLong(const std::string& startTag,
                                                       const std::string& message,
                                                       const std::string& endTag)
{
    return numberOf(eventValue(startTag, message, endTag));
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

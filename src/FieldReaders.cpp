#include "FieldReaders.h"

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"

namespace
{

using Value = std::optional<std::string_view>;

std::string textOf(Value value)
{
    return std::string(value.value_or(std::string_view()));
}

long numberOf(Value value)
{
    return value ? decimal(*value) : -1;
}

}  // namespace

long decimal(std::string_view text)
{
    const long highest = 2147483647L;
    const long lowest = -highest - 1;
    std::size_t at = 0;
    while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r')))
        ++at;
    const bool negative = at < text.size() && text[at] == '-';
    if (negative || (at < text.size() && text[at] == '+'))
        ++at;
    // Counted below zero, where there is room for one more.
    long value = 0;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
    {
        const int digit = text[at] - '0';
        if (value < (lowest + digit) / 10)
            return negative ? lowest : highest;
        value = value * 10 - digit;
    }
    if (negative)
        return value;
    return value == lowest ? highest : -value;
}

Value eventValue(std::string_view startTag, std::string_view message, std::string_view endTag)
{
    const std::size_t start = message.find(startTag);
    if (start == std::string_view::npos)
        return std::nullopt;
    const std::size_t begin = start + startTag.size();
    const std::size_t end = message.find(endTag, begin);
    if (end == std::string_view::npos)
        return std::nullopt;
    return message.substr(begin, end - begin);
}

Value answerValue(std::string_view startTag, std::string_view message, std::string_view endTag)
{
    const std::size_t start = message.find(startTag);
    if (start == std::string_view::npos)
        return std::nullopt;
    const std::size_t begin = start + startTag.size();
    // An end before the begin, or none, wraps round to a length beyond the message, on purpose.
    return message.substr(begin, message.find(endTag) - begin);
}

Value EventFields::value(std::string_view tag) const
{
    if (const Value next = index_.next(tag))
        return next;
    const std::size_t begin = index_.behindOpening(tag);
    if (begin == TagIndex::npos)
        return std::nullopt;
    const std::size_t end = index_.closing(tag, begin);
    if (end == TagIndex::npos)
        return std::nullopt;
    return std::string_view(index_.message()).substr(begin, end - begin);
}

std::string EventFields::text(std::string_view tag) const
{
    return textOf(value(tag));
}

std::string_view EventFields::view(std::string_view tag) const
{
    return value(tag).value_or(std::string_view());
}

int EventFields::number(std::string_view tag) const
{
    return static_cast<int>(numberOf(value(tag)));
}

Value AnswerFields::value(std::string_view tag) const
{
    if (const Value next = index_.next(tag))
        return next;
    const std::size_t begin = index_.behindOpening(tag);
    if (begin == TagIndex::npos)
        return std::nullopt;
    // An end before the begin, or none, wraps round to a length beyond the message, on purpose.
    return std::string_view(index_.message()).substr(begin, index_.closing(tag, 0) - begin);
}

std::string AnswerFields::text(std::string_view tag) const
{
    return textOf(value(tag));
}

int AnswerFields::number(std::string_view tag) const
{
    return static_cast<int>(numberOf(value(tag)));
}

int AnswerFields::numberOfText(std::string_view tag) const
{
    return static_cast<int>(decimal(value(tag).value_or(std::string_view())));
}

std::string CommunicationsServiceProxy::getParamAsString(const std::string& startTag,
                                                         const std::string& message,
                                                         const std::string& endTag)
{
    return textOf(answerValue(startTag, message, endTag));
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
    return textOf(eventValue(startTag, message, endTag));
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

#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_FIELDS_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_FIELDS_H

#include "FieldReaders.h"
#include "tests/support/Rules.h"

#include <string>
#include <vector>

/// What a reader finds, each field as every kind: tags are told first, then the message is read, then
/// there are values.
template <typename Fields, typename Message>
std::string found(const std::vector<std::string>& tags, const Message& message)
{
    Fields texts, views, numbers, numbersOfTexts, flags;
    std::vector<const std::string*> text;
    std::vector<const std::string_view*> view;
    std::vector<const int*> number, numberOfText;
    std::vector<const bool*> flag;
    for (const std::string& tag : tags)
    {
        text.push_back(&texts.text(tag));
        view.push_back(&views.view(tag));
        number.push_back(&numbers.number(tag));
        numberOfText.push_back(&numbersOfTexts.numberOfText(tag));
        flag.push_back(&flags.flag(tag));
    }
    for (Fields* const fields : {&texts, &views, &numbers, &numbersOfTexts, &flags})
        fields->read(message);
    std::string all;
    for (std::size_t i = 0; i < tags.size(); ++i)
        all +=
            shown(*text[i], std::string(*view[i]), *number[i], *numberOfText[i], *flag[i]) + "\n";
    return all;
}

/// The same by the rules.
inline std::string searched(const std::vector<std::string>& tags, const std::string& message,
                            decltype(rules::inEvent) find)
{
    std::string all;
    for (const std::string& tag : tags)
    {
        const rules::Value value = rules::field(find, message, tag);
        const std::string text = value.value_or("");
        const int number = samples::toNumber(text);
        all += shown(text, text, value ? number : -1, number, !value || number != 0) + "\n";
    }
    return all;
}

#endif

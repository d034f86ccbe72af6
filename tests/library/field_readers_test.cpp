// Where the values of a message are: all fields of a reader against a plain search for each tag.

#include "tests/support/Fields.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

namespace
{

using Values = std::vector<std::string>;

std::string element(const std::string& tag, const std::string& value)
{
    return "<" + tag + ">" + value + "</" + tag + ">";
}

void expectSearch(const Values& tags, const std::string& message)
{
    EXPECT_EQ(found<EventFields>(tags, EventMessage(message)),
              searched(tags, message, rules::inEvent))
        << message;
    EXPECT_EQ(found<AnswerFields>(tags, message), searched(tags, message, rules::inAnswer))
        << message;
}

const Values three = {"LineID", "URI", "CallBackFearureAvailable"};

TEST(FieldReaders, ElementsInAnyOrder)
{
    Values order = three;
    std::sort(order.begin(), order.end());
    do
        for (const char* between : {"", " ", "<Reason>1</Reason>", "<", "</URI", "LineID>"})
        {
            std::string message = between;
            for (const std::string& tag : order)
                message += element(tag, "value of " + tag) + between;
            expectSearch(three, message);
        }
    while (std::next_permutation(order.begin(), order.end()));
}

TEST(FieldReaders, ATagMayBeAnywhereInAValue)
{
    for (const char* value :
         {"<", "a<b", "<<", "</", "</<", "<URI", "<URI>", "</URI>", "<URI>2</URI>", "<<URI>>",
          "</LineID", "/LineID>", "<LineID>", "<LineID></LineID>", "<URI>2</LineID>3</URI>"})
        for (const char* tag : {"LineID", "URI", "Reason"})
            expectSearch(three, element(tag, value) + element("URI", "1") + element("LineID", "2"));
}

TEST(FieldReaders, EndsThatComeEarlyLateOrNever)
{
    for (const char* message :
         {"", "<", "<LineID", "<LineID>", "<LineID>1", "<LineID>1<", "<LineID>1</",
          "<LineID>1</LineID", "</LineID><LineID>1", "</LineID><LineID>1</LineID>", "</LineID>",
          "<LineID>1</URI><URI>2</LineID></URI>", "<URI>", "</URI>", "<URI>1</URI"})
        expectSearch(three, message);
}

TEST(FieldReaders, EachByteOfATagCounts)
{
    const std::string letters = "abcdefghijklmnopqrstuvwxyzabcdef";
    for (std::size_t length = 3; length <= letters.size(); ++length)
    {
        const std::string tag = letters.substr(0, length);
        expectSearch({tag}, element(tag, "1"));
        for (const std::string& other : {tag + "X", "X" + tag, " " + tag, tag + " ", tag + "/",
                                         "/" + tag, "<" + tag, tag.substr(1)})
            expectSearch({tag}, element(other, "1") + "<" + tag + ">2</" + other + ">");
        for (std::size_t i = 0; i <= length; ++i)
        {
            std::string other = tag + ">";
            other[i] = 'X';
            expectSearch({tag}, "<" + other + "1</" + tag + ">");
            expectSearch({tag}, "<" + tag + ">1</" + other);
        }
    }
}

/// Searching anew from each bracket would not come to an end here.
TEST(FieldReaders, NothingIsTooFarAway)
{
    const std::string much(70000, 'x');
    std::vector<std::string> texts = {much, element("Reason", much)};
    for (const char* piece :
         {"<", "</", "<a", "</ab", "<a></a>", "<LineID", "</LineID>", "<LineID>"})
        for (const int amount : {1, 2, 17, 45, 64, 257, 20000})
        {
            texts.emplace_back();
            for (int i = 0; i < amount; ++i)
                texts.back() += piece;
        }
    for (const std::string& text : texts)
        expectSearch(three, text + element("URI", text + "1") + element("LineID", text) + text);
}

TEST(FieldReaders, AnAnswerMayHoldZeroBytes)
{
    const std::string zero(1, '\0');
    expectSearch(three, zero + "<URI" + zero + element("LineID", "1" + zero + "2") + zero +
                            element("URI", zero) + zero);
}

TEST(FieldReaders, ThereIsAnEndToTheRoom)
{
    EventFields fields;
    for (int i = 0; i < 18; ++i)
        fields.number("CallID");
    EXPECT_THROW(fields.number("CallID"), std::length_error);
}

/// The name of the event and what is left of the text for the fields.
TEST(FieldReaders, NameOfAnEvent)
{
    const struct
    {
        const char* text;
        const char* method;
        const char* withFields;
    } rows[] = {
        {"<Method>CallHeldEvent</Method><URI>", "CallHeldEvent", "<URI>"},
        {"<Method></Method>", "", ""},
        {"", "", ""},
        {"<Method>CallHeldEvent", "", "<Method>CallHeldEvent"},
        {"<Method>a<b</Method>c", "a<b", "<Method>a<b</Method>c"},
        {"<Method>a<URI>1</Method>", "a<URI>1", "<Method>a<URI>1</Method>"},
        {"x<Method>a</Method>", "a", "x<Method>a</Method>"},
        {"</Method><Method>a</Method>", "a", "</Method><Method>a</Method>"},
        {"<Method>a</Methode></Method>", "a</Methode>", "<Method>a</Methode></Method>"},
    };
    for (const auto& row : rows)
    {
        const EventMessage event(row.text);
        EXPECT_EQ(event.text, row.text);
        EXPECT_EQ(event.method, row.method);
        EXPECT_EQ(event.withFields, row.withFields);
    }
}

}  // namespace

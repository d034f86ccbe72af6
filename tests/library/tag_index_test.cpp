// Where the fields of a message are: the run of elements that arrive in the order of reading, and the
// search that answers for all others.

#include "TagIndex.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace
{

/// What next() gives for "LineID" when this stands in the element; "none" for nothing.
std::string valueOf(const std::string& inside)
{
    const std::string message = "<LineID>" + inside + "</LineID><CallID>12</CallID>";
    TagIndex index(message);
    const std::string_view value = index.next("LineID");
    const TagIndex::Place callId = index.opening("CallID");
    EXPECT_EQ(callId.at, message.find("<CallID>"));
    EXPECT_EQ(index.closing("CallID", callId), message.find("</CallID>"));
    // The search has to agree with what was found, or answer where nothing was.
    TagIndex search(message);
    const TagIndex::Place lineId = search.opening("LineID");
    EXPECT_EQ(lineId.at, 0u);
    EXPECT_EQ(search.closing("LineID", lineId), message.find("</LineID>"));
    if (value.data() == nullptr)
        return "none";
    EXPECT_EQ(value.data(), message.data() + 8);
    EXPECT_EQ(index.next("CallID"), message.substr(message.find("<CallID>") + 8, 2));
    return std::string(value);
}

TEST(TagIndexTest, ARunOfElementsIsReadOneBehindTheOther)
{
    const std::string message =
        "<Method>CallHeldEvent</Method><LineID>1001</LineID><CallID></CallID>"
        "<URI>sip:1</URI><Name>Anna</Name>";
    TagIndex index(message);
    EXPECT_EQ(index.next("Method"), "CallHeldEvent");
    EXPECT_EQ(index.next("LineID"), "1001");
    EXPECT_EQ(index.next("URI").data(), nullptr) << "not the one that stands next";
    EXPECT_EQ(index.next("CallID"), "");
    EXPECT_EQ(index.next("URI"), "sip:1");
    EXPECT_EQ(index.next("Names").data(), nullptr);
    EXPECT_EQ(index.next("Name"), "Anna");
    EXPECT_EQ(index.next("FullPAI").data(), nullptr) << "the message is at its end";
}

TEST(TagIndexTest, AValueMayHaveAnyLength)
{
    for (std::size_t length = 0; length < 40; ++length)
        EXPECT_EQ(valueOf(std::string(length, 'v')), std::string(length, 'v'));
}

TEST(TagIndexTest, ABracketThatCannotBeginATagIsPartOfTheValue)
{
    for (const char* value : {"<", "a<b", "a < b", "<<", "</", "<a b>", "<a/>", "< >", "<a", "<-1>",
                              "<`>", "<{>", "<@>", "<[>", "<//>", "<:>", "ab<cd<ef"})
        EXPECT_EQ(valueOf(value), value);
}

TEST(TagIndexTest, AValueWithATagInItIsLeftToTheSearch)
{
    for (const char* value : {"<x>", "</x>", "<a>", "<z>", "<A>", "<Z>", "<0>", "<9>", "<_>", "<>",
                              "</>", "1<aZ09_z>2", "12345</CallState>", "a<b<c>"})
        EXPECT_EQ(valueOf(value), "none") << value;
}

TEST(TagIndexTest, AnElementWithoutItsEndIsNotNext)
{
    for (const char* message :
         {"", "<", "<LineID", "<LineID>", "<LineID>1001", "<LineID>1001<", "<LineID>1001</",
          "<LineID>1001</LineID", "<LineID>1001<LineID>", "<LineID>1001<XLineID>",
          "<LineID>1001X/LineID>", "LineID>1001</LineID>", " <LineID>1001</LineID>"})
    {
        const std::string text = message;
        TagIndex index(text);
        EXPECT_EQ(index.next("LineID").data(), nullptr) << message;
    }
}

/// Where the search finds the first opening and the first closing of a tag.
std::pair<std::size_t, std::size_t> search(const std::string& message, const std::string& tag)
{
    TagIndex index(message);
    const std::size_t opening = index.opening(tag).at;
    return {opening, index.closing(tag, TagIndex::front)};
}

TEST(TagIndexTest, EachByteOfANameCounts)
{
    const std::pair<std::size_t, std::size_t> nowhere(TagIndex::npos, TagIndex::npos);
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    for (std::size_t length = 3; length <= letters.size(); ++length)
    {
        const std::string tag = letters.substr(0, length);
        const std::string message = "<" + tag + ">1</" + tag + ">";
        EXPECT_EQ(TagIndex(message).next(tag), "1") << tag;
        EXPECT_EQ(search(message, tag), (std::pair<std::size_t, std::size_t>(0, length + 3)))
            << tag;
        for (std::size_t i = 0; i < length; ++i)
        {
            std::string other = tag;
            other[i] = 'X';
            const std::string changed = "<" + other + ">1</" + other + ">";
            EXPECT_EQ(TagIndex(changed).next(tag).data(), nullptr) << other;
            EXPECT_EQ(search(changed, tag), nowhere) << other;
            const std::string half = "<" + tag + ">1</" + other + ">";
            EXPECT_EQ(TagIndex(half).next(tag).data(), nullptr) << other;
        }
    }
}

TEST(TagIndexTest, AnEndTagIsSearchedFromThePlaceAskedFor)
{
    const std::string message = "</URI><URI>1</URI>";
    TagIndex index(message);
    const TagIndex::Place opening = index.opening("URI");
    EXPECT_EQ(opening.at, 6u);
    EXPECT_EQ(index.closing("URI", TagIndex::front), 0u);
    EXPECT_EQ(index.closing("URI", opening), 12u);
    EXPECT_EQ(index.closing("Name", TagIndex::front), TagIndex::npos);
    const std::string shortest = "<URI>";
    EXPECT_EQ(TagIndex(shortest).opening("URI").at, 0u);
}

}  // namespace

// One line of a trace, byte for byte.

#include "recorder/TraceLine.h"

#include <gtest/gtest.h>

namespace
{

using namespace recorder;
using namespace std::string_literals;

std::string lineOf(const Record& record)
{
    std::string line;
    appendRecord(line, record);
    return line;
}

TEST(RecorderLine, Records)
{
    EXPECT_EQ(lineOf({Kind::request, Sending::request, 1, 2, 3, "", "<Method>A</Method><B>1</B>"}),
              R"({"time":0.000001,"kind":"request","thread":2,"number":3,"sending":"request",)"
              R"("method":"A","text":"<Method>A</Method><B>1</B>"})"
              "\n");
    EXPECT_EQ(lineOf({Kind::answer, Sending::timed, 12345678901234, 1, 4, "", "sfiSuccess"}),
              R"({"time":12345678.901234,"kind":"answer","thread":1,"number":4,"sending":"timed",)"
              R"("delivery":"done","text":"sfiSuccess"})"
              "\n");
    EXPECT_EQ(lineOf({Kind::request, Sending::subscribe, 0, 1, 5, "c", "x"}),
              R"({"time":0.000000,"kind":"request","thread":1,"number":5,"sending":"subscribe",)"
              R"("channel":"c","text":"x"})"
              "\n");
    EXPECT_EQ(lineOf({Kind::request, Sending::oneWay, 0, 0, 6, "", ""}),
              R"({"time":0.000000,"kind":"request","number":6,"sending":"oneWay","text":""})"
              "\n");
    EXPECT_EQ(lineOf({Kind::event, Sending::request, 0, 1, 0, "c", "<Method>E"}),
              R"({"time":0.000000,"kind":"event","thread":1,"channel":"c","text":"<Method>E"})"
              "\n");
    EXPECT_EQ(lineOf({Kind::exception, Sending::request, 0, 1, 7, "", "T: <Method>A</Method>"}),
              R"({"time":0.000000,"kind":"exception","thread":1,"number":7,)"
              R"("text":"T: <Method>A</Method>"})"
              "\n");
}

TEST(RecorderLine, HeadAndGaps)
{
    std::string line;
    appendHead(line, 1772357400000042, "a \"program\"", 99, false);
    EXPECT_EQ(line, R"({"trace":2,"start":"2026-03-01T09:30:00.000042Z",)"
                    R"("program":"a \"program\"","process":99})"
                    "\n");
    line.clear();
    appendHead(line, 0, "p", 1, true);
    EXPECT_EQ(line, R"({"trace":2,"start":"1970-01-01T00:00:00.000000Z","program":"p",)"
                    R"("process":1,"masked":true})"
                    "\n");
    line.clear();
    appendDropped(line, 5, 18446744073709551615ULL, "why");
    EXPECT_EQ(line, R"({"time":0.000005,"kind":"dropped","count":18446744073709551615,)"
                    R"("reason":"why"})"
                    "\n");
}

const struct
{
    std::string text;
    const char* member;
} texts[] = {
    {"\"\\/", R"("text":"\"\\/")"},
    {"\0\t\n\r\x1f\x7f"s, "\"text\":\"\\u0000\\u0009\\u000a\\u000d\\u001f\x7f\""},
    {"\xc2\x80 \xdf\xbf", "\"text\":\"\xc2\x80 \xdf\xbf\""},
    {"\xe0\xa0\x80 \xed\x9f\xbf \xee\x80\x80 \xef\xbf\xbf",
     "\"text\":\"\xe0\xa0\x80 \xed\x9f\xbf \xee\x80\x80 \xef\xbf\xbf\""},
    {"\xf0\x90\x80\x80 \xf4\x8f\xbf\xbf", "\"text\":\"\xf0\x90\x80\x80 \xf4\x8f\xbf\xbf\""},
    {"\x80", R"("textHex":"80")"},
    {"a\xc1\xbf", R"("textHex":"61c1bf")"},
    {"\xc2", R"("textHex":"c2")"},
    {"\xc2\x7f", R"("textHex":"c27f")"},
    {"\xe0\x9f\xbf", R"("textHex":"e09fbf")"},
    {"\xed\xa0\x80", R"("textHex":"eda080")"},
    {"\xe2\x82", R"("textHex":"e282")"},
    {"\xe2\x82\x41", R"("textHex":"e28241")"},
    {"\xf0\x8f\xbf\xbf", R"("textHex":"f08fbfbf")"},
    {"\xf4\x90\x80\x80", R"("textHex":"f4908080")"},
    {"\xf5\x80\x80\x80", R"("textHex":"f5808080")"},
    {"\xff\0"s, R"("textHex":"ff00")"},
};

TEST(RecorderLine, BytesOfAllKinds)
{
    for (const auto& row : texts)
    {
        std::string line = lineOf({Kind::answer, Sending::request, 0, 0, 1, "", row.text});
        EXPECT_NE(line.find(std::string(",") + row.member + "}\n"), std::string::npos) << line;
    }
}

}  // namespace

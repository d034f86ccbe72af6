// What a page of a trace holds; what a browser makes of it is tested in tests/page/.

#include "kit/trace/Page.h"
#include "tests/kit/phone/Records.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <sstream>

namespace kit
{

namespace
{

constexpr const char* before = R"(<script type="application/json" id="trace">)";

std::string pageOf(const Trace& trace)
{
    std::ostringstream page;
    writePage(page, trace, "a trace");
    return page.str();
}

/// The JSON of the page, up to the first end of a script, as a browser finds it.
nlohmann::json traceIn(const std::string& page)
{
    const std::size_t begin = page.find(before) + std::string(before).size();
    return nlohmann::json::parse(page.substr(begin, page.find("</script", begin) - begin));
}

using test::record;
constexpr auto request = TraceRecord::Kind::request;
constexpr auto answer = TraceRecord::Kind::answer;
constexpr auto event = TraceRecord::Kind::event;

TEST(TracePage, NothingInATraceEndsItsElement)
{
    const std::string empty = pageOf({});
    const std::string hostile = "</script><script>alert(1)</script><!-- \xe2\x80\xa8 <img src=x>";
    Trace trace;
    trace.head.program = hostile;
    trace.complaint = hostile;
    for (const auto kind : {request, answer, event, TraceRecord::Kind::control})
    {
        trace.records.push_back(record(kind, hostile, 1));
        trace.records.push_back(record(kind, "<Method>" + hostile + "</Method>" + hostile, 2));
        trace.records.back().channel = hostile;
    }
    const std::string page = pageOf(trace);
    const auto tags = [](const std::string& text)
    { return std::count(text.begin(), text.end(), '<'); };
    EXPECT_EQ(tags(page), tags(empty));
    const nlohmann::json read = traceIn(page);
    EXPECT_EQ(read["complaint"], hostile);
    EXPECT_EQ(read["program"], hostile);
    EXPECT_EQ(read["records"].size(), 8U);
}

TEST(TracePage, BytesThatAreNoText)
{
    Trace trace;
    trace.records = {record(request, std::string("<Method>\xff</Method><a>\x00\xe4</a>", 27), 1)};
    trace.records[0].channel = "\xfe";
    const nlohmann::json page = traceIn(pageOf(trace));
    const nlohmann::json& held = page["records"][0];
    EXPECT_EQ(held["x"], "3c4d6574686f643eff3c2f4d6574686f643e3c613e00e43c2f613e");
    EXPECT_EQ(page["kinds"][0]["name"], "\\xff");
    EXPECT_EQ(held["e"].dump(), R"([["a","\\x00\\xe4"]])");
    EXPECT_EQ(held["c"], "\\xfe");
}

}  // namespace

}  // namespace kit

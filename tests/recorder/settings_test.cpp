// The settings: what they may say, and what is said to those that make no sense.

#include "recorder/Settings.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace
{

using recorder::parseSettings;
using recorder::Settings;

struct Good
{
    const char* text;
    const char* file;
    std::uint64_t size;
    bool mask;
};

const Good good[] = {
    {"", "", 8388608, false},
    {" \n# nothing = set\n", "", 8388608, false},
    {"file=/a", "/a", 8388608, false},
    {"file=/a size=16K", "/a", 16384, false},
    {"size=20000 file=/a", "/a", 20000, false},
    {"file=/a size=3M mask=on", "/a", 3145728, true},
    {"file=/a size=1024G mask=off", "/a", 1099511627776, false},
    {"# first\nfile=/a  # here\n\tmask=on\n", "/a", 8388608, true},
    {"file=\"/a b/c#d\"", "/a b/c#d", 8388608, false},
    {"file=/a=b", "/a=b", 8388608, false},
};

TEST(RecorderSettings, Good)
{
    for (const Good& row : good)
    {
        SCOPED_TRACE(row.text);
        const Settings settings = parseSettings(row.text);
        EXPECT_EQ(settings.file, row.file);
        EXPECT_EQ(settings.size, row.size);
        EXPECT_EQ(settings.mask, row.mask);
    }
}

const struct
{
    const char* text;
    const char* complaint;
} bad[] = {
    {"/a", "\"/a\" is no setting; they look like file=/var/tmp/phone.jsonl"},
    {"fiel=/a", "\"fiel\" is no setting; they are file, size and mask"},
    {"file=a", "file=a is no whole path; it begins with /"},
    {"file=", "file= is no whole path; it begins with /"},
    {"size=1M", "there is no file="},
    {"file=/a size=", "size= is no size; it takes a number, and K, M or G behind it"},
    {"file=/a size=-1", "size=-1 is no size; it takes a number, and K, M or G behind it"},
    {"file=/a size=4MB", "size=4MB is no size; it takes a number, and K, M or G behind it"},
    {"file=/a size=16383", "size=16383 is out of bounds; it goes from 16K to 1024G"},
    {"file=/a size=1025G", "size=1025G is out of bounds; it goes from 16K to 1024G"},
    {"file=/a size=99999999999999999999G",
     "size=99999999999999999999G is no size; it takes a number, and K, M or G behind it"},
    {"file=/a mask=yes", "mask=yes is neither on nor off"},
    {"file=\"/a", "a quotation mark is not closed"},
};

TEST(RecorderSettings, Bad)
{
    for (const auto& row : bad)
    {
        SCOPED_TRACE(row.text);
        try
        {
            parseSettings(row.text);
            FAIL() << "accepted";
        }
        catch (const std::invalid_argument& error)
        {
            EXPECT_STREQ(error.what(), row.complaint);
        }
    }
}

}  // namespace

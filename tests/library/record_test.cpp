// The record of CallStateChangeEvent: its layout, its texts of any length, and its memory.

#include "CommunicationsServiceEventInvoker.h"
#include "tests/support/TracedFramework.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>

// The linker sends the library's and the tests' calls of malloc and free here.
extern "C"
{
    void* realMalloc(std::size_t size) __asm__("__real_malloc");
    void realFree(void* memory) __asm__("__real_free");
    void* watchedMalloc(std::size_t size) __asm__("__wrap_malloc");
    void watchedFree(void* memory) __asm__("__wrap_free");
}

namespace
{

constexpr std::size_t guard = 4096;
constexpr unsigned char filling = 0xA5;

bool watching = false;
void* watched = nullptr;  // what was allocated last
std::size_t watchedSize = 0;
int allocations = 0;
int releases = 0;

/// Whether nothing was written behind what was asked for.
bool isIntact()
{
    const unsigned char* const behind = static_cast<unsigned char*>(watched) + watchedSize;
    return std::all_of(behind, behind + guard, [](unsigned char byte) { return byte == filling; });
}

}  // namespace

void* watchedMalloc(std::size_t size)
{
    if (!watching)
        return realMalloc(size);
    void* const memory = realMalloc(size + guard);
    std::memset(memory, filling, size + guard);
    watched = memory;
    watchedSize = size;
    ++allocations;
    return memory;
}

void watchedFree(void* memory)
{
    if (watching && memory == watched)
    {
        EXPECT_TRUE(isIntact());
        ++releases;
    }
    realFree(memory);
}

namespace
{

/// Lengths of the four texts, in the order in which they are copied.
using Lengths = std::array<std::size_t, 4>;

constexpr const char* tags[] = {"GPUCLG", "GPUCLGName", "GPUCLD", "GPUCLDName"};
constexpr std::size_t offsets[] = {483, 418, 353, 288};

class RecordTest : public testing::Test
{
protected:
    RecordTest()
    {
        support::takeTrace();
        allocations = releases = 0;
    }
    ~RecordTest() override { watching = false; }

    void deliver(std::string message)
    {
        watching = true;
        CommunicationsServiceEventInvoker::callStateChangeEvent(&subscriber, message);
        watching = false;
    }

    static std::string value(const Lengths& lengths, std::size_t i)
    {
        return std::string(lengths[i], static_cast<char>('a' + i));
    }

    static std::string message(const Lengths& lengths)
    {
        std::string text;
        for (std::size_t i = 0; i < 4; ++i)
            text += "<" + std::string(tags[i]) + ">" + value(lengths, i) + "</" + tags[i] + ">";
        return text;
    }

    /// The record's bytes as they must be, whatever was in the memory before.
    static std::vector<unsigned char> model(const Lengths& lengths, std::size_t size)
    {
        std::vector<unsigned char> bytes(std::max<std::size_t>(size, 80000), filling);
        bytes[0] = bytes[81] = bytes[162] = bytes[223] = '\0';
        std::fill_n(&bytes[284], 4, static_cast<unsigned char>(0));
        for (std::size_t i = 0; i < 4; ++i)
        {
            const std::string text = value(lengths, i);
            std::memcpy(&bytes[offsets[i]], text.c_str(), text.size() + 1);
        }
        return bytes;
    }

    support::Subscriber subscriber;
};

TEST_F(RecordTest, TextsOfAnyLengthRunOnInTheOrderOfCopyingAndStayInside)
{
    const std::size_t lengths[] = {0, 1, 63, 64, 65, 66, 129, 130, 131, 195, 260, 4000};
    std::vector<Lengths> cases = {{70000, 3, 5, 70001}};
    for (const std::size_t one : lengths)
        for (const std::size_t other : lengths)
        {
            cases.push_back({one, other, 3, 5});
            cases.push_back({3, one, other, 5});
            cases.push_back({5, 3, one, other});
            cases.push_back({other, 5, 3, one});
            cases.push_back({one, other, one, other});
        }
    for (const Lengths& each : cases)
    {
        bool called = false;
        subscriber.withRecord = [&](CallPartyInfo* info)
        {
            called = true;
            ASSERT_EQ(info, watched);
            EXPECT_GE(watchedSize, sizeof(CallPartyInfo));
            EXPECT_EQ(releases, allocations - 1) << "one record at a time";
            EXPECT_TRUE(isIntact());
            const std::vector<unsigned char> expected = model(each, watchedSize);
            EXPECT_EQ(std::memcmp(info, expected.data(), watchedSize), 0);
            EXPECT_TRUE(std::all_of(expected.begin() + long(watchedSize), expected.end(),
                                    [](unsigned char byte) { return byte == filling; }))
                << "the last text does not fit";
        };
        allocations = releases = 0;
        deliver(message(each));
        EXPECT_TRUE(called);
        EXPECT_EQ(releases, allocations);
        if (HasFailure())
            FAIL() << each[0] << " " << each[1] << " " << each[2] << " " << each[3];
    }
    support::takeTrace();
}

TEST_F(RecordTest, ATextEndsAtItsNul)
{
    using namespace std::string_literals;
    deliver("<GPUCLG>a\0b</GPUCLG><GPUCLGName>\0c</GPUCLGName>"s);
    EXPECT_EQ(support::takeTrace()[0],
              "onCallStateChangeEvent('', -1, -1, -1, -1, '', '', '', ['a', '', '', ''], -1, -1, "
              "'', true, -1, -1)");
    subscriber.withRecord = [](CallPartyInfo* info)
    { EXPECT_EQ(static_cast<unsigned char>(info->callingNumber[2]), filling); };
    deliver("<GPUCLG>a\0b\0</GPUCLG>"s);
    support::takeTrace();
}

}  // namespace

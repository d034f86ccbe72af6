#include "kit/trace/Width.h"

#include <algorithm>
#include <iterator>

namespace kit
{

namespace
{

struct Range
{
    char32_t first;
    char32_t last;
};

/// Characters that stand above, below or between others, or only steer them.
constexpr Range marks[] = {
    {0x0300, 0x036f},   {0x0483, 0x0489}, {0x0591, 0x05bd}, {0x05bf, 0x05bf}, {0x05c1, 0x05c2},
    {0x05c4, 0x05c5},   {0x0610, 0x061a}, {0x064b, 0x065f}, {0x0670, 0x0670}, {0x06d6, 0x06dc},
    {0x06df, 0x06e4},   {0x06e7, 0x06e8}, {0x0900, 0x0902}, {0x093c, 0x093c}, {0x0941, 0x0948},
    {0x094d, 0x094d},   {0x0e31, 0x0e31}, {0x0e34, 0x0e3a}, {0x0e47, 0x0e4e}, {0x1ab0, 0x1aff},
    {0x1dc0, 0x1dff},   {0x200b, 0x200f}, {0x202a, 0x202e}, {0x2060, 0x2064}, {0x20d0, 0x20ff},
    {0x302a, 0x302d},   {0x3099, 0x309a}, {0xfe00, 0xfe0f}, {0xfe20, 0xfe2f}, {0xfeff, 0xfeff},
    {0xe0100, 0xe01ef},
};

/// Ideographs, syllables, full-width forms and pictures.
constexpr Range wide[] = {
    {0x1100, 0x115f},   {0x231a, 0x231b},   {0x2329, 0x232a},   {0x23e9, 0x23ec},
    {0x25fd, 0x25fe},   {0x2614, 0x2615},   {0x2648, 0x2653},   {0x267f, 0x267f},
    {0x26a1, 0x26a1},   {0x26bd, 0x26be},   {0x26d4, 0x26d4},   {0x2705, 0x2705},
    {0x270a, 0x270b},   {0x274c, 0x274c},   {0x2753, 0x2755},   {0x2795, 0x2797},
    {0x2b1b, 0x2b1c},   {0x2e80, 0x303e},   {0x3041, 0x33ff},   {0x3400, 0x4dbf},
    {0x4e00, 0xa4cf},   {0xa960, 0xa97f},   {0xac00, 0xd7a3},   {0xf900, 0xfaff},
    {0xfe30, 0xfe6f},   {0xff01, 0xff60},   {0xffe0, 0xffe6},   {0x17000, 0x18cff},
    {0x1b000, 0x1b2ff}, {0x1f004, 0x1f004}, {0x1f0cf, 0x1f0cf}, {0x1f18e, 0x1f19a},
    {0x1f200, 0x1f64f}, {0x1f680, 0x1f6ff}, {0x1f7e0, 0x1f7eb}, {0x1f90c, 0x1f9ff},
    {0x1fa70, 0x1faff}, {0x20000, 0x3fffd},
};

template <std::size_t Size>
bool isIn(const Range (&ranges)[Size], char32_t character)
{
    const Range* const found =
        std::lower_bound(std::begin(ranges), std::end(ranges), character,
                         [](const Range& range, char32_t c) { return range.last < c; });
    return found != std::end(ranges) && found->first <= character;
}

/// The character at `at`, which is moved behind it. What is not UTF-8 counts byte by byte.
char32_t next(const std::string& text, std::size_t& at)
{
    const auto first = static_cast<unsigned char>(text[at++]);
    std::size_t more = first >= 0xf0 ? 3 : first >= 0xe0 ? 2 : first >= 0xc0 ? 1 : 0;
    char32_t character = more == 0 ? first : first & (0x3fU >> more);
    for (; more > 0 && at < text.size() && (static_cast<unsigned char>(text[at]) & 0xc0U) == 0x80U;
         --more)
        character = character << 6U | (static_cast<unsigned char>(text[at++]) & 0x3fU);
    return character;
}

std::size_t widthOf(char32_t character)
{
    return isIn(marks, character) ? 0 : isIn(wide, character) ? 2 : 1;
}

}  // namespace

std::size_t displayWidth(const std::string& text)
{
    std::size_t width = 0;
    for (std::size_t at = 0; at < text.size();)
        width += widthOf(next(text, at));
    return width;
}

std::string cutToWidth(const std::string& text, std::size_t limit)
{
    if (displayWidth(text) <= limit)
        return text;
    const std::string dots(std::min<std::size_t>(limit, 2), '.');
    std::size_t end = 0;
    std::size_t width = dots.size();
    for (std::size_t at = 0; at < text.size();)
    {
        width += widthOf(next(text, at));
        if (width > limit)
            break;
        end = at;
    }
    return text.substr(0, end) + dots;
}

}  // namespace kit

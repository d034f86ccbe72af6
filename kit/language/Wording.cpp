#include "kit/language/Wording.h"

#include "kit/protocol/Protocol.h"

#include <cstdio>

namespace kit
{

namespace
{

// Longer words are no misspellings, and too much to show.
constexpr std::size_t longestWord = 64;

std::string hex(unsigned char byte)
{
    char text[8];
    std::snprintf(text, sizeof text, "\\x%02x", byte);
    return text;
}

/// Length of the well-formed UTF-8 sequence at `at`, 0 when there is none.
std::size_t utf8Length(const std::string& text, std::size_t at)
{
    const auto byte = [&](std::size_t i)
    { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const unsigned first = byte(at);
    if (first < 0x80)
        return 1;
    // The second byte keeps out what is longer than needed, halves of pairs, what is too large, and
    // the second block of control characters, which can steer a terminal just as the first.
    const unsigned lowest = first == 0xc2 || first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
    const unsigned highest = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
    bool whole =
        first >= 0xc2 && first <= 0xf4 && byte(at + 1) >= lowest && byte(at + 1) <= highest;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    for (std::size_t i = 2; i < length; ++i)
        whole = whole && (byte(at + i) & 0xc0U) == 0x80U;
    return whole ? length : 0;
}

}  // namespace

std::string quote(const std::string& text)
{
    bool plain = !text.empty() && text[0] != '$' && text[0] != '#' && text[0] != '!';
    for (const char c : text)
        plain = plain && static_cast<unsigned char>(c) > ' ' && c != '"' && c != '\'' &&
                c != '\\' && c != '=' && c != 0x7f;
    if (plain)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        if (c == '"' || c == '\\')
            quoted += std::string("\\") + c;
        else if (c == '\n')
            quoted += "\\n";
        else if (static_cast<unsigned char>(c) < ' ' || c == 0x7f)
            quoted += hex(static_cast<unsigned char>(c));
        else
            quoted += c;
    return quoted + "\"";
}

std::string printable(const std::string& text, std::size_t limit)
{
    std::string shown;
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++characters)
    {
        if (characters == limit)
            return shown + "... (" + std::to_string(text.size()) + " bytes)";
        const std::size_t length = utf8Length(text, i);
        const unsigned char byte = static_cast<unsigned char>(text[i]);
        if (length == 0 || byte < ' ' || byte == 0x7f)
        {
            shown += hex(byte);
            ++i;
        }
        else
        {
            shown.append(text, i, length);
            i += length;
        }
    }
    return shown;
}

std::string shown(const std::string& text, std::size_t limit)
{
    return printable(quote(text), limit);
}

std::string quoted(const std::string& text)
{
    return "\"" + printable(text, longestWord) + "\"";
}

std::string listed(const std::vector<std::string>& words, const std::string& last)
{
    std::string text;
    for (std::size_t i = 0; i < words.size(); ++i)
        text += (i == 0                                   ? ""
                 : i + 1 == words.size() && !last.empty() ? " " + last + " "
                                                          : ", ") +
                words[i];
    return text;
}

std::string counted(std::size_t number, const std::string& what)
{
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string didYouMean(const std::string& word, const std::vector<std::string>& known,
                       const std::string& otherwise, const std::string& before,
                       const std::string& after)
{
    const std::string near = word.size() > longestWord ? "" : nearest(word, known);
    return near.empty() ? otherwise : ", did you mean " + before + near + after + "?";
}

}  // namespace kit

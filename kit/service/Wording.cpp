#include "kit/service/Wording.h"

#include "kit/protocol/Protocol.h"

namespace kit::service
{

namespace
{

// Longer words are no misspellings, and too much to show.
constexpr std::size_t longestName = 64;

}  // namespace

std::string shown(const std::string& text)
{
    std::string result;
    for (const char c : text.substr(0, longestName))
        result += static_cast<unsigned char>(c) < 0x20 || c == 0x7f ? '?' : c;
    return text.size() > longestName ? result + "..." : result;
}

std::string quoted(const std::string& text)
{
    return "\"" + shown(text) + "\"";
}

std::string suggestion(const std::string& word, const std::vector<std::string>& known,
                       const std::string& before, const std::string& after)
{
    const std::string near = word.size() > longestName ? "" : nearest(word, known);
    return near.empty() ? "" : ", did you mean " + before + near + after + "?";
}

}  // namespace kit::service

#include "kit/binding/ExpectedEvent.h"

namespace kit
{

ExpectedEvent::ExpectedEvent(const Event& expected, const Values& values) : event(&expected)
{
    for (const auto& [name, value] : values)
    {
        const std::size_t place = checkedPlaceOf(event->method, event->arguments, name);
        wanted.push_back({place, toWire(event->arguments[place], value)});
    }
}

std::vector<std::size_t> ExpectedEvent::differences(const ReceivedEvent& received) const
{
    std::vector<std::size_t> different;
    for (std::size_t i = 0; i < wanted.size(); ++i)
    {
        const std::string& value = received.values[wanted[i].argument];
        if (wanted[i].pattern ? !matchesPattern(wanted[i].value, value) : value != wanted[i].value)
            different.push_back(i);
    }
    return different;
}

bool matchesPattern(const std::string& pattern, const std::string& text)
{
    // Where the last "*" stood, and how much of the text it stands for so far.
    std::size_t star = std::string::npos;
    std::size_t resume = 0;
    std::size_t p = 0;
    std::size_t t = 0;
    while (t < text.size())
        if (p < pattern.size() && pattern[p] == '*')
        {
            star = p++;
            resume = t;
        }
        else if (p < pattern.size() && pattern[p] == text[t])
        {
            ++p;
            ++t;
        }
        else if (star != std::string::npos)
        {
            p = star + 1;
            t = ++resume;
        }
        else
            return false;
    while (p < pattern.size() && pattern[p] == '*')
        ++p;
    return p == pattern.size();
}

}  // namespace kit

#include "kit/language/Durations.h"

#include "kit/language/Wording.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace kit
{

namespace
{

constexpr double longest = 24 * 3600000.0;

struct Unit
{
    const char* name;
    double milliseconds;
};

constexpr Unit units[] = {{"ms", 1}, {"s", 1000}, {"min", 60000}, {"h", 3600000}};

}  // namespace

std::chrono::milliseconds parseDuration(const Word& word)
{
    // Digits first, so that "nan", "1e9" and "0x10" are none.
    const std::size_t digits =
        std::min(word.text.size(), word.text.find_first_not_of("0123456789."));
    double number = 0;
    const char* const begin = word.text.data();
    const auto read = std::from_chars(begin, begin + digits, number, std::chars_format::fixed);
    for (const Unit& unit : units)
        if (read.ec != std::errc::invalid_argument && read.ptr == begin + digits &&
            word.text.substr(digits) == unit.name)
        {
            const double milliseconds = number * unit.milliseconds;
            if (read.ec == std::errc::result_out_of_range || milliseconds > longest)
                throw Mistake(shown(word.text, 40) + " is longer than a day", word.column);
            return std::chrono::milliseconds(std::lround(milliseconds));
        }
    throw Mistake(shown(word.text, 40) + " is no time; write it as 250ms, 1.5s, 2min or 1h",
                  word.column);
}

std::string durationText(std::chrono::milliseconds time)
{
    const auto milliseconds = time.count();
    if (milliseconds != 0 && milliseconds < 1000)
        return std::to_string(milliseconds) + " ms";
    std::string text = std::to_string(milliseconds / 1000);
    std::string fraction = std::to_string(1000 + milliseconds % 1000).substr(1);
    fraction.erase(fraction.find_last_not_of('0') + 1);
    return text + (fraction.empty() ? "" : "." + fraction) + " s";
}

}  // namespace kit

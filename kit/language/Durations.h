#ifndef KIT_LANGUAGE_DURATIONS_H
#define KIT_LANGUAGE_DURATIONS_H

#include "kit/language/Words.h"

#include <chrono>
#include <string>

namespace kit
{

/// "250ms", "1.5s", "2min", "1h"; raises Mistake for anything else, and beyond a day.
std::chrono::milliseconds parseDuration(const Word& word);

/// "1.5 s" and the like, for people.
std::string durationText(std::chrono::milliseconds time);

}  // namespace kit

#endif

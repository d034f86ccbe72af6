#ifndef KIT_LANGUAGE_SWITCHES_H
#define KIT_LANGUAGE_SWITCHES_H

#include "kit/language/Words.h"

namespace kit
{

/// True for on, true, yes and 1, false for off, false, no and 0; raises Mistake for anything else.
bool parseSwitch(const Word& word);

}  // namespace kit

#endif

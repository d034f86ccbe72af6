#ifndef KIT_PHONE_HELP_H
#define KIT_PHONE_HELP_H

#include "kit/language/Words.h"

#include <string>

namespace kit::phone
{

/// What `help TOPIC` prints, without a line end. "" is the overview; an unknown topic raises Mistake.
std::string helpOn(const Word& word);

}  // namespace kit::phone

#endif

#ifndef KIT_PHONE_HELP_H
#define KIT_PHONE_HELP_H

#include <string>

namespace kit::phone
{

/// What `help TOPIC` prints, without a line end. "" is the overview; an unknown topic raises Mistake.
std::string helpOn(const std::string& topic);

}  // namespace kit::phone

#endif

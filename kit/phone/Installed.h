#ifndef KIT_PHONE_INSTALLED_H
#define KIT_PHONE_INSTALLED_H

#include <string>

namespace kit::phone
{

/// Path of what is installed with the program under this name, "" when it is not there.
std::string installed(const std::string& name);

}  // namespace kit::phone

#endif

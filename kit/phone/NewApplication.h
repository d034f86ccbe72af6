#ifndef KIT_PHONE_NEW_APPLICATION_H
#define KIT_PHONE_NEW_APPLICATION_H

#include <string>

namespace kit::phone
{

/// Puts a small application into a new folder, named as the folder is: class, program, passing test,
/// build file. Returns, for people, what to do next. Raises Mistake.
std::string makeApplication(const std::string& folder);

}  // namespace kit::phone

#endif

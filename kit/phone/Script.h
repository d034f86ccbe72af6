#ifndef KIT_PHONE_SCRIPT_H
#define KIT_PHONE_SCRIPT_H

#include <string>
#include <vector>

namespace kit::phone
{

/// The lines of a file.
struct Script
{
    std::string name;  ///< of the file, without its folder
    std::vector<std::string> lines;
};

/// Reads a file, or one of the scripts that are installed with the phone. Raises Mistake.
Script readScript(const std::string& path);

}  // namespace kit::phone

#endif

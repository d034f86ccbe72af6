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

/// A first line without the mark that some editors put before UTF-8.
std::string withoutMark(const std::string& line);

}  // namespace kit::phone

#endif

#ifndef KIT_SERVICE_WORDING_H
#define KIT_SERVICE_WORDING_H

#include <string>
#include <vector>

// How complaints show what somebody sent: short, and without control characters.
namespace kit::service
{

std::string quoted(const std::string& text);

/// ", did you mean <before>word<after>?", or "" when nothing is near.
std::string suggestion(const std::string& word, const std::vector<std::string>& known,
                       const std::string& before = "", const std::string& after = "");

/// The text as quoted() has it, without the quotes.
std::string shown(const std::string& text);

}  // namespace kit::service

#endif

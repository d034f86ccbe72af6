#ifndef KIT_LANGUAGE_WORDING_H
#define KIT_LANGUAGE_WORDING_H

#include <cstddef>
#include <string>
#include <vector>

// How texts of other people, and lists of words, are put before a person.
namespace kit
{

/// The word as it has to be typed to come out the same.
std::string quote(const std::string& text);

/// Text for the screen: control characters and what is not UTF-8 as \x1b, long text cut at `limit`.
std::string printable(const std::string& text, std::size_t limit = std::string::npos);

/// A value for the screen: as it has to be typed, and printable.
std::string shown(const std::string& text, std::size_t limit = std::string::npos);

/// Somebody's word in a complaint: printable, not too long, always in quotation marks.
std::string quoted(const std::string& text);

/// "a, b, c"; with a last word "a, b or c".
std::string listed(const std::vector<std::string>& words, const std::string& last = "");

/// "1 call", "2 calls"
std::string counted(std::size_t number, const std::string& what);

/// ", did you mean <before>word<after>?"; `otherwise` when nothing is near.
std::string didYouMean(const std::string& word, const std::vector<std::string>& known,
                       const std::string& otherwise = "", const std::string& before = "",
                       const std::string& after = "");

}  // namespace kit

#endif

#ifndef KIT_LANGUAGE_LANGUAGE_H
#define KIT_LANGUAGE_LANGUAGE_H

#include <chrono>
#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace kit::phone
{

/// A line that cannot be carried out as it was typed. What it says is one clear line for people.
class Mistake : public std::runtime_error
{
public:
    explicit Mistake(const std::string& what, std::size_t column = 0)
        : std::runtime_error(what), column_(column)
    {
    }

    /// Where in the line, counted from 1; 0 when the line as a whole is meant.
    std::size_t column() const { return column_; }

private:
    std::size_t column_;
};

/// One word of a line: `text`, or `name=text`.
struct Word
{
    std::string name;     ///< "" when none was given
    std::string text;     ///< without its quotes
    bool quoted = false;  ///< some of the text stood in quotes: it means nothing but itself
    std::size_t column = 0;
};

/// One line: a command, and what stands behind it as it was typed.
///
/// A line is `command word name=word "quoted word" # comment`. Whether the rest is split into words
/// is the command's affair: some take it as it stands.
struct Statement
{
    bool mustFail = false;  ///< began with "!"
    Word command;           ///< text is "" on an empty line
    std::string rest;       ///< without blanks at either end
    std::size_t restColumn = 0;

    bool empty() const { return command.text.empty() && !mustFail; }
};

/// Raises Mistake on characters that are no text.
Statement parseStatement(const std::string& line);

/// Splits at blanks, takes quotes and \ away, stops at a comment. Raises Mistake on an open quote.
std::vector<Word> splitWords(const std::string& text, std::size_t column = 1);

/// Puts what was captured earlier in the place of each word `$name`.
using Variables = std::map<std::string, std::string>;
void fillIn(std::vector<Word>& words, const Variables& variables);

/// "1s", "250ms", "2min"; raises Mistake for anything else, and beyond an hour.
std::chrono::milliseconds parseDuration(const Word& word);

/// "1.5 s" and the like, for people.
std::string durationText(std::chrono::milliseconds time);

/// The word as it has to be typed to come out the same.
std::string quote(const std::string& text);

/// Text for the screen: control characters and what is not UTF-8 as \x1b, long text cut at `limit`.
std::string printable(const std::string& text, std::size_t limit = std::string::npos);

/// A value for the screen: as it has to be typed, and printable.
std::string shown(const std::string& text, std::size_t limit = std::string::npos);

}  // namespace kit::phone

#endif

#ifndef KIT_LANGUAGE_WORDS_H
#define KIT_LANGUAGE_WORDS_H

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace kit
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

    /// For who takes no names: the word with what stands before its "=".
    std::string whole() const { return name.empty() ? text : name + "=" + text; }
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

/// Takes a text apart at its blanks, one word after another; quotes and \ are taken away.
class Words
{
public:
    /// The column is where the text begins in its line. Each of the separators is a word of its own.
    explicit Words(std::string text, std::size_t column = 1, std::string separators = "");

    /// False at the end and at a comment. Raises Mistake on an open quote.
    bool next(Word& word);

    /// What is left, as it stands.
    std::string rest();

private:
    bool separates(char c) const { return separators_.find(c) != std::string::npos; }
    void skipBlanks();
    void takeQuoted(Word& word, char mark);
    void takeEscape(Word& word);

    const std::string text_;
    const std::size_t column_;
    const std::string separators_;
    std::size_t at_ = 0;
};

/// All of them at once.
std::vector<Word> splitWords(const std::string& text, std::size_t column = 1,
                             const std::string& separators = "");

/// Puts what was captured earlier in the place of each word `$name`.
using Variables = std::map<std::string, std::string>;
void fillIn(std::vector<Word>& words, const Variables& variables);

/// The same in a text that somebody else reads: all else, names that are not known too, stays as it is.
std::string filledIn(const std::string& text, const Variables& variables);

}  // namespace kit

#endif

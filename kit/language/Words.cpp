#include "kit/language/Words.h"

#include "kit/language/Wording.h"

#include <cctype>
#include <utility>

namespace kit
{

namespace
{

bool blank(char c)
{
    return c == ' ' || c == '\t';
}

bool nameCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool isName(const std::string& text)
{
    if (text.empty() || std::isdigit(static_cast<unsigned char>(text[0])) != 0)
        return false;
    for (const char c : text)
        if (!nameCharacter(c))
            return false;
    return true;
}

/// "$name", not in quotes.
bool isVariable(const Word& word)
{
    return !word.quoted && word.text.size() > 1 && word.text[0] == '$';
}

}  // namespace

Words::Words(std::string text, std::size_t column, std::string separators)
    : text_(std::move(text)), column_(column), separators_(std::move(separators))
{
}

void Words::skipBlanks()
{
    while (at_ < text_.size() && blank(text_[at_]))
        ++at_;
}

bool Words::next(Word& word)
{
    skipBlanks();
    if (at_ == text_.size() || text_[at_] == '#')
        return false;
    word = Word();
    word.column = column_ + at_;
    bool nameIsPossible = true;
    if (separates(text_[at_]))
    {
        word.text = text_[at_++];
        return true;
    }
    while (at_ < text_.size() && !blank(text_[at_]) && !separates(text_[at_]))
    {
        const char c = text_[at_];
        if (c == '"' || c == '\'')
        {
            takeQuoted(word, c);
            nameIsPossible = false;
        }
        else if (c == '\\')
        {
            takeEscape(word);
            nameIsPossible = false;
        }
        else if (c == '=' && nameIsPossible && isName(word.text))
        {
            word.name = std::exchange(word.text, "");
            nameIsPossible = false;
            ++at_;
        }
        else
        {
            word.text += c;
            ++at_;
        }
    }
    return true;
}

std::string Words::rest()
{
    skipBlanks();
    std::string rest = text_.substr(at_);
    at_ = text_.size();
    return rest;
}

void Words::takeQuoted(Word& word, char mark)
{
    const std::size_t begin = at_++;
    word.quoted = true;
    while (at_ < text_.size() && text_[at_] != mark)
        if (mark == '"' && text_[at_] == '\\')
            takeEscape(word);
        else
            word.text += text_[at_++];
    if (at_ == text_.size())
        throw Mistake(std::string("the quote ") + mark + " is not closed", column_ + begin);
    ++at_;
}

void Words::takeEscape(Word& word)
{
    const std::size_t begin = at_++;
    word.quoted = true;
    if (at_ == text_.size())
        throw Mistake("nothing stands behind the last \\", column_ + begin);
    const char c = text_[at_++];
    if (c == 'n')
        word.text += '\n';
    else if (c == 't')
        word.text += '\t';
    else if (c == 'r')
        word.text += '\r';
    else if (c == 'x')
    {
        const int high = at_ < text_.size() ? hexDigit(text_[at_]) : -1;
        const int low = at_ + 1 < text_.size() ? hexDigit(text_[at_ + 1]) : -1;
        if (high < 0 || low < 0)
            throw Mistake("\\x must be followed by two hexadecimal digits", column_ + begin);
        word.text += static_cast<char>(high * 16 + low);
        at_ += 2;
    }
    else
        word.text += c;
}

Statement parseStatement(const std::string& line)
{
    for (std::size_t i = 0; i < line.size(); ++i)
        if ((static_cast<unsigned char>(line[i]) < 0x20 && line[i] != '\t' &&
             !(line[i] == '\r' && i + 1 == line.size())) ||
            line[i] == 0x7f)
        {
            const std::string byte = printable(std::string(1, line[i]));
            throw Mistake("the byte 0" + byte.substr(1) + " is no text; write it as " + byte +
                              " in a word",
                          i + 1);
        }
    Statement statement;
    std::size_t at = 0;
    std::size_t end = line.size();
    while (end > 0 && (blank(line[end - 1]) || line[end - 1] == '\r'))
        --end;
    const auto skipBlanks = [&]
    {
        while (at < end && blank(line[at]))
            ++at;
    };
    skipBlanks();
    if (at < end && line[at] == '!')
    {
        statement.mustFail = true;
        ++at;
        skipBlanks();
    }
    statement.command.column = at + 1;
    if (at < end && line[at] != '#')
        while (at < end && !blank(line[at]))
            statement.command.text += line[at++];
    else
        at = end;
    skipBlanks();
    statement.rest = line.substr(at, end - at);
    statement.restColumn = at + 1;
    if (statement.mustFail && statement.command.text.empty())
        throw Mistake("\"!\" stands before a command that must fail; there is none", 1);
    return statement;
}

std::vector<Word> splitWords(const std::string& text, std::size_t column,
                             const std::string& separators)
{
    std::vector<Word> split;
    Words words(text, column, separators);
    Word word;
    while (words.next(word))
        split.push_back(word);
    return split;
}

void fillIn(std::vector<Word>& words, const Variables& variables)
{
    for (Word& word : words)
    {
        if (!isVariable(word))
            continue;
        const auto found = variables.find(word.text.substr(1));
        if (found == variables.end())
        {
            std::vector<std::string> known;
            for (const auto& variable : variables)
                known.push_back("$" + variable.first);
            throw Mistake(word.text + " has not been captured (expect ... as " +
                              word.text.substr(1) +
                              "); known: " + (known.empty() ? "none" : listed(known)),
                          word.column);
        }
        word.text = found->second;
    }
}

std::string filledIn(const std::string& text, const Variables& variables)
{
    std::vector<Word> words;
    try
    {
        words = splitWords(text);
    }
    catch (const Mistake&)
    {
        return text;
    }
    std::string filled = text;
    // From the end, so that columns stay right.
    for (auto word = words.rbegin(); word != words.rend(); ++word)
        if (const auto found =
                isVariable(*word) ? variables.find(word->text.substr(1)) : variables.end();
            found != variables.end())
            filled.replace(word->column - 1 + word->whole().size() - word->text.size(),
                           word->text.size(), found->second);
    return filled;
}

}  // namespace kit

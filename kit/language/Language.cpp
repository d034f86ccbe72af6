#include "kit/language/Language.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace kit::phone
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

std::string hex(unsigned char byte)
{
    char text[8];
    std::snprintf(text, sizeof text, "%02x", byte);
    return text;
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

/// Reads one word after another out of a text.
class Splitter
{
public:
    Splitter(const std::string& text, std::size_t column) : text_(text), column_(column) {}

    /// False at the end and at a comment.
    bool next(Word& word)
    {
        while (at_ < text_.size() && blank(text_[at_]))
            ++at_;
        if (at_ == text_.size() || text_[at_] == '#')
            return false;
        word = Word();
        word.column = column_ + at_;
        bool nameIsPossible = true;
        while (at_ < text_.size() && !blank(text_[at_]))
        {
            const char c = text_[at_];
            if (c == '"' || c == '\'')
            {
                quoted(word, c);
                nameIsPossible = false;
            }
            else if (c == '\\')
            {
                escape(word);
                nameIsPossible = false;
            }
            else if (c == '=' && nameIsPossible && word.name.empty() && isName(word.text))
            {
                word.name = word.text;
                word.text.clear();
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

private:
    static bool isName(const std::string& text)
    {
        if (text.empty() || std::isdigit(static_cast<unsigned char>(text[0])) != 0)
            return false;
        for (const char c : text)
            if (!nameCharacter(c))
                return false;
        return true;
    }

    void quoted(Word& word, char mark)
    {
        const std::size_t begin = at_++;
        word.quoted = true;
        while (at_ < text_.size() && text_[at_] != mark)
            if (mark == '"' && text_[at_] == '\\')
                escape(word);
            else
                word.text += text_[at_++];
        if (at_ == text_.size())
            throw Mistake(std::string("the quote ") + mark + " is not closed", column_ + begin);
        ++at_;
    }

    void escape(Word& word)
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

    const std::string& text_;
    const std::size_t column_;
    std::size_t at_ = 0;
};

/// Length of the well-formed UTF-8 sequence at `at`, 0 when there is none.
std::size_t utf8Length(const std::string& text, std::size_t at)
{
    const auto byte = [&](std::size_t i)
    { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const unsigned first = byte(at);
    std::size_t length = 0;
    unsigned code = 0;
    if (first < 0x80)
        return 1;
    if (first >= 0xc2 && first <= 0xdf)
        length = 2, code = first & 0x1fU;
    else if (first >= 0xe0 && first <= 0xef)
        length = 3, code = first & 0x0fU;
    else if (first >= 0xf0 && first <= 0xf4)
        length = 4, code = first & 0x07U;
    else
        return 0;
    for (std::size_t i = 1; i < length; ++i)
    {
        if ((byte(at + i) & 0xc0U) != 0x80U)
            return 0;
        code = code << 6U | (byte(at + i) & 0x3fU);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    // The second block of control characters can steer a terminal just as the first.
    const bool control = code < 0xa0;
    return overlong || surrogate || control || code > 0x10ffff ? 0 : length;
}

}  // namespace

Statement parseStatement(const std::string& line)
{
    for (std::size_t i = 0; i < line.size(); ++i)
        if ((static_cast<unsigned char>(line[i]) < 0x20 && line[i] != '\t' &&
             !(line[i] == '\r' && i + 1 == line.size())) ||
            line[i] == 0x7f)
            throw Mistake("the byte 0x" + hex(static_cast<unsigned char>(line[i])) +
                              " is no text; write it as \\x" +
                              hex(static_cast<unsigned char>(line[i])) + " in a word",
                          i + 1);
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

std::vector<Word> splitWords(const std::string& text, std::size_t column)
{
    std::vector<Word> words;
    Splitter splitter(text, column);
    Word word;
    while (splitter.next(word))
        words.push_back(word);
    return words;
}

void fillIn(std::vector<Word>& words, const Variables& variables)
{
    for (Word& word : words)
    {
        if (word.quoted || word.text.size() < 2 || word.text[0] != '$')
            continue;
        const auto found = variables.find(word.text.substr(1));
        if (found == variables.end())
        {
            std::string known;
            for (const auto& variable : variables)
                known += (known.empty() ? "" : ", ") + ("$" + variable.first);
            throw Mistake(word.text + " has not been captured (expect ... as " +
                              word.text.substr(1) + "); known: " + (known.empty() ? "none" : known),
                          word.column);
        }
        word.text = found->second;
    }
}

std::chrono::milliseconds parseDuration(const Word& word)
{
    struct Unit
    {
        const char* name;
        double milliseconds;
    };
    static const Unit units[] = {{"ms", 1}, {"s", 1000}, {"min", 60000}};
    // Digits first, so that "nan", "1e9" and "0x10" are none.
    const std::size_t digits =
        std::min(word.text.size(), word.text.find_first_not_of("0123456789."));
    const std::string number = word.text.substr(0, digits);
    const bool isNumber = number.find_first_of("0123456789") != std::string::npos &&
                          number.find('.') == number.rfind('.');
    for (const Unit& unit : units)
        if (isNumber && word.text.substr(digits) == unit.name)
        {
            const double milliseconds = std::strtod(number.c_str(), nullptr) * unit.milliseconds;
            if (milliseconds > 3600000)
                throw Mistake(shown(word.text, 40) + " is longer than an hour", word.column);
            return std::chrono::milliseconds(std::lround(milliseconds));
        }
    throw Mistake(shown(word.text, 40) + " is no time; write it as 500ms, 2s or 1min", word.column);
}

std::string durationText(std::chrono::milliseconds time)
{
    const long milliseconds = static_cast<long>(time.count());
    if (milliseconds < 1000)
        return std::to_string(milliseconds) + " ms";
    std::string text = std::to_string(milliseconds / 1000);
    std::string fraction = std::to_string(1000 + milliseconds % 1000).substr(1);
    fraction.erase(fraction.find_last_not_of('0') + 1);
    return text + (fraction.empty() ? "" : "." + fraction) + " s";
}

std::string quote(const std::string& text)
{
    bool plain = !text.empty() && text[0] != '$' && text[0] != '#' && text[0] != '!';
    for (const char c : text)
        plain = plain && static_cast<unsigned char>(c) > ' ' && c != '"' && c != '\'' &&
                c != '\\' && c != '=' && c != 0x7f;
    if (plain)
        return text;
    std::string quoted = "\"";
    for (const char c : text)
        if (c == '"' || c == '\\')
            quoted += std::string("\\") + c;
        else if (c == '\n')
            quoted += "\\n";
        else if (static_cast<unsigned char>(c) < ' ' || c == 0x7f)
            quoted += "\\x" + hex(static_cast<unsigned char>(c));
        else
            quoted += c;
    return quoted + "\"";
}

std::string printable(const std::string& text, std::size_t limit)
{
    std::string shown;
    std::size_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++characters)
    {
        if (characters == limit)
            return shown + "... (" + std::to_string(text.size()) + " bytes)";
        const std::size_t length = utf8Length(text, i);
        const unsigned char byte = static_cast<unsigned char>(text[i]);
        if (length == 0 || byte < ' ' || byte == 0x7f)
        {
            shown += "\\x" + hex(byte);
            ++i;
        }
        else
        {
            shown.append(text, i, length);
            i += length;
        }
    }
    return shown;
}

std::string shown(const std::string& text, std::size_t limit)
{
    return printable(quote(text), limit);
}

}  // namespace kit::phone

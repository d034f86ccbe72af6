#ifndef KIT_PHONE_DISPLAY_H
#define KIT_PHONE_DISPLAY_H

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace kit::phone
{

/// What the phone prints, line by line.
class Display
{
public:
    enum class Style
    {
        plain,
        strong,  ///< what a script says, and its lines
        good,    ///< a result that is a success
        bad,     ///< a result that is none
        event,
        faint  ///< raw texts, and what the phone remarks
    };

    Display(std::ostream& out, std::ostream& errors, bool colours);

    void print(const std::string& text, Style style = Style::plain);

    /// For what is wrong; goes to the error stream.
    void complain(const std::string& text);

    /// Shows a line that the next print overwrites. Only for terminals.
    void progress(const std::string& text);
    void endProgress();

    /// What to do around each line while a line is being typed below.
    void setSurroundings(std::function<void()> before, std::function<void()> after);

private:
    void write(std::ostream& stream, const std::string& text, Style style);

    std::ostream& out_;
    std::ostream& errors_;
    const bool colours_;
    bool progressShown_ = false;
    std::function<void()> before_;
    std::function<void()> after_;
};

/// Colours are for terminals, and for those who do not forbid them with NO_COLOR.
bool coloursWanted();

/// Words in lines of at most this many columns, each line behind an indent.
std::string sideBySide(const std::vector<std::string>& words, std::size_t width,
                       std::size_t indent = 0);

/// Columns of the terminal that is printed to, 80 where it is none.
std::size_t screenWidth();

}  // namespace kit::phone

#endif

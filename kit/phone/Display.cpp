#include "kit/phone/Display.h"

#include <cstdlib>
#include <ostream>
#include <sys/ioctl.h>
#include <unistd.h>
#include <utility>

namespace kit::phone
{

namespace
{

/// In the order of Display::Style.
const char* const escapes[] = {"", "\033[1m", "\033[32m", "\033[31m", "\033[36m", "\033[2m"};

}  // namespace

Display::Display(std::ostream& out, std::ostream& errors, bool colours)
    : out_(out), errors_(errors), colours_(colours)
{
}

void Display::print(const std::string& text, Style style)
{
    write(out_, text, style);
}

void Display::complain(const std::string& text)
{
    write(errors_, text, Style::bad);
}

void Display::write(std::ostream& stream, const std::string& text, Style style)
{
    endProgress();
    if (before_)
        before_();
    const std::string colour = colours_ ? escapes[static_cast<int>(style)] : "";
    stream << colour << text << (colour.empty() ? "" : "\033[0m") << '\n' << std::flush;
    if (after_)
        after_();
}

void Display::progress(const std::string& text)
{
    errors_ << "\r\033[K" << text << std::flush;
    progressShown_ = true;
}

void Display::endProgress()
{
    if (progressShown_)
        errors_ << "\r\033[K" << std::flush;
    progressShown_ = false;
}

void Display::setSurroundings(std::function<void()> before, std::function<void()> after)
{
    before_ = std::move(before);
    after_ = std::move(after);
}

bool coloursWanted()
{
    const char* const forbidden = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) != 0 && (forbidden == nullptr || *forbidden == '\0') &&
           (terminal == nullptr || std::string(terminal) != "dumb");
}

std::string sideBySide(const std::vector<std::string>& words, std::size_t width, std::size_t indent)
{
    std::string text;
    std::string line;
    for (const std::string& word : words)
    {
        if (!line.empty() && line.size() + 2 + word.size() > width)
        {
            text += line + "\n";
            line.clear();
        }
        line += std::string(line.empty() ? indent : 2, ' ') + word;
    }
    return line.empty() ? text : text + line + "\n";
}

std::size_t screenWidth()
{
    winsize size = {};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace kit::phone

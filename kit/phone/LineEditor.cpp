#include "kit/phone/LineEditor.h"

#include "kit/phone/Completion.h"
#include "kit/phone/Interruptions.h"

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cwchar>
#include <langinfo.h>
#include <poll.h>
#include <unistd.h>
#include <utility>

namespace kit::phone
{

namespace
{

const char* const promptText = "phone> ";
constexpr std::size_t promptWidth = 7;

void put(const std::string& text)
{
    std::fputs(text.c_str(), stdout);
    std::fflush(stdout);
}

}  // namespace

LineEditor::LineEditor(Session& session, Display& display, std::string historyFile)
    : session_(session),
      display_(display),
      historyFile_(std::move(historyFile)),
      editor_(nullptr),
      history_(history_init())
{
    // Texts are UTF-8, also where the environment says nothing of the kind.
    std::setlocale(LC_CTYPE, "");
    if (std::string(nl_langinfo(CODESET)) != "UTF-8")
        std::setlocale(LC_CTYPE, "C.UTF-8");
    editor_ = el_init("communications-phone", stdin, stdout, stderr);
    el_set(editor_, EL_CLIENTDATA, this);
    el_set(editor_, EL_PROMPT, prompt);
    el_set(editor_, EL_EDITOR, "emacs");
    el_set(editor_, EL_SIGNAL, 0);
    el_set(editor_, EL_GETCFN, readCharacter);
    // The narrow call would copy the two texts and never release them.
    el_wset(editor_, EL_ADDFN, L"complete", L"completes the word", completeWord);
    el_set(editor_, EL_BIND, "^I", "complete", nullptr);
    el_set(editor_, EL_BIND, "^R", "em-inc-search-prev", nullptr);

    HistEvent event = {};
    history(history_, &event, H_SETSIZE, 1000);
    history(history_, &event, H_SETUNIQUE, 1);
    if (!historyFile_.empty())
        history(history_, &event, H_LOAD, historyFile_.c_str());
    el_set(editor_, EL_HIST, history, history_);
    display_.setSurroundings([this] { leaveLine(); }, [this] { comeBack(); });
}

LineEditor::~LineEditor()
{
    display_.setSurroundings(nullptr, nullptr);
    HistEvent event = {};
    if (!historyFile_.empty() && history(history_, &event, H_SAVE, historyFile_.c_str()) < 0)
        display_.complain("cannot write the history to " + historyFile_);
    history_end(history_);
    el_end(editor_);
}

bool LineEditor::read(std::string& line)
{
    for (;;)
    {
        // The terminal has echoed ^C where the line editor expects an empty line.
        if (interruptions() > 0)
            put("\n");
        setInterruptions(0);
        int count = 0;
        typing_ = true;
        const char* const text = el_gets(editor_, &count);
        typing_ = false;
        if (interruptions() > 0)
        {
            // As shells do: the line is dropped, nothing else.
            put("^C");
            el_reset(editor_);
            continue;
        }
        if (text == nullptr || count <= 0)
        {
            put("\n");
            return false;
        }
        line.assign(text, static_cast<std::size_t>(count));
        const bool whole = line.back() == '\n';
        if (whole)
            line.pop_back();
        if (line.find_first_not_of(" \t") != std::string::npos)
        {
            HistEvent event = {};
            history(history_, &event, H_ENTER, line.c_str());
        }
        return true;
    }
}

LineEditor& LineEditor::of(EditLine* editor)
{
    void* data = nullptr;
    el_get(editor, EL_CLIENTDATA, &data);
    return *static_cast<LineEditor*>(data);
}

char* LineEditor::prompt(EditLine*)
{
    return const_cast<char*>(promptText);
}

int LineEditor::readCharacter(EditLine* editor, wchar_t* character)
{
    LineEditor& self = of(editor);
    std::mbstate_t state = {};
    for (;;)
    {
        pollfd sources[] = {{STDIN_FILENO, POLLIN, 0},
                            {self.session_.recorder().wakeDescriptor(), POLLIN, 0}};
        const int ready = poll(sources, 2, 50);
        if (interruptions() > 0)
            return -1;
        self.session_.phone().keepTime();
        // Also without a call: that the service has gone is told among the events.
        if (ready >= 0 && sources[0].revents == 0)
            self.session_.phone().pump();
        if (ready <= 0 || sources[0].revents == 0)
            continue;
        char byte = 0;
        const ssize_t got = ::read(STDIN_FILENO, &byte, 1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return 0;
        const std::size_t used = std::mbrtowc(character, &byte, 1, &state);
        if (used == static_cast<std::size_t>(-2))
            continue;
        if (used == static_cast<std::size_t>(-1))
        {
            state = {};
            *character = L'?';
        }
        return 1;
    }
}

unsigned char LineEditor::completeWord(EditLine* editor, int)
{
    LineEditor& self = of(editor);
    const LineInfo* const info = el_line(editor);
    const std::string typed(info->buffer, info->cursor);
    const Completions found = self.session_.completionsFor(typed);
    if (found.words.empty())
        return CC_REFRESH_BEEP;
    const std::string word = typed.substr(found.begin);
    std::string more = found.commonPart().substr(word.size());
    // Behind "name=" comes a value.
    if (found.words.size() == 1 && found.words[0].back() != '=')
        more += ' ';
    if (!more.empty())
    {
        el_insertstr(editor, more.c_str());
        return CC_REFRESH;
    }
    std::string list;
    std::size_t width = 0;
    for (const std::string& candidate : found.words)
    {
        if (width + candidate.size() + 2 > screenWidth() && width > 0)
        {
            list += '\n';
            width = 0;
        }
        list += (width > 0 ? "  " : "") + candidate;
        width += candidate.size() + 2;
    }
    self.display_.print(list, Display::Style::faint);
    return CC_NORM;
}

void LineEditor::leaveLine()
{
    if (!typing_)
        return;
    // To the first row of the line being typed, which may have become several.
    const LineInfo* const info = el_line(editor_);
    std::size_t width = promptWidth;
    for (const char* at = info->buffer; at < info->cursor; ++at)
        width += (static_cast<unsigned char>(*at) & 0xc0U) != 0x80U ? 1 : 0;
    const std::size_t rows = width / screenWidth();
    put((rows > 0 ? "\033[" + std::to_string(rows) + "A" : std::string()) + "\r\033[J");
}

void LineEditor::comeBack()
{
    if (typing_)
        el_set(editor_, EL_REFRESH);
}

}  // namespace kit::phone

#include "kit/phone/LineEditor.h"

#include "kit/phone/Completion.h"
#include "kit/phone/Interruptions.h"
#include "kit/trace/Width.h"

#include <cerrno>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <fstream>
#include <iterator>
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

volatile std::sig_atomic_t stopWanted = 0;
volatile std::sig_atomic_t continued = 0;
volatile std::sig_atomic_t resized = 0;

extern "C" void noteSignal(int signal)
{
    (signal == SIGTSTP ? stopWanted : signal == SIGCONT ? continued : resized) = 1;
}

/// Ctrl-Z, its end, and a change of size are the line editor's affair while a line is being typed.
class Signals
{
public:
    Signals()
    {
        struct sigaction action = {};
        action.sa_handler = noteSignal;
        for (std::size_t i = 0; i < std::size(numbers); ++i)
            sigaction(numbers[i], &action, &before_[i]);
    }

    ~Signals()
    {
        for (std::size_t i = 0; i < std::size(numbers); ++i)
            sigaction(numbers[i], &before_[i], nullptr);
    }

    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

private:
    static constexpr int numbers[] = {SIGTSTP, SIGCONT, SIGWINCH};
    struct sigaction before_[std::size(numbers)] = {};
};

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
    {
        history(history_, &event, H_LOAD, historyFile_.c_str());
        // Told now and not when there is a history to lose.
        if (!std::ofstream(historyFile_, std::ios::app))
            display_.complain("the history is not kept: " + historyFile_ +
                              " cannot be written: " + std::strerror(errno));
    }
    el_set(editor_, EL_HIST, history, history_);
    display_.setSurroundings([this] { leaveLine(); }, [this] { comeBack(); });
}

LineEditor::~LineEditor()
{
    display_.setSurroundings(nullptr, nullptr);
    HistEvent event = {};
    if (!historyFile_.empty())
        history(history_, &event, H_SAVE, historyFile_.c_str());
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
        const char* text = nullptr;
        {
            const Signals signals;
            text = el_gets(editor_, &count);
        }
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
        self.mindTheTerminal();
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
    // Behind "name=" comes a value, behind a folder what is in it.
    if (found.words.size() == 1 && found.words[0].back() != '=' && found.words[0].back() != '/')
        more += ' ';
    if (!more.empty())
    {
        el_insertstr(editor, more.c_str());
        return CC_REFRESH;
    }
    std::string list = sideBySide(found.words, screenWidth());
    list.pop_back();
    self.display_.print(list, Display::Style::faint);
    return CC_NORM;
}

void LineEditor::mindTheTerminal()
{
    if (stopWanted != 0)
    {
        stopWanted = 0;
        put("\r\n");
        el_set(editor_, EL_PREP_TERM, 0);
        struct sigaction usual = {};
        struct sigaction ours = {};
        usual.sa_handler = SIG_DFL;
        sigaction(SIGTSTP, &usual, &ours);
        (void)raise(SIGTSTP);
        // Here it goes on again.
        sigaction(SIGTSTP, &ours, nullptr);
        continued = 1;
    }
    if (continued != 0)
    {
        // Whoever had the terminal meanwhile has left it as it liked, and in another size perhaps.
        continued = 0;
        resized = 0;
        el_set(editor_, EL_PREP_TERM, 0);
        el_set(editor_, EL_PREP_TERM, 1);
        put("\r\033[J");
        el_resize(editor_);
        comeBack();
    }
    if (resized != 0)
    {
        resized = 0;
        leaveLine();
        el_resize(editor_);
        comeBack();
    }
}

void LineEditor::leaveLine()
{
    if (!typing_)
        return;
    // To the first row of the line being typed, which may have become several.
    const LineInfo* const info = el_line(editor_);
    const std::size_t width = promptWidth + displayWidth(std::string(info->buffer, info->cursor));
    const std::size_t rows = width / screenWidth();
    put((rows > 0 ? "\033[" + std::to_string(rows) + "A" : std::string()) + "\r\033[J");
}

void LineEditor::comeBack()
{
    if (typing_)
        el_set(editor_, EL_REFRESH);
}

}  // namespace kit::phone

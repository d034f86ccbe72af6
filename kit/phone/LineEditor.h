#ifndef KIT_PHONE_LINE_EDITOR_H
#define KIT_PHONE_LINE_EDITOR_H

#include "kit/phone/Display.h"
#include "kit/phone/Session.h"

#include <histedit.h>
#include <string>

namespace kit::phone
{

/// Reads lines from a terminal, with history and completion. While a line is being typed events are
/// delivered, and what they print appears above it.
class LineEditor
{
public:
    /// @param historyFile  read now and written at the end; "" for none
    LineEditor(Session& session, Display& display, std::string historyFile);
    ~LineEditor();

    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;

    /// False at the end of the input (Ctrl-D). Ctrl-C drops the line and starts another.
    bool read(std::string& line);

private:
    static LineEditor& of(EditLine* editor);
    static char* prompt(EditLine* editor);
    static int readCharacter(EditLine* editor, wchar_t* character);
    static unsigned char completeWord(EditLine* editor, int key);

    void mindTheTerminal();
    void leaveLine();
    void comeBack();

    Session& session_;
    Display& display_;
    const std::string historyFile_;
    EditLine* editor_;
    History* history_;
    bool typing_ = false;
};

}  // namespace kit::phone

#endif

// The phone at a terminal: events above the line being typed, completion, history, Ctrl-C.

#include "kit/testing/ServiceProcess.h"
#include "tests/support/Folder.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

namespace
{

/// The program on a terminal of its own.
class Terminal : public testing::Test
{
protected:
    void SetUp() override
    {
        const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
        if (terminal < 0 && std::getenv("COMMUNICATIONS_SERVICE_ALL_CHECKS") == nullptr)
            GTEST_SKIP() << noTerminals;
        ASSERT_GE(terminal, 0) << noTerminals;
        close(terminal);
    }

    /// @param socket  path of a service, "" for the one in the same process
    void start(bool colours, const std::string& socket = "")
    {
        begin(colours, socket.empty()
                           ? std::vector<const char*>{PHONE_PROGRAM}
                           : std::vector<const char*>{PHONE_PROGRAM, "--socket", socket.c_str()});
        ASSERT_TRUE(waitForPrompt());
    }

    void begin(bool colours, std::vector<const char*> command)
    {
        command.push_back(nullptr);
        winsize size = {};
        size.ws_row = 40;
        size.ws_col = 100;
        child_ = forkpty(&terminal_, nullptr, nullptr, &size);
        ASSERT_GE(child_, 0);
        if (child_ == 0)
        {
            setenv("TERM", "xterm", 1);
            setenv("LC_ALL", "C", 1);
            if (colours)
                unsetenv("NO_COLOR");
            else
                setenv("NO_COLOR", "1", 1);
            setenv("PS1", "$ ", 1);
            execv(command[0], const_cast<char* const*>(command.data()));
            _exit(127);
        }
    }

    ~Terminal() override
    {
        if (child_ > 0)
        {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
        close(terminal_);
    }

    void type(const std::string& text)
    {
        ASSERT_EQ(write(terminal_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    /// Takes what has been printed; false when the program has closed its terminal, or takes too long.
    bool read()
    {
        pollfd source = {terminal_, POLLIN, 0};
        char bytes[4096];
        if (std::chrono::steady_clock::now() > end_ || poll(&source, 1, 100) < 0)
            return false;
        if (source.revents == 0)
            return true;
        const ssize_t got = ::read(terminal_, bytes, sizeof bytes);
        if (got > 0)
            screen_.append(bytes, static_cast<std::size_t>(got));
        return got > 0;
    }

    /// Reads until the text has appeared behind what was waited for before.
    bool waitFor(const std::string& text)
    {
        end_ = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        std::size_t found = 0;
        while ((found = screen_.find(text, seen_)) == std::string::npos)
            if (!read())
            {
                ADD_FAILURE() << "no \"" << text << "\" in:\n" << screen_.substr(seen_);
                return false;
            }
        seen_ = found + text.size();
        return true;
    }

    /// The prompt appears a moment before the line editor takes the terminal over: what is typed in
    /// between is echoed twice, and Ctrl-D gets lost.
    bool waitForPrompt()
    {
        if (!waitFor(prompt))
            return false;
        for (int i = 0; i < 20000; ++i)
        {
            termios modes = {};
            if (tcgetattr(terminal_, &modes) == 0 && (modes.c_lflag & ICANON) == 0)
                return true;
            usleep(1000);
        }
        ADD_FAILURE() << "the line editor does not begin";
        return false;
    }

    struct Step
    {
        std::string typed;
        std::string appears;
    };

    /// Types, and waits each time for what has to appear then.
    void talk(const std::vector<Step>& steps)
    {
        for (const Step& step : steps)
        {
            type(step.typed);
            ASSERT_TRUE(step.appears == prompt ? waitForPrompt() : waitFor(step.appears));
        }
    }

    /// Reads on until the program has closed its terminal.
    int exitStatus()
    {
        end_ = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (read())
            ;
        if (std::chrono::steady_clock::now() > end_)
        {
            ADD_FAILURE() << "it has not ended:\n" << screen_;
            return -1;
        }
        int status = 0;
        waitpid(child_, &status, 0);
        child_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    const char* const noTerminals = "there are no pseudo terminals here; is /dev/pts mounted?";
    const std::string prompt = "phone> ";
    std::chrono::steady_clock::time_point end_;
    std::string screen_;
    std::size_t seen_ = 0;
    int terminal_ = -1;
    pid_t child_ = -1;
};

TEST_F(Terminal, EventsDoNotBreakTheLineBeingTyped)
{
    start(false);
    talk({{"dial 2008\n", "callState=delivered"},
          // The far end answers after a second.
          {"say half of it", "callState=connected"},
          {"", "phone> say half of it"},
          {" and the rest\n", "\nhalf of it and the rest\r\n"},
          {"", prompt}});
    EXPECT_EQ(screen_.find("\033[3"), std::string::npos) << "colours in spite of NO_COLOR";
    type("\x04");
    EXPECT_EQ(exitStatus(), 0);
}

TEST_F(Terminal, CompletesRemembersAndDropsLines)
{
    start(true);
    talk({{"sim call 1001 fr\t2001\n", "\033[36m* IncomingCallEvent"},
          {"answerC\t\n", "\033[32manswerCall line=1001 callId=1: sfiSuccess\033[0m"},
          // Two words fit: they are shown, and what they share is typed already.
          {"retri\t\t", "\033[2mretrieve  retrieveCall\033[0m"},
          {"\x03", "^C"},
          {"", prompt},
          {"nonsense\n", "\033[31mcolumn 1: there is no command nonsense"},
          {"", prompt},
          {"say gr\xc3\xbc\xc3\x9f\n", "\033[1mgr\xc3\xbc\xc3\x9f"},
          {"", prompt},
          {"\033[A", "say gr"},
          {"\n", "\033[1mgr\xc3\xbc\xc3\x9f"},
          {"", prompt},
          // Behind "name=" comes a value, behind a folder what is in it.
          {"holdCall ca\t7x\n", "callId is a number, not \"7x\""},
          {"", prompt},
          {"run /us\tx\n", "cannot read the script /usr/x"},
          {"", prompt},
          {"wait 1min", "wait 1min"},
          {"\n", "\n"}});
    kill(child_, SIGINT);
    talk({{"", prompt}, {"calls\n", "1 line=1001 connected"}});
    type("quit\n");
    EXPECT_EQ(exitStatus(), 0);
}

TEST_F(Terminal, TheLineBeingTypedSurvivesCtrlZ)
{
    begin(false, {"/bin/sh", "-i"});
    talk({{"", "$ "},
          {std::string(PHONE_PROGRAM) + "\n", prompt},
          {"say abc", "say abc"},
          {"\x1a", "Stopped"},
          {"fg\n", prompt},
          {"", "say abc"},
          // It can be edited: to its beginning, and away with the first four characters.
          {"\x01\x04\x04\x04\x04say x\n", "\nxabc\r\n"}});
}

TEST_F(Terminal, TheLineBeingTypedSurvivesAChangeOfSize)
{
    start(false);
    const std::string text = "say " + std::string(136, 'a');
    talk({{text + "z", "az"}});
    winsize size = {};
    size.ws_row = 40;
    size.ws_col = 60;
    ASSERT_EQ(ioctl(terminal_, TIOCSWINSZ, &size), 0);
    // The 148 columns take three rows now: it goes to the first one and writes all anew.
    talk({{"", "\033[2A\r\033[J"},
          {"", prompt + text.substr(0, 53)},
          {"", "az"},
          {"\n", "\n" + text.substr(4) + "z\r\n"}});
}

TEST_F(Terminal, TellsAtOnceThatTheServiceIsGone)
{
    kit::ServiceProcess service;
    start(false, service.socket());
    talk({{"say half", "say half"}});
    service.kill();
    talk({{"", "the service at " + service.socket() + " is gone; \"reconnect\" connects anew"},
          {"", "phone> say half"}});
    service.restart();
    talk({{"\x15reconnect\n", "subscribe: sfiSuccess"}, {"", "activate: sfiSuccess"}});
}

TEST_F(Terminal, KeepsItsHistoryInAFile)
{
    const Folder folder;
    const std::string file = folder / "history";
    for (const char* const typed : {"say kept\n", "\033[A\n"})
    {
        begin(false, {PHONE_PROGRAM, "--history", file.c_str()});
        ASSERT_TRUE(waitForPrompt());
        talk({{typed, "\nkept\r\n"}, {"", prompt}});
        type("\x04");
        EXPECT_EQ(exitStatus(), 0);
    }
}

TEST_F(Terminal, TellsAtOnceThatTheHistoryIsNotKept)
{
    begin(false, {PHONE_PROGRAM, "--history", "/nowhere/h"});
    talk({{"", "the history is not kept: /nowhere/h cannot be written: No such file"}});
}

}  // namespace

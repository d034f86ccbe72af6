// The phone at a terminal: events above the line being typed, completion, history, Ctrl-C.

#include "kit/testing/ServiceProcess.h"

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
        if (terminal < 0)
            GTEST_SKIP() << "there are no pseudo terminals here; is /dev/pts mounted?";
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

    /// Reads until the text has appeared behind what was waited for before.
    bool waitFor(const std::string& text)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        for (;;)
        {
            const std::size_t found = screen_.find(text, seen_);
            if (found != std::string::npos)
            {
                seen_ = found + text.size();
                return true;
            }
            pollfd source = {terminal_, POLLIN, 0};
            char bytes[4096];
            ssize_t got = 0;
            if (std::chrono::steady_clock::now() > end || poll(&source, 1, 100) < 0 ||
                (source.revents != 0 && (got = read(terminal_, bytes, sizeof bytes)) <= 0))
            {
                ADD_FAILURE() << "no \"" << text << "\" in:\n" << screen_.substr(seen_);
                return false;
            }
            if (source.revents != 0)
                screen_.append(bytes, static_cast<std::size_t>(got));
        }
    }

    /// The prompt appears a moment before the line editor takes the terminal over: what is typed in
    /// between is echoed twice, and Ctrl-D gets lost.
    bool waitForPrompt()
    {
        if (!waitFor("phone> "))
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

    /// Reads on until the program has closed its terminal.
    int exitStatus()
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        pollfd source = {terminal_, POLLIN, 0};
        char bytes[4096];
        while (std::chrono::steady_clock::now() < end)
        {
            ssize_t got = 1;
            if (poll(&source, 1, 100) > 0 && (got = read(terminal_, bytes, sizeof bytes)) > 0)
                screen_.append(bytes, static_cast<std::size_t>(got));
            if (got <= 0)
            {
                int status = 0;
                waitpid(child_, &status, 0);
                child_ = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
        }
        ADD_FAILURE() << "it has not ended:\n" << screen_;
        return -1;
    }

    std::string screen_;
    std::size_t seen_ = 0;
    int terminal_ = -1;
    pid_t child_ = -1;
};

TEST_F(Terminal, EventsDoNotBreakTheLineBeingTyped)
{
    start(false);
    type("dial 2008\n");
    ASSERT_TRUE(waitFor("callState=delivered"));
    type("say half of it");
    // The far end answers after a second.
    ASSERT_TRUE(waitFor("callState=connected"));
    ASSERT_TRUE(waitFor("phone> say half of it"));
    type(" and the rest\n");
    ASSERT_TRUE(waitFor("\nhalf of it and the rest\r\n"));
    EXPECT_EQ(screen_.find("\033[3"), std::string::npos) << "colours in spite of NO_COLOR";
    ASSERT_TRUE(waitForPrompt());
    type("\x04");
    EXPECT_EQ(exitStatus(), 0);
}

TEST_F(Terminal, CompletesRemembersAndDropsLines)
{
    start(true);
    type("sim call 1001 fr\t2001\n");
    ASSERT_TRUE(waitFor("\033[36m* IncomingCallEvent"));
    type("answerC\t\n");
    ASSERT_TRUE(waitFor("answerCall line=1001 callId=1: sfiSuccess"));
    // Two words fit: they are shown, and what they share is typed already.
    type("retri\t\t");
    ASSERT_TRUE(waitFor("retrieve  retrieveCall"));
    type("\x03");
    ASSERT_TRUE(waitFor("^C"));
    ASSERT_TRUE(waitForPrompt());
    type("nonsense\n");
    ASSERT_TRUE(waitFor("there is no command nonsense"));
    ASSERT_TRUE(waitForPrompt());
    type("say gr\xc3\xbc\xc3\x9f\n");
    ASSERT_TRUE(waitFor("\033[1mgr\xc3\xbc\xc3\x9f"));
    ASSERT_TRUE(waitForPrompt());
    type("\033[A");
    ASSERT_TRUE(waitFor("say gr"));
    type("\n");
    ASSERT_TRUE(waitFor("\033[1mgr\xc3\xbc\xc3\x9f"));
    ASSERT_TRUE(waitForPrompt());
    type("wait 1min");
    ASSERT_TRUE(waitFor("wait 1min"));
    type("\n");
    ASSERT_TRUE(waitFor("\n"));
    kill(child_, SIGINT);
    ASSERT_TRUE(waitForPrompt());
    type("calls\n");
    ASSERT_TRUE(waitFor("1 line=1001 connected"));
    type("quit\n");
    EXPECT_EQ(exitStatus(), 0);
}

TEST_F(Terminal, TheLineBeingTypedSurvivesCtrlZ)
{
    begin(false, {"/bin/sh", "-i"});
    ASSERT_TRUE(waitFor("$ "));
    type(std::string(PHONE_PROGRAM) + "\n");
    ASSERT_TRUE(waitForPrompt());
    type("say abc");
    ASSERT_TRUE(waitFor("say abc"));
    type("\x1a");
    ASSERT_TRUE(waitFor("Stopped"));
    type("fg\n");
    ASSERT_TRUE(waitForPrompt());
    ASSERT_TRUE(waitFor("say abc"));
    // It can be edited: to its beginning, and away with the first four characters.
    type("\x01\x04\x04\x04\x04say x\n");
    ASSERT_TRUE(waitFor("\nxabc\r\n"));
}

TEST_F(Terminal, TheLineBeingTypedSurvivesAChangeOfSize)
{
    start(false);
    const std::string text = "say " + std::string(136, 'a');
    type(text + "z");
    ASSERT_TRUE(waitFor("az"));
    winsize size = {};
    size.ws_row = 40;
    size.ws_col = 60;
    ASSERT_EQ(ioctl(terminal_, TIOCSWINSZ, &size), 0);
    // The 148 columns take three rows now: it goes to the first one and writes all anew.
    ASSERT_TRUE(waitFor("\033[2A\r\033[J"));
    ASSERT_TRUE(waitFor("phone> " + text.substr(0, 53)));
    ASSERT_TRUE(waitFor("az"));
    type("\n");
    ASSERT_TRUE(waitFor("\n" + text.substr(4) + "z\r\n"));
}

TEST_F(Terminal, TellsAtOnceThatTheServiceIsGone)
{
    kit::ServiceProcess service;
    start(false, service.socket());
    type("say half");
    ASSERT_TRUE(waitFor("say half"));
    service.kill();
    ASSERT_TRUE(
        waitFor("the service at " + service.socket() + " is gone; \"reconnect\" connects anew"));
    ASSERT_TRUE(waitFor("phone> say half"));
    service.restart();
    type("\x15reconnect\n");
    ASSERT_TRUE(waitFor("subscribe: sfiSuccess"));
    ASSERT_TRUE(waitFor("activate: sfiSuccess"));
}

TEST_F(Terminal, TellsAtOnceThatTheHistoryIsNotKept)
{
    begin(false, {PHONE_PROGRAM, "--history", "/nowhere/h"});
    ASSERT_TRUE(waitFor("the history is not kept: /nowhere/h cannot be written: No such file"));
}

}  // namespace

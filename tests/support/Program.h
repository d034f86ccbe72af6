#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_PROGRAM_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_PROGRAM_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <string>
#include <vector>

/// A program, with both outputs in one; killed at the end unless it has ended.
class Program
{
public:
    Program(std::string program, std::vector<std::string> options,
            const std::function<void()>& prepare = nullptr)
    {
        int ends[2];
        EXPECT_EQ(pipe2(ends, O_CLOEXEC), 0);
        output_ = ends[0];
        std::vector<char*> arguments = {program.data()};
        for (std::string& option : options)
            arguments.push_back(option.data());
        arguments.push_back(nullptr);
        pid_ = fork();
        if (pid_ == 0)
        {
            dup2(ends[1], STDOUT_FILENO);
            dup2(ends[1], STDERR_FILENO);
            if (prepare)
                prepare();
            execv(arguments[0], arguments.data());
            _exit(127);
        }
        close(ends[1]);
    }

    ~Program()
    {
        if (pid_ > 0)
        {
            ::kill(pid_, SIGKILL);
            waitpid(pid_, nullptr, 0);
        }
        close(output_);
    }

    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Waits until it has said the text; false when it ends without.
    bool says(const std::string& text)
    {
        while (said_.find(text) == std::string::npos && readMore())
            continue;
        return said_.find(text) != std::string::npos;
    }

    /// Waits for its end; the exit status, 128 and more for a signal.
    int status()
    {
        while (readMore())
            continue;
        int status = 0;
        EXPECT_EQ(waitpid(pid_, &status, 0), pid_);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

    int endedBy(int signal)
    {
        ::kill(pid_, signal);
        return status();
    }

    const std::string& said() const { return said_; }
    pid_t pid() const { return pid_; }

private:
    bool readMore()
    {
        char bytes[4096];
        const ssize_t size = read(output_, bytes, sizeof bytes);
        if (size > 0)
            said_.append(bytes, static_cast<std::size_t>(size));
        return size > 0;
    }

    pid_t pid_ = -1;
    int output_ = -1;
    std::string said_;
};

#endif

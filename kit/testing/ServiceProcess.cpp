#include "kit/testing/ServiceProcess.h"

#include "kit/framework/Library.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace kit
{

namespace
{

const char* const programName = "communications-service-sim";

std::string choose(const std::string& program)
{
    if (!program.empty())
        return program;
    if (const char* const named = std::getenv("COMMUNICATIONS_SERVICE_SIM"))
        if (*named != '\0')
            return named;
    // In the build tree, and installed with and without a folder for the architecture.
    for (const char* place : {"../kit/service/", "../bin/", "../../bin/"})
    {
        const std::string path = folderOfKit() + place + programName;
        if (access(path.c_str(), X_OK) == 0)
            return path;
    }
    return programName;
}

std::string makeFolder()
{
    const char* const root = std::getenv("TMPDIR");
    std::string name = std::string(root != nullptr && *root != '\0' ? root : "/tmp") +
                       "/communications-service-XXXXXX";
    if (mkdtemp(name.data()) == nullptr)
        throw std::runtime_error("no folder for the service's socket, " + name + ": " +
                                 std::strerror(errno));
    return name;
}

/// The first line that comes within the time; less when it does not come or the writer is gone.
std::string firstLine(int from, std::chrono::milliseconds patience)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    std::string line;
    for (;;)
    {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            end - std::chrono::steady_clock::now());
        pollfd wanted = {from, POLLIN, 0};
        if (left.count() <= 0 || poll(&wanted, 1, static_cast<int>(left.count())) <= 0)
            return line;
        char c = '\0';
        if (read(from, &c, 1) != 1 || c == '\n')
            return line;
        line += c;
    }
}

}  // namespace

ServiceProcess::ServiceProcess(const std::string& program, const std::vector<std::string>& options,
                               std::chrono::milliseconds patience)
    : program_(choose(program)),
      options_(options),
      patience_(patience),
      folder_(makeFolder()),
      socket_(folder_ + "/socket")
{
    try
    {
        start();
    }
    catch (...)
    {
        release();
        throw;
    }
}

ServiceProcess::~ServiceProcess()
{
    release();
}

void ServiceProcess::release()
{
    kill();
    unlink(socket_.c_str());
    rmdir(folder_.c_str());
}

void ServiceProcess::start()
{
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error(std::string("no pipe for the service: ") + std::strerror(errno));
    output_ = ends[0];

    std::vector<std::string> words = {program_, "--socket", socket_};
    words.insert(words.end(), options_.begin(), options_.end());
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    const int error =
        posix_spawnp(&pid_, program_.c_str(), &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    if (error != 0)
    {
        pid_ = -1;
        kill();
        throw std::runtime_error("the service " + program_ +
                                 " cannot be started: " + std::strerror(error));
    }

    const std::string line = firstLine(output_, patience_);
    if (line == "ready " + socket_)
        return;
    kill();
    throw std::runtime_error("the service " + program_ + " does not listen at " + socket_ +
                             (line.empty() ? std::string() : "; it said: " + line));
}

void ServiceProcess::signal(int number) const
{
    if (pid_ > 0)
        ::kill(pid_, number);
}

void ServiceProcess::kill()
{
    signal(SIGKILL);
    if (pid_ > 0)
        while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR)
        {
        }
    pid_ = -1;
    if (output_ >= 0)
        close(output_);
    output_ = -1;
}

void ServiceProcess::freeze()
{
    signal(SIGSTOP);
}

void ServiceProcess::thaw()
{
    signal(SIGCONT);
}

void ServiceProcess::restart()
{
    kill();
    // What a killed service leaves behind is in the way of the next.
    unlink(socket_.c_str());
    start();
}

}  // namespace kit

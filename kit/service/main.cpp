// communications-service-sim: the simulated service as a process of its own.

#include "kit/service/Replay.h"
#include "kit/service/SimulatedService.h"
#include "kit/service/SocketServer.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <vector>

namespace
{

constexpr const char* program = "communications-service-sim";
constexpr int cannotListen = 1;
constexpr int wrongUsage = 2;
constexpr int hasDiffered = 3;

/// A file that lines are added to, each in one piece; nothing of it waits in this process.
class LineFile
{
public:
    ~LineFile()
    {
        if (file_ > STDERR_FILENO)
            ::close(file_);
    }

    LineFile() = default;
    LineFile(const LineFile&) = delete;
    LineFile& operator=(const LineFile&) = delete;

    bool open(const std::string& path)
    {
        file_ = path == "-" ? STDERR_FILENO
                            : ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        return file_ >= 0;
    }

    void write(std::string line) const
    {
        std::replace(line.begin(), line.end(), '\n', ' ');
        line += '\n';
        std::size_t at = 0;
        while (at < line.size())
        {
            const ssize_t done = ::write(file_, line.data() + at, line.size() - at);
            if (done < 0 && errno != EINTR)
                return;
            at += done < 0 ? 0 : static_cast<std::size_t>(done);
        }
    }

private:
    int file_ = -1;
};

int complain(const std::string& text, int status)
{
    std::cerr << program << ": " << text << "\n";
    return status;
}

}  // namespace

int main(int argc, char** argv)
{
    std::string socketPath;
    std::string logPath = "-";
    std::string journalPath;
    std::string replayPath;
    std::vector<std::string> lines = {"1001", "1002", "1003"};
    bool realtime = false;
    double speed = 0;

    CLI::App app("A simulated communications service for applications, on a Unix socket.", program);
    app.set_version_flag("--version", std::string(program) + " " COMMUNICATIONS_SERVICE_VERSION);
    app.add_option("--socket", socketPath, "Where to listen")->required()->type_name("PATH");
    auto* const linesOption =
        app.add_option("--lines", lines, "Lines of the phone, with commas (default 1001,1002,1003)")
            ->delimiter(',')
            ->type_name("LINE,...");
    app.add_option("--replay", replayPath,
                   "Plays the service that was recorded in a trace: as fast as it goes, or with "
                   "--realtime or --speed as it was")
        ->type_name("TRACE")
        ->excludes(linesOption);
    app.add_option("--log", logPath, "Where complaints go, - is standard error (default -)")
        ->type_name("FILE");
    app.add_option("--journal", journalPath, "Adds each request, as a line, before it is done")
        ->type_name("FILE");
    auto* const realtimeFlag =
        app.add_flag("--realtime", realtime, "The clock runs by itself, not by \"advance\" alone");
    app.add_option("--speed", speed, "The same, that many times as fast")
        ->type_name("FACTOR")
        ->check(CLI::Range(0.001, 1000000.0))
        ->excludes(realtimeFlag);
    app.footer("Prints \"ready PATH\" once it listens; SIGINT and SIGTERM end it.\n"
               "Exit status: 0 ended, 1 cannot listen or write, 2 wrong usage, 3 the application\n"
               "asked otherwise than recorded.");
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::Success& asked)
    {
        return app.exit(asked);
    }
    catch (const CLI::ParseError& wrong)
    {
        return complain(std::string(wrong.what()) + " (--help tells more)", wrongUsage);
    }
    for (const std::string& line : lines)
        if (line.empty() || line.size() > 64 ||
            line.find_first_of("<> \t\"") != std::string::npos ||
            std::count(lines.begin(), lines.end(), line) > 1)
            return complain("--lines: \"" + line + "\" is no line, or there twice", wrongUsage);

    LineFile log;
    LineFile journal;
    if (!log.open(logPath))
        return complain("cannot write to " + logPath + ": " + std::strerror(errno), cannotListen);
    if (!journalPath.empty() && !journal.open(journalPath))
        return complain("cannot write to " + journalPath + ": " + std::strerror(errno),
                        cannotListen);
    std::signal(SIGPIPE, SIG_IGN);

    const auto toLog = [&log](const std::string& line) { log.write(line); };
    std::unique_ptr<kit::SimulatedService> simulated;
    std::unique_ptr<kit::Replay> replay;
    if (replayPath.empty())
    {
        simulated = std::make_unique<kit::SimulatedService>(lines);
        simulated->setLog(toLog);
    }
    else
        try
        {
            replay = std::make_unique<kit::Replay>(replayPath, realtime || speed > 0
                                                                   ? kit::Replay::Pace::recorded
                                                                   : kit::Replay::Pace::fast);
            replay->setLog(toLog);
        }
        catch (const std::runtime_error& error)
        {
            return complain(error.what(), cannotListen);
        }
    kit::Service& service = replay != nullptr ? static_cast<kit::Service&>(*replay) : *simulated;
    kit::SocketServer::Options options;
    options.speed = realtime ? 1 : speed;
    options.log = toLog;
    options.handleSignals = true;
    if (!journalPath.empty())
        options.journal = [&journal](const std::string& text) { journal.write(text); };
    try
    {
        kit::SocketServer server(service, socketPath, options);
        std::cout << "ready " << socketPath << std::endl;
        server.run();
    }
    catch (const kit::ListenError& error)
    {
        return complain(error.what(), cannotListen);
    }
    return replay != nullptr && !replay->difference().empty() ? hasDiffered : 0;
}

// communications-service-sim: the simulated service as a process of its own.

#include "kit/language/Wording.h"
#include "kit/service/LineFile.h"
#include "kit/service/Replay.h"
#include "kit/service/SimulatedService.h"
#include "kit/service/SocketServer.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <csignal>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace
{

constexpr const char* program = "communications-service-sim";
constexpr int failed = 1;
constexpr int wrongUsage = 2;
constexpr int hasDiffered = 3;

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
    std::string robotsPath;
    std::vector<std::string> lines = {"1001", "1002", "1003"};
    bool realtime = false;
    double speed = 0;
    std::string mode = "0600";

    CLI::App app("A simulated communications service for applications, on a Unix socket.", program);
    app.set_version_flag("--version", std::string(program) + " " COMMUNICATIONS_SERVICE_VERSION);
    app.add_option("--socket", socketPath, "Where to listen")->required()->type_name("PATH");
    auto* const linesOption =
        app.add_option("--lines", lines, "Lines of the phone, with commas (default 1001,1002,1003)")
            ->delimiter(',')
            ->type_name("LINE,...");
    auto* const robotsOption =
        app.add_option("--robots", robotsPath, "Who else can be called, beside those always there")
            ->type_name("FILE");
    app.add_option("--replay", replayPath,
                   "Plays the service that was recorded in a trace: as fast as it goes, or with "
                   "--realtime or --speed as it was")
        ->type_name("TRACE")
        ->excludes(linesOption)
        ->excludes(robotsOption);
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
    app.add_option("--mode", mode, "Who may connect: rights of the socket's file (default 0600)")
        ->type_name("MODE");
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

    unsigned rights = 0;
    const auto parsed = std::from_chars(mode.data(), mode.data() + mode.size(), rights, 8);
    if (parsed.ec != std::errc() || parsed.ptr != mode.data() + mode.size() || rights > 0777)
        return complain("--mode: \"" + mode + "\" is no mode, 0600 and 0660 are", wrongUsage);

    std::signal(SIGPIPE, SIG_IGN);
    // Instead of it, what is too large for a file cannot be written.
    std::signal(SIGXFSZ, SIG_IGN);
    kit::service::LineFile log;
    kit::service::LineFile journal;
    std::string problem = log.open(logPath);
    if (!problem.empty())
        return complain("cannot write to " + logPath + ": " + problem, failed);
    problem = journalPath.empty() ? "" : journal.open(journalPath);
    if (!problem.empty())
        return complain("cannot write to " + journalPath + ": " + problem, failed);

    int status = 0;
    const auto toLog = [&](const std::string& line)
    {
        const std::string wrong = log.write(line);
        if (!wrong.empty() && std::exchange(status, failed) == 0)
            complain("cannot write to " + logPath + ": " + wrong, failed);
    };
    const auto toJournal = [&](const std::string& text)
    {
        const std::string wrong = journal.write(text);
        if (!wrong.empty())
            status = failed;
        return wrong;
    };
    std::unique_ptr<kit::SimulatedService> simulated;
    std::unique_ptr<kit::Replay> replay;
    try
    {
        if (replayPath.empty())
        {
            simulated = std::make_unique<kit::SimulatedService>(lines);
            simulated->setLog(toLog);
            if (robotsOption->count() > 0)
            {
                const kit::ControlAnswer robots =
                    simulated->control("robots " + kit::quote(robotsPath));
                if (!robots.accepted)
                    return complain(robots.text, wrongUsage);
            }
        }
        else
        {
            const bool paced = realtime || speed > 0;
            replay = std::make_unique<kit::Replay>(replayPath, paced ? kit::Replay::Pace::recorded
                                                                     : kit::Replay::Pace::fast);
            replay->setLog(toLog);
        }
        kit::Service& service =
            replay != nullptr ? static_cast<kit::Service&>(*replay) : *simulated;
        kit::SocketServer::Options options;
        options.speed = realtime ? 1 : speed;
        options.log = toLog;
        options.handleSignals = true;
        options.mode = rights;
        if (!journalPath.empty())
            options.journal = toJournal;
        kit::SocketServer server(service, socketPath, options);
        std::cout << "ready " << socketPath << std::endl;
        server.run();
    }
    catch (const std::exception& error)
    {
        return complain(error.what(), failed);
    }
    const bool differs = replay != nullptr && !replay->difference().empty();
    return status != 0 ? status : differs ? hasDiffered : 0;
}

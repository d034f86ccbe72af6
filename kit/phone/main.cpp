#include "kit/framework/Library.h"
#include "kit/framework/SocketConnection.h"
#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/phone/Interruptions.h"
#include "kit/phone/LineEditor.h"
#include "kit/phone/NewApplication.h"
#include "kit/phone/TraceView.h"
#include "kit/protocol/Columns.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/SimulatedService.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <unistd.h>

// The console phone: options, and what is run with them.
namespace kit::phone
{

namespace
{

struct Options
{
    std::string socket;
    std::string script;
    std::string robots;
    std::string history;
    std::string page;
    std::string newApplication;
    std::size_t width = 0;
    bool ladder = false;
    bool mermaid = false;
    bool realTime = false;
    bool driveClock = false;
    Session::Settings session;  ///< for lines that are carried out
    TraceView view;             ///< or for a trace that is looked at
};

const char* const footer =
    "Without --script, lines are typed at a prompt or read from standard input; \"help\" there "
    "lists\n"
    "the commands. At a prompt the phone subscribes and activates by itself.\n"
    "\n"
    "Exit status: 0 everything met, 1 an expectation or a request failed, 2 wrong usage or a "
    "mistake\n"
    "in a line, 3 the service is not reachable or did not answer in time, 4 the trace or the "
    "output\n"
    "could not be written, 130 interrupted.\n"
    "\n"
    "Environment: NO_COLOR switches colours off; COMMUNICATIONS_SERVICE_LIBRARY names the library.";

std::chrono::milliseconds timeout(const std::string& text)
{
    Word word;
    word.text = text;
    const std::chrono::milliseconds time = parseDuration(word);
    if (time.count() == 0)
        throw Mistake("--timeout must be longer than 0");
    return time;
}

/// A method that no message has would leave an empty picture.
std::string problemOfMethod(const std::string& method)
{
    std::vector<std::string> methods = eventNames();
    for (const Operation& operation : operations())
        methods.push_back(operation.method);
    return contains(methods, method)
               ? ""
               : "no message is called " + shown(method, 60) + didYouMean(method, methods);
}

void declare(CLI::App& app, Options& options)
{
    Session::Settings& session = options.session;
    TraceView& view = options.view;
    app.set_help_flag("-h,--help", "Print this help and exit");
    app.set_version_flag("--version", "communications-phone " COMMUNICATIONS_PHONE_VERSION,
                         "Print the version and exit");
    CLI::Option* const socket =
        app.add_option("--socket", options.socket, "Use the service that listens at this path")
            ->type_name("PATH");
    app.add_option("--robots", options.robots,
                   "Who else can be called in the service of this process")
        ->type_name("FILE")
        ->excludes(socket);
    app.add_option("--library", session.phone.library, "Open this client library")
        ->type_name("PATH");
    app.add_option("--script", options.script, "Carry out the lines of this file, - for stdin")
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--timeout", [&](const std::string& text) { session.phone.timeout = timeout(text); },
           "Longest wait for an answer")
        ->type_name("TIME")
        ->default_str("5s");
    app.add_flag("--real-time", options.realTime,
                 "In scripts, let time pass as outside and not at once");
    app.add_flag("--drive-clock", options.driveClock,
                 "With --socket: let this phone drive the clock of the simulation there")
        ->needs(socket);
    app.add_flag("--echo", session.echo, "Print each line of a script before it is carried out");
    app.add_flag("--wire", session.recorder.wire, "Show what goes over the channel");
    app.add_option("--trace", session.recorder.traceFile,
                   "Write what goes over the channel as JSON Lines")
        ->type_name("FILE");
    app.add_flag("--ladder", options.ladder, "Draw what happens as a call flow");
    app.add_flag("--mermaid", options.mermaid, "The same as a Mermaid sequence diagram");
    CLI::Option* const from =
        app.add_option("--ladder-from", view.file,
                       "Draw the call flow of a trace, with --mermaid as such, and exit")
            ->type_name("FILE");
    app.add_option("--compare", view.other,
                   "Tell how this trace differs from the one of --ladder-from, and exit")
        ->type_name("FILE")
        ->needs(from);
    app.add_flag("--watch", view.watch,
                 "With --ladder-from: go on with what is written into the trace, until Ctrl-C")
        ->needs(from);
    app.add_option("--line", view.wanted.line, "With --ladder-from: only what this line is in")
        ->type_name("LINE")
        ->needs(from);
    app.add_option("--call", view.wanted.call, "With --ladder-from: only what this call is in")
        ->type_name("NUMBER")
        ->needs(from);
    app.add_option("--method", view.wanted.methods,
                   "With --ladder-from: only messages of this name; may be given several times")
        ->type_name("NAME")
        ->needs(from)
        ->check(problemOfMethod);
    app.add_option("--html", options.page,
                   "Write the trace, of what is done here or of --ladder-from, as a page "
                   "for a browser")
        ->type_name("FILE");
    app.add_option("--new-application", options.newApplication,
                   "Put a small application with a test into this new folder, and exit")
        ->type_name("DIR");
    app.add_option("--width", options.width, "Columns of a call flow; else the terminal's, or 80")
        ->type_name("COLUMNS")
        ->check(CLI::Range(TextLadder::narrowest, std::size_t(1000)));
    app.add_option("--history", options.history, "Keep the typed lines in this file")
        ->type_name("FILE");
    app.footer(footer);
}

/// One line for what is wrong with the options, with the option that was probably meant.
std::string describe(const CLI::App& app, const CLI::ParseError& error)
{
    const std::vector<std::string> left = app.remaining();
    if (left.empty())
        return error.what();
    if (left.front()[0] != '-')
        return "what is " + shown(left.front(), 60) + "? A script is given with --script";
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options())
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return "there is no option " + shown(left.front(), 60) +
           didYouMean(left.front().substr(0, left.front().find('=')), names, "; --help lists them");
}

class Program
{
public:
    explicit Program(Options options)
        : options_(std::move(options)), display_(std::cout, std::cerr, coloursWanted())
    {
    }

    Verdict run()
    {
        const bool typed = options_.script.empty() && isatty(STDIN_FILENO) != 0;
        Session::Settings& settings = options_.session;
        settings.phone.realTime = typed || options_.realTime;
        settings.remember = typed;
        settings.progress = !typed && isatty(STDERR_FILENO) != 0;
        settings.recorder.pageTitle =
            options_.script.empty() ? "communications-phone" : options_.script;
        settings.recorder.picture = options_.mermaid  ? Recorder::Picture::mermaid
                                    : options_.ladder ? Recorder::Picture::text
                                                      : Recorder::Picture::none;
        if (options_.socket.empty())
            embed(settings.phone);
        else
            settings.phone.connect = [this] { return overSocket(); };
        if (options_.driveClock)
            settings.phone.advance = [this](Timekeeper::Time limit) { return drive(limit); };

        session_ = std::make_unique<Session>(std::move(settings), display_);
        catchInterruptions();
        const Verdict verdict = typed ? type()
                                : options_.script.empty() || options_.script == "-"
                                    ? session_->runLines(std::cin, "stdin")
                                    : session_->runScript(options_.script);
        const bool traced = session_->finish();
        return traced || verdict != Verdict::met ? verdict : Verdict::unwritten;
    }

private:
    void embed(Phone::Settings& settings)
    {
        service_ = std::make_shared<SimulatedService>();
        const ControlAnswer robots = options_.robots.empty()
                                         ? ControlAnswer{true, ""}
                                         : service_->control("robots " + quote(options_.robots));
        if (!robots.accepted)
            throw Mistake(robots.text);
        settings.connect = [this] { return std::make_unique<EmbeddedConnection>(service_); };
        settings.advance = [this](Timekeeper::Time limit)
        { return service_->advanceToNext(limit); };
    }

    /// Lets time pass in a simulation that is asked over a socket: in small steps, so that what is
    /// waited for is seen in time, but not in very many.
    Timekeeper::Time drive(Timekeeper::Time limit)
    {
        const Timekeeper::Time step = std::min(limit, std::max(Timekeeper::Time(10), limit / 1000));
        session_->phone().ask("advance " + std::to_string(step.count()) + "ms");
        return step;
    }

    std::unique_ptr<Connection> overSocket() const
    {
        try
        {
            return std::make_unique<SocketConnection>(options_.socket);
        }
        catch (const std::exception& error)
        {
            throw Failure(Verdict::unreachable, error.what());
        }
    }

    Verdict type()
    {
        display_.print("communications-phone " COMMUNICATIONS_PHONE_VERSION
                       ", \"help\" lists what can be typed, Ctrl-D ends");
        session_->start();
        LineEditor editor(*session_, display_, options_.history);
        std::string line;
        while (!session_->hasEnded() && editor.read(line))
            session_->execute(line, {});
        return Verdict::met;
    }

    Options options_;
    Display display_;
    std::shared_ptr<SimulatedService> service_;
    std::unique_ptr<Session> session_;
};

/// Others would be ignored.
void allowOnly(const CLI::App& app, const std::vector<std::string>& names)
{
    for (const CLI::Option* option : app.get_options())
        if (option->count() > 0 &&
            std::none_of(names.begin(), names.end(),
                         [&](const std::string& name) { return option->check_lname(name); }))
            throw Mistake(option->get_name() + " does not go with --" + names.front());
}

/// One would take the other's place.
void checkFiles(const std::string& read, const std::string& written)
{
    std::error_code error;
    if (!written.empty() && (read == written || std::filesystem::equivalent(read, written, error)))
        throw Mistake("--html: " + shown(written, 200) + " is the file of the trace");
}

Verdict carryOut(const CLI::App& app, const Options& options)
{
    if (app.count("--new-application") > 0)
    {
        allowOnly(app, {"new-application"});
        std::cout << makeApplication(options.newApplication) << '\n';
        return Verdict::met;
    }
    checkFiles(options.session.recorder.traceFile, options.page);
    if (app.count("--ladder-from") == 0)
        return Program(options).run();
    allowOnly(app, {"ladder-from", "compare", "watch", "line", "call", "method", "html", "mermaid",
                    "width"});
    checkFiles(options.view.file, options.page);
    catchInterruptions();
    return viewTrace(options.view);
}

int run(int argc, char** argv)
{
    CLI::App app("A telephone for the console, over a simulated communications service or one at a "
                 "socket.",
                 "communications-phone");
    Options options;
    declare(app, options);
    try
    {
        app.parse(argc, argv);
    }
    catch (const CLI::Success& success)
    {
        return app.exit(success);
    }
    catch (const CLI::ParseError& error)
    {
        throw Mistake(describe(app, error));
    }
    options.view.page = options.session.recorder.pageFile = options.page;
    options.view.width = options.session.recorder.width =
        options.width != 0 ? options.width : screenWidth();
    options.view.mermaid = options.mermaid;
    const Verdict verdict = carryOut(app, options);
    if (!std::cout.flush())
        throw Failure(Verdict::unwritten, "what was to be printed could not be written");
    return static_cast<int>(verdict);
}

int complain(const std::exception& error, Verdict verdict)
{
    std::fprintf(stderr, "communications-phone: %s\n", error.what());
    return static_cast<int>(verdict);
}

}  // namespace

}  // namespace kit::phone

int main(int argc, char** argv)
{
    using namespace kit::phone;
    try
    {
        return run(argc, argv);
    }
    catch (const Failure& error)
    {
        return complain(error, error.verdict());
    }
    catch (const std::exception& error)
    {
        return complain(error, Verdict::mistake);
    }
}

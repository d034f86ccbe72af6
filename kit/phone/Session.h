#ifndef KIT_PHONE_SESSION_H
#define KIT_PHONE_SESSION_H

#include "kit/language/Words.h"
#include "kit/phone/Completion.h"
#include "kit/phone/Display.h"
#include "kit/phone/Phone.h"
#include "kit/phone/Recorder.h"
#include "kit/phone/ScriptWriter.h"
#include "kit/phone/Verdict.h"

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace kit::phone
{

/// Where a line stands, for messages: "tour:12"; empty for typed lines.
struct Place
{
    std::string file;
    int line = 0;

    bool typed() const { return file.empty(); }
    std::string text() const { return file + ":" + std::to_string(line); }
};

/// Reads lines and scripts, has the phone carry them out, and judges what came of it.
class Session
{
public:
    struct Settings
    {
        Phone::Settings phone;
        Recorder::Settings recorder;
        bool echo = false;
        bool progress = false;  ///< the error stream is a terminal
        bool remember = false;  ///< what is done before `record` belongs to the recording too
    };

    /// Raises what Phone and Recorder raise.
    Session(Settings settings, Display& display);

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Carries a line out and prints what comes of it.
    Verdict execute(const std::string& line, const Place& place);

    /// Looks for mistakes that can be seen without carrying the line out. Captured names may be used
    /// in lines behind.
    void check(const std::string& line, Variables& captured) const;

    /// Reads, checks and carries out a script. Stops at the first line that goes wrong.
    Verdict runScript(const std::string& path);

    /// Carries out lines as they come. Goes on behind one that goes wrong; the first such counts.
    Verdict runLines(std::istream& in, const std::string& name);

    /// What the phone does when it is switched on: it subscribes and activates.
    void start();

    /// Tidies up: what of the picture still waits for an answer is printed. False, and told, when
    /// the trace could not be written.
    bool finish();

    /// What could stand where the line ends.
    Completions completionsFor(const std::string& line);

    /// `quit` was carried out.
    bool hasEnded() const { return ended_; }

    // For the commands.
    Phone& phone() { return phone_; }
    Recorder& recorder() { return recorder_; }
    Display& display() { return display_; }
    Variables& variables() { return variables_; }
    const Place& place() const { return place_; }
    ScriptWriter& scriptWriter() { return scriptWriter_; }
    void setEcho(bool on) { echo_ = on; }
    void end() { ended_ = true; }

private:
    Report carryOut(const Statement& statement);
    Verdict judge(const Statement& statement, const Report& report);
    Verdict checkAll(const std::vector<std::string>& lines, const std::string& name);
    void complain(std::size_t column, const std::string& text);
    void showProgress();

    Display& display_;
    Recorder recorder_;
    Phone phone_;
    ScriptWriter scriptWriter_;
    bool echo_;
    const bool progress_;
    Variables variables_;
    std::vector<CommandUsage> simulation_;  ///< its commands, for completion
    Place place_;
    int depth_ = 0;
    bool ended_ = false;
    const std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    std::function<std::string()> progressText_;
};

}  // namespace kit::phone

#endif

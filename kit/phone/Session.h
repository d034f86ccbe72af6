#ifndef KIT_PHONE_SESSION_H
#define KIT_PHONE_SESSION_H

#include "kit/binding/Caller.h"
#include "kit/framework/Framework.h"
#include "kit/language/Words.h"
#include "kit/phone/CallBook.h"
#include "kit/phone/Completion.h"
#include "kit/phone/Display.h"
#include "kit/phone/Expectation.h"
#include "kit/phone/ObservedConnection.h"
#include "kit/trace/Ladder.h"

#include <chrono>
#include <deque>
#include <fstream>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kit::phone
{

/// How a line went; the numbers are the exit statuses of the program.
enum class Verdict
{
    met = 0,
    unmet = 1,        ///< an expectation, or a request that was refused
    mistake = 2,      ///< the line makes no sense
    unreachable = 3,  ///< the service is gone or did not answer in time
    interrupted = 130
};

/// Where a line stands, for messages: "tour:12"; empty for typed lines.
struct Place
{
    std::string file;
    int line = 0;

    std::string text() const { return file.empty() ? "" : file + ":" + std::to_string(line); }
};

/// The phone in use: carries out lines, one by one, and keeps what has come of them.
///
/// Everything happens on the thread that calls. Events are taken in meanwhile and delivered in
/// pump(), so that nothing changes or prints behind the back of the line that is carried out.
class Session
{
public:
    using Connect = std::function<std::unique_ptr<Connection>()>;

    enum class Picture
    {
        none,
        text,
        mermaid
    };

    struct Settings
    {
        Connect connect;      ///< makes a new connection; raises std::exception
        std::string library;  ///< path, or "" for the one beside the kit
        std::chrono::milliseconds timeout{5000};
        /// Lets time pass in the simulation; empty where the service keeps its own time.
        std::function<void(std::chrono::milliseconds time)> advance;
        /// Time passes as outside; else it passes only while something is waited for, and at once.
        bool realTime = true;
        std::string traceFile;  ///< "" for none
        std::string pageFile;   ///< a page of the trace; "" for none
        std::string pageTitle;
        Picture picture = Picture::none;
        bool echo = false;
        bool wire = false;
        bool progress = false;  ///< the error stream is a terminal
    };

    /// Raises LibraryError, and std::runtime_error for a trace file that cannot be written.
    Session(Settings settings, Display& display);
    ~Session();

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

    /// In real time: lets as much time pass in the simulation as has passed outside.
    void keepTime();

    /// Delivers and prints what has arrived.
    void pump();

    /// Readable when something has arrived.
    int wakeDescriptor() const { return wake_[0]; }

    /// Tidies up: what of the picture still waits for an answer is printed. False, and told, when
    /// the trace could not be written.
    bool finish();

    /// `quit` was carried out.
    bool hasEnded() const { return ended_; }

    /// What could stand where the line ends.
    Completions completionsFor(const std::string& line);

    /// Gives the simulation a command that is the phone's own, not the person's.
    void drive(const std::string& command);

private:
    class Ear;
    friend struct Commands;

    Verdict carryOut(const Statement& statement);
    Verdict carryOutOperation(const Operation& operation, const std::vector<Word>& words,
                              bool falseIsFailure);
    Verdict carryOutExpectation(const std::vector<Word>& words);
    Verdict carryOutCheck(const std::vector<Word>& words);
    Verdict carryOutControl(const std::string& command);
    Verdict carryOutRaw(const std::string& text);
    Verdict reconnect();
    Verdict judge(const Statement& statement, Verdict verdict);

    /// The operation that is meant by its name or by a short word, which changes the words.
    static const Operation& resolve(const Statement& statement, std::vector<Word>& words);
    std::string whereIs(std::size_t column) const;

    void hear(const ReceivedEvent& received);
    void record(const TraceRecord& record);
    void draw(const std::vector<FlowStep>& steps);
    void takeRecords();
    void addComplaint(const std::string& text);
    void learnLines();

    /// Waits until `done`, at most `limit` of the service's time; false when it is not done then.
    bool waitFor(std::chrono::milliseconds limit, const std::function<bool()>& done);
    void showProgress();
    void say(const std::string& text, Display::Style style = Display::Style::plain);
    std::unique_ptr<Connection> observed();
    std::shared_ptr<ObservedConnection> connection() const;

    const Settings settings_;
    Display& display_;
    int wake_[2] = {-1, -1};

    std::mutex recordsMutex_;
    std::deque<TraceRecord> records_;      ///< told by the connection, not shown yet
    std::vector<std::string> complaints_;  ///< the service's, not shown yet
    std::ofstream trace_;
    std::ofstream page_;
    Trace pageTrace_;
    Flow flow_;
    TextLadder textLadder_;
    MermaidLadder mermaidLadder_;
    Picture picture_;
    bool echo_;
    bool wire_;

    std::unique_ptr<Subscriber> ear_;
    std::unique_ptr<Framework> framework_;
    std::vector<std::string> problems_;     ///< the framework's, since the line began
    std::vector<std::string> explanation_;  ///< why the line was not met
    bool subscribed_ = false;

    CallBook book_;
    bool linesAreStale_ = true;
    std::string simulationHelp_;  ///< for completion
    std::deque<ReceivedEvent> log_;
    std::size_t next_ = 0;  ///< in the log: the first event that no expectation has passed
    Variables variables_;
    const Operation* lastOperation_ = nullptr;
    Outcome lastOutcome_;

    Place place_;
    int depth_ = 0;
    bool ended_ = false;
    std::chrono::steady_clock::time_point timeKept_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point started_ = std::chrono::steady_clock::now();
    std::function<std::string()> progressText_;
};

/// How often Ctrl-C was pressed since it was last set to 0.
int interruptions();
void setInterruptions(int count);

/// Counts Ctrl-C from now on; the third one in a row ends the program at once.
void catchInterruptions();

}  // namespace kit::phone

#endif

#ifndef KIT_PHONE_SCRIPT_WRITER_H
#define KIT_PHONE_SCRIPT_WRITER_H

#include "kit/binding/Subscriber.h"
#include "kit/language/Words.h"
#include "kit/phone/Verdict.h"

#include <chrono>
#include <fstream>
#include <map>
#include <string>
#include <utility>

namespace kit::phone
{

/// Makes a script out of what was carried out and what came: lines that failed must fail again, what
/// was returned is checked, each event is expected. The script does the same in a fresh simulation,
/// and calls may have other numbers there.
class ScriptWriter
{
public:
    using Time = std::chrono::milliseconds;  ///< since any moment

    /// A line is about to be carried out. The number is for its end.
    int begin(Time now, const std::string& line, const Variables& variables);

    /// @param returned  what an operation has returned, by name; empty when there is nothing to check
    void end(int line, Time now, Verdict verdict, const Values& returned);

    void add(Time now, const ReceivedEvent& received);

    /// Keeps what comes until there is a file for it.
    void remember() { wanted_ = true; }

    /// Writes into this file from now on, and before that what has been kept. Raises Mistake.
    void open(const std::string& path);

    /// Ends the file; "" when none was written.
    std::string close();

    /// Why nothing is written any more, told once.
    std::string takeProblem() { return std::exchange(problem_, {}); }

private:
    /// False when the line is not to be written.
    bool finish(Verdict verdict, const Values& returned);
    void write();

    bool wanted_ = false;
    std::ofstream out_;
    std::string path_;
    std::string problem_;
    std::string text_;    ///< not in a file yet
    std::string events_;  ///< those that came while the line was carried out
    std::string line_;    ///< being carried out; "" when it is not to be written
    std::string wait_;    ///< what stands before it
    bool mustFail_ = false;
    int number_ = 0;
    bool open_ = false;
    Time started_{0};                           ///< when the line was
    Time last_{0};                              ///< up to when the script lets time pass
    Time before_{0};                            ///< the same, before the line
    std::map<std::string, std::string> calls_;  ///< names of the calls that have been captured
};

}  // namespace kit::phone

#endif

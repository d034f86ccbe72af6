#ifndef KIT_PHONE_VERDICT_H
#define KIT_PHONE_VERDICT_H

#include <stdexcept>
#include <string>
#include <utility>
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
    unwritten = 4,    ///< the trace, or what was to be printed
    interrupted = 130
};

/// Ends the program; the text is one line for people.
class Failure : public std::runtime_error
{
public:
    Failure(Verdict verdict, const std::string& why) : std::runtime_error(why), verdict_(verdict) {}
    Verdict verdict() const { return verdict_; }

private:
    Verdict verdict_;
};

/// What a line came to, and why.
struct Report
{
    Verdict verdict = Verdict::met;
    std::vector<std::string> why = {};  ///< the first line says it, the others explain it
    bool shown = false;                 ///< who typed the line sees the reason already

    Report() = default;
    Report(Verdict how, std::vector<std::string> reasons) : verdict(how), why(std::move(reasons)) {}
};

}  // namespace kit::phone

#endif

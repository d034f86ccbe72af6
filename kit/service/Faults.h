#ifndef KIT_SERVICE_FAULTS_H
#define KIT_SERVICE_FAULTS_H

#include <optional>
#include <string>
#include <vector>

namespace kit::service
{

/// A wrong answer that was asked for.
struct WrongAnswer
{
    std::string method;  ///< "*" for every request
    unsigned times;      ///< how often it is still to come
    bool silent;         ///< no answer at all
    std::string text;
};

/// The wrong answers that are still to come, in the order in which they were asked for.
class Faults
{
public:
    const std::vector<WrongAnswer>& all() const { return faults_; }
    void add(WrongAnswer fault);
    void clear() { faults_.clear(); }

    /// The one that this request meets, counted down; none when it meets none.
    std::optional<WrongAnswer> next(const std::string& request);

private:
    std::vector<WrongAnswer> faults_;
};

}  // namespace kit::service

#endif

#ifndef KIT_SERVICE_REQUESTS_H
#define KIT_SERVICE_REQUESTS_H

#include "kit/protocol/Protocol.h"
#include "kit/service/Simulation.h"

#include <string>
#include <vector>

namespace kit::service
{

// The two answers that nearly every request gets.
constexpr const char* success = "sfiSuccess";
constexpr const char* failed = "sfiFailure";

/// A request is not carried out; why has been told.
struct Refusal
{
    std::string answer;
};

/// A request whose fields are all there and have values of their kinds, and what the handlers of
/// requests share: looking up what the fields name, and telling how it went.
class Request
{
public:
    Request(Simulation& simulation, const Operation& operation, Message message);

    const std::string& text(const char* tag) const;
    int number(const char* tag) const;
    bool flag(const char* tag) const;
    const std::string& payload() const { return message_.payload; }

    // --- they refuse the request when it is not as it must be ---

    Line& line(const char* tag = "Line") const;
    /// The line, when calls can be made there.
    Line& readyLine() const;
    /// The call that a field names, when it is on the line and in a state that fits.
    Call& call(const char* tag, int feature, const std::vector<numbers::CallState>& states) const;
    /// Nobody may talk on the line but perhaps in this call.
    void needFreeLine(int feature, int exceptCall = 0) const;
    /// One of the words that a field may have.
    const std::string& word(const char* tag, Meaning meaning, const char* what) const;

    /// Complains, and raises Refusal.
    [[noreturn]] void refuse(const std::string& why, const char* answer = failed) const;
    /// The same with an event.
    [[noreturn]] void refuseFeature(int callId, int feature, int failure,
                                    const std::string& why) const;

    /// Returns the answer.
    std::string featureSuccess(int callId, int feature) const;

private:
    Simulation& s_;
    const Operation& operation_;
    const Message message_;
};

/// Answers a request; "" for one that needs no answer.
std::string answerRequest(Simulation& simulation, const std::string& text);

/// "1 (unconditional), 2 (busy), 3 (noAnswer)"
std::string choices(Meaning meaning);

}  // namespace kit::service

#endif

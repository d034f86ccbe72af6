#ifndef KIT_SERVICE_CALLS_H
#define KIT_SERVICE_CALLS_H

#include "kit/service/Model.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace kit::service
{

class Simulation;

// How long things take on the simulated clock.
constexpr Time ringInterval = std::chrono::seconds(5);
constexpr int ringsUntilCallerGivesUp = 12;
constexpr Time failedCallStays = std::chrono::seconds(30);
constexpr Time messageLength = std::chrono::seconds(5);

constexpr std::size_t maximumCallsPerLine = 4;
constexpr int maximumForwardings = 5;

/// What came of a call that arrived at a line.
struct ArrivalOutcome
{
    enum Kind
    {
        rings,
        forwarded,
        failed
    } kind;
    int callId;              ///< when it rings
    numbers::Reason reason;  ///< when it failed
    std::string target;      ///< when it was forwarded
};

/// The calls of the phone, as seen from this end. FarEnd is the other.
class Calls
{
public:
    explicit Calls(Simulation& simulation) : s_(simulation) {}

    // --- finding; null when there is none ---

    Call* find(int id);
    Call* find(const std::string& line, const std::function<bool(const Call&)>& wanted);
    const std::map<int, Call>& all() const { return calls_; }
    std::vector<int> on(const std::string& line) const;
    /// Somebody talks, or is being called, on the line.
    bool inConversation(const std::string& line);
    bool full(const std::string& line) const { return on(line).size() >= maximumCallsPerLine; }

    // --- the life of a call ---

    /// With the wanted number when it is free, otherwise with the next one.
    Call& create(const std::string& line, bool incoming, int wantedId);
    void setState(Call& call, numbers::CallState state, numbers::Reason reason);
    /// An outgoing call did not come about; it stays to be seen for a while.
    void fail(Call& call, numbers::Reason reason);
    /// Ends the call at this end. The reference is dead afterwards.
    void clear(Call& call, numbers::Reason reason);
    /// Somebody here answers.
    void answer(Call& call);
    void hold(Call& call, bool manual);
    void retrieve(Call& call);
    /// Calls a number from a call of this phone.
    void dial(Call& call, const std::string& number);
    /// Two calls of this phone become the two ends of one.
    static void join(Call& call, Call& other);
    void preempt(Call& call, int priority, int cause, const std::string& text);
    void tellSecurity(const Call& call);

    // --- arriving ---

    /// A call arrives at a line: it rings there, is forwarded or fails.
    ArrivalOutcome arrive(const std::string& line, const Arrival& arrival);
    /// The same for a caller outside, who goes wherever the call is forwarded to.
    ArrivalOutcome arriveFollowing(const std::string& line, Arrival arrival);
    /// Sends a waiting call elsewhere. The reference is dead afterwards.
    void divert(Call& call, const std::string& target, numbers::Reason reason,
                numbers::DiversionReason diversion);

    // --- calls that ring at a colleague's ---

    const std::vector<PickupCall>& atColleagues() const { return atColleagues_; }
    const PickupCall& ringAtColleague(const std::string& member, const Party& caller);
    /// Takes one away, of any colleague when none is named; false when none is there.
    bool takeFromColleague(const std::string& member, PickupCall& taken);

    // --- later ---

    /// Runs `action` after that time, unless the call has changed its state meanwhile.
    void afterIfStill(const Call& call, Time time, std::function<void(Call&)> action);
    /// The same, unless somebody has answered it or it is over.
    void whileWaiting(int id, Time time, std::function<void(Call&)> action);

private:
    int freeId(int wanted) const;

    Simulation& s_;
    std::map<int, Call> calls_;
    std::vector<PickupCall> atColleagues_;
    int last_ = 0;
};

}  // namespace kit::service

#endif

#ifndef KIT_SERVICE_SIMULATION_H
#define KIT_SERVICE_SIMULATION_H

#include "kit/protocol/Protocol.h"
#include "kit/service/Model.h"

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace kit::service
{

// How long things take on the simulated clock.
constexpr Time ringInterval = std::chrono::seconds(5);
constexpr int ringsUntilCallerGivesUp = 12;
constexpr Time failedCallStays = std::chrono::seconds(30);
constexpr Time callBackTimeOut = std::chrono::seconds(120);
constexpr Time callBackRings = std::chrono::seconds(2);
constexpr int callBackRingCount = 4;
constexpr Time messageLength = std::chrono::seconds(5);
constexpr Time autoActivation = std::chrono::seconds(30);

constexpr std::size_t maximumCallsPerLine = 4;
constexpr std::size_t maximumCallBacksPerLine = 3;
constexpr std::size_t maximumLines = 64;
constexpr int maximumForwardings = 5;

/// A request whose fields are all there and have values of their kinds.
class Request
{
public:
    Request(const Operation& operation, Message message)
        : operation_(operation), message_(std::move(message))
    {
    }

    const char* method() const { return operation_.method; }
    const std::string& text(const char* tag) const;
    int number(const char* tag) const;
    bool flag(const char* tag) const;
    const std::string& payload() const { return message_.payload; }

private:
    const Operation& operation_;
    Message message_;
};

/// What the phone's network side does on its own: the state of everything, and the clock.
///
/// Not locked: SimulatedService does that. Everything that happens becomes an event or a complaint
/// in the two lists, which SimulatedService empties.
class Simulation
{
public:
    explicit Simulation(const std::vector<std::string>& lineNames);

    /// Answers a request; "" for one that needs no answer.
    std::string request(const std::string& text);
    void advance(Time time);

    /// How long nothing happens from now on, at most `limit`.
    Time quietFor(Time limit) const;

    std::vector<std::string> takeEvents() { return std::exchange(events_, {}); }
    std::vector<std::string> takeComplaints() { return std::exchange(complaints_, {}); }

    // --- what the requests' and the control's handlers are made of ---

    using Lines = std::vector<Line>;
    using Calls = std::map<int, Call>;

    /// What came of a call that arrived at a line.
    struct Outcome
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

    void emit(std::string event) { events_.push_back(std::move(event)); }
    void complain(std::string text);

    Line* findLine(const std::string& name);
    Call* findCall(int id);
    Call* findCall(const std::string& line, const std::function<bool(const Call&)>& wanted);
    std::vector<int> callsOf(const std::string& line) const;
    Party partyOf(const std::string& number);
    bool inConversation(const std::string& line);

    Call& newCall(const std::string& line, bool incoming, int wantedId);
    void setState(Call& call, numbers::CallState state, numbers::Reason reason);
    void fail(Call& call, numbers::Reason reason);
    void clear(Call& call, numbers::Reason reason);
    void answer(Call& call);
    void dial(Call& call, const std::string& number);
    Outcome arrive(const std::string& line, const Arrival& arrival);
    Outcome arriveFollowing(const std::string& line, Arrival arrival);
    void divert(Call& call, const std::string& target, numbers::Reason reason,
                numbers::DiversionReason diversion);
    void holdHere(Call& call, bool manual);
    void retrieveHere(Call& call);
    void join(Call& call, Call& other);
    void changeFarEnd(Call& call, const Party& party, bool exitConf, bool jointCall);
    void connectFarEnds(Call& one, Call& two);
    void startConference(Call& active, Call& held);
    void leaveConference(Call& call);
    void announceConference(int conference);
    std::vector<int> membersOf(int conference) const;

    void farEndAnswers(Call& call);
    void farEndFails(Call& call, numbers::Reason reason);
    void farEndClears(Call& call);
    void farEndHolds(Call& call);
    void farEndRetrieves(Call& call);
    void farEndTransfers(Call& call, const Party& target);
    void act(int callId, Act act);

    void registerLine(Line& line, bool registered, int result);
    void setDoNotDisturb(Line& line, bool on);
    void preempt(Call& call, int priority, int cause, const std::string& text);
    void announceMessages();
    void leaveMessage(bool urgent);
    void mailboxDigits(const std::string& digits);
    void tellSecurity(const Call& call);

    std::string activateCallBack(const Request& request, bool busy);
    void followCallBack(int callBackId);
    void ringCallBack(int callBackId);
    void failCallBack(int callBackId, int failure);
    void endCallBack(int callBackId, int state);
    CallBack* findCallBack(int id);

    /// Runs `action` when that time has passed.
    void after(Time time, std::function<void()> action);
    /// The same, unless the call has changed its state meanwhile.
    void afterIfStill(const Call& call, Time time, std::function<void(Call&)> action);

    std::string failure(const Request& request, const std::string& why);
    std::string featureFailure(const Request& request, int callId, int feature, int why,
                               const std::string& text);
    std::string featureSuccess(const Request& request, int callId, int feature);

    friend struct Commands;
    friend struct Handlers;

private:
    void startSteps(const Call& call);
    int freeCallId(int wanted) const;
    bool checkFields(const Operation& operation, const Message& message);
    bool checkValue(const Operation& operation, const Field& field, const std::string& value);

    std::vector<std::string> events_;
    std::vector<std::string> complaints_;

    Lines lines_;
    Calls calls_;
    std::vector<PickupCall> pickups_;
    std::vector<CallBack> callBacks_;
    Mailbox mailbox_;
    int lastCallId_ = 0;
    int lastCallBackId_ = 0;
    bool muted_ = false;
    bool associatedCalls_ = false;
    int serviceState_ = sfiServiceInService;
    int activations_ = 0;  ///< counts changes of the service state asked for
    std::string systemStatus_ = words::systemNormal;
    std::string systemStatusInfo_;
    std::string lastSignalling_;
    bool bluetoothAudio_ = false;
    bool bluetoothGateway_ = false;
    bool bluetoothRinging_ = false;

    Time now_{0};
    std::multimap<Time, std::function<void()>> timers_;
};

}  // namespace kit::service

#endif

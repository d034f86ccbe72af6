#ifndef KIT_SERVICE_HANDLERS_H
#define KIT_SERVICE_HANDLERS_H

#include "kit/service/Simulation.h"

#include <string>
#include <vector>

namespace kit::service
{

// The two answers that nearly every request gets.
constexpr const char* success = "sfiSuccess";
constexpr const char* failed = "sfiFailure";

/// "1 (unconditional), 2 (busy), 3 (noAnswer)"
std::string choices(Meaning meaning);

/// One function for each request. What they return is the answer; "" where none is awaited.
struct Handlers
{
    using Handler = std::string (*)(Simulation& s, const Request& r);

    struct Row
    {
        const char* method;
        Handler handler;
    };

    /// All requests but the signalling data, which has no envelope.
    static const std::vector<Row>& table();

    static std::string signalling(Simulation& s, const std::string& data);

    // --- what they share ---

    /// The line, when calls can be made there; complains otherwise.
    static Line* readyLine(Simulation& s, const Request& r);
    static Line* knownLine(Simulation& s, const Request& r, const std::string& name);
    /// The call that a field names, when it is on the line and in a state that fits.
    static Call* call(Simulation& s, const Request& r, const char* tag, int feature,
                      const std::vector<numbers::CallState>& states);
    /// Nobody talks on the line but perhaps in this call; complains otherwise.
    static bool lineFree(Simulation& s, const Request& r, int feature, int exceptCall = 0);

    // --- lifecycle ---

    static std::string activate(Simulation& s, const Request&);
    static std::string deactivate(Simulation& s, const Request& r);
    static std::string subscribe(Simulation&, const Request&);

    // --- calls ---

    static std::string callClear(Simulation& s, const Request& r);
    /// The call to dial in: one that is off hook already, or a new one.
    static Call* callToDial(Simulation& s, const Request& r, int feature);
    static std::string outgoingCallMake(Simulation& s, const Request& r);
    static std::string acceptCall(Simulation& s, const Request& r);
    static std::string answerCall(Simulation& s, const Request& r);
    static std::string deflectCall(Simulation& s, const Request& r);
    static std::string holdCall(Simulation& s, const Request& r);
    static std::string retrieveCall(Simulation& s, const Request& r);
    static std::string attendedTransfer(Simulation& s, const Request& r);
    static std::string blindTransfer(Simulation& s, const Request& r);
    static std::string consult(Simulation& s, const Request& r);
    static std::string refuseCall(Simulation& s, const Request& r);
    static std::string alternateCalls(Simulation& s, const Request& r);
    static std::string conferenceCall(Simulation& s, const Request& r);
    static std::string generateDigits(Simulation& s, const Request& r);
    static std::string pickUp(Simulation& s, const Request& r, int feature,
                              const std::string& member);
    static std::string directedPickup(Simulation& s, const Request& r);
    static std::string groupPickup(Simulation& s, const Request& r);

    // --- features and settings ---

    static std::string callBackRinging(Simulation& s, const Request& r);
    static std::string callBackBusy(Simulation& s, const Request& r);
    static std::string cancelCallbacks(Simulation& s, const Request& r);
    static std::string setMicrophoneMute(Simulation& s, const Request& r);
    static std::string setDoNotDisturb(Simulation& s, const Request& r);
    static std::string setForwarding(Simulation& s, const Request& r);
    static std::string setAssociatedCalls(Simulation& s, const Request& r);
    static std::string setLampMode(Simulation& s, const Request& r);
    static std::string securityReinvite(Simulation& s, const Request& r);
    static std::string setInServiceInitiated(Simulation& s, const Request& r);
    static std::string systemStatus(Simulation& s, const Request& r);
    static std::string setServiceState(Simulation& s, const Request& r);

    // --- queries ---

    static std::string getMicrophoneMute(Simulation& s, const Request&);
    static std::string getDoNotDisturb(Simulation& s, const Request& r);
    static std::string getServiceState(Simulation& s, const Request&);
    static std::string getForwarding(Simulation& s, const Request& r);
    static std::string getMessageWaiting(Simulation& s, const Request&);
    static std::string getDevices(Simulation& s, const Request&);
    static std::string isCallHoldPossible(Simulation& s, const Request& r);
    static std::string getManualHold(Simulation& s, const Request& r);

    // --- server and CSTA ---

    static std::string cstaRequest(Simulation& s, const Request& r);
    static std::string uacstaMessage(Simulation& s, const Request& r);
    static std::string serverFeatures(Simulation& s, const Request& r);
    static std::string callBackFeatureCall(Simulation& s, const Request& r);
    static std::string setAgentState(Simulation& s, const Request& r);
    static std::string removeParticipant(Simulation& s, const Request& r);
};

}  // namespace kit::service

#endif

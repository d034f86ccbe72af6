#ifndef KIT_SERVICE_MODEL_H
#define KIT_SERVICE_MODEL_H

#include "kit/protocol/Numbers.h"
#include "kit/service/Robots.h"

#include <map>
#include <string>

// What the simulated phone is made of: data only. The parts of Simulation keep it and let it act.
namespace kit::service
{

/// Somebody in a call.
struct Party
{
    std::string number;
    std::string name;

    std::string uri() const;
    std::string fullPai() const;
};

struct ForwardingSetting
{
    bool on = false;
    std::string destination;
    int ringCount = 0;
};

struct Line
{
    std::string name;  ///< the line identifier, and the number under which it is called
    bool registered = false;
    bool doNotDisturb = false;
    bool serverFeatures = false;
    std::string agentState = words::agentLoggedOff;
    std::map<int, ForwardingSetting> forwarding;  ///< by numbers::Forwarding
    std::map<std::string, int> lamps;             ///< numbers::LampMode by lamp
};

/// What a caller sends along.
struct Arrival
{
    Party from;
    std::string fullPai;  ///< "" for what follows from name and number
    std::string alertUri;
    std::string alertInfo;
    bool autoAnswer = false;
    bool zipAutoAnswer = false;
    bool video = false;
    int type = numbers::callTypeExternal;
    int priority = numbers::priorityRoutine;
    int ilCallLevel = numbers::impactNone;
    int ilLocalLevel = numbers::impactNone;
    Party divertedBy;
    int diversionReason = numbers::diversionNone;
    int forwardings = 0;  ///< how often it has been sent elsewhere
    int peer = 0;         ///< the caller's own call, when the caller is a line of this phone
};

struct Call
{
    int id = 0;
    std::string line;
    bool incoming = false;
    numbers::CallState state = numbers::callIdle;
    int reason = numbers::reasonNormal;
    int stage = 0;  ///< counts changes of state; what waits for a time looks at it
    Party local;
    Arrival remote;
    RobotPointer robot;
    unsigned stepsDone = 0;  ///< one bit for each of the robot's steps
    int peer = 0;            ///< call at the far end, when that is a line of this phone
    int conference = 0;      ///< the conference that it is in, by the number of its first call
    bool manualHold = false;
    bool recorded = false;
    int security = numbers::securityOpen;
    int preemptionCause = numbers::preemptionNone;
    std::string preemptionText;
    std::string digits;
    int callBack = 0;  ///< the call-back that it carries out

    /// Takes part in a conversation, or is about to.
    bool active() const;
    /// Waits for somebody here to answer.
    bool waiting() const;
    bool callBackPossible() const;
    bool takesDigits() const;
    /// Asserted identity of the far end.
    std::string remotePai() const;
};

/// A call that rings at a colleague's phone and may be picked up.
struct PickupCall
{
    int id = 0;
    std::string member;
    Party caller;
};

struct CallBack
{
    int id = 0;
    std::string line;
    Party destination;
    int type = numbers::completionBusy;
    int state = numbers::completionRequested;
    bool displayOutcome = true;
    std::string featureCall;  ///< as the application named it
};

struct Mailbox
{
    unsigned newMessages = 0;
    unsigned oldMessages = 0;
    unsigned newUrgentMessages = 0;
    unsigned oldUrgentMessages = 0;

    bool waiting() const { return newMessages + newUrgentMessages > 0; }
    bool operator==(const Mailbox& other) const;
};

/// What is set for the phone as a whole.
struct Settings
{
    bool muted = false;
    bool associatedCalls = false;
    int serviceState = sfiServiceInService;
    int activations = 0;  ///< counts changes of the service state asked for
    std::string systemStatus = words::systemNormal;
    std::string systemStatusInfo;
    std::string lastSignalling;
    bool bluetoothAudio = false;
    bool bluetoothGateway = false;
    bool bluetoothRinging = false;
};

}  // namespace kit::service

#endif

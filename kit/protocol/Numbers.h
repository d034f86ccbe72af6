#ifndef KIT_PROTOCOL_NUMBERS_H
#define KIT_PROTOCOL_NUMBERS_H

#include "CommunicationsServiceTypes.h"
#include "application/CallBook.h"

#include <string>
#include <vector>

/// Numbers and words that only the phone's service defines are inventions, and all of them stand in
/// this one header: the library carries them unread, and a real service will have others. Nothing
/// but the simulation and what prints its messages may rely on them. (The numbers of CSTAEventCause,
/// the names of the service states and the result words are not inventions.)
///
/// The list encoding of the Serializer is an invention too; it is told in kit/protocol/Lists.h.
namespace kit
{

namespace numbers
{

enum CallState
{
    callIdle = 0,
    callInitiated = 1,  ///< off hook, nothing dialled
    callOffered = 2,    ///< incoming, to be accepted, deflected or refused
    callRinging = 3,    ///< incoming, to be answered
    callDelivered = 4,  ///< outgoing, rings at the far end
    callConnected = 5,
    callHeld = 6,
    callConferenced = 7,
    callCleared = 8,
    callFailed = 9,   ///< outgoing, did not come about; still to be cleared
    callQueued = 10,  ///< waits for the far end
    callHeldByFarEnd = 11
};

/// Why a call is in its state, was missed or was forwarded.
enum Reason
{
    reasonNormal = 0,
    reasonBusy = 1,
    reasonNoAnswer = 2,
    reasonRefused = 3,
    reasonUnobtainable = 4,
    reasonForwarded = 5,
    reasonDeflected = 6,
    reasonTransferred = 7,
    reasonConferenced = 8,
    reasonPickedUp = 9,
    reasonAnsweredElsewhere = 10,
    reasonPreempted = 11,
    reasonCallBack = 12,
    reasonDoNotDisturb = 13,
    reasonFarEndCleared = 14,
    reasonOutOfService = 15
};

/// What may be sent into a call.
enum SendOptions
{
    sendNothing = 0,
    sendDigits = 1
};

enum CallType
{
    callTypeInternal = 1,
    callTypeExternal = 2,
    callTypeEmergency = 3,
    callTypeCallBack = 4,
    callTypeIntercom = 5
};

enum DiversionReason
{
    diversionNone = 0,
    diversionUnconditional = 1,
    diversionBusy = 2,
    diversionNoAnswer = 3,
    diversionDeflected = 4,
    diversionDoNotDisturb = 5
};

/// sfiFeature
enum Feature
{
    featureNone = 0,
    featureHold = 1,
    featureConsultation = 2,
    featureAttendedTransfer = 3,
    featureBlindTransfer = 4,
    featureConference = 5,
    featureAlternate = 6,
    featureDirectedPickup = 7,
    featureGroupPickup = 8,
    featureCallBackRinging = 9,
    featureCallBackBusy = 10,
    featureDeflect = 11,
    featureForwarding = 12,
    featureRetrieve = 13,
    featureDoNotDisturb = 14,
    featureDigits = 15,
    featureSecurity = 16
};

enum FeatureFailure
{
    failureNone = 0,
    failureWrongState = 1,
    failureNoSuchCall = 2,
    failureBusy = 3,
    failureNoAnswer = 4,
    failureRefused = 5,
    failureUnobtainable = 6,
    failureNotAllowed = 7,
    failureNothingToPickUp = 8
};

/// sfiRefuseCall
enum Refusal
{
    refuseBusy = 1,
    refuseDecline = 2,
    refuseUnavailable = 3,
    refuseDoNotDisturb = 4
};

/// sfiCancelCallBackType
enum CancelCallBack
{
    cancelOne = 1,  ///< the call-back of this destination
    cancelAll = 2   ///< every call-back of the line
};

/// sfiForwardingType
enum Forwarding
{
    forwardUnconditional = 1,
    forwardBusy = 2,
    forwardNoAnswer = 3
};

enum LampMode
{
    lampOff = 0,
    lampOn = 1,
    lampFlash = 2,
    lampBlink = 3,
    lampFlicker = 4
};

enum RegistrationResult
{
    registrationNone = 0,
    registrationDone = 200,
    registrationUnauthorized = 401,
    registrationForbidden = 403,
    registrationUnknownLine = 404,
    registrationTimedOut = 408,
    registrationUnavailable = 503
};

enum MessageType
{
    messageNone = 0,
    messageVoice = 1,
    messageFax = 2,
    messageText = 3
};

/// How the mailbox can be called.
enum MessageReturn
{
    returnNone = 0,
    returnDial = 1
};

/// Which of the counters hold.
enum MessageInfo
{
    infoNone = 0,
    infoFlagOnly = 1,
    infoCounters = 2
};

enum MessagesWaiting
{
    waitingNo = 0,
    waitingYes = 1
};

enum Security
{
    securityUnknown = 0,
    securityOpen = 1,
    securityEncrypted = 2,
    securityAuthenticated = 3  ///< encrypted, and the far end is who it says
};

/// Precedence of a call.
enum Priority
{
    priorityRoutine = 0,
    priorityRaised = 1,
    priorityImmediate = 2,
    priorityFlash = 3,
    priorityFlashOverride = 4
};

enum PreemptionCause
{
    preemptionNone = 0,
    preemptionHigherPriority = 1,
    preemptionReservedLine = 2
};

enum ImpactLevel
{
    impactNone = 0,
    impactLow = 1,
    impactMedium = 2,
    impactHigh = 3
};

enum CompletionType
{
    completionBusy = 1,
    completionNoAnswer = 2
};

enum CompletionState
{
    completionRequested = 1,
    completionAvailable = 2,  ///< the far end can be called now
    completionRinging = 3,    ///< the phone rings for the call-back
    completionDone = 4,
    completionCancelled = 5
};

enum CompletionFailure
{
    completionTimedOut = 1,
    completionRefused = 2,
    completionStillBusy = 3,
    completionNotAnswered = 4
};

}  // namespace numbers

/// Words that travel as text where others would have numbers.
namespace words
{

// Agent states.
constexpr const char* agentLoggedOff = "loggedOff";
constexpr const char* agentLoggedOn = "loggedOn";
constexpr const char* agentReady = "ready";
constexpr const char* agentNotReady = "notReady";
constexpr const char* agentWorkingAfterCall = "workingAfterCall";

// System status.
constexpr const char* systemNormal = "NORMAL";
constexpr const char* systemDegraded = "DEGRADED";
constexpr const char* systemDown = "DOWN";

// Server features of a line.
constexpr const char* serverFeaturesOn = "initialized";
constexpr const char* serverFeaturesOff = "finalized";

// Recording of a call.
constexpr const char* recorded = "true";
constexpr const char* notRecorded = "false";

}  // namespace words

/// The simulator's call states for an application's CallBook.
communications::CallStates callStates();

/// A set of numbers, or of words, that belong to one meaning.
enum class Meaning
{
    none,
    callState,
    reason,
    sendOptions,
    callType,
    diversionReason,
    feature,
    featureFailure,
    refusal,
    cancelCallBack,
    forwarding,
    lampMode,
    registrationResult,
    messageType,
    messageReturn,
    messageInfo,
    messagesWaiting,
    security,
    priority,
    preemptionCause,
    impactLevel,
    completionType,
    completionState,
    completionFailure,
    cause,         ///< CSTAEventCause; published, not invented
    serviceState,  ///< sfiServiceState; fixed, not invented
    result,        ///< sfiResult; fixed, not invented
    agentState,    ///< words, numbered from 0 in the order above
    systemStatus,
    serverFeature,
    recording
};

struct NumberName
{
    int number;
    const char* name;
};

/// All names of a meaning in the order of their numbers; empty for `none`.
const std::vector<NumberName>& namesOf(Meaning meaning);

/// The number's name, as in "ringing"; its decimal text where it has none.
std::string nameOf(Meaning meaning, int number);

/// The number that a name or a decimal text stands for; false when it is neither, or out of range.
bool numberOf(Meaning meaning, const std::string& text, int& number);

/// "sfiSuccess" for 5, and so on; the number's decimal text for one that is no result.
std::string resultName(int result);

}  // namespace kit

#endif

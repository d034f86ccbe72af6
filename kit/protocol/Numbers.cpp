#include "kit/protocol/Numbers.h"

#include <cerrno>
#include <cstdlib>
#include <limits>

namespace kit
{

namespace
{

using namespace numbers;

struct Group
{
    Meaning meaning;
    std::vector<NumberName> names;
};

const std::vector<Group>& groups()
{
    static const std::vector<Group> table = {
        {Meaning::none, {}},
        {Meaning::callState,
         {{callIdle, "idle"},
          {callInitiated, "initiated"},
          {callOffered, "offered"},
          {callRinging, "ringing"},
          {callDelivered, "delivered"},
          {callConnected, "connected"},
          {callHeld, "held"},
          {callConferenced, "conferenced"},
          {callCleared, "cleared"},
          {callFailed, "failed"},
          {callQueued, "queued"},
          {callHeldByFarEnd, "heldByFarEnd"}}},
        {Meaning::reason,
         {{reasonNormal, "normal"},
          {reasonBusy, "busy"},
          {reasonNoAnswer, "noAnswer"},
          {reasonRefused, "refused"},
          {reasonUnobtainable, "unobtainable"},
          {reasonForwarded, "forwarded"},
          {reasonDeflected, "deflected"},
          {reasonTransferred, "transferred"},
          {reasonConferenced, "conferenced"},
          {reasonPickedUp, "pickedUp"},
          {reasonAnsweredElsewhere, "answeredElsewhere"},
          {reasonPreempted, "preempted"},
          {reasonCallBack, "callBack"},
          {reasonDoNotDisturb, "doNotDisturb"},
          {reasonFarEndCleared, "farEndCleared"},
          {reasonOutOfService, "outOfService"}}},
        {Meaning::sendOptions, {{sendNothing, "nothing"}, {sendDigits, "digits"}}},
        {Meaning::callType,
         {{callTypeInternal, "internal"},
          {callTypeExternal, "external"},
          {callTypeEmergency, "emergency"},
          {callTypeCallBack, "callBack"},
          {callTypeIntercom, "intercom"}}},
        {Meaning::diversionReason,
         {{diversionNone, "none"},
          {diversionUnconditional, "unconditional"},
          {diversionBusy, "busy"},
          {diversionNoAnswer, "noAnswer"},
          {diversionDeflected, "deflected"},
          {diversionDoNotDisturb, "doNotDisturb"}}},
        {Meaning::feature,
         {{featureNone, "none"},
          {featureHold, "hold"},
          {featureConsultation, "consultation"},
          {featureAttendedTransfer, "attendedTransfer"},
          {featureBlindTransfer, "blindTransfer"},
          {featureConference, "conference"},
          {featureAlternate, "alternate"},
          {featureDirectedPickup, "directedPickup"},
          {featureGroupPickup, "groupPickup"},
          {featureCallBackRinging, "callBackRinging"},
          {featureCallBackBusy, "callBackBusy"},
          {featureDeflect, "deflect"},
          {featureForwarding, "forwarding"},
          {featureRetrieve, "retrieve"},
          {featureDoNotDisturb, "doNotDisturb"},
          {featureDigits, "digits"},
          {featureSecurity, "security"}}},
        {Meaning::featureFailure,
         {{failureNone, "none"},
          {failureWrongState, "wrongState"},
          {failureNoSuchCall, "noSuchCall"},
          {failureBusy, "busy"},
          {failureNoAnswer, "noAnswer"},
          {failureRefused, "refused"},
          {failureUnobtainable, "unobtainable"},
          {failureNotAllowed, "notAllowed"},
          {failureNothingToPickUp, "nothingToPickUp"}}},
        {Meaning::refusal,
         {{refuseBusy, "busy"},
          {refuseDecline, "decline"},
          {refuseUnavailable, "unavailable"},
          {refuseDoNotDisturb, "doNotDisturb"}}},
        {Meaning::cancelCallBack, {{cancelOne, "one"}, {cancelAll, "all"}}},
        {Meaning::forwarding,
         {{forwardUnconditional, "unconditional"},
          {forwardBusy, "busy"},
          {forwardNoAnswer, "noAnswer"}}},
        {Meaning::lampMode,
         {{lampOff, "off"},
          {lampOn, "on"},
          {lampFlash, "flash"},
          {lampBlink, "blink"},
          {lampFlicker, "flicker"}}},
        {Meaning::registrationResult,
         {{registrationNone, "none"},
          {registrationDone, "done"},
          {registrationUnauthorized, "unauthorized"},
          {registrationForbidden, "forbidden"},
          {registrationUnknownLine, "unknownLine"},
          {registrationTimedOut, "timedOut"},
          {registrationUnavailable, "unavailable"}}},
        {Meaning::messageType,
         {{messageNone, "none"},
          {messageVoice, "voice"},
          {messageFax, "fax"},
          {messageText, "text"}}},
        {Meaning::messageReturn, {{returnNone, "none"}, {returnDial, "dial"}}},
        {Meaning::messageInfo,
         {{infoNone, "none"}, {infoFlagOnly, "flagOnly"}, {infoCounters, "counters"}}},
        {Meaning::messagesWaiting, {{waitingNo, "no"}, {waitingYes, "yes"}}},
        {Meaning::security,
         {{securityUnknown, "unknown"},
          {securityOpen, "open"},
          {securityEncrypted, "encrypted"},
          {securityAuthenticated, "authenticated"}}},
        {Meaning::priority,
         {{priorityRoutine, "routine"},
          {priorityRaised, "raised"},
          {priorityImmediate, "immediate"},
          {priorityFlash, "flash"},
          {priorityFlashOverride, "flashOverride"}}},
        {Meaning::preemptionCause,
         {{preemptionNone, "none"},
          {preemptionHigherPriority, "higherPriority"},
          {preemptionReservedLine, "reservedLine"}}},
        {Meaning::impactLevel,
         {{impactNone, "none"},
          {impactLow, "low"},
          {impactMedium, "medium"},
          {impactHigh, "high"}}},
        {Meaning::completionType, {{completionBusy, "busy"}, {completionNoAnswer, "noAnswer"}}},
        {Meaning::completionState,
         {{completionRequested, "requested"},
          {completionAvailable, "available"},
          {completionRinging, "ringing"},
          {completionDone, "done"},
          {completionCancelled, "cancelled"}}},
        {Meaning::completionFailure,
         {{completionTimedOut, "timedOut"},
          {completionRefused, "refused"},
          {completionStillBusy, "stillBusy"},
          {completionNotAnswered, "notAnswered"}}},
        {Meaning::cause,
         {{1, "activeParticipation"},
          {2, "alternate"},
          {3, "busy"},
          {4, "callBack"},
          {5, "callCancelled"},
          {6, "callForwardImmediate"},
          {7, "callForwardBusy"},
          {8, "callForwardNoAnswer"},
          {9, "callForward"},
          {10, "callNotAnswered"},
          {11, "callPickup"},
          {12, "campOn"},
          {13, "destNotObtainable"},
          {14, "doNotDisturb"},
          {15, "incompatibleDestination"},
          {16, "invalidAccountCode"},
          {17, "keyOperation"},
          {18, "lockout"},
          {19, "maintenance"},
          {20, "networkCongestion"},
          {21, "networkNotObtainable"},
          {22, "newCall"},
          {23, "noAvailableAgents"},
          {24, "override"},
          {25, "park"},
          {26, "overflow"},
          {27, "recall"},
          {28, "redirected"},
          {29, "reorderTone"},
          {30, "resourcesNotAvailable"},
          {31, "silentParticipation"},
          {32, "transfer"},
          {33, "trunksBusy"},
          {35, "blocked"},
          {36, "characterCountReached"},
          {37, "consultation"},
          {38, "distributed"},
          {39, "dTMFDigitDetected"},
          {40, "durationExceeded"},
          {41, "endOfMessageDetected"},
          {42, "enteringDistribution"},
          {43, "forcedPause"},
          {44, "makeCall"},
          {45, "messageSizeExceeded"},
          {46, "networkSignal"},
          {47, "nextMessage"},
          {48, "normalClearing"},
          {49, "noSpeechDetected"},
          {50, "numberChanged"},
          {51, "singleStepConference"},
          {52, "singleStepTransfer"},
          {53, "speechDetected"},
          {54, "switchingFunctionTerminated"},
          {55, "terminationCharacterReceived"},
          {56, "timeout"},
          {57, "aCDBusy"},
          {58, "aCDForward"},
          {59, "aCDSaturated"},
          {60, "alertTimeExpired"},
          {61, "autoWork"},
          {62, "campOnTrunks"},
          {63, "conference"},
          {64, "destDetected"},
          {65, "destOutOfOrder"},
          {66, "distributionDelay"},
          {67, "forcedTransition"},
          {68, "intrude"},
          {69, "invalidNumberFormat"},
          {70, "joinCall"},
          {71, "keyOperationInUse"},
          {72, "makePredictiveCall"},
          {73, "messageDurationExceeded"},
          {74, "multipleAlerting"},
          {75, "multipleQueuing"},
          {76, "networkDialling"},
          {77, "networkOutOfOrder"},
          {78, "normal"},
          {79, "notAvaliableBearerService"},
          {80, "notSupportedBearerService"},
          {81, "numberUnallocated"},
          {82, "queueCleared"},
          {83, "remainsInQueue"},
          {84, "reserved"},
          {85, "selectedTrunkBusy"},
          {86, "suspend"},
          {87, "unauthorisedBearerService"}}},
        {Meaning::serviceState,
         {{sfiServiceInService, "sfiServiceInService"},
          {sfiServiceOutOfService, "sfiServiceOutOfService"},
          {sfiServiceDoNotDisturb, "sfiServiceDoNotDisturb"}}},
        {Meaning::result,
         {{sfiFailure, "sfiFailure"},
          {sfiFailureCallBackInvalidState, "sfiFailureCallBackInvalidState"},
          {sfiFailureCallBackNoCallInfo, "sfiFailureCallBackNoCallInfo"},
          {sfiFailureCallBackToMany, "sfiFailureCallBackToMany"},
          {sfiFailureCallBackAllreadyExists, "sfiFailureCallBackAllreadyExists"},
          {sfiSuccess, "sfiSuccess"}}},
        {Meaning::agentState,
         {{0, words::agentLoggedOff},
          {1, words::agentLoggedOn},
          {2, words::agentReady},
          {3, words::agentNotReady},
          {4, words::agentWorkingAfterCall}}},
        {Meaning::systemStatus,
         {{0, words::systemNormal}, {1, words::systemDegraded}, {2, words::systemDown}}},
        {Meaning::serverFeature, {{0, words::serverFeaturesOff}, {1, words::serverFeaturesOn}}},
        {Meaning::recording, {{0, words::notRecorded}, {1, words::recorded}}},
    };
    return table;
}

}  // namespace

communications::CallStates callStates()
{
    return {callIdle, callOffered,     callRinging, callConnected,
            callHeld, callConferenced, callCleared};
}

const std::vector<NumberName>& namesOf(Meaning meaning)
{
    for (const Group& group : groups())
        if (group.meaning == meaning)
            return group.names;
    return groups().front().names;
}

std::string nameOf(Meaning meaning, int number)
{
    for (const NumberName& entry : namesOf(meaning))
        if (entry.number == number)
            return entry.name;
    return std::to_string(number);
}

bool numberOf(Meaning meaning, const std::string& text, int& number)
{
    for (const NumberName& entry : namesOf(meaning))
        if (entry.name == text)
        {
            number = entry.number;
            return true;
        }
    if (text.find_first_not_of("-0123456789") != std::string::npos)
        return false;
    char* end = nullptr;
    errno = 0;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (end == text.c_str() || *end != '\0' || errno != 0 ||
        value < std::numeric_limits<int>::min() || value > std::numeric_limits<int>::max())
        return false;
    number = static_cast<int>(value);
    return true;
}

std::string resultName(int result)
{
    return nameOf(Meaning::result, result);
}

}  // namespace kit

#include "kit/protocol/Numbers.h"

#include <charconv>
#include <map>
#include <system_error>

namespace kit
{

namespace
{

using namespace numbers;

/// The names of the numbers from `first` on; "" for a number that has none.
std::vector<NumberName> from(int first, const std::vector<const char*>& names)
{
    std::vector<NumberName> all;
    for (const char* const name : names)
    {
        if (*name != '\0')
            all.push_back({first, name});
        ++first;
    }
    return all;
}

const std::map<Meaning, std::vector<NumberName>>& table()
{
    // clang-format off
    static const std::vector<const char*> causes = {
        "activeParticipation", "alternate", "busy", "callBack", "callCancelled",
        "callForwardImmediate", "callForwardBusy", "callForwardNoAnswer", "callForward",
        "callNotAnswered", "callPickup", "campOn", "destNotObtainable", "doNotDisturb",
        "incompatibleDestination", "invalidAccountCode", "keyOperation", "lockout", "maintenance",
        "networkCongestion", "networkNotObtainable", "newCall", "noAvailableAgents", "override",
        "park", "overflow", "recall", "redirected", "reorderTone", "resourcesNotAvailable",
        "silentParticipation", "transfer", "trunksBusy", "", "blocked", "characterCountReached",
        "consultation", "distributed", "dTMFDigitDetected", "durationExceeded",
        "endOfMessageDetected", "enteringDistribution", "forcedPause", "makeCall",
        "messageSizeExceeded", "networkSignal", "nextMessage", "normalClearing", "noSpeechDetected",
        "numberChanged", "singleStepConference", "singleStepTransfer", "speechDetected",
        "switchingFunctionTerminated", "terminationCharacterReceived", "timeout", "aCDBusy",
        "aCDForward", "aCDSaturated", "alertTimeExpired", "autoWork", "campOnTrunks", "conference",
        "destDetected", "destOutOfOrder", "distributionDelay", "forcedTransition", "intrude",
        "invalidNumberFormat", "joinCall", "keyOperationInUse", "makePredictiveCall",
        "messageDurationExceeded", "multipleAlerting", "multipleQueuing", "networkDialling",
        "networkOutOfOrder", "normal", "notAvaliableBearerService", "notSupportedBearerService",
        "numberUnallocated", "queueCleared", "remainsInQueue", "reserved", "selectedTrunkBusy",
        "suspend", "unauthorisedBearerService"};
    // clang-format on
    static const std::map<Meaning, std::vector<NumberName>> lists = {
        {Meaning::none, {}},
        {Meaning::callState,
         from(callIdle, {"idle", "initiated", "offered", "ringing", "delivered", "connected",
                         "held", "conferenced", "cleared", "failed", "queued", "heldByFarEnd"})},
        {Meaning::reason,
         from(reasonNormal,
              {"normal", "busy", "noAnswer", "refused", "unobtainable", "forwarded", "deflected",
               "transferred", "conferenced", "pickedUp", "answeredElsewhere", "preempted",
               "callBack", "doNotDisturb", "farEndCleared", "outOfService"})},
        {Meaning::sendOptions, from(sendNothing, {"nothing", "digits"})},
        {Meaning::callType,
         from(callTypeInternal, {"internal", "external", "emergency", "callBack", "intercom"})},
        {Meaning::diversionReason, from(diversionNone, {"none", "unconditional", "busy", "noAnswer",
                                                        "deflected", "doNotDisturb"})},
        {Meaning::feature,
         from(featureNone,
              {"none", "hold", "consultation", "attendedTransfer", "blindTransfer", "conference",
               "alternate", "directedPickup", "groupPickup", "callBackRinging", "callBackBusy",
               "deflect", "forwarding", "retrieve", "doNotDisturb", "digits", "security"})},
        {Meaning::featureFailure,
         from(failureNone, {"none", "wrongState", "noSuchCall", "busy", "noAnswer", "refused",
                            "unobtainable", "notAllowed", "nothingToPickUp"})},
        {Meaning::refusal, from(refuseBusy, {"busy", "decline", "unavailable", "doNotDisturb"})},
        {Meaning::cancelCallBack, from(cancelOne, {"one", "all"})},
        {Meaning::forwarding, from(forwardUnconditional, {"unconditional", "busy", "noAnswer"})},
        {Meaning::lampMode, from(lampOff, {"off", "on", "flash", "blink", "flicker"})},
        {Meaning::registrationResult,
         {{registrationNone, "none"},
          {registrationDone, "done"},
          {registrationUnauthorized, "unauthorized"},
          {registrationForbidden, "forbidden"},
          {registrationUnknownLine, "unknownLine"},
          {registrationTimedOut, "timedOut"},
          {registrationUnavailable, "unavailable"}}},
        {Meaning::messageType, from(messageNone, {"none", "voice", "fax", "text"})},
        {Meaning::messageReturn, from(returnNone, {"none", "dial"})},
        {Meaning::messageInfo, from(infoNone, {"none", "flagOnly", "counters"})},
        {Meaning::messagesWaiting, from(waitingNo, {"no", "yes"})},
        {Meaning::security,
         from(securityUnknown, {"unknown", "open", "encrypted", "authenticated"})},
        {Meaning::priority,
         from(priorityRoutine, {"routine", "raised", "immediate", "flash", "flashOverride"})},
        {Meaning::preemptionCause,
         from(preemptionNone, {"none", "higherPriority", "reservedLine"})},
        {Meaning::impactLevel, from(impactNone, {"none", "low", "medium", "high"})},
        {Meaning::completionType, from(completionBusy, {"busy", "noAnswer"})},
        {Meaning::completionState,
         from(completionRequested, {"requested", "available", "ringing", "done", "cancelled"})},
        {Meaning::completionFailure,
         from(completionTimedOut, {"timedOut", "refused", "stillBusy", "notAnswered"})},
        {Meaning::cause, from(int(CSTAEventCause::activeParticipation), causes)},
        {Meaning::serviceState,
         from(sfiServiceInService,
              {"sfiServiceInService", "sfiServiceOutOfService", "sfiServiceDoNotDisturb"})},
        {Meaning::result,
         from(sfiFailure,
              {"sfiFailure", "sfiFailureCallBackInvalidState", "sfiFailureCallBackNoCallInfo",
               "sfiFailureCallBackToMany", "sfiFailureCallBackAllreadyExists", "sfiSuccess"})},
        {Meaning::agentState,
         from(0, {words::agentLoggedOff, words::agentLoggedOn, words::agentReady,
                  words::agentNotReady, words::agentWorkingAfterCall})},
        {Meaning::systemStatus,
         from(0, {words::systemNormal, words::systemDegraded, words::systemDown})},
        {Meaning::serverFeature, from(0, {words::serverFeaturesOff, words::serverFeaturesOn})},
        {Meaning::recording, from(0, {words::notRecorded, words::recorded})},
    };
    return lists;
}

}  // namespace

communications::CallStates callStates()
{
    return {callIdle, callOffered,     callRinging, callConnected,
            callHeld, callConferenced, callCleared};
}

const std::vector<NumberName>& namesOf(Meaning meaning)
{
    return table().at(meaning);
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
    int value = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, value);
    if (read.ec != std::errc() || read.ptr != end)
        return false;
    number = value;
    return true;
}

std::string resultName(int result)
{
    return nameOf(Meaning::result, result);
}

}  // namespace kit

#include "CommunicationsServiceTypes.h"
#include "kit/language/Wording.h"
#include "kit/service/EventText.h"
#include "kit/service/Handlers.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kit::service
{

using namespace numbers;

std::string Handlers::activate(Simulation& s, const Request&)
{
    ++s.activations_;
    s.serviceState_ = sfiServiceInService;
    for (Line& line : s.lines_)
        s.registerLine(line, true, registrationDone);
    return success;
}

std::string Handlers::deactivate(Simulation& s, const Request& r)
{
    const int activation = ++s.activations_;
    s.serviceState_ = sfiServiceOutOfService;
    for (Line& line : s.lines_)
        s.registerLine(line, false, registrationNone);
    if (r.flag("AllowAutoActivate"))
        s.after(autoActivation,
                [&s, activation]
                {
                    // Unless the application has decided otherwise meanwhile.
                    if (s.activations_ != activation)
                        return;
                    s.serviceState_ = sfiServiceInService;
                    for (Line& line : s.lines_)
                        s.registerLine(line, true, registrationDone);
                });
    return success;
}

std::string Handlers::subscribe(Simulation&, const Request&)
{
    return success;
}

std::string Handlers::callBackRinging(Simulation& s, const Request& r)
{
    return s.activateCallBack(r, false);
}

std::string Handlers::callBackBusy(Simulation& s, const Request& r)
{
    return s.activateCallBack(r, true);
}

std::string Handlers::cancelCallbacks(Simulation& s, const Request& r)
{
    const Line* const line = knownLine(s, r, r.text("Line"));
    if (line == nullptr)
        return failed;
    const bool all = r.number("CancelCallBackType") == cancelAll;
    const std::string number = plainNumber(r.text("URI"));
    std::vector<int> ids;
    for (CallBack& callBack : s.callBacks_)
        if (callBack.line == line->name && (all || callBack.destination.number == number))
        {
            callBack.displayOutcome = r.flag("DisplayOutcomeCallUI");
            ids.push_back(callBack.id);
        }
    if (ids.empty())
        return s.failure(r, "line " + line->name + " has no call-back" +
                                (all ? "" : " for " + quoted(number)));
    for (const int id : ids)
        s.endCallBack(id, completionCancelled);
    return success;
}

std::string Handlers::setMicrophoneMute(Simulation& s, const Request& r)
{
    s.muted_ = r.flag("Status");
    return success;
}

std::string Handlers::setDoNotDisturb(Simulation& s, const Request& r)
{
    Line* const line = knownLine(s, r, r.text("Line"));
    if (line == nullptr)
        return failed;
    s.setDoNotDisturb(*line, r.flag("doNotDisturbOn"));
    return s.featureSuccess(r, 0, featureDoNotDisturb);
}

std::string Handlers::setForwarding(Simulation& s, const Request& r)
{
    Line* const line = knownLine(s, r, r.text("Line"));
    if (line == nullptr)
        return failed;
    const int type = r.number("fwType");
    ForwardingSetting setting;
    setting.on = r.flag("status");
    setting.destination = r.text("uri");
    setting.ringCount = r.number("cfnrRingCount");
    const std::string number = plainNumber(setting.destination);
    std::string why;
    if (setting.on && number.empty())
        why = "no destination";
    else if (setting.on && number == line->name)
        why = "line " + line->name + " cannot be forwarded to itself";
    else if (setting.on && type == forwardNoAnswer &&
             (setting.ringCount < 1 || setting.ringCount >= ringsUntilCallerGivesUp))
        why = "wrong value " + std::to_string(setting.ringCount) + " for <cfnrRingCount>, 1 to " +
              std::to_string(ringsUntilCallerGivesUp - 1) + " rings are possible";
    if (!why.empty())
        return s.featureFailure(r, 0, featureForwarding, failureNotAllowed, why);
    line->forwarding[type] = setting;
    return s.featureSuccess(r, 0, featureForwarding);
}

std::string Handlers::setAssociatedCalls(Simulation& s, const Request& r)
{
    s.associatedCalls_ = r.flag("associated");
    return success;
}

std::string Handlers::setLampMode(Simulation& s, const Request& r)
{
    Line* const line = knownLine(s, r, r.text("Line"));
    if (line == nullptr)
        return failed;
    const int mode = r.number("lampMode");
    if (mode < lampOff || mode > lampFlicker)
        return s.failure(r, "wrong value " + std::to_string(mode) + " for <lampMode>, one of " +
                                choices(Meaning::lampMode) + " is possible");
    if (r.text("lampId").empty())
        return s.failure(r, "<lampId> is empty");
    line->lamps[r.text("lampId")] = mode;
    return success;
}

std::string Handlers::securityReinvite(Simulation& s, const Request& r)
{
    Call* const found =
        call(s, r, "CallID", featureSecurity, {callConnected, callHeldByFarEnd, callHeld});
    if (found == nullptr)
        return failed;
    // Without force it is encrypted; with it, the far end has to say who it is.
    found->security = r.flag("forceFlag") ? securityAuthenticated : securityEncrypted;
    s.tellSecurity(*found);
    return s.featureSuccess(r, found->id, featureSecurity);
}

std::string Handlers::setInServiceInitiated(Simulation& s, const Request& r)
{
    const Line* const line = readyLine(s, r);
    if (line == nullptr)
        return "";
    Call* const initiated =
        s.findCall(line->name, [](const Call& any) { return any.state == callInitiated; });
    if (!r.flag("IsInServiceInitiatedState"))
    {
        if (initiated != nullptr)
            s.clear(*initiated, reasonNormal);
    }
    else if (initiated == nullptr && lineFree(s, r, featureNone) &&
             s.callsOf(line->name).size() < maximumCallsPerLine)
        s.setState(s.newCall(line->name, false, 0), callInitiated, reasonNormal);
    return "";
}

std::string Handlers::systemStatus(Simulation& s, const Request& r)
{
    const std::string& status = r.text("SystemStatus");
    std::vector<std::string> known;
    for (const NumberName& entry : namesOf(Meaning::systemStatus))
        known.push_back(entry.name);
    if (std::find(known.begin(), known.end(), status) == known.end())
        return s.failure(r, "unknown system status " + quoted(status) + didYouMean(status, known));
    s.systemStatus_ = status;
    s.systemStatusInfo_ = r.text("SystemStatusInfo");
    s.emit(events::systemStatus(s.systemStatus_, s.systemStatusInfo_));
    return success;
}

std::string Handlers::setServiceState(Simulation& s, const Request& r)
{
    int state = 0;
    if (!numberOf(Meaning::serviceState, r.text("state"), state))
        return failed;
    ++s.activations_;
    const int before = std::exchange(s.serviceState_, state);
    for (Line& line : s.lines_)
    {
        if (state == sfiServiceOutOfService && line.registered)
            s.registerLine(line, false, registrationUnavailable);
        if (state != sfiServiceOutOfService && !line.registered)
            s.registerLine(line, true, registrationDone);
        if ((state == sfiServiceDoNotDisturb) != (before == sfiServiceDoNotDisturb))
            s.setDoNotDisturb(line, state == sfiServiceDoNotDisturb);
    }
    return success;
}

std::string Simulation::activateCallBack(const Request& request, bool busy)
{
    const Line* const line = Handlers::knownLine(*this, request, request.text("Line"));
    if (line == nullptr)
        return failed;
    const auto refuse = [&](const char* word, const std::string& why)
    {
        failure(request, why);
        return std::string(word);
    };
    const int callId = request.number("CallID");
    const Call* const call = findCall(callId);
    if (call == nullptr || call->line != line->name)
        return refuse("sfiFailureCallBackNoCallInfo",
                      "no call " + std::to_string(callId) + " on line " + line->name);
    const CallState state = busy ? callFailed : callDelivered;
    if (call->incoming || call->state != state || (busy && call->reason != reasonBusy))
        return refuse("sfiFailureCallBackInvalidState",
                      "call " + std::to_string(callId) + " is " +
                          nameOf(Meaning::callState, call->state) + ", not " +
                          (busy ? "failed because of a busy far end" : "ringing at the far end"));
    std::size_t count = 0;
    for (const CallBack& callBack : callBacks_)
    {
        if (callBack.line != line->name)
            continue;
        ++count;
        if (callBack.destination.number == call->remote.from.number)
            return refuse("sfiFailureCallBackAllreadyExists",
                          "line " + line->name + " has a call-back for " +
                              quoted(call->remote.from.number) + " already");
    }
    if (count >= maximumCallBacksPerLine)
        return refuse("sfiFailureCallBackToMany",
                      "line " + line->name + " has " + std::to_string(count) + " call-backs, " +
                          std::to_string(maximumCallBacksPerLine) + " are possible");
    CallBack callBack;
    callBack.id = ++lastCallBackId_;
    callBack.line = line->name;
    callBack.destination = call->remote.from;
    callBack.type = busy ? completionBusy : completionNoAnswer;
    callBacks_.push_back(callBack);
    emit(events::callCompletion(callBack, completionRequested));
    followCallBack(callBack.id);
    return featureSuccess(request, callId, busy ? featureCallBackBusy : featureCallBackRinging);
}

std::string Handlers::getMicrophoneMute(Simulation& s, const Request&)
{
    return s.muted_ ? "true" : "false";
}

std::string Handlers::getDoNotDisturb(Simulation& s, const Request& r)
{
    const Line* const line = knownLine(s, r, r.text("deviceID"));
    return line == nullptr ? failed : line->doNotDisturb ? "true" : "false";
}

std::string Handlers::getServiceState(Simulation& s, const Request&)
{
    return nameOf(Meaning::serviceState, s.serviceState_);
}

std::string Handlers::getForwarding(Simulation& s, const Request& r)
{
    // The query names no line: the first one answers for the phone.
    const ForwardingSetting& setting = s.lines_.front().forwarding[r.number("fwType")];
    return element("sfiResult", success) + element("status", setting.on ? "1" : "0") +
           element("uri", setting.destination) +
           element("cfnrRingCount", std::to_string(setting.ringCount));
}

std::string Handlers::getMessageWaiting(Simulation& s, const Request&)
{
    const Mailbox& mailbox = s.mailbox_;
    return element("func_return_val", success) + element("Type", std::to_string(messageVoice)) +
           element("newMsgs", std::to_string(mailbox.newMessages)) +
           element("oldMsgs", std::to_string(mailbox.oldMessages)) +
           element("newUrgMsgs", std::to_string(mailbox.newUrgentMessages)) +
           element("oldUrgMsgs", std::to_string(mailbox.oldUrgentMessages)) +
           element("return_type", std::to_string(returnDial)) +
           element("available_info", std::to_string(infoCounters)) +
           element("messages_waiting", std::to_string(mailbox.waiting() ? waitingYes : waitingNo)) +
           element("voiceMailNumber", mailboxNumber);
}

std::string Handlers::getDevices(Simulation& s, const Request&)
{
    std::string items;
    for (const Line& line : s.lines_)
        items += "<" + line.name + ">";
    return items;
}

std::string Handlers::isCallHoldPossible(Simulation& s, const Request& r)
{
    const Line* const line = knownLine(s, r, r.text("Line"));
    if (line == nullptr)
        return failed;
    const Call* const talking = s.findCall(line->name, [](const Call& any)
                                           { return any.active() && any.state != callDelivered; });
    return talking != nullptr ? "true" : "false";
}

std::string Handlers::getManualHold(Simulation& s, const Request& r)
{
    const Call* const found = s.findCall(r.number("CallID"));
    if (found == nullptr || found->line != r.text("Line"))
        return s.failure(r, "no call " + r.text("CallID") + " on line " + quoted(r.text("Line")));
    return found->manualHold ? "true" : "false";
}

std::string Handlers::cstaRequest(Simulation& s, const Request& r)
{
    const Line* const line = knownLine(s, r, r.text("Line"));
    if (line == nullptr)
        return failed;
    // The peer echoes what it is asked, and has no answer to nothing.
    s.emit(events::b2buaCstaResponse(line->name, !r.payload().empty(), r.payload()));
    return success;
}

std::string Handlers::uacstaMessage(Simulation& s, const Request& r)
{
    if (const Line* const line = knownLine(s, r, r.text("Line")))
        s.emit(events::b2buaCstaEventOrRequest(line->name, r.payload()));
    return "";
}

std::string Handlers::serverFeatures(Simulation& s, const Request& r)
{
    if (Line* const line = knownLine(s, r, r.text("Line")))
    {
        line->serverFeatures = r.flag("initialize");
        s.emit(events::serverFeatureStatus(
            line->name, line->serverFeatures ? words::serverFeaturesOn : words::serverFeaturesOff));
    }
    return "";
}

std::string Handlers::callBackFeatureCall(Simulation& s, const Request& r)
{
    CallBack* const callBack = s.findCallBack(r.number("instanceId"));
    if (callBack == nullptr)
        s.failure(r, "no call-back " + r.text("instanceId"));
    else
        callBack->featureCall = r.text("CallID");
    return "";
}

std::string Handlers::setAgentState(Simulation& s, const Request& r)
{
    Line* const line = knownLine(s, r, r.text("Line"));
    if (line == nullptr)
        return failed;
    const std::string& state = r.text("agentState");
    std::vector<std::string> known;
    for (const NumberName& entry : namesOf(Meaning::agentState))
        known.push_back(entry.name);
    if (std::find(known.begin(), known.end(), state) == known.end())
        return s.failure(r, "unknown agent state " + quoted(state) + didYouMean(state, known));
    line->agentState = state;
    s.emit(events::agentState(line->name, state));
    return success;
}

std::string Handlers::removeParticipant(Simulation& s, const Request& r)
{
    const Call* const any = s.findCall(r.number("callID"));
    if (any == nullptr || any->conference == 0)
    {
        s.failure(r, "call " + r.text("callID") + " is in no conference");
        return "";
    }
    const std::string number = plainNumber(r.text("remoteParticipant"));
    for (const int id : s.membersOf(any->conference))
    {
        Call& member = *s.findCall(id);
        if (std::to_string(id) != r.text("conferenceMemberId") &&
            (number.empty() || member.remote.from.number != number))
            continue;
        s.clear(member, reasonNormal);
        return "";
    }
    s.failure(r, "conference " + std::to_string(any->conference) + " has no participant " +
                     quoted(r.text("remoteParticipant")) + " and no member " +
                     quoted(r.text("conferenceMemberId")));
    return "";
}

}  // namespace kit::service

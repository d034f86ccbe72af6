#include "kit/service/Handlers.h"

#include "kit/language/Wording.h"

#include <utility>

namespace kit::service
{

using namespace numbers;

namespace
{

constexpr Time autoActivation = std::chrono::seconds(30);

void putInService(Simulation& s)
{
    s.settings.serviceState = sfiServiceInService;
    for (Line& line : s.lines)
        s.lines.setRegistered(line, true, registrationDone);
}

std::string activate(Simulation& s, const Request&)
{
    ++s.settings.activations;
    putInService(s);
    return success;
}

std::string deactivate(Simulation& s, const Request& r)
{
    const int activation = ++s.settings.activations;
    s.settings.serviceState = sfiServiceOutOfService;
    for (Line& line : s.lines)
        s.lines.setRegistered(line, false, registrationNone);
    if (r.flag("AllowAutoActivate"))
        s.clock.after(autoActivation,
                      [&s, activation]
                      {
                          // Unless the application has decided otherwise meanwhile.
                          if (s.settings.activations == activation)
                              putInService(s);
                      });
    return success;
}

std::string subscribe(Simulation&, const Request&)
{
    return success;
}

std::string cancelCallbacks(Simulation& s, const Request& r)
{
    const Line& line = r.line();
    const bool all = r.number("CancelCallBackType") == cancelAll;
    const std::string number = plainNumber(r.text("URI"));
    std::vector<int> ids;
    for (CallBack* const callBack : s.callBacks.of(line.name))
        if (all || callBack->destination.number == number)
        {
            callBack->displayOutcome = r.flag("DisplayOutcomeCallUI");
            ids.push_back(callBack->id);
        }
    if (ids.empty())
        r.refuse("line " + line.name + " has no call-back" + (all ? "" : " for " + quoted(number)));
    for (const int id : ids)
        s.callBacks.end(id, completionCancelled);
    return success;
}

std::string setMicrophoneMute(Simulation& s, const Request& r)
{
    s.settings.muted = r.flag("Status");
    return success;
}

std::string setDoNotDisturb(Simulation& s, const Request& r)
{
    s.lines.setDoNotDisturb(r.line(), r.flag("doNotDisturbOn"));
    return r.featureSuccess(0, featureDoNotDisturb);
}

std::string setForwarding(Simulation&, const Request& r)
{
    Line& line = r.line();
    const int type = r.number("fwType");
    ForwardingSetting setting;
    setting.on = r.flag("status");
    setting.destination = r.text("uri");
    setting.ringCount = r.number("cfnrRingCount");
    const std::string number = plainNumber(setting.destination);
    std::string why;
    if (setting.on && number.empty())
        why = "no destination";
    else if (setting.on && number == line.name)
        why = "line " + line.name + " cannot be forwarded to itself";
    else if (setting.on && type == forwardNoAnswer &&
             (setting.ringCount < 1 || setting.ringCount >= ringsUntilCallerGivesUp))
        why = "wrong value " + std::to_string(setting.ringCount) + " for <cfnrRingCount>, 1 to " +
              std::to_string(ringsUntilCallerGivesUp - 1) + " rings are possible";
    if (!why.empty())
        r.refuseFeature(0, featureForwarding, failureNotAllowed, why);
    line.forwarding[type] = setting;
    return r.featureSuccess(0, featureForwarding);
}

std::string setAssociatedCalls(Simulation& s, const Request& r)
{
    s.settings.associatedCalls = r.flag("associated");
    return success;
}

std::string setLampMode(Simulation&, const Request& r)
{
    Line& line = r.line();
    const int mode = r.number("lampMode");
    if (mode < lampOff || mode > lampFlicker)
        r.refuse("wrong value " + std::to_string(mode) + " for <lampMode>, one of " +
                 choices(Meaning::lampMode) + " is possible");
    if (r.text("lampId").empty())
        r.refuse("<lampId> is empty");
    line.lamps[r.text("lampId")] = mode;
    return success;
}

std::string securityReinvite(Simulation& s, const Request& r)
{
    Call& found = r.call("CallID", featureSecurity, {callConnected, callHeldByFarEnd, callHeld});
    // Without force it is encrypted; with it, the far end has to say who it is.
    found.security = r.flag("forceFlag") ? securityAuthenticated : securityEncrypted;
    s.calls.tellSecurity(found);
    return r.featureSuccess(found.id, featureSecurity);
}

std::string setInServiceInitiated(Simulation& s, const Request& r)
{
    const Line& line = r.readyLine();
    Call* const initiated =
        s.calls.find(line.name, [](const Call& any) { return any.state == callInitiated; });
    if (!r.flag("IsInServiceInitiatedState"))
    {
        if (initiated != nullptr)
            s.calls.clear(*initiated, reasonNormal);
    }
    else if (initiated == nullptr)
    {
        r.needFreeLine(featureNone);
        if (!s.calls.full(line.name))
            s.calls.setState(s.calls.create(line.name, false, 0), callInitiated, reasonNormal);
    }
    return "";
}

std::string systemStatus(Simulation& s, const Request& r)
{
    s.settings.systemStatus = r.word("SystemStatus", Meaning::systemStatus, "system status");
    s.settings.systemStatusInfo = r.text("SystemStatusInfo");
    s.outbox.systemStatus(s.settings);
    return success;
}

std::string setServiceState(Simulation& s, const Request& r)
{
    int state = 0;
    numberOf(Meaning::serviceState, r.text("state"), state);
    ++s.settings.activations;
    const int before = std::exchange(s.settings.serviceState, state);
    for (Line& line : s.lines)
    {
        if (state == sfiServiceOutOfService && line.registered)
            s.lines.setRegistered(line, false, registrationUnavailable);
        if (state != sfiServiceOutOfService && !line.registered)
            s.lines.setRegistered(line, true, registrationDone);
        if ((state == sfiServiceDoNotDisturb) != (before == sfiServiceDoNotDisturb))
            s.lines.setDoNotDisturb(line, state == sfiServiceDoNotDisturb);
    }
    return success;
}

std::string activateCallBack(Simulation& s, const Request& r, bool busy)
{
    const Line& line = r.line();
    const int callId = r.number("CallID");
    const Call* const call = s.calls.find(callId);
    if (call == nullptr || call->line != line.name)
        r.refuse("no call " + std::to_string(callId) + " on line " + line.name,
                 "sfiFailureCallBackNoCallInfo");
    const CallState state = busy ? callFailed : callDelivered;
    if (call->incoming || call->state != state || (busy && call->reason != reasonBusy))
        r.refuse("call " + std::to_string(callId) + " is " +
                     nameOf(Meaning::callState, call->state) + ", not " +
                     (busy ? "failed because of a busy far end" : "ringing at the far end"),
                 "sfiFailureCallBackInvalidState");
    const std::string& number = call->remote.from.number;
    const std::vector<CallBack*> waiting = s.callBacks.of(line.name);
    for (const CallBack* const callBack : waiting)
        if (callBack->destination.number == number)
            r.refuse("line " + line.name + " has a call-back for " + quoted(number) + " already",
                     "sfiFailureCallBackAllreadyExists");
    if (waiting.size() >= maximumCallBacksPerLine)
        r.refuse("line " + line.name + " has " + std::to_string(waiting.size()) + " call-backs, " +
                     std::to_string(maximumCallBacksPerLine) + " are possible",
                 "sfiFailureCallBackToMany");
    s.callBacks.request(*call, busy ? completionBusy : completionNoAnswer);
    return r.featureSuccess(callId, busy ? featureCallBackBusy : featureCallBackRinging);
}

std::string callBackRinging(Simulation& s, const Request& r)
{
    return activateCallBack(s, r, false);
}

std::string callBackBusy(Simulation& s, const Request& r)
{
    return activateCallBack(s, r, true);
}

std::string getMicrophoneMute(Simulation& s, const Request&)
{
    return s.settings.muted ? "true" : "false";
}

std::string getDoNotDisturb(Simulation&, const Request& r)
{
    return r.line("deviceID").doNotDisturb ? "true" : "false";
}

std::string getServiceState(Simulation& s, const Request&)
{
    return nameOf(Meaning::serviceState, s.settings.serviceState);
}

std::string getForwarding(Simulation& s, const Request& r)
{
    // The query names no line: the first one answers for the phone.
    const ForwardingSetting& setting = s.lines.begin()->forwarding[r.number("fwType")];
    return element("sfiResult", success) + element("status", setting.on ? "1" : "0") +
           element("uri", setting.destination) +
           element("cfnrRingCount", std::to_string(setting.ringCount));
}

std::string getMessageWaiting(Simulation& s, const Request&)
{
    const Mailbox& mailbox = s.voiceMail.mailbox();
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

std::string getDevices(Simulation& s, const Request&)
{
    std::string items;
    for (const Line& line : s.lines)
        items += "<" + line.name + ">";
    return items;
}

std::string isCallHoldPossible(Simulation& s, const Request& r)
{
    const Line& line = r.line();
    const Call* const talking = s.calls.find(
        line.name, [](const Call& any) { return any.active() && any.state != callDelivered; });
    return talking != nullptr ? "true" : "false";
}

std::string getManualHold(Simulation& s, const Request& r)
{
    const Call* const found = s.calls.find(r.number("CallID"));
    if (found == nullptr || found->line != r.text("Line"))
        r.refuse("no call " + r.text("CallID") + " on line " + quoted(r.text("Line")));
    return found->manualHold ? "true" : "false";
}

std::string cstaRequest(Simulation& s, const Request& r)
{
    // The peer echoes what it is asked, and has no answer to nothing.
    s.outbox.b2buaCstaResponse(r.line().name, !r.payload().empty(), r.payload());
    return success;
}

std::string uacstaMessage(Simulation& s, const Request& r)
{
    s.outbox.b2buaCstaEventOrRequest(r.line().name, r.payload());
    return "";
}

std::string serverFeatures(Simulation& s, const Request& r)
{
    Line& line = r.line();
    line.serverFeatures = r.flag("initialize");
    s.outbox.serverFeatureStatus(line);
    return "";
}

std::string callBackFeatureCall(Simulation& s, const Request& r)
{
    CallBack* const callBack = s.callBacks.find(r.number("instanceId"));
    if (callBack == nullptr)
        r.refuse("no call-back " + r.text("instanceId"));
    callBack->featureCall = r.text("CallID");
    return "";
}

std::string setAgentState(Simulation& s, const Request& r)
{
    Line& line = r.line();
    line.agentState = r.word("agentState", Meaning::agentState, "agent state");
    s.outbox.agentState(line);
    return success;
}

std::string removeParticipant(Simulation& s, const Request& r)
{
    const Call* const any = s.calls.find(r.number("callID"));
    if (any == nullptr || any->conference == 0)
        r.refuse("call " + r.text("callID") + " is in no conference");
    const std::string number = plainNumber(r.text("remoteParticipant"));
    for (const int id : s.conferences.membersOf(any->conference))
    {
        Call& member = *s.calls.find(id);
        if (std::to_string(id) != r.text("conferenceMemberId") &&
            (number.empty() || member.remote.from.number != number))
            continue;
        s.calls.clear(member, reasonNormal);
        return "";
    }
    r.refuse("conference " + std::to_string(any->conference) + " has no participant " +
             quoted(r.text("remoteParticipant")) + " and no member " +
             quoted(r.text("conferenceMemberId")));
}

}  // namespace

const std::vector<Handler>& featureHandlers()
{
    static const std::vector<Handler> rows = {
        {"Activate", activate},
        {"Deactivate", deactivate},
        {"SendCSTARequest", cstaRequest},
        {"SendUACSTAServerMessage", uacstaMessage},
        {"InitializeOrFinalizeServerFeatures", serverFeatures},
        {"ActivateCallbackRinging", callBackRinging},
        {"ActivateCallbackBusy", callBackBusy},
        {"CancelCallbacks", cancelCallbacks},
        {"Subscribe", subscribe},
        {"SetServiceState", setServiceState},
        {"GetServiceState", getServiceState},
        {"SetDoNotDisturb", setDoNotDisturb},
        {"GetDoNotDisturb", getDoNotDisturb},
        {"SetAgentState", setAgentState},
        {"SetMicrophoneMute", setMicrophoneMute},
        {"GetMicrophoneMute", getMicrophoneMute},
        {"SystemStatus", systemStatus},
        {"GetDevices", getDevices},
        {"RemoveConfParticipant", removeParticipant},
        {"getManualHoldIndication", getManualHold},
        {"GetMessageWaitingIndicator", getMessageWaiting},
        {"setAssociatedCalls", setAssociatedCalls},
        {"setLampMode", setLampMode},
        {"makeSecurityChangeReinvite", securityReinvite},
        {"setIsInServiceInitiatedState", setInServiceInitiated},
        {"setForwardingConfiguration", setForwarding},
        {"getForwardingConfiguration", getForwarding},
        {"callbackDOFeatureCallID", callBackFeatureCall},
        {"isCallHoldPossible", isCallHoldPossible},
    };
    return rows;
}

}  // namespace kit::service

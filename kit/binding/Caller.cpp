#include "kit/binding/Caller.h"

#include "kit/protocol/Lists.h"

#include <algorithm>
#include <stdexcept>

namespace kit
{

namespace
{

/// One call under way: arguments by position, and where its outcome goes.
struct Call
{
    CommunicationsServiceIfc& service;
    const Operation& operation;
    std::vector<std::string> values;
    std::vector<bool> isNull;
    Executable* subscriber;
    Outcome outcome;

    std::string& text(std::size_t i) { return values.at(i); }
    const char* cString(std::size_t i) { return isNull.at(i) ? nullptr : values.at(i).c_str(); }
    int number(std::size_t i) { return static_cast<int>(std::stoll(values.at(i))); }
    bool flag(std::size_t i) { return values.at(i) == "1" || values.at(i) == "TRUE"; }

    void result(int code)
    {
        outcome.returned = Outcome::Returned::result;
        outcome.number = code;
    }

    void answer(bool yes)
    {
        outcome.returned = Outcome::Returned::flag;
        outcome.number = yes ? 1 : 0;
    }

    void output(const std::string& value) { outcome.outputs.push_back(value); }
    void output(int value) { outcome.outputs.push_back(std::to_string(value)); }
    void output(unsigned int value) { outcome.outputs.push_back(std::to_string(value)); }
    void output(bool value) { outcome.outputs.push_back(value ? "1" : "0"); }
};

sfiFeature feature(int number)
{
    return static_cast<sfiFeature>(number);
}

void getMessageWaitingIndicator(Call& c)
{
    int type = -1;
    unsigned int newMsgs = 4294967295U;
    unsigned int oldMsgs = 4294967295U;
    unsigned int newUrgMsgs = 4294967295U;
    unsigned int oldUrgMsgs = 4294967295U;
    int returnType = -1;
    int availableInfo = -1;
    int messagesWaiting = -1;
    std::string voiceMailNumber;
    c.result(c.service.getMessageWaitingIndicator(type, newMsgs, oldMsgs, newUrgMsgs, oldUrgMsgs,
                                                  returnType, availableInfo, messagesWaiting,
                                                  voiceMailNumber));
    c.output(type);
    c.output(newMsgs);
    c.output(oldMsgs);
    c.output(newUrgMsgs);
    c.output(oldUrgMsgs);
    c.output(returnType);
    c.output(availableInfo);
    c.output(messagesWaiting);
    c.output(voiceMailNumber);
}

void getForwardingConfiguration(Call& c)
{
    bool status = true;
    std::string uri;
    int cfnrRingCount = -1;
    c.result(c.service.getForwardingConfiguration(static_cast<sfiForwardingType>(c.number(0)),
                                                  status, uri, cfnrRingCount));
    c.output(status);
    c.output(uri);
    c.output(cfnrRingCount);
}

void getServiceState(Call& c)
{
    sfiServiceState state = static_cast<sfiServiceState>(-1);
    c.result(c.service.getServiceState(state));
    const bool known = state >= sfiServiceInService && state <= sfiServiceDoNotDisturb;
    c.output(known ? nameOf(Meaning::serviceState, state) : std::string());
}

void getDevices(Call& c)
{
    std::vector<std::string> devices;
    c.result(c.service.getDevices(devices));
    c.output(encodeList(devices));
}

void getDoNotDisturb(Call& c)
{
    bool on = true;
    c.result(c.service.getDoNotDisturb(c.text(0), on));
    c.output(on);
}

void getMicrophoneMute(Call& c)
{
    bool muted = true;
    c.result(c.service.getMicrophoneMute(muted));
    c.output(muted);
}

void setServiceState(Call& c)
{
    int state = 0;
    if (!numberOf(Meaning::serviceState, c.text(0), state))
        throw std::invalid_argument("state is the name of a service state, not \"" + c.text(0) +
                                    "\"");
    c.result(c.service.setServiceState(static_cast<sfiServiceState>(state)));
}

struct Row
{
    const char* name;
    void (*run)(Call& c);
};

// The operations as they are declared; the arguments' kinds as they are declared too, and not as the
// table of the protocol has them.
// clang-format off
const Row rows[] = {
    {"processSignallingComponentEvent", [](Call& c) { c.service.processSignallingComponentEvent(c.text(0).data(), static_cast<int>(c.text(0).size())); }},
    {"activate", [](Call& c) { c.result(c.service.activate()); }},
    {"deactivate", [](Call& c) { c.result(c.service.deactivate(c.flag(0))); }},
    {"callClear", [](Call& c) { c.result(c.service.callClear(c.text(0), c.number(1), static_cast<CSTAEventCause>(c.number(2)))); }},
    {"outgoingCallMake", [](Call& c) { c.result(c.service.outgoingCallMake(c.text(0), c.number(1), c.cString(2), c.flag(3), c.flag(4), c.flag(5))); }},
    {"acceptCall", [](Call& c) { c.result(c.service.acceptCall(c.text(0), c.number(1), c.flag(2))); }},
    {"answerCall", [](Call& c) { c.result(c.service.answerCall(c.text(0), c.number(1))); }},
    {"deflectCall", [](Call& c) { c.result(c.service.deflectCall(c.text(0), c.number(1), c.cString(2))); }},
    {"holdCall", [](Call& c) { c.result(c.service.holdCall(c.text(0), c.number(1), feature(c.number(2)), c.flag(3))); }},
    {"retrieveCall", [](Call& c) { c.result(c.service.retrieveCall(c.text(0), c.number(1))); }},
    {"attendedTransferCall", [](Call& c) { c.result(c.service.attendedTransferCall(c.text(0), c.number(1), c.number(2))); }},
    {"blindTransferCall", [](Call& c) { c.result(c.service.blindTransferCall(c.text(0), c.number(1), c.cString(2))); }},
    {"SendCSTARequest", [](Call& c) { c.result(c.service.SendCSTARequest(c.text(0), c.text(1))); }},
    {"sendUACSTAServerMessage", [](Call& c) { c.service.sendUACSTAServerMessage(c.text(0), c.text(1)); }},
    {"InitializeOrFinalizeServerFeatures", [](Call& c) { c.service.InitializeOrFinalizeServerFeatures(c.text(0), c.flag(1)); }},
    {"activateCallbackRinging", [](Call& c) { c.result(c.service.activateCallbackRinging(c.text(0), c.number(1))); }},
    {"activateCallbackBusy", [](Call& c) { c.result(c.service.activateCallbackBusy(c.text(0), c.number(1))); }},
    {"cancelCallbacks", [](Call& c) { c.result(c.service.cancelCallbacks(c.text(0), c.number(1), c.text(2), static_cast<sfiCancelCallBackType>(c.number(3)), c.flag(4))); }},
    {"consultationCall", [](Call& c) { c.result(c.service.consultationCall(c.text(0), c.number(1), c.cString(2))); }},
    {"refuseCall", [](Call& c) { c.result(c.service.refuseCall(c.text(0), c.number(1), static_cast<sfiRefuseCall>(c.number(2)))); }},
    {"subscribe", [](Call& c) { c.result(c.service.subscribe(c.subscriber)); }},
    {"directedPickupCall", [](Call& c) { c.result(c.service.directedPickupCall(c.text(0), c.number(1), c.text(2), c.flag(3))); }},
    {"groupPickupCall", [](Call& c) { c.result(c.service.groupPickupCall(c.text(0), c.number(1))); }},
    {"setServiceState", setServiceState},
    {"getServiceState", getServiceState},
    {"setDoNotDisturb", [](Call& c) { c.result(c.service.setDoNotDisturb(c.text(0), c.flag(1))); }},
    {"getDoNotDisturb", getDoNotDisturb},
    {"setAgentState", [](Call& c) { c.result(c.service.setAgentState(c.text(0), c.text(1))); }},
    {"setMicrophoneMute", [](Call& c) { c.result(c.service.setMicrophoneMute(c.flag(0))); }},
    {"getMicrophoneMute", getMicrophoneMute},
    {"systemStatus", [](Call& c) { c.result(c.service.systemStatus(c.cString(0), c.cString(1))); }},
    {"generateDigits", [](Call& c) { c.result(c.service.generateDigits(c.text(0), c.number(1), c.cString(2))); }},
    {"getDevices", getDevices},
    {"conferenceCall", [](Call& c) { c.result(c.service.conferenceCall(c.text(0), c.number(1), c.number(2), feature(c.number(3)))); }},
    {"RemoveConfParticipant", [](Call& c) { c.service.RemoveConfParticipant(c.number(0), c.text(1), c.text(2)); }},
    {"getManualHoldIndication", [](Call& c) { c.answer(c.service.getManualHoldIndication(c.text(0), c.number(1))); }},
    {"alternateCalls", [](Call& c) { c.result(c.service.alternateCalls(c.text(0))); }},
    {"getMessageWaitingIndicator", getMessageWaitingIndicator},
    {"setAssociatedCalls", [](Call& c) { c.result(c.service.setAssociatedCalls(c.flag(0))); }},
    {"setLampMode", [](Call& c) { c.result(c.service.setLampMode(c.text(0), c.text(1), c.number(2))); }},
    {"makeSecurityChangeReinvite", [](Call& c) { c.result(c.service.makeSecurityChangeReinvite(c.text(0), c.number(1), c.flag(2))); }},
    {"setIsInServiceInitiatedState", [](Call& c) { c.service.setIsInServiceInitiatedState(c.text(0), c.flag(1)); }},
    {"setForwardingConfiguration", [](Call& c) { c.result(c.service.setForwardingConfiguration(c.text(0), static_cast<sfiForwardingType>(c.number(1)), c.flag(2), c.text(3), c.number(4), c.flag(5))); }},
    {"getForwardingConfiguration", getForwardingConfiguration},
    {"callbackDOFeatureCallID", [](Call& c) { c.service.callbackDOFeatureCallID(c.text(0), c.number(1)); }},
    {"isCallHoldPossible", [](Call& c) { c.answer(c.service.isCallHoldPossible(c.text(0))); }},
    {"csCommunicationsService", [](Call& c) { c.outcome.returned = Outcome::Returned::text; c.outcome.text = c.service.csCommunicationsService(c.cString(0)); }},
    {"activateStoredFwd", [](Call& c) { c.service.activateStoredFwd(); }},
};
// clang-format on

static_assert(sizeof rows / sizeof rows[0] == 48, "one row for each operation");

}  // namespace

std::string Outcome::inWords() const
{
    switch (returned)
    {
    case Returned::result:
        return resultName(number);
    case Returned::flag:
        return number != 0 ? "true" : "false";
    case Returned::text:
        return text;
    case Returned::nothing:
        break;
    }
    return std::string();
}

Outcome call(CommunicationsServiceIfc& service, const Operation& operation, const Values& values,
             Executable* subscriber, const std::vector<std::string>& nulls)
{
    Call made = {service, operation, {}, {}, subscriber, {}};
    checkNames(operation.name, operation.arguments, values);
    for (const Field& field : operation.arguments)
    {
        const std::string* const value = valueFor(field, values);
        const std::string plain = isNumber(field.kind) || isFlag(field.kind) ? "0"
                                  : field.kind == Kind::state                ? "sfiServiceInService"
                                                                             : "";
        made.values.push_back(toWire(field, value != nullptr ? *value : plain));
        made.isNull.push_back(std::find(nulls.begin(), nulls.end(), field.argument) != nulls.end());
    }
    for (const Row& row : rows)
        if (std::string(row.name) == operation.name)
            row.run(made);
    return made.outcome;
}

}  // namespace kit

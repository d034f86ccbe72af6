#include "kit/phone/Invocation.h"

#include "kit/protocol/Lists.h"

#include <cstdlib>
#include <stdexcept>

namespace kit::phone
{

namespace
{

/// The values of one call, read as the types that the operation takes.
class Given
{
public:
    Given(const std::vector<Value>& values, Executable* subscriber)
        : subscriber(subscriber), values_(values)
    {
    }

    const std::string& text(std::size_t i) const { return values_[i].text; }

    const char* cString(std::size_t i) const
    {
        return values_[i].null ? nullptr : values_[i].text.c_str();
    }

    int number(std::size_t i) const
    {
        return static_cast<int>(std::strtol(values_[i].text.c_str(), nullptr, 10));
    }

    bool flag(std::size_t i) const { return values_[i].text == "1" || values_[i].text == "TRUE"; }

    Executable* const subscriber;

private:
    const std::vector<Value>& values_;
};

/// What was returned and set, before it is known by name.
struct Returned
{
    Outcome::Kind kind = Outcome::Kind::nothing;
    int result = 0;
    std::string text;
    std::vector<std::string> outputs;  ///< empty when none was set
};

Returned result(int code)
{
    return {Outcome::Kind::result, code, "", {}};
}

Returned result(int code, std::vector<std::string> outputs)
{
    return {Outcome::Kind::result, code, "", std::move(outputs)};
}

Returned yesNo(bool yes)
{
    return {Outcome::Kind::yesNo, yes ? 1 : 0, "", {}};
}

std::string wire(int number)
{
    return std::to_string(number);
}

std::string wire(unsigned number)
{
    return std::to_string(number);
}

std::string wire(bool flag)
{
    return flag ? "1" : "0";
}

using Ifc = CommunicationsServiceIfc;

struct Row
{
    const char* operation;
    Returned (*call)(Ifc& service, const Given& given);
};

Returned getServiceState(Ifc& service, const Given&)
{
    sfiServiceState state = sfiServiceInService;
    const int code = service.getServiceState(state);
    if (code != sfiSuccess)
        return result(code);
    return result(code, {wire(static_cast<int>(state))});
}

Returned getDoNotDisturb(Ifc& service, const Given& given)
{
    bool on = false;
    const int code = service.getDoNotDisturb(given.text(0), on);
    if (code != sfiSuccess)
        return result(code);
    return result(code, {wire(on)});
}

Returned getMicrophoneMute(Ifc& service, const Given&)
{
    bool muted = false;
    const int code = service.getMicrophoneMute(muted);
    if (code != sfiSuccess)
        return result(code);
    return result(code, {wire(muted)});
}

Returned getDevices(Ifc& service, const Given&)
{
    std::vector<std::string> devices;
    const int code = service.getDevices(devices);
    if (code != sfiSuccess)
        return result(code);
    return result(code, {encodeList(devices)});
}

Returned getMessageWaitingIndicator(Ifc& service, const Given&)
{
    int type = 0;
    unsigned newMsgs = 0;
    unsigned oldMsgs = 0;
    unsigned newUrgMsgs = 0;
    unsigned oldUrgMsgs = 0;
    int returnType = 0;
    int availableInfo = 0;
    int messagesWaiting = 0;
    std::string voiceMailNumber;
    const int code = service.getMessageWaitingIndicator(type,
                                                        newMsgs,
                                                        oldMsgs,
                                                        newUrgMsgs,
                                                        oldUrgMsgs,
                                                        returnType,
                                                        availableInfo,
                                                        messagesWaiting,
                                                        voiceMailNumber);
    return result(code,
                  {wire(type),
                   wire(newMsgs),
                   wire(oldMsgs),
                   wire(newUrgMsgs),
                   wire(oldUrgMsgs),
                   wire(returnType),
                   wire(availableInfo),
                   wire(messagesWaiting),
                   voiceMailNumber});
}

Returned getForwardingConfiguration(Ifc& service, const Given& given)
{
    bool status = false;
    std::string uri;
    int cfnrRingCount = 0;
    const int code = service.getForwardingConfiguration(
        static_cast<sfiForwardingType>(given.number(0)), status, uri, cfnrRingCount);
    return result(code, {wire(status), uri, wire(cfnrRingCount)});
}

// clang-format off
const Row rows[] = {
    {"processSignallingComponentEvent", [](Ifc& s, const Given& a)
     { s.processSignallingComponentEvent(a.text(0).data(), static_cast<int>(a.text(0).size()));
       return Returned(); }},
    {"activate", [](Ifc& s, const Given&) { return result(s.activate()); }},
    {"deactivate", [](Ifc& s, const Given& a) { return result(s.deactivate(a.flag(0))); }},
    {"callClear", [](Ifc& s, const Given& a)
     { return result(s.callClear(a.text(0), a.number(1), static_cast<CSTAEventCause>(a.number(2)))); }},
    {"outgoingCallMake", [](Ifc& s, const Given& a)
     { return result(s.outgoingCallMake(a.text(0), a.number(1), a.cString(2), a.flag(3), a.flag(4),
                                        a.flag(5))); }},
    {"acceptCall", [](Ifc& s, const Given& a)
     { return result(s.acceptCall(a.text(0), a.number(1), a.flag(2))); }},
    {"answerCall", [](Ifc& s, const Given& a)
     { return result(s.answerCall(a.text(0), a.number(1))); }},
    {"deflectCall", [](Ifc& s, const Given& a)
     { return result(s.deflectCall(a.text(0), a.number(1), a.cString(2))); }},
    {"holdCall", [](Ifc& s, const Given& a)
     { return result(s.holdCall(a.text(0), a.number(1), static_cast<sfiFeature>(a.number(2)),
                                a.flag(3))); }},
    {"retrieveCall", [](Ifc& s, const Given& a)
     { return result(s.retrieveCall(a.text(0), a.number(1))); }},
    {"attendedTransferCall", [](Ifc& s, const Given& a)
     { return result(s.attendedTransferCall(a.text(0), a.number(1), a.number(2))); }},
    {"blindTransferCall", [](Ifc& s, const Given& a)
     { return result(s.blindTransferCall(a.text(0), a.number(1), a.cString(2))); }},
    {"SendCSTARequest", [](Ifc& s, const Given& a)
     { return result(s.SendCSTARequest(a.text(0), a.text(1))); }},
    {"sendUACSTAServerMessage", [](Ifc& s, const Given& a)
     { std::string line = a.text(0);
       std::string message = a.text(1);
       s.sendUACSTAServerMessage(line, message);
       return Returned(); }},
    {"InitializeOrFinalizeServerFeatures", [](Ifc& s, const Given& a)
     { s.InitializeOrFinalizeServerFeatures(a.text(0), a.flag(1));
       return Returned(); }},
    {"activateCallbackRinging", [](Ifc& s, const Given& a)
     { return result(s.activateCallbackRinging(a.text(0), a.number(1))); }},
    {"activateCallbackBusy", [](Ifc& s, const Given& a)
     { return result(s.activateCallbackBusy(a.text(0), a.number(1))); }},
    {"cancelCallbacks", [](Ifc& s, const Given& a)
     { return result(s.cancelCallbacks(a.text(0), a.number(1), a.text(2),
                                       static_cast<sfiCancelCallBackType>(a.number(3)),
                                       a.flag(4))); }},
    {"consultationCall", [](Ifc& s, const Given& a)
     { return result(s.consultationCall(a.text(0), a.number(1), a.cString(2))); }},
    {"refuseCall", [](Ifc& s, const Given& a)
     { return result(s.refuseCall(a.text(0), a.number(1),
                                  static_cast<sfiRefuseCall>(a.number(2)))); }},
    {"subscribe", [](Ifc& s, const Given& a) { return result(s.subscribe(a.subscriber)); }},
    {"directedPickupCall", [](Ifc& s, const Given& a)
     { return result(s.directedPickupCall(a.text(0), a.number(1), a.text(2), a.flag(3))); }},
    {"groupPickupCall", [](Ifc& s, const Given& a)
     { return result(s.groupPickupCall(a.text(0), a.number(1))); }},
    {"setServiceState", [](Ifc& s, const Given& a)
     { return result(s.setServiceState(static_cast<sfiServiceState>(a.number(0)))); }},
    {"getServiceState", getServiceState},
    {"setDoNotDisturb", [](Ifc& s, const Given& a)
     { return result(s.setDoNotDisturb(a.text(0), a.flag(1))); }},
    {"getDoNotDisturb", getDoNotDisturb},
    {"setAgentState", [](Ifc& s, const Given& a)
     { return result(s.setAgentState(a.text(0), a.text(1))); }},
    {"setMicrophoneMute", [](Ifc& s, const Given& a)
     { return result(s.setMicrophoneMute(a.flag(0))); }},
    {"getMicrophoneMute", getMicrophoneMute},
    {"systemStatus", [](Ifc& s, const Given& a)
     { return result(s.systemStatus(a.cString(0), a.cString(1))); }},
    {"generateDigits", [](Ifc& s, const Given& a)
     { return result(s.generateDigits(a.text(0), a.number(1), a.cString(2))); }},
    {"getDevices", getDevices},
    {"conferenceCall", [](Ifc& s, const Given& a)
     { return result(s.conferenceCall(a.text(0), a.number(1), a.number(2),
                                      static_cast<sfiFeature>(a.number(3)))); }},
    {"RemoveConfParticipant", [](Ifc& s, const Given& a)
     { s.RemoveConfParticipant(a.number(0), a.text(1), a.text(2));
       return Returned(); }},
    {"getManualHoldIndication", [](Ifc& s, const Given& a)
     { return yesNo(s.getManualHoldIndication(a.text(0), a.number(1))); }},
    {"alternateCalls", [](Ifc& s, const Given& a) { return result(s.alternateCalls(a.text(0))); }},
    {"getMessageWaitingIndicator", getMessageWaitingIndicator},
    {"setAssociatedCalls", [](Ifc& s, const Given& a)
     { return result(s.setAssociatedCalls(a.flag(0))); }},
    {"setLampMode", [](Ifc& s, const Given& a)
     { return result(s.setLampMode(a.text(0), a.text(1), a.number(2))); }},
    {"makeSecurityChangeReinvite", [](Ifc& s, const Given& a)
     { return result(s.makeSecurityChangeReinvite(a.text(0), a.number(1), a.flag(2))); }},
    {"setIsInServiceInitiatedState", [](Ifc& s, const Given& a)
     { s.setIsInServiceInitiatedState(a.text(0), a.flag(1));
       return Returned(); }},
    {"setForwardingConfiguration", [](Ifc& s, const Given& a)
     { return result(s.setForwardingConfiguration(a.text(0),
                                                  static_cast<sfiForwardingType>(a.number(1)),
                                                  a.flag(2), a.text(3), a.number(4), a.flag(5))); }},
    {"getForwardingConfiguration", getForwardingConfiguration},
    {"callbackDOFeatureCallID", [](Ifc& s, const Given& a)
     { s.callbackDOFeatureCallID(a.text(0), a.number(1));
       return Returned(); }},
    {"isCallHoldPossible", [](Ifc& s, const Given& a)
     { return yesNo(s.isCallHoldPossible(a.text(0))); }},
    {"csCommunicationsService", [](Ifc& s, const Given& a)
     { return Returned{Outcome::Kind::text, 0, s.csCommunicationsService(a.cString(0)), {}}; }},
    {"activateStoredFwd", [](Ifc& s, const Given&)
     { s.activateStoredFwd();
       return Returned(); }},
};
// clang-format on

static_assert(sizeof rows / sizeof rows[0] == 48, "one row for each operation");

}  // namespace

std::string Outcome::resultText() const
{
    switch (kind)
    {
    case Kind::result:
        return resultName(result);
    case Kind::yesNo:
        return result != 0 ? "true" : "false";
    case Kind::text:
        return text;
    case Kind::nothing:
        break;
    }
    return "";
}

Outcome invoke(const Operation& operation, const std::vector<Value>& values,
               CommunicationsServiceIfc& service, Executable* subscriber)
{
    for (const Row& row : rows)
    {
        if (row.operation != std::string(operation.name))
            continue;
        const Returned returned = row.call(service, Given(values, subscriber));
        Outcome outcome;
        outcome.kind = returned.kind;
        outcome.result = returned.result;
        outcome.text = returned.text;
        for (std::size_t i = 0; i < returned.outputs.size(); ++i)
            outcome.outputs.emplace_back(&operation.outputs[i], returned.outputs[i]);
        return outcome;
    }
    throw std::logic_error(std::string("no row for ") + operation.name);
}

}  // namespace kit::phone

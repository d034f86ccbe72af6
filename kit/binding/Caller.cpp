#include "kit/binding/Caller.h"

#include "kit/binding/WireText.h"
#include "kit/protocol/Columns.h"

#include <stdexcept>
#include <tuple>
#include <type_traits>
#include <utility>

namespace kit
{

namespace
{

/// One call under way: what was given for the row's arguments, and where its outcome goes.
struct Call
{
    CommunicationsServiceIfc& service;
    const Operation& operation;
    std::vector<std::string> values;
    std::vector<bool> isNull;
    Executable* subscriber;
    Outcome outcome;
};

// How an argument of each type is read from what was given.

void read(const Call& c, std::size_t i, std::string& argument)
{
    argument = c.values[i];
}

void read(const Call& c, std::size_t i, const char*& argument)
{
    argument = c.isNull[i] ? nullptr : c.values[i].c_str();
}

void read(const Call& c, std::size_t i, bool& argument)
{
    argument = c.values[i] == "1" || c.values[i] == "TRUE";
}

void read(const Call& c, std::size_t, Executable*& argument)
{
    argument = c.subscriber;
}

void read(const Call& c, std::size_t i, sfiServiceState& argument)
{
    int state = 0;
    if (!numberOf(Meaning::serviceState, c.values[i], state))
        throw std::invalid_argument("state is the name of a service state, not \"" + c.values[i] +
                                    "\"");
    argument = static_cast<sfiServiceState>(state);
}

/// Numbers and the enumerations that travel as numbers.
template <typename Number>
void read(const Call& c, std::size_t i, Number& argument)
{
    argument = static_cast<Number>(std::stoi(c.values[i]));
}

/// Never an argument.
void read(const Call&, std::size_t, std::vector<std::string>&) {}

// What an output of each type holds before the call.

template <typename Number>
void prepare(Number& output)
{
    output = static_cast<Number>(-1);
}

void prepare(bool& output)
{
    output = true;
}

void prepare(std::string&) {}

void prepare(std::vector<std::string>&) {}

// What was returned.

void take(Outcome& outcome, int result)
{
    outcome.returned = Outcome::Returned::result;
    outcome.number = result;
}

void take(Outcome& outcome, bool flag)
{
    outcome.returned = Outcome::Returned::flag;
    outcome.number = flag ? 1 : 0;
}

void take(Outcome& outcome, const std::string& text)
{
    outcome.returned = Outcome::Returned::text;
    outcome.text = text;
}

template <typename Declared>
constexpr bool mayBeOutput =
    std::is_lvalue_reference_v<Declared> && !std::is_const_v<std::remove_reference_t<Declared>>;

/// Whatever stands behind the arguments of the operation's row is an output.
template <typename Declared>
void fill(const Call& c, std::size_t place, std::decay_t<Declared>& argument)
{
    if (place < c.operation.arguments.size())
        read(c, place, argument);
    else if constexpr (mayBeOutput<Declared>)
        prepare(argument);
}

template <typename Declared>
void keep(Call& c, std::size_t place, const std::decay_t<Declared>& argument)
{
    if constexpr (mayBeOutput<Declared>)
        if (place >= c.operation.arguments.size())
            c.outcome.outputs.push_back(wireText(argument));
}

template <typename Result, typename... Arguments, std::size_t... Places>
void invoke(Call& c, Result (CommunicationsServiceIfc::*operation)(Arguments...),
            std::index_sequence<Places...>)
{
    std::tuple<std::decay_t<Arguments>...> arguments;
    (fill<Arguments>(c, Places, std::get<Places>(arguments)), ...);
    if constexpr (std::is_void_v<Result>)
        (c.service.*operation)(std::get<Places>(arguments)...);
    else
        take(c.outcome, (c.service.*operation)(std::get<Places>(arguments)...));
    (keep<Arguments>(c, Places, std::get<Places>(arguments)), ...);
}

template <typename Result, typename... Arguments>
void invoke(Call& c, Result (CommunicationsServiceIfc::*operation)(Arguments...))
{
    invoke(c, operation, std::index_sequence_for<Arguments...>());
}

template <auto Operation>
void run(Call& c)
{
    invoke(c, Operation);
}

/// The one whose text has a length of its own.
void runProcessSignallingComponentEvent(Call& c)
{
    c.service.processSignallingComponentEvent(c.values[0].data(),
                                              static_cast<int>(c.values[0].size()));
}

struct Row
{
    const char* name;
    void (*run)(Call& c);
};

using Ifc = CommunicationsServiceIfc;

const Row rows[] = {
    {"processSignallingComponentEvent", runProcessSignallingComponentEvent},
    {"activate", run<&Ifc::activate>},
    {"deactivate", run<&Ifc::deactivate>},
    {"callClear", run<&Ifc::callClear>},
    {"outgoingCallMake", run<&Ifc::outgoingCallMake>},
    {"acceptCall", run<&Ifc::acceptCall>},
    {"answerCall", run<&Ifc::answerCall>},
    {"deflectCall", run<&Ifc::deflectCall>},
    {"holdCall", run<&Ifc::holdCall>},
    {"retrieveCall", run<&Ifc::retrieveCall>},
    {"attendedTransferCall", run<&Ifc::attendedTransferCall>},
    {"blindTransferCall", run<&Ifc::blindTransferCall>},
    {"SendCSTARequest", run<&Ifc::SendCSTARequest>},
    {"sendUACSTAServerMessage", run<&Ifc::sendUACSTAServerMessage>},
    {"InitializeOrFinalizeServerFeatures", run<&Ifc::InitializeOrFinalizeServerFeatures>},
    {"activateCallbackRinging", run<&Ifc::activateCallbackRinging>},
    {"activateCallbackBusy", run<&Ifc::activateCallbackBusy>},
    {"cancelCallbacks", run<&Ifc::cancelCallbacks>},
    {"consultationCall", run<&Ifc::consultationCall>},
    {"refuseCall", run<&Ifc::refuseCall>},
    {"subscribe", run<&Ifc::subscribe>},
    {"directedPickupCall", run<&Ifc::directedPickupCall>},
    {"groupPickupCall", run<&Ifc::groupPickupCall>},
    {"setServiceState", run<&Ifc::setServiceState>},
    {"getServiceState", run<&Ifc::getServiceState>},
    {"setDoNotDisturb", run<&Ifc::setDoNotDisturb>},
    {"getDoNotDisturb", run<&Ifc::getDoNotDisturb>},
    {"setAgentState", run<&Ifc::setAgentState>},
    {"setMicrophoneMute", run<&Ifc::setMicrophoneMute>},
    {"getMicrophoneMute", run<&Ifc::getMicrophoneMute>},
    {"systemStatus", run<&Ifc::systemStatus>},
    {"generateDigits", run<&Ifc::generateDigits>},
    {"getDevices", run<&Ifc::getDevices>},
    {"conferenceCall", run<&Ifc::conferenceCall>},
    {"RemoveConfParticipant", run<&Ifc::RemoveConfParticipant>},
    {"getManualHoldIndication", run<&Ifc::getManualHoldIndication>},
    {"alternateCalls", run<&Ifc::alternateCalls>},
    {"getMessageWaitingIndicator", run<&Ifc::getMessageWaitingIndicator>},
    {"setAssociatedCalls", run<&Ifc::setAssociatedCalls>},
    {"setLampMode", run<&Ifc::setLampMode>},
    {"makeSecurityChangeReinvite", run<&Ifc::makeSecurityChangeReinvite>},
    {"setIsInServiceInitiatedState", run<&Ifc::setIsInServiceInitiatedState>},
    {"setForwardingConfiguration", run<&Ifc::setForwardingConfiguration>},
    {"getForwardingConfiguration", run<&Ifc::getForwardingConfiguration>},
    {"callbackDOFeatureCallID", run<&Ifc::callbackDOFeatureCallID>},
    {"isCallHoldPossible", run<&Ifc::isCallHoldPossible>},
    {"csCommunicationsService", run<&Ifc::csCommunicationsService>},
    {"activateStoredFwd", run<&Ifc::activateStoredFwd>},
};

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
        made.isNull.push_back(contains(nulls, field.argument));
    }
    for (const Row& row : rows)
        if (std::string(row.name) == operation.name)
            row.run(made);
    return made.outcome;
}

}  // namespace kit

#include "kit/service/Views.h"

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"

namespace kit::service
{

using namespace numbers;

namespace
{

using Text = std::vector<std::string>;

Text showLines(World& world)
{
    Text text;
    for (const Line& line : world.simulation->lines)
    {
        std::string shown = line.name + (line.registered ? " registered" : " not registered");
        shown += line.doNotDisturb ? ", do not disturb" : "";
        shown += line.serverFeatures ? ", server features" : "";
        shown += ", agent " + line.agentState;
        for (const auto& [type, setting] : line.forwarding)
            if (setting.on)
            {
                shown += ", forwarded (" + nameOf(Meaning::forwarding, type) + ") to " +
                         setting.destination;
                if (type == forwardNoAnswer)
                    shown += " after " + std::to_string(setting.ringCount) + " rings";
            }
        text.push_back(shown + ", " +
                       counted(world.simulation->calls.on(line.name).size(), "call"));
    }
    return text;
}

Text showCalls(World& world)
{
    Text text;
    const Calls& calls = world.simulation->calls;
    for (const auto& [id, call] : calls.all())
    {
        std::string shown = std::to_string(id) + " " + call.line +
                            (call.incoming ? " from " : " to ") + call.remote.from.number;
        if (!call.remote.from.name.empty())
            shown += " (" + call.remote.from.name + ")";
        shown += " " + nameOf(Meaning::callState, call.state);
        shown += call.reason == reasonNormal ? "" : ", " + nameOf(Meaning::reason, call.reason);
        shown += call.conference == 0 ? "" : ", conference " + std::to_string(call.conference);
        shown += call.peer == 0 ? "" : ", with call " + std::to_string(call.peer);
        shown += call.recorded ? ", recorded" : "";
        shown +=
            call.security == securityOpen ? "" : ", " + nameOf(Meaning::security, call.security);
        shown += call.digits.empty() ? "" : ", digits " + call.digits;
        text.push_back(shown);
    }
    for (const PickupCall& pickup : calls.atColleagues())
        text.push_back(std::to_string(pickup.id) + " rings at " + pickup.member + " from " +
                       pickup.caller.number);
    return text;
}

Text showLamps(World& world)
{
    Text text;
    for (const Line& line : world.simulation->lines)
        for (const auto& [lamp, mode] : line.lamps)
            text.push_back(line.name + " " + lamp + " " + nameOf(Meaning::lampMode, mode));
    return text;
}

Text showClients(World& world)
{
    Text text;
    for (const auto& [id, client] : world.clients)
        text.push_back("client " + std::to_string(id) + ", " +
                       counted(client.channels.size(), "subscription") + ", " +
                       counted(client.requests, "request"));
    return text;
}

Text showCallBacks(World& world)
{
    Text text;
    for (const CallBack& callBack : world.simulation->callBacks.all())
        text.push_back(
            std::to_string(callBack.id) + " " + callBack.line + " for " +
            callBack.destination.number + " " + nameOf(Meaning::completionState, callBack.state) +
            (callBack.featureCall.empty() ? "" : ", feature call " + callBack.featureCall));
    return text;
}

Text showMailbox(World& world)
{
    const Mailbox& mailbox = world.simulation->voiceMail.mailbox();
    return {"new " + std::to_string(mailbox.newMessages) + ", old " +
            std::to_string(mailbox.oldMessages) + ", new-urgent " +
            std::to_string(mailbox.newUrgentMessages) + ", old-urgent " +
            std::to_string(mailbox.oldUrgentMessages)};
}

Text showFaults(World& world)
{
    Text text;
    for (const WrongAnswer& fault : world.faults.all())
        text.push_back(fault.method + ", " + counted(fault.times, "time") + ": " +
                       (fault.silent ? "no answer" : fault.text));
    return text;
}

Text showRobots(World& world)
{
    Text text;
    for (const auto& [number, robot] : world.robots.all())
        text.push_back(number + " " + (robot->name.empty() ? "" : robot->name + " ") +
                       robot->habit);
    text.push_back(unobtainablePrefix + std::string("... exists nowhere"));
    text.push_back("any other number rings until told otherwise");
    return text;
}

Text showSystem(World& world)
{
    const Settings& settings = world.simulation->settings;
    return {nameOf(Meaning::serviceState, settings.serviceState) + ", system status " +
            settings.systemStatus +
            (settings.systemStatusInfo.empty() ? "" : " (" + settings.systemStatusInfo + ")") +
            ", microphone " + (settings.muted ? "mute" : "on") + ", associated calls " +
            (settings.associatedCalls ? "on" : "off") + ", signalling data of " +
            counted(settings.lastSignalling.size(), "byte") + ", clock at " +
            durationText(world.simulation->clock.now())};
}

Text showLog(World& world)
{
    return {world.log.begin(), world.log.end()};
}

}  // namespace

const std::vector<View>& views()
{
    static const std::vector<View> rows = {
        {"lines", "", showLines},
        {"calls", "no calls", showCalls},
        {"lamps", "no lamp was ever set", showLamps},
        {"clients", "no clients", showClients},
        {"callbacks", "no call-backs", showCallBacks},
        {"mailbox", "", showMailbox},
        {"faults", "no faults", showFaults},
        {"robots", "", showRobots},
        {"system", "", showSystem},
        {"log", "no complaints", showLog},
    };
    return rows;
}

}  // namespace kit::service

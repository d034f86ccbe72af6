// What "show" shows.

#include "kit/language/Wording.h"
#include "kit/service/Commands.h"

#include <sstream>
#include <utility>

namespace kit::service
{

using namespace numbers;

std::string seconds(Time time)
{
    std::ostringstream out;
    out << static_cast<double>(time.count()) / 1000 << " s";
    return out.str();
}

std::string Commands::showLines() const
{
    std::string text;
    for (const Line& line : s.lines_)
    {
        text += line.name + (line.registered ? " registered" : " not registered");
        text += line.doNotDisturb ? ", do not disturb" : "";
        text += line.serverFeatures ? ", server features" : "";
        text += std::string(", agent ") + line.agentState;
        for (const auto& [type, setting] : line.forwarding)
            if (setting.on)
            {
                text += ", forwarded (" + nameOf(Meaning::forwarding, type) + ") to " +
                        setting.destination;
                if (type == forwardNoAnswer)
                    text += " after " + std::to_string(setting.ringCount) + " rings";
            }
        text += ", " + counted(s.callsOf(line.name).size(), "call") + "\n";
    }
    return text;
}

std::string Commands::showCalls() const
{
    std::string text;
    for (const auto& [id, call] : s.calls_)
    {
        text += std::to_string(id) + " " + call.line + (call.incoming ? " from " : " to ") +
                call.remote.from.number;
        if (!call.remote.from.name.empty())
            text += " (" + call.remote.from.name + ")";
        text += " " + nameOf(Meaning::callState, call.state);
        text += call.reason == reasonNormal ? "" : ", " + nameOf(Meaning::reason, call.reason);
        text += call.conference == 0 ? "" : ", conference " + std::to_string(call.conference);
        text += call.peer == 0 ? "" : ", with call " + std::to_string(call.peer);
        text += call.recorded ? ", recorded" : "";
        text +=
            call.security == securityOpen ? "" : ", " + nameOf(Meaning::security, call.security);
        text += call.digits.empty() ? "" : ", digits " + call.digits;
        text += "\n";
    }
    for (const PickupCall& pickup : s.pickups_)
        text += std::to_string(pickup.id) + " rings at " + pickup.member + " from " +
                pickup.caller.number + "\n";
    return text.empty() ? "no calls" : text;
}

std::string Commands::showLamps() const
{
    std::string text;
    for (const Line& line : s.lines_)
        for (const auto& [lamp, mode] : line.lamps)
            text += line.name + " " + lamp + " " + nameOf(Meaning::lampMode, mode) + "\n";
    return text.empty() ? "no lamp was ever set" : text;
}

std::string Commands::showClients() const
{
    std::string text;
    for (const auto& [id, client] : c.clients_)
        text += "client " + std::to_string(id) + ", " +
                counted(client.channels.size(), "subscription") + ", " +
                counted(client.requests, "request") + "\n";
    return text.empty() ? "no clients" : text;
}

std::string Commands::showCallBacks() const
{
    std::string text;
    for (const CallBack& callBack : s.callBacks_)
        text +=
            std::to_string(callBack.id) + " " + callBack.line + " for " +
            callBack.destination.number + " " + nameOf(Meaning::completionState, callBack.state) +
            (callBack.featureCall.empty() ? "" : ", feature call " + callBack.featureCall) + "\n";
    return text.empty() ? "no call-backs" : text;
}

std::string Commands::showMailbox() const
{
    const Mailbox& mailbox = s.mailbox_;
    return "new " + std::to_string(mailbox.newMessages) + ", old " +
           std::to_string(mailbox.oldMessages) + ", new-urgent " +
           std::to_string(mailbox.newUrgentMessages) + ", old-urgent " +
           std::to_string(mailbox.oldUrgentMessages);
}

std::string Commands::showFaults() const
{
    std::string text;
    for (const Fault& fault : c.faults_)
        text += fault.method + ", " + counted(fault.times, "time") + ": " +
                (fault.silent ? "no answer" : fault.text) + "\n";
    return text.empty() ? "no faults" : text;
}

std::string Commands::showRobots() const
{
    std::string text;
    for (const Robot& robot : robots())
        text += std::string(robot.number) + " " + robot.name + " " + robot.habit + "\n";
    return text + unobtainablePrefix + "... exists nowhere\n" +
           "any other number rings until told otherwise";
}

std::string Commands::showSystem() const
{
    return nameOf(Meaning::serviceState, s.serviceState_) + ", system status " + s.systemStatus_ +
           (s.systemStatusInfo_.empty() ? "" : " (" + s.systemStatusInfo_ + ")") + ", microphone " +
           (s.muted_ ? "mute" : "on") + ", associated calls " +
           (s.associatedCalls_ ? "on" : "off") + ", signalling data of " +
           std::to_string(s.lastSignalling_.size()) + " bytes, clock at " + seconds(s.now_);
}

std::string Commands::showLog() const
{
    std::string text;
    for (const std::string& line : c.log_)
        text += line + "\n";
    return text.empty() ? "no complaints" : text;
}

std::string Commands::show()
{
    static const std::vector<std::pair<std::string, std::string (Commands::*)() const>> views = {
        {"lines", &Commands::showLines},         {"calls", &Commands::showCalls},
        {"lamps", &Commands::showLamps},         {"clients", &Commands::showClients},
        {"callbacks", &Commands::showCallBacks}, {"mailbox", &Commands::showMailbox},
        {"faults", &Commands::showFaults},       {"robots", &Commands::showRobots},
        {"system", &Commands::showSystem},       {"log", &Commands::showLog},
    };
    const std::string& what = a.text("WHAT");
    std::vector<std::string> names;
    for (const auto& [name, view] : views)
    {
        names.push_back(name);
        if (name == what)
        {
            std::string text = (this->*view)();
            if (!text.empty() && text.back() == '\n')
                text.pop_back();
            return text;
        }
    }
    throw Refusal("nothing called " + quoted(what) + " to show" + didYouMean(what, names));
}

}  // namespace kit::service

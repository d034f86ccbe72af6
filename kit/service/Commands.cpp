#include "kit/service/Commands.h"

#include "kit/language/Wording.h"
#include "kit/service/EventText.h"

#include <algorithm>
#include <utility>

namespace kit::service
{

using namespace numbers;

namespace
{

constexpr Time longestAdvance = std::chrono::hours(24);

Time parseTime(const std::string& text)
{
    static const std::pair<const char*, long long> units[] = {{"ms", 1},
                                                              {"s", 1000},
                                                              {"min", 60000},
                                                              {"h", 3600000}};
    const std::size_t digits = text.find_first_not_of("0123456789");
    if (digits != 0 && digits != std::string::npos && digits <= 9)
        for (const auto& [unit, factor] : units)
            if (text.compare(digits, std::string::npos, unit) == 0)
            {
                const Time time(std::stoll(text.substr(0, digits)) * factor);
                if (time <= longestAdvance)
                    return time;
            }
    throw Refusal(quoted(text) + " is no time, 250ms, 5s, 2min and 1h are");
}

}  // namespace

Line& Commands::line()
{
    return *s.findLine(a.text("LINE"));
}

Call& Commands::call(const std::string& name)
{
    int id = 0;
    numberOf(Meaning::none, a.text(name), id);
    return *s.findCall(id);
}

std::string Commands::incoming()
{
    Arrival arrival;
    const std::string number = plainNumber(a.text("from"));
    arrival.from = s.partyOf(number);
    if (a.has("name"))
        arrival.from.name = a.text("name");
    arrival.fullPai = a.text("pai");
    arrival.alertUri = a.text("alert");
    arrival.alertInfo = a.text("alert-info");
    arrival.autoAnswer = a.has("auto-answer");
    arrival.zipAutoAnswer = a.has("zip");
    arrival.video = a.has("video");
    arrival.type = a.number("type", Meaning::callType, callTypeExternal);
    arrival.priority = a.number("priority", Meaning::priority, priorityRoutine);
    arrival.ilCallLevel = a.number("call-level", Meaning::impactLevel, impactNone);
    arrival.ilLocalLevel = a.number("local-level", Meaning::impactLevel, impactNone);
    if (a.has("diverted-by"))
    {
        arrival.divertedBy = s.partyOf(plainNumber(a.text("diverted-by")));
        if (a.has("diversion-name"))
            arrival.divertedBy.name = a.text("diversion-name");
        arrival.diversionReason =
            a.number("diversion", Meaning::diversionReason, diversionUnconditional);
    }
    const Simulation::Outcome outcome = s.arriveFollowing(a.text("LINE"), arrival);
    switch (outcome.kind)
    {
    case Simulation::Outcome::rings:
        return "call " + std::to_string(outcome.callId);
    case Simulation::Outcome::forwarded:
        return "forwarded to " + outcome.target;
    default:
        return "not put through: " + nameOf(Meaning::reason, outcome.reason);
    }
}

std::string Commands::answer()
{
    s.farEndAnswers(call());
    return "done";
}

std::string Commands::busy()
{
    s.farEndFails(call(), reasonBusy);
    return "done";
}

std::string Commands::refuse()
{
    s.farEndFails(call(), reasonRefused);
    return "done";
}

std::string Commands::hangUp()
{
    s.farEndClears(call());
    return "done";
}

std::string Commands::hold()
{
    s.farEndHolds(call());
    return "done";
}

std::string Commands::retrieve()
{
    s.farEndRetrieves(call());
    return "done";
}

Party Commands::party(const char* number)
{
    Party result = s.partyOf(plainNumber(a.text(number)));
    if (a.has("name"))
        result.name = a.text("name");
    return result;
}

std::string Commands::transfer()
{
    s.farEndTransfers(call(), party("to"));
    return "done";
}

std::string Commands::identify()
{
    s.changeFarEnd(call(), party("as"), false, false);
    return "done";
}

std::string Commands::join()
{
    s.changeFarEnd(call(), call().remote.from, false, true);
    return "done";
}

std::string Commands::leave()
{
    s.changeFarEnd(call(), call().remote.from, true, false);
    return "done";
}

std::string Commands::ring()
{
    const std::string member = plainNumber(a.text("NUMBER"));
    Line* const own = s.findLine(member);
    if (own != nullptr)
        throw Refusal("line " + member + " is one of this phone's, use: call " + member +
                      " from ...");
    PickupCall pickup;
    pickup.id = s.freeCallId(0);
    pickup.member = member;
    pickup.caller = party("from");
    s.lastCallId_ = pickup.id;
    s.pickups_.push_back(pickup);
    for (const Line& line : s.lines_)
        if (line.registered)
        {
            s.emit(events::incomingPickupCall(line.name, pickup.id, pickup.caller));
            break;
        }
    return "call " + std::to_string(pickup.id) + " rings at " + member;
}

std::string Commands::registerLine()
{
    s.registerLine(line(), true, a.number("result", Meaning::registrationResult, registrationDone));
    return "done";
}

std::string Commands::unregisterLine()
{
    s.registerLine(line(), false,
                   a.number("result", Meaning::registrationResult, registrationTimedOut));
    return "done";
}

std::string Commands::associate()
{
    const Call& current = call();
    s.emit(events::incomingAssociatedCall(current.line, current.id, call("with").id));
    return "done";
}

std::string Commands::secure()
{
    Call& named = call();
    named.security = a.number("state", Meaning::security, securityEncrypted);
    s.tellSecurity(named);
    return "done";
}

std::string Commands::record()
{
    Call& named = call();
    named.recorded = a.on("ON", true);
    s.emit(events::callRecordingStatus(named));
    return "done";
}

std::string Commands::preempt()
{
    s.preempt(call(), a.number("priority", Meaning::priority, priorityFlash),
              a.number("cause", Meaning::preemptionCause, preemptionHigherPriority),
              a.has("reason") ? a.text("reason") : "a call of higher priority");
    return "done";
}

std::string Commands::impact()
{
    Arrival& remote = call().remote;
    remote.ilCallLevel = a.number("call-level", Meaning::impactLevel, remote.ilCallLevel);
    remote.ilLocalLevel = a.number("local-level", Meaning::impactLevel, remote.ilLocalLevel);
    s.emit(events::impactLevelChanged(call()));
    return "done";
}

std::string Commands::bluetooth()
{
    s.bluetoothAudio_ = a.on("audio", s.bluetoothAudio_);
    s.bluetoothGateway_ = a.on("gateway", s.bluetoothGateway_);
    s.bluetoothRinging_ = a.on("ringing", s.bluetoothRinging_);
    s.emit(events::bluetoothAudioStatusChanged(line().name, a.has("call") ? call("call").id : 0,
                                               s.bluetoothAudio_, s.bluetoothGateway_,
                                               s.bluetoothRinging_));
    return "done";
}

std::string Commands::agent()
{
    line().agentState = a.text("AGENTSTATE");
    s.emit(events::agentState(line().name, line().agentState));
    return "done";
}

std::string Commands::features()
{
    Line& named = line();
    named.serverFeatures = a.on("ON", true);
    s.emit(events::serverFeatureStatus(
        named.name, named.serverFeatures ? words::serverFeaturesOn : words::serverFeaturesOff));
    return "done";
}

std::string Commands::system()
{
    s.systemStatus_ = a.text("STATUS");
    s.systemStatusInfo_ = a.text("info");
    s.emit(events::systemStatus(s.systemStatus_, s.systemStatusInfo_));
    return "done";
}

std::string Commands::doNotDisturb()
{
    s.setDoNotDisturb(line(), a.on("ON", true));
    return "done";
}

std::string Commands::csta()
{
    s.emit(events::b2buaCstaEventOrRequest(line().name, a.rest));
    return "done";
}

std::string Commands::rawEvent()
{
    s.emit(a.rest);
    return "done";
}

std::string Commands::message()
{
    s.leaveMessage(a.has("urgent"));
    return "done";
}

std::string Commands::mailbox()
{
    Mailbox& mailbox = s.mailbox_;
    const std::pair<const char*, unsigned*> counters[] = {
        {"new", &mailbox.newMessages},
        {"old", &mailbox.oldMessages},
        {"new-urgent", &mailbox.newUrgentMessages},
        {"old-urgent", &mailbox.oldUrgentMessages}};
    for (const auto& [name, counter] : counters)
        if (a.has(name))
            *counter = static_cast<unsigned>(std::stoul(a.text(name)));
    s.announceMessages();
    return "done";
}

std::string Commands::addLine()
{
    const std::string& name = a.text("NUMBER");
    if (s.findLine(name) != nullptr)
        throw Refusal("there is a line " + name + " already");
    if (s.lines_.size() >= maximumLines)
        throw Refusal("there are " + std::to_string(maximumLines) + " lines already");
    Line line;
    line.name = name;
    s.lines_.push_back(line);
    s.emit(events::devicesChanged());
    return "done";
}

std::string Commands::removeLine()
{
    if (s.lines_.size() == 1)
        throw Refusal("the phone needs a line");
    const std::string name = line().name;
    if (line().registered)
        s.registerLine(line(), false, registrationUnknownLine);
    Simulation::Lines& lines = s.lines_;
    lines.erase(std::find_if(lines.begin(), lines.end(),
                             [&](const Line& line) { return line.name == name; }));
    s.emit(events::devicesChanged());
    return "done";
}

std::string Commands::advance()
{
    s.advance(parseTime(a.text("TIME")));
    return "now at " + seconds(s.now_);
}

std::string Commands::addFault(bool silent)
{
    const std::string& method = a.text("METHOD");
    const unsigned times = a.has("times") ? static_cast<unsigned>(std::stoul(a.text("times"))) : 1;
    if (times == 0)
        throw Refusal("0 times is never");
    c.faults_.push_back({method, times, silent, a.has("with") ? a.text("with") : "sfiFailure"});
    return "done";
}

std::string Commands::fail()
{
    return addFault(false);
}

std::string Commands::silence()
{
    return addFault(true);
}

std::string Commands::heal()
{
    c.faults_.clear();
    return "done";
}

std::string Commands::goAway()
{
    c.clients_.clear();
    c.faults_.clear();
    c.wentAway_ = true;
    s = Simulation(c.lines_);
    return "every client is dropped, connect and subscribe again";
}

std::string Commands::reset()
{
    c.faults_.clear();
    s = Simulation(c.lines_);
    return "done";
}

const std::vector<Commands::Row>& Commands::table()
{
    static const std::vector<CallState> talking = {callConnected, callConferenced, callHeldByFarEnd,
                                                   callHeld};
    static const std::vector<CallState> called = {callDelivered};
    static const std::vector<CallState> alive = {callOffered,   callRinging,     callDelivered,
                                                 callConnected, callConferenced, callHeldByFarEnd,
                                                 callHeld};
    static const std::vector<Row> rows = {
        {"call",
         "LINE from NUMBER [name TEXT] [pai TEXT] [type CALLTYPE] [priority PRIORITY] "
         "[alert TEXT] [alert-info TEXT] [auto-answer] [zip] [video] [diverted-by NUMBER] "
         "[diversion-name TEXT] [diversion DIVERSION] [call-level LEVEL] [local-level LEVEL]",
         "somebody calls a line",
         {},
         &Commands::incoming},
        {"answer", "[CALL]", "the far end answers", called, &Commands::answer},
        {"busy", "[CALL]", "the far end is busy", called, &Commands::busy},
        {"refuse", "[CALL]", "the far end refuses", called, &Commands::refuse},
        {"hang up", "[CALL]", "the far end hangs up, or gives up calling", alive,
         &Commands::hangUp},
        {"hold", "[CALL]", "the far end holds", {callConnected}, &Commands::hold},
        {"retrieve", "[CALL]", "the far end comes back", {callHeldByFarEnd}, &Commands::retrieve},
        {"transfer", "[CALL] to NUMBER [name TEXT]",
         "the far end transfers the call to somebody else", talking, &Commands::transfer},
        {"identify", "[CALL] as NUMBER [name TEXT]", "the far end turns out to be somebody else",
         alive, &Commands::identify},
        {"join", "[CALL]", "the far end takes the call into a conference", talking,
         &Commands::join},
        {"leave", "[CALL]", "the far end takes the call out of its conference", talking,
         &Commands::leave},
        {"ring",
         "NUMBER from NUMBER [name TEXT]",
         "a call rings at a colleague's and may be picked up",
         {},
         &Commands::ring},
        {"register",
         "LINE [result RESULT]",
         "a line becomes registered",
         {},
         &Commands::registerLine},
        {"unregister",
         "LINE [result RESULT]",
         "a line loses its registration",
         {},
         &Commands::unregisterLine},
        {"associate", "CALL with CALL", "the second call belongs to the first", alive,
         &Commands::associate},
        {"secure", "[CALL] [state SECURITY]", "the security of a call changes", alive,
         &Commands::secure},
        {"record", "[CALL] [ON]", "a call is recorded, or no longer", alive, &Commands::record},
        {"preempt", "[CALL] [priority PRIORITY] [cause CAUSE] [reason TEXT]",
         "a call gives way to one of higher priority", alive, &Commands::preempt},
        {"impact", "[CALL] [call-level LEVEL] [local-level LEVEL]",
         "the impact level of a call changes", alive, &Commands::impact},
        {"bluetooth",
         "LINE [call CALL] [audio ON] [gateway ON] [ringing ON]",
         "the Bluetooth audio changes",
         {},
         &Commands::bluetooth},
        {"agent", "LINE AGENTSTATE", "the agent's state changes", {}, &Commands::agent},
        {"features", "LINE [ON]", "the server features of a line change", {}, &Commands::features},
        {"system", "STATUS [info TEXT]", "the system status changes", {}, &Commands::system},
        {"dnd", "LINE [ON]", "do-not-disturb changes", {}, &Commands::doNotDisturb},
        {"csta", "LINE REST", "the CSTA peer sends a text, as it stands", {}, &Commands::csta},
        {"event", "REST", "an event is sent as it stands", {}, &Commands::rawEvent},
        {"message", "[urgent]", "somebody leaves a message", {}, &Commands::message},
        {"mailbox",
         "[new COUNT] [old COUNT] [new-urgent COUNT] [old-urgent COUNT]",
         "the mailbox holds so many messages",
         {},
         &Commands::mailbox},
        {"add line", "NUMBER", "a line is added to the phone", {}, &Commands::addLine},
        {"remove line", "LINE", "a line is removed from the phone", {}, &Commands::removeLine},
        {"advance", "TIME", "time passes", {}, &Commands::advance},
        {"fail",
         "METHOD [with TEXT] [times COUNT]",
         "the next requests of a method (* for all) get this answer and no effect",
         {},
         &Commands::fail},
        {"silence",
         "METHOD [times COUNT]",
         "the next requests of a method (* for all) get no answer and no effect",
         {},
         &Commands::silence},
        {"heal", "", "forgets all faults", {}, &Commands::heal},
        {"go away",
         "",
         "drops all clients and forgets everything, as a restart does",
         {},
         &Commands::goAway},
        {"reset", "", "forgets everything but the clients", {}, &Commands::reset},
        {"show",
         "WHAT",
         "lines, calls, lamps, clients, callbacks, mailbox, faults, robots, system or log",
         {},
         &Commands::show},
        {"help", "[TEXT]", "lists the commands, or those that begin so", {}, &Commands::help},
    };
    return rows;
}

std::string Commands::help()
{
    const std::string& wanted = a.text("TEXT");
    std::string text;
    for (const Row& row : table())
        if (std::string(row.name).rfind(wanted, 0) == 0)
        {
            text += text.empty() ? "" : "\n";
            text += row.name;
            text += *row.usage == '\0' ? "" : " ";
            text += row.usage;
            text += ": ";
            text += row.help;
        }
    if (text.empty())
        throw Refusal("no command begins with " + quoted(wanted));
    return text;
}

}  // namespace kit::service

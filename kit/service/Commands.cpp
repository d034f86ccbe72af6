#include "kit/service/Commands.h"

#include "kit/language/Durations.h"
#include "kit/language/Wording.h"
#include "kit/protocol/Columns.h"
#include "kit/service/Requests.h"
#include "kit/service/Usage.h"
#include "kit/service/Views.h"

namespace kit::service
{

using namespace numbers;

namespace
{

// --- those that take more than a line ---

void incoming(Order& o)
{
    Arrival arrival;
    arrival.from = o.a.party("from");
    arrival.fullPai = o.a.text("pai");
    arrival.alertUri = o.a.text("alert");
    arrival.alertInfo = o.a.text("alert-info");
    arrival.autoAnswer = o.a.has("auto-answer");
    arrival.zipAutoAnswer = o.a.has("zip");
    arrival.video = o.a.has("video");
    arrival.type = o.a.number("type", Meaning::callType, callTypeExternal);
    arrival.priority = o.a.number("priority", Meaning::priority, priorityRoutine);
    arrival.ilCallLevel = o.a.number("call-level", Meaning::impactLevel, impactNone);
    arrival.ilLocalLevel = o.a.number("local-level", Meaning::impactLevel, impactNone);
    if (o.a.has("diverted-by"))
    {
        arrival.divertedBy = o.a.party("diverted-by", "diversion-name");
        arrival.diversionReason =
            o.a.number("diversion", Meaning::diversionReason, diversionUnconditional);
    }
    const ArrivalOutcome outcome = o.s.calls.arriveFollowing(o.a.text("LINE"), arrival);
    switch (outcome.kind)
    {
    case ArrivalOutcome::rings:
        o.answer = "call " + std::to_string(outcome.callId);
        break;
    case ArrivalOutcome::forwarded:
        o.answer = "forwarded to " + outcome.target;
        break;
    default:
        o.answer = "not put through: " + nameOf(Meaning::reason, outcome.reason);
    }
}

void ring(Order& o)
{
    const std::string member = plainNumber(o.a.text("NUMBER"));
    if (o.s.lines.find(member) != nullptr)
        throw Mistake("line " + member + " is one of this phone's, use: call " + member +
                      " from ...");
    const PickupCall& made = o.s.calls.ringAtColleague(member, o.a.party("from"));
    o.answer = "call " + std::to_string(made.id) + " rings at " + member;
}

void setRegistered(Order& o, bool registered, int otherwise)
{
    o.s.lines.setRegistered(o.a.line(), registered,
                            o.a.number("result", Meaning::registrationResult, otherwise));
}

void associate(Order& o)
{
    o.s.outbox.incomingAssociatedCall(o.a.call().line, o.a.call().id, o.a.call("with").id);
}

void secure(Order& o)
{
    Call& call = o.a.call();
    call.security = o.a.number("state", Meaning::security, securityEncrypted);
    o.s.calls.tellSecurity(call);
}

void record(Order& o)
{
    Call& call = o.a.call();
    call.recorded = o.a.on("ON", true);
    o.s.outbox.callRecordingStatus(call);
}

void preempt(Order& o)
{
    o.s.calls.preempt(o.a.call(), o.a.number("priority", Meaning::priority, priorityFlash),
                      o.a.number("cause", Meaning::preemptionCause, preemptionHigherPriority),
                      o.a.has("reason") ? o.a.text("reason") : "a call of higher priority");
}

void impact(Order& o)
{
    Arrival& remote = o.a.call().remote;
    remote.ilCallLevel = o.a.number("call-level", Meaning::impactLevel, remote.ilCallLevel);
    remote.ilLocalLevel = o.a.number("local-level", Meaning::impactLevel, remote.ilLocalLevel);
    o.s.outbox.impactLevelChanged(o.a.call());
}

void bluetooth(Order& o)
{
    Settings& settings = o.s.settings;
    settings.bluetoothAudio = o.a.on("audio", settings.bluetoothAudio);
    settings.bluetoothGateway = o.a.on("gateway", settings.bluetoothGateway);
    settings.bluetoothRinging = o.a.on("ringing", settings.bluetoothRinging);
    o.s.outbox.bluetoothAudioStatusChanged(o.a.line().name,
                                           o.a.has("call") ? o.a.call("call").id : 0, settings);
}

void agent(Order& o)
{
    Line& line = o.a.line();
    line.agentState = o.a.text("AGENTSTATE");
    o.s.outbox.agentState(line);
}

void features(Order& o)
{
    Line& line = o.a.line();
    line.serverFeatures = o.a.on("ON", true);
    o.s.outbox.serverFeatureStatus(line);
}

void systemStatus(Order& o)
{
    Settings& settings = o.s.settings;
    settings.systemStatus = o.a.text("STATUS");
    settings.systemStatusInfo = o.a.text("info");
    o.s.outbox.systemStatus(settings);
}

void mailbox(Order& o)
{
    Mailbox next = o.s.voiceMail.mailbox();
    next.newMessages = o.a.count("new", next.newMessages);
    next.oldMessages = o.a.count("old", next.oldMessages);
    next.newUrgentMessages = o.a.count("new-urgent", next.newUrgentMessages);
    next.oldUrgentMessages = o.a.count("old-urgent", next.oldUrgentMessages);
    o.s.voiceMail.set(next);
}

void addLine(Order& o)
{
    const std::string& name = o.a.text("NUMBER");
    if (o.s.lines.find(name) != nullptr)
        throw Mistake("there is a line " + name + " already");
    if (o.s.lines.size() >= maximumLines)
        throw Mistake("there are " + std::to_string(maximumLines) + " lines already");
    o.s.lines.add(name);
}

void removeLine(Order& o)
{
    if (o.s.lines.size() == 1)
        throw Mistake("the phone needs a line");
    o.s.lines.remove(o.a.text("LINE"));
}

void advance(Order& o)
{
    Word time;
    time.text = o.a.text("TIME");
    o.s.clock.advance(parseDuration(time));
    o.answer = "now at " + durationText(o.s.clock.now());
}

void addFault(Order& o, bool silent)
{
    const unsigned times = o.a.count("times", 1);
    if (times == 0)
        throw Mistake("0 times is never");
    o.world.faults.add(
        {o.a.text("METHOD"), times, silent, o.a.has("with") ? o.a.text("with") : failed});
}

void goAway(Order& o)
{
    o.world.goAway();
    o.answer = "every client is dropped, connect and subscribe again";
}

void robots(Order& o)
{
    const std::size_t added = o.world.addRobots(o.a.text("FILE"));
    o.answer = counted(added, "robot");
}

void show(Order& o)
{
    const std::string& what = o.a.text("WHAT");
    for (const View& view : views())
        if (what == view.name)
        {
            const std::vector<std::string> lines = view.lines(o.world);
            o.answer = lines.empty() ? view.empty : "";
            for (const std::string& line : lines)
                o.answer += (&line == &lines.front() ? "" : "\n") + line;
            return;
        }
    const std::vector<std::string> names = wordsFor("WHAT");
    throw Mistake("nothing called " + quoted(what) + " to show" +
                  didYouMean(what, names, ", one of " + listed(names)));
}

void help(Order& o)
{
    std::vector<CommandUsage> wanted;
    for (const CommandUsage& command : simulationCommands())
        if (command.name.rfind(o.a.text("TEXT"), 0) == 0)
            wanted.push_back(command);
    if (wanted.empty())
        throw Mistake("no command begins with " + quoted(o.a.text("TEXT")));
    o.answer = commandHelp(wanted);
}

/// Null when there is none; the words of its name are taken.
const Command* findCommand(Words& words, const std::string& first)
{
    for (const Command& command : commands())
    {
        const std::string name = command.name;
        if (name == first)
            return &command;
        if (name.rfind(first + " ", 0) != 0)
            continue;
        Words second = words;
        Word word;
        if (second.next(word) && name == first + " " + word.text)
        {
            words.next(word);
            return &command;
        }
    }
    return nullptr;
}

}  // namespace

const std::vector<Command>& commands()
{
    using States = std::vector<CallState>;
    static const States talking = {callConnected, callConferenced, callHeldByFarEnd, callHeld};
    static const States connected = {callConnected};
    static const States heldByFarEnd = {callHeldByFarEnd};
    static const States called = {callDelivered};
    static const States alive = {callOffered,     callRinging,      callDelivered, callConnected,
                                 callConferenced, callHeldByFarEnd, callHeld};
    static const std::vector<Command> rows = {
        {"call",
         "LINE from NUMBER [name TEXT] [pai TEXT] [type CALLTYPE] [priority PRIORITY] "
         "[alert TEXT] [alert-info TEXT] [auto-answer] [zip] [video] [diverted-by NUMBER] "
         "[diversion-name TEXT] [diversion DIVERSION] [call-level LEVEL] [local-level LEVEL]",
         "somebody calls a line", incoming},
        {"answer", "[CALL]", "the far end answers",
         [](Order& o) { o.s.farEnd.answers(o.a.call()); }, called},
        {"busy", "[CALL]", "the far end is busy",
         [](Order& o) { o.s.farEnd.fails(o.a.call(), reasonBusy); }, called},
        {"refuse", "[CALL]", "the far end refuses",
         [](Order& o) { o.s.farEnd.fails(o.a.call(), reasonRefused); }, called},
        {"hang up", "[CALL]", "the far end hangs up, or gives up calling",
         [](Order& o) { o.s.farEnd.hangsUp(o.a.call()); }, alive},
        {"hold", "[CALL]", "the far end holds", [](Order& o) { o.s.farEnd.holds(o.a.call()); },
         connected},
        {"retrieve", "[CALL]", "the far end comes back",
         [](Order& o) { o.s.farEnd.retrieves(o.a.call()); }, heldByFarEnd},
        {"transfer", "[CALL] to NUMBER [name TEXT]",
         "the far end transfers the call to somebody else",
         [](Order& o) { o.s.farEnd.transfers(o.a.call(), o.a.party("to")); }, talking},
        {"identify", "[CALL] as NUMBER [name TEXT]", "the far end turns out to be somebody else",
         [](Order& o) { o.s.farEnd.becomes(o.a.call(), o.a.party("as"), false, false); }, alive},
        {"join", "[CALL]", "the far end takes the call into a conference",
         [](Order& o) { o.s.farEnd.becomes(o.a.call(), o.a.call().remote.from, false, true); },
         talking},
        {"leave", "[CALL]", "the far end takes the call out of its conference",
         [](Order& o) { o.s.farEnd.becomes(o.a.call(), o.a.call().remote.from, true, false); },
         talking},
        {"ring", "NUMBER from NUMBER [name TEXT]",
         "a call rings at a colleague's and may be picked up", ring},
        {"register", "LINE [result RESULT]", "a line becomes registered",
         [](Order& o) { setRegistered(o, true, registrationDone); }},
        {"unregister", "LINE [result RESULT]", "a line loses its registration",
         [](Order& o) { setRegistered(o, false, registrationTimedOut); }},
        {"associate", "CALL with CALL", "the second call belongs to the first", associate, alive},
        {"secure", "[CALL] [state SECURITY]", "the security of a call changes", secure, alive},
        {"record", "[CALL] [ON]", "a call is recorded, or no longer", record, alive},
        {"preempt", "[CALL] [priority PRIORITY] [cause CAUSE] [reason TEXT]",
         "a call gives way to one of higher priority", preempt, alive},
        {"impact", "[CALL] [call-level LEVEL] [local-level LEVEL]",
         "the impact level of a call changes", impact, alive},
        {"bluetooth", "LINE [call CALL] [audio ON] [gateway ON] [ringing ON]",
         "the Bluetooth audio changes", bluetooth},
        {"agent", "LINE AGENTSTATE", "the agent's state changes", agent},
        {"features", "LINE [ON]", "the server features of a line change", features},
        {"system", "STATUS [info TEXT]", "the system status changes", systemStatus},
        {"dnd", "LINE [ON]", "do-not-disturb changes",
         [](Order& o) { o.s.lines.setDoNotDisturb(o.a.line(), o.a.on("ON", true)); }},
        {"csta", "LINE REST", "the CSTA peer sends a text, as it stands",
         [](Order& o) { o.s.outbox.b2buaCstaEventOrRequest(o.a.line().name, o.a.rest()); }},
        {"event", "REST", "an event is sent as it stands",
         [](Order& o) { o.s.outbox.emit(o.a.rest()); }},
        {"message", "[urgent]", "somebody leaves a message",
         [](Order& o) { o.s.voiceMail.leave(o.a.has("urgent")); }},
        {"mailbox", "[new COUNT] [old COUNT] [new-urgent COUNT] [old-urgent COUNT]",
         "the mailbox holds so many messages", mailbox},
        {"add line", "NUMBER", "a line is added to the phone", addLine},
        {"remove line", "LINE", "a line is removed from the phone", removeLine},
        {"advance", "TIME", "time passes", advance},
        {"fail", "METHOD [with TEXT] [times COUNT]",
         "the next requests of a method (* for all) get this answer and no effect",
         [](Order& o) { addFault(o, false); }},
        {"silence", "METHOD [times COUNT]",
         "the next requests of a method (* for all) get no answer and no effect",
         [](Order& o) { addFault(o, true); }},
        {"heal", "", "forgets all faults", [](Order& o) { o.world.faults.clear(); }},
        {"go away", "", "drops all clients and forgets everything, as a restart does", goAway},
        {"robots", "FILE", "those of a text file can be called", robots},
        {"reset", "", "forgets everything but the clients and the robots",
         [](Order& o) { o.world.reset(); }},
        {"show", "WHAT",
         "lines, calls, lamps, clients, callbacks, mailbox, faults, robots, system or log", show},
        {"help", "[TEXT]", "lists the commands, or those that begin so", help},
    };
    return rows;
}

ControlAnswer carryOut(World& world, const std::string& text)
{
    try
    {
        Words words(text);
        Word first;
        if (!words.next(first))
            throw Mistake("no command");
        const Command* const command = findCommand(words, first.text);
        if (command == nullptr)
        {
            const std::vector<std::string> names = columnOf(commands(), &Command::name);
            throw Mistake("unknown command " + quoted(first.text) +
                          didYouMean(first.text, names, ", one of " + listed(names)));
        }
        const CommandUsage usage = {command->name, command->usage, command->help};
        const Arguments arguments(world, usage, command->states, words);
        Order order{world, *world.simulation, arguments};
        command->run(order);
        return {true, order.answer};
    }
    catch (const Mistake& mistake)
    {
        const std::string where =
            mistake.column() == 0 ? "" : " (column " + std::to_string(mistake.column()) + ")";
        return {false, mistake.what() + where};
    }
}

}  // namespace kit::service

#include "kit/service/Control.h"

#include "kit/service/EventText.h"
#include "kit/service/Wording.h"

#include <algorithm>
#include <functional>
#include <sstream>
#include <stdexcept>

namespace kit::service
{

using namespace numbers;

namespace
{

constexpr std::size_t logLength = 200;
constexpr Time longestAdvance = std::chrono::hours(24 * 365);

/// Told to the one who typed the command.
class Refusal : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

struct Word
{
    std::string text;
    std::size_t begin;  ///< where it stands in the command
    bool quoted;
};

std::vector<Word> split(const std::string& command)
{
    std::vector<Word> words;
    std::size_t at = 0;
    while ((at = command.find_first_not_of(" \t\r\n", at)) != std::string::npos)
    {
        Word word{"", at, false};
        bool open = false;
        for (; at < command.size(); ++at)
        {
            const char c = command[at];
            if (c == '\\' && at + 1 < command.size())
                word.text += command[++at];
            else if (c == '"')
            {
                open = !open;
                word.quoted = true;
            }
            else if (!open && (c == ' ' || c == '\t' || c == '\r' || c == '\n'))
                break;
            else
                word.text += c;
        }
        if (open)
            throw Refusal("the text that begins at column " + std::to_string(word.begin + 1) +
                          " has no closing \"");
        words.push_back(word);
    }
    return words;
}

/// One word, or pair of words, of a usage.
struct Slot
{
    std::string keyword;  ///< "" for a value that is known by its place
    std::string value;    ///< kind of value; "" for a keyword that stands alone
    bool optional;
};

/// "LINE from NUMBER [name TEXT] [video]" taken apart.
std::vector<Slot> slotsOf(const std::string& usage)
{
    std::vector<Slot> slots;
    std::istringstream in(usage);
    std::string word;
    while (in >> word)
    {
        Slot slot{"", "", false};
        bool closed = true;
        if (word.front() == '[')
        {
            slot.optional = true;
            word.erase(0, 1);
            closed = word.back() == ']';
            if (closed)
                word.pop_back();
        }
        if (std::isupper(static_cast<unsigned char>(word.front())) != 0)
            slot.value = word;
        else
        {
            slot.keyword = word;
            if (!slot.optional || !closed)
            {
                in >> slot.value;
                if (slot.value.back() == ']')
                    slot.value.pop_back();
            }
        }
        slots.push_back(slot);
    }
    return slots;
}

/// Kinds of values that have names, and whether their numbers or their words count.
struct NamedValue
{
    const char* value;
    Meaning meaning;
    const char* what;
};

constexpr NamedValue namedValues[] = {
    {"LEVEL", Meaning::impactLevel, "impact level"},
    {"PRIORITY", Meaning::priority, "priority"},
    {"SECURITY", Meaning::security, "security status"},
    {"CAUSE", Meaning::preemptionCause, "pre-emption cause"},
    {"CALLTYPE", Meaning::callType, "call type"},
    {"DIVERSION", Meaning::diversionReason, "diversion reason"},
    {"RESULT", Meaning::registrationResult, "registration result"},
    {"AGENTSTATE", Meaning::agentState, "agent state"},
    {"STATUS", Meaning::systemStatus, "system status"},
};

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

std::string seconds(Time time)
{
    std::ostringstream out;
    out << static_cast<double>(time.count()) / 1000 << " s";
    return out.str();
}

/// The values of a command, by the keyword or, without one, by the kind of value.
class Arguments
{
public:
    std::map<std::string, std::string> values;
    std::string rest;
    int callId = 0;

    bool has(const std::string& name) const { return values.count(name) != 0; }

    const std::string& text(const std::string& name) const
    {
        static const std::string empty;
        const auto found = values.find(name);
        return found == values.end() ? empty : found->second;
    }

    int number(const std::string& name, Meaning meaning, int otherwise) const
    {
        int value = otherwise;
        if (has(name))
            numberOf(meaning, text(name), value);
        return value;
    }

    bool on(const std::string& name, bool otherwise) const
    {
        return has(name) ? text(name) == "on" : otherwise;
    }
};

}  // namespace

/// One function for each command, and the table of them.
struct Commands
{
    Simulation& s;
    Control& c;
    Arguments a;

    using Run = std::string (*)(Commands& with);

    struct Row
    {
        const char* name;
        const char* usage;
        const char* help;
        std::vector<CallState> states;  ///< of a CALL; any when empty
        Run run;
    };

    static const std::vector<Row>& table();

    Line& line(const std::string& name = "LINE")
    {
        Line* const found = s.findLine(a.text(name));
        return *found;
    }

    Call& call(const std::string& name = "CALL")
    {
        int id = 0;
        numberOf(Meaning::none, a.text(name), id);
        return *s.findCall(id);
    }

    std::string done(const std::string& text = "done") { return text; }

    // --- the far end ---

    static std::string incoming(Commands& with)
    {
        const Arguments& a = with.a;
        Arrival arrival;
        const std::string number = plainNumber(a.text("from"));
        arrival.from = with.s.partyOf(number);
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
            arrival.divertedBy = with.s.partyOf(plainNumber(a.text("diverted-by")));
            if (a.has("diversion-name"))
                arrival.divertedBy.name = a.text("diversion-name");
            arrival.diversionReason =
                a.number("diversion", Meaning::diversionReason, diversionUnconditional);
        }
        const Simulation::Outcome outcome = with.s.arriveFollowing(a.text("LINE"), arrival);
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

    static std::string answer(Commands& with)
    {
        with.s.farEndAnswers(with.call());
        return with.done();
    }

    static std::string busy(Commands& with)
    {
        with.s.farEndFails(with.call(), reasonBusy);
        return with.done();
    }

    static std::string refuse(Commands& with)
    {
        with.s.farEndFails(with.call(), reasonRefused);
        return with.done();
    }

    static std::string hangUp(Commands& with)
    {
        with.s.farEndClears(with.call());
        return with.done();
    }

    static std::string hold(Commands& with)
    {
        with.s.farEndHolds(with.call());
        return with.done();
    }

    static std::string retrieve(Commands& with)
    {
        with.s.farEndRetrieves(with.call());
        return with.done();
    }

    Party party(const char* number)
    {
        Party result = s.partyOf(plainNumber(a.text(number)));
        if (a.has("name"))
            result.name = a.text("name");
        return result;
    }

    static std::string transfer(Commands& with)
    {
        with.s.farEndTransfers(with.call(), with.party("to"));
        return with.done();
    }

    static std::string identify(Commands& with)
    {
        with.s.changeFarEnd(with.call(), with.party("as"), false, false);
        return with.done();
    }

    static std::string join(Commands& with)
    {
        with.s.changeFarEnd(with.call(), with.call().remote.from, false, true);
        return with.done();
    }

    static std::string leave(Commands& with)
    {
        with.s.changeFarEnd(with.call(), with.call().remote.from, true, false);
        return with.done();
    }

    static std::string ring(Commands& with)
    {
        const std::string member = plainNumber(with.a.text("NUMBER"));
        Line* const own = with.s.findLine(member);
        if (own != nullptr)
            throw Refusal("line " + member + " is one of this phone's, use: call " + member +
                          " from ...");
        PickupCall pickup;
        pickup.id = with.s.freeCallId(0);
        pickup.member = member;
        pickup.caller = with.party("from");
        with.s.lastCallId_ = pickup.id;
        with.s.pickups_.push_back(pickup);
        for (const Line& line : with.s.lines_)
            if (line.registered)
            {
                with.s.emit(events::incomingPickupCall(line.name, pickup.id, pickup.caller));
                break;
            }
        return "call " + std::to_string(pickup.id) + " rings at " + member;
    }

    // --- notices ---

    static std::string registerLine(Commands& with)
    {
        with.s.registerLine(with.line(),
                            true,
                            with.a.number("result", Meaning::registrationResult, registrationDone));
        return with.done();
    }

    static std::string unregisterLine(Commands& with)
    {
        with.s.registerLine(
            with.line(),
            false,
            with.a.number("result", Meaning::registrationResult, registrationTimedOut));
        return with.done();
    }

    static std::string associate(Commands& with)
    {
        const Call& current = with.call();
        with.s.emit(events::incomingAssociatedCall(current.line, current.id, with.call("with").id));
        return with.done();
    }

    static std::string secure(Commands& with)
    {
        Call& call = with.call();
        call.security = with.a.number("state", Meaning::security, securityEncrypted);
        with.s.tellSecurity(call);
        return with.done();
    }

    static std::string record(Commands& with)
    {
        Call& call = with.call();
        call.recorded = with.a.on("ON", true);
        with.s.emit(events::callRecordingStatus(call));
        return with.done();
    }

    static std::string preempt(Commands& with)
    {
        with.s.preempt(with.call(),
                       with.a.number("priority", Meaning::priority, priorityFlash),
                       with.a.number("cause", Meaning::preemptionCause, preemptionHigherPriority),
                       with.a.has("reason") ? with.a.text("reason") : "a call of higher priority");
        return with.done();
    }

    static std::string impact(Commands& with)
    {
        Arrival& remote = with.call().remote;
        remote.ilCallLevel = with.a.number("call-level", Meaning::impactLevel, remote.ilCallLevel);
        remote.ilLocalLevel =
            with.a.number("local-level", Meaning::impactLevel, remote.ilLocalLevel);
        with.s.emit(events::impactLevelChanged(with.call()));
        return with.done();
    }

    static std::string bluetooth(Commands& with)
    {
        Simulation& s = with.s;
        s.bluetoothAudio_ = with.a.on("audio", s.bluetoothAudio_);
        s.bluetoothGateway_ = with.a.on("gateway", s.bluetoothGateway_);
        s.bluetoothRinging_ = with.a.on("ringing", s.bluetoothRinging_);
        s.emit(events::bluetoothAudioStatusChanged(with.line().name,
                                                   with.a.has("call") ? with.call("call").id : 0,
                                                   s.bluetoothAudio_,
                                                   s.bluetoothGateway_,
                                                   s.bluetoothRinging_));
        return with.done();
    }

    static std::string agent(Commands& with)
    {
        with.line().agentState = with.a.text("AGENTSTATE");
        with.s.emit(events::agentState(with.line().name, with.line().agentState));
        return with.done();
    }

    static std::string features(Commands& with)
    {
        Line& line = with.line();
        line.serverFeatures = with.a.on("ON", true);
        with.s.emit(events::serverFeatureStatus(line.name,
                                                line.serverFeatures ? words::serverFeaturesOn
                                                                    : words::serverFeaturesOff));
        return with.done();
    }

    static std::string system(Commands& with)
    {
        with.s.systemStatus_ = with.a.text("STATUS");
        with.s.systemStatusInfo_ = with.a.text("info");
        with.s.emit(events::systemStatus(with.s.systemStatus_, with.s.systemStatusInfo_));
        return with.done();
    }

    static std::string doNotDisturb(Commands& with)
    {
        with.s.setDoNotDisturb(with.line(), with.a.on("ON", true));
        return with.done();
    }

    static std::string csta(Commands& with)
    {
        with.s.emit(events::b2buaCstaEventOrRequest(with.line().name, with.a.rest));
        return with.done();
    }

    static std::string rawEvent(Commands& with)
    {
        with.s.emit(with.a.rest);
        return with.done();
    }

    // --- mailbox and devices ---

    static std::string message(Commands& with)
    {
        with.s.leaveMessage(with.a.has("urgent"));
        return with.done();
    }

    static std::string mailbox(Commands& with)
    {
        Mailbox& mailbox = with.s.mailbox_;
        const std::pair<const char*, unsigned*> counters[] = {
            {"new", &mailbox.newMessages},
            {"old", &mailbox.oldMessages},
            {"new-urgent", &mailbox.newUrgentMessages},
            {"old-urgent", &mailbox.oldUrgentMessages}};
        for (const auto& [name, counter] : counters)
            if (with.a.has(name))
                *counter = static_cast<unsigned>(std::stoul(with.a.text(name)));
        with.s.announceMessages();
        return with.done();
    }

    static std::string addLine(Commands& with)
    {
        const std::string& name = with.a.text("NUMBER");
        if (with.s.findLine(name) != nullptr)
            throw Refusal("there is a line " + name + " already");
        if (with.s.lines_.size() >= maximumLines)
            throw Refusal("there are " + std::to_string(maximumLines) + " lines already");
        Line line;
        line.name = name;
        with.s.lines_.push_back(line);
        with.s.emit(events::devicesChanged());
        return with.done();
    }

    static std::string removeLine(Commands& with)
    {
        if (with.s.lines_.size() == 1)
            throw Refusal("the phone needs a line");
        const std::string name = with.line().name;
        if (with.line().registered)
            with.s.registerLine(with.line(), false, registrationUnknownLine);
        Simulation::Lines& lines = with.s.lines_;
        lines.erase(std::find_if(lines.begin(),
                                 lines.end(),
                                 [&](const Line& line) { return line.name == name; }));
        with.s.emit(events::devicesChanged());
        return with.done();
    }

    // --- the clock ---

    static std::string advance(Commands& with)
    {
        with.s.advance(parseTime(with.a.text("TIME")));
        return "now at " + seconds(with.s.now_);
    }

    // --- faults ---

    static std::string addFault(Commands& with, bool silent)
    {
        const std::string& method = with.a.text("METHOD");
        const unsigned times =
            with.a.has("times") ? static_cast<unsigned>(std::stoul(with.a.text("times"))) : 1;
        with.c.faults_.push_back(
            {method, times, silent, with.a.has("with") ? with.a.text("with") : "sfiFailure"});
        return with.done();
    }

    static std::string fail(Commands& with) { return addFault(with, false); }

    static std::string silence(Commands& with) { return addFault(with, true); }

    static std::string heal(Commands& with)
    {
        with.c.faults_.clear();
        return with.done();
    }

    static std::string goAway(Commands& with)
    {
        with.c.clients_.clear();
        with.c.faults_.clear();
        with.c.wentAway_ = true;
        with.s = Simulation(with.c.lines_);
        return "every client is dropped, connect and subscribe again";
    }

    static std::string reset(Commands& with)
    {
        with.c.faults_.clear();
        with.s = Simulation(with.c.lines_);
        return with.done();
    }

    // --- looking ---

    static std::string help(Commands& with);
    static std::string show(Commands& with);

    std::string showLines() const;
    std::string showCalls() const;
    std::string showLamps() const;
    std::string showClients() const;
    std::string showCallBacks() const;
    std::string showMailbox() const;
    std::string showFaults() const;
    std::string showRobots() const;
    std::string showSystem() const;
    std::string showLog() const;

    // --- reading a command ---

    std::string checked(const Slot& slot, const std::string& text, const Row& row) const;
    int onlyCall(const Row& row) const;
    void read(const Row& row, const std::string& command, const std::vector<Word>& words,
              std::size_t first);
};

const std::vector<Commands::Row>& Commands::table()
{
    static const std::vector<CallState> talking = {callConnected,
                                                   callConferenced,
                                                   callHeldByFarEnd,
                                                   callHeld};
    static const std::vector<CallState> called = {callDelivered};
    static const std::vector<CallState> alive = {callOffered,
                                                 callRinging,
                                                 callDelivered,
                                                 callConnected,
                                                 callConferenced,
                                                 callHeldByFarEnd,
                                                 callHeld};
    static const std::vector<Row> rows = {
        {"call",
         "LINE from NUMBER [name TEXT] [pai TEXT] [type CALLTYPE] [priority PRIORITY] "
         "[alert TEXT] [alert-info TEXT] [auto-answer] [zip] [video] [diverted-by NUMBER] "
         "[diversion-name TEXT] [diversion DIVERSION] [call-level LEVEL] [local-level LEVEL]",
         "somebody calls a line",
         {},
         incoming},
        {"answer", "[CALL]", "the far end answers", called, answer},
        {"busy", "[CALL]", "the far end is busy", called, busy},
        {"refuse", "[CALL]", "the far end refuses", called, refuse},
        {"hang up", "[CALL]", "the far end hangs up, or gives up calling", alive, hangUp},
        {"hold", "[CALL]", "the far end holds", {callConnected}, hold},
        {"retrieve", "[CALL]", "the far end comes back", {callHeldByFarEnd}, retrieve},
        {"transfer",
         "[CALL] to NUMBER [name TEXT]",
         "the far end transfers the call to somebody else",
         talking,
         transfer},
        {"identify",
         "[CALL] as NUMBER [name TEXT]",
         "the far end turns out to be somebody else",
         alive,
         identify},
        {"join", "[CALL]", "the far end takes the call into a conference", talking, join},
        {"leave", "[CALL]", "the far end takes the call out of its conference", talking, leave},
        {"ring",
         "NUMBER from NUMBER [name TEXT]",
         "a call rings at a colleague's and may be picked up",
         {},
         ring},
        {"register", "LINE [result RESULT]", "a line becomes registered", {}, registerLine},
        {"unregister", "LINE [result RESULT]", "a line loses its registration", {}, unregisterLine},
        {"associate", "CALL with CALL", "the second call belongs to the first", alive, associate},
        {"secure", "[CALL] [state SECURITY]", "the security of a call changes", alive, secure},
        {"record", "[CALL] [ON]", "a call is recorded, or no longer", alive, record},
        {"preempt",
         "[CALL] [priority PRIORITY] [cause CAUSE] [reason TEXT]",
         "a call gives way to one of higher priority",
         alive,
         preempt},
        {"impact",
         "[CALL] [call-level LEVEL] [local-level LEVEL]",
         "the impact level of a call changes",
         alive,
         impact},
        {"bluetooth",
         "LINE [call CALL] [audio ON] [gateway ON] [ringing ON]",
         "the Bluetooth audio changes",
         {},
         bluetooth},
        {"agent", "LINE AGENTSTATE", "the agent's state changes", {}, agent},
        {"features", "LINE [ON]", "the server features of a line change", {}, features},
        {"system", "STATUS [info TEXT]", "the system status changes", {}, system},
        {"dnd", "LINE [ON]", "do-not-disturb changes", {}, doNotDisturb},
        {"csta", "LINE REST", "the CSTA peer sends a text, as it stands", {}, csta},
        {"event", "REST", "an event is sent as it stands", {}, rawEvent},
        {"message", "[urgent]", "somebody leaves a message", {}, message},
        {"mailbox",
         "[new COUNT] [old COUNT] [new-urgent COUNT] [old-urgent COUNT]",
         "the mailbox holds so many messages",
         {},
         mailbox},
        {"add line", "NUMBER", "a line is added to the phone", {}, addLine},
        {"remove line", "LINE", "a line is removed from the phone", {}, removeLine},
        {"advance", "TIME", "time passes", {}, advance},
        {"fail",
         "METHOD [with TEXT] [times COUNT]",
         "the next requests of a method (* for all) get this answer and no effect",
         {},
         fail},
        {"silence",
         "METHOD [times COUNT]",
         "the next requests of a method (* for all) get no answer and no effect",
         {},
         silence},
        {"heal", "", "forgets all faults", {}, heal},
        {"go away", "", "drops all clients and forgets everything, as a restart does", {}, goAway},
        {"reset", "", "forgets everything but the clients", {}, reset},
        {"show",
         "WHAT",
         "lines, calls, lamps, clients, callbacks, mailbox, faults, robots, system or log",
         {},
         show},
        {"help", "[TEXT]", "lists the commands, or those that begin so", {}, help},
    };
    return rows;
}

std::string Commands::help(Commands& with)
{
    const std::string& wanted = with.a.text("TEXT");
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
        text += ", " + std::to_string(s.callsOf(line.name).size()) + " calls\n";
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
        text += "client " + std::to_string(id) + ", " + std::to_string(client.channels.size()) +
                " subscriptions, " + std::to_string(client.requests) + " requests\n";
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
        text += fault.method + ", " + std::to_string(fault.times) +
                " times: " + (fault.silent ? "no answer" : fault.text) + "\n";
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

std::string Commands::show(Commands& with)
{
    static const std::vector<std::pair<std::string, std::string (Commands::*)() const>> views = {
        {"lines", &Commands::showLines},
        {"calls", &Commands::showCalls},
        {"lamps", &Commands::showLamps},
        {"clients", &Commands::showClients},
        {"callbacks", &Commands::showCallBacks},
        {"mailbox", &Commands::showMailbox},
        {"faults", &Commands::showFaults},
        {"robots", &Commands::showRobots},
        {"system", &Commands::showSystem},
        {"log", &Commands::showLog},
    };
    const std::string& what = with.a.text("WHAT");
    std::vector<std::string> names;
    for (const auto& [name, view] : views)
    {
        names.push_back(name);
        if (name == what)
        {
            std::string text = (with.*view)();
            if (!text.empty() && text.back() == '\n')
                text.pop_back();
            return text;
        }
    }
    throw Refusal("nothing called " + quoted(what) + " to show" + suggestion(what, names));
}

/// The only call that a command can mean.
int Commands::onlyCall(const Row& row) const
{
    int only = 0;
    for (const auto& [id, call] : s.calls_)
        if (row.states.empty() ||
            std::find(row.states.begin(), row.states.end(), call.state) != row.states.end())
        {
            if (only != 0)
                throw Refusal(std::string(row.name) + ": several calls are possible, " +
                              std::to_string(only) + " and " + std::to_string(id) + ", say which");
            only = id;
        }
    if (only == 0)
        throw Refusal(std::string(row.name) + ": no call is in a state for it");
    return only;
}

std::string Commands::checked(const Slot& slot, const std::string& text, const Row& row) const
{
    const std::string what = std::string(row.name) + ": ";
    int number = 0;
    const auto among = [&](const std::vector<std::string>& names, const std::string& kind)
    {
        if (std::find(names.begin(), names.end(), text) != names.end())
            return text;
        std::string all;
        for (const std::string& name : names)
            all += (all.empty() ? ", one of " : ", ") + name;
        const std::string meant = suggestion(text, names);
        throw Refusal(what + "no " + kind + " " + quoted(text) + (meant.empty() ? all : meant));
    };
    if (slot.value == "LINE")
    {
        std::vector<std::string> names;
        for (const Line& line : s.lines_)
            names.push_back(line.name);
        return among(names, "line");
    }
    if (slot.value == "CALL")
    {
        if (!numberOf(Meaning::none, text, number) || s.calls_.count(number) == 0)
            throw Refusal(what + "no call " + quoted(text));
        const Call& call = s.calls_.at(number);
        if (!row.states.empty() &&
            std::find(row.states.begin(), row.states.end(), call.state) == row.states.end())
            throw Refusal(what + "call " + text + " is " + nameOf(Meaning::callState, call.state));
        return std::to_string(number);
    }
    if (slot.value == "NUMBER" &&
        (text.empty() || text.size() > 64 || text.find_first_of("<>\"") != std::string::npos))
        throw Refusal(what + quoted(text) + " is no number to call");
    if (slot.value == "COUNT" &&
        (!numberOf(Meaning::none, text, number) || number < 0 || number > 1000000))
        throw Refusal(what + quoted(text) + " is no number from 0 to 1000000");
    if (slot.value == "ON")
        return among({"on", "off"}, "switch");
    if (slot.value == "METHOD" && text != "*")
    {
        std::vector<std::string> names;
        for (const Operation& operation : operations())
            if (*operation.method != '\0')
                names.push_back(operation.method);
        return among(names, "method");
    }
    for (const NamedValue& named : namedValues)
        if (slot.value == named.value)
        {
            // Numbers pass as they are: a real service may have more of them.
            if (slot.value != "AGENTSTATE" && slot.value != "STATUS" &&
                numberOf(Meaning::none, text, number))
                return text;
            std::vector<std::string> names;
            for (const NumberName& entry : namesOf(named.meaning))
                names.push_back(entry.name);
            return among(names, named.what);
        }
    return text;
}

void Commands::read(const Row& row, const std::string& command, const std::vector<Word>& words,
                    std::size_t first)
{
    const std::vector<Slot> slots = slotsOf(row.usage);
    const std::string usage = std::string(row.name) +
                              (*row.usage == '\0' ? " stands alone" : std::string(" ") + row.usage);
    const auto isKeyword = [&](const Word& word)
    {
        return !word.quoted &&
               std::any_of(slots.begin(),
                           slots.end(),
                           [&](const Slot& slot)
                           { return !slot.keyword.empty() && slot.keyword == word.text; });
    };
    std::size_t at = first;
    // What is known by its place comes first.
    for (const Slot& slot : slots)
    {
        if (!slot.keyword.empty())
            continue;
        if (slot.value == "REST")
        {
            if (at >= words.size())
                throw Refusal(std::string(row.name) + ": REST is missing, usage: " + usage);
            a.rest = command.substr(words[at].begin);
            return;
        }
        const bool there = at < words.size() && !isKeyword(words[at]);
        if (there)
            a.values[slot.value] = checked(slot, words[at++].text, row);
        else if (slot.optional && slot.value == "CALL")
            a.values[slot.value] = std::to_string(onlyCall(row));
        else if (!slot.optional)
            throw Refusal(std::string(row.name) + ": " + slot.value +
                          " is missing, usage: " + usage);
    }
    while (at < words.size())
    {
        const std::string& word = words[at].text;
        std::vector<std::string> keywords;
        const Slot* slot = nullptr;
        for (const Slot& any : slots)
            if (!any.keyword.empty())
            {
                keywords.push_back(any.keyword);
                if (any.keyword == word)
                    slot = &any;
            }
        if (slot == nullptr)
        {
            const std::string meant = suggestion(word, keywords);
            throw Refusal(std::string(row.name) + ": unknown word " + quoted(word) +
                          (meant.empty() ? ", usage: " + usage : meant));
        }
        ++at;
        if (slot->value.empty())
            a.values[slot->keyword] = "on";
        else if (at >= words.size())
            throw Refusal(std::string(row.name) + ": " + slot->value + " is missing after " + word);
        else
            a.values[slot->keyword] = checked(*slot, words[at++].text, row);
    }
    for (const Slot& slot : slots)
        if (!slot.optional && !slot.keyword.empty() && !a.has(slot.keyword))
            throw Refusal(std::string(row.name) + ": \"" + slot.keyword + " " + slot.value +
                          "\" is missing, usage: " + usage);
}

Client* Control::findClient(int id)
{
    const auto found = clients_.find(id);
    return found == clients_.end() ? nullptr : &found->second;
}

const Fault* Control::nextFault(const std::string& request)
{
    if (faults_.empty())
        return nullptr;
    const std::string method = parse(request).method;
    for (Fault& fault : faults_)
        if (fault.method == "*" || fault.method == method)
        {
            met_ = fault;
            if (--fault.times == 0)
                faults_.erase(faults_.begin() + (&fault - faults_.data()));
            return &met_;
        }
    return nullptr;
}

void Control::note(const std::string& complaint)
{
    log_.push_back(complaint);
    if (log_.size() > logLength)
        log_.pop_front();
}

std::string Control::run(Simulation& simulation, const std::string& command)
{
    try
    {
        const std::vector<Word> words = split(command);
        if (words.empty())
            throw Refusal("no command, \"help\" lists them");
        std::vector<std::string> names;
        for (const Commands::Row& row : Commands::table())
        {
            const std::string name = row.name;
            names.push_back(name);
            const std::size_t blank = name.find(' ');
            const bool two = blank != std::string::npos;
            if (two ? words.size() > 1 && words[0].text == name.substr(0, blank) &&
                          words[1].text == name.substr(blank + 1)
                    : words[0].text == name)
            {
                Commands commands{simulation, *this, {}};
                commands.read(row, command, words, two ? 2 : 1);
                return row.run(commands);
            }
        }
        const std::string& word = words[0].text;
        const std::string meant = suggestion(word, names);
        throw Refusal("unknown command " + quoted(word) +
                      (meant.empty() ? ", \"help\" lists them" : meant));
    }
    catch (const Refusal& refusal)
    {
        return std::string("error: ") + refusal.what();
    }
}

}  // namespace kit::service

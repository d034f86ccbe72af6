#ifndef KIT_SERVICE_COMMANDS_H
#define KIT_SERVICE_COMMANDS_H

#include "kit/service/Control.h"

#include <cstddef>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

// The inside of Control: its commands, one by one.
namespace kit::service
{

/// Told to the one who typed the command.
class Refusal : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A word of a command.
struct Word
{
    std::string text;
    std::size_t begin;  ///< where it stands in the command
    bool quoted;
};

/// One word, or pair of words, of a usage.
struct Slot
{
    std::string keyword;  ///< "" for a value that is known by its place
    std::string value;    ///< kind of value; "" for a keyword that stands alone
    bool optional;
};

/// The values of a command, by the keyword or, without one, by the kind of value.
class Arguments
{
public:
    std::map<std::string, std::string> values;
    std::string rest;

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

/// One function for each command, and the table of them.
struct Commands
{
    Simulation& s;
    Control& c;
    Arguments a{};

    using Run = std::string (Commands::*)();

    struct Row
    {
        const char* name;
        const char* usage;
        const char* help;
        std::vector<numbers::CallState> states;  ///< of a CALL; any when empty
        Run run;
    };

    static const std::vector<Row>& table();

    // What the arguments stand for; they have been checked.
    Line& line();
    Call& call(const std::string& name = "CALL");

    /// The party that a number and a name stand for.
    Party party(const char* number);

    // --- the far end ---

    std::string incoming();
    std::string answer();
    std::string busy();
    std::string refuse();
    std::string hangUp();
    std::string hold();
    std::string retrieve();
    std::string transfer();
    std::string identify();
    std::string join();
    std::string leave();
    std::string ring();

    // --- notices ---

    std::string registerLine();
    std::string unregisterLine();
    std::string associate();
    std::string secure();
    std::string record();
    std::string preempt();
    std::string impact();
    std::string bluetooth();
    std::string agent();
    std::string features();
    std::string system();
    std::string doNotDisturb();
    std::string csta();
    std::string rawEvent();

    // --- mailbox and devices ---

    std::string message();
    std::string mailbox();
    std::string addLine();
    std::string removeLine();

    // --- the clock ---

    std::string advance();

    // --- faults ---

    std::string addFault(bool silent);
    std::string fail();
    std::string silence();
    std::string heal();
    std::string goAway();
    std::string reset();

    // --- looking ---

    std::string help();
    std::string show();
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

/// For people, "1.5 s".
std::string seconds(Time time);

}  // namespace kit::service

#endif

#ifndef TESTS_KIT_SERVICE_SCENARIO_H
#define TESTS_KIT_SERVICE_SCENARIO_H

#include "kit/protocol/Protocol.h"
#include "kit/service/SimulatedService.h"

#include <deque>
#include <string>

/// "name=value name="more words"" taken apart; a word without a name has the name "".
kit::Values valuesOf(const std::string& text);

std::string trimmed(const std::string& text);

/// Runs a script against the simulated service, strictly: whatever it says or does and the script
/// does not expect is a failure. A line is one of
///
///     operation name=value ... -> answer   a request; without an answer "sfiSuccess" or, when
///                                          none is awaited, nothing
///     raw TEXT -> answer                   a request as it stands
///     * command -> answer                  a command; without an answer any but an error
///     : Event name=value ...               the next event, and fields of it
///     ! complaint                          the next line of the log
///     # comment
class Scenario
{
public:
    Scenario();

    /// A phone whose lines are registered, with nothing of that left to expect.
    void activate();

    void run(const std::string& script);

    kit::SimulatedService& service() { return service_; }
    int client() const { return client_; }

private:
    void runLine(const std::string& line);
    void request(const std::string& text, bool answered, const std::string* expected);
    void expectEvent(const std::string& expected);
    void expectQuiet();

    kit::SimulatedService service_;
    int client_;
    std::deque<std::string> events_;
    std::deque<std::string> complaints_;
};

#endif

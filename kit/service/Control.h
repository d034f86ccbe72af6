#ifndef KIT_SERVICE_CONTROL_H
#define KIT_SERVICE_CONTROL_H

#include "kit/framework/Connection.h"
#include "kit/service/Simulation.h"

#include <deque>
#include <map>
#include <string>
#include <vector>

namespace kit::service
{

/// A wrong answer that was asked for.
struct Fault
{
    std::string method;  ///< "*" for every request
    unsigned times;      ///< how often it is still to come
    bool silent;         ///< no answer at all
    std::string text;
};

/// An application that is connected.
struct Client
{
    std::vector<std::string> channels;  ///< one for each subscription
    unsigned long requests = 0;
};

/// The commands that drive the simulation, and what only they look at: clients, faults, the log.
///
/// A command is words between blanks; "..." holds a text with blanks, \ takes the next character as
/// it stands. What may follow a command's name is written in its usage, which is also what the
/// words are checked against. Not locked: SimulatedService does that.
class Control
{
public:
    explicit Control(std::vector<std::string> lines) : lines_(std::move(lines)) {}

    /// Carries out a command.
    ControlAnswer run(Simulation& simulation, const std::string& command);

    void addClient(int id) { clients_[id]; }
    void removeClient(int id) { clients_.erase(id); }
    Client* findClient(int id);
    const std::map<int, Client>& clients() const { return clients_; }

    /// The fault that this request meets, counted down; null when it meets none. It stays valid
    /// until the next call.
    const Fault* nextFault(const std::string& request);

    /// Keeps a complaint for "show log".
    void note(const std::string& complaint);

    /// True once after the service has dropped all clients.
    bool wentAway() { return std::exchange(wentAway_, false); }

private:
    friend struct Commands;

    std::vector<std::string> lines_;
    std::map<int, Client> clients_;
    std::vector<Fault> faults_;
    Fault met_{};
    std::deque<std::string> log_;
    bool wentAway_ = false;
};

}  // namespace kit::service

#endif

#ifndef KIT_SERVICE_WORLD_H
#define KIT_SERVICE_WORLD_H

#include "kit/service/Faults.h"
#include "kit/service/Robots.h"
#include "kit/service/Simulation.h"

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kit::service
{

/// An application that is connected.
struct Client
{
    std::vector<std::string> channels;  ///< one for each subscription
    unsigned long requests = 0;
};

/// The simulation, and what is around it: who is connected, what goes wrong on command, and the
/// last complaints.
struct World
{
    explicit World(std::vector<std::string> lineNames);

    /// Forgets everything but the clients and the robots.
    void reset();
    /// Drops the clients as well.
    void goAway();

    /// All robots of a file, how many; raises Mistake, and then none.
    std::size_t addRobots(const std::string& file);

    void note(const std::string& complaint);
    /// Null when there is none.
    Client* findClient(int id);

    const std::vector<std::string> lineNames;
    Robots robots;
    std::unique_ptr<Simulation> simulation;
    std::map<int, Client> clients;
    Faults faults;
    std::deque<std::string> log;
    bool wentAway = false;  ///< until somebody has told the clients
};

}  // namespace kit::service

#endif

#include "kit/service/World.h"

#include <utility>

namespace kit::service
{

namespace
{

constexpr std::size_t logLength = 200;

}  // namespace

World::World(std::vector<std::string> names) : lineNames(std::move(names))
{
    reset();
}

void World::reset()
{
    faults.clear();
    simulation = std::make_unique<Simulation>(lineNames, robots);
}

void World::goAway()
{
    clients.clear();
    wentAway = true;
    reset();
}

void World::note(const std::string& complaint)
{
    log.push_back(complaint);
    if (log.size() > logLength)
        log.pop_front();
}

Client* World::findClient(int id)
{
    const auto found = clients.find(id);
    return found == clients.end() ? nullptr : &found->second;
}

}  // namespace kit::service

#include "kit/service/World.h"

#include "kit/service/RobotFile.h"

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

std::size_t World::addRobots(const std::string& file)
{
    const std::vector<Robot> read = readRobots(file, simulation->lines.names());
    for (const Robot& robot : read)
        robots.add(robot);
    return read.size();
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

#ifndef KIT_SERVICE_SIMULATION_H
#define KIT_SERVICE_SIMULATION_H

#include "kit/service/CallBacks.h"
#include "kit/service/Calls.h"
#include "kit/service/Clock.h"
#include "kit/service/Conferences.h"
#include "kit/service/FarEnd.h"
#include "kit/service/Lines.h"
#include "kit/service/Outbox.h"
#include "kit/service/VoiceMail.h"

#include <string>
#include <vector>

namespace kit::service
{

/// What the phone's network side does on its own: its parts, each of which keeps its state to itself
/// and may use the verbs of the others. Requests (Requests.h) and commands (Commands.h) do the same.
///
/// Not locked: SimulatedService does that. Everything that happens ends up in the outbox.
class Simulation
{
public:
    Simulation(const std::vector<std::string>& lineNames, const Robots& farEnds);

    Simulation(const Simulation&) = delete;
    Simulation& operator=(const Simulation&) = delete;

    Party partyOf(const std::string& number);

    const Robots& robots;
    Outbox outbox;
    Clock clock;
    Settings settings;
    Lines lines;
    Calls calls;
    FarEnd farEnd;
    Conferences conferences;
    CallBacks callBacks;
    VoiceMail voiceMail;
};

}  // namespace kit::service

#endif

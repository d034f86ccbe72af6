#ifndef KIT_SERVICE_FAR_END_H
#define KIT_SERVICE_FAR_END_H

#include "kit/service/Model.h"

namespace kit::service
{

class Simulation;

/// What the other side of a call does, be it a robot, a person with commands, or a line of this
/// phone.
class FarEnd
{
public:
    explicit FarEnd(Simulation& simulation) : s_(simulation) {}

    void answers(Call& call);
    void fails(Call& call, numbers::Reason reason);
    void hangsUp(Call& call);
    void holds(Call& call);
    void retrieves(Call& call);
    void transfers(Call& call, const Party& target);
    /// Turns out to be somebody else, or to come into a conference or out of it.
    void becomes(Call& call, const Party& party, bool exitConf, bool jointCall);

    /// Connects the far ends of two calls with each other; what they are here is over.
    void connect(Call& one, Call& two);

    /// Lets the robot, if one is there, do what it does in the call's state.
    void follow(const Call& call);

private:
    void act(Call& call, const Step& step);
    void takeOver(Call& call, const Party& party);

    Simulation& s_;
};

}  // namespace kit::service

#endif

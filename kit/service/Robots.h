#ifndef KIT_SERVICE_ROBOTS_H
#define KIT_SERVICE_ROBOTS_H

#include "kit/protocol/Numbers.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kit::service
{

using Time = std::chrono::milliseconds;

/// What somebody at the far end of a call can do.
enum class Act
{
    answer,
    refuse,
    hangUp,
    hold,
    retrieve,
    transfer,
    joinConference,   ///< takes the call into a conference of their own
    leaveConference,  ///< and out again
    refuseAndCallBack
};

/// While the call is in a state, and that long after it got there.
struct Step
{
    numbers::CallState during;
    Time after;
    Act act;
    std::string target = {};  ///< of a transfer
};

/// How a number can be reached.
enum class Reach
{
    rings,
    busy,
    unobtainable
};

/// What becomes of a call-back that waits for a number.
enum class CallBackOutcome
{
    available,
    stillBusy,
    never
};

/// Somebody at the far end. A number that no robot has rings until it is told what to do.
struct Robot
{
    std::string number;
    std::string name;
    std::string habit;  ///< for people
    Reach reach = Reach::rings;
    std::vector<Step> steps = {};  ///< each is done once in a call
    CallBackOutcome callBack = CallBackOutcome::available;
    Time callBackAfter = std::chrono::seconds(10);
};

using RobotPointer = std::shared_ptr<const Robot>;

/// Everybody at the far end, by number.
class Robots
{
public:
    /// Those that are always there.
    Robots();

    /// Null when the number belongs to no robot.
    RobotPointer find(const std::string& number) const;
    const std::map<std::string, RobotPointer>& all() const { return robots_; }

    /// In the place of who had the number before; calls that go on keep that one.
    void add(Robot robot);

private:
    std::map<std::string, RobotPointer> robots_;
};

/// The number that a dialled text means: "sip:2001@somewhere", "tel:2001" and "2001" are one.
std::string plainNumber(const std::string& dialled);

constexpr const char* mailboxNumber = "5000";
/// Numbers that begin so exist nowhere.
constexpr char unobtainablePrefix = '9';

}  // namespace kit::service

#endif

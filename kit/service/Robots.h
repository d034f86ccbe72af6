#ifndef KIT_SERVICE_ROBOTS_H
#define KIT_SERVICE_ROBOTS_H

#include "kit/protocol/Numbers.h"

#include <chrono>
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
    transfer,         ///< to the first robot, who answers
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
    const char* number;
    const char* name;
    const char* habit;  ///< for people
    Reach reach;
    std::vector<Step> steps;  ///< each is done once in a call
    CallBackOutcome callBack;
    Time callBackAfter;
};

const std::vector<Robot>& robots();

/// Null when the number belongs to no robot.
const Robot* findRobot(const std::string& number);

/// The number that a dialled text means: "sip:2001@somewhere", "tel:2001" and "2001" are one.
std::string plainNumber(const std::string& dialled);

constexpr const char* mailboxNumber = "5000";
constexpr const char* transferTarget = "2001";
/// Numbers that begin so exist nowhere.
constexpr char unobtainablePrefix = '9';

}  // namespace kit::service

#endif

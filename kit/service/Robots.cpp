#include "kit/service/Robots.h"

#include <utility>

namespace kit::service
{

using namespace numbers;
using namespace std::chrono_literals;

namespace
{

// Number, name, habit, how it is reached, what it does, and what becomes of call-backs where that is
// not that it is free after 10 s.
// clang-format off
const std::vector<Robot>& table()
{
    static const std::vector<Robot> rows = {
        {"2001", "Anna Answer", "answers after 2 s", Reach::rings,
         {{callDelivered, 2s, Act::answer}}},
        {"2002", "Ben Busy", "is busy; free 10 s after a call-back was asked for", Reach::busy},
        {"2003", "Nora Never",
         "rings and never answers; at her desk 15 s after a call-back was asked for", Reach::rings,
         {}, CallBackOutcome::available, 15s},
        {"2004", "Rita Refuse", "refuses after 1 s", Reach::rings,
         {{callDelivered, 1s, Act::refuse}}, CallBackOutcome::never, 0s},
        {"2005", "Carl Callback", "refuses after 1 s and calls back 5 s later", Reach::rings,
         {{callDelivered, 1s, Act::refuseAndCallBack}}, CallBackOutcome::available, 5s},
        {"2006", "Tom Transfer", "answers after 1 s, transfers to 2001 after 3 s", Reach::rings,
         {{callDelivered, 1s, Act::answer}, {callConnected, 3s, Act::transfer, "2001"}}},
        {"2007", "Hugh Hold", "answers after 1 s, holds after 2 s, is back after 3 s", Reach::rings,
         {{callDelivered, 1s, Act::answer}, {callConnected, 2s, Act::hold},
          {callHeldByFarEnd, 3s, Act::retrieve}}},
        {"2008", "Hanna Hangup", "answers after 1 s, hangs up after 5 s", Reach::rings,
         {{callDelivered, 1s, Act::answer}, {callConnected, 5s, Act::hangUp}}},
        {"2009", "Cora Conference",
         "answers after 1 s, takes the call into her conference after 2 s and out after 5 s",
         Reach::rings,
         {{callDelivered, 1s, Act::answer}, {callConnected, 2s, Act::joinConference},
          {callConnected, 5s, Act::leaveConference}}},
        {"2010", "Stella Still", "is busy, and still so 10 s after a call-back was asked for",
         Reach::busy, {}, CallBackOutcome::stillBusy},
        {"2011", "Ulf Until", "is busy; a call-back waits for him until it times out",
         Reach::busy, {}, CallBackOutcome::never, 0s},
        {"3001", "Gina Group", "a colleague in the pickup group; rings until told otherwise"},
        {"3002", "Gus Group", "another colleague in the pickup group"},
        {mailboxNumber, "Mailbox",
         "answers at once; 1 hears the next message, 2 leaves one, 3 deletes an old one",
         Reach::rings, {{callDelivered, 0s, Act::answer}}},
    };
    return rows;
}
// clang-format on

}  // namespace

Robots::Robots()
{
    for (const Robot& robot : table())
        add(robot);
}

RobotPointer Robots::find(const std::string& number) const
{
    const auto found = robots_.find(number);
    return found == robots_.end() ? nullptr : found->second;
}

void Robots::add(Robot robot)
{
    const std::string number = robot.number;
    robots_[number] = std::make_shared<const Robot>(std::move(robot));
}

std::string plainNumber(const std::string& dialled)
{
    std::size_t begin = 0;
    for (const char* scheme : {"sip:", "sips:", "tel:"})
        if (dialled.rfind(scheme, 0) == 0)
            begin = std::string(scheme).size();
    return dialled.substr(begin, dialled.find_first_of("@;", begin) - begin);
}

}  // namespace kit::service

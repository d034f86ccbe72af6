#include "kit/service/Conferences.h"

#include "kit/service/Simulation.h"

#include <utility>

namespace kit::service
{

using namespace numbers;

std::vector<int> Conferences::membersOf(int conference) const
{
    std::vector<int> ids;
    for (const auto& [id, call] : s_.calls.all())
        if (call.conference == conference)
            ids.push_back(id);
    return ids;
}

void Conferences::start(Call& active, Call& held)
{
    const int conference = held.conference != 0     ? held.conference
                           : active.conference != 0 ? active.conference
                                                    : active.id;
    for (Call* const call : {&active, &held})
    {
        call->conference = conference;
        call->manualHold = false;
        s_.calls.setState(*call, callConferenced, reasonConferenced);
        s_.farEnd.becomes(*call, call->remote.from, false, true);
    }
    announce(conference);
}

void Conferences::leave(Call& call)
{
    const int conference = std::exchange(call.conference, 0);
    const std::vector<int> left = membersOf(conference);
    announce(conference);
    if (left.size() != 1)
        return;
    Call& last = *s_.calls.find(left.front());
    last.conference = 0;
    if (last.state == callConferenced)
        s_.calls.setState(last, callConnected, reasonNormal);
    s_.farEnd.becomes(last, last.remote.from, true, false);
}

void Conferences::announce(int conference) const
{
    const std::vector<int> members = membersOf(conference);
    std::string users;
    for (const int id : members)
        users += "<user id=\"" + std::to_string(id) + "\" uri=\"" +
                 s_.calls.find(id)->remote.from.uri() + "\"/>";
    const std::string document =
        "<conference id=\"" + std::to_string(conference) + "\">" + users + "</conference>";
    for (const int id : members)
        s_.outbox.conferenceStatus(*s_.calls.find(id), document);
}

}  // namespace kit::service

#ifndef COMMUNICATIONS_CALL_BOOK_H
#define COMMUNICATIONS_CALL_BOOK_H

#include "application/Subscriber.h"

#include <algorithm>
#include <string>
#include <vector>

namespace communications
{

/// Numbers of the call states, which the service defines: take them from its description.
struct CallStates
{
    int idle;
    int offered;  ///< incoming, to be accepted, deflected or refused
    int ringing;  ///< incoming, to be answered
    int connected;
    int held;
    int conferenced;
    int cleared;
};

/// What an application knows about its calls: only what the events have told it. Subscribe it beside
/// the application's own subscriber, or hand it the events.
///
/// It has no lock: events come on the framework's thread, and so should questions; an application that
/// asks on another one guards both.
class CallBook : public EventSubscriber<CallStateChangeEvent, IncomingCallEvent, CallHeldEvent,
                                        CallRetrievedEvent, RemoteEndpointDetailsChangedEvent,
                                        IncomingCallMissedEvent, CallForwardedEvent>
{
public:
    struct Call
    {
        int id;
        std::string line;
        int state;
        std::string farEnd;      ///< its URI
        std::string farEndName;  ///< its name for display
    };

    explicit CallBook(const CallStates& states) : states_(states) {}

    /// Calls that are not over, oldest first.
    const std::vector<Call>& calls() const { return calls_; }

    /// Null when there is none.
    const Call* find(int id) const
    {
        for (const Call& call : calls_)
            if (call.id == id)
                return &call;
        return nullptr;
    }

    /// The oldest call of a line in this state; null when there is none.
    const Call* find(const std::string& line, int state) const
    {
        for (const Call& call : calls_)
            if (call.line == line && call.state == state)
                return &call;
        return nullptr;
    }

    bool held(const Call& call) const { return call.state == states_.held; }
    bool inConference(const Call& call) const { return call.state == states_.conferenced; }

    /// Forgets all calls, as after the service was restarted.
    void clear() { calls_.clear(); }

    void on(const CallStateChangeEvent& event) override
    {
        if (event.callState == states_.cleared || event.callState == states_.idle)
            drop(event.callId);
        else
            known(event).state = event.callState;
    }

    void on(const IncomingCallEvent& event) override
    {
        // A state of its own usually follows; until then the call is offered.
        if (find(event.callId) == nullptr)
            known(event).state = states_.offered;
    }

    void on(const CallHeldEvent& event) override
    {
        call(event.callId, event.lineId).state = states_.held;
    }

    void on(const CallRetrievedEvent& event) override { known(event).state = states_.connected; }

    void on(const RemoteEndpointDetailsChangedEvent& event) override
    {
        if (find(event.callId) != nullptr)
            known(event);
    }

    void on(const IncomingCallMissedEvent& event) override { drop(event.callId); }
    void on(const CallForwardedEvent& event) override { drop(event.callId); }

private:
    Call& call(int id, const std::string& line)
    {
        auto found = std::find_if(calls_.begin(), calls_.end(),
                                  [id](const Call& candidate) { return candidate.id == id; });
        if (found == calls_.end())
            found = calls_.insert(calls_.end(), Call{id, "", states_.idle, "", ""});
        if (!line.empty())
            found->line = line;
        return *found;
    }

    /// The call of an event that names the far end, with what it says of that.
    template <typename Event>
    Call& known(const Event& event)
    {
        Call& found = call(event.callId, event.lineId);
        if (!event.uri.empty())
        {
            found.farEnd = event.uri;
            found.farEndName = event.name;
        }
        return found;
    }

    void drop(int id)
    {
        calls_.erase(std::remove_if(calls_.begin(), calls_.end(),
                                    [id](const Call& call) { return call.id == id; }),
                     calls_.end());
    }

    CallStates states_;
    std::vector<Call> calls_;
};

}  // namespace communications

#endif

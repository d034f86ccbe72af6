// What the page on threads and lifetimes quotes. Compiled, so that it stays true to the interfaces;
// not run, since half of it is wrong on purpose. The classes show one callback each and leave the
// other 27 out.
#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "framework/Executable.h"
#include "framework/Proxy.h"

#include <condition_variable>
#include <exception>
#include <iostream>
#include <mutex>
#include <string>
#include <utility>

CommunicationsServiceIfc* wrongCast(Proxy* proxy)
{
    return reinterpret_cast<CommunicationsServiceIfc*>(proxy);  // calls the wrong functions
}

CommunicationsServiceIfc* rightCast(Proxy* proxy)
{
    return dynamic_cast<CommunicationsServiceIfc*>(proxy);
}

// Not an event interface: the first event is called through a null pointer.
class WrongSubscriber : public Executable
{
};

class RightSubscriber : public Executable, public CommunicationsServiceEventIfc
{
};

class KeepsWrong : public CommunicationsServiceEventIfc
{
public:
    void onCallStateChangeEvent(const std::string& lineId, int, int, int, int, const std::string&,
                                const std::string& name, const std::string&,
                                CallPartyInfo* callPartyInfo, int, int, const std::string&, bool,
                                int, int) override
    {
        line = &lineId;         // gone when this returns
        shown = name.c_str();   // gone when this returns
        party = callPartyInfo;  // gone when this returns
    }

    const std::string* line;
    const char* shown;
    const CallPartyInfo* party;
};

class KeepsRight : public CommunicationsServiceEventIfc
{
public:
    void onCallStateChangeEvent(const std::string& lineId, int, int, int, int, const std::string&,
                                const std::string& name, const std::string&,
                                CallPartyInfo* callPartyInfo, int, int, const std::string&, bool,
                                int, int) override
    {
        line = lineId;
        shown = name;
        callingNumber = callPartyInfo->callingNumber;  // copies up to the NUL
    }

    std::string line;
    std::string shown;
    std::string callingNumber;
};

class MovesPayload : public CommunicationsServiceEventIfc
{
public:
    void onB2buaCSTAEventOrRequest(const std::string&, std::string& cstaMessage) override
    {
        last = std::move(cstaMessage);  // allowed here: the text is not const
    }

    std::string last;
};

class WaitsWrong : public CommunicationsServiceEventIfc
{
public:
    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        std::unique_lock<std::mutex> lock(mutex);
        service->retrieveCall(lineId, callId);
        changed.wait(lock, [this] { return retrieved; });  // for ever
    }

    void onCallRetrievedEvent(const std::string&, int, const std::string&, const std::string&,
                              const std::string&, int, int, bool) override
    {
        const std::lock_guard<std::mutex> lock(mutex);
        retrieved = true;
        changed.notify_all();
    }

    CommunicationsServiceIfc* service;
    std::mutex mutex;
    std::condition_variable changed;
    bool retrieved;
};

class WaitsRight : public CommunicationsServiceEventIfc
{
public:
    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        service->retrieveCall(lineId, callId);
    }

    void onCallRetrievedEvent(const std::string& lineId, int callId, const std::string&,
                              const std::string&, const std::string&, int, int, bool) override
    {
        goOnWith(lineId, callId);
    }

    virtual void goOnWith(const std::string& lineId, int callId) = 0;

    CommunicationsServiceIfc* service;
};

class LocksWrong : public CommunicationsServiceEventIfc
{
public:
    void answer(int callId)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        service->answerCall("1001", callId);  // the lock is held for as long as the service takes
        active = callId;
    }

    void onCallStateChangeEvent(const std::string&, int callId, int, int, int, const std::string&,
                                const std::string&, const std::string&, CallPartyInfo*, int, int,
                                const std::string&, bool, int, int) override
    {
        const std::lock_guard<std::mutex> lock(mutex);
        active = callId;
    }

    CommunicationsServiceIfc* service;
    std::mutex mutex;
    int active;
};

class LocksRight : public LocksWrong
{
public:
    void answer(int callId)
    {
        if (service->answerCall("1001", callId) != sfiSuccess)
            return;
        const std::lock_guard<std::mutex> lock(mutex);
        active = callId;
    }
};

class ThrowsRight : public CommunicationsServiceEventIfc
{
public:
    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        try
        {
            show(lineId, callId);
        }
        catch (const std::exception& error)
        {
            std::cerr << "cannot show the held call: " << error.what() << "\n";
        }
    }

    virtual void show(const std::string& lineId, int callId) = 0;
};

void wrongResult(CommunicationsServiceIfc& service)
{
    if (service.answerCall("1001", 12))  // 1 to 4 are failures, and success is not 0
        std::cout << "answered\n";
    if (service.holdCall("1001", 12, static_cast<sfiFeature>(1), true) == 0)
        std::cout << "held\n";  // failed
}

void rightResult(CommunicationsServiceIfc& service)
{
    if (service.answerCall("1001", 12) == sfiSuccess)
        std::cout << "answered\n";
}

void wrongQuery(CommunicationsServiceIfc& service)
{
    sfiServiceState state;
    service.getServiceState(state);  // not set when the query fails
    std::cout << serialize(state) << "\n";
}

void rightQuery(CommunicationsServiceIfc& service)
{
    sfiServiceState state;
    if (service.getServiceState(state) == sfiSuccess)
        std::cout << serialize(state) << "\n";
}

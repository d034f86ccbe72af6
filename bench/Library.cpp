// The library as built, opened as the framework opens it, and the reference implementation.

#include "CommunicationsServiceIfc.h"
#include "bench/Bench.h"
#include "bench/Entrants.h"
#include "bench/Messages.h"
#include "bench/Reference.h"
#include "framework/Proxy.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

// The classes behind the factories, as far as they can be seen from outside.
class CommunicationsServiceProxy : public Proxy, public CommunicationsServiceIfc
{
};

class CommunicationsServiceEventInvoker : public Invoker
{
};

namespace
{

template <typename Object>
std::shared_ptr<Object> create(void* library, const char* factory)
{
    void* const symbol = library != nullptr ? dlsym(library, factory) : nullptr;
    if (symbol == nullptr)
    {
        std::fprintf(stderr, "bench: %s\n", dlerror());
        std::exit(EXIT_FAILURE);
    }
    return std::shared_ptr<Object>(reinterpret_cast<Object* (*)()>(symbol)());
}

template <typename Operations>
void addRequest(const std::string& name, const std::string& answer,
                std::function<std::shared_ptr<Operations>(Channel&)> connect,
                void (*ask)(Operations&))
{
    const auto channel = std::make_shared<Channel>(answer);
    add(name, [channel, operations = connect(*channel), ask] { ask(*operations); });
}

std::string repeated(const std::string& piece, std::size_t size)
{
    std::string text;
    while (text.size() < size)
        text += piece;
    return text;
}

std::string head(const Message& message)
{
    return Message{message.method, {}, ""}.text();
}

/// Texts of about `size` bytes that are long, or made to cost much: name, event or answer, text.
struct Growing
{
    std::string name;
    bool isAnswer;
    std::string (*text)(std::size_t size);
};

/// What the others are given as well.
const std::string unknownInFront = "growth.unknownInFront";

const Growing growing[] = {
    {"growth.document", false,
     [](std::size_t size)
     {
         return "<Method>conferenceStatusEvent</Method><LineID>1001</LineID><CallID>1</CallID>"
                "<XMLContent>" +
                repeated("<user entity=\"sip:1002@example.com\"><state>on</state></user>", size) +
                "</XMLContent>";
     }},
    {unknownInFront, false,
     [](std::size_t size) { return callState.withUnknownInFront(size).text(); }},
    {"growth.unknownBehind", false,
     [](std::size_t size) { return callState.withUnknownBehind(size).text(); }},
    {"growth.brackets", false,
     [](std::size_t size) { return head(callState) + repeated("<", size); }},
    {"growth.beginnings", false,
     [](std::size_t size) { return head(callState) + repeated("<CallI", size); }},
    {"growth.openTags", false,
     [](std::size_t size) { return head(callState) + repeated("<ILLocalLevel>1<LineID>", size); }},
    {"growth.openItems", true, [](std::size_t size) { return repeated("<", size); }},
    {"growth.items", true, [](std::size_t size) { return deviceList(size / 14); }},
};

template <typename Operations>
void addRequests(const std::string& who,
                 std::function<std::shared_ptr<Operations>(Channel&)> connect)
{
    addRequest<Operations>("answerCall/" + who, "sfiSuccess", connect,
                           [](Operations& to) { got(to.answerCall(line, callId)); });
    addRequest<Operations>(
        "outgoingCallMake/" + who, "sfiSuccess", connect,
        [](Operations& to)
        { got(to.outgoingCallMake(line, callId, destination, true, false, true)); });
    addRequest<Operations>(
        "setForwardingConfiguration/" + who, "sfiSuccess", connect,
        [](Operations& to)
        { got(to.setForwardingConfiguration(line, sfiForwardingType(1), true, uri, 3, false)); });
    addRequest<Operations>("SendCSTARequest.2KiB/" + who, "sfiSuccess", connect,
                           [](Operations& to) { got(to.SendCSTARequest(line, payload)); });
    addRequest<Operations>(
        "getForwardingConfiguration/" + who, forwardingAnswer.text(), connect,
        [](Operations& to)
        {
            bool status = false;
            std::string text;
            int rings = 0;
            got(to.getForwardingConfiguration(sfiForwardingType(1), status, text, rings), status,
                text, rings);
        });
    addRequest<Operations>("getMessageWaitingIndicator/" + who, messageWaitingAnswer.text(),
                           connect,
                           [](Operations& to)
                           {
                               int n[4] = {};
                               unsigned int c[4] = {};
                               std::string number;
                               got(to.getMessageWaitingIndicator(n[0], c[0], c[1], c[2], c[3], n[1],
                                                                 n[2], n[3], number),
                                   n[0], c[0], c[1], c[2], c[3], n[1], n[2], n[3], number);
                           });
    const auto getDevices = [](Operations& to)
    {
        std::vector<std::string> items;
        const int result = to.getDevices(items);
        got(result, items);
    };
    for (const std::size_t items : {0, 12, 1000})
    {
        const std::string name = "getDevices." + std::to_string(items);
        addRequest<Operations>(name + "/" + who, deviceList(items), connect, getDevices);
        addRequest<Operations>(name + ".long/" + who, deviceList(items, deviceDomain), connect,
                               getDevices);
    }
    if (who != "reference" && measuresGrowth)
        for (const Growing& row : growing)
            for (std::size_t size = smallest; row.isAnswer && size <= largest; size *= 4)
                addRequest<Operations>(row.name + ("." + std::to_string(size)) + "/" + who,
                                       row.text(size), connect, getDevices);
}

void addEvent(const std::string& name, const std::shared_ptr<Invoker>& invoker,
              const std::string& text)
{
    add(name,
        [invoker, text] {
            invoker->handleMessage(&subscriber, text.c_str(), static_cast<int>(text.size()),
                                   &response);
        });
}

/// Different messages in turn, so that nothing can be learnt by heart.
void addEvents(const std::string& name, const std::shared_ptr<Invoker>& invoker,
               const std::vector<Message>& messages)
{
    std::vector<std::string> texts;
    for (const Message& message : messages)
        texts.push_back(message.text());
    add(name,
        [invoker, texts, turn = std::make_shared<std::size_t>(0)]
        {
            const std::string& text = texts[(*turn)++ % texts.size()];
            invoker->handleMessage(&subscriber, text.c_str(), static_cast<int>(text.size()),
                                   &response);
        });
}

void addEvents(const std::string& who, const std::shared_ptr<Invoker>& invoker)
{
    addEvent("DevicesChangedEvent/" + who, invoker, devicesChanged.text());
    addEvent("CallHeldEvent/" + who, invoker, callHeld.text());
    addEvent("CallStateChangeEvent.18/" + who, invoker, callState.text());
    addEvents("CallStateChangeEvent.18.different/" + who, invoker, callState.varied(256));
    addEvent("CallStateChangeEvent.3of18/" + who, invoker, callState.first(3).text());
    addEvent("CallStateChangeEvent.18.swapped/" + who, invoker, callState.swapped(6, 7).text());
    addEvent("CallStateChangeEvent.18.reverse/" + who, invoker, callState.reversed().text());
    addEvent("IncomingCallEvent.17/" + who, invoker, incomingCall.text());
    addEvent("b2buaCSTAResponse.2KiB/" + who, invoker, cstaResponse.text());
    addEvent("securityStatusChanged/" + who, invoker, securityStatus.text());
    if (measuresGrowth)
        for (const Growing& row : growing)
            for (std::size_t size = smallest; !row.isAnswer && size <= largest; size *= 4)
                if (who != "reference" || row.name == unknownInFront)
                    addEvent(row.name + ("." + std::to_string(size)) + "/" + who, invoker,
                             row.text(size));
}

}  // namespace

void addLibrary(const std::string& who, const std::string& path)
{
    void* const library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    addRequests<CommunicationsServiceIfc>(who,
                                          [library](Channel& channel)
                                          {
                                              const auto proxy = create<CommunicationsServiceProxy>(
                                                  library, "createCommunicationsServiceProxy");
                                              proxy->initProxy(channel);
                                              return proxy;
                                          });
    addEvents(who, create<CommunicationsServiceEventInvoker>(
                       library, "createCommunicationsServiceEventInvoker"));
}

void addReference()
{
    addRequests<ReferenceProxy>("reference", [](Channel& channel)
                                { return std::make_shared<ReferenceProxy>(channel); });
    addEvents("reference", std::make_shared<ReferenceInvoker>());
}

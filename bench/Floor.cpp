// What cannot be avoided: for a request one allocation of the final size and one copy of the bytes;
// for an event one pass over the bytes, which copies them into the text that handlers are given, the
// strings and the record that the callback is given, and the calls. Nothing is searched, nothing is
// converted: where the values stand is known beforehand.

#include "bench/Bench.h"
#include "bench/Entrants.h"
#include "bench/Messages.h"

#include <cstdlib>

namespace
{

/// A message and where its values are.
struct Located
{
    explicit Located(const Message& message) : text(message.text())
    {
        for (const Message::Field& field : message.fields)
        {
            const std::string tag = "<" + field.tag + ">";
            places.push_back({text.find(tag) + tag.size(), field.value.size()});
        }
    }

    std::string value(const std::string& from, std::size_t i) const
    {
        return std::string(from, places[i].begin, places[i].length);
    }

    std::string_view view(const std::string& from, std::size_t i) const
    {
        return {from.data() + places[i].begin, places[i].length};
    }

    struct Place
    {
        std::size_t begin;
        std::size_t length;
    };

    std::string text;
    std::vector<Place> places;
};

template <typename Read>
void addRequest(const std::string& name, const std::string& answer, Read read)
{
    const std::string request = requests.at(name).text();
    const std::shared_ptr<ProxyRequest> channel = std::make_shared<Channel>(answer);
    add(name + "/floor",
        [channel, request, read]
        {
            const std::string copy(request);
            std::string answered;
            channel->sendRequest(copy, answered);
            read(answered);
        });
}

template <typename Tell>
void addEvent(const std::string& name, const Message& message, Tell tell)
{
    CommunicationsServiceEventIfc* to = &subscriber;
    InvokerResponse* told = &response;
    benchmark::DoNotOptimize(to);
    benchmark::DoNotOptimize(told);
    add(name + "/floor",
        [to, told, from = Located(message), tell]
        {
            std::string text(from.text.c_str());
            tell(*to, from, text);
            told->messageHandled();
        });
}

}  // namespace

void addFloor()
{
    for (const char* name :
         {"answerCall", "outgoingCallMake", "setForwardingConfiguration", "SendCSTARequest.2KiB"})
        addRequest(name, "sfiSuccess", [](const std::string&) { got(5); });
    addRequest("getForwardingConfiguration", forwardingAnswer.text(),
               [from = Located(forwardingAnswer)](const std::string& answer)
               {
                   const std::string text = from.value(answer, 2);
                   got(5, true, text, 3);
               });
    addRequest("getMessageWaitingIndicator", messageWaitingAnswer.text(),
               [from = Located(messageWaitingAnswer)](const std::string& answer)
               {
                   const std::string number = from.value(answer, 9);
                   got(5, 1, 3U, 12U, 1U, 2U, 4, 5, 1, number);
               });
    for (const std::size_t count : {0, 12, 1000})
        for (const bool isLong : {false, true})
        {
            const std::string domain = isLong ? deviceDomain : "";
            const std::size_t length = devices[0].size() + domain.size();
            addRequest("getDevices." + std::to_string(count) + (isLong ? ".long" : ""),
                       deviceList(count, domain),
                       [count, length](const std::string& answer)
                       {
                           std::vector<std::string> items;
                           items.reserve(count);
                           for (std::size_t i = 0; i < count; ++i)
                               items.emplace_back(answer, 1 + i * (length + 2), length);
                           got(5, items);
                       });
        }

    using Ifc = CommunicationsServiceEventIfc;
    add("crossCast/floor", [] { benchmark::DoNotOptimize(&callbacks(&subscriber)); });
    addEvent("DevicesChangedEvent", devicesChanged,
             [](Ifc& to, const Located&, std::string&) { to.onDevicesChangedEvent(); });
    addEvent("CallHeldEvent", callHeld,
             [](Ifc& to, const Located& from, std::string& text)
             { to.onCallHeldEvent(from.value(text, 0), 4711); });
    addEvent("CallStateChangeEvent.18", callState,
             [](Ifc& to, const Located& from, std::string& text)
             {
                 auto* const record =
                     static_cast<CallPartyInfo*>(std::malloc(sizeof(CallPartyInfo)));
                 fill(*record, from.view(text, 8), from.view(text, 9), from.view(text, 10),
                      from.view(text, 11));
                 to.onCallStateChangeEvent(from.value(text, 0), 4711, 6, 22, 1, from.value(text, 5),
                                           from.value(text, 6), from.value(text, 7), record, 2, 0,
                                           from.value(text, 14), true, 3, 4);
                 std::free(record);
             });
    addEvent("CallStateChangeEvent.3of18", callState.first(3),
             [](Ifc& to, const Located& from, std::string& text)
             {
                 CallPartyInfo* const record =
                     static_cast<CallPartyInfo*>(std::calloc(1, sizeof(CallPartyInfo)));
                 to.onCallStateChangeEvent(from.value(text, 0), 4711, 6, -1, -1, "", "", "", record,
                                           -1, -1, "", true, -1, -1);
                 std::free(record);
             });
    addEvent("IncomingCallEvent.17", incomingCall,
             [](Ifc& to, const Located& from, std::string& text)
             {
                 to.onIncomingCallEvent(
                     from.value(text, 0), 4711, from.value(text, 2), from.value(text, 3),
                     from.value(text, 4), from.value(text, 5), from.value(text, 6), false, 1,
                     from.value(text, 9), from.value(text, 10), 3, false, 2, 3, 4, true);
             });
    addEvent("b2buaCSTAResponse.2KiB", cstaResponse,
             [](Ifc& to, const Located& from, std::string& text)
             {
                 const std::string lineURI = from.value(text, 0);
                 text.erase(0, from.text.size() - payload.size());
                 to.onB2buaCSTAResponse(lineURI, true, text);
             });
    addEvent("securityStatusChanged", securityStatus,
             [](Ifc& to, const Located& from, std::string& text)
             {
                 std::vector<int> ids = {4711, 4712};
                 std::vector<std::string> uris = {std::string(text, from.places[4].begin, 12),
                                                  std::string(text, from.places[4].begin + 13, 12)};
                 to.onSecurityStatusChanged(from.value(text, 0), 4711, 2, ids, uris);
             });
}

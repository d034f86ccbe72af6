// nlohmann JSON: one object with the fields in it; texts are read by reference, without a copy.

#include "bench/Bench.h"

#include <nlohmann/json.hpp>

#include <cstring>

namespace
{

using Json = nlohmann::json;

template <typename Value>
void put(Json& to, const char* tag, const Value& value)
{
    to[tag] = value;
}

/// Fields that come more than once become an array.
std::string document(const Message& message)
{
    Json json = Json::object();
    if (!message.method.empty())
        json["Method"] = message.method;
    for (const Message::Field& field : message.fields)
    {
        const Json value = field.isNumber ? Json(std::stoi(field.value)) : Json(field.value);
        if (field.tag == "item" || field.tag == "id" || field.tag == "uri.")
            json[field.tag].push_back(value);
        else
            json[field.tag] = value;
    }
    if (!message.payload.empty())
        json["payload"] = message.payload;
    return json.dump();
}

struct Fields
{
    explicit Fields(const std::string& from) : root(Json::parse(from)) {}

    const std::string& value(const char* tag) const
    {
        return root.at(tag).get_ref<const std::string&>();
    }
    int number(const char* tag) const { return root.at(tag).get<int>(); }

    Json root;
};

template <typename Write, typename Read>
void addRequest(const std::string& name, const std::string& answer, Write write, Read read)
{
    const std::shared_ptr<ProxyRequest> channel = std::make_shared<Channel>(answer);
    add(name + "/nlohmann",
        [channel, write, read]
        {
            Json request;
            write(request);
            std::string answered;
            channel->sendRequest(request.dump(), answered);
            read(answered);
        });
}

template <typename Tell>
void addEvent(const std::string& name, const Message& message, Tell tell)
{
    add(name + "/nlohmann",
        [bytes = document(message), tell]
        {
            const Fields fields(bytes);
            if (!fields.value("Method").empty())
                tell(callbacks(&subscriber), fields);
            response.messageHandled();
        });
}

void tellCallState(CommunicationsServiceEventIfc& to, const Fields& e)
{
    CallPartyInfo record;
    record.reservedText1[0] = record.reservedText2[0] = '\0';
    record.reservedText3[0] = record.reservedText4[0] = '\0';
    record.reservedNumber = 0;
    std::strcpy(record.callingNumber, e.value("GPUCLG").c_str());
    std::strcpy(record.callingName, e.value("GPUCLGName").c_str());
    std::strcpy(record.calledNumber, e.value("GPUCLD").c_str());
    std::strcpy(record.calledName, e.value("GPUCLDName").c_str());
    to.onCallStateChangeEvent(e.value("LineID"), e.number("CallID"), e.number("CallState"),
                              e.number("Reason"), e.number("SendOptions"), e.value("URI"),
                              e.value("Name"), e.value("FullPAI"), &record,
                              e.number("ResourcePriority"), e.number("PreemptionCause"),
                              e.value("PreemptionText"), e.number("CallBackFearureAvailable") != 0,
                              e.number("ILCallLevel"), e.number("ILLocalLevel"));
}

void word(const std::string& answer)
{
    Touch().heard("", answer == "sfiSuccess");
}

}  // namespace

void addNlohmann()
{
    using Ifc = CommunicationsServiceEventIfc;
    addRequest(
        "answerCall", "sfiSuccess",
        [](Json& r)
        {
            put(r, "Method", "AnswerCall");
            put(r, "Line", line);
            put(r, "CallID", callId);
        },
        word);
    addRequest(
        "outgoingCallMake", "sfiSuccess",
        [](Json& r)
        {
            put(r, "Method", "OutgoingCallMakeRequest");
            put(r, "Line", line);
            put(r, "CallID", callId);
            put(r, "Destination", destination);
            put(r, "DSSDirectCall", 1);
            put(r, "BridgeCall", 0);
            put(r, "CallCompletionCall", 1);
        },
        word);
    addRequest(
        "setForwardingConfiguration", "sfiSuccess",
        [](Json& r)
        {
            put(r, "Method", "setForwardingConfiguration");
            put(r, "Line", line);
            put(r, "fwType", 1);
            put(r, "status", 1);
            put(r, "uri", uri);
            put(r, "cfnrRingCount", 3);
            put(r, "forceTKVSUpdate", 0);
        },
        word);
    addRequest(
        "SendCSTARequest.2KiB", "sfiSuccess",
        [](Json& r)
        {
            put(r, "Method", "SendCSTARequest");
            put(r, "Line", line);
            put(r, "payload", payload);
        },
        word);
    addRequest(
        "getForwardingConfiguration", document(forwardingAnswer),
        [](Json& r)
        {
            put(r, "Method", "getForwardingConfiguration");
            put(r, "fwType", 1);
        },
        [](const std::string& answer)
        {
            const Fields a(answer);
            const std::string text = a.value("uri");
            Touch().heard("", a.value("sfiResult") == "sfiSuccess", a.number("status"), text,
                          a.number("cfnrRingCount"));
        });
    addRequest(
        "getMessageWaitingIndicator", document(messageWaitingAnswer),
        [](Json& r) { put(r, "Method", "GetMessageWaitingIndicator"); },
        [](const std::string& answer)
        {
            const Fields a(answer);
            const std::string number = a.value("voiceMailNumber");
            Touch().heard("", a.value("func_return_val") == "sfiSuccess", a.number("Type"),
                          a.number("newMsgs"), a.number("oldMsgs"), a.number("newUrgMsgs"),
                          a.number("oldUrgMsgs"), a.number("return_type"),
                          a.number("available_info"), a.number("messages_waiting"), number);
        });
    Message list;
    for (const std::string& device : devices)
        list.fields.push_back({"item", device, false});
    addRequest(
        "getDevices.12", document(list), [](Json& r) { put(r, "Method", "GetDevices"); },
        [](const std::string& answer)
        {
            const Fields a(answer);
            std::vector<std::string> items;
            for (const Json& item : a.root.at("item"))
                items.push_back(item.get_ref<const std::string&>());
            Touch().heard("", items);
        });

    addEvent("DevicesChangedEvent", devicesChanged,
             [](Ifc& to, const Fields&) { to.onDevicesChangedEvent(); });
    addEvent("CallHeldEvent", callHeld,
             [](Ifc& to, const Fields& e)
             { to.onCallHeldEvent(e.value("LineID"), e.number("CallID")); });
    addEvent("CallStateChangeEvent.18", callState, tellCallState);
    addEvent("IncomingCallEvent.17", incomingCall,
             [](Ifc& to, const Fields& e)
             {
                 to.onIncomingCallEvent(
                     e.value("LineID"), e.number("CallID"), e.value("URI"), e.value("Name"),
                     e.value("FullPAI"), e.value("AlertInformation_AlertURI"),
                     e.value("AlertInformation_InfoParam"),
                     e.number("AlertInformation_AutoAnswer") != 0, e.number("CallType"),
                     e.value("DiversionURI"), e.value("DiversionName"), e.number("DiversionReason"),
                     e.number("AICSZIPAutoAnswer") != 0, e.number("ResourcePriority"),
                     e.number("ILCallLevel"), e.number("ILLocalLevel"),
                     e.number("IsVideoCall") != 0);
             });
    addEvent("b2buaCSTAResponse.2KiB", cstaResponse,
             [](Ifc& to, const Fields& e)
             {
                 std::string text = e.value("payload");
                 to.onB2buaCSTAResponse(e.value("lineURI"), e.number("success") != 0, text);
             });
    Message security = securityStatus;
    security.fields.resize(3);
    for (const char* id : {"4711", "4712"})
        security.fields.push_back({"id", id, true});
    for (const char* lineUri : {"498970001001", "498970001002"})
        security.fields.push_back({"uri.", lineUri, false});
    addEvent("securityStatusChanged", security,
             [](Ifc& to, const Fields& e)
             {
                 std::vector<int> ids;
                 for (const Json& item : e.root.at("id"))
                     ids.push_back(item.get<int>());
                 std::vector<std::string> uris;
                 for (const Json& item : e.root.at("uri."))
                     uris.push_back(item.get_ref<const std::string&>());
                 to.onSecurityStatusChanged(e.value("lineURI"), e.number("callId"),
                                            e.number("securityStatus"), ids, uris);
             });
}

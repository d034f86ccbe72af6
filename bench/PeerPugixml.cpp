// pugixml: a root element with the fields in it, parsed in place as its manual recommends for speed,
// and looked up by name.

#include "bench/Bench.h"

#include <pugixml.hpp>

#include <cstring>

namespace
{

struct Writer : pugi::xml_writer
{
    void write(const void* data, std::size_t size) override
    {
        text.append(static_cast<const char*>(data), size);
    }

    std::string text;
};

std::string printed(const pugi::xml_document& document)
{
    Writer writer;
    document.print(writer, "", pugi::format_raw | pugi::format_no_declaration);
    return writer.text;
}

template <typename Value>
void put(pugi::xml_node& to, const char* tag, const Value& value)
{
    to.append_child(tag).text().set(value);
}

void put(pugi::xml_node& to, const char* tag, const std::string& value)
{
    put(to, tag, value.c_str());
}

/// The message as pugixml itself writes it, so that what must be escaped is.
std::string document(const Message& message)
{
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("message");
    if (!message.method.empty())
        put(root, "Method", message.method);
    for (const Message::Field& field : message.fields)
        put(root, field.tag.c_str(), field.value);
    if (!message.payload.empty())
        put(root, "payload", message.payload);
    return printed(document);
}

/// The fields of a parsed message.
struct Fields
{
    explicit Fields(const std::string& from) : text(from)
    {
        parsed.load_buffer_inplace(&text[0], text.size());
        root = parsed.document_element();
    }

    const char* value(const char* tag) const { return root.child(tag).child_value(); }
    int number(const char* tag) const { return root.child(tag).text().as_int(-1); }

    std::string text;
    pugi::xml_document parsed;
    pugi::xml_node root;
};

template <typename Write, typename Read>
void addRequest(const std::string& name, const std::string& answer, Write write, Read read)
{
    const std::shared_ptr<ProxyRequest> channel = std::make_shared<Channel>(answer);
    add(name + "/pugixml",
        [channel, write, read]
        {
            pugi::xml_document request;
            pugi::xml_node root = request.append_child("message");
            write(root);
            std::string answered;
            channel->sendRequest(printed(request), answered);
            read(answered);
        });
}

template <typename Tell>
void addEvent(const std::string& name, const Message& message, Tell tell)
{
    add(name + "/pugixml",
        [bytes = document(message), tell]
        {
            const Fields fields(bytes);
            if (std::strcmp(fields.value("Method"), "") != 0)
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
    std::strcpy(record.callingNumber, e.value("GPUCLG"));
    std::strcpy(record.callingName, e.value("GPUCLGName"));
    std::strcpy(record.calledNumber, e.value("GPUCLD"));
    std::strcpy(record.calledName, e.value("GPUCLDName"));
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

void addPugixml()
{
    using Ifc = CommunicationsServiceEventIfc;
    addRequest(
        "answerCall", "sfiSuccess",
        [](pugi::xml_node& r)
        {
            put(r, "Method", "AnswerCall");
            put(r, "Line", line);
            put(r, "CallID", callId);
        },
        word);
    addRequest(
        "outgoingCallMake", "sfiSuccess",
        [](pugi::xml_node& r)
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
        [](pugi::xml_node& r)
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
        [](pugi::xml_node& r)
        {
            put(r, "Method", "SendCSTARequest");
            put(r, "Line", line);
            put(r, "payload", payload);
        },
        word);
    addRequest(
        "getForwardingConfiguration", document(forwardingAnswer),
        [](pugi::xml_node& r)
        {
            put(r, "Method", "getForwardingConfiguration");
            put(r, "fwType", 1);
        },
        [](const std::string& answer)
        {
            const Fields a(answer);
            const std::string text = a.value("uri");
            Touch().heard("", std::strcmp(a.value("sfiResult"), "sfiSuccess") == 0,
                          a.number("status"), text, a.number("cfnrRingCount"));
        });
    addRequest(
        "getMessageWaitingIndicator", document(messageWaitingAnswer),
        [](pugi::xml_node& r) { put(r, "Method", "GetMessageWaitingIndicator"); },
        [](const std::string& answer)
        {
            const Fields a(answer);
            const std::string number = a.value("voiceMailNumber");
            Touch().heard("", std::strcmp(a.value("func_return_val"), "sfiSuccess") == 0,
                          a.number("Type"), a.number("newMsgs"), a.number("oldMsgs"),
                          a.number("newUrgMsgs"), a.number("oldUrgMsgs"), a.number("return_type"),
                          a.number("available_info"), a.number("messages_waiting"), number);
        });
    Message list;
    for (const std::string& device : devices)
        list.fields.push_back({"item", device, false});
    addRequest(
        "getDevices.12", document(list), [](pugi::xml_node& r) { put(r, "Method", "GetDevices"); },
        [](const std::string& answer)
        {
            const Fields a(answer);
            std::vector<std::string> items;
            for (const pugi::xml_node& item : a.root.children("item"))
                items.push_back(item.child_value());
            Touch().heard("", items);
        });

    addEvent("DevicesChangedEvent", devicesChanged,
             [](Ifc& to, const Fields&) { to.onDevicesChangedEvent(); });
    addEvent("CallHeldEvent", callHeld,
             [](Ifc& to, const Fields& e)
             { to.onCallHeldEvent(e.value("LineID"), e.number("CallID")); });
    addEvent("CallStateChangeEvent.18", callState, tellCallState);
    addEvent("CallStateChangeEvent.18.reverse", callState.reversed(), tellCallState);
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
        security.fields.push_back({"uri", lineUri, false});
    addEvent("securityStatusChanged", security,
             [](Ifc& to, const Fields& e)
             {
                 std::vector<int> ids;
                 for (const pugi::xml_node& item : e.root.children("id"))
                     ids.push_back(item.text().as_int());
                 std::vector<std::string> uris;
                 for (const pugi::xml_node& item : e.root.children("uri"))
                     uris.push_back(item.child_value());
                 to.onSecurityStatusChanged(e.value("lineURI"), e.number("callId"),
                                            e.number("securityStatus"), ids, uris);
             });
}

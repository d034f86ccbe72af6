#ifndef BENCH_DOCUMENT_PEER_H
#define BENCH_DOCUMENT_PEER_H

#include "bench/Bench.h"
#include "bench/Messages.h"

#include <string_view>

/// A peer whose messages are documents: fields by name, in one element or object. `Format` has
///   Document, written by put(tag, text or number), add() for tags that come again, and text();
///   Fields, parsed from a string, with view(tag), text(tag), number(tag), texts(tag), numbers(tag);
///   values(request), for the comparison before anything is measured.
template <typename Format>
class DocumentPeer
{
    using Document = typename Format::Document;
    using Fields = typename Format::Fields;

public:
    explicit DocumentPeer(std::string who) : who_(std::move(who)) {}

    void addRequests()
    {
        const auto done = [](const std::string& answer) { got(answer == "sfiSuccess" ? 5 : 0); };
        addRequest(
            "answerCall", "sfiSuccess",
            [](Document& request)
            { put(request, "Method", "AnswerCall", "Line", line, "CallID", callId); },
            done);
        addRequest(
            "outgoingCallMake", "sfiSuccess",
            [](Document& request)
            {
                put(request, "Method", "OutgoingCallMakeRequest", "Line", line, "CallID", callId,
                    "Destination", destination, "DSSDirectCall", 1, "BridgeCall", 0,
                    "CallCompletionCall", 1);
            },
            done);
        addRequest(
            "setForwardingConfiguration", "sfiSuccess",
            [](Document& request)
            {
                put(request, "Method", "setForwardingConfiguration", "Line", line, "fwType", 1,
                    "status", 1, "uri", uri, "cfnrRingCount", 3, "forceTKVSUpdate", 0);
            },
            done);
        addRequest(
            "SendCSTARequest.2KiB", "sfiSuccess",
            [](Document& request)
            { put(request, "Method", "SendCSTARequest", "Line", line, "payload", payload); },
            done);
        addRequest(
            "getForwardingConfiguration", text(forwardingAnswer),
            [](Document& request)
            { put(request, "Method", "getForwardingConfiguration", "fwType", 1); },
            [](const std::string& answer)
            {
                const Fields a(answer);
                const std::string text = a.text("uri");
                got(a.view("sfiResult") == success ? 5 : 0, a.number("status") != 0, text,
                    a.number("cfnrRingCount"));
            });
        addRequest(
            "getMessageWaitingIndicator", text(messageWaitingAnswer),
            [](Document& request) { put(request, "Method", "GetMessageWaitingIndicator"); },
            [](const std::string& answer)
            {
                const Fields a(answer);
                const std::string number = a.text("voiceMailNumber");
                got(a.view("func_return_val") == success ? 5 : 0, a.number("Type"),
                    unsigned(a.number("newMsgs")), unsigned(a.number("oldMsgs")),
                    unsigned(a.number("newUrgMsgs")), unsigned(a.number("oldUrgMsgs")),
                    a.number("return_type"), a.number("available_info"),
                    a.number("messages_waiting"), number);
            });
        Message list;
        for (const std::string& device : devices)
            list.fields.push_back({"item", device, false});
        addRequest(
            "getDevices.12", text(list),
            [](Document& request) { put(request, "Method", "GetDevices"); },
            [](const std::string& answer) { got(5, Fields(answer).texts("item")); });
    }

    void addEvents()
    {
        addEvent("DevicesChangedEvent", devicesChanged,
                 [](Ifc& to, const Fields&) { to.onDevicesChangedEvent(); });
        addEvent("CallHeldEvent", callHeld,
                 [](Ifc& to, const Fields& e)
                 { to.onCallHeldEvent(e.text("LineID"), e.number("CallID")); });
        addCallState("CallStateChangeEvent.18", callState);
        addEvent("IncomingCallEvent.17", incomingCall,
                 [](Ifc& to, const Fields& e)
                 {
                     to.onIncomingCallEvent(
                         e.text("LineID"), e.number("CallID"), e.text("URI"), e.text("Name"),
                         e.text("FullPAI"), e.text("AlertInformation_AlertURI"),
                         e.text("AlertInformation_InfoParam"),
                         e.number("AlertInformation_AutoAnswer") != 0, e.number("CallType"),
                         e.text("DiversionURI"), e.text("DiversionName"),
                         e.number("DiversionReason"), e.number("AICSZIPAutoAnswer") != 0,
                         e.number("ResourcePriority"), e.number("ILCallLevel"),
                         e.number("ILLocalLevel"), e.number("IsVideoCall") != 0);
                 });
        addEvent("b2buaCSTAResponse.2KiB", cstaResponse,
                 [](Ifc& to, const Fields& e)
                 {
                     std::string text = e.text("payload");
                     to.onB2buaCSTAResponse(e.text("lineURI"), e.number("success") != 0, text);
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
                     std::vector<int> ids = e.numbers("id");
                     std::vector<std::string> uris = e.texts("uri");
                     to.onSecurityStatusChanged(e.text("lineURI"), e.number("callId"),
                                                e.number("securityStatus"), ids, uris);
                 });
    }

    void addCallState(const std::string& name, const Message& message)
    {
        addEvent(name, message,
                 [](Ifc& to, const Fields& e)
                 {
                     CallPartyInfo record;
                     fill(record, e.view("GPUCLG"), e.view("GPUCLGName"), e.view("GPUCLD"),
                          e.view("GPUCLDName"));
                     to.onCallStateChangeEvent(
                         e.text("LineID"), e.number("CallID"), e.number("CallState"),
                         e.number("Reason"), e.number("SendOptions"), e.text("URI"), e.text("Name"),
                         e.text("FullPAI"), &record, e.number("ResourcePriority"),
                         e.number("PreemptionCause"), e.text("PreemptionText"),
                         e.number("CallBackFearureAvailable") != 0, e.number("ILCallLevel"),
                         e.number("ILLocalLevel"));
                 });
    }

private:
    using Ifc = CommunicationsServiceEventIfc;
    static constexpr std::string_view success = "sfiSuccess";

    static void put(Document&) {}

    /// Tags, and the value of each.
    template <typename Value, typename... More>
    static void put(Document& request, const char* tag, const Value& value, const More&... more)
    {
        request.put(tag, value);
        put(request, more...);
    }

    /// The message as the format itself writes it, so that what must be escaped is.
    static std::string text(const Message& message)
    {
        Document document;
        if (!message.method.empty())
            document.put("Method", message.method);
        for (const Message::Field& field : message.fields)
        {
            if (field.isNumber)
                document.add(field.tag, std::stoi(field.value));
            else
                document.add(field.tag, field.value);
        }
        if (!message.payload.empty())
            document.put("payload", message.payload);
        return document.text();
    }

    template <typename Write, typename Read>
    void addRequest(const std::string& name, const std::string& answer, Write write, Read read)
    {
        const std::shared_ptr<ProxyRequest> channel = std::make_shared<Channel>(answer);
        add(
            name + "/" + who_,
            [channel, write, read]
            {
                Document request;
                write(request);
                std::string answered;
                channel->sendRequest(request.text(), answered);
                read(answered);
            },
            &Format::values);
    }

    template <typename Tell>
    void addEvent(const std::string& name, const Message& message, Tell tell)
    {
        add(name + "/" + who_,
            [bytes = text(message), tell]
            {
                const Fields fields(bytes);
                if (!fields.view("Method").empty())
                    tell(callbacks(&subscriber), fields);
                response.messageHandled();
            });
    }

    std::string who_;
};

#endif

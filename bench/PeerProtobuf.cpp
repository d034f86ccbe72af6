// protobuf: "protobuf" makes a fresh message each time, "protobuf.reused" keeps one, as its manual
// recommends.

#include "bench/Bench.h"
#include "bench/Entrants.h"
#include "bench/Messages.h"
#include "messages.pb.h"

#include <cstdlib>

namespace
{

void fill(google::protobuf::Message& to, const Message& from)
{
    for (const Message::Field& field : from.fields)
    {
        const auto* const described = to.GetDescriptor()->FindFieldByName(field.tag);
        const auto* const reflection = to.GetReflection();
        if (described == nullptr || described->is_repeated())
            continue;
        if (described->type() == google::protobuf::FieldDescriptor::TYPE_STRING)
            reflection->SetString(&to, described, field.value);
        else if (described->type() == google::protobuf::FieldDescriptor::TYPE_BOOL)
            reflection->SetBool(&to, described, field.value != "0");
        else
            reflection->SetInt32(&to, described,
                                 field.isNumber ? std::atoi(field.value.c_str()) : 5);
    }
}

/// All that the one field of a request says, which is the message of its operation.
std::vector<std::string> values(const std::string& bytes)
{
    using Field = google::protobuf::FieldDescriptor;
    peer::Request request;
    request.ParseFromString(bytes);
    std::vector<const Field*> operations;
    request.GetReflection()->ListFields(request, &operations);
    std::vector<std::string> all;
    if (operations.size() != 1)
        return all;
    const google::protobuf::Message& message =
        request.GetReflection()->GetMessage(request, operations[0]);
    const google::protobuf::Reflection& fields = *message.GetReflection();
    for (int i = 0; i < message.GetDescriptor()->field_count(); ++i)
    {
        const Field* field = message.GetDescriptor()->field(i);
        all.push_back(field->cpp_type() == Field::CPPTYPE_STRING ? fields.GetString(message, field)
                      : field->cpp_type() == Field::CPPTYPE_BOOL
                          ? std::to_string(fields.GetBool(message, field))
                          : std::to_string(fields.GetInt32(message, field)));
    }
    return all;
}

template <typename Write, typename Read>
void addRequest(const std::string& name, const peer::Answer& answer, Write write, Read read)
{
    const std::shared_ptr<ProxyRequest> channel =
        std::make_shared<Channel>(answer.SerializeAsString());
    add(
        name + "/protobuf",
        [channel, write, read]
        {
            peer::Request request;
            write(request);
            std::string answered;
            channel->sendRequest(request.SerializeAsString(), answered);
            peer::Answer fresh;
            fresh.ParseFromString(answered);
            read(fresh);
        },
        values);
    const auto request = std::make_shared<peer::Request>();
    const auto text = std::make_shared<std::string>();
    const auto parsed = std::make_shared<peer::Answer>();
    add(
        name + "/protobuf.reused",
        [channel, write, read, request, text, parsed]
        {
            request->Clear();
            write(*request);
            request->SerializeToString(text.get());
            std::string answered;
            channel->sendRequest(*text, answered);
            parsed->ParseFromString(answered);
            read(*parsed);
        },
        values);
}

void tell(CommunicationsServiceEventIfc& to, peer::Event& event)
{
    if (event.has_devices_changed())
        to.onDevicesChangedEvent();
    else if (event.has_call_held())
        to.onCallHeldEvent(event.call_held().lineid(), event.call_held().callid());
    else if (event.has_call_state())
    {
        const peer::CallStateChangeEvent& e = event.call_state();
        CallPartyInfo record;
        fill(record, e.gpuclg(), e.gpuclgname(), e.gpucld(), e.gpucldname());
        to.onCallStateChangeEvent(
            e.lineid(), e.callid(), e.callstate(), e.reason(), e.sendoptions(), e.uri(), e.name(),
            e.fullpai(), &record, e.resourcepriority(), e.preemptioncause(), e.preemptiontext(),
            e.callbackfearureavailable() != 0, e.ilcalllevel(), e.illocallevel());
    }
    else if (event.has_incoming_call())
    {
        const peer::IncomingCallEvent& e = event.incoming_call();
        to.onIncomingCallEvent(
            e.lineid(), e.callid(), e.uri(), e.name(), e.fullpai(), e.alertinformation_alerturi(),
            e.alertinformation_infoparam(), e.alertinformation_autoanswer() != 0, e.calltype(),
            e.diversionuri(), e.diversionname(), e.diversionreason(), e.aicszipautoanswer() != 0,
            e.resourcepriority(), e.ilcalllevel(), e.illocallevel(), e.isvideocall() != 0);
    }
    else if (event.has_csta_response())
    {
        peer::CstaResponse& e = *event.mutable_csta_response();
        to.onB2buaCSTAResponse(e.lineuri(), e.success() != 0, *e.mutable_payload());
    }
    else if (event.has_security_status())
    {
        const peer::SecurityStatus& e = event.security_status();
        std::vector<int> ids(e.call_ids().begin(), e.call_ids().end());
        std::vector<std::string> uris(e.call_uris().begin(), e.call_uris().end());
        to.onSecurityStatusChanged(e.lineuri(), e.callid(), e.securitystatus(), ids, uris);
    }
}

void addEvent(const std::string& name, const peer::Event& event)
{
    const std::string bytes = event.SerializeAsString();
    add(name + "/protobuf",
        [bytes]
        {
            peer::Event fresh;
            fresh.ParseFromString(bytes);
            tell(callbacks(&subscriber), fresh);
            response.messageHandled();
        });
    const auto kept = std::make_shared<peer::Event>();
    add(name + "/protobuf.reused",
        [bytes, kept]
        {
            kept->ParseFromString(bytes);
            tell(callbacks(&subscriber), *kept);
            response.messageHandled();
        });
}

template <typename Part>
void addEvent(const std::string& name, Part* (peer::Event::*part)(), const Message& message)
{
    peer::Event event;
    fill(*(event.*part)(), message);
    addEvent(name, event);
}

}  // namespace

void addProtobuf()
{
    peer::Answer done;
    done.set_result(5);
    const auto look = [](const peer::Answer& answer) { got(answer.result()); };
    addRequest(
        "answerCall", done,
        [](peer::Request& request)
        {
            auto& r = *request.mutable_answer_call();
            r.set_line(line);
            r.set_call_id(callId);
        },
        look);
    addRequest(
        "outgoingCallMake", done,
        [](peer::Request& request)
        {
            auto& r = *request.mutable_outgoing_call_make();
            r.set_line(line);
            r.set_call_id(callId);
            r.set_destination(destination);
            r.set_dss_direct_call(true);
            r.set_bridge_call(false);
            r.set_call_completion_call(true);
        },
        look);
    addRequest(
        "setForwardingConfiguration", done,
        [](peer::Request& request)
        {
            auto& r = *request.mutable_set_forwarding();
            r.set_line(line);
            r.set_fw_type(1);
            r.set_status(true);
            r.set_uri(uri);
            r.set_cfnr_ring_count(3);
            r.set_force_tkvs_update(false);
        },
        look);
    addRequest(
        "SendCSTARequest.2KiB", done,
        [](peer::Request& request)
        {
            request.mutable_send_csta()->set_line(line);
            request.mutable_send_csta()->set_payload(payload);
        },
        look);

    peer::Answer answer;
    fill(*answer.mutable_forwarding(), forwardingAnswer);
    addRequest(
        "getForwardingConfiguration", answer,
        [](peer::Request& request) { request.mutable_get_forwarding()->set_fw_type(1); },
        [](const peer::Answer& answered)
        {
            const auto& a = answered.forwarding();
            const std::string text = a.uri();
            got(a.sfiresult(), a.status(), text, a.cfnrringcount());
        });
    answer.Clear();
    fill(*answer.mutable_message_waiting(), messageWaitingAnswer);
    addRequest(
        "getMessageWaitingIndicator", answer,
        [](peer::Request& request) { request.mutable_get_message_waiting(); },
        [](const peer::Answer& answered)
        {
            const auto& a = answered.message_waiting();
            const std::string number = a.voicemailnumber();
            got(a.func_return_val(), a.type(), unsigned(a.newmsgs()), unsigned(a.oldmsgs()),
                unsigned(a.newurgmsgs()), unsigned(a.oldurgmsgs()), a.return_type(),
                a.available_info(), a.messages_waiting(), number);
        });
    answer.Clear();
    for (const std::string& device : devices)
        answer.mutable_devices()->add_items(device);
    addRequest(
        "getDevices.12", answer, [](peer::Request& request) { request.mutable_get_devices(); },
        [](const peer::Answer& answered)
        {
            const auto& a = answered.devices().items();
            const std::vector<std::string> items(a.begin(), a.end());
            got(5, items);
        });

    peer::Event event;
    event.mutable_devices_changed();
    addEvent("DevicesChangedEvent", event);
    addEvent("CallHeldEvent", &peer::Event::mutable_call_held, callHeld);
    addEvent("CallStateChangeEvent.18", &peer::Event::mutable_call_state, callState);
    addEvent("IncomingCallEvent.17", &peer::Event::mutable_incoming_call, incomingCall);
    event.Clear();
    fill(*event.mutable_csta_response(), cstaResponse);
    event.mutable_csta_response()->set_payload(payload);
    addEvent("b2buaCSTAResponse.2KiB", event);
    event.Clear();
    auto& security = *event.mutable_security_status();
    fill(security, securityStatus);
    security.add_call_ids(4711);
    security.add_call_ids(4712);
    security.add_call_uris("498970001001");
    security.add_call_uris("498970001002");
    addEvent("securityStatusChanged", event);
}

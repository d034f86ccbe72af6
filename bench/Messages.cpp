#include "bench/Messages.h"

#include <algorithm>
#include <random>

namespace
{

/// A CSTA document of some 2 KiB.
std::string document()
{
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><SnapshotDeviceResponse>";
    for (int i = 0; i < 16; ++i)
        text += "<snapshotDeviceResponseInfo><callID>" + std::to_string(100 + i) +
                "</callID><deviceID>sip:1002@pbx.example.com</deviceID>"
                "<localConnectionState>connected</localConnectionState>";
    return text + "</SnapshotDeviceResponse>";
}

std::vector<Message::Field> unknown(std::size_t size)
{
    std::vector<Message::Field> fields;
    for (std::size_t i = 0; i * 40 < size; ++i)
        fields.push_back(
            {"Extension" + std::to_string(i % 100), "value" + std::to_string(i % 1000), false});
    return fields;
}

}  // namespace

const std::string line = "498970001001";
const std::string uri = "sip:1002@pbx.example.com";
const std::string payload = document();

const std::map<std::string, Message> requests = {
    {"answerCall", {"AnswerCall", {{"Line", line, false}, {"CallID", "4711", true}}, ""}},
    {"outgoingCallMake",
     {"OutgoingCallMakeRequest",
      {{"Line", line, false},
       {"CallID", "4711", true},
       {"Destination", destination, false},
       {"DSSDirectCall", "1", true},
       {"BridgeCall", "0", true},
       {"CallCompletionCall", "1", true}},
      ""}},
    {"setForwardingConfiguration",
     {"setForwardingConfiguration",
      {{"Line", line, false},
       {"fwType", "1", true},
       {"status", "1", true},
       {"uri", uri, false},
       {"cfnrRingCount", "3", true},
       {"forceTKVSUpdate", "0", true}},
      ""}},
    {"SendCSTARequest.2KiB", {"SendCSTARequest", {{"Line", line, false}}, payload}},
    {"getForwardingConfiguration", {"getForwardingConfiguration", {{"fwType", "1", true}}, ""}},
    {"getMessageWaitingIndicator", {"GetMessageWaitingIndicator", {}, ""}},
    {"getDevices.0", {"GetDevices", {}, ""}},
    {"getDevices.0.long", {"GetDevices", {}, ""}},
    {"getDevices.12", {"GetDevices", {}, ""}},
    {"getDevices.12.long", {"GetDevices", {}, ""}},
    {"getDevices.1000", {"GetDevices", {}, ""}},
    {"getDevices.1000.long", {"GetDevices", {}, ""}}};

const Message forwardingAnswer = {"",
                                  {{"sfiResult", "sfiSuccess", false},
                                   {"status", "1", true},
                                   {"uri", uri, false},
                                   {"cfnrRingCount", "3", true}},
                                  ""};

const Message messageWaitingAnswer = {"",
                                      {{"func_return_val", "sfiSuccess", false},
                                       {"Type", "1", true},
                                       {"newMsgs", "3", true},
                                       {"oldMsgs", "12", true},
                                       {"newUrgMsgs", "1", true},
                                       {"oldUrgMsgs", "2", true},
                                       {"return_type", "4", true},
                                       {"available_info", "5", true},
                                       {"messages_waiting", "1", true},
                                       {"voiceMailNumber", "+4989700019999", false}},
                                      ""};

const std::vector<std::string> devices = {
    "498970001001", "498970001002", "498970001003", "498970001004", "498970001005", "498970001006",
    "498970001007", "498970001008", "498970001009", "498970001010", "498970001011", "498970001012"};

const Message devicesChanged = {"DevicesChangedEvent", {}, ""};

const Message callHeld = {"CallHeldEvent", {{"LineID", line, false}, {"CallID", "4711", true}}, ""};

const Message callState = {
    "CallStateChangeEvent",
    {{"LineID", line, false},
     {"CallID", "4711", true},
     {"CallState", "6", true},
     {"Reason", "22", true},
     {"SendOptions", "1", true},
     {"URI", uri, false},
     {"Name", "Anna Muster", false},
     {"FullPAI", "\"Anna Muster\" <sip:1002@pbx.example.com;user=phone>", false},
     {"GPUCLG", "+4989700012345", false},
     {"GPUCLGName", "Anna Muster", false},
     {"GPUCLD", "+498970001001", false},
     {"GPUCLDName", "Reception", false},
     {"ResourcePriority", "2", true},
     {"PreemptionCause", "0", true},
     {"PreemptionText", "none", false},
     {"CallBackFearureAvailable", "1", true},
     {"ILCallLevel", "3", true},
     {"ILLocalLevel", "4", true}},
    ""};

const Message incomingCall = {
    "IncomingCallEvent",
    {{"LineID", line, false},
     {"CallID", "4711", true},
     {"URI", uri, false},
     {"Name", "Anna Muster", false},
     {"FullPAI", "\"Anna Muster\" <sip:1002@pbx.example.com;user=phone>", false},
     {"AlertInformation_AlertURI", "http://pbx.example.com/ring/internal.wav", false},
     {"AlertInformation_InfoParam", "alert-internal", false},
     {"AlertInformation_AutoAnswer", "0", true},
     {"CallType", "1", true},
     {"DiversionURI", "sip:1003@pbx.example.com", false},
     {"DiversionName", "Reception", false},
     {"DiversionReason", "3", true},
     {"AICSZIPAutoAnswer", "0", true},
     {"ResourcePriority", "2", true},
     {"ILCallLevel", "3", true},
     {"ILLocalLevel", "4", true},
     {"IsVideoCall", "1", true}},
    ""};

const Message cstaResponse = {
    "b2buaCSTAResponse", {{"lineURI", line, false}, {"success", "1", true}}, payload};

const Message securityStatus = {"securityStatusChanged",
                                {{"lineURI", line, false},
                                 {"callId", "4711", true},
                                 {"securityStatus", "2", true},
                                 {"CallIDsRecorded", "4711,4712,", false},
                                 {"CallLineURIsRecorded", "498970001001,498970001002,", false}},
                                ""};

std::string deviceList(std::size_t count, const std::string& domain)
{
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += "<" + devices[i % devices.size()] + domain + ">";
    return text;
}

std::string Message::text() const
{
    std::string text = method.empty() ? "" : "<Method>" + method + "</Method>";
    for (const Field& field : fields)
        text += "<" + field.tag + ">" + field.value + "</" + field.tag + ">";
    return text + payload;
}

Message Message::reversed() const
{
    Message message = *this;
    std::reverse(message.fields.begin(), message.fields.end());
    return message;
}

Message Message::swapped(std::size_t one, std::size_t other) const
{
    Message message = *this;
    std::swap(message.fields[one], message.fields[other]);
    return message;
}

Message Message::first(std::size_t count) const
{
    Message message = *this;
    message.fields.resize(count);
    return message;
}

Message Message::withUnknownInFront(std::size_t size) const
{
    Message message = *this;
    message.fields = unknown(size);
    message.fields.insert(message.fields.end(), fields.begin(), fields.end());
    return message;
}

Message Message::withUnknownBehind(std::size_t size) const
{
    Message message = *this;
    for (const Field& field : unknown(size))
        message.fields.push_back(field);
    return message;
}

std::vector<Message> Message::varied(std::size_t count) const
{
    std::mt19937 random(1);
    std::vector<Message> messages;
    for (std::size_t i = 0; i < count; ++i)
    {
        messages.push_back(*this);
        for (Field& field : messages.back().fields)
            if (field.isNumber)
                field.value = std::to_string(random() % (random() % 2 == 0 ? 10 : 10000));
            else
                field.value.insert(0, random() % 12, 'x');
    }
    return messages;
}

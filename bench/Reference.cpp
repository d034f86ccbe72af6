#include "bench/Reference.h"

#include "framework/Executable.h"
#include "framework/InvokerResponse.h"
#include "framework/ProxyRequest.h"
#include "framework/Serializer.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace
{

std::string open(const char* tag)
{
    return std::string("<") + tag + ">";
}

std::string close(const char* tag)
{
    return std::string("</") + tag + ">";
}

/// strtol, on a machine where long has 32 bits.
long toNumber(const std::string& text)
{
    return std::clamp<long>(std::strtol(text.c_str(), nullptr, 10), INT32_MIN, INT32_MAX);
}

// Fields of events: the end tag is searched behind the start tag.

bool find(const std::string& m, const char* tag, std::string& value)
{
    const std::size_t start = m.find(open(tag));
    if (start == std::string::npos)
        return false;
    const std::size_t begin = start + open(tag).size();
    const std::size_t end = m.find(close(tag), begin);
    if (end == std::string::npos)
        return false;
    value = m.substr(begin, end - begin);
    return true;
}

std::string text(const std::string& m, const char* tag)
{
    std::string value;
    find(m, tag, value);
    return value;
}

int number(const std::string& m, const char* tag)
{
    std::string value;
    return find(m, tag, value) ? static_cast<int>(toNumber(value)) : -1;
}

unsigned int count(const std::string& m, const char* tag)
{
    return static_cast<unsigned int>(number(m, tag));
}

bool flag(const std::string& m, const char* tag)
{
    return number(m, tag) != 0;
}

void cut(std::string& m, const char* tail)
{
    m.erase(0, static_cast<std::uint32_t>(m.find(tail)) + 9U);
}

// Fields of answers: the end tag is searched from the front.

bool findInAnswer(const std::string& m, const char* tag, std::string& value)
{
    const std::size_t start = m.find(open(tag));
    if (start == std::string::npos)
        return false;
    const std::size_t begin = start + open(tag).size();
    value = m.substr(begin, std::min(m.size() - begin, m.find(close(tag)) - begin));
    return true;
}

std::string answerText(const std::string& m, const char* tag)
{
    std::string value;
    findInAnswer(m, tag, value);
    return value;
}

int answerNumber(const std::string& m, const char* tag)
{
    std::string value;
    return findInAnswer(m, tag, value) ? static_cast<int>(toNumber(value)) : -1;
}

int answerTextNumber(const std::string& m, const char* tag)
{
    return static_cast<int>(toNumber(answerText(m, tag)));
}

int result(const std::string& word)
{
    if (word == "sfiSuccess")
        return 5;
    if (word == "sfiFailureCallBackInvalidState")
        return 1;
    if (word == "sfiFailureCallBackNoCallInfo")
        return 2;
    if (word == "sfiFailureCallBackToMany")
        return 3;
    if (word == "sfiFailureCallBackAllreadyExists")
        return 4;
    return 0;
}

void callStateChange(CommunicationsServiceEventIfc* to, const std::string& m)
{
    const std::string calling = text(m, "GPUCLG");
    const std::string callingName = text(m, "GPUCLGName");
    const std::string called = text(m, "GPUCLD");
    const std::string calledName = text(m, "GPUCLDName");
    char* const record = static_cast<char*>(std::malloc(sizeof(CallPartyInfo) + m.size() + 1));
    record[0] = record[81] = record[162] = record[223] = '\0';
    std::memset(record + 284, 0, 4);
    std::strcpy(record + 483, calling.c_str());
    std::strcpy(record + 418, callingName.c_str());
    std::strcpy(record + 353, called.c_str());
    std::strcpy(record + 288, calledName.c_str());
    to->onCallStateChangeEvent(
        text(m, "LineID"), number(m, "CallID"), number(m, "CallState"), number(m, "Reason"),
        number(m, "SendOptions"), text(m, "URI"), text(m, "Name"), text(m, "FullPAI"),
        reinterpret_cast<CallPartyInfo*>(record), number(m, "ResourcePriority"),
        number(m, "PreemptionCause"), text(m, "PreemptionText"),
        flag(m, "CallBackFearureAvailable"), number(m, "ILCallLevel"), number(m, "ILLocalLevel"));
    std::free(record);
}

void securityStatus(CommunicationsServiceEventIfc* to, const std::string& m)
{
    std::string list = text(m, "CallIDsRecorded");
    std::vector<int> ids;
    Serializer::deserialize(list, ids);
    list = text(m, "CallLineURIsRecorded");
    std::vector<std::string> uris = Serializer::deserialize(list);
    to->onSecurityStatusChanged(text(m, "lineURI"), number(m, "callId"),
                                number(m, "securityStatus"), ids, uris);
}

}  // namespace

void ReferenceInvoker::handleMessage(Executable* subscriber, const char* message, int,
                                     InvokerResponse* response)
{
    std::string m(message);
    CommunicationsServiceEventIfc* const to =
        dynamic_cast<CommunicationsServiceEventIfc*>(subscriber);
    if (to == nullptr)
        std::printf("CommunicationsServiceEventSvc == NULL");
    const std::string method = ::text(m, "Method");
    const auto begins = [&method](const char* name) { return method.find(name) == 0; };

    if (method == "CallStateChangeEvent")
        callStateChange(to, m);
    const auto text = [&m](const char* tag) { return ::text(m, tag); };
    const auto number = [&m](const char* tag) { return ::number(m, tag); };
    const auto count = [&m](const char* tag) { return ::count(m, tag); };
    const auto flag = [&m](const char* tag) { return ::flag(m, tag); };
    // clang-format off
    if (begins("RegistrationStateChangeEvent"))
        to->onRegistrationStateChangeEvent(text("LineID"), number("CallID"), flag("Registered"),
            number("RegistrationResult"));
    if (begins("IncomingCallEvent"))
        to->onIncomingCallEvent(text("LineID"), number("CallID"), text("URI"), text("Name"), text("FullPAI"),
            text("AlertInformation_AlertURI"), text("AlertInformation_InfoParam"), flag("AlertInformation_AutoAnswer"),
            number("CallType"), text("DiversionURI"), text("DiversionName"), number("DiversionReason"),
            flag("AICSZIPAutoAnswer"), number("ResourcePriority"), number("ILCallLevel"), number("ILLocalLevel"),
            flag("IsVideoCall"));
    if (begins("IncomingPickupCallEvent"))
        to->onIncomingPickupCallEvent(text("LineID"), number("CallID"), text("URI"), text("Name"), text("FullPAI"));
    if (begins("CallHeldEvent")) to->onCallHeldEvent(text("LineID"), number("CallID"));
    if (begins("CallRetrievedEvent"))
        to->onCallRetrievedEvent(text("LineID"), number("CallID"), text("URI"), text("Name"), text("FullPAI"),
            number("ILCallLevel"), number("ILLocalLevel"), flag("ConnectedToMediaServer"));
    if (begins("FeatureSuccessEvent")) to->onFeatureSuccessEvent(text("LineID"), number("CallID"), number("Feature"));
    if (begins("FeatureFailedEvent"))
        to->onFeatureFailedEvent(text("LineID"), number("CallID"), number("Feature"), number("FeatureFailure"));
    if (begins("RemoteEndpointDetailsChangedEvent"))
        to->onRemoteEndpointDetailsChangedEvent(text("LineID"), number("CallID"), text("URI"), text("Name"),
            text("FullPAI"), flag("exitConf"), flag("jointCall"));
    if (begins("IncomingCallMissedEvent"))
        to->onIncomingCallMissedEvent(text("LineID"), number("CallID"), text("URI"), text("Name"), text("FullPAI"),
            number("Reason"), text("DiversionURI"), text("DiversionName"), number("DiversionReason"));
    if (begins("CallForwardedEvent"))
        to->onCallForwardedEvent(text("LineID"), number("CallID"), text("CallingParty"), text("CallingPartyName"),
            text("CallingPartyFullPAI"), text("NewDestination"), number("Reason"));
    if (begins("DevicesChangedEvent")) to->onDevicesChangedEvent();
    if (begins("messageWaitingEvent"))
        to->onMessageWaitingEvent(text("LineID"), number("type"), count("new_messages"), count("old_messages"),
            count("new_urgent_messages"), count("old_urgent_messages"), number("return_type"), number("avail_info"),
            number("messages_waiting"), text("voiceMailNumber"));
    if (begins("DoNotDisturbEvent")) to->onDoNotDisturbEvent(text("deviceId"), flag("doNotDisturbOn"));
    if (begins("AgentStateEvent")) to->onAgentStateEvent(text("deviceId"), text("agentState"));
    if (begins("systemStatusEvent")) to->onSystemStatusEvent(text("status"), text("statusInfo"));
    if (begins("serverFeatureStatusEvent")) to->onServerFeatureStatusEvent(text("lineURI"), text("status"));
    if (begins("IncomingAssociatedCallEvent"))
        to->onIncomingAssociatedCallEvent(text("LineID"), number("CurrentCallID"), number("NewCallID"));
    if (begins("b2buaCSTAResponse"))
    {
        const std::string lineURI = text("lineURI");
        const bool success = flag("success");
        cut(m, "/success>");
        to->onB2buaCSTAResponse(lineURI, success, m);
    }
    if (begins("b2buaCSTAEventOrRequest"))
    {
        const std::string lineURI = text("lineURI");
        cut(m, "/lineURI>");
        to->onB2buaCSTAEventOrRequest(lineURI, m);
    }
    if (begins("conferenceStatusEvent"))
        to->onConferenceStatusEvent(text("LineID"), number("CallID"), text("XMLContent"));
    if (begins("securityStatusChanged"))
        securityStatus(to, m);
    if (begins("preemptionStatusChanged"))
        to->onPreemptionStatusChanged(text("lineURI"), number("callId"), number("priority"), number("cause"),
            text("reason"));
    if (begins("impactLevelChanged"))
        to->onImpactLevelChanged(text("lineURI"), number("callId"), number("ILCallLevel"), number("ILLocalLevel"));
    if (begins("callRecordingStatusEvent"))
        to->onCallRecordingStatusEvent(text("LineID"), number("callId"), text("callRecorded"));
    if (begins("callCompletionEvent"))
        to->onCallCompletionEvent(text("LineID"), text("URI"), number("CallCompletionType"),
            number("CallCompletionState"), flag("DisplayOutcomeCallUI"));
    if (begins("callCompletionFailedEvent"))
        to->onCallCompletionFailedEvent(text("LineID"), text("URI"), number("CallCompletionFailureType"));
    if (begins("bluetoothAudioStatusChanged"))
        to->onBluetoothAudioStatusChanged(text("LineID"), number("CallID"), flag("AudioEnabled"), flag("AudioGateway"),
            flag("InBandRinging"));
    // clang-format on
    if (response != nullptr)
        response->messageHandled();
}

int ReferenceProxy::answerCall(const std::string& line, int callId)
{
    std::ostringstream request;
    request << "<Method>AnswerCall</Method>";
    request << "<Line>" << line << "</Line>";
    request << "<CallID>" << callId << "</CallID>";
    std::string response;
    channel.sendRequest(request.str(), response);
    return result(response);
}

int ReferenceProxy::outgoingCallMake(const std::string& line, int callId, const char* destination,
                                     bool dssDirectCall, bool bridgeCall, bool callCompletionCall)
{
    std::ostringstream request;
    request << "<Method>OutgoingCallMakeRequest</Method>";
    request << "<Line>" << line << "</Line>";
    request << "<CallID>" << callId << "</CallID>";
    request << "<Destination>" << destination << "</Destination>";
    request << "<DSSDirectCall>" << dssDirectCall << "</DSSDirectCall>";
    request << "<BridgeCall>" << bridgeCall << "</BridgeCall>";
    request << "<CallCompletionCall>" << callCompletionCall << "</CallCompletionCall>";
    std::string response;
    channel.sendRequest(request.str(), response);
    return result(response);
}

int ReferenceProxy::setForwardingConfiguration(const std::string& line, sfiForwardingType fwType,
                                               bool status, const std::string& uri,
                                               int cfnrRingCount, bool forceTKVSUpdate)
{
    std::ostringstream request;
    request << "<Method>setForwardingConfiguration</Method>";
    request << "<Line>" << line << "</Line>";
    request << "<fwType>" << fwType << "</fwType>";
    request << "<status>" << status << "</status>";
    request << "<uri>" << uri << "</uri>";
    request << "<cfnrRingCount>" << cfnrRingCount << "</cfnrRingCount>";
    request << "<forceTKVSUpdate>" << forceTKVSUpdate << "</forceTKVSUpdate>";
    std::string response;
    channel.sendRequest(request.str(), response);
    return result(response);
}

int ReferenceProxy::SendCSTARequest(const std::string& line, const std::string& cstaRequest)
{
    std::ostringstream request;
    request << "<Method>SendCSTARequest</Method>";
    request << "<Line>" << line << "</Line>";
    request << cstaRequest;
    std::string response;
    channel.sendRequest(request.str(), response);
    return result(response);
}

int ReferenceProxy::getForwardingConfiguration(sfiForwardingType fwType, bool& status,
                                               std::string& uri, int& cfnrRingCount)
{
    std::ostringstream request;
    request << "<Method>getForwardingConfiguration</Method>";
    request << "<fwType>" << fwType << "</fwType>";
    std::string response;
    channel.sendRequest(request.str(), response);
    status = answerNumber(response, "status") != 0;
    cfnrRingCount = answerNumber(response, "cfnrRingCount");
    uri = answerText(response, "uri");
    return result(answerText(response, "sfiResult"));
}

int ReferenceProxy::getMessageWaitingIndicator(int& type, unsigned int& newMsgs,
                                               unsigned int& oldMsgs, unsigned int& newUrgMsgs,
                                               unsigned int& oldUrgMsgs, int& returnType,
                                               int& availableInfo, int& messagesWaiting,
                                               std::string& voiceMailNumber)
{
    std::string response;
    channel.sendRequest("<Method>GetMessageWaitingIndicator</Method>", response);
    voiceMailNumber = answerText(response, "voiceMailNumber");
    type = answerTextNumber(response, "Type");
    newMsgs = static_cast<unsigned int>(answerTextNumber(response, "newMsgs"));
    oldMsgs = static_cast<unsigned int>(answerTextNumber(response, "oldMsgs"));
    newUrgMsgs = static_cast<unsigned int>(answerTextNumber(response, "newUrgMsgs"));
    oldUrgMsgs = static_cast<unsigned int>(answerTextNumber(response, "oldUrgMsgs"));
    returnType = answerTextNumber(response, "return_type");
    availableInfo = answerTextNumber(response, "available_info");
    messagesWaiting = answerTextNumber(response, "messages_waiting");
    return result(answerText(response, "func_return_val"));
}

int ReferenceProxy::getDevices(std::vector<std::string>& devices)
{
    std::string response;
    channel.sendRequest("<Method>GetDevices</Method>", response);
    if (response == "sfiFailure")
        return 0;
    for (std::size_t at = response.find('<'); at != std::string::npos;
         at = response.find('<', at + 1))
    {
        const std::size_t end = response.find('>', at);
        if (end != std::string::npos)
            devices.push_back(response.substr(at + 1, end - at - 1));
    }
    return 5;
}

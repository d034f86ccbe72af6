#include "CommunicationsServiceProxy.h"

#include "FieldReaders.h"
#include "RequestText.h"
#include "framework/ClientUtils.h"
#include "framework/FrameworkContext.h"
#include "framework/Logging.h"
#include "framework/MarloException.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

namespace
{

// The time-out of the two operations that have one, in the framework's unit.
constexpr int timeout = 100000;

bool contains(const std::string& text, const char* word)
{
    return text.find(word) != std::string::npos;
}

// What log readers on the phone know this library's lines by: component, file, level and line stay as
// they are, wherever the calls stand.
constexpr int lineOfStart = 277;
constexpr int lineOfException = 298;
constexpr int lineOfEnd = 302;

void log(int line, const char* message)
{
    constexpr const char* component = "SIP Communications Service";
    constexpr int level = 5;
    if (loggingOnAppOxa(component, level) != 0)
        logAppOxa(component, "./src/CommunicationsServiceProxy.cpp", level, line, message);
}

}  // namespace

CommunicationsServiceProxy::CommunicationsServiceProxy() : requestChannel(nullptr) {}

CommunicationsServiceProxy::~CommunicationsServiceProxy() = default;

void CommunicationsServiceProxy::initProxy(ProxyRequest& channel)
{
    requestChannel = &channel;
    requestChannel->setProtocol("CommunicationsServiceProtocol");
}

void CommunicationsServiceProxy::ask(const RequestText& request, std::string& response)
{
    requestChannel->sendRequest(request.str(), response);
}

void CommunicationsServiceProxy::ask(std::string_view request, std::string& response)
{
    requestChannel->sendRequest(std::string(request), response);
}

int CommunicationsServiceProxy::roundTrip(const RequestText& request)
{
    std::string response;
    requestChannel->sendRequest(request.str(), response);
    return resultOf(response);
}

void CommunicationsServiceProxy::processSignallingComponentEvent(const char* data, int length)
{
    std::string message = "SigEvent:";
    // A negative length is far beyond any text. The standard libraries word this differently; callers
    // get one text everywhere.
    const std::size_t size = static_cast<std::size_t>(length);
    if (size > message.max_size() - message.size())
        throw std::length_error("basic_string::append");
    message.reserve(message.size() + size);
    message.append(data, size);
    requestChannel->sendOneWay(message);
}

int CommunicationsServiceProxy::activate()
{
    std::string response;
    requestChannel->sendRequestTimed("<Method>Activate</Method>", response, timeout);
    return resultOf(response);
}

int CommunicationsServiceProxy::deactivate(bool allowAutoActivate)
{
    return roundTrip(RequestText("Deactivate").flag("AllowAutoActivate", allowAutoActivate));
}

int CommunicationsServiceProxy::callClear(const std::string& line, int callId, CSTAEventCause cause)
{
    return roundTrip(
        RequestText("CallClearRequest", line, callId).number("Cause", static_cast<int>(cause)));
}

int CommunicationsServiceProxy::outgoingCallMake(const std::string& line, int callId,
                                                 const char* destination, bool dssDirectCall,
                                                 bool bridgeCall, bool callCompletionCall)
{
    return roundTrip(RequestText("OutgoingCallMakeRequest", line, callId)
                         .text("Destination", destination)
                         .flag("DSSDirectCall", dssDirectCall)
                         .flag("BridgeCall", bridgeCall)
                         .flag("CallCompletionCall", callCompletionCall));
}

int CommunicationsServiceProxy::acceptCall(const std::string& line, int callId, bool autoAnswer)
{
    return roundTrip(RequestText("AcceptCall", line, callId).flag("AutoAnswer", autoAnswer));
}

int CommunicationsServiceProxy::answerCall(const std::string& line, int callId)
{
    return roundTrip(RequestText("AnswerCall", line, callId));
}

int CommunicationsServiceProxy::deflectCall(const std::string& line, int callId,
                                            const char* destination)
{
    return roundTrip(RequestText("DeflectCall", line, callId).text("Destination", destination));
}

int CommunicationsServiceProxy::holdCall(const std::string& line, int callId,
                                         sfiFeature holdCallReason, bool manual)
{
    return roundTrip(RequestText("HoldCall", line, callId)
                         .number("HoldCallReason", holdCallReason)
                         .flag("Manual", manual));
}

int CommunicationsServiceProxy::retrieveCall(const std::string& line, int callId)
{
    return roundTrip(RequestText("RetrieveCall", line, callId));
}

int CommunicationsServiceProxy::consultationCall(const std::string& line, int callId,
                                                 const char* destination)
{
    return roundTrip(RequestText("Consult", line, callId).text("Destination", destination));
}

int CommunicationsServiceProxy::attendedTransferCall(const std::string& line, int activeCall,
                                                     int heldCall)
{
    return roundTrip(RequestText("AttendedTransfer", line)
                         .number("activeCall", activeCall)
                         .number("heldCall", heldCall));
}

int CommunicationsServiceProxy::blindTransferCall(const std::string& line, int callId,
                                                  const char* destination)
{
    return roundTrip(RequestText("BlindTransfer", line, callId).text("Destination", destination));
}

int CommunicationsServiceProxy::refuseCall(const std::string& line, int callId,
                                           sfiRefuseCall refuseCallReason)
{
    return roundTrip(
        RequestText("RefuseCall", line, callId).number("RefuseCallReason", refuseCallReason));
}

int CommunicationsServiceProxy::subscribe(Executable* subscriber)
{
    log(lineOfStart, "subscribe start");
    if (subscriber == nullptr)
        return sfiFailure;
    const std::string request = "<Method>Subscribe</Method>";
    std::string response;
    const std::string channelName = requestChannel->context->findChannel(subscriber);
    try
    {
        requestChannel->sendSubscribe(request, response, channelName, timeout);
    }
    catch (const MarloException& exception)
    {
        log(lineOfException, "subscribe exception caught:");
        // A copy, not the object that was caught.
        throw MarloException(exception);
    }
    log(lineOfEnd, "subscribe end");
    return resultOf(response);
}

int CommunicationsServiceProxy::SendCSTARequest(const std::string& line,
                                                const std::string& cstaRequest)
{
    return roundTrip(RequestText("SendCSTARequest", line).payload(cstaRequest));
}

void CommunicationsServiceProxy::InitializeOrFinalizeServerFeatures(const std::string& line,
                                                                    bool initialize)
{
    requestChannel->sendOneWay(RequestText("InitializeOrFinalizeServerFeatures", line)
                                   .flag("initialize", initialize)
                                   .str());
}

int CommunicationsServiceProxy::directedPickupCall(const std::string& line, int callId,
                                                   const std::string& callToBePickedUp,
                                                   bool blfPickup)
{
    return roundTrip(RequestText("DirectedPickupCall", line, callId)
                         .text("CallToBePickedUp", callToBePickedUp)
                         .flag("BLFPickup", blfPickup));
}

int CommunicationsServiceProxy::groupPickupCall(const std::string& line, int callId)
{
    return roundTrip(RequestText("GroupPickupCall", line, callId));
}

int CommunicationsServiceProxy::activateCallbackRinging(const std::string& line, int callId)
{
    return roundTrip(RequestText("ActivateCallbackRinging", line, callId));
}

int CommunicationsServiceProxy::activateCallbackBusy(const std::string& line, int callId)
{
    return roundTrip(RequestText("ActivateCallbackBusy", line, callId));
}

int CommunicationsServiceProxy::cancelCallbacks(const std::string& line, int callId,
                                                const std::string& uri,
                                                sfiCancelCallBackType cancelCallBackType,
                                                bool displayOutcomeCallUI)
{
    return roundTrip(RequestText("CancelCallbacks", line, callId)
                         .text("URI", uri)
                         .number("CancelCallBackType", cancelCallBackType)
                         .flag("DisplayOutcomeCallUI", displayOutcomeCallUI));
}

int CommunicationsServiceProxy::getDevices(std::vector<std::string>& devices)
{
    std::string response;
    ask("<Method>GetDevices</Method>", response);
    const std::string_view answer = response;
    if (answer == "sfiFailure")
        return sfiFailure;
    // An item reaches from each "<" to the next ">", also past another "<", on purpose.
    std::size_t open = answer.find('<');
    if (open == std::string_view::npos)
        return sfiSuccess;
    const std::size_t last = answer.rfind('>');
    if (last == std::string_view::npos || last < open)
        return sfiSuccess;
    // Room for all if they are as long as the first; not for very many, since they may not be.
    const std::size_t likely = (last + 1 - open) / (answer.find('>', open) + 1 - open);
    devices.reserve(devices.size() + std::min(likely, std::size_t{64}));
    for (; open < last; open = answer.find('<', open + 1))
        devices.emplace_back(answer.substr(open + 1, answer.find('>', open) - open - 1));
    return sfiSuccess;
}

int CommunicationsServiceProxy::setServiceState(sfiServiceState state)
{
    return roundTrip(RequestText("SetServiceState").text("state", serialize(state)));
}

int CommunicationsServiceProxy::getServiceState(sfiServiceState& state)
{
    std::string response = "false";
    ask("<Method>GetServiceState</Method>", response);
    if (contains(response, "sfiFailure"))
        return sfiFailure;
    for (const sfiServiceState known :
         {sfiServiceInService, sfiServiceOutOfService, sfiServiceDoNotDisturb})
        if (contains(response, stateName(known)))
        {
            state = known;
            return sfiSuccess;
        }
    return sfiFailure;
}

int CommunicationsServiceProxy::setDoNotDisturb(const std::string& line, bool doNotDisturbOn)
{
    return roundTrip(RequestText("SetDoNotDisturb", line).flag("doNotDisturbOn", doNotDisturbOn));
}

int CommunicationsServiceProxy::getDoNotDisturb(const std::string& deviceId, bool& doNotDisturbOn)
{
    std::string response = "false";
    ask(RequestText("GetDoNotDisturb").text("deviceID", deviceId), response);
    if (contains(response, "sfiFailure"))
        return sfiFailure;
    doNotDisturbOn = contains(response, "true");
    return sfiSuccess;
}

int CommunicationsServiceProxy::setMicrophoneMute(bool status)
{
    return roundTrip(RequestText("SetMicrophoneMute").flag("Status", status));
}

int CommunicationsServiceProxy::getMicrophoneMute(bool& muted)
{
    std::string response;
    ask("<Method>GetMicrophoneMute</Method>", response);
    if (contains(response, "sfiFailure"))
        return sfiFailure;
    muted = contains(response, "true");
    return sfiSuccess;
}

int CommunicationsServiceProxy::setAgentState(const std::string& line,
                                              const std::string& agentState)
{
    return roundTrip(RequestText("SetAgentState", line).text("agentState", agentState));
}

int CommunicationsServiceProxy::systemStatus(const char* systemStatus, const char* systemStatusInfo)
{
    return roundTrip(RequestText("SystemStatus")
                         .text("SystemStatus", systemStatus)
                         .text("SystemStatusInfo", systemStatusInfo));
}

int CommunicationsServiceProxy::generateDigits(const std::string& line, int activeCall,
                                               const char* digits)
{
    return roundTrip(RequestText("GenerateDigits", line)
                         .number("activeCall", activeCall)
                         .text("digits", digits));
}

int CommunicationsServiceProxy::conferenceCall(const std::string& line, int activeCall,
                                               int heldCall, sfiFeature feature)
{
    return roundTrip(RequestText("ConferenceCall", line)
                         .number("activeCall", activeCall)
                         .number("heldCall", heldCall)
                         .number("feature", feature));
}

void CommunicationsServiceProxy::RemoveConfParticipant(int callId,
                                                       const std::string& remoteParticipant,
                                                       const std::string& conferenceMemberId)
{
    requestChannel->sendOneWay(RequestText("RemoveConfParticipant")
                                   .text("callID", ClientUtils::itos(callId))
                                   .text("remoteParticipant", remoteParticipant)
                                   .text("conferenceMemberId", conferenceMemberId)
                                   .str());
}

bool CommunicationsServiceProxy::getManualHoldIndication(const std::string& line, int callId)
{
    std::string response;
    ask(RequestText("getManualHoldIndication", line, callId), response);
    return response == "true";
}

int CommunicationsServiceProxy::alternateCalls(const std::string& line)
{
    return roundTrip(RequestText("AlternateCalls", line));
}

int CommunicationsServiceProxy::getMessageWaitingIndicator(
    int& type, unsigned int& newMsgs, unsigned int& oldMsgs, unsigned int& newUrgMsgs,
    unsigned int& oldUrgMsgs, int& returnType, int& availableInfo, int& messagesWaiting,
    std::string& voiceMailNumber)
{
    std::string response;
    ask("<Method>GetMessageWaitingIndicator</Method>", response);
    AnswerFields answer;
    const std::string_view& result = answer.view("func_return_val");
    // Here an absent number is 0, on purpose: these are texts, converted afterwards.
    const int& typeText = answer.numberOfText("Type");
    const unsigned int& newText = answer.countOfText("newMsgs");
    const unsigned int& oldText = answer.countOfText("oldMsgs");
    const unsigned int& newUrgText = answer.countOfText("newUrgMsgs");
    const unsigned int& oldUrgText = answer.countOfText("oldUrgMsgs");
    const int& returnTypeText = answer.numberOfText("return_type");
    const int& availableInfoText = answer.numberOfText("available_info");
    const int& messagesWaitingText = answer.numberOfText("messages_waiting");
    const std::string_view& voiceMailNumberText = answer.view("voiceMailNumber");
    answer.read(response);
    voiceMailNumber = voiceMailNumberText;  // first: it alone can fail
    type = typeText;
    newMsgs = newText;
    oldMsgs = oldText;
    newUrgMsgs = newUrgText;
    oldUrgMsgs = oldUrgText;
    returnType = returnTypeText;
    availableInfo = availableInfoText;
    messagesWaiting = messagesWaitingText;
    return resultOf(result);
}

int CommunicationsServiceProxy::setAssociatedCalls(bool associated)
{
    return roundTrip(RequestText("setAssociatedCalls").flag("associated", associated));
}

int CommunicationsServiceProxy::setLampMode(const std::string& line, const std::string& lampId,
                                            int lampMode)
{
    return roundTrip(
        RequestText("setLampMode", line).text("lampId", lampId).number("lampMode", lampMode));
}

int CommunicationsServiceProxy::makeSecurityChangeReinvite(const std::string& line, int callId,
                                                           bool forceFlag)
{
    return roundTrip(
        RequestText("makeSecurityChangeReinvite", line, callId).flag("forceFlag", forceFlag));
}

int CommunicationsServiceProxy::setForwardingConfiguration(const std::string& line,
                                                           sfiForwardingType fwType, bool status,
                                                           const std::string& uri,
                                                           int cfnrRingCount, bool forceTKVSUpdate)
{
    return roundTrip(RequestText("setForwardingConfiguration", line)
                         .number("fwType", fwType)
                         .flag("status", status)
                         .text("uri", uri)
                         .number("cfnrRingCount", cfnrRingCount)
                         .flag("forceTKVSUpdate", forceTKVSUpdate));
}

int CommunicationsServiceProxy::getForwardingConfiguration(sfiForwardingType fwType, bool& status,
                                                           std::string& uri, int& cfnrRingCount)
{
    std::string response;
    ask(RequestText("getForwardingConfiguration").number("fwType", fwType), response);
    AnswerFields answer;
    const std::string_view& result = answer.view("sfiResult");
    const bool& statusFlag = answer.flag("status");
    const std::string_view& uriText = answer.view("uri");
    const int& ringCount = answer.number("cfnrRingCount");
    answer.read(response);
    uri = uriText;  // first: it alone can fail
    status = statusFlag;
    cfnrRingCount = ringCount;
    return resultOf(result);
}

void CommunicationsServiceProxy::setIsInServiceInitiatedState(const std::string& line,
                                                              bool isInServiceInitiatedState)
{
    requestChannel->sendOneWay(
        RequestText("setIsInServiceInitiatedState", line)
            .text("IsInServiceInitiatedState", isInServiceInitiatedState ? "TRUE" : "FALSE")
            .str());
}

void CommunicationsServiceProxy::callbackDOFeatureCallID(const std::string& callId, int instanceId)
{
    requestChannel->sendOneWay(RequestText("callbackDOFeatureCallID")
                                   .text("CallID", callId)
                                   .text("instanceId", ClientUtils::itos(instanceId))
                                   .str());
}

bool CommunicationsServiceProxy::isCallHoldPossible(const std::string& line)
{
    std::string response;
    ask(RequestText("isCallHoldPossible", line), response);
    return response == "true";
}

std::string CommunicationsServiceProxy::csCommunicationsService(const char*)
{
    return std::string();
}

void CommunicationsServiceProxy::activateStoredFwd() {}

void CommunicationsServiceProxy::sendUACSTAServerMessage(std::string& line,
                                                         std::string& serverMessage)
{
    requestChannel->sendOneWay(
        RequestText("SendUACSTAServerMessage", line).payload(serverMessage).str());
}

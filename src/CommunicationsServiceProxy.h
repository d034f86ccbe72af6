#ifndef COMMUNICATIONS_SERVICE_PROXY_H
#define COMMUNICATIONS_SERVICE_PROXY_H

#include "CommunicationsServiceIfc.h"
#include "framework/Proxy.h"
#include "framework/ProxyRequest.h"

#include <string_view>

class RequestText;

/// The request side: writes each operation as a request text, hands it to the framework's channel
/// and reads the answer. Keeps nothing but the pointer to the channel, which is not owned.
///
/// The framework calls through this class's own table, which continues that of Proxy in the order
/// below; applications call through CommunicationsServiceIfc, whose order is another one. No
/// operation checks for a missing channel, on purpose.
class COMMUNICATIONS_SERVICE_VISIBLE CommunicationsServiceProxy : public Proxy,
                                                                  public CommunicationsServiceIfc
{
public:
    CommunicationsServiceProxy();
    ~CommunicationsServiceProxy() override;

    void initProxy(ProxyRequest& channel) override;

    void processSignallingComponentEvent(const char* data, int length) override;
    int activate() override;
    int deactivate(bool allowAutoActivate) override;
    int callClear(const std::string& line, int callId, CSTAEventCause cause) override;
    int outgoingCallMake(const std::string& line, int callId, const char* destination,
                         bool dssDirectCall, bool bridgeCall, bool callCompletionCall) override;
    int acceptCall(const std::string& line, int callId, bool autoAnswer) override;
    int answerCall(const std::string& line, int callId) override;
    int deflectCall(const std::string& line, int callId, const char* destination) override;
    int holdCall(const std::string& line, int callId, sfiFeature holdCallReason,
                 bool manual) override;
    int retrieveCall(const std::string& line, int callId) override;
    int consultationCall(const std::string& line, int callId, const char* destination) override;
    int attendedTransferCall(const std::string& line, int activeCall, int heldCall) override;
    int blindTransferCall(const std::string& line, int callId, const char* destination) override;
    int refuseCall(const std::string& line, int callId, sfiRefuseCall refuseCallReason) override;
    int subscribe(Executable* subscriber) override;
    int SendCSTARequest(const std::string& line, const std::string& cstaRequest) override;
    void InitializeOrFinalizeServerFeatures(const std::string& line, bool initialize) override;
    int directedPickupCall(const std::string& line, int callId, const std::string& callToBePickedUp,
                           bool blfPickup) override;
    int groupPickupCall(const std::string& line, int callId) override;
    int activateCallbackRinging(const std::string& line, int callId) override;
    int activateCallbackBusy(const std::string& line, int callId) override;
    int cancelCallbacks(const std::string& line, int callId, const std::string& uri,
                        sfiCancelCallBackType cancelCallBackType,
                        bool displayOutcomeCallUI) override;
    int getDevices(std::vector<std::string>& devices) override;
    int setServiceState(sfiServiceState state) override;
    int getServiceState(sfiServiceState& state) override;
    int setDoNotDisturb(const std::string& line, bool doNotDisturbOn) override;
    int getDoNotDisturb(const std::string& deviceId, bool& doNotDisturbOn) override;
    int setMicrophoneMute(bool status) override;
    int getMicrophoneMute(bool& muted) override;
    int setAgentState(const std::string& line, const std::string& agentState) override;
    int systemStatus(const char* systemStatus, const char* systemStatusInfo) override;
    int generateDigits(const std::string& line, int activeCall, const char* digits) override;
    int conferenceCall(const std::string& line, int activeCall, int heldCall,
                       sfiFeature feature) override;
    void RemoveConfParticipant(int callId, const std::string& remoteParticipant,
                               const std::string& conferenceMemberId) override;
    bool getManualHoldIndication(const std::string& line, int callId) override;
    int alternateCalls(const std::string& line) override;
    int getMessageWaitingIndicator(int& type, unsigned int& newMsgs, unsigned int& oldMsgs,
                                   unsigned int& newUrgMsgs, unsigned int& oldUrgMsgs,
                                   int& returnType, int& availableInfo, int& messagesWaiting,
                                   std::string& voiceMailNumber) override;
    int setAssociatedCalls(bool associated) override;
    int setLampMode(const std::string& line, const std::string& lampId, int lampMode) override;
    int makeSecurityChangeReinvite(const std::string& line, int callId, bool forceFlag) override;
    int setForwardingConfiguration(const std::string& line, sfiForwardingType fwType, bool status,
                                   const std::string& uri, int cfnrRingCount,
                                   bool forceTKVSUpdate) override;
    int getForwardingConfiguration(sfiForwardingType fwType, bool& status, std::string& uri,
                                   int& cfnrRingCount) override;
    void setIsInServiceInitiatedState(const std::string& line,
                                      bool isInServiceInitiatedState) override;
    void callbackDOFeatureCallID(const std::string& callId, int instanceId) override;
    bool isCallHoldPossible(const std::string& line) override;
    std::string csCommunicationsService(const char* name) override;
    void activateStoredFwd() override;
    void sendUACSTAServerMessage(std::string& line, std::string& serverMessage) override;

    /// Result code of an answer: the whole text must be one of the known words, else it is 0.
    static int getResult(const std::string& response);

    /// Field readers for answers. The end tag is searched from the start of the message, on
    /// purpose: one that is missing or stands before the value lets the value run to the end.
    /// Absent: "" and -1. Numbers saturate at the 32-bit limits.
    static std::string getParamAsString(const std::string& startTag, const std::string& message,
                                        const std::string& endTag);
    static long getParamAsLong(const std::string& startTag, const std::string& message,
                               const std::string& endTag);

private:
    /// Sends the request and leaves the answer in `response`, which goes to the channel as it is.
    void ask(const RequestText& request, std::string& response);

    /// The same for a request without fields.
    void ask(std::string_view request, std::string& response);

    /// Sends the request and returns the result code of the answer.
    int roundTrip(const RequestText& request);

    ProxyRequest* requestChannel;
};

#endif

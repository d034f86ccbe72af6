#ifndef KIT_TESTING_MOCK_COMMUNICATIONS_SERVICE_H
#define KIT_TESTING_MOCK_COMMUNICATIONS_SERVICE_H

#include "CommunicationsServiceIfc.h"

#include <gmock/gmock.h>

namespace kit
{

/// The request interface for an application's unit tests with GMock. Operations with a result return
/// sfiSuccess unless a test says otherwise. Link CommunicationsService::Mocks.
class MockCommunicationsService : public CommunicationsServiceIfc
{
public:
    MockCommunicationsService();
    ~MockCommunicationsService();

    MOCK_METHOD(void, processSignallingComponentEvent, (const char* data, int length), (override));
    MOCK_METHOD(int, activate, (), (override));
    MOCK_METHOD(int, deactivate, (bool allowAutoActivate), (override));
    MOCK_METHOD(int, callClear, (const std::string& line, int callId, CSTAEventCause cause),
                (override));
    MOCK_METHOD(int, outgoingCallMake,
                (const std::string& line, int callId, const char* destination, bool dssDirectCall,
                 bool bridgeCall, bool callCompletionCall),
                (override));
    MOCK_METHOD(int, acceptCall, (const std::string& line, int callId, bool autoAnswer),
                (override));
    MOCK_METHOD(int, answerCall, (const std::string& line, int callId), (override));
    MOCK_METHOD(int, deflectCall, (const std::string& line, int callId, const char* destination),
                (override));
    MOCK_METHOD(int, holdCall,
                (const std::string& line, int callId, sfiFeature holdCallReason, bool manual),
                (override));
    MOCK_METHOD(int, retrieveCall, (const std::string& line, int callId), (override));
    MOCK_METHOD(int, attendedTransferCall, (const std::string& line, int activeCall, int heldCall),
                (override));
    MOCK_METHOD(int, blindTransferCall,
                (const std::string& line, int callId, const char* destination), (override));
    MOCK_METHOD(int, SendCSTARequest, (const std::string& line, const std::string& cstaRequest),
                (override));
    MOCK_METHOD(void, sendUACSTAServerMessage, (std::string & line, std::string& serverMessage),
                (override));
    MOCK_METHOD(void, InitializeOrFinalizeServerFeatures,
                (const std::string& line, bool initialize), (override));
    MOCK_METHOD(int, activateCallbackRinging, (const std::string& line, int callId), (override));
    MOCK_METHOD(int, activateCallbackBusy, (const std::string& line, int callId), (override));
    MOCK_METHOD(int, cancelCallbacks,
                (const std::string& line, int callId, const std::string& uri,
                 sfiCancelCallBackType cancelCallBackType, bool displayOutcomeCallUI),
                (override));
    MOCK_METHOD(int, consultationCall,
                (const std::string& line, int callId, const char* destination), (override));
    MOCK_METHOD(int, refuseCall,
                (const std::string& line, int callId, sfiRefuseCall refuseCallReason), (override));
    MOCK_METHOD(int, subscribe, (Executable * subscriber), (override));
    MOCK_METHOD(int, directedPickupCall,
                (const std::string& line, int callId, const std::string& callToBePickedUp,
                 bool blfPickup),
                (override));
    MOCK_METHOD(int, groupPickupCall, (const std::string& line, int callId), (override));
    MOCK_METHOD(int, setServiceState, (sfiServiceState state), (override));
    MOCK_METHOD(int, getServiceState, (sfiServiceState & state), (override));
    MOCK_METHOD(int, setDoNotDisturb, (const std::string& line, bool doNotDisturbOn), (override));
    MOCK_METHOD(int, getDoNotDisturb, (const std::string& deviceId, bool& doNotDisturbOn),
                (override));
    MOCK_METHOD(int, setAgentState, (const std::string& line, const std::string& agentState),
                (override));
    MOCK_METHOD(int, setMicrophoneMute, (bool status), (override));
    MOCK_METHOD(int, getMicrophoneMute, (bool& muted), (override));
    MOCK_METHOD(int, systemStatus, (const char* systemStatus, const char* systemStatusInfo),
                (override));
    MOCK_METHOD(int, generateDigits, (const std::string& line, int activeCall, const char* digits),
                (override));
    MOCK_METHOD(int, getDevices, (std::vector<std::string> & devices), (override));
    MOCK_METHOD(int, conferenceCall,
                (const std::string& line, int activeCall, int heldCall, sfiFeature feature),
                (override));
    MOCK_METHOD(void, RemoveConfParticipant,
                (int callId, const std::string& remoteParticipant,
                 const std::string& conferenceMemberId),
                (override));
    MOCK_METHOD(bool, getManualHoldIndication, (const std::string& line, int callId), (override));
    MOCK_METHOD(int, alternateCalls, (const std::string& line), (override));
    MOCK_METHOD(int, getMessageWaitingIndicator,
                (int& type, unsigned int& newMsgs, unsigned int& oldMsgs, unsigned int& newUrgMsgs,
                 unsigned int& oldUrgMsgs, int& returnType, int& availableInfo,
                 int& messagesWaiting, std::string& voiceMailNumber),
                (override));
    MOCK_METHOD(int, setAssociatedCalls, (bool associated), (override));
    MOCK_METHOD(int, setLampMode,
                (const std::string& line, const std::string& lampId, int lampMode), (override));
    MOCK_METHOD(int, makeSecurityChangeReinvite,
                (const std::string& line, int callId, bool forceFlag), (override));
    MOCK_METHOD(void, setIsInServiceInitiatedState,
                (const std::string& line, bool isInServiceInitiatedState), (override));
    MOCK_METHOD(int, setForwardingConfiguration,
                (const std::string& line, sfiForwardingType fwType, bool status,
                 const std::string& uri, int cfnrRingCount, bool forceTKVSUpdate),
                (override));
    MOCK_METHOD(int, getForwardingConfiguration,
                (sfiForwardingType fwType, bool& status, std::string& uri, int& cfnrRingCount),
                (override));
    MOCK_METHOD(void, callbackDOFeatureCallID, (const std::string& callId, int instanceId),
                (override));
    MOCK_METHOD(bool, isCallHoldPossible, (const std::string& line), (override));
    MOCK_METHOD(std::string, csCommunicationsService, (const char* name), (override));
    MOCK_METHOD(void, activateStoredFwd, (), (override));
};

}  // namespace kit

// Compiled once, in CommunicationsService::Mocks: it takes ten times as long as a test.
extern template class testing::NaggyMock<kit::MockCommunicationsService>;
extern template class testing::NiceMock<kit::MockCommunicationsService>;
extern template class testing::StrictMock<kit::MockCommunicationsService>;

#endif

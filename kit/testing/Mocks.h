#ifndef KIT_TESTING_MOCKS_H
#define KIT_TESTING_MOCKS_H

#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "framework/Executable.h"

#include <gmock/gmock.h>

namespace kit
{

/// The request interface for an application's unit tests with GMock. Operations with a result return
/// sfiSuccess unless a test says otherwise; link GTest::gmock.
class MockCommunicationsService : public CommunicationsServiceIfc
{
public:
    MockCommunicationsService()
    {
        using testing::Return;
        ON_CALL(*this, activate).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, deactivate).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, callClear).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, outgoingCallMake).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, acceptCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, answerCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, deflectCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, holdCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, retrieveCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, attendedTransferCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, blindTransferCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, SendCSTARequest).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, activateCallbackRinging).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, activateCallbackBusy).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, cancelCallbacks).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, consultationCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, refuseCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, subscribe).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, directedPickupCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, groupPickupCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, setServiceState).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, getServiceState).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, setDoNotDisturb).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, getDoNotDisturb).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, setAgentState).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, setMicrophoneMute).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, getMicrophoneMute).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, systemStatus).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, generateDigits).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, getDevices).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, conferenceCall).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, alternateCalls).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, getMessageWaitingIndicator).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, setAssociatedCalls).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, setLampMode).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, makeSecurityChangeReinvite).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, setForwardingConfiguration).WillByDefault(Return(sfiSuccess));
        ON_CALL(*this, getForwardingConfiguration).WillByDefault(Return(sfiSuccess));
    }

    virtual ~MockCommunicationsService() = default;

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

/// What onIncomingCallEvent gets, put together: it has more arguments than a mock function may have.
struct IncomingCall
{
    std::string lineId;
    int callId;
    std::string uri;
    std::string name;
    std::string fullPai;
    std::string alertUri;
    std::string alertInfoParam;
    bool alertAutoAnswer;
    int callType;
    std::string diversionUri;
    std::string diversionName;
    int diversionReason;
    bool zipAutoAnswer;
    int resourcePriority;
    int ilCallLevel;
    int ilLocalLevel;
    bool isVideoCall;
};

/// A subscriber for unit tests with GMock; the callbacks' arguments live only during the call.
class MockCommunicationsServiceEvents : public Executable, public CommunicationsServiceEventIfc
{
public:
    MOCK_METHOD(void, init, (Context & context), (override));
    MOCK_METHOD(void, shutdown, (), (override));

    /// Stands for onIncomingCallEvent.
    MOCK_METHOD(void, onIncomingCall, (const IncomingCall& call));

    void onIncomingCallEvent(const std::string& lineId, int callId, const std::string& uri,
                             const std::string& name, const std::string& fullPai,
                             const std::string& alertUri, const std::string& alertInfoParam,
                             bool alertAutoAnswer, int callType, const std::string& diversionUri,
                             const std::string& diversionName, int diversionReason,
                             bool zipAutoAnswer, int resourcePriority, int ilCallLevel,
                             int ilLocalLevel, bool isVideoCall) override
    {
        onIncomingCall({lineId, callId, uri, name, fullPai, alertUri, alertInfoParam,
                        alertAutoAnswer, callType, diversionUri, diversionName, diversionReason,
                        zipAutoAnswer, resourcePriority, ilCallLevel, ilLocalLevel, isVideoCall});
    }

    MOCK_METHOD(void, onCallStateChangeEvent,
                (const std::string& lineId, int callId, int callState, int reason, int sendOptions,
                 const std::string& uri, const std::string& name, const std::string& fullPai,
                 CallPartyInfo* callPartyInfo, int resourcePriority, int preemptionCause,
                 const std::string& preemptionText, bool callBackFeatureAvailable, int ilCallLevel,
                 int ilLocalLevel),
                (override));
    MOCK_METHOD(void, onRegistrationStateChangeEvent,
                (const std::string& lineId, int callId, bool registered, int registrationResult),
                (override));
    MOCK_METHOD(void, onIncomingPickupCallEvent,
                (const std::string& lineId, int callId, const std::string& uri,
                 const std::string& name, const std::string& fullPai),
                (override));
    MOCK_METHOD(void, onCallHeldEvent, (const std::string& lineId, int callId), (override));
    MOCK_METHOD(void, onCallRetrievedEvent,
                (const std::string& lineId, int callId, const std::string& uri,
                 const std::string& name, const std::string& fullPai, int ilCallLevel,
                 int ilLocalLevel, bool connectedToMediaServer),
                (override));
    MOCK_METHOD(void, onFeatureSuccessEvent, (const std::string& lineId, int callId, int feature),
                (override));
    MOCK_METHOD(void, onFeatureFailedEvent,
                (const std::string& lineId, int callId, int feature, int featureFailure),
                (override));
    MOCK_METHOD(void, onRemoteEndpointDetailsChangedEvent,
                (const std::string& lineId, int callId, const std::string& uri,
                 const std::string& name, const std::string& fullPai, bool exitConf,
                 bool jointCall),
                (override));
    MOCK_METHOD(void, onIncomingCallMissedEvent,
                (const std::string& lineId, int callId, const std::string& uri,
                 const std::string& name, const std::string& fullPai, int reason,
                 const std::string& diversionUri, const std::string& diversionName,
                 int diversionReason),
                (override));
    MOCK_METHOD(void, onCallForwardedEvent,
                (const std::string& lineId, int callId, const std::string& callingParty,
                 const std::string& callingPartyName, const std::string& callingPartyFullPai,
                 const std::string& newDestination, int reason),
                (override));
    MOCK_METHOD(void, onIncomingAssociatedCallEvent,
                (const std::string& lineId, int currentCallId, int newCallId), (override));
    MOCK_METHOD(void, onDevicesChangedEvent, (), (override));
    MOCK_METHOD(void, onMessageWaitingEvent,
                (const std::string& lineId, int type, unsigned int newMessages,
                 unsigned int oldMessages, unsigned int newUrgentMessages,
                 unsigned int oldUrgentMessages, int returnType, int availInfo, int messagesWaiting,
                 const std::string& voiceMailNumber),
                (override));
    MOCK_METHOD(void, onDoNotDisturbEvent, (const std::string& deviceId, bool doNotDisturbOn),
                (override));
    MOCK_METHOD(void, onAgentStateEvent,
                (const std::string& deviceId, const std::string& agentState), (override));
    MOCK_METHOD(void, onSecurityStatusChanged,
                (const std::string& lineURI, int callId, int securityStatus,
                 std::vector<int>& callIdsRecorded, std::vector<std::string>& callLineURIsRecorded),
                (override));
    MOCK_METHOD(void, onCallRecordingStatusEvent,
                (const std::string& lineId, int callId, const std::string& callRecorded),
                (override));
    MOCK_METHOD(void, onPreemptionStatusChanged,
                (const std::string& lineURI, int callId, int priority, int cause,
                 const std::string& reason),
                (override));
    MOCK_METHOD(void, onImpactLevelChanged,
                (const std::string& lineURI, int callId, int ilCallLevel, int ilLocalLevel),
                (override));
    MOCK_METHOD(void, onSystemStatusEvent,
                (const std::string& status, const std::string& statusInfo), (override));
    MOCK_METHOD(void, onServerFeatureStatusEvent,
                (const std::string& lineURI, const std::string& status), (override));
    MOCK_METHOD(void, onB2buaCSTAResponse,
                (const std::string& lineURI, bool success, std::string& cstaResponse), (override));
    MOCK_METHOD(void, onB2buaCSTAEventOrRequest,
                (const std::string& lineURI, std::string& cstaMessage), (override));
    MOCK_METHOD(void, onConferenceStatusEvent,
                (const std::string& lineId, int callId, const std::string& xmlContent), (override));
    MOCK_METHOD(void, onCallCompletionEvent,
                (const std::string& lineId, const std::string& uri, int callCompletionType,
                 int callCompletionState, bool displayOutcomeCallUI),
                (override));
    MOCK_METHOD(void, onCallCompletionFailedEvent,
                (const std::string& lineId, const std::string& uri, int callCompletionFailureType),
                (override));
    MOCK_METHOD(void, onBluetoothAudioStatusChanged,
                (const std::string& lineId, int callId, bool audioEnabled, bool audioGateway,
                 bool inBandRinging),
                (override));
};

}  // namespace kit

#endif

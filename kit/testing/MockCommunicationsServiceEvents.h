#ifndef KIT_TESTING_MOCK_COMMUNICATIONS_SERVICE_EVENTS_H
#define KIT_TESTING_MOCK_COMMUNICATIONS_SERVICE_EVENTS_H

#include "CommunicationsServiceEventIfc.h"
#include "application/Events.h"
#include "framework/Executable.h"

#include <gmock/gmock.h>

namespace kit
{

/// A subscriber for unit tests with GMock; the callbacks' arguments live only during the call. Link
/// CommunicationsService::Mocks.
class MockCommunicationsServiceEvents : public Executable, public CommunicationsServiceEventIfc
{
public:
    MockCommunicationsServiceEvents();
    ~MockCommunicationsServiceEvents() override;

    MOCK_METHOD(void, init, (Context & context), (override));
    MOCK_METHOD(void, shutdown, (), (override));

    /// Stands for onIncomingCallEvent, which has more arguments than a mock function may have.
    MOCK_METHOD(void, onIncomingCall, (const communications::IncomingCallEvent& call));

    void onIncomingCallEvent(const std::string& lineId, int callId, const std::string& uri,
                             const std::string& name, const std::string& fullPai,
                             const std::string& alertUri, const std::string& alertInfoParam,
                             bool alertAutoAnswer, int callType, const std::string& diversionUri,
                             const std::string& diversionName, int diversionReason,
                             bool zipAutoAnswer, int resourcePriority, int ilCallLevel,
                             int ilLocalLevel, bool isVideoCall) override;

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

// Compiled once, in CommunicationsService::Mocks: it takes ten times as long as a test.
extern template class testing::NaggyMock<kit::MockCommunicationsServiceEvents>;
extern template class testing::NiceMock<kit::MockCommunicationsServiceEvents>;
extern template class testing::StrictMock<kit::MockCommunicationsServiceEvents>;

#endif

#include "kit/testing/MockCommunicationsService.h"

template class testing::NaggyMock<kit::MockCommunicationsService>;
template class testing::NiceMock<kit::MockCommunicationsService>;
template class testing::StrictMock<kit::MockCommunicationsService>;

namespace kit
{

MockCommunicationsService::MockCommunicationsService()
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

MockCommunicationsService::~MockCommunicationsService() = default;

}  // namespace kit

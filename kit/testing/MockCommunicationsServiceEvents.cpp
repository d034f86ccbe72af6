#include "kit/testing/MockCommunicationsServiceEvents.h"

template class testing::NaggyMock<kit::MockCommunicationsServiceEvents>;
template class testing::NiceMock<kit::MockCommunicationsServiceEvents>;
template class testing::StrictMock<kit::MockCommunicationsServiceEvents>;

namespace kit
{

MockCommunicationsServiceEvents::MockCommunicationsServiceEvents() = default;

void MockCommunicationsServiceEvents::onIncomingCallEvent(
    const std::string& lineId, int callId, const std::string& uri, const std::string& name,
    const std::string& fullPai, const std::string& alertUri, const std::string& alertInfoParam,
    bool alertAutoAnswer, int callType, const std::string& diversionUri,
    const std::string& diversionName, int diversionReason, bool zipAutoAnswer, int resourcePriority,
    int ilCallLevel, int ilLocalLevel, bool isVideoCall)
{
    onIncomingCall({lineId, callId, uri, name, fullPai, alertUri, alertInfoParam, alertAutoAnswer,
                    callType, diversionUri, diversionName, diversionReason, zipAutoAnswer,
                    resourcePriority, ilCallLevel, ilLocalLevel, isVideoCall});
}

MockCommunicationsServiceEvents::~MockCommunicationsServiceEvents() = default;

}  // namespace kit

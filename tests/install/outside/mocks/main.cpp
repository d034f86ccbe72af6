// An outside program that was given the installed mocks, built with its own GoogleTest.
#include "kit/testing/MockCommunicationsService.h"
#include "kit/testing/MockCommunicationsServiceEvents.h"

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    const testing::InSequence inOrder;
    kit::MockCommunicationsService service;
    kit::MockCommunicationsServiceEvents events;
    EXPECT_CALL(service, answerCall("1001", 12)).WillOnce(testing::Return(7));
    EXPECT_CALL(events, onCallHeldEvent("1002", 34));
    CommunicationsServiceIfc& calls = service;
    CommunicationsServiceEventIfc& callbacks = events;
    EXPECT_EQ(calls.answerCall("1001", 12), 7);
    callbacks.onCallHeldEvent("1002", 34);
    return testing::Mock::VerifyAndClearExpectations(&service) &&
                   testing::Mock::VerifyAndClearExpectations(&events) &&
                   !testing::Test::HasFailure()
               ? 0
               : 1;
}

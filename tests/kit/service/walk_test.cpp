// Every request and every event, from end to end: application, real library, framework, service.

#include "Scenario.h"

#include "kit/framework/Caller.h"
#include "kit/framework/EmbeddedConnection.h"
#include "kit/framework/Framework.h"
#include "kit/framework/SocketConnection.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/ServiceProcess.h"

#include <chrono>
#include <gtest/gtest.h>
#include <set>
#include <sstream>

namespace
{

using namespace std::chrono_literals;

// Operations by their names, "* " before a command to the simulation. All have to succeed.
const char* const everything = R"(
    subscribe
    activate
    getDevices
    getServiceState
    setServiceState state=sfiServiceDoNotDisturb
    setServiceState state=sfiServiceInService
    setDoNotDisturb line=1003 doNotDisturbOn=true
    getDoNotDisturb deviceId=1003
    setMicrophoneMute status=true
    getMicrophoneMute
    setAgentState line=1001 agentState=ready
    systemStatus systemStatus=DEGRADED systemStatusInfo=backup
    setLampMode line=1001 lampId=key1 lampMode=on
    InitializeOrFinalizeServerFeatures line=1001 initialize=true
    SendCSTARequest line=1001 cstaRequest=<a/>
    sendUACSTAServerMessage line=1001 serverMessage=<b/>
    processSignallingComponentEvent data=abc
    setAssociatedCalls associated=true
    * message
    getMessageWaitingIndicator
    setForwardingConfiguration line=1002 fwType=unconditional status=true uri=2001
    getForwardingConfiguration fwType=unconditional
    * call 1002 from 4711

    * call 1001 from 4711
    acceptCall line=1001 callId=2
    answerCall line=1001 callId=2
    isCallHoldPossible line=1001
    holdCall line=1001 callId=2 manual=true
    getManualHoldIndication line=1001 callId=2
    retrieveCall line=1001 callId=2
    generateDigits line=1001 activeCall=2 digits=1
    makeSecurityChangeReinvite line=1001 callId=2
    * record
    * impact call-level low
    * bluetooth 1001 audio on
    consultationCall line=1001 callId=2 destination=2001
    * advance 2s
    alternateCalls line=1001
    conferenceCall line=1001 activeCall=2 heldCall=3
    RemoveConfParticipant callId=2 conferenceMemberId=3
    * call 1001 from 4712
    refuseCall line=1001 callId=4 refuseCallReason=decline
    * call 1001 from 4712
    deflectCall line=1001 callId=5 destination=2001
    blindTransferCall line=1001 callId=2 destination=2001

    * call 1001 from 4711
    answerCall line=1001 callId=6
    consultationCall line=1001 callId=6 destination=2001
    * advance 2s
    attendedTransferCall line=1001 activeCall=7 heldCall=6
    * ring 3001 from 4711
    directedPickupCall line=1001 callId=20 callToBePickedUp=3001
    callClear line=1001 callId=20 cause=normalClearing
    * ring 3001 from 4711
    groupPickupCall line=1001 callId=30
    * preempt
    setIsInServiceInitiatedState line=1001 isInServiceInitiatedState=true
    setIsInServiceInitiatedState line=1001 isInServiceInitiatedState=false

    outgoingCallMake line=1001 callId=40 destination=2002
    activateCallbackBusy line=1001 callId=40
    callbackDOFeatureCallID callId=40 instanceId=1
    cancelCallbacks line=1001 cancelCallBackType=all
    activateCallbackBusy line=1001 callId=40
    callClear line=1001 callId=40
    * advance 12s
    * advance 20s
    outgoingCallMake line=1001 callId=50 destination=2003
    activateCallbackRinging line=1001 callId=50
    callClear line=1001 callId=50
    outgoingCallMake line=1001 callId=60 destination=9
    ! blindTransferCall line=1001 callId=60 destination=2001
    * add line 1004
    csCommunicationsService
    activateStoredFwd
    deactivate
)";

void walk(kit::Framework& framework)
{
    kit::EventRecorder events;
    std::set<std::string> exercised;
    std::istringstream in(everything);
    std::string line;
    while (std::getline(in, line))
    {
        line = trimmed(line);
        if (line.empty())
            continue;
        SCOPED_TRACE(line);
        if (line[0] == '*')
        {
            std::string answer;
            ASSERT_EQ(framework.connection()->control(line.substr(2), answer, 5s),
                      kit::Delivery::done);
            EXPECT_EQ(answer.rfind("error: ", 0), std::string::npos) << answer;
            continue;
        }
        const bool fails = line[0] == '!';
        if (fails)
            line.erase(0, 2);
        const std::size_t blank = line.find(' ');
        const kit::Operation* const operation = kit::findOperation(line.substr(0, blank));
        ASSERT_NE(operation, nullptr);
        const kit::Values values =
            blank == std::string::npos ? kit::Values() : valuesOf(line.substr(blank + 1));
        const kit::Outcome outcome = kit::call(framework.service(), *operation, values, &events);
        EXPECT_EQ(outcome.failed(), fails) << outcome.inWords();
        if (!fails)
            exercised.insert(operation->name);
    }

    for (const kit::Operation& operation : kit::operations())
        EXPECT_EQ(exercised.count(operation.name), 1U) << operation.name;
    ASSERT_TRUE(framework.settle(10s));
    for (const kit::Event& event : kit::events())
        EXPECT_GT(events.count(event.method), 0U) << event.method;

    // What the one-way requests did, beside their events.
    std::string answer;
    framework.remove(events);
    framework.connection()->control("show system", answer, 5s);
    EXPECT_NE(answer.find("signalling data of 3 bytes"), std::string::npos) << answer;
    framework.connection()->control("show log", answer, 5s);
    EXPECT_EQ(answer, "BlindTransfer: call 60 is failed");
}

TEST(ServiceWalk, everyRequestAndEventInProcess)
{
    kit::Framework framework(std::make_unique<kit::EmbeddedConnection>());
    walk(framework);
}

TEST(ServiceWalk, everyRequestAndEventOverTheSocket)
{
    kit::ServiceProcess process;
    kit::Framework framework(std::make_unique<kit::SocketConnection>(process.socket()));
    walk(framework);
}

}  // namespace

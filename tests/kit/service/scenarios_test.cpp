#include "Scenario.h"

#include "kit/service/Robots.h"
#include "kit/service/Usage.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <ostream>
#include <set>
#include <sstream>
#include <string>

namespace
{

struct Row
{
    const char* name;
    const char* script;
};

// Everything begins with three registered lines and the clock at 0.
const Row rows[] = {
    {"OutgoingCallIsAnsweredAndCleared", R"(
        outgoingCallMake line=1001 callId=7 destination=sip:2001@example.org
        : CallStateChangeEvent lineId=1001 callId=7 callState=initiated reason=normal sendOptions=nothing uri=sip:2001 callingNumber=1001 calledNumber=2001 calledName="Anna Answer"
        : CallStateChangeEvent callId=7 callState=delivered callBackFeatureAvailable=true
        * advance 1999ms -> now at 1.999 s
        * advance 1ms -> now at 2 s
        : CallStateChangeEvent callId=7 callState=connected sendOptions=digits callBackFeatureAvailable=false
        generateDigits line=1001 activeCall=7 digits=12#
        : FeatureSuccessEvent callId=7 feature=digits
        callClear line=1001 callId=7 cause=normalClearing
        : CallStateChangeEvent callId=7 callState=cleared reason=normal
        * show calls -> no calls)"},
    {"IncomingCallWithAllItsFields", R"(
        * call 1002 from 4711 name "Jo Doe" pai "<sip:4711;x>" type intercom priority raised alert http://r alert-info auto auto-answer zip video diverted-by 4712 diversion-name Boss diversion busy call-level low local-level high -> call 1
        : IncomingCallEvent lineId=1002 callId=1 uri=sip:4711 name="Jo Doe" fullPai=<sip:4711;x> alertUri=http://r alertInfoParam=auto alertAutoAnswer=true callType=intercom diversionUri=sip:4712 diversionName=Boss diversionReason=busy zipAutoAnswer=true resourcePriority=raised ilCallLevel=low ilLocalLevel=high isVideoCall=true
        : CallStateChangeEvent lineId=1002 callId=1 callState=offered callingNumber=4711 callingName="Jo Doe" calledNumber=1002 calledName="Line 1002" fullPai=<sip:4711;x> resourcePriority=raised ilCallLevel=low ilLocalLevel=high
        acceptCall line=1002 callId=1 autoAnswer=false
        : CallStateChangeEvent callState=ringing
        answerCall line=1002 callId=1
        : CallStateChangeEvent callState=connected
        * hang up
        : CallStateChangeEvent callState=cleared reason=farEndCleared)"},
    {"AcceptedWithAutomaticAnswer", R"(
        * call 1001 from 2001
        : IncomingCallEvent fullPai="\"Anna Answer\" <sip:2001>"
        : CallStateChangeEvent callState=offered
        acceptCall line=1001 callId=1 autoAnswer=true
        : CallStateChangeEvent callState=ringing
        : CallStateChangeEvent callState=connected)"},
    {"CallerGivesUpAndIsMissed", R"(
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent callState=offered
        acceptCall line=1001 callId=1
        : CallStateChangeEvent callState=ringing
        * advance 59999ms
        * advance 1ms
        : IncomingCallMissedEvent lineId=1001 callId=1 uri=sip:4711 reason=noAnswer diversionReason=none
        : CallStateChangeEvent callState=cleared reason=noAnswer)"},
    {"RefusedCall", R"(
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent callState=offered
        refuseCall line=1001 callId=1 refuseCallReason=decline
        : CallStateChangeEvent callState=cleared reason=refused)"},
    {"FarEndsThatDoNotAnswer", R"(
        outgoingCallMake line=1001 callId=1 destination=2002
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=failed reason=busy callBackFeatureAvailable=true
        callClear line=1001 callId=1
        : CallStateChangeEvent callState=cleared
        outgoingCallMake line=1001 callId=2 destination=2003
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        * advance 1h
        callClear line=1001 callId=2
        : CallStateChangeEvent callState=cleared
        outgoingCallMake line=1001 callId=3 destination=2004
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        * advance 1s
        : CallStateChangeEvent callState=failed reason=refused callBackFeatureAvailable=false
        * advance 30s
        : CallStateChangeEvent callState=cleared
        outgoingCallMake line=1001 callId=4 destination=9000
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=failed reason=unobtainable
        * show calls -> 4 1001 to 9000 failed, unobtainable)"},
    {"OneCallsBack", R"(
        outgoingCallMake line=1001 callId=1 destination=2005
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        * advance 1s
        : CallStateChangeEvent callState=failed reason=refused
        * advance 5s
        : IncomingCallEvent lineId=1001 callId=2 uri=sip:2005 name="Carl Callback" callType=external
        : CallStateChangeEvent callId=2 callState=offered)"},
    {"RobotsThatDoMore", R"(
        outgoingCallMake line=1001 callId=1 destination=2006
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        * advance 1s
        : CallStateChangeEvent callState=connected
        * advance 3s
        : RemoteEndpointDetailsChangedEvent callId=1 uri=sip:2001 name="Anna Answer" exitConf=false jointCall=false
        callClear line=1001 callId=1
        : CallStateChangeEvent callState=cleared
        outgoingCallMake line=1001 callId=2 destination=2007
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        * advance 1s
        : CallStateChangeEvent callState=connected
        * advance 2s
        : CallStateChangeEvent callState=heldByFarEnd sendOptions=nothing
        * advance 3s
        : CallStateChangeEvent callState=connected
        * advance 1h
        callClear line=1001 callId=2
        : CallStateChangeEvent callState=cleared
        outgoingCallMake line=1001 callId=3 destination=2008
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        * advance 6s
        : CallStateChangeEvent callState=connected
        : CallStateChangeEvent callState=cleared reason=farEndCleared
        outgoingCallMake line=1001 callId=4 destination=2009
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        * advance 3s
        : CallStateChangeEvent callState=connected
        : RemoteEndpointDetailsChangedEvent exitConf=false jointCall=true
        * advance 3s
        : RemoteEndpointDetailsChangedEvent exitConf=true jointCall=false)"},
    {"HoldAndRetrieve", R"(
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent callState=offered
        isCallHoldPossible line=1001 -> false
        answerCall line=1001 callId=1
        : CallStateChangeEvent callState=connected
        isCallHoldPossible line=1001 -> true
        getManualHoldIndication line=1001 callId=1 -> false
        holdCall line=1001 callId=1 holdCallReason=hold manual=true
        : CallStateChangeEvent callState=held
        : CallHeldEvent lineId=1001 callId=1
        : FeatureSuccessEvent lineId=1001 callId=1 feature=hold
        getManualHoldIndication line=1001 callId=1 -> true
        isCallHoldPossible line=1001 -> false
        ! holdCall line=1001 callId=1 holdCallReason=hold manual=true
        : FeatureFailedEvent lineId=1001 callId=1 feature=hold featureFailure=wrongState
        ? HoldCall: call 1 is held
        retrieveCall line=1001 callId=1
        : CallStateChangeEvent callState=connected
        : CallRetrievedEvent lineId=1001 callId=1 uri=sip:4711 connectedToMediaServer=false
        : FeatureSuccessEvent feature=retrieve
        getManualHoldIndication line=1001 callId=1 -> false)"},
    {"SecondCallNeedsAHold", R"(
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent
        * call 1001 from 4712
        : IncomingCallEvent callId=2
        : CallStateChangeEvent
        answerCall line=1001 callId=1
        : CallStateChangeEvent callState=connected
        ! answerCall line=1001 callId=2
        : FeatureFailedEvent callId=2 featureFailure=busy
        ? AnswerCall: call 1 on line 1001 is connected, hold it first
        ! alternateCalls line=1001
        : FeatureFailedEvent feature=alternate featureFailure=wrongState
        ? AlternateCalls: line 1001 needs a connected and a held call
        holdCall line=1001 callId=1
        : CallStateChangeEvent callState=held
        : CallHeldEvent
        : FeatureSuccessEvent
        answerCall line=1001 callId=2
        : CallStateChangeEvent callState=connected
        alternateCalls line=1001
        : CallStateChangeEvent callId=2 callState=held
        : CallHeldEvent callId=2
        : CallStateChangeEvent callId=1 callState=connected
        : CallRetrievedEvent callId=1
        : FeatureSuccessEvent callId=1 feature=alternate)"},
    {"ConsultationAndAttendedTransfer", R"(
        ~ * call 1001 from 4711
        ~ answerCall line=1001 callId=1
        consultationCall line=1001 callId=1 destination=2001
        : CallStateChangeEvent callId=1 callState=held
        : CallHeldEvent callId=1
        : CallStateChangeEvent callId=2 callState=initiated
        : CallStateChangeEvent callId=2 callState=delivered
        : FeatureSuccessEvent callId=1 feature=consultation
        * advance 2s
        : CallStateChangeEvent callId=2 callState=connected
        ! attendedTransferCall line=1001 activeCall=1 heldCall=2
        : FeatureFailedEvent callId=1 feature=attendedTransfer featureFailure=wrongState
        ? AttendedTransfer: call 1 is held
        attendedTransferCall line=1001 activeCall=2 heldCall=1
        : CallStateChangeEvent callId=2 callState=cleared reason=transferred
        : CallStateChangeEvent callId=1 callState=cleared reason=transferred
        : FeatureSuccessEvent callId=2 feature=attendedTransfer
        * show calls -> no calls)"},
    {"BlindTransferAndWhatPreventsIt", R"(
        ~ * call 1001 from 4711
        ~ answerCall line=1001 callId=1
        ! blindTransferCall line=1001 callId=1 destination=2002
        : FeatureFailedEvent callId=1 feature=blindTransfer featureFailure=busy
        ? BlindTransfer: 2002 is busy
        ! blindTransferCall line=1001 callId=1 destination=9000
        : FeatureFailedEvent callId=1 feature=blindTransfer featureFailure=unobtainable
        ? BlindTransfer: "9000" cannot be reached
        blindTransferCall line=1001 callId=1 destination=1002
        : CallStateChangeEvent callId=1 callState=cleared reason=transferred
        : IncomingCallEvent lineId=1002 callId=2 uri=sip:4711 diversionUri=sip:1001
        : CallStateChangeEvent lineId=1002 callId=2 callState=offered
        : FeatureSuccessEvent callId=1 feature=blindTransfer)"},
    {"Conference", R"(
        ~ * call 1001 from 4711
        ~ answerCall line=1001 callId=1
        ~ consultationCall line=1001 callId=1 destination=2001
        * advance 2s
        : CallStateChangeEvent callId=2 callState=connected
        conferenceCall line=1001 activeCall=2 heldCall=1 feature=conference
        : CallStateChangeEvent callId=2 callState=conferenced reason=conferenced
        : RemoteEndpointDetailsChangedEvent callId=2 jointCall=true
        : CallStateChangeEvent callId=1 callState=conferenced
        : RemoteEndpointDetailsChangedEvent callId=1 jointCall=true
        : conferenceStatusEvent callId=1 xmlContent="<conference id=\"2\"><user id=\"1\" uri=\"sip:4711\"/><user id=\"2\" uri=\"sip:2001\"/></conference>"
        : conferenceStatusEvent callId=2
        : FeatureSuccessEvent callId=2 feature=conference
        RemoveConfParticipant callId=1 remoteParticipant=4799 conferenceMemberId=9
        ? RemoveConfParticipant: conference 2 has no participant "4799" and no member "9"
        RemoveConfParticipant callId=1 remoteParticipant=sip:2001
        : conferenceStatusEvent callId=1 xmlContent="<conference id=\"2\"><user id=\"1\" uri=\"sip:4711\"/></conference>"
        : CallStateChangeEvent callId=1 callState=connected
        : RemoteEndpointDetailsChangedEvent callId=1 exitConf=true
        : CallStateChangeEvent callId=2 callState=cleared
        RemoveConfParticipant callId=1 remoteParticipant=4711
        ? RemoveConfParticipant: call 1 is in no conference)"},
    {"PickupFromTheGroup", R"(
        ! groupPickupCall line=1001 callId=0
        : FeatureFailedEvent feature=groupPickup featureFailure=nothingToPickUp
        ? GroupPickupCall: nothing rings in the group
        * ring 3001 from 4711 name Jo -> call 1 rings at 3001
        : IncomingPickupCallEvent lineId=1001 callId=1 uri=sip:4711 name=Jo
        ! directedPickupCall line=1002 callId=5 callToBePickedUp=3002
        : FeatureFailedEvent lineId=1002 callId=5 feature=directedPickup featureFailure=nothingToPickUp
        ? DirectedPickupCall: nothing rings at "3002"
        directedPickupCall line=1002 callId=5 callToBePickedUp=sip:3001
        : CallStateChangeEvent lineId=1002 callId=5 callState=connected reason=pickedUp uri=sip:4711
        : FeatureSuccessEvent callId=5 feature=directedPickup
        * call 1001 from 4712
        : IncomingCallEvent callId=6
        : CallStateChangeEvent
        groupPickupCall line=1003 callId=8
        : CallStateChangeEvent lineId=1001 callId=6 callState=cleared reason=pickedUp
        : CallStateChangeEvent lineId=1003 callId=8 callState=connected reason=pickedUp
        : FeatureSuccessEvent callId=8 feature=groupPickup)"},
    {"DeflectedCall", R"(
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent
        deflectCall line=1001 callId=1 destination=1003
        : CallForwardedEvent lineId=1001 callId=1 callingParty=sip:4711 newDestination=1003 reason=deflected
        : CallStateChangeEvent callId=1 callState=cleared reason=deflected
        : IncomingCallEvent lineId=1003 callId=2 diversionUri=sip:1001 diversionReason=deflected
        : CallStateChangeEvent lineId=1003 callState=offered
        : FeatureSuccessEvent callId=1 feature=deflect)"},
    {"ForwardingUnconditional", R"(
        setForwardingConfiguration line=1001 fwType=unconditional status=true uri=sip:1002
        : FeatureSuccessEvent lineId=1001 feature=forwarding
        getForwardingConfiguration fwType=unconditional -> <sfiResult>sfiSuccess</sfiResult><status>1</status><uri>sip:1002</uri><cfnrRingCount>0</cfnrRingCount>
        getForwardingConfiguration fwType=busy -> <sfiResult>sfiSuccess</sfiResult><status>0</status><uri></uri><cfnrRingCount>0</cfnrRingCount>
        * call 1001 from 4711 -> call 2
        : CallForwardedEvent lineId=1001 callId=1 callingParty=sip:4711 newDestination=sip:1002 reason=forwarded
        : IncomingCallEvent lineId=1002 callId=2 diversionUri=sip:1001 diversionReason=unconditional
        : CallStateChangeEvent lineId=1002 callId=2 callState=offered
        setForwardingConfiguration line=1001 fwType=unconditional status=false
        : FeatureSuccessEvent
        * call 1001 from 4711 -> call 3
        : IncomingCallEvent lineId=1001 callId=3 diversionReason=none
        : CallStateChangeEvent)"},
    {"ForwardingOnBusy", R"(
        setForwardingConfiguration line=1001 fwType=busy status=true uri=2003
        : FeatureSuccessEvent
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent
        answerCall line=1001 callId=1
        : CallStateChangeEvent callState=connected
        * call 1001 from 4712 -> forwarded to 2003
        : CallForwardedEvent callId=2 newDestination=2003 reason=forwarded)"},
    {"ForwardingOnNoAnswerToTheMailbox", R"(
        setForwardingConfiguration line=1001 fwType=noAnswer status=true uri=5000 cfnrRingCount=3
        : FeatureSuccessEvent
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent
        * advance 14999ms
        * advance 1ms
        : CallForwardedEvent callId=1 newDestination=5000 reason=forwarded
        : CallStateChangeEvent callState=cleared reason=forwarded
        * advance 5s
        : messageWaitingEvent lineId=1001 newMessages=1 messagesWaiting=yes voiceMailNumber=5000
        : messageWaitingEvent lineId=1002
        : messageWaitingEvent lineId=1003)"},
    {"ForwardingInACircleEnds", R"(
        setForwardingConfiguration line=1001 fwType=unconditional status=true uri=1002
        : FeatureSuccessEvent
        setForwardingConfiguration line=1002 fwType=unconditional status=true uri=1001
        : FeatureSuccessEvent
        * call 1001 from 4711 -> not put through: unobtainable
        : CallForwardedEvent
        : CallForwardedEvent
        : CallForwardedEvent
        : CallForwardedEvent
        : CallForwardedEvent
        : CallForwardedEvent
        ! setForwardingConfiguration line=1003 fwType=unconditional status=true uri=1003
        : FeatureFailedEvent featureFailure=notAllowed
        ? setForwardingConfiguration: line 1003 cannot be forwarded to itself
        ! setForwardingConfiguration line=1003 fwType=noAnswer status=true uri=2001 cfnrRingCount=12
        : FeatureFailedEvent
        ? setForwardingConfiguration: wrong value 12 for <cfnrRingCount>, 1 to 11 rings are possible)"},
    {"DoNotDisturb", R"(
        getDoNotDisturb deviceId=1001 -> false
        setDoNotDisturb line=1001 doNotDisturbOn=true
        : DoNotDisturbEvent deviceId=1001 doNotDisturbOn=true
        : FeatureSuccessEvent lineId=1001 feature=doNotDisturb
        getDoNotDisturb deviceId=1001 -> true
        getDoNotDisturb deviceId=1002 -> false
        * call 1001 from 4711 -> not put through: doNotDisturb
        : IncomingCallMissedEvent lineId=1001 uri=sip:4711 reason=doNotDisturb
        ! getDoNotDisturb deviceId=1009
        ? GetDoNotDisturb: no line "1009", did you mean 1001?
        * show log -> GetDoNotDisturb: no line "1009", did you mean 1001?)"},
    {"CallBackOnBusy", R"(
        outgoingCallMake line=1001 callId=1 destination=2002
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=failed reason=busy
        activateCallbackRinging line=1001 callId=1 -> sfiFailureCallBackInvalidState
        ? ActivateCallbackRinging: call 1 is failed, not ringing at the far end
        activateCallbackBusy line=1001 callId=9 -> sfiFailureCallBackNoCallInfo
        ? ActivateCallbackBusy: no call 9 on line 1001
        activateCallbackBusy line=1001 callId=1
        : callCompletionEvent lineId=1001 uri=sip:2002 callCompletionType=busy callCompletionState=requested displayOutcomeCallUI=true
        : FeatureSuccessEvent callId=1 feature=callBackBusy
        activateCallbackBusy line=1001 callId=1 -> sfiFailureCallBackAllreadyExists
        ? ActivateCallbackBusy: line 1001 has a call-back for "2002" already
        callClear line=1001 callId=1
        : CallStateChangeEvent callState=cleared
        * advance 10s
        : callCompletionEvent uri=sip:2002 callCompletionState=available
        * advance 2s
        : callCompletionEvent callCompletionState=ringing
        : IncomingCallEvent lineId=1001 callId=2 uri=sip:2002 callType=callBack
        : CallStateChangeEvent callId=2 callState=offered
        answerCall line=1001 callId=2
        : CallStateChangeEvent callId=2 callState=connected
        callClear line=1001 callId=2
        : CallStateChangeEvent callId=2 callState=cleared
        : callCompletionEvent callCompletionState=done
        * show callbacks -> no call-backs)"},
    {"CallBackTaken", R"(
        outgoingCallMake line=1001 callId=1 destination=2003
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        activateCallbackRinging line=1001 callId=1
        : callCompletionEvent callCompletionType=noAnswer callCompletionState=requested
        : FeatureSuccessEvent feature=callBackRinging
        callbackDOFeatureCallID callId=77 instanceId=1
        callbackDOFeatureCallID callId=78 instanceId=2
        ? callbackDOFeatureCallID: no call-back 2
        * show callbacks -> 1 1001 for 2003 requested, feature call 77
        callClear line=1001 callId=1
        : CallStateChangeEvent callState=cleared
        * advance 15s
        : callCompletionEvent callCompletionState=available
        outgoingCallMake line=1001 callId=2 destination=2003 callCompletionCall=true
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered reason=callBack
        * advance 2s
        : CallStateChangeEvent callState=connected
        : callCompletionEvent callCompletionState=done)"},
    {"CallBacksThatFail", R"(
        outgoingCallMake line=1001 callId=1 destination=2010
        : CallStateChangeEvent
        : CallStateChangeEvent callState=failed
        activateCallbackBusy line=1001 callId=1
        : callCompletionEvent
        : FeatureSuccessEvent
        outgoingCallMake line=1001 callId=2 destination=2011
        : CallStateChangeEvent
        : CallStateChangeEvent callState=failed
        activateCallbackBusy line=1001 callId=2
        : callCompletionEvent
        : FeatureSuccessEvent
        outgoingCallMake line=1001 callId=3 destination=2002
        : CallStateChangeEvent
        : CallStateChangeEvent callState=failed
        activateCallbackBusy line=1001 callId=3
        : callCompletionEvent
        : FeatureSuccessEvent
        outgoingCallMake line=1001 callId=4 destination=2003
        : CallStateChangeEvent
        : CallStateChangeEvent callState=delivered
        activateCallbackRinging line=1001 callId=4 -> sfiFailureCallBackToMany
        ? ActivateCallbackRinging: line 1001 has 3 call-backs, 3 are possible
        callClear line=1001 callId=4
        : CallStateChangeEvent callState=cleared
        callClear line=1001 callId=3
        : CallStateChangeEvent callState=cleared
        callClear line=1001 callId=2
        : CallStateChangeEvent callState=cleared
        callClear line=1001 callId=1
        : CallStateChangeEvent callState=cleared
        * advance 10s
        : callCompletionFailedEvent lineId=1001 uri=sip:2010 callCompletionFailureType=stillBusy
        : callCompletionEvent uri=sip:2002 callCompletionState=available
        * advance 2s
        : callCompletionEvent callCompletionState=ringing
        : IncomingCallEvent callId=5
        : CallStateChangeEvent callId=5 callState=offered
        * advance 20s
        : IncomingCallMissedEvent callId=5 reason=noAnswer
        : CallStateChangeEvent callId=5 callState=cleared
        : callCompletionFailedEvent uri=sip:2002 callCompletionFailureType=notAnswered
        * advance 88s
        : callCompletionFailedEvent uri=sip:2011 callCompletionFailureType=timedOut)"},
    {"CallBacksCancelled", R"(
        ! cancelCallbacks line=1001 uri=2002 cancelCallBackType=one
        ? CancelCallbacks: line 1001 has no call-back for "2002"
        ~ outgoingCallMake line=1001 callId=1 destination=2002
        ~ activateCallbackBusy line=1001 callId=1
        cancelCallbacks line=1001 callId=1 uri=sip:2002 cancelCallBackType=one displayOutcomeCallUI=false
        : callCompletionEvent uri=sip:2002 callCompletionState=cancelled displayOutcomeCallUI=false
        activateCallbackBusy line=1001 callId=1
        : callCompletionEvent callCompletionState=requested
        : FeatureSuccessEvent
        cancelCallbacks line=1001 cancelCallBackType=all displayOutcomeCallUI=true
        : callCompletionEvent callCompletionState=cancelled displayOutcomeCallUI=true
        callClear line=1001 callId=1
        : CallStateChangeEvent callState=cleared
        * advance 1h)"},
    {"Mailbox", R"(
        getMessageWaitingIndicator -> <func_return_val>sfiSuccess</func_return_val><Type>1</Type><newMsgs>0</newMsgs><oldMsgs>0</oldMsgs><newUrgMsgs>0</newUrgMsgs><oldUrgMsgs>0</oldUrgMsgs><return_type>1</return_type><available_info>2</available_info><messages_waiting>0</messages_waiting><voiceMailNumber>5000</voiceMailNumber>
        * mailbox new 1 old 2 new-urgent 3 old-urgent 4
        : messageWaitingEvent lineId=1001 type=voice newMessages=1 oldMessages=2 newUrgentMessages=3 oldUrgentMessages=4 returnType=dial availInfo=counters messagesWaiting=yes voiceMailNumber=5000
        : messageWaitingEvent lineId=1002
        : messageWaitingEvent lineId=1003
        getMessageWaitingIndicator -> <func_return_val>sfiSuccess</func_return_val><Type>1</Type><newMsgs>1</newMsgs><oldMsgs>2</oldMsgs><newUrgMsgs>3</newUrgMsgs><oldUrgMsgs>4</oldUrgMsgs><return_type>1</return_type><available_info>2</available_info><messages_waiting>1</messages_waiting><voiceMailNumber>5000</voiceMailNumber>
        outgoingCallMake line=1001 callId=1 destination=5000
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        * advance 0s
        : CallStateChangeEvent callState=connected
        generateDigits line=1001 activeCall=1 digits=11112
        : FeatureSuccessEvent feature=digits
        : messageWaitingEvent newMessages=1 oldMessages=3 newUrgentMessages=0 oldUrgentMessages=7
        : messageWaitingEvent
        : messageWaitingEvent
        ! generateDigits line=1001 activeCall=1 digits=x
        : FeatureFailedEvent callId=1 feature=digits featureFailure=notAllowed
        ? GenerateDigits: "x" are not digits (0 to 9, *, #, A to D)
        * message urgent
        : messageWaitingEvent newUrgentMessages=1
        : messageWaitingEvent
        : messageWaitingEvent)"},
    {"SettingsAndQueries", R"(
        getMicrophoneMute -> false
        setMicrophoneMute status=true
        getMicrophoneMute -> true
        getDevices -> <1001><1002><1003>
        setLampMode line=1001 lampId=lamp3 lampMode=flash
        * show lamps -> 1001 lamp3 flash
        ! setLampMode line=1001 lampId=lamp3 lampMode=9
        ? setLampMode: wrong value 9 for <lampMode>, one of 0 (off), 1 (on), 2 (flash), 3 (blink), 4 (flicker) is possible
        setAgentState line=1001 agentState=ready
        : AgentStateEvent deviceId=1001 agentState=ready
        ! setAgentState line=1001 agentState=redy
        ? SetAgentState: unknown agent state "redy", did you mean ready?
        systemStatus systemStatus=DEGRADED systemStatusInfo=backup
        : systemStatusEvent status=DEGRADED statusInfo=backup
        InitializeOrFinalizeServerFeatures line=1002 initialize=true
        : serverFeatureStatusEvent lineURI=1002 status=initialized
        InitializeOrFinalizeServerFeatures line=1002 initialize=false
        : serverFeatureStatusEvent lineURI=1002 status=finalized
        processSignallingComponentEvent data=REINVITE
        * show system -> sfiServiceInService, system status DEGRADED (backup), microphone mute, associated calls off, signalling data of 8 bytes, clock at 0 s)"},
    {"CstaPeer", R"(
        SendCSTARequest line=1001 cstaRequest=<MakeCall/>
        : b2buaCSTAResponse lineURI=1001 success=true cstaResponse=<MakeCall/>
        SendCSTARequest line=1001
        : b2buaCSTAResponse lineURI=1001 success=false cstaResponse=
        sendUACSTAServerMessage line=1002 serverMessage=<Line>x</Line>
        : b2buaCSTAEventOrRequest lineURI=1002 cstaMessage=<Line>x</Line>
        * csta 1003 <Delivered a="b">  </Delivered>
        : b2buaCSTAEventOrRequest lineURI=1003)"},
    {"ServiceStates", R"(
        getServiceState -> sfiServiceInService
        setServiceState state=sfiServiceDoNotDisturb
        : DoNotDisturbEvent deviceId=1001 doNotDisturbOn=true
        : DoNotDisturbEvent deviceId=1002
        : DoNotDisturbEvent deviceId=1003
        setServiceState state=sfiServiceOutOfService
        : RegistrationStateChangeEvent lineId=1001 registered=false registrationResult=unavailable
        : DoNotDisturbEvent deviceId=1001 doNotDisturbOn=false
        : RegistrationStateChangeEvent lineId=1002
        : DoNotDisturbEvent deviceId=1002
        : RegistrationStateChangeEvent lineId=1003
        : DoNotDisturbEvent deviceId=1003
        getServiceState -> sfiServiceOutOfService
        ! outgoingCallMake line=1001 destination=2001
        ? OutgoingCallMakeRequest: line 1001 is not registered, activate first)"},
    {"DeactivatedAndBackByItself", R"(
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent
        deactivate allowAutoActivate=true
        : RegistrationStateChangeEvent lineId=1001 callId=0 registered=false registrationResult=none
        : IncomingCallMissedEvent reason=outOfService
        : CallStateChangeEvent callState=cleared reason=outOfService
        : RegistrationStateChangeEvent lineId=1002
        : RegistrationStateChangeEvent lineId=1003
        * call 1001 from 4711 -> not put through: outOfService
        * advance 30s
        : RegistrationStateChangeEvent lineId=1001 registered=true registrationResult=done
        : RegistrationStateChangeEvent lineId=1002
        : RegistrationStateChangeEvent lineId=1003
        deactivate allowAutoActivate=true
        : RegistrationStateChangeEvent registered=false
        : RegistrationStateChangeEvent
        : RegistrationStateChangeEvent
        deactivate allowAutoActivate=false
        : RegistrationStateChangeEvent registered=false
        : RegistrationStateChangeEvent
        : RegistrationStateChangeEvent
        * advance 1h)"},
    {"ForwardingBackAndForthEnds", R"(
        setForwardingConfiguration line=1001 fwType=noAnswer status=true uri=1002 cfnrRingCount=1
        : FeatureSuccessEvent
        setForwardingConfiguration line=1002 fwType=noAnswer status=true uri=1001 cfnrRingCount=1
        : FeatureSuccessEvent
        * call 1001 from 4711
        : IncomingCallEvent lineId=1001
        : CallStateChangeEvent
        * advance 5s
        : CallForwardedEvent lineId=1001
        : CallStateChangeEvent callState=cleared reason=forwarded
        : IncomingCallEvent lineId=1002 diversionReason=noAnswer
        : CallStateChangeEvent callState=offered
        * advance 20s
        : CallForwardedEvent
        : CallStateChangeEvent
        : IncomingCallEvent lineId=1001
        : CallStateChangeEvent
        : CallForwardedEvent
        : CallStateChangeEvent
        : IncomingCallEvent lineId=1002
        : CallStateChangeEvent
        : CallForwardedEvent
        : CallStateChangeEvent
        : IncomingCallEvent lineId=1001
        : CallStateChangeEvent
        : CallForwardedEvent
        : CallStateChangeEvent
        : IncomingCallEvent lineId=1002
        : CallStateChangeEvent
        * advance 24h
        : IncomingCallMissedEvent reason=noAnswer
        : CallStateChangeEvent callState=cleared reason=noAnswer)"},
    {"SecurityAndRecording", R"(
        ~ * call 1001 from 4711
        ~ answerCall line=1001 callId=1
        makeSecurityChangeReinvite line=1001 callId=1 forceFlag=false
        : securityStatusChanged lineURI=1001 callId=1 securityStatus=encrypted callIdsRecorded= callLineURIsRecorded=
        : FeatureSuccessEvent feature=security
        * record
        : callRecordingStatusEvent lineId=1001 callId=1 callRecorded=true
        makeSecurityChangeReinvite line=1001 callId=1 forceFlag=true
        : securityStatusChanged securityStatus=authenticated callIdsRecorded=1 callLineURIsRecorded=sip:1001
        : FeatureSuccessEvent feature=security
        * record 1 off
        : callRecordingStatusEvent callRecorded=false
        * secure state open
        : securityStatusChanged securityStatus=open callIdsRecorded=)"},
    {"PreemptionAndImpact", R"(
        ~ * call 1001 from 4711
        ~ answerCall line=1001 callId=1
        * impact call-level medium local-level low
        : impactLevelChanged lineURI=1001 callId=1 ilCallLevel=medium ilLocalLevel=low
        * call 1001 from 4712 priority flash
        : preemptionStatusChanged lineURI=1001 callId=1 priority=flash cause=higherPriority reason="a call of higher priority"
        : CallStateChangeEvent callId=1 callState=cleared reason=preempted preemptionCause=higherPriority preemptionText="a call of higher priority" ilCallLevel=medium
        : IncomingCallEvent callId=2 resourcePriority=flash
        : CallStateChangeEvent callId=2
        * preempt 2 priority flashOverride cause reservedLine reason drill
        : preemptionStatusChanged callId=2 priority=flashOverride cause=reservedLine reason=drill
        : CallStateChangeEvent callId=2 callState=cleared reason=preempted)"},
    {"AssociatedCalls", R"(
        setAssociatedCalls associated=true
        * call 1001 from 4711
        : IncomingCallEvent
        : CallStateChangeEvent
        answerCall line=1001 callId=1
        : CallStateChangeEvent
        * call 1001 from 4712
        : IncomingCallEvent
        : CallStateChangeEvent
        : IncomingAssociatedCallEvent lineId=1001 currentCallId=1 newCallId=2
        * associate 2 with 1
        : IncomingAssociatedCallEvent lineId=1001 currentCallId=2 newCallId=1
        setAssociatedCalls associated=false
        * call 1001 from 4713
        : IncomingCallEvent
        : CallStateChangeEvent)"},
    {"OffHookAndDialled", R"(
        setIsInServiceInitiatedState line=1001 isInServiceInitiatedState=true
        : CallStateChangeEvent lineId=1001 callId=1 callState=initiated
        setIsInServiceInitiatedState line=1001 isInServiceInitiatedState=true
        outgoingCallMake line=1001 callId=1 destination=4711
        : CallStateChangeEvent callId=1 callState=delivered uri=sip:4711
        * busy
        : CallStateChangeEvent callState=failed reason=busy
        setIsInServiceInitiatedState line=1002 isInServiceInitiatedState=true
        : CallStateChangeEvent lineId=1002 callId=2 callState=initiated
        setIsInServiceInitiatedState line=1002 isInServiceInitiatedState=false
        : CallStateChangeEvent lineId=1002 callId=2 callState=cleared)"},
    {"CallBetweenTwoLines", R"(
        outgoingCallMake line=1001 callId=1 destination=1002
        : CallStateChangeEvent lineId=1001 callId=1 callState=initiated
        : IncomingCallEvent lineId=1002 callId=2 uri=sip:1001 callType=internal
        : CallStateChangeEvent lineId=1002 callId=2 callState=offered
        : CallStateChangeEvent lineId=1001 callId=1 callState=delivered
        answerCall line=1002 callId=2
        : CallStateChangeEvent callId=2 callState=connected
        : CallStateChangeEvent callId=1 callState=connected
        holdCall line=1002 callId=2
        : CallStateChangeEvent callId=2 callState=held
        : CallHeldEvent callId=2
        : CallStateChangeEvent callId=1 callState=heldByFarEnd
        : FeatureSuccessEvent
        retrieveCall line=1002 callId=2
        : CallStateChangeEvent callId=2 callState=connected
        : CallRetrievedEvent callId=2
        : CallStateChangeEvent callId=1 callState=connected
        : FeatureSuccessEvent
        blindTransferCall line=1001 callId=1 destination=2001
        : CallStateChangeEvent callId=1 callState=cleared reason=transferred
        : RemoteEndpointDetailsChangedEvent callId=2 uri=sip:2001
        : CallStateChangeEvent callId=2 callState=delivered
        : FeatureSuccessEvent
        * advance 2s
        : CallStateChangeEvent callId=2 callState=connected
        * hang up
        : CallStateChangeEvent callId=2 callState=cleared)"},
    {"TransferJoinsTwoLines", R"(
        outgoingCallMake line=1002 callId=10 destination=1001
        : CallStateChangeEvent callId=10 callState=initiated
        : IncomingCallEvent lineId=1001 callId=11
        : CallStateChangeEvent callId=11
        : CallStateChangeEvent callId=10 callState=delivered
        answerCall line=1001 callId=11
        : CallStateChangeEvent callId=11 callState=connected
        : CallStateChangeEvent callId=10 callState=connected
        consultationCall line=1001 callId=11 destination=1003
        : CallStateChangeEvent callId=11 callState=held
        : CallHeldEvent
        : CallStateChangeEvent callId=10 callState=heldByFarEnd
        : CallStateChangeEvent callId=12 callState=initiated
        : IncomingCallEvent lineId=1003 callId=13
        : CallStateChangeEvent callId=13
        : CallStateChangeEvent callId=12 callState=delivered
        : FeatureSuccessEvent
        answerCall line=1003 callId=13
        : CallStateChangeEvent callId=13 callState=connected
        : CallStateChangeEvent callId=12 callState=connected
        attendedTransferCall line=1001 activeCall=12 heldCall=11
        : CallStateChangeEvent callId=12 callState=cleared reason=transferred
        : CallStateChangeEvent callId=11 callState=cleared reason=transferred
        : RemoteEndpointDetailsChangedEvent callId=13 uri=sip:1002
        : RemoteEndpointDetailsChangedEvent callId=10 uri=sip:1003
        : CallStateChangeEvent callId=10 callState=connected reason=transferred
        : FeatureSuccessEvent
        callClear line=1003 callId=13
        : CallStateChangeEvent callId=13 callState=cleared
        : CallStateChangeEvent callId=10 callState=cleared reason=farEndCleared)"},
    {"CommandsAreTheLanguageOfTheKit", R"(
        * call 1001 from '4711' name="Jo \x1b \"Doe\"" # who is that? -> call 1
        : IncomingCallEvent uri=sip:4711 name="Jo \x1b \"Doe\""
        : CallStateChangeEvent callState=offered
        * record 1 true
        : callRecordingStatusEvent callId=1 callRecorded=true
        * record 1 NO
        : callRecordingStatusEvent callRecorded=false
        ! * record 1 maybe -> record: "maybe" is no switch; on and off are
        * advance 1.5s -> now at 1.5 s
        * advance 0.5min -> now at 31.5 s
        ! * call 1001 from=4712 video=on -> call: video takes no value
        * event <Method>DevicesChangedEvent</Method> # is text here
        : DevicesChangedEvent
        ! * call 1001 from 4711 name \x4 -> \x must be followed by two hexadecimal digits (column 26))"},
    {"FarEndOnCommand", R"(
        outgoingCallMake line=1001 callId=1 destination=4711
        : CallStateChangeEvent callState=initiated
        : CallStateChangeEvent callState=delivered
        ! * hold -> hold: no call is in a state for it
        * answer
        : CallStateChangeEvent callState=connected
        * hold 1
        : CallStateChangeEvent callState=heldByFarEnd
        * retrieve
        : CallStateChangeEvent callState=connected
        * transfer to 2001 name "Anna A"
        : RemoteEndpointDetailsChangedEvent uri=sip:2001 name="Anna A"
        * identify as 4712
        : RemoteEndpointDetailsChangedEvent uri=sip:4712
        * join
        : RemoteEndpointDetailsChangedEvent jointCall=true
        * leave
        : RemoteEndpointDetailsChangedEvent exitConf=true
        * bluetooth 1001 call 1 audio on gateway off ringing on
        : bluetoothAudioStatusChanged lineId=1001 callId=1 audioEnabled=true audioGateway=false inBandRinging=true)"},
    {"LinesComeAndGo", R"(
        * add line 1004
        : DevicesChangedEvent
        getDevices -> <1001><1002><1003><1004>
        ! * add line 1004 -> there is a line 1004 already
        * register 1004
        : RegistrationStateChangeEvent lineId=1004 registered=true registrationResult=done
        * unregister 1004 result forbidden
        : RegistrationStateChangeEvent lineId=1004 registered=false registrationResult=forbidden
        * remove line 1001
        : RegistrationStateChangeEvent lineId=1001 registered=false registrationResult=unknownLine
        : DevicesChangedEvent
        getDevices -> <1002><1003><1004>
        * agent 1002 notReady
        : AgentStateEvent deviceId=1002 agentState=notReady
        * features 1002 on
        : serverFeatureStatusEvent lineURI=1002 status=initialized
        * dnd 1002 on
        : DoNotDisturbEvent deviceId=1002 doNotDisturbOn=true
        * system DOWN info "all of it"
        : systemStatusEvent status=DOWN statusInfo="all of it")"},
    {"FaultsOfTheService", R"(
        * fail HoldCall with "sfi strange" times 2
        * fail * times 1
        ! getMicrophoneMute
        holdCall line=1001 callId=1 -> sfi strange
        * show faults -> HoldCall, 1 time: sfi strange
        holdCall line=1001 callId=1 -> sfi strange
        * show faults -> no faults
        ! * fail HoldCal -> fail: no method "HoldCal", did you mean HoldCall?
        ! * fail AnswerCall times 0 -> 0 times is never
        * fail AnswerCall
        * heal
        * show faults -> no faults
        * event <Method>CallHeldEvent</Method><LineID>raw</LineID><CallID>3</CallID>
        : CallHeldEvent lineId=raw callId=3)"},
    {"RequestsThatAreWrong", R"(
        ! raw <Method>HoldCall</Method><Line>1001</Line><CallId>1</CallId><HoldCallReason>1</HoldCallReason><Manual>1</Manual>
        ? unknown tag <CallId> in HoldCall, did you mean <CallID>?
        ? missing <CallID> in HoldCall
        ! raw <Method>HoldCal</Method>
        ? unknown method "HoldCal", did you mean HoldCall?
        ! raw <Method>answercall</Method><Line>1001</Line>
        ? unknown method "answercall", did you mean AnswerCall?
        ! raw <Method>DeflectCall</Method><Line>1001</Line><CallID>12</CallID><Destination>
        ? missing <Destination> in DeflectCall
        ? unexpected text "<Destination>" behind the fields of DeflectCall
        ! raw <Method>AnswerCall</Method><Line>1001</Line><CallID>x</CallID>
        ? wrong value "x" for <CallID> in AnswerCall, a number is needed
        ! raw <Method>AnswerCall</Method><Line>1001</Line><CallID>1</CallID><CallID>2</CallID>
        ? tag <CallID> twice in AnswerCall
        ! raw <Method>SetMicrophoneMute</Method><Status>TRUE</Status>
        ? wrong value "TRUE" for <Status> in SetMicrophoneMute, 1 or 0 is needed
        ! raw <Method>SetServiceState</Method><state></state>
        ? wrong value "" for <state> in SetServiceState, one of sfiServiceInService, sfiServiceOutOfService, sfiServiceDoNotDisturb is needed
        ! raw <Method>getForwardingConfiguration</Method><fwType>4</fwType>
        ? wrong value "4" for <fwType> in getForwardingConfiguration, one of 1 (unconditional), 2 (busy), 3 (noAnswer) is possible
        ! raw nothing at all
        ? no method in "nothing at all"
        ! answerCall line=1001 callId=3
        : FeatureFailedEvent lineId=1001 callId=3 feature=none featureFailure=noSuchCall
        ? AnswerCall: no call 3 on line 1001
        ! answerCall line=100 callId=3
        ? AnswerCall: no line "100", did you mean 1001?)"},
    {"CommandsThatAreWrong", R"(
        ! * cal 1001 -> unknown command "cal", did you mean call?
        ! * call 1009 from 1 -> call: no line "1009", did you mean 1001?
        ! * call 1001 -> call: "from NUMBER" is missing, usage: call LINE from NUMBER [name TEXT] [pai TEXT] [type CALLTYPE] [priority PRIORITY] [alert TEXT] [alert-info TEXT] [auto-answer] [zip] [video] [diverted-by NUMBER] [diversion-name TEXT] [diversion DIVERSION] [call-level LEVEL] [local-level LEVEL]
        ! * call 1001 fron 2 -> call: unknown word "fron", did you mean from?
        ! * call 1001 from 2 name -> call: TEXT is missing after name
        ! * call 1001 from 2 name "x -> the quote " is not closed (column 23)
        ! * call 1001 from 2 priority flush -> call: no priority "flush", did you mean flash?
        ! * hang up 7 -> hang up: no call "7"
        ! * advance 5 -> advance: 5 is no time; write it as 250ms, 1.5s, 2min or 1h
        ! * advance 99999999h -> advance: 99999999h is longer than a day
        ! * mailbox new -1 -> mailbox: "-1" is no number from 0 to 1000000
        ! * show lamp -> nothing called "lamp" to show, did you mean lamps?
        ! * heal 3 -> heal: unknown word "3", usage: heal stands alone
        ! * event -> event: REST is missing, usage: event REST
        ! * help zz -> no command begins with "zz"
        * help adv -> advance TIME: time passes)"},
};

/// So that a failure names the row.
void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

class ServiceScenario : public testing::TestWithParam<Row>
{
};

TEST_P(ServiceScenario, Runs)
{
    Scenario scenario;
    scenario.run(GetParam().script);
}

INSTANTIATE_TEST_SUITE_P(Rows, ServiceScenario, testing::ValuesIn(rows),
                         [](const auto& row) { return std::string(row.param.name); });

/// What a service says of its commands comes out of the text as it went in.
TEST(ServiceCommands, AreDataAgain)
{
    kit::SimulatedService service;
    const std::vector<kit::CommandUsage> known = kit::simulationCommands();
    const std::vector<kit::CommandUsage> read =
        kit::parseCommandHelp("something else\n" + service.control("help").text);
    ASSERT_EQ(read.size(), known.size());
    for (std::size_t i = 0; i < known.size(); ++i)
    {
        EXPECT_EQ(read[i].name, known[i].name);
        EXPECT_EQ(read[i].usage, known[i].usage);
        EXPECT_EQ(read[i].help, known[i].help);
    }
    const std::vector<kit::UsageSlot> slots =
        kit::CommandUsage{"x", "LINE from NUMBER [name TEXT] [video] [CALL]", ""}.slots();
    std::string text;
    for (const kit::UsageSlot& slot : slots)
        text += slot.keyword + ":" + slot.value + (slot.optional ? "? " : " ");
    EXPECT_EQ(text, ":LINE from:NUMBER name:TEXT? video:? :CALL? ");
}

/// Every kind of value that stands in a usage is one that completion and checks know.
TEST(ServiceCommands, KindsHaveWords)
{
    const std::set<std::string> open = {"LINE", "NUMBER", "TEXT", "CALL", "REST", "COUNT", "TIME"};
    for (const kit::CommandUsage& command : kit::simulationCommands())
        for (const kit::UsageSlot& slot : command.slots())
            if (!slot.value.empty())
            {
                EXPECT_EQ(kit::wordsFor(slot.value).empty(), open.count(slot.value) == 1)
                    << slot.value;
            }
}

/// The page for people names every number and every command, as they are.
TEST(ServicePage, NamesAllNumbersAndCommands)
{
    std::ifstream in(SERVICE_PAGE);
    const std::string page((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    kit::SimulatedService service;
    const kit::service::Robots robots;
    for (const auto& [number, robot] : robots.all())
    {
        const std::string row = "| " + number + " | " + robot->name + " | " + robot->habit + " |";
        EXPECT_NE(page.find(row), std::string::npos) << row;
    }
    for (const kit::CommandUsage& command : kit::simulationCommands())
    {
        const std::string entry = command.line() + "\n    " + command.help + "\n";
        EXPECT_NE(page.find(entry), std::string::npos) << entry;
    }
}

}  // namespace

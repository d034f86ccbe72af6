#ifndef COMMUNICATIONS_EVENTS_H
#define COMMUNICATIONS_EVENTS_H

#include "CommunicationsServiceEventIfc.h"

#include <string>
#include <vector>

// The 28 events as structures: the arguments of their callbacks, in their order, to be kept for as
// long as they are needed. See CommunicationsServiceEventIfc for what they mean.
namespace communications
{

/// The record CallPartyInfo as texts; none of them where there is no record.
struct CallParties
{
    CallParties() = default;

    // Not explicit: a structure is made of the arguments as they come.
    CallParties(const CallPartyInfo* record)
    {
        if (record == nullptr)
            return;
        callingNumber = record->callingNumber;
        callingName = record->callingName;
        calledNumber = record->calledNumber;
        calledName = record->calledName;
    }

    std::string callingNumber;
    std::string callingName;
    std::string calledNumber;
    std::string calledName;
};

/// A call is in another state.
struct CallStateChangeEvent
{
    std::string lineId;
    int callId;
    int callState;
    int reason;
    int sendOptions;
    std::string uri;
    std::string name;
    std::string fullPai;
    CallParties parties;
    int resourcePriority;
    int preemptionCause;
    std::string preemptionText;
    bool callBackFeatureAvailable;
    int ilCallLevel;
    int ilLocalLevel;
};

/// A line is registered or no longer so.
struct RegistrationStateChangeEvent
{
    std::string lineId;
    int callId;
    bool registered;
    int registrationResult;
};

/// A call arrives.
struct IncomingCallEvent
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

/// A call rings elsewhere and can be picked up.
struct IncomingPickupCallEvent
{
    std::string lineId;
    int callId;
    std::string uri;
    std::string name;
    std::string fullPai;
};

/// A call is on hold.
struct CallHeldEvent
{
    std::string lineId;
    int callId;
};

/// A call is off hold.
struct CallRetrievedEvent
{
    std::string lineId;
    int callId;
    std::string uri;
    std::string name;
    std::string fullPai;
    int ilCallLevel;
    int ilLocalLevel;
    bool connectedToMediaServer;
};

/// A feature of a call was carried out.
struct FeatureSuccessEvent
{
    std::string lineId;
    int callId;
    int feature;
};

/// A feature of a call has failed.
struct FeatureFailedEvent
{
    std::string lineId;
    int callId;
    int feature;
    int featureFailure;
};

/// The far end of a call has changed.
struct RemoteEndpointDetailsChangedEvent
{
    std::string lineId;
    int callId;
    std::string uri;
    std::string name;
    std::string fullPai;
    bool exitConf;
    bool jointCall;
};

/// A call was not answered.
struct IncomingCallMissedEvent
{
    std::string lineId;
    int callId;
    std::string uri;
    std::string name;
    std::string fullPai;
    int reason;
    std::string diversionUri;
    std::string diversionName;
    int diversionReason;
};

/// A call was forwarded.
struct CallForwardedEvent
{
    std::string lineId;
    int callId;
    std::string callingParty;
    std::string callingPartyName;
    std::string callingPartyFullPai;
    std::string newDestination;
    int reason;
};

/// A further call belongs to a current one.
struct IncomingAssociatedCallEvent
{
    std::string lineId;
    int currentCallId;
    int newCallId;
};

/// The lines of the phone have changed: ask getDevices.
struct DevicesChangedEvent
{
};

/// Messages are waiting, or no longer so.
struct MessageWaitingEvent
{
    std::string lineId;
    int type;
    unsigned int newMessages;
    unsigned int oldMessages;
    unsigned int newUrgentMessages;
    unsigned int oldUrgentMessages;
    int returnType;
    int availInfo;
    int messagesWaiting;
    std::string voiceMailNumber;
};

/// Do-not-disturb was switched.
struct DoNotDisturbEvent
{
    std::string deviceId;
    bool doNotDisturbOn;
};

/// A call-centre agent is in another state.
struct AgentStateEvent
{
    std::string deviceId;
    std::string agentState;
};

/// The security of a call has changed.
struct SecurityStatusChanged
{
    std::string lineURI;
    int callId;
    int securityStatus;
    std::vector<int> callIdsRecorded;
    std::vector<std::string> callLineURIsRecorded;
};

/// Recording of a call was switched.
struct CallRecordingStatusEvent
{
    std::string lineId;
    int callId;
    std::string callRecorded;
};

/// A call was pre-empted by one of higher priority.
struct PreemptionStatusChanged
{
    std::string lineURI;
    int callId;
    int priority;
    int cause;
    std::string reason;
};

/// The impact level of a call or of the phone has changed.
struct ImpactLevelChanged
{
    std::string lineURI;
    int callId;
    int ilCallLevel;
    int ilLocalLevel;
};

/// The system is in another state.
struct SystemStatusEvent
{
    std::string status;
    std::string statusInfo;
};

/// The server-side features of a line have changed.
struct ServerFeatureStatusEvent
{
    std::string lineURI;
    std::string status;
};

/// The peer's answer to SendCSTARequest.
struct B2buaCSTAResponse
{
    std::string lineURI;
    bool success;
    std::string cstaResponse;
};

/// A CSTA event or request of the peer's own.
struct B2buaCSTAEventOrRequest
{
    std::string lineURI;
    std::string cstaMessage;
};

/// A conference has changed.
struct ConferenceStatusEvent
{
    std::string lineId;
    int callId;
    std::string xmlContent;
};

/// A call-back makes progress.
struct CallCompletionEvent
{
    std::string lineId;
    std::string uri;
    int callCompletionType;
    int callCompletionState;
    bool displayOutcomeCallUI;
};

/// A call-back has failed.
struct CallCompletionFailedEvent
{
    std::string lineId;
    std::string uri;
    int callCompletionFailureType;
};

/// Bluetooth audio of a call was switched.
struct BluetoothAudioStatusChanged
{
    std::string lineId;
    int callId;
    bool audioEnabled;
    bool audioGateway;
    bool inBandRinging;
};

}  // namespace communications

#endif

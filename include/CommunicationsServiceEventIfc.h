#ifndef COMMUNICATIONS_SERVICE_EVENT_IFC_H
#define COMMUNICATIONS_SERVICE_EVENT_IFC_H

#include "framework/Visibility.h"

#include <cstdint>
#include <string>
#include <vector>

/// The parties of a call as the service's gateway names them. 548 bytes, the layout is fixed.
///
/// Texts end with a NUL. A value longer than its field runs on into the fields behind it: they are
/// filled from the last to the first, so that each text can be read in full up to where the one
/// before it has overwritten it. Read them as C strings; nothing behind the first NUL is set.
struct CallPartyInfo
{
    char reservedText1[81];       ///< always ""
    char reservedText2[81];       ///< always ""
    char reservedText3[61];       ///< always ""
    char reservedText4[61];       ///< always ""
    std::int32_t reservedNumber;  ///< always 0
    char calledName[65];          ///< GPUCLDName; "" when absent
    char calledNumber[65];        ///< GPUCLD; "" when absent
    char callingName[65];         ///< GPUCLGName; "" when absent
    char callingNumber[65];       ///< GPUCLG; "" when absent
};

static_assert(sizeof(CallPartyInfo) == 548, "the record's layout is fixed");

/// Events of the communications service. An application implements this interface on an object
/// that is also an Executable, and subscribes it with CommunicationsServiceIfc::subscribe.
///
/// Every callback, unless it says otherwise:
/// - runs on the thread on which the framework delivers the event, while the event is handled. It
///   may call operations of CommunicationsServiceIfc; the next event waits until it returns;
/// - gets its arguments from the fields given as "Event: name { Tag, Tag }", in this order. Elements
///   may arrive in any order or not at all; of one that comes twice the first counts;
/// - gets "" for an absent text, -1 for an absent number and, on purpose, true for an absent flag
///   (a flag is a number that is not 0). A number that does not start with digits is 0, one out of
///   range is the nearest 32-bit limit;
/// - gets texts that live only until it returns: copy what is to be kept;
/// - may throw: the exception passes through the library into the framework, and the event's
///   response is not notified.
///
/// An event reaches its callback when its name begins with the name given here; only
/// CallStateChangeEvent must match whole. The meaning of the numbers is the service's.
///
/// The framework never deletes a subscriber through this interface. The order of declaration is the
/// binary interface.
class COMMUNICATIONS_SERVICE_VISIBLE CommunicationsServiceEventIfc
{
public:
    /// A call is in another state. Event: CallStateChangeEvent { LineID, CallID, CallState, Reason,
    /// SendOptions, URI, Name, FullPAI, (GPUCLG, GPUCLGName, GPUCLD, GPUCLDName in the record),
    /// ResourcePriority, PreemptionCause, PreemptionText, CallBackFearureAvailable, ILCallLevel,
    /// ILLocalLevel }.
    /// @param uri              the far end
    /// @param name             its name for display
    /// @param fullPai          its asserted identity, the whole header
    /// @param callPartyInfo    never null; lives until the callback returns, and leaks if it throws
    /// @param preemptionText   text that belongs to preemptionCause
    /// @param callBackFeatureAvailable  whether a call-back can be asked for; spelled
    ///                         CallBackFearureAvailable on the wire
    /// @param ilCallLevel      impact level of the call
    /// @param ilLocalLevel     impact level of the phone
    virtual void onCallStateChangeEvent(const std::string& lineId, int callId, int callState,
                                        int reason, int sendOptions, const std::string& uri,
                                        const std::string& name, const std::string& fullPai,
                                        CallPartyInfo* callPartyInfo, int resourcePriority,
                                        int preemptionCause, const std::string& preemptionText,
                                        bool callBackFeatureAvailable, int ilCallLevel,
                                        int ilLocalLevel) = 0;

    /// A line is registered or no longer so. Event: RegistrationStateChangeEvent { LineID, CallID,
    /// Registered, RegistrationResult }.
    virtual void onRegistrationStateChangeEvent(const std::string& lineId, int callId,
                                                bool registered, int registrationResult) = 0;

    /// A call arrives. Event: IncomingCallEvent { LineID, CallID, URI, Name, FullPAI,
    /// AlertInformation_AlertURI, AlertInformation_InfoParam, AlertInformation_AutoAnswer, CallType,
    /// DiversionURI, DiversionName, DiversionReason, AICSZIPAutoAnswer, ResourcePriority,
    /// ILCallLevel, ILLocalLevel, IsVideoCall }.
    /// @param uri              the caller
    /// @param name             the caller's name for display
    /// @param fullPai          the caller's asserted identity, the whole header
    /// @param alertUri         where the ring tone is found
    /// @param alertInfoParam   parameters of the ring tone
    /// @param alertAutoAnswer  the caller asks for automatic answer
    /// @param diversionUri     who diverted the call, if anybody did
    /// @param zipAutoAnswer    automatic answer as an intercom call
    virtual void onIncomingCallEvent(const std::string& lineId, int callId, const std::string& uri,
                                     const std::string& name, const std::string& fullPai,
                                     const std::string& alertUri, const std::string& alertInfoParam,
                                     bool alertAutoAnswer, int callType,
                                     const std::string& diversionUri,
                                     const std::string& diversionName, int diversionReason,
                                     bool zipAutoAnswer, int resourcePriority, int ilCallLevel,
                                     int ilLocalLevel, bool isVideoCall) = 0;

    /// A call rings elsewhere and can be picked up. Event: IncomingPickupCallEvent { LineID, CallID,
    /// URI, Name, FullPAI }.
    virtual void onIncomingPickupCallEvent(const std::string& lineId, int callId,
                                           const std::string& uri, const std::string& name,
                                           const std::string& fullPai) = 0;

    /// A call is on hold. Event: CallHeldEvent { LineID, CallID }.
    virtual void onCallHeldEvent(const std::string& lineId, int callId) = 0;

    /// A call is off hold. Event: CallRetrievedEvent { LineID, CallID, URI, Name, FullPAI,
    /// ILCallLevel, ILLocalLevel, ConnectedToMediaServer }.
    /// @param connectedToMediaServer  the far end is a server, not a person
    virtual void onCallRetrievedEvent(const std::string& lineId, int callId, const std::string& uri,
                                      const std::string& name, const std::string& fullPai,
                                      int ilCallLevel, int ilLocalLevel,
                                      bool connectedToMediaServer) = 0;

    /// A feature of a call was carried out. Event: FeatureSuccessEvent { LineID, CallID, Feature }.
    virtual void onFeatureSuccessEvent(const std::string& lineId, int callId, int feature) = 0;

    /// A feature of a call has failed. Event: FeatureFailedEvent { LineID, CallID, Feature,
    /// FeatureFailure }.
    virtual void onFeatureFailedEvent(const std::string& lineId, int callId, int feature,
                                      int featureFailure) = 0;

    /// The far end of a call has changed. Event: RemoteEndpointDetailsChangedEvent { LineID, CallID,
    /// URI, Name, FullPAI, exitConf, jointCall }.
    /// @param exitConf   the far end has left a conference
    /// @param jointCall  the call has been joined with another
    virtual void onRemoteEndpointDetailsChangedEvent(const std::string& lineId, int callId,
                                                     const std::string& uri,
                                                     const std::string& name,
                                                     const std::string& fullPai, bool exitConf,
                                                     bool jointCall) = 0;

    /// A call was not answered. Event: IncomingCallMissedEvent { LineID, CallID, URI, Name, FullPAI,
    /// Reason, DiversionURI, DiversionName, DiversionReason }.
    virtual void onIncomingCallMissedEvent(const std::string& lineId, int callId,
                                           const std::string& uri, const std::string& name,
                                           const std::string& fullPai, int reason,
                                           const std::string& diversionUri,
                                           const std::string& diversionName,
                                           int diversionReason) = 0;

    /// A call was forwarded. Event: CallForwardedEvent { LineID, CallID, CallingParty,
    /// CallingPartyName, CallingPartyFullPAI, NewDestination, Reason }.
    virtual void onCallForwardedEvent(const std::string& lineId, int callId,
                                      const std::string& callingParty,
                                      const std::string& callingPartyName,
                                      const std::string& callingPartyFullPai,
                                      const std::string& newDestination, int reason) = 0;

    /// A further call belongs to a current one. Event: IncomingAssociatedCallEvent { LineID,
    /// CurrentCallID, NewCallID }.
    virtual void onIncomingAssociatedCallEvent(const std::string& lineId, int currentCallId,
                                               int newCallId) = 0;

    /// The lines of the phone have changed: ask getDevices. Event: DevicesChangedEvent { }.
    virtual void onDevicesChangedEvent() = 0;

    /// Messages are waiting, or no longer so. Event: messageWaitingEvent { LineID, type,
    /// new_messages, old_messages, new_urgent_messages, old_urgent_messages, return_type,
    /// avail_info, messages_waiting, voiceMailNumber }.
    /// @param newMessages  an absent counter is 4294967295, -1 converted; so for all four
    virtual void onMessageWaitingEvent(const std::string& lineId, int type,
                                       unsigned int newMessages, unsigned int oldMessages,
                                       unsigned int newUrgentMessages,
                                       unsigned int oldUrgentMessages, int returnType,
                                       int availInfo, int messagesWaiting,
                                       const std::string& voiceMailNumber) = 0;

    /// Do-not-disturb was switched. Event: DoNotDisturbEvent { deviceId, doNotDisturbOn }.
    virtual void onDoNotDisturbEvent(const std::string& deviceId, bool doNotDisturbOn) = 0;

    /// A call-centre agent is in another state. Event: AgentStateEvent { deviceId, agentState }.
    virtual void onAgentStateEvent(const std::string& deviceId, const std::string& agentState) = 0;

    /// The security of a call has changed. Event: securityStatusChanged { lineURI, callId,
    /// securityStatus, CallIDsRecorded, CallLineURIsRecorded }. The two lists are in the framework's
    /// list encoding; an absent one is what the framework makes of "", an empty list.
    /// @param callIdsRecorded       may be changed and moved from; gone when the callback returns
    /// @param callLineURIsRecorded  likewise
    virtual void onSecurityStatusChanged(const std::string& lineURI, int callId, int securityStatus,
                                         std::vector<int>& callIdsRecorded,
                                         std::vector<std::string>& callLineURIsRecorded) = 0;

    /// Recording of a call was switched. Event: callRecordingStatusEvent { LineID, callId,
    /// callRecorded }.
    /// @param callId        of the tag callId, with a small c
    /// @param callRecorded  a text, not a flag
    virtual void onCallRecordingStatusEvent(const std::string& lineId, int callId,
                                            const std::string& callRecorded) = 0;

    /// A call was pre-empted by one of higher priority. Event: preemptionStatusChanged { lineURI,
    /// callId, priority, cause, reason }.
    virtual void onPreemptionStatusChanged(const std::string& lineURI, int callId, int priority,
                                           int cause, const std::string& reason) = 0;

    /// The impact level of a call or of the phone has changed. Event: impactLevelChanged { lineURI,
    /// callId, ILCallLevel, ILLocalLevel }.
    virtual void onImpactLevelChanged(const std::string& lineURI, int callId, int ilCallLevel,
                                      int ilLocalLevel) = 0;

    /// The system is in another state. Event: systemStatusEvent { status, statusInfo }.
    virtual void onSystemStatusEvent(const std::string& status, const std::string& statusInfo) = 0;

    /// The server-side features of a line have changed. Event: serverFeatureStatusEvent { lineURI,
    /// status }.
    virtual void onServerFeatureStatusEvent(const std::string& lineURI,
                                            const std::string& status) = 0;

    /// The peer's answer to SendCSTARequest. Event: b2buaCSTAResponse { lineURI, success } and the
    /// payload behind them.
    /// @param cstaResponse  everything behind the first "/success>" of the event, untouched; without
    ///                      one, the event less its first 8 bytes. May be changed and moved from
    virtual void onB2buaCSTAResponse(const std::string& lineURI, bool success,
                                     std::string& cstaResponse) = 0;

    /// A CSTA event or request of the peer's own. Event: b2buaCSTAEventOrRequest { lineURI } and the
    /// payload behind it.
    /// @param cstaMessage  everything behind the first "/lineURI>" of the event, untouched; without
    ///                     one, the event less its first 8 bytes. May be changed and moved from
    virtual void onB2buaCSTAEventOrRequest(const std::string& lineURI,
                                           std::string& cstaMessage) = 0;

    /// A conference has changed. Event: conferenceStatusEvent { LineID, CallID, XMLContent }.
    /// @param xmlContent  the conference document, not parsed
    virtual void onConferenceStatusEvent(const std::string& lineId, int callId,
                                         const std::string& xmlContent) = 0;

    /// A call-back makes progress. Event: callCompletionEvent { LineID, URI, CallCompletionType,
    /// CallCompletionState, DisplayOutcomeCallUI }.
    virtual void onCallCompletionEvent(const std::string& lineId, const std::string& uri,
                                       int callCompletionType, int callCompletionState,
                                       bool displayOutcomeCallUI) = 0;

    /// A call-back has failed. Event: callCompletionFailedEvent { LineID, URI,
    /// CallCompletionFailureType }.
    virtual void onCallCompletionFailedEvent(const std::string& lineId, const std::string& uri,
                                             int callCompletionFailureType) = 0;

    /// Bluetooth audio of a call was switched. Event: bluetoothAudioStatusChanged { LineID, CallID,
    /// AudioEnabled, AudioGateway, InBandRinging }.
    /// @param audioEnabled   the call's audio goes over Bluetooth
    /// @param audioGateway   the other device is the audio gateway
    /// @param inBandRinging  the ring tone comes with the audio
    virtual void onBluetoothAudioStatusChanged(const std::string& lineId, int callId,
                                               bool audioEnabled, bool audioGateway,
                                               bool inBandRinging) = 0;

protected:
    ~CommunicationsServiceEventIfc() = default;
};

#endif

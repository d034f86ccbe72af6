#ifndef COMMUNICATIONS_SERVICE_IFC_H
#define COMMUNICATIONS_SERVICE_IFC_H

#include "CommunicationsServiceTypes.h"
#include "framework/Visibility.h"

#include <string>
#include <vector>

class Executable;

/// Requests to the communications service. The framework creates the object and owns it; an
/// application reaches this interface from the proxy with dynamic_cast and never deletes it.
///
/// Every operation, unless it says otherwise:
/// - writes one request, `<Method>Name</Method>` and then each argument as `<Tag>value</Tag>`, in
///   the order given as "Request: Name { Tag, Tag }"; every field is written on every call;
/// - runs on the caller's thread and returns when the channel does; no time-out, retry or lock is
///   added. Any number of threads may call if the channel allows it, also from inside a callback;
/// - returns an sfiResult as int: sfiSuccess (5) when carried out, 1 to 4 for a refused call-back,
///   0 for any other answer and for none. Test for 5;
/// - reads its arguments only during the call. Texts are sent byte for byte, neither checked nor
///   escaped; numbers and enumerations as signed decimals; flags as 1 and 0;
/// - throws only what the channel or an allocation throws. Nothing is sent twice;
/// - must not be called before the framework has handed over the channel (initProxy).
///
/// `line` is the line's identifier (its address of record), `callId` the service's number of a call.
/// The order of declaration is the binary interface.
class COMMUNICATIONS_SERVICE_VISIBLE CommunicationsServiceIfc
{
public:
    /// Passes signalling data on: "SigEvent:" and the bytes behind it, without an envelope and
    /// without waiting for an answer.
    /// @param data    need not be terminated and may hold zero bytes
    /// @param length  number of bytes; negative throws std::length_error and sends nothing
    virtual void processSignallingComponentEvent(const char* data, int length) = 0;

    /// Switches the service on for this phone. Request: Activate { }, with a time-out of 100000 in
    /// the framework's unit.
    virtual int activate() = 0;

    /// Switches the service off. Request: Deactivate { AllowAutoActivate }.
    /// @param allowAutoActivate  whether the service may switch itself on again
    virtual int deactivate(bool allowAutoActivate) = 0;

    /// Ends a call. Request: CallClearRequest { Line, CallID, Cause }.
    /// @param cause  travels as its CSTA number
    virtual int callClear(const std::string& line, int callId, CSTAEventCause cause) = 0;

    /// Places a call. Request: OutgoingCallMakeRequest { Line, CallID, Destination, DSSDirectCall,
    /// BridgeCall, CallCompletionCall }.
    /// @param destination         number or URI; null cuts the request off behind "<Destination>",
    ///                            on purpose, and what is left is sent
    /// @param dssDirectCall       placed by a direct station selection key
    /// @param bridgeCall          placed on a bridged line
    /// @param callCompletionCall  completes an earlier call-back request
    virtual int outgoingCallMake(const std::string& line, int callId, const char* destination,
                                 bool dssDirectCall, bool bridgeCall, bool callCompletionCall) = 0;

    /// Accepts an offered call, so that it rings. Request: AcceptCall { Line, CallID, AutoAnswer }.
    /// @param autoAnswer  whether it is answered without the user
    virtual int acceptCall(const std::string& line, int callId, bool autoAnswer) = 0;

    /// Answers a ringing call. Request: AnswerCall { Line, CallID }.
    virtual int answerCall(const std::string& line, int callId) = 0;

    /// Sends an offered call on to another destination. Request: DeflectCall { Line, CallID,
    /// Destination }.
    /// @param destination  number or URI; null cuts the request off behind "<Destination>", on
    ///                     purpose
    virtual int deflectCall(const std::string& line, int callId, const char* destination) = 0;

    /// Puts a call on hold. Request: HoldCall { Line, CallID, HoldCallReason, Manual }.
    /// @param holdCallReason  the feature that needs the hold
    /// @param manual          whether the user asked for it
    virtual int holdCall(const std::string& line, int callId, sfiFeature holdCallReason,
                         bool manual) = 0;

    /// Takes a call off hold. Request: RetrieveCall { Line, CallID }.
    virtual int retrieveCall(const std::string& line, int callId) = 0;

    /// Connects two calls of the line with each other and leaves them. Request: AttendedTransfer
    /// { Line, activeCall, heldCall }.
    virtual int attendedTransferCall(const std::string& line, int activeCall, int heldCall) = 0;

    /// Hands a call over to a destination without asking it first. Request: BlindTransfer { Line,
    /// CallID, Destination }.
    /// @param destination  number or URI; null cuts the request off behind "<Destination>", on
    ///                     purpose
    virtual int blindTransferCall(const std::string& line, int callId, const char* destination) = 0;

    /// Passes a CSTA request through. Request: SendCSTARequest { Line } and the payload behind it.
    /// The peer's answer arrives as onB2buaCSTAResponse.
    /// @param cstaRequest  a whole CSTA document, sent as it stands, without an element around it
    virtual int SendCSTARequest(const std::string& line, const std::string& cstaRequest) = 0;

    /// Passes a uaCSTA server message through. Request: SendUACSTAServerMessage { Line } and the
    /// payload behind it. Posted: no answer, no result.
    /// @param line           only read, though it is not const
    /// @param serverMessage  a whole CSTA document; only read, though it is not const
    virtual void sendUACSTAServerMessage(std::string& line, std::string& serverMessage) = 0;

    /// Switches the server-side features of a line on or off. Request:
    /// InitializeOrFinalizeServerFeatures { Line, initialize }. Posted: no answer, no result.
    virtual void InitializeOrFinalizeServerFeatures(const std::string& line, bool initialize) = 0;

    /// Asks for a call-back from a destination that did not answer. Request:
    /// ActivateCallbackRinging { Line, CallID }. May return 1 to 4.
    virtual int activateCallbackRinging(const std::string& line, int callId) = 0;

    /// Asks for a call-back from a busy destination. Request: ActivateCallbackBusy { Line, CallID }.
    /// May return 1 to 4.
    virtual int activateCallbackBusy(const std::string& line, int callId) = 0;

    /// Cancels call-backs. Request: CancelCallbacks { Line, CallID, URI, CancelCallBackType,
    /// DisplayOutcomeCallUI }. May return 1 to 4.
    /// @param uri                   the destination that would call back
    /// @param cancelCallBackType    which call-backs are meant
    /// @param displayOutcomeCallUI  whether the phone shows the outcome
    virtual int cancelCallbacks(const std::string& line, int callId, const std::string& uri,
                                sfiCancelCallBackType cancelCallBackType,
                                bool displayOutcomeCallUI) = 0;

    /// Places a second call while the first is held. Request: Consult { Line, CallID, Destination }.
    /// @param destination  number or URI; null cuts the request off behind "<Destination>", on
    ///                     purpose
    virtual int consultationCall(const std::string& line, int callId, const char* destination) = 0;

    /// Refuses an offered call. Request: RefuseCall { Line, CallID, RefuseCallReason }.
    virtual int refuseCall(const std::string& line, int callId, sfiRefuseCall refuseCallReason) = 0;

    /// Registers a subscriber for the service's events. Request: Subscribe { }, sent as a
    /// subscription of the channel that the framework context names for the subscriber, with a
    /// time-out of 100000 in the framework's unit.
    /// @param subscriber  an Executable that also implements CommunicationsServiceEventIfc; stays
    ///                    the caller's. Null returns 0 and sends nothing
    /// @throws MarloException  a copy of the one that the channel threw
    virtual int subscribe(Executable* subscriber) = 0;

    /// Picks up a call that rings elsewhere. Request: DirectedPickupCall { Line, CallID,
    /// CallToBePickedUp, BLFPickup }.
    /// @param callToBePickedUp  number or URI of the ringing phone
    /// @param blfPickup         asked for with a busy lamp key
    virtual int directedPickupCall(const std::string& line, int callId,
                                   const std::string& callToBePickedUp, bool blfPickup) = 0;

    /// Picks up a call that rings in the pickup group. Request: GroupPickupCall { Line, CallID }.
    virtual int groupPickupCall(const std::string& line, int callId) = 0;

    /// Sets the phone's service state. Request: SetServiceState { state }; the field holds the
    /// state's name, and is empty for a value without one.
    virtual int setServiceState(sfiServiceState state) = 0;

    /// Asks for the phone's service state. Request: GetServiceState { }. Answer: a text that holds
    /// the state's name. Returns 5, or 0 when the answer holds "sfiFailure" or no known name.
    /// @param state  set only when 5 is returned
    virtual int getServiceState(sfiServiceState& state) = 0;

    /// Switches do-not-disturb. Request: SetDoNotDisturb { Line, doNotDisturbOn }.
    virtual int setDoNotDisturb(const std::string& line, bool doNotDisturbOn) = 0;

    /// Asks for do-not-disturb. Request: GetDoNotDisturb { deviceID }. Answer: a text that is
    /// searched for "true". Returns 5, or 0 when the answer holds "sfiFailure".
    /// @param deviceId        the line
    /// @param doNotDisturbOn  set only when 5 is returned
    virtual int getDoNotDisturb(const std::string& deviceId, bool& doNotDisturbOn) = 0;

    /// Sets the state of a call-centre agent. Request: SetAgentState { Line, agentState }.
    /// @param agentState  a word of the service's
    virtual int setAgentState(const std::string& line, const std::string& agentState) = 0;

    /// Mutes the microphone or opens it. Request: SetMicrophoneMute { Status }.
    /// @param status  true mutes
    virtual int setMicrophoneMute(bool status) = 0;

    /// Asks whether the microphone is muted. Request: GetMicrophoneMute { }. Answer: a text that is
    /// searched for "true". Returns 5, or 0 when the answer holds "sfiFailure".
    /// @param muted  set only when 5 is returned
    virtual int getMicrophoneMute(bool& muted) = 0;

    /// Tells the service how the system is. Request: SystemStatus { SystemStatus,
    /// SystemStatusInfo }.
    /// @param systemStatus      null cuts the request off behind "<SystemStatus>", on purpose
    /// @param systemStatusInfo  null cuts the request off behind "<SystemStatusInfo>", on purpose
    virtual int systemStatus(const char* systemStatus, const char* systemStatusInfo) = 0;

    /// Sends digits into a call. Request: GenerateDigits { Line, activeCall, digits }.
    /// @param digits  null cuts the request off behind "<digits>", on purpose
    virtual int generateDigits(const std::string& line, int activeCall, const char* digits) = 0;

    /// Asks for the lines of the phone. Request: GetDevices { }. Answer: the items, each in angle
    /// brackets. Returns 5, or 0 when the whole answer is "sfiFailure".
    /// @param devices  the items are appended; untouched when 0 is returned
    virtual int getDevices(std::vector<std::string>& devices) = 0;

    /// Joins two calls in a conference. Request: ConferenceCall { Line, activeCall, heldCall,
    /// feature }.
    /// @param feature  the feature that makes the conference
    virtual int conferenceCall(const std::string& line, int activeCall, int heldCall,
                               sfiFeature feature) = 0;

    /// Removes a participant from a conference. Request: RemoveConfParticipant { callID,
    /// remoteParticipant, conferenceMemberId }. Posted: no answer, no result.
    /// @param callId              the conference
    /// @param remoteParticipant   the participant's number or URI
    /// @param conferenceMemberId  the participant's identifier in the conference document
    virtual void RemoveConfParticipant(int callId, const std::string& remoteParticipant,
                                       const std::string& conferenceMemberId) = 0;

    /// Asks whether a call was put on hold by the user. Request: getManualHoldIndication { Line,
    /// CallID }. Returns true when the whole answer is "true", false for every other answer.
    virtual bool getManualHoldIndication(const std::string& line, int callId) = 0;

    /// Swaps the active and the held call of a line. Request: AlternateCalls { Line }.
    virtual int alternateCalls(const std::string& line) = 0;

    /// Asks for the message waiting indication. Request: GetMessageWaitingIndicator { }. Answer:
    /// fields in the tags named below. All nine are written whatever the result; a missing or
    /// non-numeric number is 0. The result comes from the field func_return_val. The values mean
    /// what they mean in onMessageWaitingEvent, which carries the same nine under other tags.
    /// @param type             Type
    /// @param newMsgs          newMsgs; a negative text wraps, "-1" gives 4294967295
    /// @param oldMsgs          oldMsgs, likewise
    /// @param newUrgMsgs       newUrgMsgs, likewise
    /// @param oldUrgMsgs       oldUrgMsgs, likewise
    /// @param returnType       return_type
    /// @param availableInfo    available_info
    /// @param messagesWaiting  messages_waiting
    /// @param voiceMailNumber  voiceMailNumber, "" when missing
    virtual int getMessageWaitingIndicator(int& type, unsigned int& newMsgs, unsigned int& oldMsgs,
                                           unsigned int& newUrgMsgs, unsigned int& oldUrgMsgs,
                                           int& returnType, int& availableInfo,
                                           int& messagesWaiting, std::string& voiceMailNumber) = 0;

    /// Switches associated calls. Request: setAssociatedCalls { associated }.
    virtual int setAssociatedCalls(bool associated) = 0;

    /// Sets a lamp. Request: setLampMode { Line, lampId, lampMode }.
    /// @param lampId    name of the lamp
    /// @param lampMode  number of the mode, the service's
    virtual int setLampMode(const std::string& line, const std::string& lampId, int lampMode) = 0;

    /// Renegotiates a call for another security level. Request: makeSecurityChangeReinvite { Line,
    /// CallID, forceFlag }.
    /// @param forceFlag  whether to renegotiate even if nothing has changed
    virtual int makeSecurityChangeReinvite(const std::string& line, int callId, bool forceFlag) = 0;

    /// Tells the service that a line is being used (off hook, no call yet). Request:
    /// setIsInServiceInitiatedState { Line, IsInServiceInitiatedState }. Posted: no answer, no
    /// result.
    /// @param isInServiceInitiatedState  the one flag that travels as "TRUE" and "FALSE"
    virtual void setIsInServiceInitiatedState(const std::string& line,
                                              bool isInServiceInitiatedState) = 0;

    /// Sets a forwarding. Request: setForwardingConfiguration { Line, fwType, status, uri,
    /// cfnrRingCount, forceTKVSUpdate }.
    /// @param fwType           which forwarding
    /// @param status           on or off
    /// @param uri              where to; may be empty
    /// @param cfnrRingCount    rings before a call that is not answered is forwarded
    /// @param forceTKVSUpdate  whether the stored setting is written even if nothing has changed
    virtual int setForwardingConfiguration(const std::string& line, sfiForwardingType fwType,
                                           bool status, const std::string& uri, int cfnrRingCount,
                                           bool forceTKVSUpdate) = 0;

    /// Asks for a forwarding. Request: getForwardingConfiguration { fwType }. Answer: fields in the
    /// tags named below. All three are written whatever the result, which comes from the field
    /// sfiResult.
    /// @param fwType         which forwarding
    /// @param status         status; true when missing, on purpose
    /// @param uri            uri; "" when missing
    /// @param cfnrRingCount  cfnrRingCount; -1 when missing
    virtual int getForwardingConfiguration(sfiForwardingType fwType, bool& status, std::string& uri,
                                           int& cfnrRingCount) = 0;

    /// Tells the service which feature call belongs to a call-back. Request: callbackDOFeatureCallID
    /// { CallID, instanceId }. Posted: no answer, no result.
    /// @param callId      identifier of the feature call, a text
    /// @param instanceId  number of the call-back
    virtual void callbackDOFeatureCallID(const std::string& callId, int instanceId) = 0;

    /// Asks whether the line's call can be put on hold now. Request: isCallHoldPossible { Line }.
    /// Returns true when the whole answer is "true", false for every other answer.
    virtual bool isCallHoldPossible(const std::string& line) = 0;

    /// Sends nothing and returns "".
    /// @param name  not read
    virtual std::string csCommunicationsService(const char* name) = 0;

    /// Does nothing.
    virtual void activateStoredFwd() = 0;

protected:
    ~CommunicationsServiceIfc() = default;
};

#endif

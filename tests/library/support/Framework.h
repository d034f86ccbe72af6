#ifndef COMMUNICATIONS_SERVICE_TESTS_FRAMEWORK_H
#define COMMUNICATIONS_SERVICE_TESTS_FRAMEWORK_H

#include "CommunicationsServiceEventIfc.h"
#include "framework/Executable.h"
#include "framework/FrameworkContext.h"
#include "framework/InvokerResponse.h"
#include "framework/MarloException.h"
#include "framework/ProxyRequest.h"

#include <cstring>
#include <functional>
#include <locale>
#include <string>
#include <vector>

/// For callers that know less of a function's type than its definition does, as the framework may.
#if defined(__clang__)
#define SUPPORT_ANY_FUNCTION_TYPE __attribute__((no_sanitize("function")))
#else
#define SUPPORT_ANY_FUNCTION_TYPE
#endif

/// The framework as the library's tests need it: everything asked of it becomes a line of a trace.
///
/// ClientUtils::itos(12) gives "itos(12)", so that its use shows on the wire. Serializer decodes
/// lists with commas and spoils the text that it was given, as it may.
namespace support
{

using Lines = std::vector<std::string>;

/// What happened, in order, since the last call.
Lines takeTrace();
void trace(const std::string& line);

/// What loggingOnAppOxa answers.
extern int loggingOn;

/// Called by Serializer and ClientUtils before they do their work.
extern std::function<void()> inFramework;

/// A framework's exception that carries a number.
class Exception : public MarloException
{
public:
    explicit Exception(int number) { std::memcpy(contents, &number, sizeof number); }

    static int numberOf(const MarloException& exception)
    {
        int number = 0;
        std::memcpy(&number, exception.*(&Exception::contents), sizeof number);
        return number;
    }

    static int copies;  ///< made by the copy constructor
    static int living;  ///< constructed and not yet destroyed
};

class Channel final : public ProxyRequest
{
public:
    std::string answer;
    bool appends = false;             ///< puts the answer behind what stands in the response
    std::function<void()> inRequest;  ///< called by all operations before they return

    void unusedSlot1() override { trace("slot 1"); }
    void unusedSlot2() override { trace("slot 2"); }
    void unusedSlot3() override { trace("slot 3"); }
    void unusedSlot4() override { trace("slot 4"); }
    void unusedSlot5() override { trace("slot 5"); }
    void unusedSlot6() override { trace("slot 6"); }
    void sendRequest(const std::string& request, std::string& response) override;
    void sendRequestTimed(const std::string& request, std::string& response, int timeout) override;
    void unusedSlot9() override { trace("slot 9"); }
    void sendSubscribe(const std::string& request, std::string& response,
                       const std::string& channelName, int timeout) override;
    void unusedSlot11() override { trace("slot 11"); }
    void unusedSlot12() override { trace("slot 12"); }
    void unusedSlot13() override { trace("slot 13"); }
    void sendOneWay(const std::string& message) override;
    void unusedSlot15() override { trace("slot 15"); }
    void unusedSlot16() override { trace("slot 16"); }
    void setProtocol(const std::string& protocolName) override;

private:
    void respond(const std::string& line, std::string& response);
};

class NamingContext final : public FrameworkContext
{
public:
    std::function<void()> inFindChannel;

    std::string findChannel(Executable* executable) override;

    Executable* asked = nullptr;
};

class Response final : public InvokerResponse
{
public:
    void unusedSlot1() override { trace("response slot 1"); }
    void messageHandled() override { trace("response notified"); }
};

/// An executable that is no subscriber.
class Bystander : public Executable
{
public:
    void init(Context&) override {}
    void shutdown() override {}
};

/// A global locale that separates digits and spells flags, for as long as this lives.
class ForeignLocale
{
public:
    ForeignLocale();
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;
    ~ForeignLocale();

private:
    std::locale before_;
};

std::string show(const std::string& text);
std::string show(int number);
std::string show(unsigned int count);
std::string show(bool flag);
std::string show(const std::vector<int>& numbers);
std::string show(const std::vector<std::string>& texts);
std::string show(const CallPartyInfo* info);

/// An application's object. Each callback becomes a line: onCallHeldEvent('1001', 12).
class Subscriber final : public Executable, public CommunicationsServiceEventIfc
{
public:
    std::function<void()> inCallback;                    ///< called by all callbacks
    std::function<void(CallPartyInfo*)> withRecord;      ///< by the one with the record
    std::function<void(std::string& payload)> withText;  ///< by the two with a payload

    void init(Context&) override {}
    void shutdown() override {}

    void onCallStateChangeEvent(const std::string& lineId, int callId, int callState, int reason,
                                int sendOptions, const std::string& uri, const std::string& name,
                                const std::string& fullPai, CallPartyInfo* callPartyInfo,
                                int resourcePriority, int preemptionCause,
                                const std::string& preemptionText, bool callBackFeatureAvailable,
                                int ilCallLevel, int ilLocalLevel) override
    {
        if (withRecord)
            withRecord(callPartyInfo);
        record("onCallStateChangeEvent",
               lineId,
               callId,
               callState,
               reason,
               sendOptions,
               uri,
               name,
               fullPai,
               callPartyInfo,
               resourcePriority,
               preemptionCause,
               preemptionText,
               callBackFeatureAvailable,
               ilCallLevel,
               ilLocalLevel);
    }
    void onRegistrationStateChangeEvent(const std::string& lineId, int callId, bool registered,
                                        int registrationResult) override
    {
        record("onRegistrationStateChangeEvent", lineId, callId, registered, registrationResult);
    }
    void onIncomingCallEvent(const std::string& lineId, int callId, const std::string& uri,
                             const std::string& name, const std::string& fullPai,
                             const std::string& alertUri, const std::string& alertInfoParam,
                             bool alertAutoAnswer, int callType, const std::string& diversionUri,
                             const std::string& diversionName, int diversionReason,
                             bool zipAutoAnswer, int resourcePriority, int ilCallLevel,
                             int ilLocalLevel, bool isVideoCall) override
    {
        record("onIncomingCallEvent",
               lineId,
               callId,
               uri,
               name,
               fullPai,
               alertUri,
               alertInfoParam,
               alertAutoAnswer,
               callType,
               diversionUri,
               diversionName,
               diversionReason,
               zipAutoAnswer,
               resourcePriority,
               ilCallLevel,
               ilLocalLevel,
               isVideoCall);
    }
    void onIncomingPickupCallEvent(const std::string& lineId, int callId, const std::string& uri,
                                   const std::string& name, const std::string& fullPai) override
    {
        record("onIncomingPickupCallEvent", lineId, callId, uri, name, fullPai);
    }
    void onCallHeldEvent(const std::string& lineId, int callId) override
    {
        record("onCallHeldEvent", lineId, callId);
    }
    void onCallRetrievedEvent(const std::string& lineId, int callId, const std::string& uri,
                              const std::string& name, const std::string& fullPai, int ilCallLevel,
                              int ilLocalLevel, bool connectedToMediaServer) override
    {
        record("onCallRetrievedEvent",
               lineId,
               callId,
               uri,
               name,
               fullPai,
               ilCallLevel,
               ilLocalLevel,
               connectedToMediaServer);
    }
    void onFeatureSuccessEvent(const std::string& lineId, int callId, int feature) override
    {
        record("onFeatureSuccessEvent", lineId, callId, feature);
    }
    void onFeatureFailedEvent(const std::string& lineId, int callId, int feature,
                              int featureFailure) override
    {
        record("onFeatureFailedEvent", lineId, callId, feature, featureFailure);
    }
    void onRemoteEndpointDetailsChangedEvent(const std::string& lineId, int callId,
                                             const std::string& uri, const std::string& name,
                                             const std::string& fullPai, bool exitConf,
                                             bool jointCall) override
    {
        record("onRemoteEndpointDetailsChangedEvent",
               lineId,
               callId,
               uri,
               name,
               fullPai,
               exitConf,
               jointCall);
    }
    void onIncomingCallMissedEvent(const std::string& lineId, int callId, const std::string& uri,
                                   const std::string& name, const std::string& fullPai, int reason,
                                   const std::string& diversionUri,
                                   const std::string& diversionName, int diversionReason) override
    {
        record("onIncomingCallMissedEvent",
               lineId,
               callId,
               uri,
               name,
               fullPai,
               reason,
               diversionUri,
               diversionName,
               diversionReason);
    }
    void onCallForwardedEvent(const std::string& lineId, int callId,
                              const std::string& callingParty, const std::string& callingPartyName,
                              const std::string& callingPartyFullPai,
                              const std::string& newDestination, int reason) override
    {
        record("onCallForwardedEvent",
               lineId,
               callId,
               callingParty,
               callingPartyName,
               callingPartyFullPai,
               newDestination,
               reason);
    }
    void onIncomingAssociatedCallEvent(const std::string& lineId, int currentCallId,
                                       int newCallId) override
    {
        record("onIncomingAssociatedCallEvent", lineId, currentCallId, newCallId);
    }
    void onDevicesChangedEvent() override { record("onDevicesChangedEvent"); }
    void onMessageWaitingEvent(const std::string& lineId, int type, unsigned int newMessages,
                               unsigned int oldMessages, unsigned int newUrgentMessages,
                               unsigned int oldUrgentMessages, int returnType, int availInfo,
                               int messagesWaiting, const std::string& voiceMailNumber) override
    {
        record("onMessageWaitingEvent",
               lineId,
               type,
               newMessages,
               oldMessages,
               newUrgentMessages,
               oldUrgentMessages,
               returnType,
               availInfo,
               messagesWaiting,
               voiceMailNumber);
    }
    void onDoNotDisturbEvent(const std::string& deviceId, bool doNotDisturbOn) override
    {
        record("onDoNotDisturbEvent", deviceId, doNotDisturbOn);
    }
    void onAgentStateEvent(const std::string& deviceId, const std::string& agentState) override
    {
        record("onAgentStateEvent", deviceId, agentState);
    }
    void onSecurityStatusChanged(const std::string& lineURI, int callId, int securityStatus,
                                 std::vector<int>& callIdsRecorded,
                                 std::vector<std::string>& callLineURIsRecorded) override
    {
        record("onSecurityStatusChanged",
               lineURI,
               callId,
               securityStatus,
               callIdsRecorded,
               callLineURIsRecorded);
    }
    void onCallRecordingStatusEvent(const std::string& lineId, int callId,
                                    const std::string& callRecorded) override
    {
        record("onCallRecordingStatusEvent", lineId, callId, callRecorded);
    }
    void onPreemptionStatusChanged(const std::string& lineURI, int callId, int priority, int cause,
                                   const std::string& reason) override
    {
        record("onPreemptionStatusChanged", lineURI, callId, priority, cause, reason);
    }
    void onImpactLevelChanged(const std::string& lineURI, int callId, int ilCallLevel,
                              int ilLocalLevel) override
    {
        record("onImpactLevelChanged", lineURI, callId, ilCallLevel, ilLocalLevel);
    }
    void onSystemStatusEvent(const std::string& status, const std::string& statusInfo) override
    {
        record("onSystemStatusEvent", status, statusInfo);
    }
    void onServerFeatureStatusEvent(const std::string& lineURI, const std::string& status) override
    {
        record("onServerFeatureStatusEvent", lineURI, status);
    }
    void onB2buaCSTAResponse(const std::string& lineURI, bool success,
                             std::string& cstaResponse) override
    {
        if (withText)
            withText(cstaResponse);
        record("onB2buaCSTAResponse", lineURI, success, cstaResponse);
    }
    void onB2buaCSTAEventOrRequest(const std::string& lineURI, std::string& cstaMessage) override
    {
        if (withText)
            withText(cstaMessage);
        record("onB2buaCSTAEventOrRequest", lineURI, cstaMessage);
    }
    void onConferenceStatusEvent(const std::string& lineId, int callId,
                                 const std::string& xmlContent) override
    {
        record("onConferenceStatusEvent", lineId, callId, xmlContent);
    }
    void onCallCompletionEvent(const std::string& lineId, const std::string& uri,
                               int callCompletionType, int callCompletionState,
                               bool displayOutcomeCallUI) override
    {
        record("onCallCompletionEvent",
               lineId,
               uri,
               callCompletionType,
               callCompletionState,
               displayOutcomeCallUI);
    }
    void onCallCompletionFailedEvent(const std::string& lineId, const std::string& uri,
                                     int callCompletionFailureType) override
    {
        record("onCallCompletionFailedEvent", lineId, uri, callCompletionFailureType);
    }
    void onBluetoothAudioStatusChanged(const std::string& lineId, int callId, bool audioEnabled,
                                       bool audioGateway, bool inBandRinging) override
    {
        record("onBluetoothAudioStatusChanged",
               lineId,
               callId,
               audioEnabled,
               audioGateway,
               inBandRinging);
    }

private:
    template <class... Arguments>
    void record(const std::string& callback, const Arguments&... arguments)
    {
        std::string list;
        ((list += (list.empty() ? "" : ", ") + show(arguments)), ...);
        trace(callback + "(" + list + ")");
        if (inCallback)
            inCallback();
    }
};

}  // namespace support

#endif

#ifndef COMMUNICATIONS_SERVICE_EVENT_INVOKER_H
#define COMMUNICATIONS_SERVICE_EVENT_INVOKER_H

#include "CommunicationsServiceEventIfc.h"
#include "framework/Invoker.h"

#include <string>

/// The event side: finds the handler of an event by its method name; the handler reads its fields
/// and makes one callback, on the thread that called. Keeps nothing from one event to the next.
///
/// No handler tests the subscriber: a null one is called through as it stands, on purpose.
class COMMUNICATIONS_SERVICE_VISIBLE CommunicationsServiceEventInvoker : public Invoker
{
public:
    ~CommunicationsServiceEventInvoker() override;

    /// @param length  not used: the text ends at its NUL
    /// @throws std::logic_error  when `message` is null, before anything else happens
    void handleMessage(Executable* subscriber, const char* message, int length,
                       InvokerResponse* response) override;

    static void callStateChangeEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void registrationStateChangeEvent(CommunicationsServiceEventIfc* subscriber,
                                             std::string& text);
    static void incomingCallEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void incomingPickupCallEvent(CommunicationsServiceEventIfc* subscriber,
                                        std::string& text);
    static void callHeldEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void callRetrievedEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void featureSuccessEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void featureFailedEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void remoteEndpointDetailsChangedEvent(CommunicationsServiceEventIfc* subscriber,
                                                  std::string& text);
    static void incomingCallMissedEvent(CommunicationsServiceEventIfc* subscriber,
                                        std::string& text);
    static void callForwardedEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void messageWaitingEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void doNotDisturbEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void agentStateEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void systemStatusEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void serverFeatureStatusEvent(CommunicationsServiceEventIfc* subscriber,
                                         std::string& text);
    static void incomingAssociatedCallEvent(CommunicationsServiceEventIfc* subscriber,
                                            const std::string& text);
    static void b2buaCSTAResponse(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void b2buaCSTAEventOrRequest(CommunicationsServiceEventIfc* subscriber,
                                        std::string& text);
    static void conferenceStatusEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void securityStatusChanged(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void preemptionStatusChanged(CommunicationsServiceEventIfc* subscriber,
                                        std::string& text);
    static void impactLevelChanged(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void callRecordingStatusEvent(CommunicationsServiceEventIfc* subscriber,
                                         std::string& text);
    static void callCompletionEvent(CommunicationsServiceEventIfc* subscriber, std::string& text);
    static void callCompletionFailedEvent(CommunicationsServiceEventIfc* subscriber,
                                          std::string& text);
    static void bluetoothAudioStatusChanged(CommunicationsServiceEventIfc* subscriber,
                                            std::string& text);

    /// Field readers for events. The end tag counts only behind the start tag. Absent, or without
    /// an end tag: "" and -1. Numbers saturate at the 32-bit limits.
    static std::string getParamAsString(const std::string& startTag, const std::string& message,
                                        const std::string& endTag);
    static long getParamAsLong(const std::string& startTag, const std::string& message,
                               const std::string& endTag);
};

#endif

#ifndef KIT_FRAMEWORK_QUIET_SUBSCRIBER_H
#define KIT_FRAMEWORK_QUIET_SUBSCRIBER_H

#include "CommunicationsServiceEventIfc.h"
#include "framework/Executable.h"

namespace kit
{

/// A subscriber that does nothing: derive from it and override the callbacks that matter. It stands
/// in this header alone and needs nothing of the kit, so that it can go onto the phone too.
class QuietSubscriber : public Executable, public CommunicationsServiceEventIfc
{
public:
    void init(Context&) override {}
    void shutdown() override {}

    void onCallStateChangeEvent(const std::string&, int, int, int, int, const std::string&,
                                const std::string&, const std::string&, CallPartyInfo*, int, int,
                                const std::string&, bool, int, int) override
    {
    }
    void onRegistrationStateChangeEvent(const std::string&, int, bool, int) override {}
    void onIncomingCallEvent(const std::string&, int, const std::string&, const std::string&,
                             const std::string&, const std::string&, const std::string&, bool, int,
                             const std::string&, const std::string&, int, bool, int, int, int,
                             bool) override
    {
    }
    void onIncomingPickupCallEvent(const std::string&, int, const std::string&, const std::string&,
                                   const std::string&) override
    {
    }
    void onCallHeldEvent(const std::string&, int) override {}
    void onCallRetrievedEvent(const std::string&, int, const std::string&, const std::string&,
                              const std::string&, int, int, bool) override
    {
    }
    void onFeatureSuccessEvent(const std::string&, int, int) override {}
    void onFeatureFailedEvent(const std::string&, int, int, int) override {}
    void onRemoteEndpointDetailsChangedEvent(const std::string&, int, const std::string&,
                                             const std::string&, const std::string&, bool,
                                             bool) override
    {
    }
    void onIncomingCallMissedEvent(const std::string&, int, const std::string&, const std::string&,
                                   const std::string&, int, const std::string&, const std::string&,
                                   int) override
    {
    }
    void onCallForwardedEvent(const std::string&, int, const std::string&, const std::string&,
                              const std::string&, const std::string&, int) override
    {
    }
    void onIncomingAssociatedCallEvent(const std::string&, int, int) override {}
    void onDevicesChangedEvent() override {}
    void onMessageWaitingEvent(const std::string&, int, unsigned int, unsigned int, unsigned int,
                               unsigned int, int, int, int, const std::string&) override
    {
    }
    void onDoNotDisturbEvent(const std::string&, bool) override {}
    void onAgentStateEvent(const std::string&, const std::string&) override {}
    void onSecurityStatusChanged(const std::string&, int, int, std::vector<int>&,
                                 std::vector<std::string>&) override
    {
    }
    void onCallRecordingStatusEvent(const std::string&, int, const std::string&) override {}
    void onPreemptionStatusChanged(const std::string&, int, int, int, const std::string&) override
    {
    }
    void onImpactLevelChanged(const std::string&, int, int, int) override {}
    void onSystemStatusEvent(const std::string&, const std::string&) override {}
    void onServerFeatureStatusEvent(const std::string&, const std::string&) override {}
    void onB2buaCSTAResponse(const std::string&, bool, std::string&) override {}
    void onB2buaCSTAEventOrRequest(const std::string&, std::string&) override {}
    void onConferenceStatusEvent(const std::string&, int, const std::string&) override {}
    void onCallCompletionEvent(const std::string&, const std::string&, int, int, bool) override {}
    void onCallCompletionFailedEvent(const std::string&, const std::string&, int) override {}
    void onBluetoothAudioStatusChanged(const std::string&, int, bool, bool, bool) override {}
};

}  // namespace kit

#endif

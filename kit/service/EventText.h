#ifndef KIT_SERVICE_EVENT_TEXT_H
#define KIT_SERVICE_EVENT_TEXT_H

#include "kit/service/Model.h"

#include <string>
#include <vector>

// One function for each of the 28 events. All fields are always sent.
namespace kit::service::events
{

std::string callStateChange(const Call& call);
std::string registrationStateChange(const std::string& line, int callId, bool registered,
                                    int registrationResult);
std::string incomingCall(const Call& call);
std::string incomingPickupCall(const std::string& line, int callId, const Party& caller);
std::string callHeld(const Call& call);
std::string callRetrieved(const Call& call, bool connectedToMediaServer);
std::string featureSuccess(const std::string& line, int callId, int feature);
std::string featureFailed(const std::string& line, int callId, int feature, int featureFailure);
std::string remoteEndpointDetailsChanged(const Call& call, bool exitConf, bool jointCall);
std::string incomingCallMissed(const Call& call, int reason);
std::string callForwarded(const Call& call, const std::string& newDestination, int reason);
std::string devicesChanged();
std::string messageWaiting(const std::string& line, const Mailbox& mailbox);
std::string doNotDisturb(const std::string& device, bool on);
std::string agentState(const std::string& device, const std::string& state);
std::string systemStatus(const std::string& status, const std::string& statusInfo);
std::string serverFeatureStatus(const std::string& line, const std::string& status);
std::string incomingAssociatedCall(const std::string& line, int currentCallId, int newCallId);
std::string b2buaCstaResponse(const std::string& line, bool success, const std::string& payload);
std::string b2buaCstaEventOrRequest(const std::string& line, const std::string& payload);
std::string conferenceStatus(const Call& call, const std::string& xmlContent);
std::string securityStatusChanged(const Call& call, const std::vector<int>& callIdsRecorded,
                                  const std::vector<std::string>& callLineUrisRecorded);
std::string preemptionStatusChanged(const Call& call, int priority, int cause,
                                    const std::string& reason);
std::string impactLevelChanged(const Call& call);
std::string callRecordingStatus(const Call& call);
std::string callCompletion(const CallBack& callBack, int state);
std::string callCompletionFailed(const CallBack& callBack, int failure);
std::string bluetoothAudioStatusChanged(const std::string& line, int callId, bool audioEnabled,
                                        bool audioGateway, bool inBandRinging);

}  // namespace kit::service::events

#endif

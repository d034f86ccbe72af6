#ifndef COMMUNICATIONS_SERVICE_BENCH_REFERENCE_H
#define COMMUNICATIONS_SERVICE_BENCH_REFERENCE_H

#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceTypes.h"
#include "framework/Invoker.h"

#include <string>
#include <vector>

class ProxyRequest;

// The reference implementation: the same work written down as plainly as it can be, with text
// streams, and a search from the front of the message for each tag. The library is measured against
// it, and must agree with it in every bit.

class ReferenceInvoker : public Invoker
{
public:
    void handleMessage(Executable* subscriber, const char* message, int length,
                       InvokerResponse* response) override;
};

/// The operations that are measured.
class ReferenceProxy
{
public:
    explicit ReferenceProxy(ProxyRequest& to) : channel(to) {}

    int answerCall(const std::string& line, int callId);
    int outgoingCallMake(const std::string& line, int callId, const char* destination,
                         bool dssDirectCall, bool bridgeCall, bool callCompletionCall);
    int setForwardingConfiguration(const std::string& line, sfiForwardingType fwType, bool status,
                                   const std::string& uri, int cfnrRingCount, bool forceTKVSUpdate);
    int SendCSTARequest(const std::string& line, const std::string& cstaRequest);
    int getForwardingConfiguration(sfiForwardingType fwType, bool& status, std::string& uri,
                                   int& cfnrRingCount);
    int getMessageWaitingIndicator(int& type, unsigned int& newMsgs, unsigned int& oldMsgs,
                                   unsigned int& newUrgMsgs, unsigned int& oldUrgMsgs,
                                   int& returnType, int& availableInfo, int& messagesWaiting,
                                   std::string& voiceMailNumber);
    int getDevices(std::vector<std::string>& devices);

private:
    ProxyRequest& channel;
};

#endif

#ifndef RECORDER_RECORDING_H
#define RECORDER_RECORDING_H

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "framework/FrameworkContext.h"
#include "framework/ProxyRequest.h"
#include "recorder/Recorder.h"

#include <memory>
#include <string>

namespace recorder
{

/// The recorder of this process, made when it is first asked for; null when nothing is to be
/// recorded or, as the framework's log then says, nothing can be.
std::shared_ptr<Recorder> recorderOfProcess() noexcept;

/// Stands between the proxy and the framework's channel. It has what the library knows of a channel
/// and of its context, and nothing else: the library alone sees it.
class RecordingChannel final : public ProxyRequest, private FrameworkContext
{
public:
    explicit RecordingChannel(std::shared_ptr<Recorder> recorder);

    void forwardTo(ProxyRequest& channel) { channel_ = &channel; }

    void sendRequest(const std::string& request, std::string& response) override;
    void sendRequestTimed(const std::string& request, std::string& response, int timeout) override;
    void sendSubscribe(const std::string& request, std::string& response,
                       const std::string& channelName, int timeout) override;
    void sendOneWay(const std::string& message) override;
    void setProtocol(const std::string& protocolName) override;

private:
    std::string findChannel(Executable* executable) override;

    template <typename Send>
    void pass(Sending sending, const std::string& request, const std::string& channelName,
              const std::string* response, const Send& send);

    const std::shared_ptr<Recorder> recorder_;
    ProxyRequest* channel_ = nullptr;
};

class RecordingProxy : public CommunicationsServiceProxy
{
public:
    explicit RecordingProxy(std::shared_ptr<Recorder> recorder);

    void initProxy(ProxyRequest& channel) override;

private:
    RecordingChannel channel_;
};

class RecordingEventInvoker : public CommunicationsServiceEventInvoker
{
public:
    explicit RecordingEventInvoker(std::shared_ptr<Recorder> recorder);

    void handleMessage(Executable* subscriber, const char* message, int length,
                       InvokerResponse* response) override;

private:
    const std::shared_ptr<Recorder> recorder_;
};

}  // namespace recorder

#endif

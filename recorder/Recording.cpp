#include "recorder/Recording.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <mutex>
#include <utility>

namespace recorder
{

namespace
{

/// Lives until the plug-in is closed or the process ends, and then writes what is left. The proxies
/// and invokers that still exist keep the recorder, which then takes nothing in any more.
class OfProcess
{
public:
    ~OfProcess()
    {
        if (recorder_ != nullptr)
            recorder_->stop();
    }

    std::shared_ptr<Recorder> get() noexcept
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (recorder_ != nullptr)
            return recorder_;
        try
        {
            const Settings settings = settingsOfProcess();
            if (!settings.file.empty())
                recorder_ = std::make_shared<Recorder>(settings);
        }
        catch (const std::exception& error)
        {
            // Proxy and invoker ask, each: one line says it.
            char text[sizeof complaint_];
            std::snprintf(text, sizeof text, "nothing is recorded: %s", error.what());
            if (std::strcmp(text, complaint_) != 0)
                logLine(std::strcpy(complaint_, text));
        }
        return recorder_;
    }

private:
    std::mutex mutex_;
    std::shared_ptr<Recorder> recorder_;
    char complaint_[512] = {};
};

OfProcess ofProcess;

}  // namespace

std::shared_ptr<Recorder> recorderOfProcess() noexcept
{
    return ofProcess.get();
}

RecordingChannel::RecordingChannel(std::shared_ptr<Recorder> recorder)
    : recorder_(std::move(recorder))
{
    context = this;
}

template <typename Send>
void RecordingChannel::pass(Sending sending, const std::string& request,
                            const std::string& channelName, const std::string* response,
                            const Send& send)
{
    const std::uint32_t number = recorder_->request(sending, request, channelName);
    try
    {
        send();
    }
    catch (...)
    {
        recorder_->exception(number);
        throw;
    }
    if (response != nullptr)
        recorder_->answer(sending, number, *response);
}

void RecordingChannel::sendRequest(const std::string& request, std::string& response)
{
    pass(Sending::request, request, std::string(), &response,
         [&] { channel_->sendRequest(request, response); });
}

void RecordingChannel::sendRequestTimed(const std::string& request, std::string& response,
                                        int timeout)
{
    pass(Sending::timed, request, std::string(), &response,
         [&] { channel_->sendRequestTimed(request, response, timeout); });
}

void RecordingChannel::sendSubscribe(const std::string& request, std::string& response,
                                     const std::string& channelName, int timeout)
{
    pass(Sending::subscribe, request, channelName, &response,
         [&] { channel_->sendSubscribe(request, response, channelName, timeout); });
}

void RecordingChannel::sendOneWay(const std::string& message)
{
    pass(Sending::oneWay, message, std::string(), nullptr, [&] { channel_->sendOneWay(message); });
}

void RecordingChannel::setProtocol(const std::string& protocolName)
{
    channel_->setProtocol(protocolName);
}

std::string RecordingChannel::findChannel(Executable* executable)
{
    std::string name = channel_->context->findChannel(executable);
    recorder_->know(executable, name);
    return name;
}

RecordingProxy::RecordingProxy(std::shared_ptr<Recorder> recorder) : channel_(std::move(recorder))
{
}

void RecordingProxy::initProxy(ProxyRequest& channel)
{
    channel_.forwardTo(channel);
    CommunicationsServiceProxy::initProxy(channel_);
}

RecordingEventInvoker::RecordingEventInvoker(std::shared_ptr<Recorder> recorder)
    : recorder_(std::move(recorder))
{
}

void RecordingEventInvoker::handleMessage(Executable* subscriber, const char* message, int length,
                                          InvokerResponse* response)
{
    recorder_->event(subscriber, message != nullptr ? message : "");
    try
    {
        CommunicationsServiceEventInvoker::handleMessage(subscriber, message, length, response);
    }
    catch (...)
    {
        recorder_->exception(0, subscriber);
        throw;
    }
}

}  // namespace recorder

#include "kit/testing/RecordingChannel.h"

#include "framework/FrameworkContext.h"
#include "framework/ProxyRequest.h"
#include "kit/framework/Exception.h"
#include "kit/framework/Library.h"
#include "kit/testing/Names.h"

#include <deque>
#include <map>
#include <mutex>
#include <utility>

namespace kit
{

class RecordingChannel::Channel final : public ProxyRequest, private FrameworkContext
{
public:
    explicit Channel(const std::string& library)
        : proxy_(Library(library).createProxy()),
          service_(dynamic_cast<CommunicationsServiceIfc&>(*proxy_))
    {
        ProxyRequest::context = this;
        proxy_->initProxy(*this);
    }

    CommunicationsServiceIfc& service() { return service_; }

    void sendRequest(const std::string& request, std::string& response) override
    {
        response = take({Sending::request, "", request, response, "", 0});
    }

    void sendRequestTimed(const std::string& request, std::string& response, int timeout) override
    {
        response = take({Sending::timed, "", request, response, "", timeout});
    }

    void sendSubscribe(const std::string& request, std::string& response,
                       const std::string& channelName, int timeout) override
    {
        response = take({Sending::subscribe, "", request, response, channelName, timeout});
    }

    void sendOneWay(const std::string& message) override
    {
        take({Sending::oneWay, "", message, "", "", 0});
    }

    void setProtocol(const std::string&) override {}

    std::mutex mutex;
    std::vector<Record> records;
    std::map<std::string, std::deque<std::string>> once;
    std::map<std::string, Answerer> answerers;
    std::string otherwise = "sfiSuccess";

private:
    std::string findChannel(Executable*) override { return "recorded"; }

    std::string take(Record record)
    {
        record.method = parse(record.text).method;
        Answerer answerer;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            records.push_back(record);
            std::deque<std::string>& next = once[record.method];
            if (!next.empty())
            {
                std::string text = std::move(next.front());
                next.pop_front();
                return text;
            }
            const auto found = answerers.find(record.method);
            if (found == answerers.end())
                return otherwise;
            answerer = found->second;
        }
        return answerer(record);
    }

    std::unique_ptr<Proxy> proxy_;
    CommunicationsServiceIfc& service_;
};

std::string RecordingChannel::Record::field(const std::string& name) const
{
    const Operation& operation = method.empty() ? operations().front() : checkRequest(method);
    const Field& field = operation.arguments[checkedPlaceOf(method, operation.arguments, name)];
    const Message message = parse(text);
    if (field.kind == Kind::payload)
        return message.payload;
    if (field.kind == Kind::raw)
        return text.substr(text.find(':') + 1);
    const std::string* const value = message.find(field.tag);
    return value != nullptr ? *value : std::string();
}

RecordingChannel::RecordingChannel(const std::string& library)
    : channel_(std::make_unique<Channel>(library))
{
}

RecordingChannel::~RecordingChannel() = default;

CommunicationsServiceIfc& RecordingChannel::service()
{
    return channel_->service();
}

void RecordingChannel::answer(const std::string& method, const std::string& text)
{
    answerWith(method, [text](const Record&) { return text; });
}

void RecordingChannel::answerAll(const std::string& text)
{
    const std::lock_guard<std::mutex> lock(channel_->mutex);
    channel_->otherwise = text;
}

void RecordingChannel::answerOnce(const std::string& method, const std::string& text)
{
    checkRequest(method);
    const std::lock_guard<std::mutex> lock(channel_->mutex);
    channel_->once[method].push_back(text);
}

void RecordingChannel::answerWith(const std::string& method, Answerer answerer)
{
    checkRequest(method);
    const std::lock_guard<std::mutex> lock(channel_->mutex);
    channel_->answerers[method] = std::move(answerer);
}

void RecordingChannel::throwOn(const std::string& method, const std::string& text)
{
    answerWith(method, [text](const Record&) -> std::string { throw ChannelException(text); });
}

std::vector<RecordingChannel::Record> RecordingChannel::requests() const
{
    const std::lock_guard<std::mutex> lock(channel_->mutex);
    return channel_->records;
}

std::vector<RecordingChannel::Record> RecordingChannel::requests(const std::string& method) const
{
    checkRequest(method);
    std::vector<Record> found;
    for (Record& record : requests())
        if (record.method == method)
            found.push_back(std::move(record));
    return found;
}

void RecordingChannel::forget()
{
    const std::lock_guard<std::mutex> lock(channel_->mutex);
    channel_->records.clear();
}

}  // namespace kit

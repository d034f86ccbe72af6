#ifndef KIT_TESTING_RECORDING_CHANNEL_H
#define KIT_TESTING_RECORDING_CHANNEL_H

#include "CommunicationsServiceIfc.h"
#include "kit/protocol/Protocol.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kit
{

/// The real library's request side over a channel that only records, for an application's tests:
///
///     kit::RecordingChannel channel;
///     channel.answer("AnswerCall", "sfiFailure");
///     MyApplication application(channel.service());
///     ...
///     EXPECT_EQ(channel.requests("AnswerCall").size(), 1u);
///
/// Every request is answered with "sfiSuccess" unless told otherwise. Any thread may call anything.
/// Methods are names as they travel; one that no request has throws std::invalid_argument.
class RecordingChannel
{
public:
    struct Record
    {
        Sending sending;
        std::string method;   ///< "" for signalling data
        std::string text;     ///< as it was sent
        std::string before;   ///< what the response held when it was handed to the channel
        std::string channel;  ///< of a subscription
        int timeout;          ///< where the library gives one, else 0

        /// Value of a field, by its tag or its argument; "" where it was cut off. Throws
        /// std::invalid_argument for a name that the request does not have.
        std::string field(const std::string& name) const;
    };

    using Answerer = std::function<std::string(const Record& request)>;

    /// Throws LibraryError. See Library for the path.
    explicit RecordingChannel(const std::string& library = std::string());
    ~RecordingChannel();

    RecordingChannel(const RecordingChannel&) = delete;
    RecordingChannel& operator=(const RecordingChannel&) = delete;

    CommunicationsServiceIfc& service();

    /// Answers from now on with this text; without a method, all that have no answer of their own.
    void answer(const std::string& method, const std::string& text);
    void answerAll(const std::string& text);

    /// Answers the next request with this one, before any other; may be called several times.
    void answerOnce(const std::string& method, const std::string& text);

    /// Answers with what the function makes of the request; it may also throw. Called on the thread
    /// of the request with no lock held.
    void answerWith(const std::string& method, Answerer answerer);

    /// Throws a MarloException with this text instead of answering.
    void throwOn(const std::string& method, const std::string& text);

    /// What was sent so far: all of it, or the requests with this method.
    std::vector<Record> requests() const;
    std::vector<Record> requests(const std::string& method) const;

    /// Forgets what was sent, not how to answer.
    void forget();

private:
    class Channel;
    std::unique_ptr<Channel> channel_;
};

}  // namespace kit

#endif

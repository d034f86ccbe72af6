#ifndef BENCH_MESSAGES_H
#define BENCH_MESSAGES_H

#include <map>
#include <string>
#include <vector>

// The arguments of the requests.
extern const std::string line;
extern const std::string uri;
extern const std::string payload;
constexpr int callId = 4711;
constexpr const char* destination = "+4989700012345";

/// A message by its fields.
struct Message
{
    struct Field
    {
        std::string tag;
        std::string value;
        bool isNumber;
    };

    std::string method;  ///< "" in an answer
    std::vector<Field> fields;
    std::string payload;

    std::string text() const;
    Message reversed() const;
    Message swapped(std::size_t one, std::size_t other) const;
    Message first(std::size_t count) const;

    /// With some `size` bytes of fields that nobody knows.
    Message withUnknownInFront(std::size_t size) const;
    Message withUnknownBehind(std::size_t size) const;

    /// So many of the kind, with values of other lengths.
    std::vector<Message> varied(std::size_t count) const;
};

/// How large texts are measured, each time four times as large.
constexpr std::size_t smallest = 1024;
constexpr std::size_t largest = 16 * 1024 * 1024;

/// The request of each case that has one.
extern const std::map<std::string, Message> requests;

extern const Message forwardingAnswer;
extern const Message messageWaitingAnswer;
extern const std::vector<std::string> devices;
constexpr const char* deviceDomain = "@pbx.example.com";  ///< makes long items of them
std::string deviceList(std::size_t count, const std::string& domain = "");
extern const Message devicesChanged;
extern const Message callHeld;
extern const Message callState;
extern const Message incomingCall;
extern const Message cstaResponse;
extern const Message securityStatus;

#endif

// handleMessage with a real subscriber. The first byte picks an event's name to stand in front; with
// no such event the input is the whole message.

#include "CommunicationsServiceEventInvoker.h"
#include "Fuzzer.h"
#include "tests/support/Channel.h"
#include "tests/support/Events.h"
#include "tests/support/Reference.h"
#include "tests/support/WritingSubscriber.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    std::string message;
    if (data[0] < std::size(samples::events))
        message = samples::method(samples::events[data[0]].method);
    message.append(reinterpret_cast<const char*>(data + 1), size - 1);
    message.resize(message.find('\0') == std::string::npos ? message.size() : message.find('\0'));

    static CommunicationsServiceEventInvoker invoker;
    static ReferenceInvoker reference;
    static WritingSubscriber subscriber, expected;
    Response response;
    subscriber.said.clear();
    expected.said.clear();
    invoker.handleMessage(&subscriber, message.c_str(), static_cast<int>(size), &response);
    reference.handleMessage(&expected, message.c_str(), static_cast<int>(size), nullptr);
    demandEqual("callbacks", subscriber.said, expected.said);
    demandEqual("responses", response.times, 1);
    return 0;
}

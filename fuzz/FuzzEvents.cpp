// handleMessage with a real subscriber. The first byte picks an event's name to stand in front; with
// no such event the input is the whole message.

#include "CommunicationsServiceEventInvoker.h"
#include "Fuzzer.h"
#include "Plain.h"
#include "tests/proof/Framework.h"
#include "tests/proof/Recorder.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    std::string message;
    if (data[0] < plain::methods.size())
        message = "<Method>" + plain::methods[data[0]] + "</Method>";
    message.append(reinterpret_cast<const char*>(data + 1), size - 1);
    message.resize(message.find('\0') == std::string::npos ? message.size() : message.find('\0'));

    static CommunicationsServiceEventInvoker invoker;
    static Recorder subscriber;
    Response response;
    subscriber.said.clear();
    invoker.handleMessage(&subscriber, message.c_str(), static_cast<int>(size), &response);
    demandEqual("callbacks", subscriber.said, plain::callbacks(message));
    demandEqual("responses", response.times, 1);
    return 0;
}

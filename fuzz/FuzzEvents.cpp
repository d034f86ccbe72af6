// handleMessage with a real subscriber. The first byte picks an event's name to stand in front; with
// no such event the input is the whole message.

#include "tests/support/Comparison.h"
#include "tests/support/Events.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    std::string message;
    if (data[0] < std::size(samples::events))
        message = samples::method(samples::events[data[0]].method);
    message.append(reinterpret_cast<const char*>(data + 1), size - 1);
    static Comparison comparison;
    comparison.event(message.c_str());
    return 0;
}

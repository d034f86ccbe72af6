// All queries, with the input as the service's answer. The first byte tells whether the channel
// replaces the response or appends to what the query has put there.

#include "tests/support/Comparison.h"

#include <cstdint>

namespace
{

bool has(const std::string& text, const char* word)
{
    return text.find(word) != std::string::npos;
}

void compareWords(CommunicationsServiceProxy& proxy, const Channel& channel)
{
    const std::string& answer = channel.answer;
    // What these two have put into the response stays in front when the channel appends.
    const std::string behindFalse = (channel.appends ? "false" : "") + answer;
    for (const bool before : {false, true})
    {
        bool value = before;
        int result = proxy.getMicrophoneMute(value);
        const bool failed = has(answer, "sfiFailure");
        demandEqual("getMicrophoneMute", shown(result, value),
                    shown(failed ? 0 : 5, failed ? before : has(answer, "true")));
        value = before;
        result = proxy.getDoNotDisturb("1001", value);
        demandEqual("getDoNotDisturb", shown(result, value),
                    shown(failed ? 0 : 5, failed ? before : has(behindFalse, "true")));
    }

    sfiServiceState state = static_cast<sfiServiceState>(77);
    const int result = proxy.getServiceState(state);
    const int expected = has(behindFalse, "sfiFailure")               ? 77
                         : has(behindFalse, "sfiServiceInService")    ? 0
                         : has(behindFalse, "sfiServiceOutOfService") ? 1
                         : has(behindFalse, "sfiServiceDoNotDisturb") ? 2
                                                                      : 77;
    demandEqual("getServiceState", shown(result, static_cast<int>(state)),
                shown(expected == 77 ? 0 : 5, expected));
    demandEqual("isCallHoldPossible", proxy.isCallHoldPossible("1001"), answer == "true");
    demandEqual("getManualHoldIndication", proxy.getManualHoldIndication("1001", 1),
                answer == "true");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    static Comparison comparison;
    Channel& channel = comparison.channel;
    channel.appends = (data[0] & 1) != 0;
    channel.answer.assign(reinterpret_cast<const char*>(data + 1), size - 1);
    compareWords(*comparison.proxy, channel);
    demandEqual("answerCall", comparison.proxy->answerCall("1001", 1),
                rules::result(channel.answer));
    comparison.answer(channel.answer);
    return 0;
}

// Operations that write every kind of field, with hostile texts and numbers of any length and order.

#include "tests/support/Comparison.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>

using rules::request;

namespace
{

/// The bytes of a C string: up to the first zero byte; none of a null one.
rules::Value chars(const std::string& text, bool isNull)
{
    return isNull ? rules::Value() : text.c_str();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Comparison comparison;
    CommunicationsServiceProxy& proxy = *comparison.proxy;
    const std::string& sent = comparison.channel.sent;

    FuzzedDataProvider input(data, size);
    const int number = input.ConsumeIntegral<int>();
    const int other = input.ConsumeIntegral<int>();
    const unsigned int bits = input.ConsumeIntegral<unsigned char>();
    const bool one = (bits & 1) != 0;
    const bool two = (bits & 2) != 0;
    const bool three = (bits & 4) != 0;
    const bool null = (bits & 8) != 0;
    // Now and then a text is made far longer than the input.
    const auto text = [&]
    {
        std::string value = input.ConsumeRandomLengthString();
        const std::size_t times = input.ConsumeIntegral<unsigned char>();
        std::string repeated = value;
        for (std::size_t i = 0; times > 200 && i < times; ++i)
            repeated += value;
        return repeated;
    };
    const std::string line = text();
    const std::string second = text();
    const std::string third = text();
    const std::string numberText = std::to_string(number);
    const std::string otherText = std::to_string(other);
    const auto flag = [](bool value) { return std::string(value ? "1" : "0"); };

    proxy.cancelCallbacks(line, number, second, static_cast<sfiCancelCallBackType>(other), one);
    demandEqual("cancelCallbacks", sent,
                request("CancelCallbacks", {{"Line", line},
                                            {"CallID", numberText},
                                            {"URI", second},
                                            {"CancelCallBackType", otherText},
                                            {"DisplayOutcomeCallUI", flag(one)}}));

    const sfiForwardingType type = static_cast<sfiForwardingType>(number);
    proxy.setForwardingConfiguration(line, type, two, third, other, three);
    demandEqual("setForwardingConfiguration", sent,
                request("setForwardingConfiguration", {{"Line", line},
                                                       {"fwType", numberText},
                                                       {"status", flag(two)},
                                                       {"uri", third},
                                                       {"cfnrRingCount", otherText},
                                                       {"forceTKVSUpdate", flag(three)}}));

    proxy.outgoingCallMake(line, number, null ? nullptr : second.c_str(), one, two, three);
    demandEqual("outgoingCallMake", sent,
                request("OutgoingCallMakeRequest", {{"Line", line},
                                                    {"CallID", numberText},
                                                    {"Destination", chars(second, null)},
                                                    {"DSSDirectCall", flag(one)},
                                                    {"BridgeCall", flag(two)},
                                                    {"CallCompletionCall", flag(three)}}));

    proxy.generateDigits(line, other, null ? nullptr : third.c_str());
    demandEqual(
        "generateDigits", sent,
        request("GenerateDigits",
                {{"Line", line}, {"activeCall", otherText}, {"digits", chars(third, null)}}));

    proxy.systemStatus(one ? nullptr : second.c_str(), two ? nullptr : third.c_str());
    demandEqual("systemStatus", sent,
                request("SystemStatus", {{"SystemStatus", chars(second, one)},
                                         {"SystemStatusInfo", chars(third, two)}}));

    proxy.SendCSTARequest(line, second);
    demandEqual("SendCSTARequest", sent, request("SendCSTARequest", {{"Line", line}}) + second);

    proxy.RemoveConfParticipant(number, second, third);
    demandEqual("RemoveConfParticipant", sent,
                request("RemoveConfParticipant", {{"callID", "itos(" + numberText + ")"},
                                                  {"remoteParticipant", second},
                                                  {"conferenceMemberId", third}}));

    proxy.setServiceState(static_cast<sfiServiceState>(number));
    demandEqual("setServiceState", sent,
                request("SetServiceState", {{"state", number == 0   ? "sfiServiceInService"
                                                      : number == 1 ? "sfiServiceOutOfService"
                                                      : number == 2 ? "sfiServiceDoNotDisturb"
                                                                    : ""}}));

    proxy.processSignallingComponentEvent(line.data(), static_cast<int>(line.size()));
    demandEqual("processSignallingComponentEvent", sent, "SigEvent:" + line);
    return 0;
}

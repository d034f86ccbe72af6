// Operations that write every kind of field, with hostile texts and numbers of any length and order.

#include "CommunicationsServiceProxy.h"
#include "Fuzzer.h"
#include "tests/support/Channel.h"
#include "tests/support/Reference.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>

namespace
{

/// The bytes of a C string: up to the first zero byte.
std::string untilZero(const std::string& text)
{
    return text.c_str();
}

/// What stays of a request when one of its texts is null: all up to behind the opening tag.
std::string cutBehind(const std::string& request, const std::string& tag)
{
    return request.substr(0, request.find("<" + tag + ">") + tag.size() + 2);
}

std::string request(const std::string& method,
                    const std::vector<std::pair<std::string, std::string>>& fields)
{
    std::string message = "<Method>" + method + "</Method>";
    for (const auto& [tag, value] : fields)
        message += "<" + tag + ">" + value + "</" + tag + ">";
    return message;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static FrameworkOfOne context;
    static Channel channel(context), referenceChannel(context);
    static ReferenceProxy reference(referenceChannel);
    static CommunicationsServiceProxy proxy;
    proxy.initProxy(channel);

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
    demandEqual("cancelCallbacks", channel.sent,
                request("CancelCallbacks", {{"Line", line},
                                            {"CallID", numberText},
                                            {"URI", second},
                                            {"CancelCallBackType", otherText},
                                            {"DisplayOutcomeCallUI", flag(one)}}));

    const sfiForwardingType type = static_cast<sfiForwardingType>(number);
    proxy.setForwardingConfiguration(line, type, two, third, other, three);
    reference.setForwardingConfiguration(line, type, two, third, other, three);
    demandEqual("setForwardingConfiguration", channel.sent, referenceChannel.sent);

    // A null text cuts the request off; the tag that is searched must not come out of the line.
    proxy.outgoingCallMake("1001", number, null ? nullptr : second.c_str(), one, two, three);
    reference.outgoingCallMake("1001", number, null ? "" : second.c_str(), one, two, three);
    const std::string& call = referenceChannel.sent;
    demandEqual("outgoingCallMake", channel.sent, null ? cutBehind(call, "Destination") : call);

    proxy.generateDigits(line, other, null ? nullptr : third.c_str());
    std::string digits = request("GenerateDigits", {{"Line", line}, {"activeCall", otherText}});
    digits += null ? "<digits>" : "<digits>" + untilZero(third) + "</digits>";
    demandEqual("generateDigits", channel.sent, digits);

    proxy.systemStatus(one ? nullptr : second.c_str(), two ? nullptr : third.c_str());
    std::string status = "<Method>SystemStatus</Method><SystemStatus>";
    if (!one)
        status += untilZero(second) + "</SystemStatus><SystemStatusInfo>";
    if (!one && !two)
        status += untilZero(third) + "</SystemStatusInfo>";
    demandEqual("systemStatus", channel.sent, status);

    proxy.SendCSTARequest(line, second);
    reference.SendCSTARequest(line, second);
    demandEqual("SendCSTARequest", channel.sent, referenceChannel.sent);

    proxy.RemoveConfParticipant(number, second, third);
    demandEqual("RemoveConfParticipant", channel.sent,
                request("RemoveConfParticipant", {{"callID", "itos(" + numberText + ")"},
                                                  {"remoteParticipant", second},
                                                  {"conferenceMemberId", third}}));

    proxy.setServiceState(static_cast<sfiServiceState>(number));
    demandEqual("setServiceState", channel.sent,
                request("SetServiceState", {{"state", number == 0   ? "sfiServiceInService"
                                                      : number == 1 ? "sfiServiceOutOfService"
                                                      : number == 2 ? "sfiServiceDoNotDisturb"
                                                                    : ""}}));

    proxy.processSignallingComponentEvent(line.data(), static_cast<int>(line.size()));
    demandEqual("processSignallingComponentEvent", channel.sent, "SigEvent:" + line);
    return 0;
}

// All queries, with the input as the service's answer. The first byte tells whether the channel
// replaces the response or appends to what the query has put there.

#include "CommunicationsServiceProxy.h"
#include "Fuzzer.h"
#include "Plain.h"
#include "tests/proof/Framework.h"
#include "tests/proof/Recorder.h"

#include <cstdint>

namespace
{

struct HostileChannel : Channel
{
    using Channel::Channel;
    void sendRequest(const std::string&, std::string& response) override
    {
        response = appends ? response + answer : answer;
    }
    bool appends = false;
};

template <typename... Values>
std::string all(const Values&... values)
{
    std::string text;
    CallText call(text);
    (call.add(values), ...);
    return text;
}

bool has(const std::string& text, const char* word)
{
    return text.find(word) != std::string::npos;
}

std::string answerText(const std::string& tag, const std::string& answer)
{
    return plain::answerText("<" + tag + ">", answer, "</" + tag + ">");
}

long answerNumber(const std::string& tag, const std::string& answer)
{
    return plain::answerNumber("<" + tag + ">", answer, "</" + tag + ">");
}

void compareWords(CommunicationsServiceProxy& proxy, const HostileChannel& channel)
{
    const std::string& answer = channel.answer;
    // What these two have put into the response stays in front when the channel appends.
    const std::string behindFalse = (channel.appends ? "false" : "") + answer;
    for (const bool before : {false, true})
    {
        bool value = before;
        int result = proxy.getMicrophoneMute(value);
        const bool failed = has(answer, "sfiFailure");
        demandEqual("getMicrophoneMute",
                    all(result, value),
                    all(failed ? 0 : 5, failed ? before : has(answer, "true")));
        value = before;
        result = proxy.getDoNotDisturb("1001", value);
        demandEqual("getDoNotDisturb",
                    all(result, value),
                    all(failed ? 0 : 5, failed ? before : has(behindFalse, "true")));
    }

    sfiServiceState state = static_cast<sfiServiceState>(77);
    const int result = proxy.getServiceState(state);
    const int expected = has(behindFalse, "sfiFailure")               ? 77
                         : has(behindFalse, "sfiServiceInService")    ? 0
                         : has(behindFalse, "sfiServiceOutOfService") ? 1
                         : has(behindFalse, "sfiServiceDoNotDisturb") ? 2
                                                                      : 77;
    demandEqual("getServiceState",
                all(result, static_cast<int>(state)),
                all(expected == 77 ? 0 : 5, expected));
    demandEqual("isCallHoldPossible", proxy.isCallHoldPossible("1001"), answer == "true");
    demandEqual("getManualHoldIndication",
                proxy.getManualHoldIndication("1001", 1),
                answer == "true");
    demandEqual("answerCall", proxy.answerCall("1001", 1), plain::result(answer));
}

void compareFields(CommunicationsServiceProxy& proxy, const std::string& answer)
{
    bool status = false;
    std::string uri = "before";
    int count = 77;
    int result =
        proxy.getForwardingConfiguration(static_cast<sfiForwardingType>(1), status, uri, count);
    demandEqual("getForwardingConfiguration",
                all(result, status, uri, count),
                all(plain::result(answerText("sfiResult", answer)),
                    answerNumber("status", answer) != 0,
                    answerText("uri", answer),
                    static_cast<int>(answerNumber("cfnrRingCount", answer))));

    int type, returnType, available, waiting;
    unsigned int fresh, old, freshUrgent, oldUrgent;
    std::string mailbox = "before";
    result = proxy.getMessageWaitingIndicator(type,
                                              fresh,
                                              old,
                                              freshUrgent,
                                              oldUrgent,
                                              returnType,
                                              available,
                                              waiting,
                                              mailbox);
    const auto number = [&](const char* tag)
    { return static_cast<int>(plain::number(answerText(tag, answer))); };
    const auto counted = [&](const char* tag) { return static_cast<unsigned int>(number(tag)); };
    demandEqual("getMessageWaitingIndicator",
                all(result,
                    type,
                    fresh,
                    old,
                    freshUrgent,
                    oldUrgent,
                    returnType,
                    available,
                    waiting,
                    mailbox),
                all(plain::result(answerText("func_return_val", answer)),
                    number("Type"),
                    counted("newMsgs"),
                    counted("oldMsgs"),
                    counted("newUrgMsgs"),
                    counted("oldUrgMsgs"),
                    number("return_type"),
                    number("available_info"),
                    number("messages_waiting"),
                    answerText("voiceMailNumber", answer)));

    std::vector<std::string> devices = {"before"};
    std::vector<std::string> expected = devices;
    result = proxy.getDevices(devices);
    if (answer != "sfiFailure")
        for (const std::string& item : plain::devices(answer))
            expected.push_back(item);
    demandEqual("getDevices", all(result, devices), all(answer == "sfiFailure" ? 0 : 5, expected));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    static FrameworkOfOne context;
    static HostileChannel channel(context);
    static CommunicationsServiceProxy proxy;
    proxy.initProxy(channel);
    channel.appends = (data[0] & 1) != 0;
    channel.answer.assign(reinterpret_cast<const char*>(data + 1), size - 1);
    compareWords(proxy, channel);
    compareFields(proxy, channel.answer);
    return 0;
}

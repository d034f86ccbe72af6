#include "recorder/Mask.h"

#include <algorithm>
#include <cctype>
#include <iterator>

namespace recorder
{

namespace
{

// Both lists are sorted, and keep their own layout: a line for each letter.
// clang-format off

// Numbers, flags and words of the protocol itself.
constexpr std::string_view harmless[] = {
    "AICSZIPAutoAnswer", "AlertInformation_AutoAnswer", "AllowAutoActivate", "AudioEnabled",
    "AudioGateway", "AutoAnswer",
    "BLFPickup", "BridgeCall",
    "CallBackFearureAvailable", "CallCompletionCall", "CallCompletionFailureType",
    "CallCompletionState", "CallCompletionType", "CallID", "CallIDsRecorded", "CallState",
    "CallType", "CancelCallBackType", "Cause", "ConnectedToMediaServer", "CurrentCallID",
    "DSSDirectCall", "DisplayOutcomeCallUI", "DiversionReason",
    "Feature", "FeatureFailure",
    "HoldCallReason",
    "ILCallLevel", "ILLocalLevel", "InBandRinging", "IsInServiceInitiatedState", "IsVideoCall",
    "Manual", "Method",
    "NewCallID",
    "PreemptionCause",
    "Reason", "RefuseCallReason", "Registered", "RegistrationResult", "ResourcePriority",
    "SendOptions", "Status",
    "Type",
    "activeCall", "agentState", "associated", "avail_info", "available_info",
    "callID", "callId", "cause", "cfnrRingCount",
    "doNotDisturbOn",
    "exitConf",
    "feature", "forceFlag", "forceTKVSUpdate", "func_return_val", "fwType",
    "heldCall",
    "initialize", "instanceId",
    "jointCall",
    "lampId", "lampMode",
    "messages_waiting",
    "newMsgs", "newUrgMsgs", "new_messages", "new_urgent_messages",
    "oldMsgs", "oldUrgMsgs", "old_messages", "old_urgent_messages",
    "priority",
    "return_type",
    "securityStatus", "sfiResult", "state", "success",
    "type",
};

// Lines, URIs, numbers and names, which keep their shape.
constexpr std::string_view parties[] = {
    "AlertInformation_AlertURI",
    "CallLineURIsRecorded", "CallToBePickedUp", "CallingParty", "CallingPartyFullPAI",
    "CallingPartyName",
    "Destination", "DiversionName", "DiversionURI",
    "FullPAI",
    "GPUCLD", "GPUCLDName", "GPUCLG", "GPUCLGName",
    "Line", "LineID",
    "Name", "NewDestination",
    "URI",
    "conferenceMemberId",
    "deviceID", "deviceId",
    "lineURI",
    "remoteParticipant",
    "uri",
    "voiceMailNumber",
};

// clang-format on

// What a URI is made of, whoever's it is.
constexpr std::string_view wordsOfUris[] = {"phone", "sip",       "sips", "tcp", "tel",
                                            "tls",   "transport", "udp",  "user"};

// A process that meets more parties than this is given new pseudonyms for all of them.
constexpr std::size_t mostKnown = 20000;

template <std::size_t size>
bool isIn(const std::string_view (&sorted)[size], std::string_view word)
{
    return std::binary_search(std::begin(sorted), std::end(sorted), word);
}

bool isWordCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || static_cast<signed char>(c) < 0 ||
           std::string_view("+*#_.-%!~").find(c) != std::string_view::npos;
}

bool isTagCharacter(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

/// A flag, or a number that is too small for a person's.
bool isDigit(std::string_view value)
{
    return value.size() == 1 && value[0] >= '0' && value[0] <= '9';
}

/// A number or a word of the protocol, whatever the tag promises.
bool isShortWord(std::string_view value)
{
    return value.size() <= 40 &&
           std::all_of(value.begin(), value.end(),
                       [](char c)
                       {
                           return std::isalnum(static_cast<unsigned char>(c)) != 0 ||
                                  std::string_view(" _,;-").find(c) != std::string_view::npos;
                       });
}

}  // namespace

std::string Mask::masked(Kind kind, std::string_view text)
{
    std::string out;
    out.reserve(text.size() + text.size() / 2);
    constexpr std::string_view signalling = "SigEvent:";
    if (kind == Kind::exception)
        // What follows the type is anybody's text.
        out = text.substr(0, text.find(": "));
    else if (kind == Kind::answer)
        answer(out, text);
    else if (text.substr(0, signalling.size()) == signalling)
        whole(out += signalling, text.substr(signalling.size()));
    else
        fields(out, text);
    return out;
}

void Mask::answer(std::string& out, std::string_view text)
{
    if (text.find("</") != std::string_view::npos)
        fields(out, text);
    else if (text.find('<') != std::string_view::npos)
        party(out, text);
    else if (text == "true" || text == "false" || (text.substr(0, 3) == "sfi" && isShortWord(text)))
        out += text;
    else
        whole(out, text);
}

void Mask::fields(std::string& out, std::string_view text)
{
    while (!text.empty() && text[0] == '<')
    {
        const std::size_t close = text.find('>');
        if (close == std::string_view::npos)
            break;
        const std::string_view tag = text.substr(1, close - 1);
        // No field: the start of a document, whose tags may hold anything.
        if (tag.empty() || !std::all_of(tag.begin(), tag.end(), isTagCharacter))
            break;
        std::string end = "</";
        (end += tag) += '>';
        const std::size_t behind = text.find(end, close);
        out += text.substr(0, close + 1);
        text.remove_prefix(close + 1);
        // Cut off behind its tag.
        if (behind == std::string_view::npos)
            break;
        value(out, tag, text.substr(0, behind - close - 1));
        out += end;
        text.remove_prefix(behind - close - 1 + end.size());
    }
    whole(out, text);
}

void Mask::value(std::string& out, std::string_view tag, std::string_view value)
{
    if (tag == "digits")
        out.append(value.size(), '0');
    else if (isIn(parties, tag))
        party(out, value);
    else if (isIn(harmless, tag) ? isShortWord(value) : isDigit(value))
        out += value;
    else
        whole(out, value);
}

void Mask::party(std::string& out, std::string_view value)
{
    while (!value.empty())
    {
        const std::size_t length = static_cast<std::size_t>(
            std::find_if_not(value.begin(), value.end(), isWordCharacter) - value.begin());
        if (length == 0)
        {
            out += value[0];
            value.remove_prefix(1);
            continue;
        }
        const std::string_view word = value.substr(0, length);
        if (isIn(wordsOfUris, word))
            out += word;
        else if (word.find_first_not_of("+*#0123456789") == std::string_view::npos)
            out += std::to_string(900000U + numberOf(word));
        else
            (out += "name") += std::to_string(numberOf(word));
        value.remove_prefix(length);
    }
}

void Mask::whole(std::string& out, std::string_view value)
{
    if (!value.empty())
        (out += "masked") += std::to_string(numberOf(value));
}

std::uint32_t Mask::numberOf(std::string_view value)
{
    if (known_.size() >= mostKnown)
        known_.clear();
    const auto [place, added] = known_.emplace(value, count_ + 1);
    if (added)
        ++count_;
    return place->second;
}

}  // namespace recorder

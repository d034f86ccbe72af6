// The protocol is written twice: in the library, and in the kit's table. Here each is held against
// the other, for every operation and every event.
#include "Complaint.h"
#include "application/Subscriber.h"
#include "kit/binding/Caller.h"
#include "kit/binding/WireText.h"
#include "kit/protocol/Lists.h"
#include "kit/protocol/Protocol.h"
#include "kit/testing/EventInjector.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/RecordingChannel.h"

#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <regex>
#include <set>
#include <stdexcept>

namespace
{

using kit::Answer;
using kit::Field;
using kit::Kind;
using kit::Operation;
using kit::Outcome;
using kit::Sending;
using kit::Values;
using kit::test::refused;
using testing::ElementsAre;

/// A value that no other field of the message has; flags are as told.
std::string sample(const Field& field, std::size_t index, bool flag)
{
    if (kit::isFlag(field.kind))
        return flag ? "true" : "false";
    if (kit::isNumber(field.kind))
        return std::to_string(1000 + index);
    if (field.kind == Kind::state)
        return "sfiServiceDoNotDisturb";
    if (field.kind == Kind::ints)
        return std::to_string(2000 + index) + "," + std::to_string(3000 + index);
    if (field.kind == Kind::texts)
        return "sip:a" + std::to_string(index) + ",sip:b" + std::to_string(index);
    return "text " + std::to_string(index) + " & <more>";
}

Values samples(const std::vector<Field>& fields, bool flags)
{
    Values values;
    for (std::size_t i = 0; i < fields.size(); ++i)
        if (fields[i].kind != Kind::subscriber)
            values.emplace_back(fields[i].argument, sample(fields[i], i, flags));
    return values;
}

/// All flags off, all on, and each one alone on and alone off.
std::vector<Values> flagsOneByOne(const std::vector<Field>& fields)
{
    std::vector<Values> all;
    for (const bool flags : {false, true})
    {
        all.push_back(samples(fields, flags));
        for (std::size_t i = 0; i < fields.size(); ++i)
            if (kit::isFlag(fields[i].kind))
            {
                all.push_back(samples(fields, flags));
                all.back()[i].second = flags ? "false" : "true";
            }
    }
    return all;
}

/// The same, and numbers at their limits with texts that are empty or of other bytes.
std::vector<Values> allCases(const std::vector<Field>& fields)
{
    std::vector<Values> all = flagsOneByOne(fields);
    for (const auto& [number, text] :
         {std::pair("-2147483648", ""), std::pair("2147483647", "\xff\x01 \n")})
    {
        all.push_back(samples(fields, false));
        for (std::size_t i = 0; i < all.back().size(); ++i)
            if (fields[i].kind == Kind::text || fields[i].kind == Kind::cString ||
                fields[i].kind == Kind::raw || fields[i].kind == Kind::payload)
                all.back()[i].second = text;
            else if (kit::isNumber(fields[i].kind) && fields[i].kind != Kind::count)
                all.back()[i].second = number;
    }
    return all;
}

class Wire : public testing::Test
{
protected:
    Outcome call(const Operation& operation, const Values& values,
                 const std::vector<std::string>& nulls = {})
    {
        channel_.forget();
        return kit::call(channel_.service(), operation, values, &subscriber_, nulls);
    }

    kit::RecordingChannel channel_;
    kit::EventRecorder subscriber_;
};

TEST_F(Wire, EachOperationSendsWhatTheTableSays)
{
    std::size_t sent = 0;
    for (const Operation& operation : kit::operations())
    {
        SCOPED_TRACE(operation.name);
        for (const Values& values : allCases(operation.arguments))
        {
            call(operation, values);
            if (operation.sending == Sending::nothing)
            {
                EXPECT_TRUE(channel_.requests().empty());
                continue;
            }
            ASSERT_EQ(channel_.requests().size(), 1u);
            const kit::RecordingChannel::Record record = channel_.requests().front();
            EXPECT_EQ(record.text, kit::requestText(operation, values));
            EXPECT_EQ(record.sending, operation.sending);
        }
        sent += operation.sending != Sending::nothing ? 1 : 0;
    }
    EXPECT_EQ(kit::operations().size(), 48u);
    EXPECT_EQ(sent, 46u);
}

TEST_F(Wire, ANullCStringCutsTheRequestBehindItsTag)
{
    int cut = 0;
    for (const Operation& operation : kit::operations())
        for (const Field& field : operation.arguments)
        {
            if (field.kind != Kind::cString || operation.sending == Sending::nothing)
                continue;
            SCOPED_TRACE(std::string(operation.name) + " " + field.argument);
            const Values values = samples(operation.arguments, true);
            const std::string whole = kit::requestText(operation, values);
            const std::string tag = std::string("<") + field.tag + ">";
            call(operation, values, {field.argument});
            // Behind the method's own element: one operation has a field of the same name.
            const std::size_t from = std::string("<Method></Method>").size();
            ASSERT_EQ(channel_.requests().size(), 1u);
            EXPECT_EQ(channel_.requests().front().text,
                      whole.substr(0, whole.find(tag, from) + tag.size()));
            ++cut;
        }
    EXPECT_EQ(cut, 7);
}

TEST_F(Wire, EachStateTravelsByName)
{
    for (const kit::NumberName& state : kit::namesOf(kit::Meaning::serviceState))
    {
        call(*kit::findOperation("setServiceState"), {{"state", state.name}});
        EXPECT_EQ(channel_.requests().front().field("state"), state.name);
    }
    EXPECT_EQ(refused(
                  [&] {
                      call(*kit::findOperation("setServiceState"), {{"state", "asleep"}});
                  }),
              "state is the name of a service state, not \"asleep\"");
}

TEST_F(Wire, TimeOutsAndResponsesAsHandedToTheChannel)
{
    for (const Operation& operation : kit::operations())
    {
        SCOPED_TRACE(operation.name);
        call(operation, {});
        if (operation.sending == Sending::nothing)
            continue;
        const kit::RecordingChannel::Record record = channel_.requests().front();
        const bool hasTimeout =
            operation.sending == Sending::timed || operation.sending == Sending::subscribe;
        EXPECT_EQ(record.timeout, hasTimeout ? 100000 : 0);
        EXPECT_EQ(record.channel, operation.sending == Sending::subscribe ? "recorded" : "");
        const bool presetToFalse =
            record.method == "GetServiceState" || record.method == "GetDoNotDisturb";
        EXPECT_EQ(record.before, presetToFalse ? "false" : "");
    }
}

/// What each kind of answer makes of a text: the returned number and the one output.
TEST_F(Wire, EachAnswerIsReadAsTheTableSays)
{
    using Row = std::pair<int, std::vector<std::string>>;
    // clang-format off
    const struct
    {
        const char* answer;
        int result, whole;
        Row contains, stateName, items;
    } rows[] = {
        // "sfiFailure" leaves the flag as it was, which is true.
        {"sfiFailure", 0, 0, {0, {"1"}}, {0, {""}}, {0, {""}}},
        {"sfiSuccess", 5, 0, {5, {"0"}}, {0, {""}}, {5, {""}}},
        {"sfiFailureCallBackToMany", 3, 0, {0, {"1"}}, {0, {""}}, {5, {""}}},
        {"true", 0, 1, {5, {"1"}}, {0, {""}}, {5, {""}}},
        {"is true.", 0, 0, {5, {"1"}}, {0, {""}}, {5, {""}}},
        {"<sfiServiceOutOfService>", 0, 0, {5, {"0"}}, {5, {"sfiServiceOutOfService"}},
         {5, {"sfiServiceOutOfService,"}}},
        {"<1001><1002>", 0, 0, {5, {"0"}}, {0, {""}}, {5, {"1001,1002,"}}},
        {"<>", 0, 0, {5, {"0"}}, {0, {""}}, {5, {","}}},
        {"", 0, 0, {5, {"0"}}, {0, {""}}, {5, {""}}},
    };
    for (const Operation& operation : kit::operations())
        for (const auto& row : rows)
        {
            SCOPED_TRACE(std::string(operation.name) + ": " + row.answer);
            channel_.answerAll(row.answer);
            const Outcome outcome = call(operation, {});
            const std::map<Answer, Row> expected = {
                {Answer::result, {row.result, {}}}, {Answer::contains, row.contains},
                {Answer::stateName, row.stateName}, {Answer::whole, {row.whole, {}}},
                {Answer::items, row.items},
            };
            const auto found = expected.find(operation.answer);
            if (found != expected.end())
            {
                EXPECT_EQ(Row(outcome.number, outcome.outputs), found->second);
            }
            else if (operation.answer == Answer::none)
            {
                EXPECT_NE(outcome.returned, Outcome::Returned::result);
            }
        }
    // clang-format on
}

TEST_F(Wire, FieldsOfAnAnswerReachTheirOutputs)
{
    int answered = 0;
    for (const Operation& operation : kit::operations())
    {
        if (operation.answer != Answer::fields)
            continue;
        SCOPED_TRACE(operation.name);
        for (const Values& values : flagsOneByOne(operation.outputs))
        {
            std::string answer;
            std::vector<std::string> expected;
            for (std::size_t i = 0; i < values.size(); ++i)
            {
                expected.push_back(kit::toWire(operation.outputs[i], values[i].second));
                answer += kit::element(operation.outputs[i].tag, expected.back());
            }
            for (const auto& [word, number] : {std::pair("sfiSuccess", 5), std::pair("", 0)})
            {
                channel_.answer(operation.method, answer + kit::element(operation.resultTag, word));
                const Outcome outcome = call(operation, {});
                EXPECT_EQ(outcome.number, number);
                EXPECT_EQ(outcome.outputs, expected);
            }
            ++answered;
        }
    }
    EXPECT_EQ(answered, 2 + 4);
}

using namespace communications;

/// Every event as a structure, field by field.
class Structures
    : public EventSubscriber<
          CallStateChangeEvent, RegistrationStateChangeEvent, IncomingCallEvent,
          IncomingPickupCallEvent, CallHeldEvent, CallRetrievedEvent, FeatureSuccessEvent,
          FeatureFailedEvent, RemoteEndpointDetailsChangedEvent, IncomingCallMissedEvent,
          CallForwardedEvent, IncomingAssociatedCallEvent, DevicesChangedEvent, MessageWaitingEvent,
          DoNotDisturbEvent, AgentStateEvent, SecurityStatusChanged, CallRecordingStatusEvent,
          PreemptionStatusChanged, ImpactLevelChanged, SystemStatusEvent, ServerFeatureStatusEvent,
          B2buaCSTAResponse, B2buaCSTAEventOrRequest, ConferenceStatusEvent, CallCompletionEvent,
          CallCompletionFailedEvent, BluetoothAudioStatusChanged>
{
public:
    kit::ReceivedEvent heard;

private:
    // clang-format off
    void on(const CallStateChangeEvent& e) override
    { hear("onCallStateChangeEvent", e.lineId, e.callId, e.callState, e.reason, e.sendOptions, e.uri, e.name,
           e.fullPai, e.parties, e.resourcePriority, e.preemptionCause, e.preemptionText, e.callBackFeatureAvailable,
           e.ilCallLevel, e.ilLocalLevel); }
    void on(const RegistrationStateChangeEvent& e) override
    { hear("onRegistrationStateChangeEvent", e.lineId, e.callId, e.registered, e.registrationResult); }
    void on(const IncomingCallEvent& e) override
    { hear("onIncomingCallEvent", e.lineId, e.callId, e.uri, e.name, e.fullPai, e.alertUri, e.alertInfoParam,
           e.alertAutoAnswer, e.callType, e.diversionUri, e.diversionName, e.diversionReason, e.zipAutoAnswer,
           e.resourcePriority, e.ilCallLevel, e.ilLocalLevel, e.isVideoCall); }
    void on(const IncomingPickupCallEvent& e) override
    { hear("onIncomingPickupCallEvent", e.lineId, e.callId, e.uri, e.name, e.fullPai); }
    void on(const CallHeldEvent& e) override { hear("onCallHeldEvent", e.lineId, e.callId); }
    void on(const CallRetrievedEvent& e) override
    { hear("onCallRetrievedEvent", e.lineId, e.callId, e.uri, e.name, e.fullPai, e.ilCallLevel, e.ilLocalLevel,
           e.connectedToMediaServer); }
    void on(const FeatureSuccessEvent& e) override { hear("onFeatureSuccessEvent", e.lineId, e.callId, e.feature); }
    void on(const FeatureFailedEvent& e) override
    { hear("onFeatureFailedEvent", e.lineId, e.callId, e.feature, e.featureFailure); }
    void on(const RemoteEndpointDetailsChangedEvent& e) override
    { hear("onRemoteEndpointDetailsChangedEvent", e.lineId, e.callId, e.uri, e.name, e.fullPai, e.exitConf,
           e.jointCall); }
    void on(const IncomingCallMissedEvent& e) override
    { hear("onIncomingCallMissedEvent", e.lineId, e.callId, e.uri, e.name, e.fullPai, e.reason, e.diversionUri,
           e.diversionName, e.diversionReason); }
    void on(const CallForwardedEvent& e) override
    { hear("onCallForwardedEvent", e.lineId, e.callId, e.callingParty, e.callingPartyName, e.callingPartyFullPai,
           e.newDestination, e.reason); }
    void on(const IncomingAssociatedCallEvent& e) override
    { hear("onIncomingAssociatedCallEvent", e.lineId, e.currentCallId, e.newCallId); }
    void on(const DevicesChangedEvent&) override { hear("onDevicesChangedEvent"); }
    void on(const MessageWaitingEvent& e) override
    { hear("onMessageWaitingEvent", e.lineId, e.type, e.newMessages, e.oldMessages, e.newUrgentMessages,
           e.oldUrgentMessages, e.returnType, e.availInfo, e.messagesWaiting, e.voiceMailNumber); }
    void on(const DoNotDisturbEvent& e) override { hear("onDoNotDisturbEvent", e.deviceId, e.doNotDisturbOn); }
    void on(const AgentStateEvent& e) override { hear("onAgentStateEvent", e.deviceId, e.agentState); }
    void on(const SecurityStatusChanged& e) override
    { hear("onSecurityStatusChanged", e.lineURI, e.callId, e.securityStatus, e.callIdsRecorded,
           e.callLineURIsRecorded); }
    void on(const CallRecordingStatusEvent& e) override
    { hear("onCallRecordingStatusEvent", e.lineId, e.callId, e.callRecorded); }
    void on(const PreemptionStatusChanged& e) override
    { hear("onPreemptionStatusChanged", e.lineURI, e.callId, e.priority, e.cause, e.reason); }
    void on(const ImpactLevelChanged& e) override
    { hear("onImpactLevelChanged", e.lineURI, e.callId, e.ilCallLevel, e.ilLocalLevel); }
    void on(const SystemStatusEvent& e) override { hear("onSystemStatusEvent", e.status, e.statusInfo); }
    void on(const ServerFeatureStatusEvent& e) override { hear("onServerFeatureStatusEvent", e.lineURI, e.status); }
    void on(const B2buaCSTAResponse& e) override { hear("onB2buaCSTAResponse", e.lineURI, e.success, e.cstaResponse); }
    void on(const B2buaCSTAEventOrRequest& e) override { hear("onB2buaCSTAEventOrRequest", e.lineURI, e.cstaMessage); }
    void on(const ConferenceStatusEvent& e) override
    { hear("onConferenceStatusEvent", e.lineId, e.callId, e.xmlContent); }
    void on(const CallCompletionEvent& e) override
    { hear("onCallCompletionEvent", e.lineId, e.uri, e.callCompletionType, e.callCompletionState,
           e.displayOutcomeCallUI); }
    void on(const CallCompletionFailedEvent& e) override
    { hear("onCallCompletionFailedEvent", e.lineId, e.uri, e.callCompletionFailureType); }
    void on(const BluetoothAudioStatusChanged& e) override
    { hear("onBluetoothAudioStatusChanged", e.lineId, e.callId, e.audioEnabled, e.audioGateway, e.inBandRinging); }
    // clang-format on

    template <typename... Values>
    void hear(const char* callback, const Values&... values)
    {
        heard = {kit::findCallback(callback), {}};
        (add(values), ...);
    }
    template <typename Value>
    void add(const Value& value)
    {
        heard.values.push_back(kit::wireText(value));
    }
    void add(const CallParties& parties)
    {
        for (const std::string& text :
             {parties.callingNumber, parties.callingName, parties.calledNumber, parties.calledName})
            heard.values.push_back(text);
    }
};

class Events : public testing::Test
{
protected:
    /// The one event that came; fails when it is none or several.
    kit::ReceivedEvent only()
    {
        const std::vector<kit::ReceivedEvent> all = recorder_.events();
        recorder_.forget();
        EXPECT_EQ(all.size(), 1u);
        return all.empty() ? kit::ReceivedEvent{&kit::events().front(), {}} : all.front();
    }

    kit::EventRecorder recorder_;
    kit::EventInjector injector_{recorder_};
    Structures structures_;
    kit::EventInjector intoStructures_{structures_};
};

TEST_F(Events, EachReachesItsCallbackWithTheValuesOfTheTable)
{
    for (const kit::Event& event : kit::events())
    {
        SCOPED_TRACE(event.method);
        for (const Values& values : allCases(event.arguments))
        {
            injector_.inject(event.method, values);
            const kit::ReceivedEvent received = only();
            EXPECT_EQ(received.method(), event.method);
            std::vector<std::string> wire;
            for (std::size_t i = 0; i < values.size(); ++i)
                wire.push_back(kit::toWire(event.arguments[i], values[i].second));
            EXPECT_EQ(received.values, wire);
            const std::string text = kit::eventOfTexts(event.method, received.values);
            intoStructures_.raw(text);
            EXPECT_EQ(structures_.heard.event, &event);
            EXPECT_EQ(structures_.heard.values, received.values);
        }
    }
    EXPECT_EQ(kit::events().size(), 28u);
}

TEST_F(Events, OnlyOneMustMatchWhole)
{
    for (const kit::Event& event : kit::events())
    {
        SCOPED_TRACE(event.method);
        injector_.raw(kit::element("Method", std::string(event.method) + "2"));
        EXPECT_EQ(recorder_.events().size(), event.exact ? 0u : 1u);
        recorder_.forget();
        injector_.raw(kit::element("Method", std::string("x") + event.method));
        EXPECT_TRUE(recorder_.events().empty());
    }
}

TEST(Parsing, TakesMessagesApart)
{
    // Each text, and method, fields and payload as one.
    const std::pair<const char*, const char*> cases[] = {
        {"<Method>HoldCall</Method><Line>1001</Line><CallID>7</CallID>",
         "HoldCall Line=1001 CallID=7|"},
        {"<Method>DevicesChangedEvent</Method>", "DevicesChangedEvent|"},
        // Whole, though it looks like fields.
        {"<Method>SendCSTARequest</Method><Line>1</Line><a>2</a>x",
         "SendCSTARequest Line=1|<a>2</a>x"},
        {"<Method>b2buaCSTAResponse</Method><lineURI>1</lineURI><success>0</success><a></a>",
         "b2buaCSTAResponse lineURI=1 success=0|<a></a>"},
        // Cut off, as by a null text.
        {"<Method>DeflectCall</Method><Line>1</Line><Destination>",
         "DeflectCall Line=1|<Destination>"},
        {"<status>1</status><uri></uri>", " status=1 uri=|"},
        {"<1001><1002>", "|<1001><1002>"},
        {"sfiSuccess", "|sfiSuccess"},
        {"SigEvent:<Method>x</Method>", "|SigEvent:<Method>x</Method>"},
        {"", "|"},
        {"<", "|<"},
        {"<Method>", "|<Method>"},
    };
    for (const auto& [text, parts] : cases)
    {
        const kit::Message message = kit::parse(text);
        std::string seen = message.method;
        for (const kit::Message::Element& element : message.elements)
            seen += " " + element.tag + "=" + element.value;
        EXPECT_EQ(seen + "|" + message.payload, parts);
    }
    const kit::Message twice = kit::parse("<a>1</a><a>2</a>");
    EXPECT_EQ(*twice.find("a"), "1");
    EXPECT_EQ(twice.find("b"), nullptr);
}

TEST(Nearest, FindsWhatWasMeant)
{
    const std::vector<std::string> tags = {"Line", "CallID", "HoldCallReason", "Manual"};
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"CallId", "CallID"}, {"callid", "CallID"}, {"CalID", "CallID"}, {"ClalID", "CallID"},
        {"Lin", "Line"}, {"HoldCall", "HoldCallReason"}, {"Manaul", "Manual"},
        {"Destination", ""}, {"", ""}, {"x", ""},
    };
    // clang-format on
    for (const auto& [word, meant] : cases)
        EXPECT_EQ(kit::nearest(word, tags), meant) << word;
}

TEST(Building, TakesNamesAndNumbers)
{
    const kit::Event& event = *kit::findEvent("CallStateChangeEvent");
    EXPECT_EQ(kit::eventText(event, {{"callState", "ringing"}, {"LineID", "1001"}}),
              "<Method>CallStateChangeEvent</Method><LineID>1001</LineID><CallState>3</CallState>");
    EXPECT_EQ(kit::eventText(event, {{"callBackFeatureAvailable", "off"}}),
              "<Method>CallStateChangeEvent</Method>"
              "<CallBackFearureAvailable>0</CallBackFearureAvailable>");
    EXPECT_EQ(kit::requestText(*kit::findOperation("holdCall"), {{"line", "1001"}}),
              "<Method>HoldCall</Method><Line>1001</Line><CallID>0</CallID>"
              "<HoldCallReason>0</HoldCallReason><Manual>0</Manual>");
}

TEST(Building, EventsInTheOrderOfTheirFields)
{
    EXPECT_EQ(kit::event("b2buaCSTAResponse", "1001", false, "<a>"),
              "<Method>b2buaCSTAResponse</Method><lineURI>1001</lineURI><success>0</success><a>");
    EXPECT_EQ(kit::event("messageWaitingEvent", "1", 2, 3u, 4294967295u, 5u, 6u, 7, 8, -9, "10"),
              "<Method>messageWaitingEvent</Method><LineID>1</LineID><type>2</type>"
              "<new_messages>3</new_messages><old_messages>4294967295</old_messages>"
              "<new_urgent_messages>5</new_urgent_messages>"
              "<old_urgent_messages>6</old_urgent_messages><return_type>7</return_type>"
              "<avail_info>8</avail_info><messages_waiting>-9</messages_waiting>"
              "<voiceMailNumber>10</voiceMailNumber>");
    const std::string state = kit::eventOfTexts("CallStateChangeEvent",
                                                std::vector<std::string>(18, std::string(65, 'x')));
    EXPECT_NE(state.find("<GPUCLG>" + std::string(64, 'x') + "</GPUCLG>"), std::string::npos);
}

TEST(Building, SaysWhatIsWrong)
{
    // clang-format off
    const struct
    {
        const char *method, *field, *value, *complaint;
    } rows[] = {
        {"CallHeldEvent", "callID", "7", "unknown field callID in CallHeldEvent, did you mean callId?"},
        {"CallHeldEvent", "banana", "7", "unknown field banana in CallHeldEvent"},
        {"CallHeldEvent", "callId", "seven", "callId is a number, not \"seven\""},
        {"CallHeldEvent", "callId", "2147483648", "callId is a number, not \"2147483648\""},
        {"CallStateChangeEvent", "callState", "rining",
         "callState is a number or one of its names, not \"rining\"; did you mean ringing?"},
        {"DoNotDisturbEvent", "doNotDisturbOn", "maybe",
         "doNotDisturbOn is a flag, true or false, not \"maybe\""},
        {"messageWaitingEvent", "newMessages", "-1",
         "newMessages is a number from 0 to 4294967295, not \"-1\""},
        {"securityStatusChanged", "callIdsRecorded", "1,x",
         "callIdsRecorded is a list of numbers, not \"1,x\""},
    };
    // clang-format on
    for (const auto& row : rows)
        EXPECT_EQ(refused(
                      [&] {
                          kit::eventText(*kit::findEvent(row.method), {{row.field, row.value}});
                      }),
                  row.complaint);
    EXPECT_EQ(refused([] { kit::event("CallHeldEvent", "1"); }),
              "CallHeldEvent has 2 fields, not 1");
    EXPECT_EQ(refused([] { kit::event("CallHeld"); }), "there is no event CallHeld");
}

TEST(Lists, ComeBackAsTheyWere)
{
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{}, ""},
        {{""}, ","},
        {{"", ""}, ",,"},
        {{"1001", "1002"}, "1001,1002,"},
        {{"a,b", "c\\d"}, "a\\,b,c\\\\d,"},
    };
    for (const auto& [items, text] : cases)
    {
        EXPECT_EQ(kit::encodeList(items), text);
        EXPECT_EQ(kit::decodeTexts(text), items);
    }
    EXPECT_THAT(kit::decodeTexts("1001,1002"), ElementsAre("1001", "1002"));
    EXPECT_THAT(kit::decodeTexts("a\\"), ElementsAre("a\\"));
    EXPECT_THAT(kit::decodeTexts("a\\,"), ElementsAre("a,"));
    EXPECT_THAT(kit::decodeNumbers("12,-7,x,99999999999,"), ElementsAre(12, -7, 0, 2147483647));
    EXPECT_EQ(kit::encodeList(std::vector<int>{12, -7}), "12,-7,");
}

TEST(Numbers, NamesAndNumbersAreOneToOne)
{
    for (int meaning = 1; meaning <= static_cast<int>(kit::Meaning::recording); ++meaning)
    {
        const kit::Meaning each = static_cast<kit::Meaning>(meaning);
        std::set<int> numbers;
        ASSERT_FALSE(kit::namesOf(each).empty()) << meaning;
        for (const kit::NumberName& entry : kit::namesOf(each))
        {
            int number = -1;
            EXPECT_TRUE(kit::numberOf(each, entry.name, number)) << entry.name;
            EXPECT_EQ(number, entry.number) << entry.name;
            EXPECT_EQ(kit::nameOf(each, entry.number), entry.name);
            EXPECT_TRUE(numbers.insert(entry.number).second) << entry.name;
        }
    }
    int number = 0;
    EXPECT_EQ(kit::nameOf(kit::Meaning::callState, 4711), "4711");
    EXPECT_TRUE(kit::numberOf(kit::Meaning::callState, "-4711", number));
    EXPECT_EQ(number, -4711);
    EXPECT_FALSE(kit::numberOf(kit::Meaning::callState, "", number));
    EXPECT_FALSE(kit::numberOf(kit::Meaning::callState, "4-", number));
    EXPECT_EQ(kit::nameOf(kit::Meaning::callState, kit::numbers::callHeldByFarEnd), "heldByFarEnd");
    EXPECT_EQ(kit::resultName(sfiSuccess), "sfiSuccess");
}

TEST(Numbers, CausesAreCalledAsInTheHeader)
{
    std::ifstream header(CAUSES_HEADER);
    const std::string text(std::istreambuf_iterator<char>(header), {});
    const std::regex row("    (\\w+) = (\\d+)");
    std::vector<std::string> declared;
    for (std::sregex_iterator found(text.begin(), text.end(), row), end; found != end; ++found)
        declared.push_back((*found)[1].str() + " " + (*found)[2].str());
    std::vector<std::string> named;
    for (const kit::NumberName& entry : kit::namesOf(kit::Meaning::cause))
        named.push_back(std::string(entry.name) + " " + std::to_string(entry.number));
    EXPECT_EQ(named, declared);
    EXPECT_EQ(named.size(), 86u);
}

}  // namespace

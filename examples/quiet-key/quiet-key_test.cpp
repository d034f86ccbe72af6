// How an application is tested: its decisions with mocks, its requests and events with the library.
#include "QuietKey.h"
#include "kit/framework/Framework.h"
#include "kit/service/Replay.h"
#include "kit/testing/EventInjector.h"
#include "kit/testing/MockCommunicationsService.h"
#include "kit/testing/RecordingChannel.h"

#include <gmock/gmock.h>

using testing::NiceMock;
using testing::Return;

TEST(QuietKey, AsksForTheOppositeOfWhatTheServiceSays)
{
    NiceMock<kit::MockCommunicationsService> service;
    QuietKey key(service, "1001");
    EXPECT_CALL(service, setDoNotDisturb("1001", true)).Times(2);
    EXPECT_TRUE(key.press());
    EXPECT_TRUE(key.press()) << "nothing was told yet";
    key.onDoNotDisturbEvent("1001", true);
    EXPECT_CALL(service, setDoNotDisturb("1001", false)).WillOnce(Return(sfiFailure));
    EXPECT_FALSE(key.press());
}

TEST(QuietKey, TheLampFollowsTheEventsOfItsLine)
{
    NiceMock<kit::MockCommunicationsService> service;
    QuietKey key(service, "1001");
    kit::EventInjector events(key);
    EXPECT_CALL(service, setLampMode("1001", "quiet", 1)).Times(2);
    events.inject("DoNotDisturbEvent", {{"deviceId", "1001"}, {"doNotDisturbOn", "on"}});
    events.inject("DoNotDisturbEvent", {{"deviceId", "1002"}, {"doNotDisturbOn", "off"}});
    // A service that leaves the flag out means on.
    events.injectWithout({"doNotDisturbOn"}, "DoNotDisturbEvent", {{"deviceId", "1001"}});
}

TEST(QuietKey, StartsWithWhatIsSet)
{
    kit::RecordingChannel channel;
    channel.answer("GetDoNotDisturb", "true");
    QuietKey key(channel.service(), "1001");
    EXPECT_TRUE(key.start());
    EXPECT_TRUE(key.press());
    EXPECT_EQ(channel.requests("setLampMode").front().field("lampMode"), "1");
    EXPECT_EQ(channel.requests("SetDoNotDisturb").front().field("doNotDisturbOn"), "0");
    channel.answer("GetDoNotDisturb", "sfiFailure");
    EXPECT_FALSE(key.start());
}

/// Presses the key twice, as somebody did when the trace was recorded.
void pressTwice(std::unique_ptr<kit::Connection> connection)
{
    kit::Framework::Options options;
    options.events = kit::Framework::Events::onPump;
    kit::Framework framework(std::move(connection), options);
    QuietKey key(framework.service(), "1001");
    framework.service().activate();
    framework.service().subscribe(&key);
    key.start();
    for (int i = 0; i < 2; ++i)
    {
        key.press();
        framework.pump();
    }
    framework.remove(key);
}

TEST(QuietKey, DoesWhatItDidOnThePhone)
{
    kit::Replay replay(RECORDED "/pressed-twice.jsonl");
    pressTwice(replay.connection());
    EXPECT_EQ(replay.difference(), "");
}

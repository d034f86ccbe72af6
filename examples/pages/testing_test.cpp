// What the page on testing applications quotes, beside the tests of the quiet key.
#include "../quiet-key/QuietKey.h"
#include "kit/framework/Framework.h"
#include "kit/framework/Log.h"
#include "kit/framework/SocketConnection.h"
#include "kit/framework/Subscription.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/SimulatedService.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/FaultConnection.h"
#include "kit/testing/RecordingChannel.h"
#include "kit/testing/ServiceProcess.h"

#include <gtest/gtest.h>

namespace
{

kit::Framework::Options onPump()
{
    kit::Framework::Options options;
    options.events = kit::Framework::Events::onPump;
    return options;
}

}  // namespace

TEST(Testing, OverTheSimulatedService)
{
    kit::Framework framework(std::make_unique<kit::EmbeddedConnection>(), onPump());
    QuietKey key(framework.service(), "1001");
    framework.service().activate();
    const kit::Subscription subscription(framework, key);

    EXPECT_TRUE(key.press());
    framework.pump();  // the events come here, on this thread
    bool on = false;
    EXPECT_EQ(framework.service().getDoNotDisturb("1001", on), sfiSuccess);
    EXPECT_TRUE(on);
}

TEST(Testing, TheFarEndIsTheTests)
{
    auto connection = std::make_unique<kit::EmbeddedConnection>();
    const auto simulation = connection->service();
    kit::Framework framework(std::move(connection));
    kit::EventRecorder events;
    framework.service().activate();
    const kit::Subscription subscription(framework, events);

    simulation->control("call 1001 from 2001");
    const auto incoming = events.waitFor("IncomingCallEvent", {{"lineId", "1001"}});
    ASSERT_TRUE(incoming) << incoming.problem;
    simulation->control("hang up");
    const auto missed = events.waitFor("IncomingCallMissedEvent");
    EXPECT_TRUE(missed) << missed.problem;
}

TEST(Testing, TheServiceFailsOnCommand)
{
    auto faults =
        std::make_unique<kit::FaultConnection>(std::make_unique<kit::EmbeddedConnection>());
    kit::FaultConnection& fault = *faults;
    kit::Framework framework(std::move(faults));
    QuietKey key(framework.service(), "1001");
    framework.service().activate();

    fault.inject(kit::Fault::failure, "SetDoNotDisturb", 1);
    EXPECT_FALSE(key.press());
    EXPECT_TRUE(key.press());
}

TEST(Testing, TheServiceDies)
{
    kit::ServiceProcess service;
    kit::Framework framework(std::make_unique<kit::SocketConnection>(service.socket()));
    EXPECT_EQ(framework.service().activate(), sfiSuccess);

    service.kill();
    EXPECT_EQ(framework.service().activate(), sfiFailure);

    service.restart();
    framework.reconnect(std::make_unique<kit::SocketConnection>(service.socket()));
    EXPECT_EQ(framework.service().activate(), sfiSuccess);
}

TEST(Testing, TheLogIsThere)
{
    std::string log;
    kit::setLogSink([&](const kit::LogLine& line) { log += line.message + "\n"; });
    kit::EventRecorder events;
    kit::RecordingChannel().service().subscribe(&events);
    kit::setLogSink({});
    EXPECT_NE(log.find("subscribe start\n"), std::string::npos) << log;
}

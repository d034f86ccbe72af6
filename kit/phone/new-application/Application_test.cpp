#include "Application.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/service/SimulatedService.h"
#include "kit/testing/EventRecorder.h"
#include "kit/testing/LadderOnFailure.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace
{

/// The application at a simulated service in this process.
class AtTheDesk : public testing::Test
{
protected:
    AtTheDesk()
    {
        kit::Framework::Options options;
        options.observer = kit::LadderOnFailure::observer();
        options.events = kit::Framework::Events::onPump;
        framework_ = std::make_unique<kit::Framework>(
            std::make_unique<kit::EmbeddedConnection>(simulation_), options);
        application_ = std::make_unique<Application>(
            framework_->service(), [this](const std::string& line, const std::string& caller)
            { answered_.push_back(line + " " + caller); });
    }

    std::shared_ptr<kit::SimulatedService> simulation_ = std::make_shared<kit::SimulatedService>();
    std::vector<std::string> answered_;
    kit::EventRecorder events_;
    std::unique_ptr<Application> application_;
    std::unique_ptr<kit::Framework> framework_;  // last, so that it goes before what it delivers to
};

TEST_F(AtTheDesk, ACallIsAnswered)
{
    ASSERT_TRUE(application_->start());
    framework_->service().subscribe(&events_);
    simulation_->control("call 1001 from 2001");
    framework_->pump();
    EXPECT_EQ(answered_, std::vector<std::string>{"1001 sip:2001"});
    const auto connected = events_.waitFor("CallStateChangeEvent", {{"callState", "connected"}});
    EXPECT_TRUE(connected) << connected.problem;
}

TEST_F(AtTheDesk, WithoutAServiceItDoesNotStart)
{
    simulation_->control("go away");
    EXPECT_FALSE(application_->start());
}

}  // namespace

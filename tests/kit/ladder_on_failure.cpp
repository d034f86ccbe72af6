// Run by phone/trace_test.cpp: of these tests one fails, and its call flow alone is printed.

#include "kit/service/EmbeddedConnection.h"
#include "kit/testing/LadderOnFailure.h"

namespace
{

int alternate(const char* line)
{
    kit::Framework::Options options;
    options.observer = kit::LadderOnFailure::observer();
    kit::Framework framework(std::make_unique<kit::EmbeddedConnection>(), options);
    return framework.service().alternateCalls(line);
}

TEST(Calls, Before)
{
    EXPECT_NE(alternate("1001"), 5);
}

TEST(Calls, Failing)
{
    EXPECT_EQ(alternate("1002"), 5);
}

TEST(Calls, Behind)
{
    EXPECT_NE(alternate("1003"), 5);
}

TEST(Calls, FailingWithoutACallFlow)
{
    ADD_FAILURE();
}

}  // namespace

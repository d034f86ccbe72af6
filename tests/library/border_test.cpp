// The built shared object as the framework has it: loaded at run time, privately, found by names.

#include "CommunicationsServiceIfc.h"
#include "framework/Invoker.h"
#include "framework/Proxy.h"
#include "support/Framework.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

using support::Exception;
using support::Lines;

namespace
{

class BorderTest : public testing::Test
{
protected:
    BorderTest() : library(dlopen(LIBRARY, RTLD_NOW | RTLD_LOCAL))
    {
        if (library == nullptr)
            throw std::runtime_error(dlerror());
        support::takeTrace();
    }
    ~BorderTest() override { dlclose(library); }

    template <class Base>
    SUPPORT_ANY_FUNCTION_TYPE std::unique_ptr<Base> make(const char* factory)
    {
        void* const symbol = dlsym(library, factory);
        if (symbol == nullptr)
            throw std::runtime_error(dlerror());
        return std::unique_ptr<Base>(reinterpret_cast<Base* (*)()>(symbol)());
    }

    void* const library;
};

TEST_F(BorderTest, TheProxyIsReachedByItsFactoryAndAnsweredByTheProgram)
{
    const auto proxy = make<Proxy>("createCommunicationsServiceProxy");
    CommunicationsServiceIfc* const service = dynamic_cast<CommunicationsServiceIfc*>(proxy.get());
    ASSERT_NE(service, nullptr);
    support::NamingContext context;
    support::Channel channel;
    channel.context = &context;
    channel.answer = "sfiSuccess";
    proxy->initProxy(channel);
    EXPECT_EQ(service->answerCall("1001", 12), 5);
    service->callbackDOFeatureCallID("12", 3);
    EXPECT_EQ(support::takeTrace(),
              (Lines{"setProtocol CommunicationsServiceProtocol",
                     "sendRequest <Method>AnswerCall</Method><Line>1001</Line><CallID>12</CallID>",
                     "sendOneWay <Method>callbackDOFeatureCallID</Method><CallID>12</CallID>"
                     "<instanceId>itos(3)</instanceId>"}));

    // The program's exception is recognised and copied on the other side.
    support::Subscriber subscriber;
    support::loggingOn = 1;
    channel.inRequest = [] { throw Exception(4711); };
    Exception::copies = 0;
    try
    {
        service->subscribe(&subscriber);
        ADD_FAILURE() << "nothing thrown";
    }
    catch (const MarloException& caught)
    {
        EXPECT_EQ(Exception::numberOf(caught), 4711);
        EXPECT_EQ(Exception::copies, 1);
    }
    support::loggingOn = 0;
    EXPECT_EQ(Exception::living, 0);
    EXPECT_EQ(context.asked, &subscriber);
    EXPECT_NE(support::takeTrace().back().find("298 'subscribe exception caught:'"),
              std::string::npos);
    EXPECT_THROW(service->activate(), Exception);
    support::takeTrace();
}

TEST_F(BorderTest, TheInvokerFindsTheCallbacksOfASubscriberOfTheProgram)
{
    const auto invoker = make<Invoker>("createCommunicationsServiceEventInvoker");
    support::Subscriber subscriber;
    support::Response response;
    Executable* const executable = &subscriber;
    invoker->initInvoker(nullptr);
    invoker->handleMessage(executable,
                           "<Method>CallHeldEvent</Method><LineID>1</LineID><CallID>7</CallID>",
                           0,
                           &response);
    invoker->handleMessage(executable,
                           "<Method>securityStatusChanged</Method>"
                           "<CallIDsRecorded>4,5</CallIDsRecorded>",
                           0,
                           &response);
    EXPECT_EQ(support::takeTrace(),
              (Lines{"onCallHeldEvent('1', 7)",
                     "response notified",
                     "onSecurityStatusChanged('', -1, -1, [4, 5], [])",
                     "response notified"}));

    subscriber.inCallback = [] { throw std::runtime_error("from the callback"); };
    EXPECT_THROW(invoker->handleMessage(executable, "<Method>CallHeldEvent</Method>", 0, &response),
                 std::runtime_error);
    EXPECT_THROW(invoker->handleMessage(executable, nullptr, 0, &response), std::logic_error);
    EXPECT_EQ(support::takeTrace(), Lines{"onCallHeldEvent('', -1)"});

    support::Bystander bystander;
    testing::internal::CaptureStdout();
    invoker->handleMessage(&bystander, "", 0, &response);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "CommunicationsServiceEventSvc == NULL");
    support::takeTrace();
}

TEST_F(BorderTest, DefaultBodiesAndNamesOfStatesAreExported)
{
    const auto name = reinterpret_cast<std::string (*)(sfiServiceState)>(
        dlsym(library, "_Z9serializeB5cxx1115sfiServiceState"));
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(name(sfiServiceDoNotDisturb), "sfiServiceDoNotDisturb");
    const auto find = reinterpret_cast<std::string (*)(void*, Executable*)>(
        dlsym(library, "_ZN16FrameworkContext11findChannelB5cxx11EP10Executable"));
    ASSERT_NE(find, nullptr);
    support::NamingContext context;
    EXPECT_EQ(find(&context, nullptr), "") << "the default, not the override";
}

}  // namespace

#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_TRACED_FRAMEWORK_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_TRACED_FRAMEWORK_H

#include "framework/FrameworkContext.h"
#include "framework/InvokerResponse.h"
#include "framework/MarloException.h"
#include "framework/ProxyRequest.h"
#include "tests/support/Framework.h"
#include "tests/support/WritingSubscriber.h"

#include <cstring>
#include <functional>
#include <locale>
#include <string>
#include <vector>

/// For callers that know less of a function's type than its definition does, as the framework may.
#if defined(__clang__)
#define SUPPORT_ANY_FUNCTION_TYPE __attribute__((no_sanitize("function")))
#else
#define SUPPORT_ANY_FUNCTION_TYPE
#endif

/// The framework as the library's tests need it: everything asked of it becomes a line of a trace.
namespace support
{

using Lines = std::vector<std::string>;

/// What happened, in order, since the last call.
Lines takeTrace();
void trace(const std::string& line);

/// What loggingOnAppOxa answers.
extern int loggingOn;

/// A framework's exception that carries a number.
class Exception : public MarloException
{
public:
    explicit Exception(int number) { std::memcpy(contents, &number, sizeof number); }

    static int numberOf(const MarloException& exception)
    {
        int number = 0;
        std::memcpy(&number, exception.*(&Exception::contents), sizeof number);
        return number;
    }
};

class Channel final : public ProxyRequest
{
public:
    std::string answer;
    bool appends = false;             ///< puts the answer behind what stands in the response
    std::function<void()> inRequest;  ///< called by all operations before they return

    void sendRequest(const std::string& request, std::string& response) override;
    void sendRequestTimed(const std::string& request, std::string& response, int timeout) override;
    void sendSubscribe(const std::string& request, std::string& response,
                       const std::string& channelName, int timeout) override;
    void sendOneWay(const std::string& message) override;
    void setProtocol(const std::string& protocolName) override;

private:
    void respond(const std::string& line, std::string& response);
};

class NamingContext final : public FrameworkContext
{
public:
    std::function<void()> inFindChannel;

    std::string findChannel(Executable* executable) override;

    Executable* asked = nullptr;
};

class Response final : public InvokerResponse
{
public:
    void messageHandled() override { trace("response notified"); }
};

/// An executable that is no subscriber.
class Bystander : public Executable
{
public:
    void init(Context&) override {}
    void shutdown() override {}
};

/// A global locale that separates digits and spells flags, for as long as this lives.
class ForeignLocale
{
public:
    ForeignLocale();
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;
    ~ForeignLocale();

private:
    std::locale before_;
};

/// Each callback becomes a line: onCallHeldEvent('1001', 12).
class Listener
{
public:
    std::function<void()> inCallback;                    ///< called by all callbacks
    std::function<void(CallPartyInfo*)> withRecord;      ///< by the one with the record
    std::function<void(std::string& payload)> withText;  ///< by the two with a payload

protected:
    ~Listener() = default;

    template <class... Arguments>
    void heard(const char* callback, Arguments&... arguments)
    {
        (before(arguments), ...);
        std::string line;
        CallText call(line);
        call.begin(callback);
        (call.add(arguments), ...);
        call.end();
        trace(line);
        if (inCallback)
            inCallback();
    }

private:
    void before(CallPartyInfo* record)
    {
        if (withRecord)
            withRecord(record);
    }
    void before(std::string& payload)
    {
        if (withText)
            withText(payload);
    }
    template <class Other>
    void before(const Other&)
    {
    }
};

/// An application's object.
struct Subscriber : communications::Callbacks<Listener>
{
    using Listener::inCallback;
    using Listener::withRecord;
    using Listener::withText;
};

}  // namespace support

#endif

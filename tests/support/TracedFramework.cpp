#include "tests/support/TracedFramework.h"

#include <clocale>

namespace support
{

int loggingOn = 0;

namespace
{

Lines& lines()
{
    static Lines all;
    return all;
}

class Separating : public std::numpunct<char>
{
    std::string do_grouping() const override { return "\1"; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_truename() const override { return "yes"; }
};

}  // namespace

ForeignLocale::ForeignLocale()
    : before_(std::locale::global(std::locale(std::locale("C.UTF-8"), new Separating)))
{
    // A locale with a name sets the C library's, the mixed one above has none.
    std::setlocale(LC_ALL, "C.UTF-8");
}

ForeignLocale::~ForeignLocale()
{
    std::locale::global(before_);
}

Lines takeTrace()
{
    Lines taken;
    taken.swap(lines());
    return taken;
}

void trace(const std::string& line)
{
    lines().push_back(line);
}

void Channel::respond(const std::string& line, std::string& response)
{
    trace(line + (response.empty() ? "" : " over " + response));
    response = appends ? response + answer : answer;
    if (inRequest)
        inRequest();
}

void Channel::sendRequest(const std::string& request, std::string& response)
{
    respond("sendRequest " + request, response);
}

void Channel::sendRequestTimed(const std::string& request, std::string& response, int timeout)
{
    respond("sendRequestTimed " + request + " " + show(timeout), response);
}

void Channel::sendSubscribe(const std::string& request, std::string& response,
                            const std::string& channelName, int timeout)
{
    respond("sendSubscribe " + request + " " + channelName + " " + show(timeout), response);
}

void Channel::sendOneWay(const std::string& message)
{
    std::string none;
    respond("sendOneWay " + message, none);
}

void Channel::setProtocol(const std::string& protocolName)
{
    trace("setProtocol " + protocolName);
}

std::string NamingContext::findChannel(Executable* executable)
{
    trace("findChannel");
    asked = executable;
    if (inFindChannel)
        inFindChannel();
    return "channel-7";
}

namespace
{

int isLogging(const char* component, int level)
{
    trace("loggingOnAppOxa '" + std::string(component) + "' " + show(level));
    return loggingOn;
}

void log(const char* component, const char* sourceFile, int level, int line, const char* message)
{
    trace("logAppOxa '" + std::string(component) + "' '" + sourceFile + "' " + show(level) + " " +
          show(line) + " '" + message + "'");
}

[[maybe_unused]] const bool hooked = []
{
    hooks.isLogging = isLogging;
    hooks.log = log;
    return true;
}();

}  // namespace

}  // namespace support

#include "Framework.h"

#include "framework/ClientUtils.h"
#include "framework/Logging.h"
#include "framework/Serializer.h"

#include <clocale>
#include <cstdlib>
#include <sstream>

namespace support
{

int loggingOn = 0;
std::function<void()> inFramework;
int Exception::copies = 0;
int Exception::living = 0;

namespace
{

Lines& lines()
{
    static Lines all;
    return all;
}

template <class Values>
std::string showList(const Values& values)
{
    std::string list;
    for (const auto& value : values)
        list += (list.empty() ? "" : ", ") + show(value);
    return "[" + list + "]";
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

std::string show(const std::string& text)
{
    return "'" + text + "'";
}

std::string show(int number)
{
    return std::to_string(number);
}

std::string show(unsigned int count)
{
    return std::to_string(count) + "u";
}

std::string show(bool flag)
{
    return flag ? "true" : "false";
}

std::string show(const std::vector<int>& numbers)
{
    return showList(numbers);
}

std::string show(const std::vector<std::string>& texts)
{
    return showList(texts);
}

std::string show(const CallPartyInfo* info)
{
    // A text may run on beyond its field, so each is read from the record's first byte on.
    const char* const record = reinterpret_cast<const char*>(info);
    Lines texts;
    for (const std::size_t offset :
         {offsetof(CallPartyInfo, callingNumber), offsetof(CallPartyInfo, callingName),
          offsetof(CallPartyInfo, calledNumber), offsetof(CallPartyInfo, calledName)})
        texts.emplace_back(record + offset);
    for (const std::size_t offset :
         {offsetof(CallPartyInfo, reservedText1), offsetof(CallPartyInfo, reservedText2),
          offsetof(CallPartyInfo, reservedText3), offsetof(CallPartyInfo, reservedText4)})
        if (record[offset] != '\0')
            texts.push_back("reserved text is set");
    if (info->reservedNumber != 0)
        texts.push_back("reserved number is set");
    return show(texts);
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

}  // namespace support

using support::show;

MarloException::MarloException()
{
    ++support::Exception::living;
}

MarloException::MarloException(const MarloException& other)
{
    std::memcpy(contents, other.contents, sizeof contents);
    ++support::Exception::copies;
    ++support::Exception::living;
}

MarloException::~MarloException()
{
    --support::Exception::living;
}

std::string ClientUtils::itos(int number)
{
    if (support::inFramework)
        support::inFramework();
    return "itos(" + show(number) + ")";
}

std::vector<std::string> Serializer::deserialize(std::string& text)
{
    if (support::inFramework)
        support::inFramework();
    std::istringstream list(text);
    std::vector<std::string> texts;
    for (std::string item; std::getline(list, item, ',');)
        texts.push_back(item);
    text = "spoilt";
    return texts;
}

void Serializer::deserialize(std::string& text, std::vector<int>& values)
{
    for (const std::string& item : deserialize(text))
        values.push_back(std::atoi(item.c_str()));
}

int loggingOnAppOxa(const char* component, int level)
{
    support::trace("loggingOnAppOxa " + show(std::string(component)) + " " + show(level));
    return support::loggingOn;
}

void logAppOxa(const char* component, const char* sourceFile, int level, int line,
               const char* message)
{
    support::trace("logAppOxa " + show(std::string(component)) + " " +
                   show(std::string(sourceFile)) + " " + show(level) + " " + show(line) + " " +
                   show(std::string(message)));
}

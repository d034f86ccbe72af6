#include "kit/testing/EventInjector.h"

#include "CommunicationsServiceEventIfc.h"
#include "framework/InvokerResponse.h"
#include "kit/framework/Library.h"
#include "kit/testing/Names.h"

#include <algorithm>
#include <stdexcept>

namespace kit
{

namespace
{

struct Counter : InvokerResponse
{
    explicit Counter(std::atomic<int>& counted) : count(counted) {}
    void messageHandled() override { ++count; }
    std::atomic<int>& count;
};

bool isAmong(const Field& field, const std::vector<std::string>& names)
{
    return std::any_of(names.begin(), names.end(),
                       [&](const std::string& name)
                       { return name == field.argument || name == field.tag; });
}

}  // namespace

EventInjector::EventInjector(Executable& subscriber, const std::string& library)
    : subscriber_(subscriber), invoker_(Library(library).createInvoker())
{
    if (dynamic_cast<CommunicationsServiceEventIfc*>(&subscriber) == nullptr)
        throw std::invalid_argument(
            "the subscriber does not implement CommunicationsServiceEventIfc");
}

void EventInjector::inject(const std::string& method, const Values& values)
{
    raw(eventText(checkEvent(method), values, Others::plain));
}

void EventInjector::injectWithout(const std::vector<std::string>& missing,
                                  const std::string& method, const Values& values)
{
    const Event& event = checkEvent(method);
    Values unwanted;
    for (const std::string& name : missing)
        unwanted.emplace_back(name, "");
    checkNames(method, event.arguments, unwanted);
    Event rest = event;
    rest.arguments.erase(std::remove_if(rest.arguments.begin(), rest.arguments.end(),
                                        [&](const Field& field)
                                        { return isAmong(field, missing); }),
                         rest.arguments.end());
    raw(eventText(rest, values, Others::plain));
}

void EventInjector::raw(const std::string& text)
{
    Counter response(handled_);
    invoker_->handleMessage(&subscriber_, text.c_str(), static_cast<int>(text.size()), &response);
}

}  // namespace kit

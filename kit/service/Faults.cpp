#include "kit/service/Faults.h"

#include "kit/protocol/Protocol.h"

#include <algorithm>
#include <utility>

namespace kit::service
{

void Faults::add(WrongAnswer fault)
{
    faults_.push_back(std::move(fault));
}

std::optional<WrongAnswer> Faults::next(const std::string& request)
{
    if (faults_.empty())
        return std::nullopt;
    const std::string method = parse(request).method;
    const auto found = std::find_if(faults_.begin(), faults_.end(),
                                    [&](const WrongAnswer& fault)
                                    { return fault.method == "*" || fault.method == method; });
    if (found == faults_.end())
        return std::nullopt;
    const WrongAnswer met = *found;
    if (--found->times == 0)
        faults_.erase(found);
    return met;
}

}  // namespace kit::service

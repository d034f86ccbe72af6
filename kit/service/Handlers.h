#ifndef KIT_SERVICE_HANDLERS_H
#define KIT_SERVICE_HANDLERS_H

#include "kit/service/Requests.h"

#include <string>
#include <vector>

// What becomes of each request. What a handler returns is the answer; "" where none is awaited.
namespace kit::service
{

struct Handler
{
    const char* method;
    std::string (*run)(Simulation& s, const Request& r);
};

const std::vector<Handler>& callHandlers();
const std::vector<Handler>& featureHandlers();

}  // namespace kit::service

#endif

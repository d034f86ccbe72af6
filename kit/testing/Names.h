#ifndef KIT_TESTING_NAMES_H
#define KIT_TESTING_NAMES_H

#include "kit/protocol/Protocol.h"

#include <string>

namespace kit
{

/// A misspelt name in a test would make it pass for nothing: both throw std::invalid_argument for a
/// method that no request or event has, with the one that was probably meant.
const Operation& checkRequest(const std::string& method);
const Event& checkEvent(const std::string& method);

}  // namespace kit

#endif

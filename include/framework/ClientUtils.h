#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_CLIENT_UTILS_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_CLIENT_UTILS_H

#include "framework/Visibility.h"

#include <string>

/// Helpers of the framework. Defined by the framework.
class COMMUNICATIONS_SERVICE_VISIBLE ClientUtils
{
public:
    /// Decimal text of a number.
    static std::string itos(int number);
};

#endif

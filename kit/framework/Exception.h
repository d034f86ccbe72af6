#ifndef KIT_FRAMEWORK_EXCEPTION_H
#define KIT_FRAMEWORK_EXCEPTION_H

#include "framework/MarloException.h"

#include <string>

namespace kit
{

/// The MarloException that the kit throws. It carries a text, which copies of its base class keep;
/// a text longer than the base class has room for is cut.
class ChannelException : public MarloException
{
public:
    explicit ChannelException(const std::string& text);
};

/// What a MarloException of the kit has to say, also when only a copy of its base is left.
std::string textOf(const MarloException& exception);

}  // namespace kit

#endif

#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_FRAMEWORK_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_FRAMEWORK_H

#include <functional>

/// The framework's functions, as far as the library expects them: lists are items with commas between them or behind each, and ClientUtils::itos(12) is
/// "itos(12)", so that its use shows on the wire.
namespace support
{

/// What tests may do in the framework's functions, and see of its exceptions.
struct Hooks
{
    int (*isLogging)(const char* component, int level) = nullptr;
    void (*log)(const char* component, const char* sourceFile, int level, int line,
                const char* message) = nullptr;
    std::function<void()> inFramework;  ///< called by Serializer and ClientUtils before they work
    int exceptions = 0;                 ///< MarloExceptions constructed and not yet destroyed
    int copies = 0;                     ///< made by the copy constructor
};

extern Hooks hooks;

}  // namespace support

#endif

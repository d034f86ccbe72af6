#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_SERIALIZER_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_SERIALIZER_H

#include "framework/Visibility.h"

#include <string>
#include <vector>

/// Decodes lists out of the framework's own list encoding. Defined by the framework; an empty text
/// gives an empty list.
class COMMUNICATIONS_SERVICE_VISIBLE Serializer
{
public:
    static std::vector<std::string> deserialize(std::string& text);

    static void deserialize(std::string& text, std::vector<int>& values);
};

#endif

// What the library takes from its framework's utility classes.
#include "framework/ClientUtils.h"
#include "framework/Serializer.h"
#include "kit/protocol/Lists.h"

std::string ClientUtils::itos(int number)
{
    return std::to_string(number);
}

std::vector<std::string> Serializer::deserialize(std::string& text)
{
    return kit::decodeTexts(text);
}

void Serializer::deserialize(std::string& text, std::vector<int>& values)
{
    for (const int value : kit::decodeNumbers(text))
        values.push_back(value);
}

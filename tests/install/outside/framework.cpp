// The symbols that the library expects of the framework which opens it. An outside program that
// links the library itself brings them along, as small as they can be.
#include "framework/ClientUtils.h"
#include "framework/Logging.h"
#include "framework/MarloException.h"
#include "framework/Serializer.h"

MarloException::MarloException() : contents() {}

MarloException::MarloException(const MarloException&) : contents() {}

MarloException::~MarloException() {}

std::string ClientUtils::itos(int number)
{
    return std::to_string(number);
}

std::vector<std::string> Serializer::deserialize(std::string&)
{
    return std::vector<std::string>();
}

void Serializer::deserialize(std::string&, std::vector<int>&) {}

int loggingOnAppOxa(const char*, int)
{
    return 0;
}

void logAppOxa(const char*, const char*, int, int, const char*) {}

#ifndef TESTS_KIT_COMPLAINT_H
#define TESTS_KIT_COMPLAINT_H

#include "kit/framework/Exception.h"

#include <stdexcept>
#include <string>

namespace kit::test
{

inline std::string textOf(const std::exception& error)
{
    return error.what();
}
using kit::textOf;

/// What the exception says that the action throws; "nothing" when it throws none.
template <typename Error, typename Action>
std::string complaintOf(Action action)
{
    try
    {
        action();
    }
    catch (const Error& error)
    {
        return textOf(error);
    }
    return "nothing";
}

template <typename Action>
std::string refused(Action action)
{
    return complaintOf<std::invalid_argument>(action);
}

}  // namespace kit::test

#endif

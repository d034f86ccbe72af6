#ifndef TESTS_KIT_COMPLAINT_H
#define TESTS_KIT_COMPLAINT_H

#include <string>

namespace kit::test
{

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
        return error.what();
    }
    return "nothing";
}

}  // namespace kit::test

#endif

#ifndef TESTS_KIT_PHONE_RECORDS_H
#define TESTS_KIT_PHONE_RECORDS_H

#include "kit/trace/Trace.h"

#include <string>

namespace kit::test
{

inline TraceRecord record(TraceRecord::Kind kind, const std::string& text, int number = 0)
{
    TraceRecord made;
    made.kind = kind;
    made.text = text;
    made.number = number;
    return made;
}

}  // namespace kit::test

#endif

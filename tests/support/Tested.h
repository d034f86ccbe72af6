#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_TESTED_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_TESTED_H

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"

/// What the tests make objects of: the library's classes or, in the programs that are built once more
/// for the recording plug-in, the classes that its factories use while it records.
#if defined(COMMUNICATIONS_SERVICE_TESTED_RECORDER)

#include "recorder/Recording.h"

struct TestedProxy : recorder::RecordingProxy
{
    TestedProxy() : RecordingProxy(recorder::recorderOfProcess()) {}
};

struct TestedEventInvoker : recorder::RecordingEventInvoker
{
    TestedEventInvoker() : RecordingEventInvoker(recorder::recorderOfProcess()) {}
};

#else

using TestedProxy = CommunicationsServiceProxy;
using TestedEventInvoker = CommunicationsServiceEventInvoker;

#endif

#endif

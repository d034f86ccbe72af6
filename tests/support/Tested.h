#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_TESTED_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_TESTED_H

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"

/// What the tests make objects of: the library's classes or, in the programs that are built once more
/// for the recording plug-in, the classes that its factories use while it records.
#if defined(COMMUNICATIONS_SERVICE_TESTED_RECORDER)

#include "recorder/Recording.h"

#include <cstdio>
#include <cstdlib>

inline std::shared_ptr<recorder::Recorder> recorderOfTests()
{
    auto recorder = recorder::recorderOfProcess();
    if (recorder != nullptr)
        return recorder;
    std::fputs("nothing is recorded: COMMUNICATIONS_SERVICE_RECORDING is not set\n", stderr);
    std::exit(2);
}

struct TestedProxy : recorder::RecordingProxy
{
    TestedProxy() : RecordingProxy(recorderOfTests()) {}
};

struct TestedEventInvoker : recorder::RecordingEventInvoker
{
    TestedEventInvoker() : RecordingEventInvoker(recorderOfTests()) {}
};

#else

using TestedProxy = CommunicationsServiceProxy;
using TestedEventInvoker = CommunicationsServiceEventInvoker;

#endif

#endif

#include "recorder/Recording.h"

#include <utility>

using recorder::recorderOfProcess;
using recorder::RecordingEventInvoker;
using recorder::RecordingProxy;

// In the place of the library's own factories. Where nothing is recorded, they make what those make.
extern "C"
{
    COMMUNICATIONS_SERVICE_VISIBLE CommunicationsServiceProxy* createCommunicationsServiceProxy()
    {
        if (auto recorder = recorderOfProcess())
            return new RecordingProxy(std::move(recorder));
        return new CommunicationsServiceProxy;
    }

    COMMUNICATIONS_SERVICE_VISIBLE CommunicationsServiceEventInvoker*
    createCommunicationsServiceEventInvoker()
    {
        if (auto recorder = recorderOfProcess())
            return new RecordingEventInvoker(std::move(recorder));
        return new CommunicationsServiceEventInvoker;
    }
}

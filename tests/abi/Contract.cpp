// Names every class that crosses the border between application, library and framework, so that the
// debug information of this file holds all their tables, members and enumerators.

#include "CommunicationsServiceEventInvoker.h"
#include "CommunicationsServiceProxy.h"
#include "framework/ClientUtils.h"
#include "framework/FrameworkContext.h"
#include "framework/InvokerResponse.h"
#include "framework/Logging.h"
#include "framework/MarloException.h"
#include "framework/Serializer.h"

struct COMMUNICATIONS_SERVICE_VISIBLE Contract
{
    CommunicationsServiceProxy* proxy;
    CommunicationsServiceIfc* requests;
    CommunicationsServiceEventInvoker* invoker;
    CommunicationsServiceEventIfc* events;
    CallPartyInfo* record;
    Executable* executable;
    Proxy* proxyBase;
    Invoker* invokerBase;
    ProxyRequest* channel;
    FrameworkContext* context;
    InvokerResponse* response;
    MarloException* exception;
    sfiResult result;
    sfiServiceState state;
    sfiFeature feature;
    sfiRefuseCall refusal;
    sfiCancelCallBackType cancelled;
    sfiForwardingType forwarding;
    CSTAEventCause cause;
};

extern "C" COMMUNICATIONS_SERVICE_VISIBLE void contract(Contract*) {}

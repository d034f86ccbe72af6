#ifndef COMMUNICATIONS_ENUMERATIONS_H
#define COMMUNICATIONS_ENUMERATIONS_H

#include "CommunicationsServiceTypes.h"

// The four enumerations whose numbers the service alone defines, made of such a number:
// conferenceCall(line, active, held, communications::feature(5)).
namespace communications
{

inline sfiFeature feature(int number)
{
    return static_cast<sfiFeature>(number);
}

inline sfiRefuseCall refusal(int number)
{
    return static_cast<sfiRefuseCall>(number);
}

inline sfiCancelCallBackType callBacks(int number)
{
    return static_cast<sfiCancelCallBackType>(number);
}

inline sfiForwardingType forwarding(int number)
{
    return static_cast<sfiForwardingType>(number);
}

}  // namespace communications

#endif

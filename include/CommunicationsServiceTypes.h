#ifndef COMMUNICATIONS_SERVICE_TYPES_H
#define COMMUNICATIONS_SERVICE_TYPES_H

#include "CSTAEventCause.h"
#include "framework/Visibility.h"

#include <string>

/// Result of a request. Success is the highest value, not zero: test for sfiSuccess.
/// The service answers with the enumerator's own name, misspellings included.
enum sfiResult : int
{
    sfiFailure = 0,                        ///< refused, or any answer that is not in this list
    sfiFailureCallBackInvalidState = 1,    ///< call-back refused: wrong state
    sfiFailureCallBackNoCallInfo = 2,      ///< call-back refused: no call information
    sfiFailureCallBackToMany = 3,          ///< call-back refused: too many call-backs
    sfiFailureCallBackAllreadyExists = 4,  ///< call-back refused: it exists already
    sfiSuccess = 5                         ///< carried out
};

/// Service state of the phone. Travels as the enumerator's name.
enum sfiServiceState : int
{
    sfiServiceInService = 0,
    sfiServiceOutOfService = 1,
    sfiServiceDoNotDisturb = 2
};

/// Name of a service state as it travels; any value that is not an enumerator gives "".
COMMUNICATIONS_SERVICE_VISIBLE std::string serialize(sfiServiceState state);

// The service alone numbers the following four. They travel as decimal text and any 32-bit value
// passes; make one with static_cast<sfiFeature>(number).

/// A feature of a call: why it is held, what a conference is made for.
enum sfiFeature : int
{
};

/// Why a call is refused.
enum sfiRefuseCall : int
{
};

/// Which call-backs are cancelled.
enum sfiCancelCallBackType : int
{
};

/// Which forwarding is meant (unconditional, busy, no answer).
enum sfiForwardingType : int
{
};

#endif

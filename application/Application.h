// All that an application on the phone needs besides the contract, in one: the quiet subscriber, the
// events as structures, the book of calls, the enumerations of numbers. It is C++11, in headers alone,
// and needs nothing of the development kit.
#ifndef COMMUNICATIONS_APPLICATION_H
#define COMMUNICATIONS_APPLICATION_H

#include "application/CallBook.h"
#include "application/Enumerations.h"
#include "application/Subscriber.h"

#endif

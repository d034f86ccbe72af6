#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_MARLO_EXCEPTION_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_MARLO_EXCEPTION_H

#include "framework/Visibility.h"

#include <cstddef>

/// The framework's exception. Everything of it, its type information included, is defined by the
/// framework; the library catches it by reference and throws copies.
///
/// How large the framework's own class is cannot be seen from here, and a copy is made in memory of
/// the size declared here. It is declared with room to spare: integrators check once that
/// sizeof(MarloException) in the framework's own headers is not above 1024.
class COMMUNICATIONS_SERVICE_VISIBLE MarloException
{
public:
    MarloException(const MarloException& other);
    MarloException& operator=(const MarloException& other) = delete;
    virtual ~MarloException();

protected:
    enum
    {
        roomForContents = 1024
    };

    /// For the framework, which knows what to put in.
    MarloException();

    alignas(std::max_align_t) unsigned char contents[roomForContents];
};

#endif

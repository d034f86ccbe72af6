#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_LOGGING_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_LOGGING_H

#include "framework/Visibility.h"

/// The framework's logging: plain functions with exactly these arguments, defined by the framework.

/// Not zero when messages of `level` are to be written for `component`.
COMMUNICATIONS_SERVICE_VISIBLE int loggingOnAppOxa(const char* component, int level);

/// Writes one log line.
COMMUNICATIONS_SERVICE_VISIBLE void logAppOxa(const char* component, const char* sourceFile,
                                              int level, int line, const char* message);

#endif

#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_CONTEXT_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_CONTEXT_H

/// What the framework passes to Executable::init. The framework alone knows what is in it.
class Context;

#endif

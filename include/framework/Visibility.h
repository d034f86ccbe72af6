#ifndef COMMUNICATIONS_SERVICE_FRAMEWORK_VISIBILITY_H
#define COMMUNICATIONS_SERVICE_FRAMEWORK_VISIBILITY_H

/// Marks what separately built objects must agree on: the classes whose tables and type
/// information cross the border between application, library and framework.
#define COMMUNICATIONS_SERVICE_VISIBLE __attribute__((visibility("default")))

#endif

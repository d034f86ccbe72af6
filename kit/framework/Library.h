#ifndef KIT_FRAMEWORK_LIBRARY_H
#define KIT_FRAMEWORK_LIBRARY_H

#include "framework/Invoker.h"
#include "framework/Proxy.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace kit
{

/// The library cannot be used; the text says which file and why.
class LibraryError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Where the kit's own library lies, with a slash at its end; "" where that is not known.
std::string folderOfKit();

/// The client library, opened at run time as the phone's framework does: by file, factories by name.
///
/// The file is, in this order: the path given; that in the environment variable
/// COMMUNICATIONS_SERVICE_LIBRARY; the library beside the kit; what the system's loader finds. Once
/// opened it stays in the process, since objects of its classes may live on.
class Library
{
public:
    /// Throws LibraryError: no such file, no library, a factory missing, a symbol that nobody has.
    explicit Library(const std::string& path = std::string());

    /// The caller owns the object. Requests and callbacks are reached from it with dynamic_cast.
    std::unique_ptr<Proxy> createProxy() const;
    std::unique_ptr<Invoker> createInvoker() const;

    const std::string& path() const { return path_; }

private:
    std::string path_;
    void* proxyFactory_;
    void* invokerFactory_;
};

}  // namespace kit

#endif

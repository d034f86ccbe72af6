#include "kit/framework/Library.h"

#include <cstdlib>
#include <dlfcn.h>
#include <unistd.h>

// What the factories return; the classes themselves stay inside the library.
class CommunicationsServiceProxy;
class CommunicationsServiceEventInvoker;

namespace kit
{

namespace
{

std::string choose(const std::string& path)
{
    if (!path.empty())
        return path;
    if (const char* const named = std::getenv("COMMUNICATIONS_SERVICE_LIBRARY"))
        if (*named != '\0')
            return named;
    const std::string beside = folderOfKit() + COMMUNICATIONS_SERVICE_LIBRARY;
    return access(beside.c_str(), R_OK) == 0 ? beside : COMMUNICATIONS_SERVICE_LIBRARY;
}

std::string lastError()
{
    const char* const error = dlerror();
    return error != nullptr ? error : "no reason given";
}

void* find(void* library, const std::string& path, const char* name)
{
    void* const address = dlsym(library, name);
    if (address == nullptr)
        throw LibraryError("the library " + path + " has no " + name);
    return address;
}

}  // namespace

std::string folderOfKit()
{
    Dl_info info = {};
    if (dladdr(reinterpret_cast<void*>(&folderOfKit), &info) == 0 || info.dli_fname == nullptr)
        return std::string();
    const std::string file = info.dli_fname;
    const std::size_t slash = file.rfind('/');
    return slash == std::string::npos ? std::string() : file.substr(0, slash + 1);
}

Library::Library(const std::string& path)
    : path_(choose(path)), proxyFactory_(nullptr), invokerFactory_(nullptr)
{
    // A path without a slash is searched by the loader; with one it is a file, and can be missing.
    if (path_.find('/') != std::string::npos && access(path_.c_str(), F_OK) != 0)
        throw LibraryError("there is no library " + path_);
    // All symbols now: one that is missing shall be told here, not in the middle of a call.
    void* const library = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    if (library == nullptr)
        throw LibraryError("the library " + path_ + " cannot be opened: " + lastError());
    proxyFactory_ = find(library, path_, "createCommunicationsServiceProxy");
    invokerFactory_ = find(library, path_, "createCommunicationsServiceEventInvoker");
}

// Both objects start with the base that the framework knows.
std::unique_ptr<Proxy> Library::createProxy() const
{
    auto* const create = reinterpret_cast<CommunicationsServiceProxy* (*)()>(proxyFactory_);
    return std::unique_ptr<Proxy>(reinterpret_cast<Proxy*>(create()));
}

std::unique_ptr<Invoker> Library::createInvoker() const
{
    auto* const create =
        reinterpret_cast<CommunicationsServiceEventInvoker* (*)()>(invokerFactory_);
    return std::unique_ptr<Invoker>(reinterpret_cast<Invoker*>(create()));
}

}  // namespace kit

#include "kit/phone/Installed.h"

#include <sys/stat.h>
#include <unistd.h>

namespace kit::phone
{

std::string installed(const std::string& name)
{
    char program[4096];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program);
    if (length <= 0)
        return "";
    std::string path(program, static_cast<std::size_t>(length));
    path.erase(path.rfind('/'));
    path += "/../share/communications-service/" + name;
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? path : "";
}

}  // namespace kit::phone

#include "kit/phone/Script.h"

#include "kit/language/Wording.h"
#include "kit/language/Words.h"
#include "kit/phone/Installed.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sys/stat.h>

namespace kit::phone
{

namespace
{

constexpr std::size_t longestScript = 4U << 20U;

bool isFile(const std::string& path)
{
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

std::string withoutMark(const std::string& line)
{
    return line.compare(0, 3, "\xef\xbb\xbf") == 0 ? line.substr(3) : line;
}

Script readScript(const std::string& path)
{
    const std::string own =
        isFile(path) || path.find('/') != std::string::npos ? "" : installed("scripts/" + path);
    std::ifstream in(own.empty() ? path : own, std::ios::binary);
    const std::string what = "cannot read the script " + shown(path, 200) + ": ";
    struct stat status = {};
    if (in && own.empty() && stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode))
        throw Mistake(what + "it is a directory");
    if (!in)
        throw Mistake(what + std::strerror(errno));
    Script script;
    script.name = path.substr(path.rfind('/') + 1);
    std::string line;
    std::size_t size = 0;
    while (std::getline(in, line))
    {
        size += line.size() + 1;
        if (size > longestScript)
            throw Mistake(what + "it is longer than 4 MiB");
        script.lines.push_back(script.lines.empty() ? withoutMark(line) : line);
    }
    if (in.bad())
        throw Mistake(what + std::strerror(errno));
    return script;
}

}  // namespace kit::phone

#include "kit/service/LineFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kit::service
{

LineFile::~LineFile()
{
    if (file_ > STDERR_FILENO)
        ::close(file_);
}

std::string LineFile::open(const std::string& path)
{
    file_ = path == "-" ? STDERR_FILENO
                        : ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    return file_ < 0 ? std::strerror(errno) : "";
}

std::string LineFile::write(std::string line) const
{
    std::replace(line.begin(), line.end(), '\n', ' ');
    line += '\n';
    std::size_t at = 0;
    while (at < line.size())
    {
        const ssize_t done = ::write(file_, line.data() + at, line.size() - at);
        if (done >= 0)
        {
            at += static_cast<std::size_t>(done);
            continue;
        }
        if (errno == EINTR)
            continue;
        const std::string problem = std::strerror(errno);
        // Half a line is taken back, where that is possible.
        struct stat file = {};
        if (at > 0 && ::fstat(file_, &file) == 0 && S_ISREG(file.st_mode) &&
            ::ftruncate(file_, file.st_size - static_cast<off_t>(at)) != 0)
            return problem + ", and its last line is not whole";
        return problem;
    }
    return "";
}

}  // namespace kit::service

#include "recorder/TraceFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace recorder
{

namespace
{

/// Processes that can record to one path at the same time.
constexpr int places = 9;

}  // namespace

TraceFile::TraceFile(std::string path, std::uint64_t limit)
    : path_(std::move(path)), half_(limit / 2)
{
    // Once and for all: the writer allocates nothing.
    mine_.reserve(path_.size() + 8);
    old_.reserve(path_.size() + 8);
    const int error = claim();
    if (error != 0)
        throw std::runtime_error(path_ + " cannot be written: " + std::strerror(error));
}

TraceFile::~TraceFile()
{
    close();
}

void TraceFile::close()
{
    if (file_ >= 0)
        ::close(file_);
    file_ = -1;
}

int TraceFile::startAnew()
{
    // Our lock lasts until the file has its new name, so that nobody takes it for abandoned.
    if (file_ >= 0 && regular_)
        std::rename(mine_.c_str(), old_.c_str());
    close();
    size_ = 0;
    return claim();
}

int TraceFile::claim()
{
    for (int place = 1; place <= places; ++place)
    {
        mine_ = path_;
        if (place > 1)
            (mine_ += '.') += static_cast<char>('0' + place);
        (old_ = mine_) += ".old";
        bool taken = false;
        const int error = claimMine(taken);
        if (error != 0 || !taken)
            return error;
    }
    return EBUSY;
}

int TraceFile::claimMine(bool& taken)
{
    // Twice at most: once to find what an earlier process left, and once for the file of our own.
    for (int attempt = 0; attempt < 2; ++attempt)
    {
        // Not to wait for the reader of a pipe, nor to get a terminal.
        file_ = ::open(mine_.c_str(),
                       O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600);
        if (file_ < 0)
            return errno;
        struct stat status = {};
        if (::fstat(file_, &status) != 0)
        {
            const int error = errno;
            close();
            return error;
        }
        regular_ = S_ISREG(status.st_mode);
        size_ = 0;
        if (!regular_)
            return 0;
        if (::flock(file_, LOCK_EX | LOCK_NB) != 0)
        {
            const int error = errno;
            close();
            taken = error == EWOULDBLOCK;
            return taken ? 0 : error;
        }
        if (status.st_size == 0)
            return 0;
        if (std::rename(mine_.c_str(), old_.c_str()) != 0)
        {
            const int error = errno;
            close();
            return error;
        }
        close();
    }
    taken = true;
    return 0;
}

int TraceFile::write(const std::string& text)
{
    if (file_ < 0)
    {
        const int error = claim();
        if (error != 0)
            return error;
    }
    std::size_t at = 0;
    while (at < text.size())
    {
        const ssize_t done = ::write(file_, text.data() + at, text.size() - at);
        if (done < 0 && errno == EINTR)
            continue;
        if (done < 0)
        {
            const int error = errno;
            // No half lines: what is written next begins at the start of one.
            if (at > 0 && regular_ && ::ftruncate(file_, static_cast<off_t>(size_)) != 0)
                size_ += at;
            return error;
        }
        at += static_cast<std::size_t>(done);
    }
    size_ += text.size();
    return 0;
}

}  // namespace recorder

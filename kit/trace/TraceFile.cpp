#include "kit/trace/TraceFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace kit
{

TraceFile::TraceFile(std::string path, const TraceHead& head)
    : path_(std::move(path)),
      file_(open(path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666))
{
    if (file_ < 0)
        throw std::runtime_error("cannot write " + path_ + ": " + std::strerror(errno));
    write(toJson(head));
}

TraceFile::~TraceFile()
{
    close(file_);
}

void TraceFile::add(const TraceRecord& record)
{
    if (problem_.empty())
        write(toJson(record));
}

void TraceFile::write(const std::string& line)
{
    const std::string text = line + "\n";
    std::size_t done = 0;
    while (done < text.size())
    {
        const ssize_t got = ::write(file_, text.data() + done, text.size() - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
        {
            problem_ =
                "the trace ends here: " + path_ + " cannot be written: " + std::strerror(errno);
            // Half a line is no use to anybody; what is no file cannot take it back.
            const int cut = ftruncate(file_, written_);
            (void)cut;
            return;
        }
        done += static_cast<std::size_t>(got);
    }
    written_ += static_cast<long long>(text.size());
}

}  // namespace kit

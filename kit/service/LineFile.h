#ifndef KIT_SERVICE_LINE_FILE_H
#define KIT_SERVICE_LINE_FILE_H

#include <string>

namespace kit::service
{

/// A file that lines are added to, each whole or not at all; nothing of it waits in this process.
/// What goes wrong is told in words, "" is good.
class LineFile
{
public:
    LineFile() = default;
    ~LineFile();

    LineFile(const LineFile&) = delete;
    LineFile& operator=(const LineFile&) = delete;

    /// "-" is standard error.
    std::string open(const std::string& path);
    std::string write(std::string line) const;

private:
    int file_ = -1;
};

}  // namespace kit::service

#endif

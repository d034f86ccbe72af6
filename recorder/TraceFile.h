#ifndef RECORDER_TRACE_FILE_H
#define RECORDER_TRACE_FILE_H

#include <cstdint>
#include <string>

namespace recorder
{

/// The file that a process records to, and the one before it: PATH and PATH.old, each of at most
/// half the limit. What an earlier process left in PATH becomes PATH.old. Further processes that
/// record at the same time have PATH.2 to PATH.9, with their PATH.2.old.
///
/// A path that is no regular file, such as a device, is written to as it is, without a limit.
class TraceFile
{
public:
    /// Throws std::runtime_error, whose text is for people.
    TraceFile(std::string path, std::uint64_t limit);
    ~TraceFile();

    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    /// Whether `more` bytes still go into this file.
    bool hasRoom(std::uint64_t more) const { return !regular_ || size_ + more <= half_; }
    bool isNew() const { return size_ == 0; }

    /// How long a line may be, so that it goes into a file at all.
    std::uint64_t longest() const { return regular_ ? half_ : UINT64_MAX; }

    /// Goes on in a new file. 0, or the reason as an errno; then nothing can be written.
    int startAnew();

    /// Writes all of it or, as far as the file allows, nothing. 0, or the reason as an errno.
    int write(const std::string& text);

private:
    int claim();
    int claimMine(bool& taken);
    void close();

    const std::string path_;  ///< as set
    const std::uint64_t half_;
    std::string mine_;  ///< the one of PATH, PATH.2 ...
    std::string old_;   ///< PATH.old, PATH.2.old ...
    int file_ = -1;
    bool regular_ = true;
    std::uint64_t size_ = 0;
};

}  // namespace recorder

#endif

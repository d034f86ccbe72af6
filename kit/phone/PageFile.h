#ifndef KIT_PHONE_PAGE_FILE_H
#define KIT_PHONE_PAGE_FILE_H

#include "kit/phone/Verdict.h"
#include "kit/trace/Trace.h"

#include <fstream>
#include <string>

namespace kit::phone
{

/// A file for the page of a trace. Raises Failure where it cannot be written.
class PageFile
{
public:
    explicit PageFile(const std::string& path);

    void write(const Trace& trace, const std::string& title);

private:
    [[noreturn]] void fail(Verdict verdict) const;

    const std::string path_;
    std::ofstream out_;
};

}  // namespace kit::phone

#endif

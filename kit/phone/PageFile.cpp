#include "kit/phone/PageFile.h"

#include "kit/trace/Page.h"

#include <cerrno>
#include <cstring>

namespace kit::phone
{

PageFile::PageFile(const std::string& path) : path_(path), out_(path, std::ios::trunc)
{
    if (!out_)
        fail(Verdict::mistake);
}

void PageFile::write(const Trace& trace, const std::string& title)
{
    // At once, while errno tells why.
    out_.exceptions(std::ios::badbit | std::ios::failbit);
    try
    {
        writePage(out_, trace, title);
        out_.close();
    }
    catch (const std::ios_base::failure&)
    {
        fail(Verdict::unwritten);
    }
}

void PageFile::fail(Verdict verdict) const
{
    throw Failure(verdict, "cannot write " + path_ + ": " + std::strerror(errno));
}

}  // namespace kit::phone

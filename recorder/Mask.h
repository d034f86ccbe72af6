#ifndef RECORDER_MASK_H
#define RECORDER_MASK_H

#include "recorder/TraceLine.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace recorder
{

/// Puts pseudonyms in the place of numbers, names and texts of people. Equal ones stay equal: 2001
/// and the 2001 in sip:2001@phone become the same number. Fields that are known to be harmless stay;
/// what is not known is masked whole.
class Mask
{
public:
    /// The text of a message as it may be seen. May throw std::bad_alloc.
    std::string masked(Kind kind, std::string_view text);

private:
    void fields(std::string& out, std::string_view text);
    void value(std::string& out, std::string_view tag, std::string_view value);
    void party(std::string& out, std::string_view value);
    void whole(std::string& out, std::string_view value);
    void answer(std::string& out, std::string_view text);
    std::uint32_t numberOf(std::string_view value);

    std::unordered_map<std::string, std::uint32_t> known_;
    std::uint32_t count_ = 0;
};

}  // namespace recorder

#endif

#ifndef KIT_PHONE_COMPLETION_H
#define KIT_PHONE_COMPLETION_H

#include "kit/language/Words.h"
#include "kit/phone/CallBook.h"
#include "kit/service/Usage.h"

#include <string>
#include <vector>

namespace kit::phone
{

/// What could stand where a line ends: each a whole word, in the order of the tables.
struct Completions
{
    std::size_t begin = 0;  ///< of the word in the line that they would replace
    std::vector<std::string> words;

    /// What all of them begin with.
    std::string commonPart() const;
};

/// @param simulation  the commands of the simulation
Completions complete(const std::string& line, const CallBook& book, const Variables& variables,
                     const std::vector<CommandUsage>& simulation);

}  // namespace kit::phone

#endif

#include "kit/language/Switches.h"

#include "kit/language/Wording.h"
#include "kit/protocol/Protocol.h"

namespace kit
{

bool parseSwitch(const Word& word)
{
    bool on = false;
    if (!switchOf(word.text, on))
        throw Mistake(quoted(word.text) + " is no switch; on and off are", word.column);
    return on;
}

}  // namespace kit

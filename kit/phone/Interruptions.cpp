#include "kit/phone/Interruptions.h"

#include "kit/phone/Verdict.h"

#include <csignal>
#include <unistd.h>

namespace kit::phone
{

namespace
{

volatile std::sig_atomic_t interruptionCount = 0;

extern "C" void countInterruption(int)
{
    interruptionCount = interruptionCount + 1;
    // Something hangs, and the person insists.
    if (interruptionCount > 2)
        _exit(static_cast<int>(Verdict::interrupted));
}

}  // namespace

int interruptions()
{
    return interruptionCount;
}

void setInterruptions(int count)
{
    interruptionCount = count;
}

void catchInterruptions()
{
    struct sigaction action = {};
    action.sa_handler = countInterruption;
    sigaction(SIGINT, &action, nullptr);
}

}  // namespace kit::phone

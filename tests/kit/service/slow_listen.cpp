// Put in front of the system's listen(), so that others come between bind() and listen().

#include <sys/syscall.h>
#include <unistd.h>

extern "C" int listen(int socket, int backlog)
{
    usleep(1500 * 1000);
    return static_cast<int>(syscall(SYS_listen, socket, backlog));
}

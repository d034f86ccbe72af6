// Counts allocations, also those of other libraries. A sanitizer has its own malloc: nothing is
// counted then.

#include "bench/Allocations.h"

#include <cstddef>

#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define BENCH_SANITIZED
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define BENCH_SANITIZED
#endif

namespace
{

long count = 0;

}  // namespace

long allocations()
{
    return count;
}

#if defined(__GLIBC__) && !defined(BENCH_SANITIZED)

extern "C"
{
    void* __libc_malloc(std::size_t size);
    void* __libc_calloc(std::size_t items, std::size_t size);
    void* __libc_realloc(void* memory, std::size_t size);

    void* malloc(std::size_t size)
    {
        ++count;
        return __libc_malloc(size);
    }

    void* calloc(std::size_t items, std::size_t size)
    {
        ++count;
        return __libc_calloc(items, size);
    }

    void* realloc(void* memory, std::size_t size)
    {
        ++count;
        return __libc_realloc(memory, size);
    }
}

#endif

#ifndef COMMUNICATIONS_SERVICE_FUZZ_FUZZER_H
#define COMMUNICATIONS_SERVICE_FUZZ_FUZZER_H

#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the run, with both values, when the library and the plain implementation differ.
inline void demandEqual(const char* what, const std::string& library, const std::string& plain)
{
    if (library == plain)
        return;
    std::fprintf(stderr, "%s\n  library: %s\n  plain:   %s\n", what, library.c_str(),
                 plain.c_str());
    std::abort();
}

inline void demandEqual(const char* what, long library, long plain)
{
    if (library != plain)
        demandEqual(what, std::to_string(library), std::to_string(plain));
}

#endif

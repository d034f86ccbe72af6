#ifndef COMMUNICATIONS_SERVICE_FUZZ_FUZZER_H
#define COMMUNICATIONS_SERVICE_FUZZ_FUZZER_H

#include <cstdio>
#include <cstdlib>
#include <string>

/// Ends the run, with both values, when the library and the reference implementation differ.
inline void demandEqual(const char* what, const std::string& library, const std::string& reference)
{
    if (library == reference)
        return;
    std::fprintf(stderr, "%s\n  library:   %s\n  reference: %s\n", what, library.c_str(),
                 reference.c_str());
    std::abort();
}

inline void demandEqual(const char* what, long library, long reference)
{
    if (library != reference)
        demandEqual(what, std::to_string(library), std::to_string(reference));
}

#endif

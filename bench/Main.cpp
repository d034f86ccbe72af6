// Measures the library, the reference implementation, the floor and the peers, all in one run.
//
// Before anything is measured, all are compared with the reference implementation.
//
// bench [--library=[NAME:]PATH ...] [--instructions] [options of Google Benchmark]
//
// Under callgrind, --instructions makes one profile for each measurement, named after it.

#include "bench/Bench.h"
#include "bench/Entrants.h"

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(name)
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace
{

[[maybe_unused]] void leftOut(const char* peer)
{
    std::fprintf(stderr, "bench: %s was not installed when this was built: left out\n", peer);
}

constexpr long counted = 20;  // calls in each profile

void countInstructions()
{
    for (const Entry& entry : entries())
        if (entry.name.rfind("growth", 0) != 0)
        {
            entry.run(3);
            CALLGRIND_ZERO_STATS;
            entry.run(counted);
            CALLGRIND_DUMP_STATS_AT(entry.name.c_str());
        }
}

}  // namespace

int main(int count, char** words)
{
    bool countsInstructions = false;
    bool hasLibrary = false;
    int left = 0;
    for (int i = 0; i < count; ++i)
    {
        const std::string_view word = words[i];
        if (word == "--instructions")
            countsInstructions = true;
        else if (word.rfind("--library=", 0) == 0)
        {
            const std::string value(word.substr(std::strlen("--library=")));
            const std::size_t colon = value.find(':');
            const std::string who = colon == std::string::npos ? "library" : value.substr(0, colon);
            addLibrary(who, colon == std::string::npos ? value : value.substr(colon + 1));
            hasLibrary = true;
        }
        else
            words[left++] = words[i];
    }
    if (!hasLibrary)
        addLibrary("library", BENCH_LIBRARY);
    addReference();
    addFloor();
#ifdef BENCH_PROTOBUF
    addProtobuf();
#else
    leftOut("protobuf");
#endif
#ifdef BENCH_PUGIXML
    addPugixml();
#else
    leftOut("pugixml");
#endif
#ifdef BENCH_NLOHMANN
    addNlohmann();
#else
    leftOut("nlohmann JSON");
#endif

    if (!allAgree())
        return EXIT_FAILURE;
    if (countsInstructions)
    {
        countInstructions();
        return EXIT_SUCCESS;
    }
    benchmark::Initialize(&left, words);
    if (benchmark::ReportUnrecognizedArguments(left, words))
        return EXIT_FAILURE;
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}

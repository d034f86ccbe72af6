// Measures the library, the reference implementation, the floor and the peers, all in one run.
//
// Before anything is measured, all are compared with the reference implementation.
//
// bench [--library=[NAME:]PATH ...] [--instructions [--only=WHO]] [options of Google Benchmark]
//
// Under callgrind, --instructions makes one profile for each measurement, named after it, and writes
// how many allocations each makes.

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
#include <utility>
#include <vector>

namespace
{

[[maybe_unused]] void leftOut(const char* peer)
{
    std::fprintf(stderr, "bench: %s was not installed when this was built: left out\n", peer);
}

constexpr long counted = 20;  // calls in each profile

/// Of all, or of those whose name ends so.
void countInstructions(const std::string& who)
{
    for (const Entry& entry : entries())
    {
        if (entry.name.size() < who.size() ||
            entry.name.compare(entry.name.size() - who.size(), who.size(), who) != 0)
            continue;
        entry.run(3);
        const long before = allocations();
        CALLGRIND_ZERO_STATS;
        entry.run(counted);
        CALLGRIND_DUMP_STATS_AT(entry.name.c_str());
        std::printf("%s %ld\n", entry.name.c_str(), (allocations() - before) / counted);
    }
}

}  // namespace

int main(int count, char** words)
{
    bool countsInstructions = false;
    std::string only;
    std::vector<std::pair<std::string, std::string>> libraries;
    int left = 0;
    for (int i = 0; i < count; ++i)
    {
        const std::string_view word = words[i];
        if (word == "--instructions")
            countsInstructions = true;
        else if (word.rfind("--only=", 0) == 0)
            only = "/" + std::string(word.substr(std::strlen("--only=")));
        else if (word.rfind("--library=", 0) == 0)
        {
            const std::string value(word.substr(std::strlen("--library=")));
            const std::size_t colon = value.find(':');
            libraries.emplace_back(colon == std::string::npos ? "library" : value.substr(0, colon),
                                   colon == std::string::npos ? value : value.substr(colon + 1));
        }
        else
            words[left++] = words[i];
    }
    if (libraries.empty())
        libraries.emplace_back("library", BENCH_LIBRARY);
    measuresGrowth = !countsInstructions;
    for (const auto& [who, path] : libraries)
        addLibrary(who, path);
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
        countInstructions(only);
        return EXIT_SUCCESS;
    }
    benchmark::Initialize(&left, words);
    if (benchmark::ReportUnrecognizedArguments(left, words))
        return EXIT_FAILURE;
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}

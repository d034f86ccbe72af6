#include "bench/Bench.h"

#include "bench/Messages.h"

#include <algorithm>
#include <cstdio>

communications::Callbacks<Touch> subscriber;
Response response;
Seen* Touch::seen = nullptr;
bool measuresGrowth = true;

namespace
{

std::string caseOf(const Entry& entry)
{
    return entry.name.substr(0, entry.name.find('/'));
}

Seen once(const Entry& entry)
{
    Seen seen;
    Touch::seen = &seen;
    entry.run(1);
    Touch::seen = nullptr;
    return seen;
}

std::string sorted(std::vector<std::string> values)
{
    std::sort(values.begin(), values.end());
    std::string text;
    for (const std::string& value : values)
        text += value + "\n";
    return text;
}

/// The request as it should be: its bytes, or the values that are to be found in it.
std::string expected(const Message& request, Values values)
{
    if (values == nullptr)
        return request.text();
    std::vector<std::string> all;
    for (const Message::Field& field : request.fields)
        all.push_back(field.value);
    if (!request.payload.empty())
        all.push_back(request.payload);
    return sorted(all);
}

bool same(const Entry& entry, const char* what, const std::string& seen, const std::string& right)
{
    if (seen != right)
        std::fprintf(stderr, "bench: %s %s\n%s\nand not\n%s\n", entry.name.c_str(), what,
                     seen.c_str(), right.c_str());
    return seen == right;
}

}  // namespace

std::vector<Entry>& entries()
{
    static std::vector<Entry> list;
    return list;
}

CommunicationsServiceEventIfc& callbacks(Executable* executable)
{
    return *dynamic_cast<CommunicationsServiceEventIfc*>(executable);
}

bool allAgree()
{
    std::map<std::string, Seen> seen;
    for (const Entry& entry : entries())
        seen[entry.name] = once(entry);

    bool agree = !seen.empty();
    for (const Entry& entry : entries())
        if (const auto right = seen.find(caseOf(entry) + "/reference"); right != seen.end())
        {
            const Seen& own = seen[entry.name];
            agree = same(entry, "tells", own.told, right->second.told) && agree;
            if (const auto request = requests.find(caseOf(entry)); request != requests.end())
                agree = same(entry, "asks",
                             entry.values == nullptr ? own.asked : sorted(entry.values(own.asked)),
                             expected(request->second, entry.values)) &&
                        agree;
        }
    return agree;
}

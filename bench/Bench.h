#ifndef BENCH_BENCH_H
#define BENCH_BENCH_H

#include "bench/Allocations.h"
#include "framework/InvokerResponse.h"
#include "framework/ProxyRequest.h"
#include "tests/support/WritingSubscriber.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The values of a request's fields, in any order, the method's name left out.
using Values = std::vector<std::string> (*)(const std::string& request);

/// One thing that is measured: "case/who". Each call of `run` is the whole work, so many times.
struct Entry
{
    std::string name;
    std::function<void(long times)> run;
    Values values;  ///< nullptr where requests are written as the library's are
};

std::vector<Entry>& entries();

/// Whether the texts that grow take part: they are large, and only their times are asked for.
extern bool measuresGrowth;

/// Runs each entry once and holds what it asks and what it tells against the reference implementation.
/// Returns whether all agree; says what does not.
bool allAgree();

/// Adds a measurement. The body is compiled into the loop: nothing but it is measured.
template <typename Body>
void add(const std::string& name, Body body, Values values = nullptr)
{
    entries().push_back({name,
                         [body](long times)
                         {
                             for (; times > 0; --times)
                                 body();
                         },
                         values});
    benchmark::RegisterBenchmark(name.c_str(),
                                 [body](benchmark::State& state)
                                 {
                                     body();
                                     const long before = allocations();
                                     body();
                                     const long used = allocations() - before;
                                     for (auto _ : state)
                                         body();
                                     state.counters["allocations"] = static_cast<double>(used);
                                 });
}

/// What one run of an entry asked and told, while somebody wants to know.
struct Seen
{
    std::string asked;
    std::string told;
};

/// Touches what it is given, and does nothing else with it unless somebody wants to see it.
struct Touch
{
    static Seen* seen;  ///< nullptr while time is measured

    unsigned long sum = 0;

    void look(const std::string& text)
    {
        sum += text.size();
        if (!text.empty())
            sum += static_cast<unsigned char>(text.back());
    }
    void look(int number) { sum += static_cast<unsigned int>(number); }
    void look(unsigned int number) { sum += number; }
    void look(bool flag) { sum += flag ? 1UL : 0UL; }

    void look(const CallPartyInfo* party)
    {
        sum += static_cast<unsigned long>(party->callingNumber[0] + party->callingName[0] +
                                          party->calledNumber[0] + party->calledName[0]);
    }

    template <typename Item>
    void look(const std::vector<Item>& items)
    {
        for (const Item& item : items)
            look(item);
    }

    template <typename... Arguments>
    void heard(const char* callback, const Arguments&... arguments)
    {
        if (seen != nullptr)
            writeDown(callback, arguments...);
        (look(arguments), ...);
        benchmark::DoNotOptimize(sum);
    }

    template <typename... Arguments>
    [[gnu::cold, gnu::noinline]] static void writeDown(const char* callback,
                                                       const Arguments&... arguments)
    {
        CallText call(seen->told);
        call.begin(callback);
        (call.add(arguments), ...);
        call.end();
    }
};

/// What a query or any other operation gave.
template <typename... Results>
void got(const Results&... results)
{
    Touch().heard("results", results...);
}

/// Touches each request and answers it with the same text.
struct Channel : ProxyRequest
{
    explicit Channel(std::string text) : answer(std::move(text)) {}

    void sendRequest(const std::string& request, std::string& response) override
    {
        if (Touch::seen != nullptr)
            Touch::seen->asked = request;
        touch.look(request);
        benchmark::DoNotOptimize(touch.sum);
        response = answer;
    }
    void sendRequestTimed(const std::string&, std::string&, int) override {}
    void sendSubscribe(const std::string&, std::string&, const std::string&, int) override {}
    void sendOneWay(const std::string&) override {}
    void setProtocol(const std::string&) override {}

    std::string answer;
    Touch touch;
};

struct Response : InvokerResponse
{
    void messageHandled() override { benchmark::DoNotOptimize(++count); }

    unsigned long count = 0;
};

/// The record as the library leaves it.
inline void fill(CallPartyInfo& record, std::string_view callingNumber,
                 std::string_view callingName, std::string_view calledNumber,
                 std::string_view calledName)
{
    const auto copy = [](std::string_view text, char* to)
    {
        std::memcpy(to, text.data(), text.size());
        to[text.size()] = '\0';
    };
    record.reservedText1[0] = record.reservedText2[0] = '\0';
    record.reservedText3[0] = record.reservedText4[0] = '\0';
    record.reservedNumber = 0;
    copy(callingNumber, record.callingNumber);
    copy(callingName, record.callingName);
    copy(calledNumber, record.calledNumber);
    copy(calledName, record.calledName);
}

/// What all that take part in the measurement work on.
extern communications::Callbacks<Touch> subscriber;
extern Response response;

/// The subscriber's callbacks, got at as anyone must who is called by the framework: by a cross-cast.
CommunicationsServiceEventIfc& callbacks(Executable* executable);

#endif

#ifndef BENCH_BENCH_H
#define BENCH_BENCH_H

#include "framework/InvokerResponse.h"
#include "framework/ProxyRequest.h"
#include "tests/support/Subscriber.h"

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// One thing that is measured: "case/who". Each call of `run` is the whole work, so many times.
struct Entry
{
    std::string name;
    std::function<void(long times)> run;
};

std::vector<Entry>& entries();

/// Calls of malloc and the like, and of operator new, since the start of the program.
long allocations();

/// Adds a measurement. The body is compiled into the loop: nothing but it is measured.
template <typename Body>
void add(const std::string& name, Body body)
{
    entries().push_back({name, [body](long times)
                         {
                             for (; times > 0; --times)
                                 body();
                         }});
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

/// Touches what it is given, and does nothing else with it.
struct Touch
{
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
    void heard(const char*, const Arguments&... arguments)
    {
        (look(arguments), ...);
        benchmark::DoNotOptimize(sum);
    }
};

/// Touches each request and answers it with the same text.
struct Channel : ProxyRequest
{
    explicit Channel(std::string text) : answer(std::move(text)) {}

    void sendRequest(const std::string& request, std::string& response) override
    {
        touch.heard("", request);
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

/// What all that take part in the measurement work on.
extern Subscriber<Touch> subscriber;

/// The subscriber's callbacks, got at as anyone must who is called by the framework: by a cross-cast.
CommunicationsServiceEventIfc& callbacks(Executable* executable);
extern Response response;

// The arguments of the requests.
extern const std::string line;
extern const std::string uri;
extern const std::string payload;
constexpr int callId = 4711;
constexpr const char* destination = "+4989700012345";

/// A message by its fields: numbers are those that begin with a digit of 0 to 9 and nothing else.
struct Message
{
    struct Field
    {
        std::string tag;
        std::string value;
        bool isNumber;
    };

    std::string method;  ///< "" in an answer
    std::vector<Field> fields;
    std::string payload;

    std::string text() const;
    Message reversed() const;
};

extern const Message forwardingAnswer;
extern const Message messageWaitingAnswer;
extern const std::vector<std::string> devices;
extern const Message devicesChanged;
extern const Message callHeld;
extern const Message callState;
extern const Message incomingCall;
extern const Message cstaResponse;
extern const Message securityStatus;

// Each of those that take part adds its rows.
void addLibrary(const std::string& who, const std::string& path);
void addReference();
void addFloor();
void addProtobuf();
void addGVariant();
void addPugixml();
void addNlohmann();

#endif

// Gives the same random messages to the library and holds what the application would see, in
// every bit, against the plainest rules. The messages are real ones with damage done to them. All of
// it goes through one proxy and one invoker: memory must stay what it is after the first tenth.
//
// RandomComparison [messages [seed]]

#include "tests/support/Comparison.h"
#include "tests/support/Events.h"
#include "tests/support/Requests.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <random>

namespace
{

const std::vector<std::vector<std::string>> answers = {
    {"sfiResult", "status", "uri", "cfnrRingCount"},
    {"func_return_val", "Type", "newMsgs", "oldMsgs", "newUrgMsgs", "oldUrgMsgs", "return_type",
     "available_info", "messages_waiting", "voiceMailNumber"},
    {"1001", "1002", "1003", "sfiFailure"},
};

class Generator
{
public:
    explicit Generator(unsigned int seed) : random(seed) {}

    std::size_t below(std::size_t end)
    {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
    }

    template <typename List>
    const auto& oneOf(const List& list)
    {
        return list[below(std::size(list))];
    }

    /// Mostly a short one, now and then one of some kilobytes.
    std::string text() { return std::string(below(below(50) == 0 ? 4000 : 70), 't'); }

    std::string event()
    {
        const samples::Event& kind = oneOf(samples::events);
        Tags tags;
        for (const samples::Field& field : kind.fields)
            tags.push_back(field.tag);
        std::string method = kind.method;
        if (below(50) == 0)
            method += piece(tags);
        const std::string head = element("Method", method);
        if (below(4) == 0)
        {
            // Elements in their order up to some field, then nothing but pieces.
            std::string text =
                head + body(Tags(tags.begin(), tags.begin() + long(below(tags.size() + 1))));
            for (std::size_t pieces = below(below(10) == 0 ? 400 : 60); pieces > 0; --pieces)
                text += piece(tags);
            return text;
        }
        return damaged(below(20) == 0 ? body(tags) + head : head + body(tags), tags);
    }

    std::string answer()
    {
        const std::vector<std::string>& tags = oneOf(answers);
        return damaged(body(tags), tags);
    }

private:
    using Tags = std::vector<std::string>;

    static std::string element(const std::string& tag, const std::string& value)
    {
        return "<" + tag + ">" + value + "</" + tag + ">";
    }

    std::string value()
    {
        // clang-format off
        static const char* const values[] = {
            "", "0", "1", "-1", "42", "2147483647", "2147483648", "-2147483648", "-2147483649",
            "99999999999999999999", " \t\n+7x", "+-1", "-", "- 1", "\v\f\r3", "1,2,3,", "a, b,",
            "sfiSuccess", "sfiFailureCallBackToMany", "sip:1001@example.com", "Zo\xc3\xab",
            "a<b", "a>b", "</", "<>", "a text that is longer than the room of a small string"};
        // clang-format on
        if (below(100) == 0)
            return text();
        return oneOf(values);
    }

    /// Something that could be mistaken for a tag.
    std::string piece(const Tags& tags)
    {
        const std::string tag = tags.empty() || below(8) == 0 ? "Method" : oneOf(tags);
        switch (below(9))
        {
        case 0:
            return "<" + tag + ">";
        case 1:
            return "</" + tag + ">";
        case 2:
            return "<" + tag;
        case 3:
            return tag + ">";
        case 4:
            return "/" + tag + ">";
        case 5:
            return "<<" + tag + ">";
        case 6:
            return "<" + tag.substr(0, 4) + ">";
        case 7:
            return element(tag, value());
        default:
            return std::string(1, "<>/ -+09"[below(8)]);
        }
    }

    std::string body(const Tags& tags)
    {
        Tags order = tags;
        if (below(3) == 0)
            std::shuffle(order.begin(), order.end(), random);
        const std::size_t dropped = below(3) == 0 ? 4 : 1000;  // one in so many
        std::string text;
        for (const std::string& tag : order)
            if (below(dropped) != 0)
                text += element(tag, below(40) == 0 ? piece(tags) : value());
        return text;
    }

    std::string damaged(std::string text, const Tags& tags)
    {
        for (std::size_t times = below(4); times > 0; --times)
        {
            const std::size_t at = below(text.size() + 1);
            const std::size_t length = below(30);
            switch (below(7))
            {
            case 0:
                text.insert(at, piece(tags));
                break;
            case 1:
                text.erase(at, length);
                break;
            case 2:
                text.replace(at, at < text.size() ? 1 : 0, piece(tags));
                break;
            case 3:
                text.insert(below(text.size() + 1), text.substr(at, 3 * length));
                break;
            case 4:
                text.resize(below(10) == 0 ? at : text.size());
                break;
            case 5:
                text += piece(tags);
                break;
            default:
                // Now and then much of it.
                if (below(4) == 0)
                    for (std::size_t copies = below(100); copies > 0; --copies)
                        text.insert(std::min(at, text.size()), piece(tags));
            }
        }
        return text;
    }

    std::mt19937 random;
};

long residentKiB()
{
    std::ifstream file("/proc/self/statm");
    long size = 0;
    long resident = 0;
    file >> size >> resident;
    return resident * sysconf(_SC_PAGESIZE) / 1024;
}

constexpr long allowedGrowth = 256;    // KiB
constexpr long enoughToTell = 100000;  // messages; before, the largest have not all come up

void compareRequests(Comparison& comparison, Generator& generator)
{
    const std::string line = generator.text();
    const std::string uri = generator.text();
    const int number = static_cast<int>(generator.below(1U << 31));
    const sfiForwardingType type = static_cast<sfiForwardingType>(number);
    comparison.proxy->setForwardingConfiguration(line, type, true, uri, -number, false);
    demandEqual(
        "a request", comparison.channel.sent,
        rules::request("setForwardingConfiguration", {{"Line", line},
                                                      {"fwType", std::to_string(number)},
                                                      {"status", "1"},
                                                      {"uri", uri},
                                                      {"cfnrRingCount", std::to_string(-number)},
                                                      {"forceTKVSUpdate", "0"}}));
    generator.oneOf(samples::requests).call(*comparison.proxy);
}

}  // namespace

int main(int count, char** words)
{
    const long messages = count > 1 ? std::atol(words[1]) : 30000;
    const unsigned int seed = count > 2 ? static_cast<unsigned int>(std::atol(words[2])) : 1;
    Comparison comparison;
    Generator generator(seed);
    long callbacks = 0;
    long early = 0;
    for (long i = 0; i < messages; ++i)
    {
        if (i == messages / 10)
            early = residentKiB();
        callbacks += comparison.event(generator.event()).empty() ? 0 : 1;
        comparison.answer(generator.answer());
        compareRequests(comparison, generator);
    }
    const long growth = residentKiB() - early;
    std::printf("%ld events, %ld of them with a callback, and %ld answers: no difference; %ld KiB "
                "more after the first tenth\n",
                messages, callbacks, messages, growth);
    if (messages >= enoughToTell && growth > allowedGrowth)
        return EXIT_FAILURE;
    // A generator that spoils everything would prove nothing.
    return callbacks > messages / 2 ? EXIT_SUCCESS : EXIT_FAILURE;
}

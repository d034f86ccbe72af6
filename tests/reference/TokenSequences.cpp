// Every message that some tokens make, up to a number of tokens: the library against the plainest
// rules, as events and as answers. Chance leaves out the rare ones; this leaves out none.
//
// TokenSequences [tokens]

#include "tests/support/Comparison.h"

#include <functional>

namespace
{

/// Calls `check` with every sequence of up to `most` tokens, and counts them.
long forEach(const std::vector<std::string>& tokens, int most, std::string& text,
             const std::function<void(const std::string&)>& check)
{
    check(text);
    long all = 1;
    const std::size_t length = text.size();
    if (most > 0)
        for (const std::string& token : tokens)
        {
            text += token;
            all += forEach(tokens, most - 1, text, check);
            text.resize(length);
        }
    return all;
}

}  // namespace

int main(int count, char** words)
{
    const int most = count > 1 ? std::atoi(words[1]) : 5;
    Comparison comparison;
    std::string text;
    long callbacks = 0;
    const long events = forEach(
        {"<Method>CallHeldEvent</Method>", "<Method>", "<LineID>", "</LineID>", "<CallID>",
         "</CallID>", "<CallId>", "</LineI", "<", "/", ">", "7"},
        most, text,
        [&](const std::string& event) { callbacks += comparison.event(event).empty() ? 0 : 1; });
    const long answers =
        forEach({"<uri>", "</uri>", "<cfnrRingCount>", "</cfnrRingCount>", "<status>", "</status",
                 "<sfiResult>sfiSuccess</sfiResult>", "<ur", "<", "/", ">", "7"},
                most, text, [&](const std::string& answer) { comparison.answer(answer); });
    std::printf("%ld events, %ld of them with a callback, and %ld answers: no difference\n", events,
                callbacks, answers);
    return callbacks > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

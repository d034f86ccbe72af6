#ifndef COMMUNICATIONS_SERVICE_FUZZ_PLAIN_H
#define COMMUNICATIONS_SERVICE_FUZZ_PLAIN_H

#include <string>
#include <utility>
#include <vector>

/// The library's rules a second time, written to be plainly right and not to be fast: whole copies,
/// std::string::find, strtol. The fuzzers hold the library against it, value by value.
namespace plain
{

/// As strtol on a copy of the text, saturated at the 32-bit limits.
long number(const std::string& text);

/// The readers of answers. `found` tells whether the start tag is there.
std::string answerText(const std::string& startTag, const std::string& message,
                       const std::string& endTag, bool* found = nullptr);
long answerNumber(const std::string& startTag, const std::string& message,
                  const std::string& endTag);

/// The readers of events. `found` tells whether both tags are there.
std::string eventText(const std::string& startTag, const std::string& message,
                      const std::string& endTag, bool* found = nullptr);
long eventNumber(const std::string& startTag, const std::string& message,
                 const std::string& endTag);

/// What a subscriber is told of a message, in the form of Recorder; "" when nothing.
std::string callbacks(std::string message);

/// The result code of an answer.
int result(const std::string& word);

/// The items of an answer to getDevices.
std::vector<std::string> devices(const std::string& answer);

/// A request: the method, then tags and values.
std::string request(const std::string& method,
                    const std::vector<std::pair<std::string, std::string>>& fields);

/// The tags of all events and answers, without brackets.
extern const std::vector<std::string> tags;

/// The names of all events.
extern const std::vector<std::string> methods;

}  // namespace plain

#endif

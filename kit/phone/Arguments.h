#ifndef KIT_PHONE_ARGUMENTS_H
#define KIT_PHONE_ARGUMENTS_H

#include "kit/language/Words.h"
#include "kit/phone/CallBook.h"
#include "kit/protocol/Protocol.h"

#include <string>
#include <vector>

namespace kit::phone
{

/// The arguments of one call, as the framework's caller takes them.
struct Binding
{
    Values values;
    std::vector<std::string> nulls;
};

/// Finds a value for each argument of an operation, from named and positional words.
///
/// Words without a name go to the arguments without one, in order. Line and call may be left out of
/// the row: a word is taken as a line when it is one, as a call when it is a number, and in both
/// cases only when enough words are left for the arguments that cannot be left out. What is not given
/// follows from the calls in the book, or is what defaultOf() says.
///
/// When only looking for mistakes, no call has to follow, and the values are good for nothing else.
enum class Purpose
{
    calling,
    looking
};
Binding bindArguments(const Operation& operation, const std::vector<Word>& words,
                      const CallBook& book, Purpose purpose = Purpose::calling);

/// What an argument is when it is not given; null when it has to be given.
const char* defaultOf(const Operation& operation, const Field& argument);

/// It has such a value, or is a line or a call.
bool canBeLeftOut(const Operation& operation, const Field& argument);

/// The line or the call, which can follow from what the phone does now.
bool isLineArgument(const Field& argument);
bool isCallArgument(const Field& argument);

/// One value as it travels; what cannot be meant is a Mistake.
std::string readValue(const Field& field, const Word& word);

/// "holdCall [line] [callId] [holdCallReason] [manual]"
std::string usageOf(const Operation& operation);

/// Names that a value can have, for completion and help; empty where anything goes.
std::vector<std::string> namesFor(const Field& field);

/// A short word for an operation, with some of its arguments set and others to be given.
struct ShortWord
{
    const char* word;
    const char* operation;
    std::vector<const char*> positional;                            ///< arguments, in order
    std::vector<std::pair<const char*, const char*>> presets = {};  ///< argument and value
};

/// In the order in which they are shown. A word may have several rows, told apart by the number of
/// words behind it.
const std::vector<ShortWord>& shortWords();

/// Null when it is no short word.
const ShortWord* findShortWord(const std::string& word, std::size_t positionals);

/// The words that the operation would be given in the place of the short word's.
std::vector<Word> expand(const ShortWord& shortWord, const std::vector<Word>& words);

}  // namespace kit::phone

#endif

#ifndef KIT_PROTOCOL_PROTOCOL_H
#define KIT_PROTOCOL_PROTOCOL_H

#include "kit/protocol/Numbers.h"

#include <string>
#include <utility>
#include <vector>

namespace kit
{

/// How an argument travels.
enum class Kind
{
    text,        ///< std::string, byte for byte
    cString,     ///< const char*; null cuts the request off behind the opening tag
    number,      ///< int
    count,       ///< unsigned int, a number without a sign
    cause,       ///< CSTAEventCause, as its number
    feature,     ///< sfiFeature, as its number
    refusal,     ///< sfiRefuseCall, as its number
    cancelType,  ///< sfiCancelCallBackType, as its number
    forwarding,  ///< sfiForwardingType, as its number
    flag,        ///< bool, 1 or 0
    word,        ///< bool, TRUE or FALSE
    state,       ///< sfiServiceState, as its name
    payload,     ///< raw text behind the last field, without a tag
    raw,         ///< bytes with a length, without an envelope
    subscriber,  ///< the subscriber; does not travel
    ints,        ///< list of numbers in the framework's list encoding
    texts,       ///< list of texts in the framework's list encoding
    party        ///< text that arrives in the record CallPartyInfo
};

/// Which of the channel's operations carries a request.
enum class Sending
{
    request,
    timed,
    subscribe,
    oneWay,
    nothing  ///< does not reach the wire
};

/// What the answer looks like and what becomes of it.
enum class Answer
{
    none,       ///< no answer is awaited, nothing is returned
    result,     ///< a result word; the code is returned
    contains,   ///< searched for "sfiFailure", then for "true"
    stateName,  ///< searched for "sfiFailure", then for the names of the service states
    fields,     ///< fields, one of which is a result word
    items,      ///< items in angle brackets
    whole       ///< true when it is exactly "true"
};

/// One field of a message: an argument and the tag that it travels in.
struct Field
{
    const char* argument;
    const char* tag;  ///< "" where it has none
    Kind kind;
    const char* explanation;        ///< for people
    Meaning names = Meaning::none;  ///< whose names its numbers or words have
};

struct Operation
{
    const char* name;
    const char* method;  ///< "" where there is no envelope
    Sending sending;
    Answer answer;
    std::vector<Field> arguments;  ///< in declared order, which is the order on the wire
    std::vector<Field> outputs;    ///< fields of the answer, in declared order
    const char* resultTag;         ///< field with the result word, "" where the answer is the word
    const char* summary;
};

struct Event
{
    const char* method;
    const char* callback;
    bool exact;                    ///< matched whole, not by its beginning
    std::vector<Field> arguments;  ///< in the order of the callback's arguments
    const char* summary;
};

/// All 48 operations in the order of CommunicationsServiceIfc.
const std::vector<Operation>& operations();

/// All 28 events in the order in which they are dispatched.
const std::vector<Event>& events();

/// Null when there is none; whole names, case and all.
const Operation* findOperation(const std::string& name);
const Operation* findRequest(const std::string& method);
const Event* findEvent(const std::string& method);
const Event* findCallback(const std::string& callback);

/// Those of the request or the event with this method; null when there is none.
const std::vector<Field>* fieldsOf(const std::string& method);

/// Whether a payload follows the last tag.
bool hasPayload(const std::vector<Field>* fields);

/// Null when there is none, and where there are no fields.
const Field* fieldWithTag(const std::vector<Field>* fields, const std::string& tag);

/// The word of a list that was probably meant; "" when none is near.
std::string nearest(const std::string& word, const std::vector<std::string>& list);

/// Reads what people write for a flag: true, on, yes or 1, false, off, no or 0, in any case.
bool switchOf(const std::string& word, bool& on);

/// A message taken apart: fields in their order, whatever their names.
struct Message
{
    struct Element
    {
        std::string tag;
        std::string value;
    };

    std::string method;
    std::vector<Element> elements;
    std::string payload;  ///< what stands behind the last element

    /// Null when absent; of a tag that comes twice the first.
    const std::string* find(const std::string& tag) const;
};

/// Takes requests, events and answers apart; never fails. Where the table knows that a payload
/// follows the last field, it stays whole even if it looks like fields.
Message parse(const std::string& text);

/// Writes "<tag>value</tag>".
std::string element(const std::string& tag, const std::string& value);

/// Names and values for a message, as people give them: the name is an argument's or a tag's; a
/// number may be given by its name, a flag as true, on, yes or 1, a list with commas between.
using Values = std::vector<std::pair<std::string, std::string>>;

/// What becomes of the fields that are not among the values.
enum class Others
{
    leftOut,
    plain  ///< written with "", 0 or an empty list
};

/// Builds a message. Throws std::invalid_argument for a name that the message does not have and for
/// a value that cannot be meant; its text is for people.
std::string eventText(const Event& event, const Values& values, Others others = Others::leftOut);
std::string requestText(const Operation& operation, const Values& values);

/// Throws std::invalid_argument for a name that is none of the fields', with the one that was
/// probably meant, and for a field that is given twice; `message` is what the text calls the message.
void checkNames(const std::string& message, const std::vector<Field>& fields, const Values& values);

/// Place of the field with this argument or tag; the number of fields when there is none.
std::size_t placeOf(const std::vector<Field>& fields, const std::string& name);

/// The same, but throws std::invalid_argument as checkNames does.
std::size_t checkedPlaceOf(const std::string& message, const std::vector<Field>& fields,
                           const std::string& name);

/// The value given for a field by its argument's name or its tag; null when there is none.
const std::string* valueFor(const Field& field, const Values& values);

/// One value, from what people write to what travels. Throws std::invalid_argument.
std::string toWire(const Field& field, const std::string& value);

/// And back: numbers by name where they have one, flags as true and false.
std::string toPeople(const Field& field, const std::string& value);

/// What an answer looks like and what becomes of it, for people; what travels stands in `backticks`.
std::string inWords(Answer answer);

/// True for the kinds that travel as a decimal number, flags aside.
bool isNumber(Kind kind);

/// True for true and false, however written on the wire.
bool isFlag(Kind kind);

}  // namespace kit

#endif

#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_WRITING_SUBSCRIBER_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_WRITING_SUBSCRIBER_H

#include "application/Callbacks.h"

#include <cstddef>
#include <string>
#include <vector>

/// Writes "onCallHeldEvent('1001', 12)": texts in quotes, unsigned numbers with a "u". The whole of it
/// is appended to one string, and nothing else is allocated: with enough reserved, nothing at all.
class CallText
{
public:
    explicit CallText(std::string& to) : to_(to) {}

    void begin(const char* callback) { to_.append(callback).append("("); }
    void end() { to_ += ')'; }

    template <typename Value>
    void add(const Value& value)
    {
        if (!to_.empty() && to_.back() != '(' && to_.back() != '[')
            to_ += ", ";
        write(value);
    }

    void write(const char*) = delete;  // it would be a flag
    void write(const std::string& text) { to_.append("'").append(text).append("'"); }
    void write(int number) { to_ += std::to_string(number); }
    void write(unsigned int number) { to_.append(std::to_string(number)).append("u"); }
    void write(bool flag) { to_ += flag ? "true" : "false"; }

    template <typename Item>
    void write(const std::vector<Item>& items)
    {
        to_ += '[';
        for (const Item& item : items)
            add(item);
        to_ += ']';
    }

    /// A text may run on beyond its field, so each is read from the record's first byte on.
    void write(const CallPartyInfo* record)
    {
        const char* const bytes = reinterpret_cast<const char*>(record);
        to_ += '[';
        for (const std::size_t offset :
             {offsetof(CallPartyInfo, callingNumber), offsetof(CallPartyInfo, callingName),
              offsetof(CallPartyInfo, calledNumber), offsetof(CallPartyInfo, calledName)})
        {
            if (to_.back() != '[')
                to_ += ", ";
            to_.append("'").append(bytes + offset).append("'");
        }
        for (const std::size_t offset :
             {offsetof(CallPartyInfo, reservedText1), offsetof(CallPartyInfo, reservedText2),
              offsetof(CallPartyInfo, reservedText3), offsetof(CallPartyInfo, reservedText4)})
            if (bytes[offset] != '\0')
                to_ += ", a reserved text is set";
        if (record->reservedNumber != 0)
            to_ += ", the reserved number is set";
        to_ += ']';
    }

private:
    std::string& to_;
};

template <typename Value>
std::string show(const Value& value)
{
    std::string text;
    CallText(text).write(value);
    return text;
}

/// "5, true, 'sip:1234'"
template <typename... Values>
std::string shown(const Values&... values)
{
    std::string text;
    CallText call(text);
    (call.add(values), ...);
    return text;
}

/// Writes down what is heard.
class Writer
{
public:
    std::string said;
    bool writes = true;

    /// Called at the end of every callback.
    virtual void told() {}

protected:
    ~Writer() = default;

    template <typename... Arguments>
    void heard(const char* callback, const Arguments&... arguments)
    {
        if (writes)
        {
            CallText call(said);
            call.begin(callback);
            (call.add(arguments), ...);
            call.end();
            said += '\n';
        }
        told();
    }
};

/// A subscriber that writes down what it is told.
struct WritingSubscriber : communications::Callbacks<Writer>
{
    using Writer::said;
    using Writer::writes;

    explicit WritingSubscriber(std::size_t room = 0) { said.reserve(room); }
};

struct Thrown
{
};

/// One whose callbacks throw at their end.
struct ThrowingSubscriber : WritingSubscriber
{
    using WritingSubscriber::WritingSubscriber;
    void told() override { throw Thrown(); }
};

#endif

#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_RECORDER_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_RECORDER_H

#include "application/Callbacks.h"

#include <cstdio>
#include <string>
#include <vector>

/// Writes "callback(argument, argument)" so that no two lists of arguments look the same: a text
/// stands with its length, an unsigned number with a "u". The whole of it is appended to one string,
/// and nothing else is allocated: with enough reserved, nothing at all.
class CallText
{
public:
    explicit CallText(std::string& to) : to_(to) {}

    void begin(const char* callback)
    {
        to_ += callback;
        to_ += '(';
    }

    void add(const std::string& text)
    {
        print("%zu:", text.size());
        to_.append(text).append(", ");
    }
    void add(int number) { print("%d, ", number); }
    void add(unsigned int number) { print("%uu, ", number); }
    void add(bool flag) { to_ += flag ? "true, " : "false, "; }
    void add(const std::vector<int>& numbers)
    {
        to_ += '[';
        for (const int number : numbers)
            add(number);
        to_ += "], ";
    }
    void add(const std::vector<std::string>& texts)
    {
        to_ += '[';
        for (const std::string& text : texts)
            add(text);
        to_ += "], ";
    }
    void add(const CallPartyInfo* record)
    {
        to_ += '{';
        for (const char* text : {record->reservedText1, record->reservedText2,
                                 record->reservedText3, record->reservedText4})
            to_.append(text).append("|");
        print("%d", record->reservedNumber);
        for (const char* text :
             {record->calledName, record->calledNumber, record->callingName, record->callingNumber})
            to_.append("|").append(text);
        to_ += "}, ";
    }

    void end() { to_ += ")\n"; }

private:
    template <typename Number>
    void print(const char* format, Number number)
    {
        char digits[32];
        std::snprintf(digits, sizeof digits, format, number);
        to_ += digits;
    }

    std::string& to_;
};

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
        }
        told();
    }
};

/// A subscriber that writes down what it is told.
struct Recorder : communications::Callbacks<Writer>
{
    using Writer::said;
    using Writer::writes;

    explicit Recorder(std::size_t room = 0) { said.reserve(room); }
};

#endif

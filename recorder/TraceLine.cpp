#include "recorder/TraceLine.h"

#include <cinttypes>
#include <cstdio>
#include <ctime>

namespace recorder
{

namespace
{

constexpr const char* kinds[] = {"request", "answer", "event", "exception"};
constexpr const char* sendings[] = {"request", "timed", "subscribe", "oneWay"};
constexpr const char* digits = "0123456789abcdef";

/// Length of the character that begins at `at`; 0 where the bytes are no UTF-8.
std::size_t characterAt(std::string_view text, std::size_t at)
{
    const auto byte = [&](std::size_t i)
    { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
    const unsigned int first = byte(at);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
    if (first < 0xc2 || first > 0xf4)
        return 0;
    // The second byte keeps out what is longer than needed, halves of pairs, and what is too large.
    const unsigned int lowest = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
    const unsigned int highest = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
    if (byte(at + 1) < lowest || byte(at + 1) > highest)
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if (byte(at + i) < 0x80 || byte(at + i) > 0xbf)
            return 0;
    return length;
}

bool isUtf8(std::string_view text)
{
    for (std::size_t at = 0; at < text.size();)
    {
        const std::size_t length = characterAt(text, at);
        if (length == 0)
            return false;
        at += length;
    }
    return true;
}

void appendEscaped(std::string& out, std::string_view text)
{
    for (const char c : text)
    {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            (out += '\\') += c;
        else if (byte >= 0x20)
            out += c;
        else
            ((out += "\\u00") += digits[byte >> 4U]) += digits[byte & 15U];
    }
}

/// JSON knows no bytes, so a text that is not UTF-8 goes under another name, in hexadecimal.
void appendText(std::string& out, const char* name, std::string_view text)
{
    const bool readable = isUtf8(text);
    ((out += ",\"") += name) += readable ? "\":\"" : "Hex\":\"";
    if (readable)
        appendEscaped(out, text);
    else
        for (const char c : text)
        {
            const unsigned char byte = static_cast<unsigned char>(c);
            (out += digits[byte >> 4U]) += digits[byte & 15U];
        }
    out += '"';
}

void appendTime(std::string& out, std::int64_t time)
{
    char text[64];
    std::snprintf(text, sizeof text, "{\"time\":%" PRId64 ".%06d", time / 1000000,
                  static_cast<int>(time % 1000000));
    out += text;
}

void appendNumber(std::string& out, const char* name, std::uint64_t number)
{
    char text[64];
    std::snprintf(text, sizeof text, ",\"%s\":%" PRIu64, name, number);
    out += text;
}

std::string_view methodOf(std::string_view text)
{
    constexpr std::string_view opening = "<Method>";
    if (text.substr(0, opening.size()) != opening)
        return std::string_view();
    text.remove_prefix(opening.size());
    const std::size_t end = text.find("</Method>");
    return end == std::string_view::npos ? std::string_view() : text.substr(0, end);
}

}  // namespace

void appendHead(std::string& out, std::int64_t start, std::string_view program, long process,
                bool masked)
{
    const std::time_t seconds = static_cast<std::time_t>(start / 1000000);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    char text[160];
    std::snprintf(text, sizeof text,
                  "{\"trace\":2,\"start\":\"%04d-%02d-%02dT%02d:%02d:%02d.%06dZ\"",
                  parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour,
                  parts.tm_min, parts.tm_sec, static_cast<int>(start % 1000000));
    out += text;
    appendText(out, "program", program);
    appendNumber(out, "process", static_cast<std::uint64_t>(process));
    out += masked ? ",\"masked\":true}\n" : "}\n";
}

void appendRecord(std::string& out, const Record& record)
{
    appendTime(out, record.time);
    ((out += ",\"kind\":\"") += kinds[static_cast<int>(record.kind)]) += '"';
    if (record.thread != 0)
        appendNumber(out, "thread", static_cast<std::uint64_t>(record.thread));
    if (record.number != 0)
        appendNumber(out, "number", record.number);
    if (record.kind == Kind::request || record.kind == Kind::answer)
        ((out += ",\"sending\":\"") += sendings[static_cast<int>(record.sending)]) += '"';
    if (record.kind == Kind::answer)
        out += ",\"delivery\":\"done\"";
    if (!record.channel.empty())
        appendText(out, "channel", record.channel);
    if (record.kind == Kind::request || record.kind == Kind::event)
    {
        const std::string_view method = methodOf(record.text);
        if (!method.empty())
            appendText(out, "method", method);
    }
    appendText(out, "text", record.text);
    out += "}\n";
}

void appendDropped(std::string& out, std::int64_t time, std::uint64_t count, const char* reason)
{
    appendTime(out, time);
    out += ",\"kind\":\"dropped\"";
    appendNumber(out, "count", count);
    appendText(out, "reason", reason);
    out += "}\n";
}

}  // namespace recorder

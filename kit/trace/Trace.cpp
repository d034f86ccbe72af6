#include "kit/trace/Trace.h"

#include <cmath>
#include <cstdio>
#include <ctime>
#include <istream>
#include <limits>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace kit
{

namespace
{

using Json = nlohmann::ordered_json;

template <typename Value>
struct Name
{
    Value value;
    const char* name;
};

using RecordKind = TraceRecord::Kind;

constexpr Name<RecordKind> kinds[] = {
    {RecordKind::request, "request"}, {RecordKind::answer, "answer"},
    {RecordKind::event, "event"},     {RecordKind::exception, "exception"},
    {RecordKind::control, "control"}, {RecordKind::dropped, "dropped"}};

constexpr Name<Sending> sendings[] = {{Sending::request, "request"},
                                      {Sending::timed, "timed"},
                                      {Sending::subscribe, "subscribe"},
                                      {Sending::oneWay, "oneWay"}};

constexpr Name<Delivery> deliveries[] = {
    {Delivery::done, "done"}, {Delivery::timedOut, "timedOut"}, {Delivery::gone, "gone"}};

template <typename Table, typename Value>
const char* nameIn(const Table& table, Value value)
{
    for (const auto& entry : table)
        if (entry.value == value)
            return entry.name;
    return "";
}

template <typename Value, typename Table>
Value valueIn(const Table& table, const char* member, const Json& object)
{
    const std::string name = object.at(member).template get<std::string>();
    for (const auto& entry : table)
        if (name == entry.name)
            return entry.value;
    throw std::runtime_error(std::string("\"") + member + "\" is \"" + name +
                             "\", which is none of its words");
}

/// JSON knows no bytes, so a text that is not UTF-8 goes under another name, in hexadecimal.
void putText(Json& object, const std::string& name, const std::string& text)
{
    if (isUtf8(text))
    {
        object[name] = text;
        return;
    }
    object[name + "Hex"] = hexOf(text);
}

std::string getText(const Json& object, const std::string& name)
{
    if (object.contains(name))
        return object.at(name).get<std::string>();
    if (!object.contains(name + "Hex"))
        throw std::runtime_error("\"" + name + "\" is missing");
    const std::string hex = object.at(name + "Hex").get<std::string>();
    if (hex.size() % 2 != 0 || hex.find_first_not_of("0123456789abcdef") != std::string::npos)
        throw std::runtime_error("\"" + name + "Hex\" is not hexadecimal");
    std::string text;
    for (std::size_t i = 0; i < hex.size(); i += 2)
        text += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
    return text;
}

std::string timeText(std::chrono::system_clock::time_point time)
{
    const auto micros =
        std::chrono::duration_cast<std::chrono::microseconds>(time.time_since_epoch()).count();
    const auto seconds = static_cast<std::time_t>(micros / 1000000);
    std::tm parts = {};
    gmtime_r(&seconds, &parts);
    char text[80];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%06dZ", parts.tm_year + 1900,
                  parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                  static_cast<int>(micros % 1000000));
    return text;
}

std::chrono::system_clock::time_point timeFrom(const std::string& text)
{
    std::tm parts = {};
    int micros = 0;
    int end = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d.%6dZ%n", &parts.tm_year, &parts.tm_mon,
                    &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &micros,
                    &end) != 7 ||
        static_cast<std::size_t>(end) != text.size())
        throw std::runtime_error("\"start\" is no time of day");
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    return std::chrono::system_clock::from_time_t(timegm(&parts)) +
           std::chrono::microseconds(micros);
}

/// 0 where it is missing.
template <typename Number>
Number countIn(const Json& object, const char* member)
{
    if (!object.contains(member))
        return 0;
    const Json& value = object.at(member);
    if (!value.is_number_unsigned() ||
        value.get<std::uint64_t>() > std::uint64_t(std::numeric_limits<Number>::max()))
        throw std::runtime_error(std::string("\"") + member + "\" is no count");
    return value.get<Number>();
}

TraceHead headFrom(const Json& object)
{
    TraceHead head;
    head.format = countIn<int>(object, "trace");
    if (object.contains("start"))
        head.start = timeFrom(object.at("start").get<std::string>());
    if (object.contains("program") || object.contains("programHex"))
        head.program = getText(object, "program");
    return head;
}

TraceRecord recordFrom(const Json& object)
{
    TraceRecord record;
    record.kind = valueIn<RecordKind>(kinds, "kind", object);
    const double seconds = object.at("time").get<double>();
    if (!(seconds >= 0) || seconds > 1e9)
        throw std::runtime_error("\"time\" is no time since the start");
    record.time = std::chrono::microseconds(std::llround(seconds * 1e6));
    record.thread = countIn<int>(object, "thread");
    record.number = countIn<int>(object, "number");
    if (object.contains("sending"))
        record.sending = valueIn<Sending>(sendings, "sending", object);
    if (object.contains("delivery"))
        record.delivery = valueIn<Delivery>(deliveries, "delivery", object);
    if (object.contains("channel") || object.contains("channelHex"))
        record.channel = getText(object, "channel");
    record.count = countIn<std::uint64_t>(object, "count");
    if (record.kind != RecordKind::dropped)
        record.text = getText(object, "text");
    return record;
}

}  // namespace

bool isUtf8(const std::string& text)
{
    try
    {
        (void)Json(text).dump();
        return true;
    }
    catch (const Json::exception&)
    {
        return false;
    }
}

std::string hexOf(const std::string& text)
{
    static const char* const digits = "0123456789abcdef";
    std::string hex;
    for (const char c : text)
    {
        hex += digits[static_cast<unsigned char>(c) >> 4U];
        hex += digits[static_cast<unsigned char>(c) & 15U];
    }
    return hex;
}

std::string toJson(const TraceRecord& record)
{
    Json object;
    object["time"] = static_cast<double>(record.time.count()) / 1e6;
    object["kind"] = nameIn(kinds, record.kind);
    if (record.thread != 0)
        object["thread"] = record.thread;
    if (record.number != 0)
        object["number"] = record.number;
    if (record.kind == RecordKind::request || record.kind == RecordKind::answer)
        object["sending"] = nameIn(sendings, record.sending);
    if (record.kind == RecordKind::answer)
        object["delivery"] = nameIn(deliveries, record.delivery);
    if (!record.channel.empty())
        putText(object, "channel", record.channel);
    if (record.kind == RecordKind::request || record.kind == RecordKind::event)
    {
        const std::string method = parse(record.text).method;
        if (!method.empty())
            putText(object, "method", method);
    }
    if (record.kind == RecordKind::dropped)
        object["count"] = record.count;
    else
        putText(object, "text", record.text);
    return object.dump();
}

std::string toJson(const TraceHead& head)
{
    Json object;
    object["trace"] = head.format;
    if (head.start)
        object["start"] = timeText(*head.start);
    if (!head.program.empty())
        putText(object, "program", head.program);
    return object.dump();
}

TraceReader::TraceReader(std::string name) : name_(std::move(name)) {}

std::optional<TraceRecord> TraceReader::take(const std::string& line, bool whole)
{
    ++line_;
    if (line.find_first_not_of(" \t\r") == std::string::npos)
        return std::nullopt;
    try
    {
        const Json object = Json::parse(line);
        if (!object.is_object())
            throw std::runtime_error("not a JSON object");
        if (object.contains("trace"))
        {
            head_ = headFrom(object);
            if (head_.format > traceFormat)
                complain("written in format " + std::to_string(head_.format) + ", and only " +
                         std::to_string(traceFormat) + " is known here");
            return std::nullopt;
        }
        const TraceRecord record = recordFrom(object);
        ++records_;
        return record;
    }
    catch (const Json::parse_error& error)
    {
        damaged(whole ? "not JSON (byte " + std::to_string(error.byte) + ")"
                      : std::string("cut off in the middle of the line"));
    }
    catch (const Json::out_of_range&)
    {
        damaged("not a record of a trace: \"time\" or \"kind\" is missing");
    }
    catch (const Json::type_error&)
    {
        damaged("not a record of a trace: a member is of the wrong type");
    }
    catch (const std::runtime_error& error)
    {
        damaged(error.what());
    }
    return std::nullopt;
}

void TraceReader::complain(const std::string& what)
{
    if (complaint_.empty())
        complaint_ = name_ + ":" + std::to_string(line_) + ": " + what;
}

void TraceReader::damaged(const std::string& what)
{
    ++damaged_;
    complain(what);
}

std::string TraceReader::complaint() const
{
    if (damaged_ < 2)
        return complaint_;
    return complaint_ + (records_ == 0
                             ? "; no line of it is one of a trace"
                             : "; lines that cannot be read: " + std::to_string(damaged_));
}

Trace readTrace(std::istream& in, const std::string& name)
{
    Trace trace;
    TraceReader reader(name);
    std::string line;
    while (std::getline(in, line))
        if (std::optional<TraceRecord> record = reader.take(line, !in.eof()))
            trace.records.push_back(std::move(*record));
    trace.head = reader.head();
    trace.complaint = reader.complaint();
    return trace;
}

}  // namespace kit

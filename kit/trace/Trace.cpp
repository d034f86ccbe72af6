#include "kit/trace/Trace.h"

#include <cmath>
#include <istream>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace kit::phone
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

constexpr Name<Record::Kind> kinds[] = {{Record::Kind::request, "request"},
                                        {Record::Kind::answer, "answer"},
                                        {Record::Kind::event, "event"},
                                        {Record::Kind::control, "control"}};

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

/// JSON knows no bytes, so a text that is not UTF-8 goes under another name, in hexadecimal.
void putText(Json& object, const std::string& name, const std::string& text)
{
    if (isUtf8(text))
    {
        object[name] = text;
        return;
    }
    static const char* const digits = "0123456789abcdef";
    std::string hex;
    for (const char c : text)
    {
        hex += digits[static_cast<unsigned char>(c) >> 4U];
        hex += digits[static_cast<unsigned char>(c) & 15U];
    }
    object[name + "Hex"] = hex;
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

}  // namespace

std::string toJson(const Record& record)
{
    Json object;
    object["time"] = static_cast<double>(record.time.count()) / 1e6;
    object["kind"] = nameIn(kinds, record.kind);
    if (record.number != 0)
        object["number"] = record.number;
    if (record.kind == Record::Kind::request || record.kind == Record::Kind::answer)
        object["sending"] = nameIn(sendings, record.sending);
    if (record.kind == Record::Kind::answer)
        object["delivery"] = nameIn(deliveries, record.delivery);
    if (!record.channel.empty())
        putText(object, "channel", record.channel);
    if (record.kind == Record::Kind::request || record.kind == Record::Kind::event)
    {
        const std::string method = parse(record.text).method;
        if (!method.empty())
            putText(object, "method", method);
    }
    putText(object, "text", record.text);
    return object.dump();
}

Record fromJson(const std::string& line)
{
    Record record;
    try
    {
        const Json object = Json::parse(line);
        if (!object.is_object())
            throw std::runtime_error("not a JSON object");
        record.kind = valueIn<Record::Kind>(kinds, "kind", object);
        const double seconds = object.at("time").get<double>();
        if (seconds < 0 || seconds > 1e9)
            throw std::runtime_error("\"time\" is no time since the start");
        record.time = std::chrono::microseconds(std::llround(seconds * 1e6));
        record.number = object.value("number", 0);
        if (object.contains("sending"))
            record.sending = valueIn<Sending>(sendings, "sending", object);
        if (object.contains("delivery"))
            record.delivery = valueIn<Delivery>(deliveries, "delivery", object);
        if (object.contains("channel") || object.contains("channelHex"))
            record.channel = getText(object, "channel");
        record.text = getText(object, "text");
    }
    catch (const Json::parse_error& error)
    {
        throw std::runtime_error("not JSON (byte " + std::to_string(error.byte) + ")");
    }
    catch (const Json::out_of_range&)
    {
        throw std::runtime_error("not a record of a trace: \"time\" or \"kind\" is missing");
    }
    catch (const Json::type_error&)
    {
        throw std::runtime_error("not a record of a trace: a member is of the wrong type");
    }
    return record;
}

std::vector<Record> readTrace(std::istream& in, const std::string& name)
{
    std::vector<Record> records;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number)
    {
        if (line.find_first_not_of(" \t\r") == std::string::npos)
            continue;
        try
        {
            records.push_back(fromJson(line));
        }
        catch (const std::runtime_error& error)
        {
            throw std::runtime_error(name + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    return records;
}

ObservedConnection::ObservedConnection(std::unique_ptr<Connection> connection, Observer observer)
    : observer_(std::move(observer)), connection_(std::move(connection))
{
}

void ObservedConnection::setEventSink(EventSink sink)
{
    sink_ = std::move(sink);
    connection_->setEventSink([this](const std::string& channelName, const std::string& event)
                              { inject(channelName, event); });
}

void ObservedConnection::inject(const std::string& channelName, const std::string& event)
{
    Record record;
    record.kind = Record::Kind::event;
    record.channel = channelName;
    record.text = event;
    // Handed on first: who is woken by the record finds the event.
    sink_(channelName, event);
    tell(record);
}

Delivery ObservedConnection::request(const std::string& request, std::string& answer,
                                     std::chrono::milliseconds timeout)
{
    const int number = tellRequest(Sending::request, request, "");
    const Delivery delivery = connection_->request(request, answer, timeout);
    tellAnswer(number, Sending::request, delivery, answer);
    return delivery;
}

Delivery ObservedConnection::subscribe(const std::string& request, std::string& answer,
                                       const std::string& channelName,
                                       std::chrono::milliseconds timeout)
{
    const int number = tellRequest(Sending::subscribe, request, channelName);
    const Delivery delivery = connection_->subscribe(request, answer, channelName, timeout);
    tellAnswer(number, Sending::subscribe, delivery, answer);
    return delivery;
}

Delivery ObservedConnection::post(const std::string& message)
{
    tellRequest(Sending::oneWay, message, "");
    return connection_->post(message);
}

Delivery ObservedConnection::control(const std::string& command, std::string& answer,
                                     std::chrono::milliseconds timeout)
{
    Record record;
    record.kind = Record::Kind::control;
    record.text = command;
    tell(record);
    return connection_->control(command, answer, timeout);
}

Delivery ObservedConnection::quietRequest(const std::string& request, std::string& answer,
                                          std::chrono::milliseconds timeout)
{
    return connection_->request(request, answer, timeout);
}

Delivery ObservedConnection::quietControl(const std::string& command, std::string& answer,
                                          std::chrono::milliseconds timeout)
{
    return connection_->control(command, answer, timeout);
}

std::string ObservedConnection::description() const
{
    return connection_->description();
}

int ObservedConnection::tellRequest(Sending sending, const std::string& text,
                                    const std::string& channel)
{
    Record record;
    record.kind = Record::Kind::request;
    record.sending = sending;
    record.text = text;
    record.channel = channel;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        record.number = ++number_;
    }
    const int number = record.number;
    tell(std::move(record));
    return number;
}

void ObservedConnection::tellAnswer(int number, Sending sending, Delivery delivery,
                                    const std::string& text)
{
    Record record;
    record.kind = Record::Kind::answer;
    record.number = number;
    record.sending = sending;
    record.delivery = delivery;
    if (delivery == Delivery::done)
        record.text = text;
    tell(std::move(record));
}

void ObservedConnection::tell(Record record)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    record.time = std::chrono::duration_cast<std::chrono::microseconds>(
        std::chrono::steady_clock::now() - start_);
    observer_(record);
}

}  // namespace kit::phone

#include "kit/trace/Comparison.h"

#include "kit/language/Wording.h"
#include "kit/trace/Labels.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kit
{

namespace
{

constexpr std::size_t farthest = 200;  ///< records looked ahead for where both go on alike
constexpr std::size_t mostPlaces = 100;
constexpr std::size_t mostLines = 20;  ///< of one trace at one place

struct Line
{
    std::size_t record;  ///< counted from 1
    std::string what;    ///< "request", or "answer to HoldCall"
    Message message;
    const std::vector<Field>* fields;
    std::string key;  ///< the same for all that differ by their calls alone
};

const char* wordOf(const TraceRecord& record)
{
    switch (record.kind)
    {
    case TraceRecord::Kind::request:
        return "request";
    case TraceRecord::Kind::answer:
        return record.delivery == Delivery::done       ? "answer"
               : record.delivery == Delivery::timedOut ? "no answer in time"
                                                       : "service gone";
    case TraceRecord::Kind::event:
        return "event";
    case TraceRecord::Kind::exception:
        return "exception";
    case TraceRecord::Kind::dropped:
        return "records that are missing";
    case TraceRecord::Kind::control:
        break;
    }
    return "";
}

/// Its identifier counts for nothing but being the same one everywhere.
bool isSomeCall(const Line& line, const Message::Element& element)
{
    const Field* const field = fieldWithTag(line.fields, element.tag);
    return field != nullptr && isCall(*field) && !element.value.empty() && element.value != "0" &&
           element.value != "-1";
}

std::vector<Line> linesOf(const std::vector<TraceRecord>& records)
{
    std::vector<Line> lines;
    std::map<int, std::string> methods;  // of requests that wait for their answers
    for (std::size_t i = 0; i < records.size(); ++i)
    {
        const TraceRecord& record = records[i];
        if (record.kind == TraceRecord::Kind::control)
            continue;
        Line line{i + 1, wordOf(record), parse(record.text), nullptr, ""};
        const bool ends = record.number != 0 && record.kind != TraceRecord::Kind::request;
        std::string method = line.message.method;
        if (record.kind == TraceRecord::Kind::request)
            methods[record.number] = method;
        else if (ends)
        {
            method = methods[record.number];
            methods.erase(record.number);
            line.what += " to " + (method.empty() ? "an unknown request" : method);
        }
        const Operation* const operation = findRequest(method);
        line.fields = ends && operation != nullptr ? &operation->outputs : fieldsOf(method);
        line.key = line.what + '\n' + line.message.method + '\n';
        for (const Message::Element& each : line.message.elements)
            line.key += element(each.tag, isSomeCall(line, each) ? "*" : each.value);
        line.key += line.message.payload;
        lines.push_back(std::move(line));
    }
    return lines;
}

/// Everything, unlike the labels of ladders.
std::string shownLine(const Line& line)
{
    std::string text = line.what;
    if (!line.message.method.empty())
        text += " " + line.message.method;
    for (const Message::Element& each : line.message.elements)
    {
        const Field* const field = fieldWithTag(line.fields, each.tag);
        text +=
            " " + each.tag + "=" + (field != nullptr ? toPeople(*field, each.value) : each.value);
    }
    return printable(text + (line.message.payload.empty() ? "" : " ") + line.message.payload, 400);
}

/// Goes through both traces side by side.
class Comparer
{
public:
    Comparer(const std::vector<TraceRecord>& one, const std::vector<TraceRecord>& other)
        : one_(linesOf(one)), other_(linesOf(other))
    {
    }

    std::string run()
    {
        std::size_t i = 0;
        std::size_t j = 0;
        while ((i < one_.size() || j < other_.size()) && places_ < mostPlaces)
        {
            if (goOnAlike(i, j, 1))
            {
                compareCalls(one_[i++], other_[j++]);
                continue;
            }
            const auto [here, there] = whereTheyMeet(i, j);
            tell(i, i + here, j, j + there);
            i += here;
            j += there;
        }
        if (i < one_.size() || j < other_.size())
            text_ += "and so on: no more than " + std::to_string(mostPlaces) + " places are told\n";
        return text_;
    }

private:
    /// How far to go on in each, the least in sum, until both are alike; to the end where they never
    /// are.
    std::pair<std::size_t, std::size_t> whereTheyMeet(std::size_t i, std::size_t j) const
    {
        const std::size_t here = one_.size() - i;
        const std::size_t there = other_.size() - j;
        for (std::size_t sum = 1; sum <= std::min(farthest, here + there); ++sum)
            for (std::size_t step = sum - std::min(sum, there); step <= std::min(sum, here); ++step)
                if (goOnAlike(i + step, j + sum - step, 2 * step == sum ? 1 : 2))
                    return {step, sum - step};
        return {here, there};
    }

    /// Where one trace has more than the other, one line might be alike by chance, two are not. Both
    /// may end as well.
    bool goOnAlike(std::size_t i, std::size_t j, int lines) const
    {
        for (int line = 0; line < lines; ++line, ++i, ++j)
        {
            if (i == one_.size() && j == other_.size())
                return true;
            if (i == one_.size() || j == other_.size() || one_[i].key != other_[j].key)
                return false;
        }
        return true;
    }

    /// Alike but for the calls, which have to be the ones that belong together.
    void compareCalls(const Line& one, const Line& other)
    {
        std::string wrong;
        for (std::size_t e = 0; e < one.message.elements.size(); ++e)
        {
            const Message::Element& here = one.message.elements[e];
            const Message::Element& there = other.message.elements[e];
            if (!isSomeCall(one, here))
                continue;
            const std::string& known = calls_.emplace(here.value, there.value).first->second;
            const std::string& back = callsBack_.emplace(there.value, here.value).first->second;
            if (known != there.value || back != here.value)
                wrong += "  " + here.tag + ": another call, " + printable(here.value) + " | " +
                         printable(there.value) + "\n";
        }
        if (wrong.empty())
            return;
        head(one.record, other.record);
        text_ += "- " + shownLine(one) + "\n+ " + shownLine(other) + "\n" + wrong;
    }

    void tell(std::size_t i, std::size_t iEnd, std::size_t j, std::size_t jEnd)
    {
        head(i < one_.size() ? one_[i].record : 0, j < other_.size() ? other_[j].record : 0);
        const bool pairs = iEnd - i == jEnd - j;
        const std::size_t left = iEnd - std::min(iEnd, i + mostLines);
        const std::size_t right = jEnd - std::min(jEnd, j + mostLines);
        iEnd -= left;
        jEnd -= right;
        while (i < iEnd || j < jEnd)
        {
            const Line* const here = i < iEnd ? &one_[i++] : nullptr;
            const Line* const there =
                (here == nullptr || pairs) && j < jEnd ? &other_[j++] : nullptr;
            if (here != nullptr)
                text_ += "- " + shownLine(*here) + "\n";
            if (there != nullptr)
                text_ += "+ " + shownLine(*there) + "\n";
            if (here != nullptr && there != nullptr && here->what == there->what &&
                here->message.method == there->message.method)
                tellFields(*here, *there);
        }
        if (left + right > 0)
            text_ +=
                "  and " + std::to_string(left) + " more | " + std::to_string(right) + " more\n";
    }

    void tellFields(const Line& one, const Line& other)
    {
        const auto valueIn = [](const Line& line, const std::string& tag)
        {
            const std::string* const value = line.message.find(tag);
            const Field* const field = fieldWithTag(line.fields, tag);
            return value == nullptr   ? std::string("(missing)")
                   : field != nullptr ? toPeople(*field, *value)
                                      : *value;
        };
        for (const Message::Element& each : one.message.elements)
        {
            const std::string* const there = other.message.find(each.tag);
            if ((there == nullptr || *there != each.value) && !isSomeCall(one, each))
                text_ += "  " +
                         printable(each.tag + ": " + valueIn(one, each.tag) + " | " +
                                       valueIn(other, each.tag),
                                   400) +
                         "\n";
        }
        for (const Message::Element& each : other.message.elements)
            if (one.message.find(each.tag) == nullptr)
                text_ += "  " +
                         printable(each.tag + ": (missing) | " + valueIn(other, each.tag), 400) +
                         "\n";
    }

    void head(std::size_t one, std::size_t other)
    {
        const auto place = [](std::size_t record)
        { return record == 0 ? std::string("end") : std::to_string(record); };
        text_ += (places_++ == 0 ? "" : "\n") + place(one) + " | " + place(other) + "\n";
    }

    const std::vector<Line> one_;
    const std::vector<Line> other_;
    std::map<std::string, std::string> calls_;  ///< of one, to those of the other
    std::map<std::string, std::string> callsBack_;
    std::string text_;
    std::size_t places_ = 0;
};

}  // namespace

std::string differences(const std::vector<TraceRecord>& one, const std::vector<TraceRecord>& other)
{
    return Comparer(one, other).run();
}

}  // namespace kit

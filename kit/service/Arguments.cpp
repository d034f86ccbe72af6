#include "kit/service/Arguments.h"

#include "kit/language/Durations.h"
#include "kit/language/Switches.h"
#include "kit/language/Wording.h"
#include "kit/protocol/Columns.h"

namespace kit::service
{

using namespace numbers;

namespace
{

constexpr int longestCount = 1000000;
constexpr std::size_t longestNumber = 64;

}  // namespace

Arguments::Arguments(World& world, const CommandUsage& command,
                     const std::vector<CallState>& states, Words& words)
    : world_(world), command_(command), slots_(command.slots()), states_(states)
{
    // What is known by its place comes first; REST is not split into words.
    const bool takesRest = !slots_.empty() && slots_.back().value == "REST";
    Word word;
    for (std::size_t i = 1; takesRest && i < slots_.size() && words.next(word); ++i)
        words_.push_back(word);
    while (!takesRest && words.next(word))
        words_.push_back(word);
    readPlaces(words);
    if (!takesRest)
        readKeywords();
}

void Arguments::refuse(const std::string& why) const
{
    throw Mistake(command_.name + ": " + why);
}

void Arguments::refuseWithUsage(const std::string& why) const
{
    refuse(why + ", usage: " +
           (command_.usage.empty() ? command_.name + " stands alone" : command_.line()));
}

void Arguments::readPlaces(Words& words)
{
    const auto isKeyword = [&](const Word& word)
    {
        return !word.quoted &&
               std::any_of(slots_.begin(), slots_.end(),
                           [&](const UsageSlot& slot) {
                               return !slot.keyword.empty() &&
                                      slot.keyword == (word.name.empty() ? word.text : word.name);
                           });
    };
    std::size_t at = 0;
    for (const UsageSlot& slot : slots_)
    {
        if (!slot.keyword.empty())
            continue;
        if (slot.value == "REST")
            rest_ = words.rest();
        else if (at < words_.size() && !isKeyword(words_[at]))
        {
            check(slot, words_[at++]);
            continue;
        }
        else if (slot.optional && slot.value == "CALL")
            values_[slot.value] = std::to_string(onlyCall());
        const bool there = slot.value == "REST" ? !rest_.empty() : slot.optional;
        if (!there)
            refuseWithUsage(slot.value + " is missing");
    }
    words_.erase(words_.begin(), words_.begin() + static_cast<std::ptrdiff_t>(at));
}

void Arguments::readKeywords()
{
    std::vector<std::string> keywords;
    for (const UsageSlot& slot : slots_)
        if (!slot.keyword.empty())
            keywords.push_back(slot.keyword);
    for (std::size_t at = 0; at < words_.size(); ++at)
    {
        // "name Zoe" and "name=Zoe" are one.
        const bool joined = !words_[at].name.empty() && contains(keywords, words_[at].name);
        const std::string keyword = joined ? words_[at].name : words_[at].whole();
        const auto slot = std::find_if(slots_.begin(), slots_.end(),
                                       [&](const UsageSlot& any)
                                       { return !any.keyword.empty() && any.keyword == keyword; });
        if (slot == slots_.end())
        {
            const std::string near = didYouMean(keyword, keywords);
            if (near.empty())
                refuseWithUsage("unknown word " + quoted(keyword));
            refuse("unknown word " + quoted(keyword) + near);
        }
        if (slot->value.empty() && joined)
            refuse(keyword + " takes no value");
        else if (slot->value.empty())
            values_[keyword] = "on";
        else if (joined)
        {
            Word value = words_[at];
            value.name.clear();
            check(*slot, value);
        }
        else if (++at < words_.size())
            check(*slot, words_[at]);
        else
            refuse(slot->value + " is missing after " + keyword);
    }
    for (const UsageSlot& slot : slots_)
        if (!slot.optional && !slot.keyword.empty() && !has(slot.keyword))
            refuseWithUsage("\"" + slot.keyword + " " + slot.value + "\" is missing");
}

/// The only call that a command can mean.
int Arguments::onlyCall() const
{
    int only = 0;
    for (const auto& [id, call] : world_.simulation->calls.all())
        if (states_.empty() || contains(states_, call.state))
        {
            if (only != 0)
                refuse("several calls are possible, " + std::to_string(only) + " and " +
                       std::to_string(id) + ", say which");
            only = id;
        }
    if (only == 0)
        refuse("no call is in a state for it");
    return only;
}

/// Takes a value in, if it is one.
void Arguments::check(const UsageSlot& slot, const Word& word)
{
    const std::string text = word.whole();
    std::string& value = values_[slot.keyword.empty() ? slot.value : slot.keyword];
    value = text;
    int number = 0;
    const bool isNumber = numberOf(Meaning::none, text, number);
    const auto among = [&](const std::vector<std::string>& names, const std::string& kind)
    {
        if (!contains(names, text))
            refuse("no " + kind + " " + quoted(text) +
                   didYouMean(text, names, ", one of " + listed(names)));
    };
    if (slot.value == "LINE")
        among(world_.simulation->lines.names(), "line");
    if (slot.value == "CALL")
    {
        const Call* const call = isNumber ? world_.simulation->calls.find(number) : nullptr;
        if (call == nullptr)
            refuse("no call " + quoted(text));
        if (!states_.empty() && !contains(states_, call->state))
            refuse("call " + text + " is " + nameOf(Meaning::callState, call->state));
        value = std::to_string(number);
    }
    if (slot.value == "NUMBER" && (text.empty() || text.size() > longestNumber ||
                                   text.find_first_of("<>\"") != std::string::npos))
        refuse(quoted(text) + " is no number to call");
    if (slot.value == "COUNT" && (!isNumber || number < 0 || number > longestCount))
        refuse(quoted(text) + " is no number from 0 to " + std::to_string(longestCount));
    try
    {
        if (slot.value == "ON")
            value = parseSwitch(word) ? "on" : "off";
        if (slot.value == "TIME")
            value = std::to_string(parseDuration(word).count()) + "ms";
    }
    catch (const Mistake& mistake)
    {
        refuse(mistake.what());
    }
    const ValueKind* const kind = valueKind(slot.value);
    if (kind != nullptr && !(kind->numbersToo && isNumber) &&
        !(slot.value == "METHOD" && text == "*"))
        among(wordsFor(kind->value), kind->name);
}

const std::string& Arguments::text(const std::string& name) const
{
    static const std::string empty;
    const auto found = values_.find(name);
    return found == values_.end() ? empty : found->second;
}

int Arguments::number(const std::string& name, Meaning meaning, int otherwise) const
{
    int value = otherwise;
    if (has(name))
        numberOf(meaning, text(name), value);
    return value;
}

unsigned Arguments::count(const std::string& name, unsigned otherwise) const
{
    return static_cast<unsigned>(number(name, Meaning::none, static_cast<int>(otherwise)));
}

bool Arguments::on(const std::string& name, bool otherwise) const
{
    return has(name) ? text(name) == "on" : otherwise;
}

Line& Arguments::line() const
{
    return *world_.simulation->lines.find(text("LINE"));
}

Call& Arguments::call(const std::string& name) const
{
    return *world_.simulation->calls.find(number(name, Meaning::none, 0));
}

Party Arguments::party(const std::string& number, const std::string& name) const
{
    Party party = world_.simulation->partyOf(plainNumber(text(number)));
    if (has(name))
        party.name = text(name);
    return party;
}

}  // namespace kit::service

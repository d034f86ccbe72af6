#ifndef KIT_SERVICE_ARGUMENTS_H
#define KIT_SERVICE_ARGUMENTS_H

#include "kit/language/Words.h"
#include "kit/service/Usage.h"
#include "kit/service/World.h"

#include <map>
#include <string>
#include <vector>

namespace kit::service
{

/// The values of a command, by the keyword or, without one, by the kind of value. They are checked
/// against the command's usage, and what they name is there.
class Arguments
{
public:
    /// @param states  a CALL must be in one of them, if there are any
    /// Raises Mistake.
    Arguments(World& world, const CommandUsage& command,
              const std::vector<numbers::CallState>& states, Words& words);

    bool has(const std::string& name) const { return values_.count(name) != 0; }
    const std::string& text(const std::string& name) const;
    int number(const std::string& name, Meaning meaning, int otherwise) const;
    unsigned count(const std::string& name, unsigned otherwise) const;
    bool on(const std::string& name, bool otherwise) const;

    /// What stands behind the other values, as it was typed.
    const std::string& rest() const { return rest_; }

    Line& line() const;
    Call& call(const std::string& name = "CALL") const;
    /// The party that a number and, perhaps, a name stand for.
    Party party(const std::string& number, const std::string& name = "name") const;

private:
    void readPlaces(Words& words);
    void readKeywords();
    void check(const UsageSlot& slot, const Word& word);
    int onlyCall() const;
    [[noreturn]] void refuse(const std::string& why) const;
    [[noreturn]] void refuseWithUsage(const std::string& why) const;

    World& world_;
    const CommandUsage& command_;
    const std::vector<UsageSlot> slots_;
    const std::vector<numbers::CallState>& states_;
    std::vector<Word> words_;  ///< read, and not understood yet
    std::map<std::string, std::string> values_;
    std::string rest_;
};

}  // namespace kit::service

#endif

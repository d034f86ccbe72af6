#ifndef KIT_PHONE_CALL_BOOK_H
#define KIT_PHONE_CALL_BOOK_H

#include "application/CallBook.h"
#include "kit/binding/Subscriber.h"
#include "kit/protocol/Protocol.h"

#include <map>
#include <string>
#include <vector>

namespace kit::phone
{

/// What the phone knows about its calls and lines: only what the events have told it.
class CallBook
{
public:
    using Call = communications::CallBook::Call;

    void setLines(const std::vector<std::string>& lines);
    void take(const ReceivedEvent& event);
    void setLamp(const std::string& line, const std::string& lamp, const std::string& mode);

    /// Forgets calls and lamps; the lines stay.
    void clear();

    const std::vector<std::string>& lines() const { return lines_; }
    bool isLine(const std::string& word) const;

    /// Calls that are not over, oldest first.
    const std::vector<Call>& calls() const { return book_.calls(); }
    const Call* find(int id) const { return book_.find(id); }

    /// The one call that an operation's argument can mean, on `line` if that is not "". Raises
    /// Mistake when there is none or more than one, and says which.
    const Call& pick(const Operation& operation, const Field& argument,
                     const std::string& line) const;

    /// Everything about the lines: registration, do-not-disturb, agent, messages and so on.
    const std::map<std::string, std::map<std::string, std::string>>& features() const
    {
        return features_;
    }
    const std::map<std::string, std::map<std::string, std::string>>& lamps() const
    {
        return lamps_;
    }

private:
    void takeFeature(const ReceivedEvent& event);

    std::vector<std::string> lines_;
    communications::CallBook book_{callStates()};
    std::map<std::string, std::map<std::string, std::string>> features_;
    std::map<std::string, std::map<std::string, std::string>> lamps_;
};

}  // namespace kit::phone

#endif

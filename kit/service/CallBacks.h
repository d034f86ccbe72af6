#ifndef KIT_SERVICE_CALL_BACKS_H
#define KIT_SERVICE_CALL_BACKS_H

#include "kit/service/Model.h"

#include <cstddef>
#include <string>
#include <vector>

namespace kit::service
{

class Simulation;

constexpr Time callBackTimeOut = std::chrono::seconds(120);
constexpr Time callBackRings = std::chrono::seconds(2);
constexpr int callBackRingCount = 4;
constexpr std::size_t maximumCallBacksPerLine = 3;

/// Calls that come about once the far end is there: asked for, waited for, rung, over.
class CallBacks
{
public:
    explicit CallBacks(Simulation& simulation) : s_(simulation) {}

    /// Null when there is none.
    CallBack* find(int id);
    const std::vector<CallBack>& all() const { return callBacks_; }
    std::vector<CallBack*> of(const std::string& line);

    /// Waits for the far end of a call as its habit is.
    void request(const Call& call, int type);
    /// The phone calls by itself, because the far end has become available.
    bool carriedOutBy(Call& call, const std::string& number);

    void fail(int id, int why);
    void end(int id, int state);

private:
    void follow(int id);
    void ring(int id);
    void remove(const CallBack& callBack);

    Simulation& s_;
    std::vector<CallBack> callBacks_;
    int last_ = 0;
};

}  // namespace kit::service

#endif

#include "kit/phone/TraceView.h"

#include "kit/language/Wording.h"
#include "kit/phone/Interruptions.h"
#include "kit/phone/PageFile.h"
#include "kit/trace/Comparison.h"
#include "kit/trace/Ladder.h"

#include <cerrno>
#include <cstring>
#include <deque>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>

namespace kit::phone
{

namespace
{

std::ifstream open(const std::string& file)
{
    std::ifstream in(file, std::ios::binary);
    // A folder can be opened, but holds no text.
    if (!in || (in.peek() == std::ifstream::traits_type::eof() && in.bad()))
        throw std::runtime_error("cannot read " + file + ": " + std::strerror(errno));
    in.clear();
    return in;
}

Verdict complain(const std::string& complaint)
{
    if (complaint.empty())
        return Verdict::met;
    std::cerr << "communications-phone: " << complaint << '\n';
    return Verdict::mistake;
}

Verdict compare(const TraceView& view)
{
    std::ifstream one = open(view.file);
    std::ifstream two = open(view.other);
    const Trace trace = readTrace(one, view.file);
    const Trace other = readTrace(two, view.other);
    const std::string text =
        differences(filtered(trace.records, view.wanted), filtered(other.records, view.wanted));
    if (!text.empty())
        std::cout << "--- " << view.file << "\n+++ " << view.other << '\n' << text;
    std::cout << std::flush;
    const Verdict read = complain(trace.complaint);
    const Verdict otherRead = complain(other.complaint);
    return read != Verdict::met || otherRead != Verdict::met ? Verdict::mistake
           : text.empty()                                    ? Verdict::met
                                                             : Verdict::unmet;
}

Verdict writePage(const TraceView& view)
{
    std::ifstream in = open(view.file);
    Trace trace = readTrace(in, view.file);
    trace.records = filtered(trace.records, view.wanted);
    PageFile(view.page).write(trace, view.file.substr(view.file.rfind('/') + 1));
    return complain(trace.complaint);
}

/// The steps that are wanted. Each record becomes one step, so that what passes at the same time as
/// the wanted ones counts for who caused what.
class Chosen
{
public:
    explicit Chosen(const TraceFilter::Wanted& wanted) : filter_(wanted) {}

    std::vector<FlowStep> add(const TraceRecord& record)
    {
        return choose(flow_.add(record), filter_.add(record));
    }

    std::vector<FlowStep> finish() { return choose(flow_.finish(), filter_.finish()); }

private:
    std::vector<FlowStep> choose(const std::vector<FlowStep>& steps,
                                 const std::vector<bool>& decisions)
    {
        steps_.insert(steps_.end(), steps.begin(), steps.end());
        decisions_.insert(decisions_.end(), decisions.begin(), decisions.end());
        std::vector<FlowStep> chosen;
        for (; !steps_.empty() && !decisions_.empty(); steps_.pop_front(), decisions_.pop_front())
            if (decisions_.front())
                chosen.push_back(steps_.front());
        return chosen;
    }

    Flow flow_;
    TraceFilter filter_;
    std::deque<FlowStep> steps_;
    std::deque<bool> decisions_;
};

Verdict draw(const TraceView& view)
{
    std::ifstream in = open(view.file);
    const Trace trace = readTrace(in, view.file);
    Chosen chosen(view.wanted);
    std::vector<FlowStep> steps;
    for (const TraceRecord& record : trace.records)
        for (FlowStep& step : chosen.add(record))
            steps.push_back(std::move(step));
    for (FlowStep& step : chosen.finish())
        steps.push_back(std::move(step));
    if (steps.empty() && !trace.records.empty())
        std::cerr << "communications-phone: nothing is chosen of "
                  << counted(trace.records.size(), "record") << " in " << view.file << '\n';
    else if (!steps.empty() || trace.complaint.empty())
        std::cout << (view.mermaid ? mermaidLadder(steps) : textLadder(steps, view.width))
                  << std::flush;
    return complain(trace.complaint);
}

/// Whether another file has taken this one's place, or what was in it is gone.
bool isReplaced(const std::string& file, ino_t node, std::streamoff read)
{
    struct stat now = {};
    return stat(file.c_str(), &now) == 0 && (now.st_ino != node || now.st_size < read);
}

/// Until Ctrl-C. A recorder that begins a new file under the same name is followed into it.
Verdict watch(const TraceView& view)
{
    TextLadder ladder(view.width);
    const auto print = [&](const std::vector<FlowStep>& steps)
    {
        for (const FlowStep& step : steps)
            std::cout << ladder.add(step);
        std::cout << std::flush;
    };
    Verdict verdict = Verdict::met;
    while (interruptions() == 0 && std::cout)
    {
        std::ifstream in = open(view.file);
        struct stat first = {};
        stat(view.file.c_str(), &first);
        TraceReader reader(view.file);
        Chosen chosen(view.wanted);
        std::string line;
        std::streamoff read = 0;
        bool complained = false;
        int quiet = 0;  // tenths of a second
        while (interruptions() == 0 && std::cout)
        {
            std::string more;
            if (std::getline(in, more); !in.eof() && in)
            {
                line += more;
                read += static_cast<std::streamoff>(more.size()) + 1;
                if (const std::optional<TraceRecord> record = reader.take(line))
                    print(chosen.add(*record));
                line.clear();
                quiet = 0;
                if (!complained && complain(reader.complaint()) != Verdict::met)
                    verdict = Verdict::mistake;
                complained = !reader.complaint().empty();
                continue;
            }
            // Half a line may be all that there is yet.
            line += more;
            read += static_cast<std::streamoff>(more.size());
            in.clear();
            if (isReplaced(view.file, first.st_ino, read))
                break;
            // What has waited for a second without an answer is shown without one.
            if (++quiet == 10)
                print(chosen.finish());
            usleep(100000);
        }
        print(chosen.finish());
    }
    return verdict;
}

}  // namespace

Verdict viewTrace(const TraceView& view)
{
    if (!view.other.empty())
        return compare(view);
    if (!view.page.empty())
        return writePage(view);
    return view.watch ? watch(view) : draw(view);
}

}  // namespace kit::phone

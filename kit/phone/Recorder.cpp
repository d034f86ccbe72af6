#include "kit/phone/Recorder.h"

#include "kit/language/Wording.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>

namespace kit::phone
{

Recorder::Recorder(const Settings& settings, Display& display)
    : display_(display),
      pageTitle_(settings.pageTitle),
      width_(settings.width),
      picture_(settings.picture),
      wire_(settings.wire),
      textLadder_(width_),
      tracer_([this](const TraceRecord& record) { take(record); })
{
    if (pipe2(wake_, O_NONBLOCK | O_CLOEXEC) != 0)
        throw std::runtime_error(std::string("no pipe: ") + std::strerror(errno));
    pageTrace_.head = tracer_.head("communications-phone");
    if (!settings.pageFile.empty())
        page_ = std::make_unique<PageFile>(settings.pageFile);
    if (!settings.traceFile.empty())
        trace_ = std::make_unique<TraceFile>(settings.traceFile, pageTrace_.head);
    if (picture_ == Picture::mermaid)
        display_.print(mermaidLadder_.head().substr(0, mermaidLadder_.head().size() - 1));
}

Recorder::~Recorder()
{
    close(wake_[0]);
    close(wake_[1]);
}

void Recorder::take(const TraceRecord& record)
{
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (trace_)
            trace_->add(record);
        if (page_)
            pageTrace_.records.push_back(record);
        if (picture_ != Picture::none || wire_)
            records_.push_back(record);
    }
    // Full is as good as written.
    const ssize_t written = write(wake_[1], "", 1);
    (void)written;
}

void Recorder::addComplaint(const std::string& complaint)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    complaints_.push_back(complaint);
}

void Recorder::show()
{
    char bytes[64];
    while (read(wake_[0], bytes, sizeof bytes) > 0)
    {
    }
    std::vector<TraceRecord> records;
    std::vector<std::string> complaints;
    std::string problem;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        records.swap(records_);
        complaints.swap(complaints_);
        if (trace_ && !traceProblemTold_)
            problem = trace_->problem();
        traceProblemTold_ = traceProblemTold_ || !problem.empty();
    }
    using Kind = TraceRecord::Kind;
    for (const TraceRecord& record : records)
        if (draws())
            draw(flow_.add(record));
        else if (record.kind == Kind::request)
            display_.print("  -> " + printable(record.text), Display::Style::faint);
        else if (record.kind == Kind::answer)
            display_.print("  <- " + (record.delivery == Delivery::done
                                          ? printable(record.text)
                                          : std::string("(no answer)")),
                           Display::Style::faint);
        else if (record.kind == Kind::event)
            display_.print("  <= " + printable(record.text), Display::Style::faint);
    if (!draws())
        for (const std::string& complaint : complaints)
            display_.print("  service: " + printable(complaint, 400), Display::Style::faint);
    if (!problem.empty())
        display_.complain(problem);
}

void Recorder::note(const std::string& text, Display::Style style)
{
    if (!draws())
        return display_.print(text, style);
    FlowStep step;
    step.text = text;
    draw({step});
}

void Recorder::setWire(bool on)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    wire_ = on;
}

void Recorder::setLadder(bool on)
{
    show();
    if (!on && picture_ == Picture::text)
        draw(flow_.finish());
    const std::lock_guard<std::mutex> lock(mutex_);
    if (picture_ != Picture::mermaid)
        picture_ = on ? Picture::text : Picture::none;
    if (on)
        textLadder_ = TextLadder(width_);
}

void Recorder::draw(const std::vector<FlowStep>& steps)
{
    for (const FlowStep& step : steps)
    {
        std::string text =
            picture_ == Picture::mermaid ? mermaidLadder_.add(step) : textLadder_.add(step);
        text.pop_back();
        display_.print(text);
    }
}

bool Recorder::finish()
{
    show();
    if (draws())
        draw(flow_.finish());
    const std::lock_guard<std::mutex> lock(mutex_);
    bool complete = !trace_ || trace_->problem().empty();
    try
    {
        if (page_)
            page_->write(pageTrace_, pageTitle_);
    }
    catch (const Failure& failure)
    {
        display_.complain(failure.what());
        complete = false;
    }
    return complete;
}

}  // namespace kit::phone

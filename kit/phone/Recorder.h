#ifndef KIT_PHONE_RECORDER_H
#define KIT_PHONE_RECORDER_H

#include "kit/phone/Display.h"
#include "kit/phone/PageFile.h"
#include "kit/trace/Ladder.h"
#include "kit/trace/TraceFile.h"
#include "kit/trace/Tracer.h"

#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace kit::phone
{

/// What passes between phone and service: taken in on any thread, written into the trace at once,
/// and shown by show() as a picture or as raw text.
class Recorder
{
public:
    enum class Picture
    {
        none,
        text,
        mermaid
    };

    struct Settings
    {
        std::string traceFile;  ///< "" for none
        std::string pageFile;   ///< a page of the trace; "" for none
        std::string pageTitle;
        Picture picture = Picture::none;
        std::size_t width = 80;  ///< of a picture in text
        bool wire = false;
    };

    /// Raises std::runtime_error for a file that cannot be written.
    Recorder(const Settings& settings, Display& display);
    ~Recorder();

    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    /// Where everything that passes goes.
    Tracer& tracer() { return tracer_; }

    /// The service's, on any thread.
    void addComplaint(const std::string& complaint);

    /// Readable when there is something to show, or an event to deliver.
    int wakeDescriptor() const { return wake_[0]; }

    /// Prints what has passed since the last time.
    void show();

    /// A line that stands in a picture too.
    void note(const std::string& text, Display::Style style);

    /// A picture stands in the place of results and events.
    bool draws() const { return picture_ != Picture::none; }
    Picture picture() const { return picture_; }

    void setWire(bool on);
    void setLadder(bool on);

    /// Prints what of the picture still waits for an answer. False when the trace is not complete.
    bool finish();

private:
    void take(const TraceRecord& record);
    void draw(const std::vector<FlowStep>& steps);

    Display& display_;
    const std::string pageTitle_;
    const std::size_t width_;
    int wake_[2] = {-1, -1};

    std::mutex mutex_;
    std::unique_ptr<TraceFile> trace_;
    bool traceProblemTold_ = false;
    std::unique_ptr<PageFile> page_;
    Trace pageTrace_;                      ///< all of it, for the page
    std::vector<TraceRecord> records_;     ///< not shown yet
    std::vector<std::string> complaints_;  ///< likewise
    Picture picture_;                      ///< read by others only on the phone's thread
    bool wire_;

    Flow flow_;
    TextLadder textLadder_;
    MermaidLadder mermaidLadder_;
    Tracer tracer_;
};

}  // namespace kit::phone

#endif

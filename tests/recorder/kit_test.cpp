// The built plug-in in the stand-in framework, and its traces as the kit reads them.

#include "kit/framework/Framework.h"
#include "kit/service/EmbeddedConnection.h"
#include "kit/testing/EventRecorder.h"
#include "kit/trace/Trace.h"
#include "recorder/Mask.h"
#include "tests/support/Folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace
{

using kit::TraceRecord;

kit::Trace traceIn(const std::string& path)
{
    std::ifstream file(path);
    kit::Trace trace = kit::readTrace(file, path);
    EXPECT_EQ(trace.complaint, "");
    EXPECT_EQ(trace.head.format, 2);
    EXPECT_EQ(trace.head.program, "recording plug-in");
    return trace;
}

/// A copy of the plug-in in a folder, which is opened apart from all others.
std::string pluginIn(const Folder& folder)
{
    const std::string path = folder / "plugin.so";
    std::filesystem::copy_file(RECORDER_PLUGIN, path);
    return path;
}

std::vector<std::string> session(kit::Framework::Options options)
{
    std::vector<std::string> passed;
    options.events = kit::Framework::Events::onPump;
    options.observer = [&](const kit::Passage& passage)
    {
        if (passage.what == kit::Passage::What::request ||
            passage.what == kit::Passage::What::answer ||
            passage.what == kit::Passage::What::message)
            passed.push_back(passage.text);
    };
    kit::Framework framework(std::make_unique<kit::EmbeddedConnection>(), options);
    kit::EventRecorder subscriber;
    framework.service().activate();
    framework.service().subscribe(&subscriber);
    kit::ControlAnswer answer;
    framework.connection()->control("call 1001 from 2001", answer, std::chrono::seconds(1));
    framework.pump();
    framework.service().acceptCall("1001", 1, false);
    framework.service().setIsInServiceInitiatedState("1001", true);
    framework.service().answerCall("1001", 1);
    framework.pump();
    framework.service().callClear("1001", 1, CSTAEventCause::normalClearing);
    framework.pump();
    framework.remove(subscriber);
    return passed;
}

TEST(RecorderInTheKit, WritesWhatTheFrameworkSees)
{
    const Folder folder;
    std::ofstream(folder / "recording.conf") << "# beside the plug-in\nfile=" << folder / "t\n";
    kit::Framework::Options options;
    options.library = pluginIn(folder);
    const std::vector<std::string> passed = session(options);
    std::this_thread::sleep_for(std::chrono::seconds(1));
    std::vector<std::string> recorded;
    int events = 0;
    for (const TraceRecord& record : traceIn(folder / "t").records)
        if (record.kind == TraceRecord::Kind::event)
        {
            ++events;
            EXPECT_EQ(record.channel, "subscriber-1");
        }
        else
            recorded.push_back(record.text);
    EXPECT_EQ(recorded, passed);
    EXPECT_GT(events, 3);
}

/// A text that can be found again, and stands for nobody in the protocol.
std::string secret(std::size_t number)
{
    return "Zq" + std::to_string(777000 + number) + "x";
}

bool isPersonal(const kit::Field& field)
{
    // Words of the service's, not of people.
    static const std::vector<std::string> harmless = {"agentState", "lampId", "CallID"};
    switch (field.kind)
    {
    case kit::Kind::text:
    case kit::Kind::cString:
    case kit::Kind::party:
    case kit::Kind::texts:
    case kit::Kind::payload:
    case kit::Kind::raw:
        return std::find(harmless.begin(), harmless.end(), field.tag) == harmless.end() &&
               std::string(field.tag) != "digits";
    default:
        return false;
    }
}

/// Every field of the protocol, one message for each: the personal ones are hidden, and the others
/// are as they were.
void checkMessage(recorder::Kind kind, const std::string& method,
                  const std::vector<kit::Field>& fields)
{
    SCOPED_TRACE(method);
    recorder::Mask mask;
    for (const kit::Field& field : fields)
    {
        // What has no tag is the rest of a message, or a whole answer; the tables of texts have those.
        if (*field.tag == '\0' && field.kind != kit::Kind::payload)
            continue;
        const std::string value = isPersonal(field)         ? secret(1)
                                  : kit::isFlag(field.kind) ? "1"
                                                            : "77";
        const std::string message =
            kit::element("Method", method) +
            (*field.tag == '\0' ? "<?xml?>" + value : kit::element(field.tag, value));
        const std::string masked = mask.masked(kind, message);
        if (isPersonal(field))
        {
            EXPECT_EQ(masked.find(value), std::string::npos) << masked;
        }
        else if (std::string(field.tag) != "digits")
        {
            EXPECT_EQ(masked, message);
        }
    }
}

TEST(RecorderInTheKit, MasksEveryPersonalFieldOfTheProtocol)
{
    for (const kit::Operation& operation : kit::operations())
    {
        checkMessage(recorder::Kind::request, operation.method, operation.arguments);
        checkMessage(recorder::Kind::answer, "answer", operation.outputs);
    }
    for (const kit::Event& event : kit::events())
        checkMessage(recorder::Kind::event, event.method, event.arguments);
}

}  // namespace

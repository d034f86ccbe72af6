// The program as it is run: scripts, exit statuses, and that nothing is left out of "everything".

#include "kit/testing/ServiceProcess.h"
#include "kit/trace/Trace.h"
#include "tests/kit/Transcript.h"
#include "tests/support/Folder.h"
#include "tests/support/Program.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <thread>
#include <unistd.h>
#include <vector>

namespace kit::phone
{

namespace
{

/// A folder in which `phone` and `service` are the programs.
class PhoneFolder : public Folder
{
public:
    PhoneFolder()
    {
        std::filesystem::create_symlink(PHONE_PROGRAM, file("phone"));
        std::filesystem::create_symlink(SERVICE_PROGRAM, file("service"));
    }

    std::string file(const std::string& name) const { return *this / name; }

    std::string read(const std::string& name) const { return contentsOf(file(name)); }

    /// Waits until the file has the text.
    bool comes(const std::string& name, const std::string& text) const
    {
        for (int i = 0; i < 4000; ++i, usleep(5000))
            if (read(name).find(text) != std::string::npos)
                return true;
        return false;
    }

    /// Runs a command of the shell in the folder; returns its exit status, and leaves what it prints
    /// in "out" and "err".
    int run(const std::string& command) const
    {
        std::ofstream(file("command"))
            << "cd " << file("") << "\nPATH=.:$PATH\nTOUR=" PHONE_SCRIPTS
            << "/tour\nEVERYTHING=" PHONE_SCRIPTS "/everything\n"
               "await() { for i in $(seq 3000); do \"$@\" 2>/dev/null && "
               "return; sleep 0.02; done; }\n"
            << command << "\n";
        const int status = std::system(
            ("sh " + file("command") + " </dev/null >" + file("out") + " 2>" + file("err"))
                .c_str());
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST(PhoneProgram, DoesWhatItsTranscriptSays)
{
    test::replay("program",
                 [](const std::string&) -> test::Typing
                 {
                     const auto folder = std::make_shared<PhoneFolder>();
                     return [folder](const std::string& command)
                     {
                         const int status = folder->run(command);
                         std::istringstream errors(folder->read("err"));
                         std::string text = folder->read("out");
                         for (std::string line; std::getline(errors, line);)
                             text += "! " + line + "\n";
                         return text + (status == 0 ? "" : "= " + std::to_string(status) + "\n");
                     };
                 });
}

TEST(PhoneProgram, IsInterruptedInAScriptWithItsOwnExitStatus)
{
    const PhoneFolder folder;
    const std::string script = folder.file("script");
    std::ofstream(script) << "say begun\nwait 1min\nsay not reached\n";
    Program phone(PHONE_PROGRAM, {"--real-time", "--script", script});
    EXPECT_TRUE(phone.says("begun"));
    EXPECT_EQ(phone.endedBy(SIGINT), 130);
    EXPECT_EQ(phone.said(), "begun\n");
}

TEST(PhoneProgram, SaysWhenAServiceHangsOrDies)
{
    const PhoneFolder folder;
    ServiceProcess service;
    const std::string at = "the service at " + service.socket();
    const auto phone = [&](const std::string& lines)
    {
        return folder.run("printf '" + lines + "' | phone --timeout 200ms --socket " +
                          service.socket());
    };
    EXPECT_EQ(phone("getMicrophoneMute\\n"), 0);
    EXPECT_EQ(phone("sim silence GetMicrophoneMute\\ngetMicrophoneMute\\ngetMicrophoneMute\\n"), 3);
    EXPECT_EQ(folder.read("err"), "stdin:2: GetMicrophoneMute has no answer: " + at +
                                      " did not answer within 200 ms\n");
    EXPECT_EQ(phone("subscribe\\nhold 99\\n"), 1);
    EXPECT_NE(folder.read("out").find("\n  service: HoldCall: "), std::string::npos)
        << "why it failed is told over a socket too";
    std::filesystem::remove(folder.file("out"));
    // A running expectation ends with the service, whatever its time.
    std::thread meanwhile(
        [&]
        {
            EXPECT_TRUE(folder.comes("out", "subscribe: sfiSuccess"));
            service.kill();
        });
    EXPECT_EQ(phone("subscribe\\nexpect CallHeldEvent within 24h\\n"
                    "expect no CallHeldEvent within 24h\\n"),
              3);
    meanwhile.join();
    const std::string gone = "  " + at + " is gone; \"reconnect\" connects anew\n";
    EXPECT_EQ(folder.read("err"),
              "stdin:2: expected CallHeldEvent, but nothing comes any more\n" + gone +
                  "stdin:3: expected no CallHeldEvent, but nothing comes any more\n" + gone);
    EXPECT_EQ(phone("getMicrophoneMute\\n"), 3);
    EXPECT_EQ(
        folder.read("err").rfind("communications-phone: no service at " + service.socket(), 0), 0U);
}

TEST(PhoneProgram, WatchesATraceAsItGrows)
{
    const PhoneFolder folder;
    const std::string trace = folder.file("trace");
    const auto event = [](const std::string& call)
    {
        return R"({"time":1,"kind":"event","text":"<Method>CallHeldEvent</Method><CallID>)" + call +
               R"(</CallID>"})";
    };
    const auto append = [&](const std::string& text)
    { std::ofstream(trace, std::ios::app) << text << std::flush; };
    append(event("1") + "\n" + event("9").substr(0, 40));
    Program phone(PHONE_PROGRAM, {"--ladder-from", trace, "--watch"});
    EXPECT_TRUE(phone.says("CallID=1-"));
    append(event("9").substr(40) + "\n");
    EXPECT_TRUE(phone.says("CallID=9-")) << "half a line was there before";
    append(R"({"time":1,"kind":"request","number":1,"sending":"request","text":"unanswered"})"
           "\n");
    EXPECT_TRUE(phone.says("--unanswered--"));
    // A new file in the place of the old one.
    std::rename(trace.c_str(), folder.file("trace.old").c_str());
    append(event("3") + "\n");
    EXPECT_TRUE(phone.says("CallID=3-"));
    EXPECT_EQ(phone.endedBy(SIGINT), 0);
}

/// Every row of the protocol's tables has to be in the trace, and each answered request once with
/// success.
void expectEverythingIn(const std::vector<TraceRecord>& records, const std::string& script)
{
    std::map<int, std::string> requests;
    std::set<std::string> sent;
    std::set<std::string> carriedOut;
    std::set<std::string> came;
    for (const TraceRecord& record : records)
    {
        const std::string method = parse(record.text).method;
        if (record.kind == TraceRecord::Kind::request)
        {
            requests[record.number] = method;
            const Operation* const operation = findRequest(method);
            EXPECT_TRUE(operation == nullptr || record.sending == operation->sending) << method;
            sent.insert(record.text.rfind("SigEvent:", 0) == 0 ? "SigEvent" : method);
        }
        else if (record.kind == TraceRecord::Kind::answer && record.text == "sfiSuccess")
            carriedOut.insert(requests[record.number]);
        else if (record.kind == TraceRecord::Kind::event)
            came.insert(method);
    }
    for (const Operation& operation : operations())
    {
        const std::string name = operation.name;
        EXPECT_NE(script.find("\n" + name), std::string::npos) << name << " is not in the script";
        if (operation.sending == Sending::nothing)
            continue;
        const std::string method = *operation.method != '\0' ? operation.method : "SigEvent";
        EXPECT_TRUE(sent.count(method)) << name;
        EXPECT_TRUE(operation.answer != Answer::result || carriedOut.count(method) != 0)
            << name << " was never carried out";
    }
    for (const Event& event : events())
    {
        EXPECT_TRUE(came.count(event.method)) << event.method;
        EXPECT_NE(script.find("\nexpect " + std::string(event.method)), std::string::npos)
            << event.method << " is not expected";
    }
}

TEST(PhoneProgram, EverythingIsCoveredInProcessAndOverASocket)
{
    const PhoneFolder folder;
    ServiceProcess service;
    std::ostringstream script;
    script << std::ifstream(PHONE_SCRIPTS "/everything").rdbuf();
    for (const std::string& socket : {std::string(), "--socket " + service.socket()})
    {
        SCOPED_TRACE(socket);
        ASSERT_EQ(folder.run("phone --script $EVERYTHING --trace trace " + socket), 0)
            << folder.read("err");
        std::ifstream trace(folder.file("trace"));
        expectEverythingIn(readTrace(trace, "trace").records, script.str());
    }
}

}  // namespace

}  // namespace kit::phone

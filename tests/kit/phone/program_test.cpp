// The program as it is run: scripts, exit statuses, and that nothing is left out of "everything".

#include "kit/testing/ServiceProcess.h"
#include "kit/trace/Trace.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace kit::phone
{

namespace
{

struct Ended
{
    int status;
    std::string out;
    std::string errors;
};

/// A folder that goes with the test.
class Folder
{
public:
    Folder()
    {
        char name[] = "/tmp/communications-phone-test-XXXXXX";
        if (mkdtemp(name) == nullptr)
            throw std::runtime_error("no folder");
        path_ = name;
    }

    ~Folder() { (void)std::system(("rm -r " + path_).c_str()); }

    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string file(const std::string& name) const { return path_ + "/" + name; }

    std::string write(const std::string& name, const std::string& text) const
    {
        std::ofstream(file(name), std::ios::binary) << text;
        return file(name);
    }

    std::string read(const std::string& name) const
    {
        std::ostringstream text;
        text << std::ifstream(file(name), std::ios::binary).rdbuf();
        return text.str();
    }

private:
    std::string path_;
};

/// Runs the program with options as in a shell, and a text as its standard input.
/// @param action  carried out once the program has printed that a request succeeded
Ended phone(const Folder& folder, const std::string& options, const std::string& input = "",
            const std::function<void()>& action = nullptr)
{
    folder.write("in", input);
    folder.write("out", "");
    std::thread meanwhile(
        [&]
        {
            for (int i = 0; action && i < 2000; ++i, usleep(5000))
                if (folder.read("out").find("sfiSuccess") != std::string::npos)
                    return action();
        });
    const std::string command = std::string(PHONE_PROGRAM) + " " + options + " <" +
                                folder.file("in") + " >" + folder.file("out") + " 2>" +
                                folder.file("err");
    const int status = std::system(command.c_str());
    meanwhile.join();
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, folder.read("out"), folder.read("err")};
}

const std::string everything = std::string(PHONE_SCRIPTS) + "/everything";
const std::string tour = std::string(PHONE_SCRIPTS) + "/tour";

TEST(PhoneProgram, ExitStatusTellsHowItWent)
{
    const Folder folder;
    const std::string met = folder.write("met", "subscribe\nactivate\n"
                                                "expect RegistrationStateChangeEvent\n");
    const std::string unmet = folder.write("unmet", "subscribe\nexpect CallHeldEvent\nsay no\n");
    const std::string mistake = folder.write("mistake", "say before\nhold x=1\nexpct\n");
    const struct
    {
        std::string options;
        int status;
        std::string error;
    } rows[] = {
        {"--script " + met, 0, ""},
        {"--script " + unmet, 1, "unmet:2: expected CallHeldEvent within 1 s\n  no event came\n"},
        {"--script " + mistake, 2,
         "mistake:2:6: holdCall has no argument x (holdCall [line] [callId] [holdCallReason] "
         "[manual])\nmistake:3:1: there is no command expct, did you mean expect?\n"},
        {"--script /nowhere", 2,
         "communications-phone: cannot read the script /nowhere: No such file or directory\n"},
        {"--scrip x", 2,
         "communications-phone: there is no option --scrip, did you mean --script?\n"},
        {"--timeout soon", 2,
         "communications-phone: soon is no time; write it as 250ms, 1.5s, 2min or 1h\n"},
        {"--library /nowhere", 2, "communications-phone: there is no library /nowhere\n"},
        {"--socket /nowhere --script " + met, 3,
         "communications-phone: no service at /nowhere: there is no such socket\n"},
        {"--ladder-from /", 2, "communications-phone: cannot read /: Is a directory\n"},
        {"--ladder-from " + met, 2,
         "communications-phone: " + met +
             ":1: not JSON (byte 1); no line of it is one of a trace\n"},
        {"--trace /dev/full --script " + met, 4,
         "the trace ends here: /dev/full cannot be written: No space left on device\n"},
        {"--trace /nowhere/t --script " + met, 2,
         "communications-phone: cannot write /nowhere/t: No such file or directory\n"},
        {"--version", 0, ""},
        {"--ladder-from " + folder.write("t", R"({"time":1,"kind":"event","text":"x"})") +
             " --html /nowhere/p",
         2, "communications-phone: cannot write /nowhere/p: No such file or directory\n"},
    };
    for (const auto& row : rows)
    {
        const Ended ended = phone(folder, row.options);
        EXPECT_EQ(ended.status, row.status) << row.options;
        EXPECT_EQ(ended.errors, row.error) << row.options;
        EXPECT_EQ(ended.out.find("before"), std::string::npos) << "carried out before it was read";
        EXPECT_EQ(ended.out.find("\033"), std::string::npos) << "colours go to terminals only";
    }
}

TEST(PhoneProgram, NoticesThatNobodySeesWhatItPrints)
{
    const Folder folder;
    const std::string trace = folder.write("t", "{\"time\":1,\"kind\":\"event\",\"text\":\"x\"}\n");
    for (const std::string& options : {"--ladder-from " + trace, "--script " + everything})
    {
        const int status = std::system(
            (std::string(PHONE_PROGRAM) + " " + options + " >/dev/full 2>" + folder.file("err"))
                .c_str());
        EXPECT_EQ(WEXITSTATUS(status), 4) << options;
        EXPECT_EQ(folder.read("err"),
                  "communications-phone: what was to be printed could not be written\n");
    }
}

TEST(PhoneProgram, LinesFromAPipeGoOnAfterAMistake)
{
    const Folder folder;
    const Ended ended =
        phone(folder, "", std::string("say one\nhol\nbad \0 byte\n! getDevices\nsay two\n", 43));
    EXPECT_EQ(ended.status, 2);
    EXPECT_EQ(ended.out, "one\ngetDevices: sfiSuccess devices=1001,1002,1003\ntwo\n");
    EXPECT_EQ(ended.errors, "stdin:2:1: there is no command hol, did you mean hold?\n"
                            "stdin:3:5: the byte 0x00 is no text; write it as \\x00 in a word\n"
                            "stdin:4: getDevices was to fail, but it was carried out\n");
    EXPECT_EQ(phone(folder, "--script -", "! getDevices\nhol\nquit\nhol\n").status, 1);
    EXPECT_EQ(phone(folder, "").status, 0);
}

TEST(PhoneProgram, ScriptsRunScriptsButNotThemselvesForEver)
{
    const Folder folder;
    const std::string inner = folder.write("inner", "say inner\n! sim show x\nhold 99\n");
    const std::string outer = folder.write("outer", "run " + inner + "\nsay not reached\n");
    Ended ended = phone(folder, "--script " + outer);
    EXPECT_EQ(ended.status, 1);
    EXPECT_EQ(ended.errors, "inner:3: holdCall returned sfiFailure\n");
    EXPECT_EQ(ended.out.find("not reached"), std::string::npos);
    const std::string self = folder.write("self", "run " + folder.file("self") + "\n");
    ended = phone(folder, "--script " + self);
    EXPECT_EQ(ended.status, 2);
    EXPECT_NE(ended.errors.find("does one run itself?"), std::string::npos);
}

TEST(PhoneProgram, InterruptedItEndsWith130)
{
    const Folder folder;
    const std::string script = folder.write("script", "say begun\nwait 1min\nsay not reached\n");
    const std::string out = folder.file("out");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
    {
        if (std::freopen(out.c_str(), "w", stdout) == nullptr)
            _exit(1);
        execl(PHONE_PROGRAM, PHONE_PROGRAM, "--real-time", "--script", script.c_str(), nullptr);
        _exit(1);
    }
    // It has begun to wait once it has said so.
    for (int i = 0; i < 2000 && folder.read("out").empty(); ++i)
        usleep(5000);
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    EXPECT_EQ(folder.read("out"), "begun\n");
}

TEST(PhoneProgram, SaysWhenAServiceHangsOrDies)
{
    const Folder folder;
    ServiceProcess service;
    const std::string options = "--timeout 200ms --socket " + service.socket();
    const std::string line = "getMicrophoneMute\n";
    EXPECT_EQ(phone(folder, options, line).status, 0);
    Ended ended = phone(folder, options, "sim silence GetMicrophoneMute\n" + line + line);
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(ended.errors, "stdin:2: GetMicrophoneMute has no answer: the service at " +
                                service.socket() + " did not answer within 200 ms\n");
    EXPECT_NE(phone(folder, options, "subscribe\nhold 99\n").out.find("\n  service: HoldCall: "),
              std::string::npos)
        << "why it failed is told over a socket too";
    // A running expectation ends with the service, whatever its time.
    ended =
        phone(folder, options,
              "subscribe\nexpect CallHeldEvent within 24h\nexpect no CallHeldEvent within 24h\n",
              [&] { service.kill(); });
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(ended.errors,
              "stdin:2: expected CallHeldEvent, but nothing comes any more\n  the service at " +
                  service.socket() +
                  " is gone; \"reconnect\" connects anew\n"
                  "stdin:3: expected no CallHeldEvent, but nothing comes any more\n"
                  "  the service at " +
                  service.socket() + " is gone; \"reconnect\" connects anew\n");
    ended = phone(folder, options, line);
    EXPECT_EQ(ended.status, 3);
    EXPECT_EQ(ended.errors.rfind("communications-phone: no service at " + service.socket(), 0), 0U)
        << ended.errors;
}

TEST(PhoneProgram, ATraceThatCannotBeWrittenEndsWithAWholeLine)
{
    const Folder folder;
    const std::string trace = folder.file("trace");
    const std::string script =
        folder.write("script", "say before\nsubscribe\nactivate\nsay after\n");
    // A file may have 512 bytes, and who writes more is told so.
    const std::string command = "trap '' XFSZ; ulimit -f 1; " + std::string(PHONE_PROGRAM) +
                                " --script " + script + " --trace " + trace + " 2>&1 | cat >" +
                                folder.file("out");
    ASSERT_NE(std::system(("bash -c \"" + command + "; exit \\${PIPESTATUS[0]}\"").c_str()), -1);
    const std::string out = folder.read("out");
    const std::size_t told = out.find("the trace ends here: " + trace + " cannot be written: ");
    EXPECT_NE(told, std::string::npos) << out;
    EXPECT_LT(out.find("before"), told);
    EXPECT_GT(out.find("after"), told) << "it has to be told when it happens";
    std::istringstream in(folder.read("trace"));
    const Trace read = readTrace(in, "trace");
    EXPECT_EQ(read.complaint, "");
    EXPECT_EQ(folder.read("trace").back(), '\n');
    EXPECT_FALSE(read.records.empty());
}

TEST(PhoneProgram, WatchesATraceAsItGrows)
{
    const Folder folder;
    const std::string trace = folder.file("trace");
    const auto event = [](const std::string& call)
    {
        return R"({"time":1,"kind":"event","text":"<Method>CallHeldEvent</Method><CallID>)" + call +
               R"(</CallID>"})";
    };
    const auto comes = [&](const std::string& text)
    {
        for (int i = 0; i < 4000; ++i, usleep(5000))
            if (folder.read("out").find(text) != std::string::npos)
                return true;
        ADD_FAILURE() << "no " << text << " in\n" << folder.read("out");
        return false;
    };
    const auto append = [&](const std::string& text)
    { std::ofstream(trace, std::ios::app) << text << std::flush; };
    append(event("1") + "\n" + event("9").substr(0, 40));
    const std::string out = folder.file("out");
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0)
    {
        if (std::freopen(out.c_str(), "w", stdout) == nullptr)
            _exit(1);
        execl(PHONE_PROGRAM, PHONE_PROGRAM, "--ladder-from", trace.c_str(), "--watch", nullptr);
        _exit(1);
    }
    EXPECT_TRUE(comes("CallID=1-"));
    append(event("9").substr(40) + "\n");
    EXPECT_TRUE(comes("CallID=9-")) << "half a line was there before";
    append(R"({"time":1,"kind":"request","number":1,"sending":"request","text":"unanswered"})"
           "\n");
    EXPECT_TRUE(comes("--unanswered--"));
    // A new file in the place of the old one.
    std::rename(trace.c_str(), folder.file("trace.old").c_str());
    append(event("3") + "\n");
    EXPECT_TRUE(comes("CallID=3-"));
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(PhoneProgram, BeginsAnApplication)
{
    // That it builds and passes is tested where it is installed.
    const Folder folder;
    const std::string path = folder.file("Busy-Lamp_2");
    const Ended ended = phone(folder, "--new-application " + path + "/");
    EXPECT_EQ(ended.status, 0);
    EXPECT_NE(ended.out.find("  ctest --test-dir " + path), std::string::npos) << ended.out;
    EXPECT_NE(folder.read("Busy-Lamp_2/CMakeLists.txt").find("\nproject(Busy-Lamp_2 LANGUAGES"),
              std::string::npos);
    for (const char* file :
         {"CMakeLists.txt", "Application.h", "Application.cpp", "main.cpp", "Application_test.cpp"})
    {
        const std::string text = folder.read(std::string("Busy-Lamp_2/") + file);
        EXPECT_FALSE(text.empty()) << file;
        EXPECT_EQ(text.find("new-application"), std::string::npos) << file;
    }
    const struct
    {
        std::string folder;
        std::string error;
    } rows[] = {
        {path, path + " is there already"},
        {folder.file("."), folder.file(".") + " is there already"},
        {"''",
         "an application cannot be called \"\": letters, digits, - and _, the first one a letter"},
        {folder.file("x") + " --echo", "--new-application goes with no other option"},
        {folder.file("8"),
         "an application cannot be called 8: letters, digits, - and _, the first one a letter"},
        {folder.file("in") + "/x", "cannot make " + folder.file("in") + "/x: Not a directory"},
    };
    for (const auto& row : rows)
    {
        const Ended refused = phone(folder, "--new-application " + row.folder);
        EXPECT_EQ(refused.status, 2);
        EXPECT_EQ(refused.errors, "communications-phone: " + row.error + "\n");
    }

    // No file may have more than 512 bytes.
    const std::string half = folder.file("half");
    (void)std::system(("trap '' XFSZ; ulimit -f 1; " PHONE_PROGRAM " --new-application " + half +
                       " 2>" + folder.file("err"))
                          .c_str());
    EXPECT_EQ(folder.read("err").rfind(": File too large\n"), folder.read("err").size() - 17);
    EXPECT_FALSE(std::filesystem::exists(half)) << "half of it is left";
}

TEST(PhoneProgram, AMarkBeforeTheFirstLineOfAScriptIsNoWord)
{
    const Folder folder;
    const Ended ended =
        phone(folder, "--script " + folder.write("s", "\xef\xbb\xbfsay one\nsay two\n"));
    EXPECT_EQ(ended.errors, "");
    EXPECT_EQ(ended.out, "one\ntwo\n");
    EXPECT_EQ(phone(folder, "", "\xef\xbb\xbfsay one\n").out, "one\n");
}

TEST(PhoneProgram, TheTourCanBeTaken)
{
    const Folder folder;
    const Ended ended = phone(folder, "--script " + tour);
    EXPECT_EQ(ended.status, 0) << ended.errors;
    EXPECT_EQ(ended.errors, "");
    for (const char* part : {"> answer\nanswerCall line=1001 callId=1: sfiSuccess\n",
                             "  -> <Method>Subscribe</Method>\n  <- sfiSuccess\n",
                             "* b2buaCSTAResponse lineURI=1001 success=true", "Go on by hand"})
        EXPECT_NE(ended.out.find(part), std::string::npos) << part;
}

TEST(PhoneProgram, ALiveCallFlowIsThatOfItsTrace)
{
    const Folder folder;
    const std::string trace = folder.file("trace");
    const Ended live = phone(folder, "--mermaid --script " + tour + " --trace " + trace);
    const Ended later = phone(folder, "--mermaid --ladder-from " + trace);
    ASSERT_EQ(live.status, 0);
    ASSERT_EQ(later.status, 0);
    std::string withoutComments;
    std::istringstream lines(live.out);
    for (std::string line; std::getline(lines, line);)
        if (line.find("%%") == std::string::npos)
            withoutComments += line + "\n";
    EXPECT_EQ(withoutComments, later.out);
    const Ended drawn = phone(folder, "--ladder-from " + trace);
    EXPECT_NE(drawn.out.find("service             2001\n"), std::string::npos) << drawn.out;
    EXPECT_NE(drawn.out.find("service             CSTA\n"), std::string::npos) << drawn.out;
    EXPECT_NE(drawn.out.find("|--HoldCall CallID=1 HoldCallReason=hold Manual=true------>|--hold"),
              std::string::npos);
    const Ended narrow = phone(folder, "--width 60 --ladder-from " + trace);
    const Ended picked = phone(folder, "--ladder-from " + trace +
                                           " --line 1001 --method HoldCall --method CallHeldEvent");
    EXPECT_EQ(picked.out,
              "application                                             service             2001\n"
              "|                                                          |                   |\n"
              "|--HoldCall CallID=1 HoldCallReason=hold Manual=true------>|--hold------------>|\n"
              "|<--CallHeldEvent CallID=1---------------------------------|                   |\n"
              "|<..sfiSuccess.............................................|                   |\n"
              "|--HoldCall CallID=99 HoldCallReason=hold Manual=true----->|                   |\n"
              "|<..sfiFailure.............................................|                   |\n");
    EXPECT_EQ(phone(folder, "--ladder-from " + trace + " --method HoldCal").errors,
              "communications-phone: --method: no message is called HoldCal, did you mean "
              "HoldCall?\n");
    EXPECT_NE(narrow.out.find("|--HoldCall CallID=1 HoldCallReason=hold M..->|--hold----->|\n"),
              std::string::npos)
        << narrow.out;
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

TEST(PhoneProgram, EverythingIsCoveredInProcess)
{
    const Folder folder;
    const Ended ended =
        phone(folder, "--script " + everything + " --trace " + folder.file("trace"));
    ASSERT_EQ(ended.status, 0) << ended.errors;
    std::ifstream trace(folder.file("trace"));
    std::ostringstream script;
    script << std::ifstream(everything).rdbuf();
    expectEverythingIn(readTrace(trace, "trace").records, script.str());
}

TEST(PhoneProgram, EverythingIsCoveredOverASocket)
{
    const Folder folder;
    ServiceProcess service;
    const Ended ended = phone(folder, "--socket " + service.socket() + " --script " + everything +
                                          " --trace " + folder.file("trace"));
    ASSERT_EQ(ended.status, 0) << ended.errors;
    std::ifstream trace(folder.file("trace"));
    std::ostringstream script;
    script << std::ifstream(everything).rdbuf();
    expectEverythingIn(readTrace(trace, "trace").records, script.str());
}

}  // namespace

}  // namespace kit::phone

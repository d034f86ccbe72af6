#ifndef TESTS_KIT_TRANSCRIPT_H
#define TESTS_KIT_TRANSCRIPT_H

#include <cstdlib>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>

namespace kit::test
{

/// Carries a line out; returns all that comes of it.
using Typing = std::function<std::string(const std::string&)>;

/// What comes of a line, as a transcript has it: with a backslash in front of what would be read as
/// something else.
inline std::string asWritten(const std::string& output)
{
    std::istringstream lines(output);
    std::string text;
    for (std::string line; std::getline(lines, line);)
    {
        const bool taken = line.empty() || line[0] == '#' || line[0] == '\\' ||
                           line.rfind("> ", 0) == 0 || line.rfind("== ", 0) == 0;
        text += (taken ? "\\" : "") + line + "\n";
    }
    return text;
}

/// Types the lines of a transcript once more. "== NAME" begins a part of it, for which begin() is
/// called; behind "> " stands what is typed, and below it all that has to come of it. With
/// TRANSCRIPTS_REWRITE in the environment the transcript is written anew, for a look at the difference.
inline void replay(const std::string& name, const std::function<Typing(const std::string&)>& begin)
{
    const std::string path = std::string(TRANSCRIPTS) + "/" + name;
    std::ifstream file(path);
    std::string part;
    std::string wanted;
    std::string came;
    std::string anew;
    const auto compare = [&] { EXPECT_EQ(came, wanted) << name << ": " << part; };
    Typing type;
    for (std::string line; std::getline(file, line);)
    {
        if (line.rfind("== ", 0) == 0)
        {
            compare();
            wanted.clear();
            came.clear();
            part = line.substr(3);
            type = begin(part);
        }
        else if (!line.empty() && line[0] != '#')
        {
            wanted += line + "\n";
            if (line.rfind("> ", 0) != 0)
                continue;
            const std::string output = line + "\n" + asWritten(type(line.substr(2)));
            came += output;
            anew += output;
            continue;
        }
        anew += line + "\n";
    }
    compare();
    EXPECT_NE(part, "") << "there is no transcript " << name;
    if (std::getenv("TRANSCRIPTS_REWRITE") != nullptr)
        std::ofstream(path) << anew;
}

}  // namespace kit::test

#endif

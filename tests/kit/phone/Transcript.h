#ifndef TESTS_KIT_PHONE_TRANSCRIPT_H
#define TESTS_KIT_PHONE_TRANSCRIPT_H

#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace kit::test
{

/// Carries a line out; returns all that comes of it.
using Typing = std::function<std::string(const std::string&)>;

/// Types the lines of a transcript once more. "== NAME" begins a part of it, for which begin() is
/// called; behind "> " stands what is typed, and below it all that has to come of it.
inline void replay(const std::string& name, const std::function<Typing(const std::string&)>& begin)
{
    std::ifstream file(std::string(PHONE_TRANSCRIPTS) + "/" + name);
    std::string part;
    std::string wanted;
    std::string came;
    const auto compare = [&] { EXPECT_EQ(came, wanted) << name << ": " << part; };
    Typing type;
    for (std::string line; std::getline(file, line);)
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
            if (line.rfind("> ", 0) == 0)
                came += line + "\n" + type(line.substr(2));
        }
    compare();
    EXPECT_NE(part, "") << "there is no transcript " << name;
}

}  // namespace kit::test

#endif

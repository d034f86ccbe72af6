#include "kit/phone/NewApplication.h"

#include "kit/language/Wording.h"
#include "kit/language/Words.h"
#include "kit/phone/Installed.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace kit::phone
{

namespace
{

namespace fs = std::filesystem;

const char* const nameInTemplate = "new-application";

/// Of a folder, a project and a program.
bool isName(const std::string& name)
{
    static const char* const letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    return !name.empty() && std::string(letters).find(name[0]) != std::string::npos &&
           name.find_first_not_of(std::string(letters) + "0123456789-_") == std::string::npos;
}

void copy(const fs::path& from, const fs::path& to, const std::string& name)
{
    std::ifstream in(from, std::ios::binary);
    std::ostringstream whole;
    whole << in.rdbuf();
    std::string text = whole.str();
    const std::string before = nameInTemplate;
    for (std::size_t at = text.find(before); at != std::string::npos;
         at = text.find(before, at + name.size()))
        text.replace(at, before.size(), name);
    std::ofstream out(to, std::ios::binary);
    out << text;
    if (!in || !out.flush())
        throw Mistake("cannot write " + shown(to.string(), 200) + ": " + std::strerror(errno));
}

}  // namespace

std::string makeApplication(const std::string& folder)
{
    std::error_code error;
    const fs::path to = fs::absolute(folder, error).lexically_normal();
    const std::string name = (to.has_filename() ? to : to.parent_path()).filename().string();
    if (!isName(name))
        throw Mistake("an application cannot be called " + shown(name, 60) +
                      ": letters, digits, - and _, the first one a letter");
    const fs::path from = installed(nameInTemplate);
    if (from.empty())
        throw Mistake("there is nothing to begin an application with: the folder " +
                      std::string(nameInTemplate) + " is not installed with this program");
    if (fs::exists(to, error) && !fs::is_empty(to, error))
        throw Mistake(shown(folder, 200) + " is there already");
    const bool isNew = fs::create_directories(to, error);
    if (error)
        throw Mistake("cannot make " + shown(folder, 200) + ": " + error.message());
    std::vector<std::string> files;
    try
    {
        for (const fs::directory_entry& entry : fs::directory_iterator(from))
        {
            files.push_back(entry.path().filename().string());
            copy(entry.path(), to / files.back(), name);
        }
    }
    catch (const std::exception&)
    {
        // Whole or not at all.
        for (const std::string& file : files)
            fs::remove(to / file, error);
        if (isNew)
            fs::remove(to, error);
        throw;
    }
    std::sort(files.begin(), files.end());
    const fs::path prefix = (from / "../../..").lexically_normal().parent_path();
    // In the build tree there is nothing that CMake could find.
    const bool found =
        prefix == "/usr" || prefix == "/usr/local" || !fs::exists(prefix / "include");
    const std::string path = quote(folder);
    return path + ": " + listed(files, "and") + "\nBuild it, test it, and go on from there:\n" +
           "  cmake -S " + path + " -B " + path + "/build" +
           (found ? "" : " -DCMAKE_PREFIX_PATH=" + quote(prefix.string())) + "\n  cmake --build " +
           path + "/build\n  ctest --test-dir " + path + "/build";
}

}  // namespace kit::phone

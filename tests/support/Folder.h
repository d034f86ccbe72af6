#ifndef COMMUNICATIONS_SERVICE_TESTS_SUPPORT_FOLDER_H
#define COMMUNICATIONS_SERVICE_TESTS_SUPPORT_FOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

/// A folder for one test, which goes with it.
class Folder
{
public:
    Folder()
    {
        char name[] = "/tmp/test-XXXXXX";
        path_ = mkdtemp(name);
    }
    ~Folder() { std::filesystem::remove_all(path_); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

inline std::string contentsOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A file with this text, in a folder of its own.
struct TextFile
{
    explicit TextFile(const std::string& text = "")
    {
        std::ofstream(path, std::ios::binary) << text;
    }

    const Folder folder;
    const std::string path = folder / "file";
};

/// The lines of a file; a last one without its end counts too.
inline std::vector<std::string> linesOf(const std::string& path)
{
    std::ifstream file(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
        lines.push_back(line);
    return lines;
}

#endif

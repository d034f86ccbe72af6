#include "recorder/Settings.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace recorder
{

namespace
{

constexpr std::uint64_t smallest = 16U << 10;
constexpr std::uint64_t largest = 1ULL << 40;
constexpr const char* fileBeside = "recording.conf";

[[noreturn]] void refuse(const std::string& what)
{
    throw std::invalid_argument(what);
}

std::uint64_t sizeFrom(const std::string& value)
{
    std::size_t at = 0;
    std::uint64_t size = 0;
    for (; at < value.size() && value[at] >= '0' && value[at] <= '9' && size <= largest; ++at)
        size = 10 * size + static_cast<std::uint64_t>(value[at] - '0');
    const std::string unit = value.substr(at);
    const int shift = unit.empty()  ? 0
                      : unit == "K" ? 10
                      : unit == "M" ? 20
                      : unit == "G" ? 30
                                    : -1;
    if (at == 0 || shift < 0)
        refuse("size=" + value + " is no size; it takes a number, and K, M or G behind it");
    if (size > (largest >> shift) || (size << shift) < smallest)
        refuse("size=" + value + " is out of bounds; it goes from 16K to 1024G");
    return size << shift;
}

bool flagFrom(const std::string& name, const std::string& value)
{
    if (value != "on" && value != "off")
        refuse(name + "=" + value + " is neither on nor off");
    return value == "on";
}

void set(Settings& settings, const std::string& name, const std::string& value)
{
    if (name == "file")
    {
        if (value.empty() || value[0] != '/')
            refuse("file=" + value + " is no whole path; it begins with /");
        settings.file = value;
    }
    else if (name == "size")
        settings.size = sizeFrom(value);
    else if (name == "mask")
        settings.mask = flagFrom(name, value);
    else
        refuse("\"" + name + "\" is no setting; they are file, size and mask");
}

/// The whole of a small file; "" when it is not there.
std::string readFile(const char* path)
{
    const int file = ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0 && errno == ENOENT)
        return std::string();
    if (file < 0)
        refuse(std::string(path) + " cannot be read: " + std::strerror(errno));
    char text[4096];
    const ssize_t length = ::read(file, text, sizeof text);
    const int reason = errno;
    ::close(file);
    if (length < 0)
        refuse(std::string(path) + " cannot be read: " + std::strerror(reason));
    if (length == sizeof text)
        refuse(std::string(path) + " is too long for settings");
    return std::string(text, static_cast<std::size_t>(length));
}

}  // namespace

Settings parseSettings(const std::string& text)
{
    Settings settings;
    bool given = false;
    std::size_t at = 0;
    const auto isBlank = [&] { return std::isspace(static_cast<unsigned char>(text[at])) != 0; };
    while (at < text.size())
    {
        if (isBlank())
            ++at;
        else if (text[at] == '#')
            at = std::min(text.find('\n', at), text.size());
        else
        {
            std::string word;
            std::size_t equals = std::string::npos;
            bool quoted = false;
            for (; at < text.size() && (quoted || !isBlank()); ++at)
                if (text[at] == '"')
                    quoted = !quoted;
                else
                {
                    if (text[at] == '=' && equals == std::string::npos)
                        equals = word.size();
                    word += text[at];
                }
            if (quoted)
                refuse("a quotation mark is not closed");
            if (equals == std::string::npos)
                refuse("\"" + word + "\" is no setting; they look like file=/var/tmp/phone.jsonl");
            set(settings, word.substr(0, equals), word.substr(equals + 1));
            given = true;
        }
    }
    if (settings.file.empty() && given)
        refuse("there is no file=");
    return settings;
}

Settings settingsOfProcess()
{
    if (const char* const variable = std::getenv("COMMUNICATIONS_SERVICE_RECORDING"))
        return parseSettings(variable);
    Dl_info self;
    if (dladdr(reinterpret_cast<void*>(&parseSettings), &self) == 0 || self.dli_fname == nullptr)
        return Settings();
    const char* const slash = std::strrchr(self.dli_fname, '/');
    const std::size_t length =
        slash != nullptr ? static_cast<std::size_t>(slash - self.dli_fname) + 1 : 0;
    char path[4096];
    if (length + std::strlen(fileBeside) >= sizeof path)
        return Settings();
    std::memcpy(path, self.dli_fname, length);
    std::strcpy(path + length, fileBeside);
    return parseSettings(readFile(path));
}

}  // namespace recorder

#ifndef RECORDER_SETTINGS_H
#define RECORDER_SETTINGS_H

#include <cstdint>
#include <string>

namespace recorder
{

/// What the environment variable COMMUNICATIONS_SERVICE_RECORDING says, or else the file
/// recording.conf beside the plug-in: words like file=/var/tmp/phone.jsonl, size=4M, mask=on, with
/// quotes around values that have blanks in them, and remarks from a "#" to the end of the line.
struct Settings
{
    std::string file;               ///< "" records nothing
    std::uint64_t size = 8U << 20;  ///< of all files of a process together, in bytes
    bool mask = false;
};

/// Throws std::invalid_argument, whose text is for people, when it makes no sense.
Settings parseSettings(const std::string& text);

/// The settings of this process. Without variable and file: nothing is allocated, nothing recorded.
Settings settingsOfProcess();

}  // namespace recorder

#endif

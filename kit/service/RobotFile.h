#ifndef KIT_SERVICE_ROBOT_FILE_H
#define KIT_SERVICE_ROBOT_FILE_H

#include "kit/service/Robots.h"

#include <string>
#include <vector>

namespace kit::service
{

/// The robots of a text file, one a line: a number, a name in quotes, and what they do, each time
/// counted from what stands before it.
///
///     robot 2042 "Zoe" answers 1s, holds 2s  # comment
///
/// Nobody may have a number of `lines`. Raises Mistake for the first line that is wrong, with file,
/// line and column in its text, and for a file that cannot be read.
std::vector<Robot> readRobots(const std::string& path, const std::vector<std::string>& lines);

}  // namespace kit::service

#endif

#ifndef KIT_SERVICE_VIEWS_H
#define KIT_SERVICE_VIEWS_H

#include "kit/service/World.h"

#include <string>
#include <vector>

namespace kit::service
{

/// One thing that "show" can show.
struct View
{
    const char* name;
    const char* empty;  ///< said when there is nothing to show
    std::vector<std::string> (*lines)(World& world);
};

const std::vector<View>& views();

}  // namespace kit::service

#endif

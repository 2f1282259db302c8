/// Each difference gets the name of its cause.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/check/Causes.h"
#include "tools/check/Compare.h"

namespace check {

struct Finding {
    const Cause* cause = nullptr;  ///< null: no rule explains it
    Difference difference;
};

/// What the rules look at.
struct Scene {
    const meant::File& meant;
    const Shown& shown;
    std::string_view bytes;  ///< of the file
};

/// A finding for each difference, and one for each cause that is the whole file's.
std::vector<Finding> explain(const Scene& scene, const Comparison& comparison);

}  // namespace check

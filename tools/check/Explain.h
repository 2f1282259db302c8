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
    Difference difference;         ///< `Verdict::Right`, and no entry: it is the whole file's
};

/// What the library takes text without a mark for.
enum class TakenFor { Unknown, Native, Utf8, Gbk, Big5 };

struct Facts;

/// What the rules look at.
struct Scene {
    const meant::File& meant;
    const Shown& shown;
    std::string_view bytes;  ///< of the file
    TakenFor takenFor = TakenFor::Unknown;
    bool isTvBig5 = false;                        ///< its subtitle language is set to that
    meant::Format takenAs = meant::Format::None;  ///< by the library; none where that is not known
    const Facts* facts = nullptr;                 ///< set by `explain`
};

/// A finding for each difference, and before them one for each cause that is the whole file's.
std::vector<Finding> explain(const Scene& scene, const Comparison& comparison);

}  // namespace check

#include "tools/check/Causes.h"

#include <algorithm>

namespace check {

const std::vector<Cause>& causes() {
    static const std::vector<Cause> kCauses = {
#define VX_CAUSE(name, cost, sentence, mend) {name, Cost::cost, sentence, mend},
#include "tools/check/Causes.def"
#undef VX_CAUSE
    };
    return kCauses;
}

const Cause* findCause(std::string_view name) {
    const auto row =
        std::find_if(causes().begin(), causes().end(), [&](const Cause& cause) { return name == cause.name; });
    return row == causes().end() ? nullptr : &*row;
}

const char* wordFor(Cost cost) {
    static constexpr const char* kWords[] = {"entries", "times", "text", "hidden", "letters", "looks"};
    return kWords[static_cast<size_t>(cost)];
}

bool isLoss(Cost cost) { return cost != Cost::Letters && cost != Cost::Looks; }

}  // namespace check

/// What has to be said of a file, gathered while it is written.
#pragma once

#include <string_view>
#include <vector>

#include "tools/fix/Fix.h"

namespace fix {

class Remarks {
public:
    using Kind = Remark::Kind;

    /// Counts one more. Sentences are told apart, not causes.
    void add(Kind kind, const char* cause, const char* sentence, const meant::Place& place) {
        for (Remark& row : mRows) {
            if (std::string_view(row.sentence) != sentence) continue;
            ++row.count;
            if (place.offset < row.first.offset) row.first = place;
            return;
        }
        mRows.push_back({kind, cause, sentence, 1, place});
    }

    std::vector<Remark> take() { return std::move(mRows); }

private:
    std::vector<Remark> mRows;
};

}  // namespace fix

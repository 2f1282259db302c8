/// Files that are mended in memory, and how the tests write what came out.
#pragma once

#include <string>

#include "tools/fix/Fix.h"

namespace fix {

inline Result fixed(const std::string& ending, const std::string& bytes, const Options& options = {}) {
    meant::Options read;
    read.ending = ending;
    const meant::Source source(bytes, read, {});
    return fix(meant::read(bytes, read, {}), source, options);
}

/// `1000-2000 Hello/World`, "; " between the pieces.
inline std::string listed(const std::vector<Piece>& pieces) {
    std::string list;
    for (const Piece& piece : pieces) {
        std::string text = piece.text;
        for (char& c : text)
            if (c == '\n') c = '/';
        list += (list.empty() ? "" : "; ") + std::to_string(piece.start) + "-" + std::to_string(piece.end) + " " + text;
    }
    return list;
}

/// "[cause] 2 " for each remark, "! " in front of those that are not mended; a dash stands for no cause.
inline std::string listed(const std::vector<Remark>& remarks) {
    std::string list;
    for (const Remark& row : remarks)
        list += std::string(list.empty() ? "" : ", ") + (row.kind == Remark::Kind::NotMended ? "! " : "") +
                (*row.cause == 0 ? "-" : row.cause) + " " + std::to_string(row.count);
    return list;
}

}  // namespace fix

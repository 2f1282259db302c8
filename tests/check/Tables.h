/// A file, the table that a player gets of it, and what is found.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tools/check/Explain.h"

namespace check {

using Table = std::vector<ShownEntry>;

/// What is shown of a table: of the entries that have begun, the one that began last, as long as it lasts.
inline Shown shownOf(const Table& table) {
    Shown shown;
    shown.isAccepted = true;
    shown.entries = table;
    shown.at = [table](Ms time) -> std::optional<size_t> {
        std::optional<size_t> last;
        for (size_t i = 0; i < table.size() && table[i].start <= time; ++i) last = i;
        const bool isOver = last && table[*last].end && time >= *table[*last].end;
        return isOver ? std::nullopt : last;
    };
    return shown;
}

/// The causes that are found, with their numbers: "srt-no-hours 2"; "?" for what no rule explains.
inline std::string foundIn(const char* ending, const std::string& bytes, const Shown& shown) {
    meant::Options options;
    options.ending = ending;
    const meant::File meant = meant::read(bytes, options, {});
    const Comparison comparison = compare(meant, shown);
    std::map<std::string, size_t> counts;
    for (const Finding& finding : explain({meant, shown, bytes}, comparison))
        ++counts[finding.cause != nullptr ? finding.cause->name : "?"];
    std::string list;
    for (const auto& [name, count] : counts) list += (list.empty() ? "" : ", ") + name + " " + std::to_string(count);
    return list;
}

}  // namespace check

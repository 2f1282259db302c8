/// What the library logs: the first lines, and how many more there were.
#pragma once

#include <string>
#include <vector>

#include "Arrays.h"

namespace page {

class LogLines {
public:
    void add(std::string line) { mLines.push_back(std::move(line)); }
    void addUnread(size_t number) { mUnread += number; }
    size_t room() const { return kMost - mLines.size(); }

    Json json() const { return {{"lines", mLines}, {"more", mUnread}}; }

private:
    static constexpr size_t kMost = 1000;

    std::vector<std::string> mLines;
    size_t mUnread = 0;
};

/// For as long as it lives, what is logged goes to `lines`; one lives at a time. Messages that they have no room for
/// are only counted: some formats log one for each entry.
class LogTaker {
public:
    explicit LogTaker(LogLines& lines);
    ~LogTaker();
    LogTaker(const LogTaker&) = delete;
    LogTaker& operator=(const LogTaker&) = delete;
};

}  // namespace page

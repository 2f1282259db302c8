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
    bool isFull() const { return mLines.size() >= kMost; }

    Json json() const { return {{"lines", mLines}, {"more", mUnread}}; }

private:
    static constexpr size_t kMost = 1000;

    std::vector<std::string> mLines;
    size_t mUnread = 0;
};

/// For as long as it lives, what is logged goes to `lines`; one lives at a time. When they are full, messages are
/// counted and not put together any more: some formats log one for each entry.
class LogTaker {
public:
    explicit LogTaker(LogLines& lines);
    ~LogTaker();
    LogTaker(const LogTaker&) = delete;
    LogTaker& operator=(const LogTaker&) = delete;

private:
    LogLines& mLines;
    unsigned long long mPassedOver;
};

}  // namespace page

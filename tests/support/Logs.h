/// What tests expect in the log: lines of one tag, and lines whose addresses and descriptors are levelled.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Interpose.h"

namespace test {

using namespace std::literals;
using Lines = std::vector<LogLine>;
using Messages = std::vector<std::string>;

inline Messages operator+(Messages first, const Messages& more) {
    first.insert(first.end(), more.begin(), more.end());
    return first;
}

/// Debug lines under `tag`.
inline Lines linesFrom(const char* tag, const Messages& texts) {
    Lines lines;
    for (const std::string& text : texts) lines.push_back({3, tag, text});
    return lines;
}

/// The messages under `tag`, all of which must have debug priority.
inline Messages messages(const LogCapture& log, std::string_view tag) {
    Messages texts;
    for (const LogLine& line : log.lines()) {
        if (line.tag != tag) continue;
        EXPECT_EQ(3, line.priority) << line.text;
        texts.push_back(line.text);
    }
    return texts;
}

/// The text with each number behind `word` replaced by `by`.
inline std::string levelled(std::string text, std::string_view word, std::string_view digits, char by) {
    for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at)) {
        at += word.size();
        const size_t end = text.find_first_not_of(digits, at);
        text.replace(at, (end == std::string::npos ? text.size() : end) - at, 1, by);
    }
    return text;
}

/// Log lines with the raw buffer's address as '*' and a descriptor as '#'.
inline Lines levelled(Lines lines) {
    for (LogLine& line : lines) {
        line.text = levelled(line.text, "rawbuf: ", "0123456789abcdef", '*');
        line.text = levelled(line.text, "Open fd =", "0123456789", '#');
    }
    return lines;
}

inline LogLine opening(const std::string& path) { return {3, "SubtitleFileProcess", "Open filename = " + path + "\n"}; }
inline LogLine opening(const TempFile& file) { return opening(std::string(file.path())); }
inline LogLine openingDescriptor() { return {3, "SubtitleFileProcess", "Open fd =#\n"}; }
inline LogLine openingFails() { return {3, "SubtitleFileProcess", "fopen fialded fun=Open line=110\n"}; }

/// What frames a listing of all entries.
constexpr char kRule[] = "\n\n*************************************\n\n";

}  // namespace test

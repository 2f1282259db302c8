/// How the tests write what a file was meant to show: strings that read like subtitles.
///
///     1000-2000 Hello/World   an entry, its text's lines
///     1000-2000n Hello        it ends because the next one begins
///     1000- Hello             nothing says when it ends
///     #1000-2000 Hello        a comment; ~1000-2000 a drawing; empty entries are left out
///     1000-2000 [FR] Salut    SAMI, in a file of several classes
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tools/meant/Meant.h"

namespace meant {

inline std::string listed(const Entry& entry, bool withLanguage = false) {
    std::string text = entry.text;
    for (char& c : text)
        if (c == '\n') c = '/';
    const std::string end = entry.endFrom == End::Open ? "" : std::to_string(entry.end);
    return std::to_string(entry.start) + "-" + end + (entry.endFrom == End::Next ? "n" : "") +
           (withLanguage ? " [" + entry.language + "]" : "") + (text.empty() ? "" : " " + text);
}

/// All of a file's entries, "; " between them.
inline std::string listed(const File& file) {
    std::string list;
    const auto append = [&list](const std::string& entry) { list += (list.empty() ? "" : "; ") + entry; };
    for (const Entry& entry : file.entries) append(listed(entry, file.languages.size() > 1));
    for (const Entry& entry : file.unseen)
        if (entry.unseen != Unseen::Empty) append((entry.unseen == Unseen::Comment ? "#" : "~") + listed(entry));
    return list;
}

inline File readAs(const char* ending, std::string_view bytes, uint32_t rateThousandths = 0) {
    Options options;
    options.ending = ending;
    options.rateThousandths = rateThousandths;
    return read(bytes, options, {});
}

/// A file, and what it was meant to show.
struct Row {
    const char* name;
    std::string file;
    std::string expected;
};

/// The same with every kind of line end, and behind a mark. The rows have LF.
inline void expectReadings(const char* ending, Format format, const std::vector<Row>& rows) {
    const auto withEnds = [](const std::string& text, const char* lineEnd) {
        std::string changed;
        for (const char c : text) changed += c == '\n' ? lineEnd : std::string(1, c);
        return changed;
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const File file = readAs(ending, row.file);
        EXPECT_EQ(row.expected, listed(file));
        EXPECT_EQ(format, file.format);
        EXPECT_FALSE(file.endingMisleads);
        for (const char* lineEnd : {"\r\n", "\r", "\r\r\n"})
            EXPECT_EQ(row.expected, listed(readAs(ending, withEnds(row.file, lineEnd))))
                << testing::PrintToString(lineEnd);
        EXPECT_EQ(row.expected, listed(readAs(ending, "\xEF\xBB\xBF" + row.file))) << "behind a mark";
    }
}

}  // namespace meant

// Copies of small files in every format, as the library shows them.
#include <gtest/gtest.h>

#include "tests/fix/Fixing.h"
#include "tests/fix/OpenedCopy.h"
#include "tools/check/Causes.h"

namespace fix {
namespace {

/// Entries with what the library does not like: several lines, brackets, times in the text, letters of all kinds, a
/// line that is empty, numbers in front.
const std::string kTexts[] = {
    "Hello, World!",
    "two\nlines",
    "a <word> and {braces} and <i",
    "first\n20h30, 21h00.\n12:30, 13:30",
    "na\xC3\xAFve caf\xC3\xA9 \xE2\x99\xAA \xE4\xB8\xAD\xE6\x96\x87 \xF0\x9F\x98\x80",
    "above\n\nbelow",
    "5 apples",
    "{",
    "12",
    "00:00:01,000 --> 00:00:02,000",
};

meant::File fileOf(meant::Format format) {
    meant::File file;
    file.format = format;
    file.rate = {25000, meant::RateFrom::File};
    Ms start = 1000;
    for (const std::string& text : kTexts) {
        meant::Entry entry;
        entry.start = start;
        entry.end = start + 2000;
        entry.endFrom = meant::End::Given;
        entry.text = text;
        file.entries.push_back(entry);
        start += 3000;
    }
    return file;
}

TEST(FixShown, EveryTextAsSubRip) {
    for (const Letters letters : {Letters::Utf8, Letters::Utf16}) {
        Options options;
        options.letters = letters;
        Folder folder;
        const Result result = fix(fileOf(meant::Format::SubRip), meant::Source("", {}, {}), options);
        const Seen shown = seen(folder, result);
        EXPECT_EQ(std::size(kTexts), shown.right);
        EXPECT_EQ(0u, shown.odd + shown.others);
    }
}

TEST(FixShown, EveryTextInItsFormat) {
    const struct {
        meant::Format format;
        size_t odd;
    } kRows[] = {
        {meant::Format::Sami, 0},        {meant::Format::TimedText, 0}, {meant::Format::SubViewer20, 0},
        {meant::Format::SubViewer10, 3}, {meant::Format::MicroDvd, 3},  {meant::Format::DvbText, 3},
    };
    Options options;
    options.keepFormat = true;
    for (const auto& row : kRows) {
        Folder folder;
        const Result result = fix(fileOf(row.format), meant::Source("", {}, {}), options);
        const Seen shown = seen(folder, result);
        EXPECT_EQ(row.format, result.format);
        EXPECT_EQ(std::size(kTexts) - row.odd, shown.right) << meant::nameOf(row.format).word << "\n" << shown.list;
        EXPECT_EQ(row.odd, shown.odd) << meant::nameOf(row.format).word;
    }
}

TEST(FixShown, TheLongestTextsAndTheLatestTimes) {
    meant::File file = fileOf(meant::Format::SubRip);
    std::string lines;
    while (lines.size() < 9000) lines += "some words of a very long text\n";
    file.entries[0].text = lines;
    file.entries[1].text = std::string(9000, 'x');
    file.entries.back().end = 5000000000;
    Folder folder;
    const Result result = fix(file, meant::Source("", {}, {}), {});
    EXPECT_EQ(std::size(kTexts), seen(folder, result).right);
}

TEST(FixShown, AsManyEntriesAsTheTableIsMadeFor) {
    for (const int count : {8191, 8192, 8193}) {
        meant::File file;
        file.format = meant::Format::SubRip;
        for (int i = 0; i < count; ++i) {
            meant::Entry entry;
            entry.start = i * 100;
            entry.end = entry.start + 100;
            entry.text = std::to_string(i);
            file.entries.push_back(entry);
        }
        Folder folder;
        EXPECT_EQ(size_t(count), seen(folder, fix(file, meant::Source("", {}, {}), {})).right);
    }
}

TEST(FixShown, CausesAreThoseOfTheVocabulary) {
    for (const char* name : {"text-angle-brackets", "text-too-long", "overlap", "srt-text-as-time-line",
                             "smi-languages", "break-bar", "ssa-drawing", "beyond-32-bit", "srt-utf16-shape",
                             "vob-no-size", "vob-no-palette", "vob-language", "vob-mark"})
        EXPECT_NE(nullptr, check::findCause(name)) << name;
}

}  // namespace
}  // namespace fix

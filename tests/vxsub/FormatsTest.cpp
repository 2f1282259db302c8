#include "tools/vxsub/Formats.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tools/vxsub/SubtitleFile.h"

namespace {

using namespace android;

TEST(Formats, FollowTheExtensionInAnyLetterCase) {
    for (const char* path : {"a.srt", "a.SRT", "/b.c/a.Srt", "a.b.srt", ".srt"})
        EXPECT_EQ(vxsub::formatOfPath(path), vxsub::findFormat("srt")) << path;
    for (const char* path : {"", "a", "srt", "a.", "a.srt.bak", "a.srtx", "a.srt/b", "/x.srt/", "a.sr"})
        EXPECT_EQ(vxsub::formatOfPath(path), nullptr) << path;
}

TEST(Formats, HaveTheirExtensions) {
    const struct {
        const char* path;
        const char* type;
    } kRows[] = {{"a.srt", "srt"}, {"a.ass", "ssa"}, {"a.ssa", "ssa"}, {"a.smi", "smi"}, {"a.sami", "smi"},
                 {"a.txt", "txt"}, {"a.sub", "sub"}, {"a.idx", "idx"}, {"a.IDX", "idx"}, {"a.sup", "sup"}};
    for (const auto& row : kRows) EXPECT_EQ(vxsub::formatOfPath(row.path), vxsub::findFormat(row.type)) << row.path;
    for (const char* type : {"sv20", "sv10", "microdvd", "dvb"}) {
        ASSERT_NE(vxsub::findFormat(type), nullptr) << type;
        EXPECT_TRUE(vxsub::findFormat(type)->extensions.empty()) << type;
    }
}

TEST(Formats, ExtensionIsWhatFollowsTheLastPointOfTheName) {
    EXPECT_EQ(vxsub::extensionOf("/a/b.c.srt"), ".srt");
    EXPECT_EQ(vxsub::extensionOf("b."), ".");
    EXPECT_EQ(vxsub::extensionOf("b"), "");
    EXPECT_EQ(vxsub::extensionOf("/a.srt/b"), "");
    EXPECT_EQ(vxsub::extensionOf(""), "");
}

TEST(Formats, AreNamedOnceEach) {
    std::set<std::string> types, extensions;
    for (const vxsub::Format& format : vxsub::formats()) {
        EXPECT_TRUE(types.insert(format.type).second) << format.type;
        EXPECT_EQ(vxsub::findFormat(format.type), &format);
        for (const std::string& extension : format.extensions)
            EXPECT_TRUE(extensions.insert(extension).second) << extension;
    }
    EXPECT_EQ(vxsub::findFormat("SRT"), vxsub::findFormat("srt"));
    EXPECT_EQ(vxsub::findFormat(""), nullptr);
    EXPECT_EQ(vxsub::findFormat("sr"), nullptr);
}

TEST(Formats, EveryValueOfTheInterfaceHasAName) {
    std::set<std::string> words;
    for (unsigned type = 0; type < E_MEDIA_SUBTITLE_PARSER_TYPE_NUM; ++type)
        EXPECT_TRUE(words.insert(vxsub::nameOf(EN_MEDIA_SUBTITLE_PARSER_TYPE(type)).word).second) << type;
    EXPECT_EQ(words.count("unknown"), 0u);
    EXPECT_STREQ(vxsub::nameOf(E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID).word, "unknown");
    words.clear();
    for (unsigned type = 0; type < E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NUM; ++type)
        EXPECT_TRUE(words.insert(vxsub::nameOf(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE(type)).word).second) << type;
    EXPECT_STREQ(vxsub::nameOf(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN).word, "unknown");
    words.clear();
    for (unsigned language = 0; language < E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM; ++language)
        EXPECT_TRUE(words.insert(vxsub::nameOf(EN_MEDIA_SUBTITLE_PARSER_LANGUAGE(language)).word).second) << language;
    EXPECT_STREQ(vxsub::nameOf(E_MEDIA_SUBTITLE_PARSER_LANGUAGE_HEBREW).phrase, "Hebrew");
    EXPECT_STREQ(vxsub::nameOf(E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM).word, "undefined");
}

TEST(Entry, IsShownFromItsStartUntilJustBeforeItsEnd) {
    const vxsub::Entry entry{1000, 2000};
    EXPECT_FALSE(entry.covers(999));
    EXPECT_TRUE(entry.covers(1000));
    EXPECT_TRUE(entry.covers(1999));
    EXPECT_FALSE(entry.covers(2000));
    EXPECT_FALSE((vxsub::Entry{1000, 1000}.covers(1000)));
}

TEST(Marks, AnEntryIsCutShortByOneThatStartsBeforeItsEnd) {
    const auto isCutShort = [](const vxsub::Entry& a, const vxsub::Entry& b) {
        return vxsub::marksOf({a, b})[0].isCutShort;
    };
    EXPECT_TRUE(isCutShort({1000, 2000}, {1999, 3000}));
    EXPECT_FALSE(isCutShort({1000, 2000}, {2000, 3000}));
    EXPECT_TRUE(isCutShort({1000, 2000}, {1001, 1001}));
    EXPECT_FALSE(isCutShort({1000, 2000}, {1000, 1500})) << "they share a start";
    EXPECT_FALSE(isCutShort({1000, vxsub::Entry::kOpenEnd}, {1500, 2000})) << "until the next is what was meant";
}

TEST(Marks, TellWhatTheSearchForAPlayTimeStumblesOver) {
    const std::vector<vxsub::Entry> entries = {{1000, 2000}, {3000, 4000}, {3000, 5000},
                                               {2000, 1999}, {1000, 1000}, {4500, vxsub::Entry::kOpenEnd}};
    const std::string kExpected[] = {"=", "=", "=~", "<!", "=<0", ""};
    const std::vector<vxsub::Marks> marks = vxsub::marksOf(entries);
    ASSERT_EQ(marks.size(), entries.size());
    for (size_t i = 0; i < marks.size(); ++i) {
        std::string letters;
        for (const vxsub::MarkKind& kind : vxsub::kMarkKinds)
            if (marks[i].*kind.isSet) letters += kind.letter;
        EXPECT_EQ(letters, kExpected[i]) << i;
    }
    EXPECT_TRUE(vxsub::marksOf({}).empty());
}

}  // namespace

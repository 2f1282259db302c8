#include "player.cpp"

#include <gtest/gtest.h>

#include <vector>

#include "subtitle/SubtitleParserSRT.h"
#include "tests/support/Interpose.h"

namespace {

using Shown = std::vector<std::string>;

std::unique_ptr<android::SubtitleParser> srt(const test::TempFile& file) {
    return std::make_unique<android::SubtitleParserSRT>(file.fd(), 0, 0);
}

class PlayerSample : public testing::Test {
protected:
    Shown taken() {
        Shown shown;
        shown.swap(mShown);
        return shown;
    }

    const test::TempFile mFirst{
        "1\n00:00:01,000 --> 00:00:02,000\nHello\n\n2\n00:00:02,000 --> 00:00:03,000\nyou\n\n"
        "3\n00:00:05,000 --> 00:00:06,000\nBye\n\n"};
    const test::TempFile mSecond{"1\n00:00:01,500 --> 00:00:04,000\nBonjour\n\n"};
    Shown mShown;
    Subtitles::CodeType mCodeType = android::E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN;
    Subtitles mSubtitles{[this](const std::string& text, Subtitles::CodeType codeType) {
        mShown.push_back(text);
        mCodeType = codeType;
    }};
};

TEST_F(PlayerSample, ShowsEachEntryOnceWhileItPlays) {
    ASSERT_TRUE(mSubtitles.open(srt(mFirst)));
    for (android::U32 timeMs = 0; timeMs < 8000; timeMs += 100) mSubtitles.at(timeMs);
    EXPECT_EQ((Shown{"Hello", "you", "", "Bye", ""}), taken());
    EXPECT_EQ(android::E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, mCodeType);
}

TEST_F(PlayerSample, ChangesNothingDuringAPause) {
    ASSERT_TRUE(mSubtitles.open(srt(mFirst)));
    for (int i = 0; i < 10; ++i) mSubtitles.at(1500);
    EXPECT_EQ(Shown{"Hello"}, taken());
}

TEST_F(PlayerSample, ShowsWhatIsThereAfterAJump) {
    ASSERT_TRUE(mSubtitles.open(srt(mFirst)));
    for (const android::U32 timeMs : {1500, 5500, 1500, 3500, 999, 2000}) mSubtitles.at(timeMs);
    EXPECT_EQ((Shown{"Hello", "Bye", "Hello", "", "you"}), taken());
}

TEST_F(PlayerSample, ChangesTheTrack) {
    ASSERT_TRUE(mSubtitles.open(srt(mFirst)));
    mSubtitles.at(1600);
    ASSERT_TRUE(mSubtitles.open(srt(mSecond)));
    mSubtitles.at(1600);
    EXPECT_EQ((Shown{"Hello", "", "Bonjour"}), taken());
}

TEST_F(PlayerSample, ShowsNothingMoreAtTheEnd) {
    ASSERT_TRUE(mSubtitles.open(srt(mFirst)));
    mSubtitles.at(1600);
    mSubtitles.close();
    mSubtitles.at(1700);
    mSubtitles.close();
    EXPECT_EQ((Shown{"Hello", ""}), taken());
}

TEST_F(PlayerSample, OpensNothingOfWhichThereIsNothingToShow) {
    const test::TempFile empty("");
    EXPECT_FALSE(mSubtitles.open(nullptr));
    EXPECT_FALSE(mSubtitles.open(srt(empty)));
    mSubtitles.at(1000);
    EXPECT_EQ(Shown(), taken());
}

TEST_F(PlayerSample, TakesTextOf16BitUnits) {
    std::string utf16 = "\xFF\xFE";
    for (const char c : std::string("1\n00:00:01,000 --> 00:00:02,000\nHi\n\n")) {
        utf16 += c;
        utf16 += '\0';
    }
    const test::TempFile file(utf16);
    ASSERT_TRUE(mSubtitles.open(srt(file)));
    mSubtitles.at(1000);
    EXPECT_EQ(Shown{std::string("H\0i\0", 4)}, taken());
    EXPECT_EQ(android::E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, mCodeType);
}

}  // namespace

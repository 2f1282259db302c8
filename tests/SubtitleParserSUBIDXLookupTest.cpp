// Which picture of which track is in force, and what the VobSub parser tells about its tracks.
#include "subtitle/SubtitleParserSUBIDX.h"

#include <gtest/gtest.h>
#include <string.h>

#include <stdexcept>
#include <string>

#include "tests/support/VobSubIndex.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

using namespace android;
using namespace test;

TEST(SubtitleParserSUBIDX, FindsTheTagInForce) {
    std::string idx = "id: en\n";
    for (const unsigned ms : {1000, 2000, 3000}) idx += samples::indexLine(ms, 0) + "\n";
    idx += "id: fr\n";
    for (const unsigned ms : {1500, 2500, 3500, 4500}) idx += samples::indexLine(ms, 0) + "\n";
    idx += "id: ru\n" + samples::indexLine(500, 0) + "\n";
    Scanned scanned(idx);
    const struct {
        U32 track, ms, tag;
    } kRows[] = {
        {0, 0, 0},       {0, 999, 0},  {0, 1000, 0},       {0, 1999, 0}, {0, 2000, 1}, {0, 2999, 1}, {0, 3000, 2},
        {0, 1000000, 2}, {1, 1499, 0}, {1, 1500, 3},       {1, 2499, 3}, {1, 2500, 4}, {1, 3499, 4}, {1, 3500, 5},
        {1, 4499, 5},    {1, 4500, 6}, {1, 0xFFFFFFFF, 6}, {2, 500, 7},  {2, 499, 0},  {2, 0, 0},    {0, 0x7FFFFFFF, 2},
    };
    for (const auto& row : kRows)
        EXPECT_EQ(row.tag, scanned.parser().GetTag(row.track, row.ms)) << row.track << " " << row.ms;
}

// kept(vob-end-ignored)
TEST(SubtitleParserSUBIDX, APictureStaysWhateverEndItNames) {
    const samples::VobSub film = smallFilm(1);  // two seconds long
    VobSubInMemory files;
    files.load(film.idx(), film.sub());
    ASSERT_NE(0U, files.parser.GetData(0, nullptr, 0, 0, nullptr));
    ST_MEDIA_SUBTITLE_PARSER_TAG tag = {};
    EXPECT_EQ(TRUE, files.parser.GetTagInfo(0, 0, &tag));
    EXPECT_EQ(1000U, tag.u32TimeStart);
    EXPECT_EQ(0xFFFFFFFFU, tag.u32TimeEnd);
    EXPECT_EQ(0U, files.parser.GetTag(0, 1000000));
}

// kept(vob-before-track)
TEST(SubtitleParserSUBIDX, BeforeATracksFirstTagTheTrackBeforeMayAnswer) {
    // its last tag starts in time
    Scanned scanned("id: en\n" + samples::indexLine(100, 0) + "\nid: fr\n" + samples::indexLine(1000, 0) + "\n" +
                    samples::indexLine(2000, 0) + "\n");
    EXPECT_EQ(0U, scanned.parser().GetTag(1, 99));
    Scanned three("id: en\n" + kFirst + samples::indexLine(100, 0) + "\nid: fr\n" + samples::indexLine(1000, 0) + "\n");
    EXPECT_EQ(1U, three.parser().GetTag(1, 500)) << "the last tag of English";
    EXPECT_EQ(0U, three.parser().GetTag(1, 99));
}

TEST(SubtitleParserSUBIDX, FindsLikeALinearSearch) {
    for (unsigned count = 1; count < 40; ++count) {
        std::string idx = "id: en\n";
        for (unsigned i = 0; i < 3; ++i) idx += samples::indexLine(900000 + i, 0) + "\n";  // never in time
        idx += "id: fr\n";
        for (unsigned i = 0; i < count; ++i) idx += samples::indexLine(10 + i * 10, 0) + "\n";
        Scanned scanned(idx);
        for (U32 ms = 0; ms < 20 + count * 10; ++ms) {
            const U32 begun = ms < 10 ? 0 : ms / 10 > count ? count : ms / 10;
            ASSERT_EQ(begun == 0 ? 0 : 2 + begun, scanned.parser().GetTag(1, ms)) << count << " tags, " << ms;
        }
    }
}

TEST(SubtitleParserSUBIDX, LookupsOfNothingAndOfBadTracks) {
    SubtitleParserSUBIDX parser(-1, -1, 0, 0);
    EXPECT_EQ(0U, parser.GetTag(0, 1000)) << "no tracks";
    EXPECT_EQ(0U, parser.GetTag(99, 1000)) << "not even a bad one";
    Scanned scanned("id: en\n" + kFirst + kSecond);
    EXPECT_EQ(1U, scanned.parser().GetTag(0, 5000));
    EXPECT_THROW(scanned.parser().GetTag(1, 5000), std::out_of_range);
    EXPECT_THROW(scanned.parser().GetTag(0xFFFFFFFF, 5000), std::out_of_range);
    scanned.parser().Deinit();
    EXPECT_EQ(0U, scanned.parser().GetTag(1, 5000)) << "no table";
}

// kept(lookup-offset)
TEST(SubtitleParserSUBIDX, TheTimeOffsetIsSubtracted) {
    Scanned scanned("id: en\n" + kFirst + kSecond);
    SubtitleParserSUBIDX& parser = scanned.parser();
    parser.m_s32TimeOffsetMs = 500;
    EXPECT_EQ(0U, parser.GetTag(0, 2499));
    EXPECT_EQ(1U, parser.GetTag(0, 2500));
    parser.m_s32TimeOffsetMs = 3000;
    EXPECT_EQ(1U, parser.GetTag(0, 2000)) << "not from times below it";
    parser.m_s32TimeOffsetMs = -1000;
    EXPECT_EQ(1U, parser.GetTag(0, 1000));
}

TEST(SubtitleParserSUBIDX, DescribesItsTracks) {
    Scanned scanned("size: 720x576\nid: en\n" + kFirst + "id: fr\n" + kFirst);
    SubtitleParserSUBIDX& parser = scanned.parser();
    for (U32 i = 0; i < 16; ++i) parser.m_au32Palette_result[i] = i + 100;
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info;
    memset(&info, 0x5A, sizeof info);
    EXPECT_EQ(TRUE, parser.GetTrackInfo(1, &info));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_LANGUAGE_FRENCH, info.eLanguage);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX, info.eSubtitleType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I2, info.eCodeType);
    EXPECT_EQ(100U, info.au32Palette[0]);
    EXPECT_EQ(115U, info.au32Palette[15]);
    EXPECT_EQ(0x5A5A5A5AU, info.au32Palette[16]);  // kept(vob-track-palette)
    EXPECT_EQ(0x5A5A5A5AU, info.au32Palette[255]);
    EXPECT_EQ(TRUE, parser.GetTrackInfo(2, &info));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED, info.eLanguage);
    EXPECT_EQ(720U, info.u32Width);
    EXPECT_EQ(FALSE, parser.GetTrackInfo(0, nullptr));

    ST_MEDIA_SUBTITLE_PARSER_INFO overview;
    memset(&overview, 0x5A, sizeof overview);
    EXPECT_EQ(TRUE, parser.GetSubtitleInfo(&overview));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX, overview.eSubtitleType);
    EXPECT_EQ(2U, overview.u32TrackNum);
    EXPECT_EQ(0x5A5A5A5AU, overview.u32CurrentTrackIndex);
    EXPECT_EQ(FALSE, parser.GetSubtitleInfo(nullptr));

    ST_MEDIA_SUBTITLE_PARSER_BUFFER_SIZE size;
    memset(&size, 0x5A, sizeof size);
    EXPECT_EQ(TRUE, parser.QueryBufferSize(&size));
    EXPECT_EQ(0x10000U, size.u32RawBufferSize);
    EXPECT_EQ(0x10000U, size.u32SubtitleBufferSize);
    EXPECT_EQ(0x5A5A5A5AU, size.u32TagBufferIncNum);
    EXPECT_EQ(TRUE, parser.QueryBufferSize(nullptr));
}

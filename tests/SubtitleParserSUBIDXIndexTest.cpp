// VobSub indexes as their author writes them, and what the scan makes of them.
#include "subtitle/SubtitleParserSUBIDX.h"

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include <memory>
#include <string>

#include "tests/support/Interpose.h"
#include "tests/support/VobSubIndex.h"
#include "tests/support/VobSubPair.h"
#include "tools/samples/VobSubMaker.h"

using namespace android;
using namespace test;
using namespace std::literals;

namespace {

constexpr char kUnknown[] = "unkonwn case,we will not handle\n";
constexpr char kUnusedWide[] = "now we will not use these informations\n";

}  // namespace

// --- the index, line by line ------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, LanguageCodes) {
    const char kCodes[] = "nageeneselfrshitnlplptrurosvarzhjakofafinoiwbg\0\0\0";
    static_assert(sizeof kCodes == 50);
    EXPECT_EQ(0, memcmp(kCodes, SubtitleParserSUBIDX::m_au8LanguageCode, sizeof kCodes));
    EXPECT_EQ(50U, sizeof SubtitleParserSUBIDX::m_au8LanguageCode);
}

// An empty line behind the mark is no line of an unknown kind.
TEST(SubtitleParserSUBIDX, EmptyLinesBehindAMark) {
    for (const char* const empty : {"\r\n", "\n", "\r", "\r\n\r\n", "\n\n\n", ""}) {
        for (const std::string& idx : {utf16le(empty), utf16be(empty)}) {
            EXPECT_EQ(Texts(), Scanned(idx).log) << testing::PrintToString(idx);
        }
        for (const std::string& idx : {utf16le(empty + kFirst), utf16be(empty + kFirst)}) {
            EXPECT_EQ(Texts(), Scanned(idx).log) << testing::PrintToString(idx);
        }
        EXPECT_EQ(Texts(), Scanned(empty).log);
        // kept(vob-mark)
        EXPECT_EQ(Texts{kUnknown}, Scanned("\xEF\xBB\xBF"s + empty).log);
    }
    for (const std::string& idx : {utf16le("x\r\n"), utf16be("x\r\n"), "x\r\n"s}) {
        EXPECT_EQ(Texts{kUnknown}, Scanned(idx).log);
    }
}

TEST(SubtitleParserSUBIDX, Timestamps) {
    const struct {
        std::string idx;
        Texts tags;
    } kRows[] = {
        {"timestamp: 00:00:01:500, filepos: 000001800\n", {"1500@1800"}},
        {"delay: +00:00:02:000\ntimestamp: 00:00:01:500, filepos: 000001800\n", {"3500@1800"}},
        {"delay: -00:00:00:500\ntimestamp: 00:00:00:200, filepos: 000000000\n",
         {"4294966996@0"}},  // kept(vob-delay-wrap)
        {"delay: 00:00:02:000\ntimestamp: 00:00:01:500, filepos: 000001800\n", {"1500@1800"}},
        {"timestamp:00:00:01:500,filepos: 000001800\n", {"1500@1800"}},
        {"  \t timestamp: \t 00:00:01:500,   filepos:   000001800\n", {"1500@1800"}},
        {"timestamp: 12:34:56:789, filepos: 0FEDCBA98\n", {"45296789@fedcba98"}},
        {"timestamp: 00.00-01x500, filepos: 000001800\n", {"1500@1800"}},    // literals are anything
        {"timestamp: 00:00:01 500, filepos: 000001800\n", {"1000@1800"}},    // but a blank, which is skipped
        {"timestamp: 00:00:01:500, filepos: 100001800\n", {"1500@1800"}},    // one digit too many for 32 bits
        {"timestamp: 00:00:01:500, filepos: 12345678\n", {"1500@2345678"}},  // kept(vob-filepos-digit)
        {"timestamp: 00:00:01:500, filepos:000001800\n", {"1500@1800"}},
        {"timestamp: 00:00:01:500, filepos:12345\n", {"1500@345"}},
        {"timestamp: 00:00:01:500, filepos: 0123456789ABCDEF01\n", {"1500@9abcdef0"}},  // sixteen digits, 32 bits
        // the time counts as twelve characters and a comma
        {"timestamp: 0:00:01:500, filepos: 000001800\n", {"1500@1800"}},
        {"timestamp: 0:00:01:50, filepos: 000001800\n", {}},  // kept(vob-time-width)
        {"timestamp: 00:00:01:5000, filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:500  filepos: 000001800\n", {"1500@1800"}},
        {"timestamp: 00:00:01, filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:x, filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:500, filepos 000001800\n", {}},
        {"timestamp: 00:00:01:500, Filepos: 000001800\n", {}},
        {"timestamp: 00:00:01:500, filepos: 0xyz\n", {}},
        {"timestamp: 00:00:01:500, filepos: \n" + kFirst, {}},  // the next line's text is no number, and is lost
        {"timestamp: 00:00:01:500, filepos: 0\ndelay: +00:00:00:001\n" + kFirst, {"1500@de", "1000@0"}},
        {"timestamp:\n" + kFirst + kSecond, {"2000@800"}},  // kept(vob-blank-value): across line ends
        {"timestamp: \r\n 00:00:01:500,\n filepos: 000001800\n", {"1500@1800"}},
        {"Timestamp: 00:00:01:500, filepos: 000001800\n", {}},
        {"timestamp : 00:00:01:500, filepos: 000001800\n", {}},
        {kFirst + "\r\n\n\r" + kSecond, {"1000@0", "2000@800"}},
        {"timestamp: 00:00:01:000, filepos: 000000000\rtimestamp: 00:00:02:000, filepos: 000000800",
         {"1000@0", "2000@800"}},
        {"timestamp: 9999999:0:0:0 filepos: 000000001\n", {"3875492224@1"}},  // wraps at 32 bits
        {"", {}},
    };
    for (const auto& row : kRows) {
        Scanned scanned(row.idx);
        EXPECT_EQ(row.tags, tagsOf(scanned.parser())) << row.idx;
        EXPECT_EQ(TRUE, scanned.parser().bParseFinish);
    }
}

TEST(SubtitleParserSUBIDX, Delays) {
    const struct {
        const char* value;
        const char* log;
        U32 start;  // of a tag at 1000 ms
    } kRows[] = {
        {" +00:00:02:000", "delay:2000, sign:1, hh:0, mm:0, ss:2, ms:0", 3000},
        {"-00:00:00:500", "delay:-500, sign:-1, hh:0, mm:0, ss:0, ms:500", 500},
        {" +01:02:03:004", "delay:3723004, sign:1, hh:1, mm:2, ss:3, ms:4", 3724004},
        {" 00:00:02:000", "delay:0, sign:0, hh:0, mm:0, ss:0, ms:0", 1000},  // kept(vob-delay-sign)
        {" x00:00:02:000", "delay:0, sign:0, hh:0, mm:0, ss:0, ms:0", 1000},
        {" +10:00:00:000", "delay:36000000, sign:1, hh:10, mm:0, ss:0, ms:0", 36001000},
        {" +00:00:02", "delay:0, sign:0, hh:0, mm:0, ss:0, ms:0", 1000},
        {" -", "delay:0, sign:0, hh:0, mm:0, ss:0, ms:0", 1000},
        {" - 00 : 00 : 02 : 000", "delay:-2000, sign:-1, hh:0, mm:0, ss:2, ms:0", 4294966296},
        {" -4294967295:4294967295:4294967295:4294967295",
         "delay:-15723879561962295, sign:-1, hh:4294967295, mm:4294967295, ss:4294967295, ms:4294967295",
         static_cast<U32>(1000 - 15723879561962295LL)},
    };
    for (const auto& row : kRows) {
        Scanned scanned("delay:" + std::string(row.value) + "\n" + kFirst);
        EXPECT_EQ(Texts({std::string("[SUBIDX] ") + row.log}), scanned.log) << row.value;
        ASSERT_EQ(1U, scanned.parser().GetTagNum());
        EXPECT_EQ(row.start, scanned.parser().m_pTagBuffer[0].u32TimeStart) << row.value;
    }
    // it holds for all that follows, across tracks, until the next one
    Scanned scanned(kFirst + "delay: +00:00:00:001\n" + kFirst + "id: fr\n" + kFirst + "delay: none\n" + kFirst);
    EXPECT_EQ(Texts({"1000@0", "1001@0", "1001@0", "1000@0"}), tagsOf(scanned.parser()));
}

TEST(SubtitleParserSUBIDX, Tracks) {
    const std::string nul(1, '\0');
    const struct {
        std::string idx;
        Texts tracks;
    } kRows[] = {
        {"id: en, index: 0\n" + kFirst + kSecond, {"2 0-1"}},
        {"id: ge\n" + kFirst, {"1 0-0"}},
        {"id: de\n" + kFirst, {"0 0-0"}},  // kept(vob-language)
        {"id: EN\n" + kFirst, {"0 0-0"}},
        {"id: na\n" + kFirst, {"0 0-0"}},
        {"id: bg\n" + kFirst, {"22 0-0"}},
        {"id: iw\n" + kFirst, {"21 0-0"}},
        {"id: he\n" + kFirst, {"0 0-0"}},
        {"id:english\n" + kFirst, {"2 0-0"}},
        {"id: e\n" + kFirst, {"0 0-0"}},
        {"id: --, index: 0\n" + kFirst, {"0 0-0"}},
        {"id: " + nul + nul + "\n" + kFirst, {"23 0-0"}},  // two zero bytes are Danish
        {"id: " + nul + "\n" + kFirst, {"0 0-0"}},
        {kFirst + "id: en\n" + kSecond, {"0 0-0", "2 1-1"}},  // what precedes the first id is a track, too
        {"id: en\nid: fr\n" + kFirst, {"5 0-0"}},             // kept(vob-empty-track): no picture, no track
        {"id: en\n" + kFirst + "id: fr\nid: ru\n", {"2 0-0"}},
        {"id: en\n" + kFirst + "id: fr\n" + kFirst + kSecond, {"2 0-0", "5 1-2"}},
        {"id: en\n" + kFirst + "id: en\n" + kFirst, {"2 0-0", "2 1-1"}},
        {"id: en\n" + kFirst + "id: zz\n" + kSecond, {"2 0-0", "0 1-1"}},
        {"id:\n" + kFirst + kSecond, {"0 0-0"}},  // white space goes across the line end: the first line is lost
        {"id: en", {}},
        {"id:", {}},
    };
    for (const auto& row : kRows) {
        Scanned scanned(row.idx);
        EXPECT_EQ(row.tracks, tracksOf(scanned.parser())) << row.idx;
    }
    for (U32 language = 1; language < 23; ++language) {
        const U8* const code = SubtitleParserSUBIDX::m_au8LanguageCode[language];
        Scanned scanned("id: " + std::string(code, code + 2) + "\n" + kFirst);
        EXPECT_EQ(Texts({std::to_string(language) + " 0-0"}), tracksOf(scanned.parser()));
    }
}

TEST(SubtitleParserSUBIDX, Palettes) {
    const std::string sixteen = "palette: 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, a, B, c, D, e, ff00FF";
    const std::string fifteen = "palette: 10, 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e";
    const struct {
        std::string idx;
        U32 first, second, fourteenth, last;
    } kRows[] = {
        {sixteen, 0, 1, 14, 0xFF00FF},
        {sixteen + "\n", 0, 1, 14, 0xFF00FF},
        {sixteen + ", 17\r\n", 0, 1, 14, 0xFF00FF},
        {"palette:00ff8000 11 22 33 44 55 66 77 88 99 aa bb cc dd ee ff\n", 0x00FF8000, 0x22, 0, 0},  // blanks only
        {"palette:0,1,2,3,4,5,6,7,8,9,a,b,c,d,e,f\n", 0, 1, 14, 15},
        {fifteen + "\r\nsize: 1x1", 0xFF000000, 1, 14, 0},
        {fifteen + "\nsize: 1x1", 0xFF000000, 1, 14, 0},
        {fifteen + "\ndelay: +00:00:00:000", 0x10, 1, 14, 0xDE},  // the line end counts as the comma
        {"palette: \n", 0xFF000000, 0x77, 0x77, 0x77},
        {"palette: 1, 2, x", 0xFF000000, 2, 0x77, 0x77},  // kept(vob-palette-short)
    };
    for (const auto& row : kRows) {
        VobSubInMemory files;
        for (U32& colour : files.parser.m_au32Palette) colour = 0x77;
        const LogCapture log;
        files.load(row.idx, "");
        const U32(&palette)[16] = files.parser.m_au32Palette;
        if (row.idx.find("00ff8000 11") != std::string::npos) {
            // a comma takes one character: the digit behind the blank
            EXPECT_EQ(0x00FF8000U, palette[0]);
            EXPECT_EQ(1U, palette[1]);
            continue;
        }
        EXPECT_EQ(row.first, palette[0]) << row.idx;
        EXPECT_EQ(row.second, palette[1]) << row.idx;
        EXPECT_EQ(row.fourteenth, palette[14]) << row.idx;
        EXPECT_EQ(row.last, palette[15]) << row.idx;
    }
}

TEST(SubtitleParserSUBIDX, SizeAndOrigin) {
    const struct {
        const char* idx;
        U32 width, height, x, y;
    } kRows[] = {
        {"size: 720x576\norg: 8, 16\n", 720, 576, 8, 16},
        {"size:1920*1080\norg:8 16\n", 1920, 1080, 8, 6},  // the comma takes a character
        {"size: 720 x 576\norg: 8,16\n", 720, 576, 8, 16},
        {"size: 720x576\nsize: 720\norg: 8, 16\norg: 8\n", 0, 0, 0, 0},
        {"size: x576\norg: , 16\n", 0, 0, 0, 0},
        {"size: 720x576\nsize:\n640x480\n", 0, 0, 0, 0},
        {"Size: 720x576\nORG: 1, 1\n", 0, 0, 0, 0},
    };
    for (const auto& row : kRows) {
        Scanned scanned(std::string(row.idx) + kFirst + "id: en\n" + kFirst);
        for (const U32 track : {0U, 1U, 2U}) {
            ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info = {};
            EXPECT_EQ(TRUE, scanned.parser().GetTrackInfo(track, &info));
            EXPECT_EQ(row.width, info.u32Width) << row.idx;
            EXPECT_EQ(row.height, info.u32Height) << row.idx;
            EXPECT_EQ(row.x, info.u32OriginX) << row.idx;
            EXPECT_EQ(row.y, info.u32OriginY) << row.idx;
            EXPECT_EQ(
                track == 1 ? E_MEDIA_SUBTITLE_PARSER_LANGUAGE_ENGLISH : E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED,
                info.eLanguage);
        }
    }
}

TEST(SubtitleParserSUBIDX, LinesThatAreNotUsed) {
    const struct {
        std::string idx;
        Texts log;
    } kRows[] = {
        {"# a comment\n#timestamp: 00:00:01:000, filepos: 000000000\n\n   \n", {}},
        {"langidx: 0\n", {kUnused}},
        {"custom colors: OFF, tridx: 0000\n", {kUnused}},
        {"custom colours: OFF\n", {kUnknown}},
        {"scale: 100%, 100%\nalpha: 100%\r\nsmooth: OFF", {kUnknown, kUnknown, kUnknown}},
        {"id: en, index: 0\nsize: 1x1\norg: 0, 0\n" + kFirst, {}},
        {std::string("\0abc\n", 5), {}},  // an empty text
        {std::string("a\0bc\n", 5), {kUnknown}},
        {"i", {kUnknown}},
    };
    for (const auto& row : kRows) EXPECT_EQ(row.log, Scanned(row.idx).log) << row.idx;
}

TEST(SubtitleParserSUBIDX, ByteOrderMarks) {
    Scanned utf8("\xEF\xBB\xBF" + kFirst + kSecond);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8, utf8.parser().m_eCodeType);
    EXPECT_EQ(Texts({kUnknown}), utf8.log);
    EXPECT_EQ(Texts({"2000@800"}), tagsOf(utf8.parser())) << "the first line is lost";  // kept(vob-mark)
    Scanned comment("\xEF\xBB\xBF# VobSub index file\n" + kSecond);
    EXPECT_EQ(Texts({kUnknown}), comment.log);

    Scanned native(kFirst);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, native.parser().m_eCodeType);
    Scanned empty("");
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN, empty.parser().m_eCodeType);
    EXPECT_EQ(TRUE, empty.parser().bParseFinish);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, Scanned("\xEF\xBB").parser().m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, Scanned("\xFF\xFE").parser().m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG, Scanned("\xFE\xFF").parser().m_eCodeType);
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, Scanned("\xFE").parser().m_eCodeType);
}

// --- 16-bit indexes ---------------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, LittleEndianIndex) {
    const std::string sixteen = "palette: 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e, ff00ff\r\n";
    Scanned scanned(utf16le("# VobSub index\r\nsize: 720x576\r\norg: 8,16\r\n" + sixteen +
                            "langidx: 0\r\ncustom colors: OFF\r\nscale: 100%\r\n\r\nid: en, index: 0\r\n"
                            "timestamp: 00:00:01:500, filepos: 000001800\r\ndelay: +00:00:02:000\r\n" +
                            kFirst + "id: fr\n" + kSecond));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, scanned.parser().m_eCodeType);
    EXPECT_EQ(Texts({"1500@1800", "3000@0", "4000@800"}), tagsOf(scanned.parser()));
    EXPECT_EQ(Texts({"2 0-1", "5 2-2"}), tracksOf(scanned.parser()));
    EXPECT_EQ(Texts({kUnusedWide, kUnknown, "[SUBIDX] delay:2000, sign:1, hh:0, mm:0, ss:2, ms:0"}), scanned.log)
        << "langidx says nothing here";
    EXPECT_EQ(720U, scanned.parser().m_u32Width);
    EXPECT_EQ(576U, scanned.parser().m_u32Height);
    EXPECT_EQ(8U, scanned.parser().m_u32OriginX);
    EXPECT_EQ(16U, scanned.parser().m_u32OriginY);
    EXPECT_EQ(0xFF00FFU, scanned.parser().m_au32Palette[15]);
    EXPECT_EQ(14U, scanned.parser().m_au32Palette[14]);
}

TEST(SubtitleParserSUBIDX, BigEndianIndex) {
    // A blank is no white space as it is stored, so none may stand where white space is skipped.
    Scanned scanned(
        utf16be("id:en\r\ntimestamp:00:00:01:500,filepos: 000001800\r\ndelay:+00:00:02:000\r\n"
                "timestamp:00:00:01:000,filepos:  00000800\r\n" +
                kSecond + "custom colors: OFF\nlangidx: 0\nscale: 100%\n"));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG, scanned.parser().m_eCodeType);
    EXPECT_EQ(Texts({"1500@1800", "3000@800"}), tagsOf(scanned.parser()));
    EXPECT_EQ(Texts({"2 0-1"}), tracksOf(scanned.parser()));
    EXPECT_EQ(Texts({"[SUBIDX] delay:2000, sign:1, hh:0, mm:0, ss:2, ms:0", kUnusedWide, kUnknown}), scanned.log);
    EXPECT_EQ(Texts({"0 0-0"}), tracksOf(Scanned(utf16be("id: en\ntimestamp:00:00:01:500,filepos: 01\n")).parser()));
}

TEST(SubtitleParserSUBIDX, SizesOfSixteenBitIndexes) {
    const struct {
        std::string idx;
        U32 width, x;
    } kRows[] = {
        {utf16le("size: 720x576\norg: 8, 16\n"), 720, 0},  // kept(vob-utf16-values): the origin ends at the blank
        {utf16le("size: 720 x576\norg:8,16"), 0, 8},
        {utf16le("size:\r\n720x576\norg: \t8,16"), 720, 8},
        {utf16be("size: 720x576\n"), 720, 0},  // to the end of the data, where a line end is no white space
        {utf16be("size: 720x576\norg:8, 16\n"), 720, 8},
        {utf16be("size: 720x576" + std::string(242, '.')), 720, 0},  // 254 units
        {utf16be("size: 720x576" + std::string(247, '.')), 0, 0},    // 255 and more are not read
        {utf16le("size: 720x576" + std::string(247, '.')), 720, 0},
        {utf16le("size: 720x576" + std::string(248, '.')), 0, 0},
    };
    for (const auto& row : kRows) {
        Scanned scanned(row.idx);
        EXPECT_EQ(row.width, scanned.parser().m_u32Width) << row.idx.size();
        EXPECT_EQ(row.x, scanned.parser().m_u32OriginX) << row.idx.size();
    }
}

// kept(vob-utf16-values)
TEST(SubtitleParserSUBIDX, SixteenBitNumbersAreReadInPieces) {
    const struct {
        const char* line;
        Texts tags;      // of 8-bit text
        Texts wideTags;  // of 16-bit text
    } kRows[] = {
        {"timestamp: 00:00:01:5000 filepos: 000001800", {"6000@1800"}, {"6000@1800"}},  // thirteen units of time
        {"timestamp: 00:00:01:500, filepos: 01800012345678", {"1500@12345678"}, {"1500@12345678"}},   // 13 of position
        {"timestamp: 00:00:01:500, filepos: 018000123456789", {"1500@23456789"}, {"1500@23456789"}},  // 14
        {"timestamp: 00:00:01:500, filepos: 0180001234567890",
         {"1500@34567890"},
         {"1500@23456789"}},                                                                      // 15: one too many
        {"delay: +00:00:02:1234\ntimestamp: 00:00:01:500, filepos: 01", {"4734@1"}, {"4734@1"}},  // fourteen units
        {"delay: +00:00:02:12345\ntimestamp: 00:00:01:500, filepos: 01", {"15845@1"}, {"4734@1"}},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(row.tags, tagsOf(Scanned(row.line).parser())) << row.line;
        EXPECT_EQ(row.wideTags, tagsOf(Scanned(utf16le(row.line)).parser())) << row.line;
    }
}

TEST(SubtitleParserSUBIDX, LongPalettesOfSixteenBitIndexes) {
    const std::string sixteen = " 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e, f, 10";
    const size_t rest = 254 - sixteen.size();
    EXPECT_EQ(1U, Scanned(utf16le("palette:" + sixteen + std::string(rest, ' '))).parser().m_au32Palette[0]);
    Scanned tooLong(utf16le("palette:" + sixteen + std::string(rest + 1, ' ')));
    EXPECT_EQ(0xFF000000U, tooLong.parser().m_au32Palette[0]);
    EXPECT_EQ(0U, tooLong.parser().m_au32Palette[1]) << "not even in part";
    Scanned tooFew(utf16le("palette: 1, 2\r\nsize: 1x1\r\n"));
    EXPECT_EQ(0xFF000000U, tooFew.parser().m_au32Palette[0]);
    EXPECT_EQ(2U, tooFew.parser().m_au32Palette[1]);
    EXPECT_EQ(16U, Scanned(utf16be("palette:" + sixteen + "\r\n")).parser().m_au32Palette[15]);
    // Wide units take two bytes each; what exceeds the 256 bytes of the converted text is dropped.
    std::string wide = utf16le("palette:");
    for (int i = 0; i < 16; ++i) wide += utf16le(",", false) + std::string("10");  // U+3031 reads as "10"
    EXPECT_EQ(0xFF000000U, Scanned(wide).parser().m_au32Palette[0]) << "begins with a comma";
}

TEST(SubtitleParserSUBIDX, WideUnitsReadAsTheirTwoBytes) {
    // U+6469 is "id", U+6E65 "en"
    const auto scan = [](const char* between) {
        return std::make_unique<Scanned>(std::string("\xFF\xFE") + "id" + utf16le(between, false) + "en" +
                                         utf16le("\r\n" + kFirst + kSecond, false));
    };
    const auto blank = scan(": ");
    EXPECT_EQ(Texts({"2 0-1"}), tracksOf(blank->parser()));
    EXPECT_EQ(Texts(), blank->log);
    // The keyword counts as three units, which reach past the code here: the next line is taken for it.
    const auto none = scan(":");
    EXPECT_EQ(Texts({"0 0-0"}), tracksOf(none->parser()));
    EXPECT_EQ(Texts({"2000@800"}), tagsOf(none->parser()));
}

TEST(SubtitleParserSUBIDX, OnlyAUnitOfZeroMakesAWideLineEmpty) {
    const struct {
        U8 high, low;
        Texts log;
    } kRows[] = {{0x01, 0x00, {kUnknown}}, {0x30, 0x00, {kUnknown}}, {0x00, 0x01, {kUnknown}}, {0x00, 0x00, {}}};
    for (const auto& row : kRows) {
        const std::string le{static_cast<char>(row.low), static_cast<char>(row.high)};
        const std::string be{static_cast<char>(row.high), static_cast<char>(row.low)};
        EXPECT_EQ(row.log, Scanned("\xFF\xFE" + le + utf16le("bc\r\n", false)).log) << int{row.high};
        EXPECT_EQ(row.log, Scanned("\xFE\xFF" + be + utf16be("bc\r\n", false)).log) << int{row.high};
    }
}

TEST(SubtitleParserSUBIDX, SixteenBitIndexesOfOddLength) {
    for (const char last : {'7', '\n', '\0'}) {
        Scanned scanned(utf16le(kFirst + "timestamp: 00:00:02:000, filepos: 00000080") + last);
        EXPECT_EQ(last == '7' ? Texts({"1000@0", "2000@807"}) : Texts({"1000@0", "2000@80"}), tagsOf(scanned.parser()));
        EXPECT_EQ(TRUE, scanned.parser().bParseFinish);
    }
}

// --- the window on the index ------------------------------------------------------------------------------------

TEST(SubtitleParserSUBIDX, LongIndexesAreReadInWindows) {
    std::string idx = "id: en\n";
    Texts tags;
    for (unsigned i = 0; i < 6000; ++i) {  // 264 KB
        idx += samples::indexLine(i * 10, i * 0x800) + (i % 3 == 0 ? "\r\n" : "\n");
        char text[32];
        snprintf(text, sizeof text, "%u@%x", i * 10, i * 0x800);
        tags.push_back(text);
    }
    Scanned bytes(idx);
    EXPECT_EQ(tags, tagsOf(bytes.parser()));
    EXPECT_EQ(Texts({"2 0-5999"}), tracksOf(bytes.parser()));
    EXPECT_EQ(0, bytes.parser().m_s64RawBufferPosition % 4096);
    Scanned wide(utf16le(idx));
    EXPECT_EQ(tags, tagsOf(wide.parser()));
    EXPECT_EQ(Texts(), wide.log);
}

TEST(SubtitleParserSUBIDX, EveryScanBeginsWhereTheFileDoes) {
    Scanned twice(kSecond + std::string(70000, '\n') + kFirst);
    ASSERT_LT(0, twice.parser().m_s64RawBufferPosition) << "the window has moved";
    twice.files.load(kFirst + kSecond, "");
    EXPECT_EQ(Texts({"1000@0", "2000@800"}), tagsOf(twice.parser()));
    EXPECT_EQ(0, twice.parser().m_s64RawBufferPosition);
}

TEST(SubtitleParserSUBIDX, WindowsMoveOnWhenLessThan4096BytesAreLeft) {
    const auto idxWithLineAt = [](size_t at) {
        std::string idx(at, '\n');
        idx[0] = '#';
        return idx + kFirst + "#" + std::string(70000, 'x');
    };
    const size_t step = 0x10000 - 4096;
    // The skip of line ends reaches the line in question from the first window, which the scan then stands in.
    for (const size_t at : {step - 1, step, step + 1}) {
        Scanned scanned(idxWithLineAt(at));
        EXPECT_EQ(Texts({"1000@0"}), tagsOf(scanned.parser())) << at;
        EXPECT_EQ(TRUE, scanned.parser().bParseFinish);
    }
    // A line that is longer than what is buffered is cut there; its rest is a new line.
    const std::string cut = "#" + std::string(0x10000 - 1 - 10, 'x');
    EXPECT_EQ(Texts(), tagsOf(Scanned(cut + kFirst + std::string(5000, '\n')).parser()));
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(Scanned("#" + std::string(0x10000 - 1, 'x') + kFirst + "\n").parser()));
}

// kept(vob-mark)
TEST(SubtitleParserSUBIDX, AMarkWhereAWindowBeginsCountsAsOne) {
    // The scan stands on a multiple of 4096 when the window moves: the mark is looked for again.
    const auto fill = [](size_t size) {
        std::string line = "#" + std::string(4094, 'x') + "\n";
        std::string text;
        while (text.size() < size) text += line;
        return text;
    };
    const std::string head = fill(0x10000);  // sixteen lines of 4096 bytes
    const std::string tail = fill(0x8000);
    Scanned utf8(head + "\xEF\xBB\xBF" + kFirst + kSecond + tail);
    EXPECT_EQ(Texts({"2000@800"}), tagsOf(utf8.parser()));
    EXPECT_EQ(Texts({kUnknown}), utf8.log);
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(Scanned(fill(4096) + "\xFF\xFE\n" + kFirst).parser()))
        << "the file is read whole";
    Scanned plain(head + kFirst + kSecond + tail);
    EXPECT_EQ(Texts({"1000@0", "2000@800"}), tagsOf(plain.parser()));

    // A 16-bit index goes on as 8-bit text there, when the mark is not repeated.
    const auto wide = [](size_t bytes) {
        std::string text = utf16le("#" + std::string(bytes / 2 - 3, 'x') + "\n");
        return text;  // the mark counts
    };
    const std::string wideHead = wide(0x10000 - 4096);
    EXPECT_EQ(0U, wideHead.size() % 4096);
    const std::string wideTail = utf16le("#" + std::string(10000, 'x') + "\n", false);
    Scanned forgets(wideHead + utf16le(kFirst, false) + wideTail);
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(forgets.parser())) << "exactly 4096 bytes are left: the window stays";
    const std::string further = wide(0x10000);
    Scanned native(further + kFirst + wideTail);
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(native.parser())) << "read as bytes";
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE, native.parser().m_eCodeType);
    Scanned repeated(further + utf16le(kFirst) + wideTail);
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(repeated.parser()));
    EXPECT_EQ(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, repeated.parser().m_eCodeType);
}

TEST(SubtitleParserSUBIDX, AFileShorterThanItsSizeEndsTheScan) {
    VobSubInMemory files;
    files.load(kFirst, "");
    files.parser.m_s64DataTotalSize = 1000000;
    files.parser.m_u32TagNum = 0;
    files.parser.m_vPrivateTrackInfo.clear();
    files.parser.ParserThread();
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(files.parser));
    EXPECT_EQ(Texts({"0 0-0"}), tracksOf(files.parser));
}

// As it was measured: what a file grows by meanwhile is not read.
TEST(SubtitleParserSUBIDX, LinesBehindTheSizeOfTheFileAreNotRead) {
    VobSubInMemory files;
    files.load(kFirst + kSecond, "");
    files.parser.m_s64DataTotalSize = static_cast<S64>(kFirst.size());
    files.parser.m_u32TagNum = 0;
    files.parser.ParserThread();
    EXPECT_EQ(Texts({"1000@0"}), tagsOf(files.parser));
}

TEST(SubtitleParserSUBIDX, OfWideCharacters255BytesAreRead) {
    // Each of these is two blanks when narrowed, and no white space before that.
    std::string blanks;
    for (int i = 0; i < 126; ++i) blanks += "\x20\x20";
    const auto size = [&blanks](const char* begin, const char* end) {
        return utf16le(std::string("size: ") + begin) + blanks + utf16le(end).substr(2) + utf16le("\n").substr(2);
    };
    const struct {
        std::string idx;
        U32 width, height;
    } kRows[] = {
        {size("1x", "7"), 1, 7},
        {size("1x", "76"), 1, 7},
        {size("12x", "7"), 0, 0},
    };
    for (const auto& row : kRows) {
        Scanned scanned(row.idx);
        EXPECT_EQ(row.width, scanned.parser().m_u32Width);
        EXPECT_EQ(row.height, scanned.parser().m_u32Height);
    }
}

TEST(SubtitleParserSUBIDX, OddIndexesAreScannedInLinearTime) {
    const std::string nul(300000, '\0');
    const std::string blanks(300000, ' ');
    const std::string digits(300000, '9');
    for (const std::string& idx : {nul, blanks, digits, "timestamp:" + blanks + kFirst, "timestamp: " + digits,
                                   "palette:" + digits + blanks, "id:" + nul + "\n" + kFirst, std::string(300000, '\n'),
                                   utf16le("size:" + digits), utf16be("org:" + blanks)}) {
        Scanned scanned(idx);
        EXPECT_EQ(TRUE, scanned.parser().bParseFinish);
    }
}

TEST(SubtitleParserSUBIDX, SizesWithoutAnEndAreReadOnlyAsFarAsTheyCount) {
    // Stored big-endian, a line end is no white space: each of these sizes goes on to the end of the data.
    std::string idx;
    while (idx.size() < 600000) idx += "size:\n";
    const auto cost = [](const std::string& text) {
        const clock_t began = clock();
        EXPECT_EQ(TRUE, Scanned(text).parser().bParseFinish);
        return clock() - began;
    };
    EXPECT_LT(cost(utf16be(idx)), 50 * cost(utf16le(idx)) + CLOCKS_PER_SEC / 10);
}

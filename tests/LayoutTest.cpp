// The contract with players and plug-ins in the field: sizes and offsets of everything public, the values of all
// enumerators and the order of the virtual table. A field or an operation that moves fails here.
#include <gtest/gtest.h>
#include <stddef.h>
#include <string.h>

#include <type_traits>

#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/SubtitleParser.h"
#include "subtitle/SubtitleParserSRT.h"

namespace {

using namespace android;

// ------------------------------------------------------------------------------------------ number and record

static_assert(sizeof(U8) == 1 && std::is_unsigned_v<U8>);
static_assert(sizeof(U16) == 2 && std::is_unsigned_v<U16>);
static_assert(sizeof(U32) == 4 && std::is_unsigned_v<U32>);
static_assert(sizeof(U64) == 8 && std::is_unsigned_v<U64>);
static_assert(sizeof(S16) == 2 && std::is_signed_v<S16>);
static_assert(sizeof(S32) == 4 && std::is_signed_v<S32>);
static_assert(sizeof(S64) == 8 && std::is_signed_v<S64>);
static_assert(std::is_same_v<U32, unsigned int>, "part of mangled names");
static_assert(std::is_same_v<S64, long long> && std::is_same_v<U64, unsigned long long>, "part of mangled names");
static_assert(sizeof(BOOL) == 1 && std::is_unsigned_v<BOOL> && TRUE == 1 && FALSE == 0);

#if __arm__ || __x86_64__
constexpr bool kMachineKnown = true;
#else
constexpr bool kMachineKnown = false;
#endif

constexpr size_t onThisMachine(size_t arm, size_t x86_64) { return sizeof(void*) == 4 ? arm : x86_64; }

struct Place {
    const char* name;
    size_t offset, size;                  // as compiled
    size_t expectedOffset, expectedSize;  // as players know it
};

constexpr size_t kPointer = sizeof(void*);

#define FIELD(record, field, size, arm, x86_64) \
    Place { #record "::" #field, offsetof(record, field), sizeof(record::field), onThisMachine(arm, x86_64), size }
#define WHOLE(record, arm, x86_64) \
    Place { #record, 0, sizeof(record), 0, onThisMachine(arm, x86_64) }

template <size_t N>
void expectPlaces(const Place (&places)[N]) {
    if (!kMachineKnown) GTEST_SKIP() << "the layout is pinned on 32-bit ARM and x86-64";
    for (const Place& place : places) {
        SCOPED_TRACE(place.name);
        EXPECT_EQ(place.expectedOffset, place.offset);
        EXPECT_EQ(place.expectedSize, place.size);
    }
}

TEST(Layout, Tag) {
    using Tag = ST_MEDIA_SUBTITLE_PARSER_TAG;
    expectPlaces({
        FIELD(Tag, u32TimeStart, 4, 0, 0),
        FIELD(Tag, u32TimeEnd, 4, 4, 4),
        FIELD(Tag, s64Pos, 8, 8, 8),
        FIELD(Tag, eDataType, 4, 16, 16),
        WHOLE(Tag, 24, 24),
    });
}

TEST(Layout, TrackInfo) {
    using Info = ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO;
    expectPlaces({
        FIELD(Info, eLanguage, 4, 0, 0),
        FIELD(Info, eSubtitleType, 4, 4, 4),
        FIELD(Info, eCodeType, 4, 8, 8),
        FIELD(Info, au32Palette, 1024, 12, 12),
        FIELD(Info, u32OriginX, 4, 1036, 1036),
        FIELD(Info, u32OriginY, 4, 1040, 1040),
        FIELD(Info, u32Width, 4, 1044, 1044),
        FIELD(Info, u32Height, 4, 1048, 1048),
        WHOLE(Info, 1052, 1052),
    });
}

TEST(Layout, SmallRecords) {
    using Info = ST_MEDIA_SUBTITLE_PARSER_INFO;
    using Sizes = ST_MEDIA_SUBTITLE_PARSER_BUFFER_SIZE;
    expectPlaces({
        FIELD(Info, eSubtitleType, 4, 0, 0),
        FIELD(Info, u32TrackNum, 4, 4, 4),
        FIELD(Info, u32CurrentTrackIndex, 4, 8, 8),
        WHOLE(Info, 12, 12),

        FIELD(Sizes, u32RawBufferSize, 4, 0, 0),
        FIELD(Sizes, u32SubtitleBufferSize, 4, 4, 4),
        FIELD(Sizes, u32TagBufferIncNum, 4, 8, 8),
        WHOLE(Sizes, 12, 12),

        FIELD(stSubDecoderInfo, u16Width, 2, 0, 0),
        FIELD(stSubDecoderInfo, u16Height, 2, 2, 2),
        FIELD(stSubDecoderInfo, u16X, 2, 4, 4),
        FIELD(stSubDecoderInfo, u16Y, 2, 6, 6),
        WHOLE(stSubDecoderInfo, 8, 8),

        FIELD(RGBPaletteColor, a, 1, 0, 0),
        FIELD(RGBPaletteColor, r, 1, 1, 1),
        FIELD(RGBPaletteColor, g, 1, 2, 2),
        FIELD(RGBPaletteColor, b, 1, 3, 3),
        WHOLE(RGBPaletteColor, 4, 4),
    });
}

TEST(Layout, RowsOfTables) {
    expectPlaces({
        FIELD(CharRange, first, 2, 0, 0),
        FIELD(CharRange, last, 2, 2, 2),
        WHOLE(CharRange, 4, 4),
        FIELD(GB2UnicodeTbl, u16GBcode, 2, 0, 0),
        FIELD(GB2UnicodeTbl, u16Unicode, 2, 2, 2),
        WHOLE(GB2UnicodeTbl, 4, 4),
        FIELD(Big52UnicodeTb3, u16Big5code, 2, 0, 0),
        FIELD(Big52UnicodeTb3, u16Unicode, 2, 2, 2),
        WHOLE(Big52UnicodeTb3, 4, 4),
        FIELD(Farsi2UnicodeTb2, u8Farsicode, 1, 0, 0),
        FIELD(Farsi2UnicodeTb2, u16Unicode, 2, 2, 2),
        WHOLE(Farsi2UnicodeTb2, 4, 4),
        FIELD(Spanish2UnicodeTb4, u8Spanishcode, 1, 0, 0),
        FIELD(Spanish2UnicodeTb4, u16Unicode, 2, 2, 2),
        WHOLE(Spanish2UnicodeTb4, 4, 4),
        FIELD(Hebrew2UnicodeTb5, u8Hebrewcode, 1, 0, 0),
        FIELD(Hebrew2UnicodeTb5, u16Unicode, 2, 2, 2),
        WHOLE(Hebrew2UnicodeTb5, 4, 4),
    });
}

TEST(Layout, Parser) {
    static_assert(std::is_same_v<decltype(SubtitleParser::m_s32TimeOffsetMs), S32>);
    static_assert(std::is_same_v<decltype(SubtitleParser::m_s64DataTotalSize), S64>);
    static_assert(std::is_same_v<decltype(SubtitleParser::bParseFinish), BOOL>);
    expectPlaces({
        FIELD(SubtitleParser, m_threadParser, kPointer, 4, 8),
        FIELD(SubtitleParser, m_pTagBuffer, kPointer, 8, 16),
        FIELD(SubtitleParser, m_eFlag, 4, 12, 24),
        FIELD(SubtitleParser, m_pu8SubtitleBuffer, kPointer, 16, 32),
        FIELD(SubtitleParser, m_pu8RawBuffer, kPointer, 20, 40),
        FIELD(SubtitleParser, m_u32RawBufferDataSize, 4, 24, 48),
        FIELD(SubtitleParser, m_s64RawBufferPosition, 8, 32, 56),
        FIELD(SubtitleParser, m_u32ParsedPos, 4, 40, 64),
        FIELD(SubtitleParser, m_u32RawBufferSize, 4, 44, 68),
        FIELD(SubtitleParser, m_s64DataTotalSize, 8, 48, 72),
        FIELD(SubtitleParser, m_u32TagNum, 4, 56, 80),
        FIELD(SubtitleParser, m_u32FrameRrate, 4, 60, 84),
        FIELD(SubtitleParser, m_u32TagBufferNum, 4, 64, 88),
        FIELD(SubtitleParser, m_eCodeType, 4, 68, 92),
        FIELD(SubtitleParser, m_eSubtitleType, 4, 72, 96),
        FIELD(SubtitleParser, m_u32SubtitleBufferDataSize, 4, 76, 100),
        FIELD(SubtitleParser, m_s64SubtitleBufferPosition, 8, 80, 104),
        FIELD(SubtitleParser, m_s32TimeOffsetMs, 4, 88, 112),
        FIELD(SubtitleParser, bParseFinish, 1, 92, 116),
        FIELD(SubtitleParser, m_u64NanoSecPerFrame, 8, 96, 120),
        FIELD(SubtitleParser, pFileProcess, kPointer, 104, 128),
        FIELD(SubtitleParser, m_u8TimeStampTagSizeCase, 1, 108, 136),
        WHOLE(SubtitleParser, 112, 144),
    });
}

// A class of a plug-in lays its first byte into the padding at the base's end; the library writes nothing there.
struct Plugin : SubtitleParser {
    U8 first;
};

TEST(Layout, DerivedClasses) {
    expectPlaces({
        FIELD(Plugin, first, 1, 109, 137), WHOLE(SubtitleParserSRT, 112, 144),  // adds no field
    });
}

TEST(Layout, FileSource) {
    using File = SubtitleFileProcess;
    expectPlaces({
        FIELD(File, mSourceType, 4, 0, 0),
        FIELD(File, pFileName, 512, 4, 4),
        FIELD(File, fpFile, kPointer, 516, 520),
        FIELD(File, mFd, 4, 520, 528),
        FIELD(File, mOffset, 8, 528, 536),
        FIELD(File, mLength, 8, 536, 544),
        WHOLE(File, 544, 552),
    });
}

// ---------------------------------------------------------------------------------------------- enumerators

static_assert(sizeof(EN_MEDIA_SUBTITLE_PARSER_TYPE) == 4);
static_assert(sizeof(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE) == 4);
static_assert(sizeof(EN_MEDIA_SUBTITLE_PARSER_LANGUAGE) == 4);
static_assert(sizeof(EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE) == 4);
static_assert(sizeof(EN_MEDIA_SUBTITLE_PARSER_FLAG) == 4);
static_assert(sizeof(EN_SBT_TYPE) == 4);
static_assert(sizeof(SubtitleFileProcess::FileSourceType) == 4);

struct Value {
    const char* name;
    U32 found;
    U32 expected;
};

template <size_t N>
void expectValues(const Value (&values)[N]) {
    for (const Value& value : values) EXPECT_EQ(value.expected, value.found) << value.name;
}

TEST(Enumerators, Format) {
#define VALUE(name, value) Value{#name, E_MEDIA_SUBTITLE_PARSER_TYPE_##name, value}
    expectValues({
        VALUE(SMI, 0), VALUE(SRT, 1), VALUE(SSA, 2), VALUE(SUB_VIEWER_10, 3), VALUE(SUB_VIEWER_20, 4),
        VALUE(SUB_MICRO_DVD, 5), VALUE(SUB_DVB_SUBTITLE_SYSTEM, 6), VALUE(TXT, 7), VALUE(LRC, 8), VALUE(SUBIDX, 9),
        VALUE(SUP, 10), VALUE(INTERNAL, 11), VALUE(NUM, 12), VALUE(INVALID, 12),  // count and invalid coincide
    });
#undef VALUE
}

TEST(Enumerators, CodeType) {
#define VALUE(name, value) Value{#name, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_##name, value}
    expectValues({
        VALUE(UNKNOWN, 0),
        VALUE(UNICODE, 1),
        VALUE(UNICODE_BIG, 2),
        VALUE(UTF8, 3),
        VALUE(NATIVE, 4),
        VALUE(ARGB8888, 5),
        VALUE(ARGB1555, 6),
        VALUE(ARGB4444, 7),
        VALUE(YUV422, 8),
        VALUE(I2, 9),
        VALUE(I4, 10),
        VALUE(I8, 11),
        VALUE(BIG5, 12),
        VALUE(GBK, 13),
        VALUE(NUM, 14),
        VALUE(INVALID, 14),
    });
#undef VALUE
}

TEST(Enumerators, Language) {
#define VALUE(name, value) Value{#name, E_MEDIA_SUBTITLE_PARSER_LANGUAGE_##name, value}
    expectValues({
        VALUE(UNDEFINED, 0),  VALUE(START, 1),    VALUE(GERMAN, 1),  // the first real language is the start
        VALUE(ENGLISH, 2),    VALUE(SPANISH, 3),  VALUE(GREEK, 4),    VALUE(FRENCH, 5),      VALUE(CROATIAN, 6),
        VALUE(ITALIAN, 7),    VALUE(DUTCH, 8),    VALUE(POLISH, 9),   VALUE(PORTUGUESE, 10), VALUE(RUSSIAN, 11),
        VALUE(ROMANIAN, 12),  VALUE(SWEDISH, 13), VALUE(ARABIC, 14),  VALUE(CHINESE, 15),    VALUE(JAPANESE, 16),
        VALUE(KOREAN, 17),    VALUE(FARSI, 18),   VALUE(FINNISH, 19), VALUE(NORWEGIAN, 20),  VALUE(HEBREW, 21),
        VALUE(BULGARIAN, 22), VALUE(DANISH, 23),  VALUE(HINDI, 24),   VALUE(NUM, 25),
    });
#undef VALUE
}

TEST(Enumerators, SmallOnes) {
#define VALUE(name, value) Value{#name, name, value}
    expectValues({
        VALUE(E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE, 0),
        VALUE(E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART, 1),
        VALUE(E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_NUM, 2),
        VALUE(E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_INVALID, 2),

        VALUE(E_MEDIA_SUBTITLE_PARSER_FLAG_NULL, 0),
        VALUE(E_MEDIA_SUBTITLE_PARSER_FLAG_INIT_OK, 1),
        VALUE(E_MEDIA_SUBTITLE_PARSER_FLAG_READ_RAW_BUFFER, 2),
        VALUE(E_MEDIA_SUBTITLE_PARSER_FLAG_READ_SUBTITLE_BUFFER, 4),
        VALUE(E_MEDIA_SUBTITLE_PARSER_FLAG_STOP, 8),
        VALUE(E_MEDIA_SUBTITLE_PARSER_FLAG_FINISHED, 16),

        VALUE(E_SUBTITLE_TYPE_BMP, 0),
        VALUE(E_SUBTITLE_TYPE_VOBSUB, 1),
        VALUE(E_SUBTITLE_TYPE_TS, 2),
        VALUE(E_SUBTITLE_TYPE_TTF, 3),
        VALUE(E_SUBTITLE_TYPE_NUM, 4),
        VALUE(E_SUBTITLE_TYPE_UNKNOWN, 5),

        VALUE(SubtitleFileProcess::SOURCE_TYPE_UNKNOWN, 0),
        VALUE(SubtitleFileProcess::SOURCE_TYPE_URL, 1),
        VALUE(SubtitleFileProcess::SOURCE_TYPE_FD, 2),
        VALUE(SubtitleFileProcess::SOURCE_TYPE_URL_OFFSET_LENGTH, 3),
    });
#undef VALUE
}

// --------------------------------------------------------------------------------------------- virtual table

constexpr size_t kNotVirtual = ~size_t{0};

/// Where in the virtual table a pointer to a virtual member finds its function.
template <class Member>
size_t slotOf(Member member) {
    struct {
        uintptr_t pointer, adjustment;
    } raw;
    static_assert(sizeof raw == sizeof member);
    memcpy(&raw, &member, sizeof raw);
#if __arm__ || __aarch64__
    return raw.adjustment % 2 == 1 ? raw.pointer / kPointer : kNotVirtual;  // a function's address may be odd here
#else
    return raw.pointer % 2 == 1 ? (raw.pointer - 1) / kPointer : kNotVirtual;
#endif
}

constexpr size_t kSlots = 31;

TEST(VirtualTable, KeepsItsOrder) {
    using P = SubtitleParser;
    const auto textForm = static_cast<U32 (P::*)(const U32, U8*, const U32, const U32)>(&P::GetData);
    const auto bitmapForm =
        static_cast<U32 (P::*)(const U32, U8*, const U32, const U32, stSubDecoderInfo*)>(&P::GetData);
    const auto narrow = static_cast<BOOL (P::*)(const U8*, const U32, U8*)>(&P::StrUpr);
    const auto wide = static_cast<BOOL (P::*)(const U16*, const U32, U16*)>(&P::StrUpr);
    const size_t slots[] = {
        slotOf(&P::Init),  // 2: the destructor's two entries stand first
        slotOf(&P::Deinit),
        slotOf(textForm),
        slotOf(bitmapForm),
        slotOf(&P::BeginParse),
        slotOf(&P::StopParse),
        slotOf(&P::IsUTF8Encode),
        slotOf(&P::GetTag),
        slotOf(&P::GetTagInfo),
        slotOf(&P::GetTrackInfo),
        slotOf(&P::ConvertUnicode2ASCII),
        slotOf(&P::SScanf),
        slotOf(&P::AddTag),
        slotOf(&P::GetSystemTime),
        slotOf(narrow),
        slotOf(wide),
        slotOf(&P::CheckPossibleEncodings),
        slotOf(&P::GetData2CheckPossibleEncodings),
        slotOf(&P::GBToUnicode),
        slotOf(&P::Farsi2Unicode),
        slotOf(&P::Hebrew2Unicode),
        slotOf(&P::BIG52Unicode),
        slotOf(&P::Spanish2Unicode),
        slotOf(&P::RenderSubtitle),
        slotOf(&P::GetTagNum),
        slotOf(&P::SetFrameRate),
        slotOf(&P::Refresh),
        slotOf(&P::_render),
        slotOf(&P::SetIGraphicBufferProducer),
    };
    size_t expected = 2;
    for (const size_t slot : slots) EXPECT_EQ(expected++, slot);
    EXPECT_EQ(kSlots, expected);
    EXPECT_EQ(kNotVirtual, slotOf(&P::UTF8ToUCS2));
    EXPECT_EQ(kNotVirtual, slotOf(&P::UnicodeToUTF8));
}

/// The virtual table of an object, as far as the base's operations go.
struct Table {
    explicit Table(const SubtitleParser& parser) {
        void** table;
        memcpy(&table, static_cast<const void*>(&parser), sizeof table);
        memcpy(entries, table, sizeof entries);
    }
    void* entries[kSlots];
};

TEST(VirtualTable, SrtReplacesItsDestructorBeginParseAndGetTrackInfoAlone) {
    const SubtitleParser base;
    const SubtitleParserSRT srt(nullptr);
    const Table of(base), ofSrt(srt);
    for (size_t slot = 0; slot < kSlots; ++slot) {
        const bool replaced = slot == 0 || slot == 1 || slot == 6 || slot == 11;
        EXPECT_EQ(replaced, of.entries[slot] != ofSrt.entries[slot]) << "slot " << slot;
    }
}

// The operations that a class adds keep their signatures; nothing of them is virtual.
TEST(VirtualTable, SrtAddsNoEntry) {
    EXPECT_EQ(kNotVirtual, slotOf(&SubtitleParserSRT::GetNextData));
    EXPECT_EQ(kNotVirtual, slotOf(&SubtitleParserSRT::ParserThread));
    static_assert(std::is_same_v<decltype(&SubtitleParserSRT::ParserTask), void* (*)(void*)>);
    static_assert(std::is_same_v<decltype(&SubtitleParserSRT::GetNextData),
                                 U32 (SubtitleParserSRT::*)(const U32, U8*, const U32, const U32)>);
}

}  // namespace

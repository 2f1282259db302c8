/// Every text format as the tests of all of them meet it: its parser, a file of one entry, its words and its manners.
/// The dialects of the .sub extension come from their list; one that is added there is tested without a word here.
#pragma once

#include <gtest/gtest.h>

#include <SubDialectHeaders.h>
#include <stdio.h>

#include <string>
#include <string_view>

#include "subtitle/SubtitleParserSMI.h"
#include "subtitle/SubtitleParserSRT.h"
#include "subtitle/SubtitleParserSSA.h"
#include "subtitle/SubtitleParserTXT.h"
#include "tests/support/DialectFilm.h"
#include "tests/support/Logs.h"
#include "tests/support/Parsers.h"
#include "tests/support/Texts.h"

namespace test {

/// What holds for a format that does not say otherwise. Parsers are asked at 25 frames a second.
struct OrdinaryFormat {
    static constexpr unsigned kPeriodMs = 100;   ///< between two looks for the worker's end
    static constexpr unsigned kLimitMs = 10000;  ///< of the whole wait
    static constexpr bool kStartsOnce = false;   ///< refuses a second start
    static constexpr bool kRefuses = false;      ///< files in which it does not find its like
    static constexpr bool kCountsAnew = true;    ///< no tags are left of before, even when nothing is opened
    static constexpr char kShortReader[] = "Zorb_MediaSubtitleParserSRT";  ///< who warns of a short read
    static constexpr bool kScansBigEndian = true;                          ///< knows big-endian text

    // Messages of a whole run, in this order.
    static Messages entering() { return {}; }      ///< before the file is opened
    static Messages typed(int) { return {}; }      ///< the code type, before the worker
    static Messages waiting() { return {}; }       ///< behind the worker's start
    static Messages found() { return {}; }         ///< the worker about the sample's entry, and
    static Messages foundNothing() { return {}; }  ///< about none, when the scan was complete
    static Messages leaving() { return {}; }       ///< on every way out but that without a file source
    static Messages threadless() { return {}; }    ///< no thread could be had
};

inline std::string numbered(const char* format, unsigned number) {
    char text[256];
    snprintf(text, sizeof text, format, number);
    return text;
}

struct Srt : OrdinaryFormat {
    using Parser = SubtitleParserSRT;
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SRT;
    static constexpr char kTag[] = "SubtitleParserSRT";
    static constexpr unsigned kLimitMs = 100000;
    static constexpr char kLoader[] = "Zorb_MediaSubtitleParserSRT";

    static std::string file() { return "1\r\n00:00:01,000 --> 00:00:02,000\r\nHello\r\n\r\n"; }
    static std::string entries() { return "1000-2000 @34 Hello"; }

    static Messages entering() { return {"Zorb_MediaSubtitleParserSRT::BeginParse -> Enter\n"}; }
    static Messages waiting() { return {"Zorb_MediaSubtitleParserSRT::BeginParse -> Wait...\n"}; }
    static std::string finished(U32 tags, bool) {
        return numbered("Zorb_MediaSubtitleParserSRT::ParserThread -> Finished : Tag num = %u\n", tags);
    }
    static std::string waited(bool, U32 flag) {
        return numbered("Zorb_MediaSubtitleParserSRT::BeginParse -> %08x\n", flag);
    }
    static Messages leaving() { return {"Zorb_MediaSubtitleParserSRT::BeginParse -> Exit\n"}; }
};

struct Ssa : OrdinaryFormat {
    using Parser = SubtitleParserSSA;
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SSA;
    static constexpr char kTag[] = "SubtitleParserSSA";
    static constexpr char kLoader[] = "Zorb_MediaSubtitleParserSSA";
    static constexpr char kShortReader[] = "Zorb_MediaSubtitleParserSSA";

    static std::string file() { return "Dialogue: 0,0:00:01.50,0:00:03.00,Default,,0,0,0,,Hello\r\n"; }
    static std::string entries() { return "1500-3000 @50 Hello"; }

    static Messages entering() { return {"Zorb_MediaSubtitleParserSSA::BeginParse -> Enter\n"}; }
    static Messages waiting() { return {"Zorb_MediaSubtitleParserSSA::BeginParse -> Wait...\n"}; }
    static Messages found() {  // nothing in it decides between the encodings
        Messages lines{"Zorb_MediaSubtitleParserSSA::ParserThread start to check possible encodings"};
        for (unsigned i = 0; i < 100; ++i) lines.push_back(numbered("u32CurTagEncoding[%u] = 7\n", i));
        return lines;
    }
    static std::string finished(U32 tags, bool complete) {
        return numbered("Zorb_MediaSubtitleParserSSA::ParserThread -> Finished : Tag num = %u", tags) +
               (complete ? ", 1\n" : ", 0\n");
    }
    static std::string waited(bool, U32 flag) {
        return numbered("Zorb_MediaSubtitleParserSSA::BeginParse2222222 -> %08x\n", flag);
    }
    static Messages leaving() { return {"Zorb_MediaSubtitleParserSSA::BeginParse -> Exit\n"}; }
    static Messages threadless() { return {"SubtitleParserSSA thread create failed!!\n"}; }
};

struct Smi : OrdinaryFormat {
    using Parser = SubtitleParserSMI;
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_SMI;
    static constexpr char kTag[] = "SubtitleParserSMI";
    static constexpr bool kStartsOnce = true;
    static constexpr char kLoader[] = "Zorb_MediaSubtitleParserSRT";  // other parsers' words, here and on entering

    static std::string file() { return "<SYNC Start=1000><P Class=ENCC>Hello\r\n"; }
    static std::string entries() { return "1000- @31 Hello\n"; }

    static Messages entering() { return {"Zorb_MediaSubtitleParserSSA::BeginParse -> Enter\n"}; }
    static std::string finished(U32 tags, bool) {
        return numbered("Zorb_MediaSubtitleParserSMI::ParserThread -> Finished : Tag num = %u\n", tags);
    }
    static std::string waited(bool, U32 flag) {
        return numbered("SubtitleParserSMI::BeginParse2222222 -> %08x\n", flag);
    }
};

struct Txt : OrdinaryFormat {
    using Parser = SubtitleParserTXT;
    static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_TXT;
    static constexpr char kTag[] = "SubtitleParserTXT";
    static constexpr unsigned kPeriodMs = 10;
    static constexpr bool kStartsOnce = true;
    static constexpr char kLoader[] = "Zorb_MediaSubtitleParserTXT";
    static constexpr char kShortReader[] = "Zorb_MediaSubtitleParserTXT";

    static std::string file() { return "00:00:01,1=Top\r\n00:00:01,2=Bottom\r\n00:00:03,1=\r\n00:00:03,2=\r\n"; }
    static std::string entries() { return "1000-3000 @11 Top\r\nBottom"; }

    static Messages entering() { return {"Zorb_MediaSubtitleParserTXT::BeginParse -> Enter\n"}; }
    static Messages found() { return {kRule, "Time = 1000, 3000, 0000000b\n", kRule}; }
    static Messages foundNothing() { return {kRule, kRule}; }
    static std::string finished(U32 tags, bool complete) {
        return numbered("Zorb_MediaSubtitleParserTXT::ParserThread -> Finished : Tag num = %u", tags) +
               (complete ? ", 1\n" : ", 0\n");
    }
    static std::string waited(bool, U32 flag) {
        return numbered("SubtitleParserTXT::BeginParse2222222 -> %08x\n", flag);
    }
};

/// What holds for a dialect that does not say otherwise: it begins without a word and goes on with SRT's.
struct OrdinaryDialect : OrdinaryFormat {
    static constexpr unsigned kLimitMs = 100000;
    static constexpr bool kStartsOnce = true;
    static constexpr bool kRefuses = true;
    static constexpr bool kCountsAnew = false;
    static constexpr char kLoader[] = "Zorb_MediaSubtitleParserSRT";
    static std::string waited(bool, U32 flag) {
        return numbered("Zorb_MediaSubtitleParserSRT::BeginParse2222222 -> %08x\n", flag);
    }
};

/// The words and manners of a dialect: specialized for those that are not ordinary.
template <class Parser>
struct MannersOf : OrdinaryDialect {};

template <>
struct MannersOf<SubtitleParserSubViewer20> : OrdinaryDialect {
    static constexpr bool kScansBigEndian = false;  // the file is swapped before the scan
    static std::string waited(bool finished, U32) {
        return numbered("Zorb_MediaSubtitleParserSubViewer20::bPareFinish -> %08x\n", finished ? 1 : 0);
    }
};

template <>
struct MannersOf<SubtitleParserSubMicroDVD> : OrdinaryDialect {
    static constexpr bool kStartsOnce = false;
    static constexpr char kLoader[] = "Zorb_MediaSubtitleParserSubMicroDVD";
    static Messages typed(int codeType) { return {"m_eCodeType = " + std::to_string(codeType) + " \n"}; }
    static Messages found() {
        return {"ParserThread first line::u32Frames1= 100, u32Frames2 = 150\n",
                "ParserThread::m_u64NanoSecPerFrame = 40000000, u32Frames1= 100,u32Frames2= 150,u32Time1= 4000, "
                "u32Time2 = 6000\n"};
    }
    static std::string waited(bool, U32 flag) {
        return numbered("SubtitleParserSubMicroDVD::BeginParse2222222 -> %08x\n", flag);
    }
};

template <>
struct MannersOf<SubtitleParserSubDvbSubtitleSystem> : OrdinaryDialect {
    static constexpr bool kScansBigEndian = false;
    static Messages found() { return {kRule, "Time = 4000, 6000, 00000018\n", kRule}; }
    static Messages foundNothing() { return {kRule, kRule}; }
};

/// A dialect with a file of one entry, written from its pattern; 0xE9 is not UTF-8.
template <class ParserClass>
struct DialectFormat : MannersOf<ParserClass> {
    using Parser = ParserClass;
    static std::string file(std::string_view pattern) { return dialectEntry(pattern, 4000, 6000, "H\xE9llo"); }
    static std::string entries(std::string_view pattern) {
        return "4000-6000 @" + std::to_string(file(pattern).find("H\xE9llo")) + " H\xE9llo";
    }
    static std::string finished(const std::string& tag, U32 tags, bool complete) {
        return tag + "::ParserThread -> Finished : Tag num = " + std::to_string(tags) + (complete ? ", 1\n" : ", 0\n");
    }
};

#define VX_SUB_DIALECT(name, type, target, people, pattern)                                                   \
    struct name : DialectFormat<SubtitleParser##name> {                                                       \
        using Base = DialectFormat<SubtitleParser##name>;                                                     \
        static constexpr auto kType = E_MEDIA_SUBTITLE_PARSER_TYPE_##type;                                    \
        static constexpr char kTag[] = "SubtitleParser" #name;                                                \
        static std::string file() { return Base::file(pattern); }                                             \
        static std::string entries() { return Base::entries(pattern); }                                       \
        static std::string finished(U32 tags, bool complete) { return Base::finished(kTag, tags, complete); } \
    };
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT

#define VX_SUB_DIALECT(name, ...) , name
using TextFormats = testing::Types<Srt, Ssa, Smi, Txt
#include "subtitle/parser/SubDialects.def"
                                   >;
#undef VX_SUB_DIALECT

/// Calls the suites after the formats: LifeCycle/SubtitleParserSRT.
struct FormatNames {
    template <class Format>
    static std::string GetName(int) {
        return Format::kTag;
    }
};

/// Puts `data` into `parser`, ready for its scan. The dialects' scans want to be told the encoding.
template <class Format>
void prepare(typename Format::Parser& parser, std::string_view data) {
    load(parser, data);
    parser.SetFrameRate(25);
    if (Format::kRefuses) {
        const std::string_view mark = data.substr(0, 2);
        parser.m_eCodeType = mark == "\xFF\xFE"                    ? kUtf16Le
                             : mark == "\xFE\xFF"                  ? kUtf16Be
                             : data.substr(0, 3) == "\xEF\xBB\xBF" ? kUtf8
                                                                   : kNative;
    }
}

/// The same, and scans it on this thread.
template <class Format>
void scan(typename Format::Parser& parser, std::string_view data) {
    prepare<Format>(parser, data);
    parser.ParserThread();
}

}  // namespace test

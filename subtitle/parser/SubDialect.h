/// What the dialects of the .sub extension share around their syntax: from the file over the acceptance test to the
/// scan, and one entry's text. Not installed.
#pragma once

#include "subtitle/parser/EntryText.h"
#include "subtitle/parser/TextParser.h"
#include "subtitle/text/NumberScan.h"

namespace vxsubtitle {

constexpr char kSrtLoading[] = "Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = %ld, rawbuf: %x\n";
constexpr char kSrtWaited[] = "Zorb_MediaSubtitleParserSRT::BeginParse2222222 -> %08x\n";

/// How a dialect's `BeginParse` speaks and waits: without words on the way in, before the wait and on the way out.
constexpr ParseStyle dialectStyle(const char* tag, const char* loading, const char* waited) {
    return {
        tag,
        nullptr,
        loading,
        "Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n",  // kept: the SRT wording in every dialect
        nullptr,
        nullptr,
        waited,
        nullptr,
        100000,
        100000,
        true,
        false,
    };
}

/// What an acceptance test makes of one line.
enum class Verdict { kSkip, kAccept, kRefuse };

/// An acceptance test: `judge` looks at the first character of each line, from `i` on, until it decides. The end of
/// the data refuses the file.
template <class View, class Judge>
bool acceptsLine(const View& in, size_t i, Judge judge) {
    for (i = in.skipSpace(i); in.inside(i); i = in.skipSpace(in.nextLine(i))) {
        const Verdict verdict = judge(in, i);
        if (verdict != Verdict::kSkip) return verdict == Verdict::kAccept;
    }
    return false;
}

/// A line of no interest; but a digit as its second character speaks for another dialect.
template <class View>
Verdict refuseSecondDigit(const View& in, size_t i) {
    return isDigit(in.at(i + 1)) ? Verdict::kRefuse : Verdict::kSkip;
}

/// Where the scan of marked 16-bit text begins: behind the mark. 8-bit text is scanned from its first byte.
template <class View>
constexpr size_t firstUnit(const View&) {
    return View::kWidth == 2 ? 1 : 0;  // kept: so a UTF-8 mark spoils the line that it stands on
}

/// Adds a tag for the text at `offset`. False when it could not be stored.
inline bool addTag(SubtitleParser& parser, U32 start, U32 end, S64 offset) {
    return parser.AddTag(start, end, parser.m_s64RawBufferPosition + offset, E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) !=
           FALSE;
}

/// The whole `BeginParse` of a dialect: load the file, tell its encoding by the mark, ask `accepts` on this thread, and
/// only then scan on the worker's.
template <class Parser, class Accepts>
BOOL beginDialect(Parser& parser, const ParseStyle& style, Accepts accepts) {
    joinWorkerOf(parser);  // of an earlier call
    if (parser.pFileProcess == nullptr || !openAndLoad(parser, style)) return FALSE;
    if (parser.m_pu8SubtitleBuffer == nullptr || parser.m_pTagBuffer == nullptr) return FALSE;
    parser.m_eCodeType = readMark(textOf<Bytes>(parser)).codeType;
    return accepts() ? runWorker(parser, style) : FALSE;
}

/// A worker's scan: calls `scan` with the data, if there is any, as text of the parser's encoding. False when a tag
/// could not be stored.
template <class Scan>
bool scanData(SubtitleParser& parser, Scan scan) {
    return startScan(parser) < 1 || withText(parser, scan);
}

/// A worker's end: raises the flag of a complete scan and logs `finished` with the tag count (%ld) and the flag (%d).
/// kept: after a scan that is not complete the flag stays down, so that `BeginParse` fails when its limit has passed.
void endScan(SubtitleParser& parser, bool complete, const ParseStyle& style, const char* finished);

/// The text of tag `index` as SubViewer 1.0, MicroDVD and, without big-endian text, the DVB subtitle system give it.
U32 extractLine(SubtitleParser& parser, U8* buf, U32 size, U32 index);

/// The same up to the next time stamp instead of the line's end, without a line break at its end.
U32 extractToTimeStamp(SubtitleParser& parser, U8* buf, U32 size, U32 index);

}  // namespace vxsubtitle

#include "subtitle/parser/SubDialect.h"

#include "subtitle/system/Log.h"
#include "subtitle/text/Markup.h"

namespace vxsubtitle {

void endScan(SubtitleParser& parser, bool complete, const ParseStyle& style, const char* finished) {
    if (complete) raise(parser.bParseFinish);
    VX_LOG(style.tag, finished, static_cast<long>(static_cast<S32>(parser.m_u32TagNum)),
           int{isRaised(parser.bParseFinish)});
}

namespace {

/// 8-bit text without its markup until `ends`, a 0 or the size limit. False when the text ended behind a tag, without
/// a terminating 0.
template <class Ends>
bool walkText(const SubtitleParser& parser, U32 index, TextSink<U8>& out, U32 limit, Ends ends) {
    const U32 dataSize = parser.m_u32SubtitleBufferDataSize;
    WorkText<Bytes> in(parser.m_pu8SubtitleBuffer);
    Markup<Bytes> markup(dataSize, spanOf(parser, index));
    U32 at = 0;
    while (at < dataSize && out.count() < limit && in.at(at) != 0 && !ends(in, at)) {
        if (!markup.step(in, at, out)) return false;
    }
    return true;
}

/// 16-bit text keeps its markup. Of the `copied` bytes only whole units count.
template <class Ends>
void walkText(const SubtitleParser& parser, U32 copied, TextSink<U16>& out, U32 limit, Ends ends) {
    const WorkText<Utf16Le> in(parser.m_pu8SubtitleBuffer);
    copyUntil(in, 0, copied / 2, out, limit, [&](U32 i) { return ends(in, i); });
}

/// Digit, digit, ':' three times, digit, digit at `i`.
template <class Enc>
bool atTimeStamp(const WorkText<Enc>& in, U32 i) {
    for (U32 k = 0; k < 11; ++k) {
        const auto unit = in.at(i + k);
        if (k % 3 == 2 ? unit != ':' : !isDigit(unit)) return false;
    }
    return true;
}

/// Takes a line break, of one character or two, from the end of the output.
template <class Unit>
void cutLineBreak(TextSink<Unit>& out) {
    const auto isBreak = [&](U32 fromEnd) { return out.back(fromEnd) == kCr || out.back(fromEnd) == kLf; };
    if (out.count() < 2 || !isBreak(1)) return;  // kept: a line break alone stays
    // kept: of two characters one stays, even when both are line breaks
    out.cut(out.count() - (out.count() > 2 && isBreak(2) ? 2 : 1));
}

}  // namespace

U32 extractLine(SubtitleParser& parser, U8* buf, U32 size, U32 index) {
    takeDataSize(parser);
    if (!canExtract(parser, buf, index)) return 0;
    const U32 copied = copyEntry(parser, index);
    switch (parser.m_eCodeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8:
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE: {
            TextSink<U8> out(buf, size);
            return walkText(parser, index, out, outputLimit8(size), atLineBreak<Bytes>) ? out.finish() : out.count();
        }
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE: {
            TextSink<U16> out(buf, size);
            walkText(parser, copied, out, outputLimit16(size), atLineBreak<Utf16Le>);
            return out.finish();
        }
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG:
            return copyFirstLine(WorkText<Utf16Be>(parser.m_pu8SubtitleBuffer), {buf, size}, copied / 2,
                                 outputLimit16(size));
        default:
            return 0;
    }
}

U32 extractToTimeStamp(SubtitleParser& parser, U8* buf, U32 size, U32 index) {
    takeDataSize(parser);
    if (!canExtract(parser, buf, index)) return 0;
    const U32 copied = copyEntry(parser, index);
    switch (parser.m_eCodeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8:
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE: {
            TextSink<U8> out(buf, size);
            if (!walkText(parser, index, out, outputLimit8(size), atTimeStamp<Bytes>)) return out.count();
            cutLineBreak(out);
            return out.finish();
        }
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE: {
            TextSink<U16> out(buf, size);
            const U32 limit = size >= 6 ? size / 2 - 2 : 0;  // kept: one unit more than the other extractions
            walkText(parser, copied, out, limit, atTimeStamp<Utf16Le>);
            cutLineBreak(out);
            return out.finish();
        }
        default:
            return 0;
    }
}

}  // namespace vxsubtitle

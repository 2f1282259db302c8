#include "subtitle/parser/SubDialect.h"

#include "subtitle/text/Markup.h"

namespace vxsubtitle {

namespace {

/// Where an entry's text goes, and what bounds its walk.
struct Extraction {
    SubtitleParser& parser;
    U8* buf;
    U32 size;
    U32 span;    ///< bytes up to the next entry
    U32 copied;  ///< bytes in the work buffer; of 16-bit text only whole units count

    /// 8-bit text without its markup until `ends`, a 0 or the size limit. False when the text ended behind a tag,
    /// without a terminating 0.
    template <class Ends>
    bool walk(WorkText<Bytes>& in, TextSink<U8>& out, U32 limit, Ends ends) const {
        const U32 dataSize = parser.m_u32SubtitleBufferDataSize;
        Markup<Bytes> markup(dataSize, span);
        U32 at = 0;
        while (at < dataSize && out.count() < limit && in.at(at) != 0 && !ends(in, at)) {
            if (!markup.step(in, at, out)) return false;
        }
        return true;
    }

    /// 16-bit text keeps its markup.
    template <class Ends>
    void walk(const WorkText<Utf16Le>& in, TextSink<U16>& out, U32 limit, Ends ends) const {
        copyUntil(in, 0, copied / 2, out, limit, [&](U32 i) { return ends(in, i); });
    }
};

struct Line : Extraction {
    U32 operator()(WorkText<Bytes> in) const {
        TextSink<U8> out(buf, size);
        return walk(in, out, outputLimit8(size), atLineBreak<Bytes>) ? out.finish() : out.count();
    }
    U32 operator()(WorkText<Utf16Le> in) const {
        TextSink<U16> out(buf, size);
        walk(in, out, outputLimit16(size), atLineBreak<Utf16Le>);
        return out.finish();
    }
    U32 operator()(WorkText<Utf16Be> in) const {
        return copyFirstLine(in, {buf, size}, copied / 2, outputLimit16(size));
    }
};

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

struct ToTimeStamp : Extraction {
    U32 operator()(WorkText<Bytes> in) const {
        TextSink<U8> out(buf, size);
        if (!walk(in, out, outputLimit8(size), atTimeStamp<Bytes>)) return out.count();
        cutLineBreak(out);
        return out.finish();
    }
    U32 operator()(WorkText<Utf16Le> in) const {
        TextSink<U16> out(buf, size);
        const U32 limit = size >= 6 ? size / 2 - 2 : 0;  // kept: one unit more than the other extractions
        walk(in, out, limit, atTimeStamp<Utf16Le>);
        cutLineBreak(out);
        return out.finish();
    }
    U32 operator()(WorkText<Utf16Be>) const { return 0; }
};

template <class Walk>
U32 extract(SubtitleParser& parser, U8* buf, U32 size, U32 index) {
    takeDataSize(parser);
    if (!canExtract(parser, buf, index)) return 0;
    const U32 copied = copyEntry(parser, index);
    return walkEntry(parser, kUnicodeOrNative, Walk{{parser, buf, size, spanOf(parser, index), copied}});
}

}  // namespace

U32 extractLine(SubtitleParser& parser, U8* buf, U32 size, U32 index) {
    return extract<Line>(parser, buf, size, index);
}

U32 extractToTimeStamp(SubtitleParser& parser, U8* buf, U32 size, U32 index) {
    return extract<ToTimeStamp>(parser, buf, size, index);
}

}  // namespace vxsubtitle

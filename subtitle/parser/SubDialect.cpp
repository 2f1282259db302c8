// The text of an entry in the dialects of the .sub extension: one line, or all lines up to the next time stamp.
#include "subtitle/parser/SubDialect.h"

#include "subtitle/text/Markup.h"

namespace vxsubtitle {

namespace {

/// What plain text has none of, when `Others` are not plain and `Ends` may end it.
template <class Ends, class Others>
using StopsOf = typename Ends::template Stops<Others>;

/// Where an entry's text goes, and what bounds its walk.
struct Extraction {
    SubtitleParser& parser;
    U8* buf;
    U32 size;
    U32 span;    ///< bytes up to the next entry
    U32 copied;  ///< bytes of the span in the work buffer; of 16-bit text only whole units count

    /// 8-bit text without its markup, 16-bit text with it, until `ends`, a 0 or the size limit; `trim` has the last
    /// word. A text that ends behind a tag is neither trimmed nor terminated.
    template <class Ends, class Trim>
    U32 walk(WorkText<Bytes> in, U32 limit, Ends ends, Trim trim) const {
        const U32 dataSize = parser.m_u32SubtitleBufferDataSize;
        Markup<Bytes> markup(dataSize, span);
        TextSink<U8> out(buf, size);
        U32 at = 0;
        while (copyPlain<StopsOf<Ends, Markup<Bytes>::Stops>>(in, at, dataSize, out, limit) && !ends(in, at)) {
            if (!markup.step(in, at, out)) return out.count();
        }
        trim(out);
        return out.finish();
    }
    template <class Ends, class Trim>
    U32 walk(WorkText<Utf16Le> in, U32 limit, Ends ends, Trim trim) const {
        TextSink<U16> out(buf, size);
        copyUntil<StopsOf<Ends, Stops<>>>(in, 0, copied / 2, out, limit, [&](U32 i) { return ends(in, i); });
        trim(out);
        return out.finish();
    }
};

struct AtLineBreak {
    template <class Others>
    using Stops = Others;

    template <class Enc>
    bool operator()(WorkText<Enc> in, U32 i) const {
        // kept(sv1-lf): LF alone ends no text, so in LF files the next line is part of it
        // kept(dvb-utf16): a time stamp ends none, so in LF files that of the next entry is part of it
        return atLineBreak(in, i);
    }
};

struct Line : Extraction {
    U32 operator()(WorkText<Bytes> in) const {
        return walk(in, outputLimit8(size), AtLineBreak{}, [](auto&) {});
    }
    U32 operator()(WorkText<Utf16Le> in) const {
        return walk(in, outputLimit16(size), AtLineBreak{}, [](auto&) {});
    }
    U32 operator()(WorkText<Utf16Be> in) const {
        // kept(sub-utf16be-first-line): one line, with its markup
        return copyFirstLine(in, {buf, size}, copied / 2, outputLimit16(size));
    }
};

/// Digit, digit, ':' three times, digit, digit.
struct AtTimeStamp {
    template <class Others>
    using Stops = StopsWithin<'0', '9', Others>;

    template <class Enc>
    bool operator()(WorkText<Enc> in, U32 i) const {
        for (U32 k = 0; k < 11; ++k) {
            const auto unit = in.at(i + k);
            if (k % 3 == 2 ? unit != ':' : !isDigit(unit)) return false;
        }
        return true;
    }
};

/// Takes a line break, of one character or two, from the end of the output.
struct CutLineBreak {
    template <class Unit>
    void operator()(TextSink<Unit>& out) const {
        const auto isBreak = [&](U32 fromEnd) { return out.back(fromEnd) == kCr || out.back(fromEnd) == kLf; };
        if (out.count() < 2 || !isBreak(1)) return;  // kept(dvb-five-arguments): a line break alone stays
        // kept(dvb-five-arguments): of two characters one stays, even when both are line breaks
        out.cut(out.count() - (out.count() > 2 && isBreak(2) ? 2 : 1));
    }
};

struct ToTimeStamp : Extraction {
    U32 operator()(WorkText<Bytes> in) const { return walk(in, outputLimit8(size), AtTimeStamp{}, CutLineBreak{}); }
    U32 operator()(WorkText<Utf16Le> in) const {
        const U32 limit = size >= 6 ? size / 2 - 2 : 0;  // kept(dvb-five-arguments): one unit more than others
        return walk(in, limit, AtTimeStamp{}, CutLineBreak{});
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

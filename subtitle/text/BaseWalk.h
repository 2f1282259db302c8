/// The base class's text extraction: line breaks become LF, simple markup goes, a blank line ends the text.
#pragma once

#include "subtitle/text/Markup.h"

namespace vxsubtitle {

/// One extraction: the work buffer of an entry walked from its start into the caller's buffer.
template <class Enc>
class BaseWalk {
public:
    using Unit = typename Enc::Unit;

    /// `span`: bytes up to the next entry; `sizeLimit`: output units after which the walk stops.
    BaseWalk(WorkText<Enc> work, U8* buf, U32 size, U32 span, U32 sizeLimit)
        : mIn(work), mOut(buf, size), mSpan(span), mLimit(sizeLimit) {}

    /// 8-bit text. `big5`: keep double-byte pairs whole and drop stray high bytes.
    U32 run8(bool big5);

    /// Little-endian text of at most `units` input units; a brace group ends below `braceBound`.
    U32 runLe(U32 units, U32 braceBound);

    /// Big-endian text: no markup is removed, the output is little-endian.
    U32 runBe(U32 units);

private:
    using MarkupStops = Stops<'<', '{'>;
    using Big5Stops = StopsWithin<0x80, 0xFF, MarkupStops>;

    template <class Stops>
    bool copyText(U32 bound) {
        return copyPlain<Stops>(mIn, mAt, bound, mOut, mLimit);
    }

    /// Steps past the tag at '<', if it is one: what stands behind it is text whatever it is. True when the text
    /// ends right behind the tag, with a blank line below `blankBound`.
    bool skipTag(CloseFinder<Enc>& tags, U32 blankBound) {
        const U32 close = tags.find(mIn, mAt, mSpan);
        if (close == kNone) return false;
        // kept(srt-tag-at-end-lf): the blank line of an LF file is text as well; CR LF CR LF alone is looked for
        mAt = close + 1;
        return blankLineBehind(mIn, close, blankBound);
    }

    /// Puts the unit at the walk's place out; of Big5 text a pair as a whole, and no stray high byte.
    void putCharacter(bool big5) {
        const Unit c = mIn.at(mAt);
        // kept(property-big5): bytes from 0x80 to 0xA0 go
        if (!big5 || c < 0x80) {
            mOut.put(c);  // kept(srt-entity): entities are text
        } else if (c >= 0xA1) {
            mOut.put(c);
            mOut.put(mIn.at(++mAt));  // the trail byte, whatever it is
        }
    }

    WorkText<Enc> mIn;
    TextSink<Unit> mOut;
    U32 mSpan;
    U32 mLimit;
    U32 mAt = 0;
};

template <class Enc>
U32 BaseWalk<Enc>::run8(bool big5) {
    CloseFinder<Enc> tags('>', Runs::kJoined);
    CloseFinder<Enc> braces('}');
    while (big5 ? copyText<Big5Stops>(mSpan) : copyText<MarkupStops>(mSpan)) {
        if (atLineBreak(mIn, mAt)) {
            if (endsText(mIn, mAt)) break;
            ++mAt;
            continue;
        }
        const bool markup = opensMarkup(mIn, mAt) && mAt < mSpan;
        if (markup && mIn.at(mAt) == '<') {
            if (skipTag(tags, mSpan)) return mOut.count();  // kept(text-no-terminator): none on this way out
        } else if (markup && mIn.at(mAt) == '{') {
            const U32 close = braces.find(mIn, mAt, mSpan);
            if (close != kNone && isLineEnd<Enc>(mIn.at(close + 1))) {
                closeLineAt(mIn, close, mOut);
                mAt = close;  // kept(srt-brace-at-line-end): its 0 goes out as text, and the walk goes on behind it
            } else if (close != kNone) {
                mAt = pastBraceAndTag(mIn, close, mSpan);
                if (mAt == kNone) {
                    mOut.put(0);
                    break;
                }
            }
        }
        // kept(srt-behind-markup): what stands behind a tag or a group goes out, be it the next bracket
        putCharacter(big5);
        ++mAt;
    }
    return mOut.finish();
}

template <class Enc>
U32 BaseWalk<Enc>::runLe(U32 units, U32 braceBound) {
    CloseFinder<Enc> tags('>');
    while (copyText<MarkupStops>(units)) {
        if (atLineBreak(mIn, mAt)) {
            if (endsText(mIn, mAt)) break;
            ++mAt;
            continue;
        }
        bool lineClosed = false;
        while (!lineClosed && mIn.at(mAt) == '{' && opensMarkup(mIn, mAt)) {
            // kept(srt-brace-unclosed): over lines; one that never closes takes the rest of the text
            const U32 close = findUnit(mIn, mAt + 1, braceBound, '}');
            if (close != kNone && isLineEnd<Enc>(mIn.at(close + 1))) {
                closeLineAt(mIn, close, mOut);
                mAt = close;
                lineClosed = true;
            } else {
                mAt = close == kNone ? kNone : pastBraceAndTag(mIn, close, braceBound);
            }
        }
        if (mAt == kNone) {
            mOut.put(0);
            break;
        }
        // kept(srt-utf16le-tags): one tag at a time, so every second of adjacent ones stays
        if (mIn.at(mAt) == '<' && opensMarkup(mIn, mAt) && mAt < mSpan) {
            if (skipTag(tags, kNone)) return mOut.count();  // kept(text-no-terminator): none here either
        }
        mOut.put(mIn.at(mAt++));
    }
    return mOut.finish();
}

template <class Enc>
U32 BaseWalk<Enc>::runBe(U32 units) {
    for (; copyText<Stops<>>(units); ++mAt) {  // kept(srt-utf16be-markup): markup stays in big-endian text
        if (!atCrLf(mIn, mAt)) {
            mOut.put(Enc::native(mIn.at(mAt)));
        } else if (atBlankLine(mIn, mAt) || mIn.at(mAt + 2) == Enc::lit('0')) {
            break;  // kept(srt-utf16be-zero): the digit 0 in the next line ends it too
        }
    }
    return mOut.finish();
}

}  // namespace vxsubtitle

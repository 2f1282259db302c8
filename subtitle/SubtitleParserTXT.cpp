#include "subtitle/SubtitleParserTXT.h"

#include <stdio.h>

#include "subtitle/parser/TextParser.h"
#include "subtitle/text/Markup.h"
#include "subtitle/text/TimeStamps.h"

namespace vxsubtitle {

namespace {

/// The time stamp at the start of a line. Literals of a format take any character, so "00:00:01,1=" and
/// "00:00:01.1:" are one form with four numbers; "00:00:01:" is the other, with three.
struct Stamp {
    using Long = TimeStamp<TxtSpelling>;
    static constexpr U32 kLongWidth = Long::kLength;

    U32 width = 0;  ///< characters up to the text, 0 when the line has no time stamp

    __attribute__((always_inline)) Stamp(const TextView<Bytes>& in, size_t pos) {
        if (mNumbers.readShape(in, pos) || readColumns<PointSpelling>(in, pos, mNumbers.v)) {
            width = kLongWidth;
            mShaped = true;
        } else {
            *this = other(in, pos);
        }
    }

    // kept(txt-utf16-short): 16-bit data knows the long form alone, and is looked at no further than its width
    template <class Enc>
    __attribute__((always_inline)) Stamp(const TextView<Enc>& in, size_t pos) {
        if (mNumbers.readShape(in, pos) || readColumns<PointSpelling>(in, pos, mNumbers.v)) {
            width = kLongWidth;
            mShaped = true;
        } else {
            *this = other(in, pos);
        }
    }

    bool isShort() const { return width == 8 || width == 9; }

    /// Whether the line reads as a SubRip time range.
    bool isRange(const TextView<Bytes>& in, size_t pos) const {
        if (width != kLongWidth) return false;
        if (mShaped) {
            // the '=' and two characters more count as the arrow; such a stamp has more than three behind it
            const size_t text = pos + kLongWidth;
            if (in.unit(text) > ' ' && in.unit(text + 1) > ' ' && in.unit(text + 2) > '9') return false;
            size_t i = in.skipBlanks(text) + 1;
            i = in.skipBlanks(i) + 1;
            if (!isDigit(in.at(in.skipBlanks(i)))) return false;
        }
        U32 all[8];
        return readAll(in, pos, SrtSpelling::kFormat, all);
    }
    template <class Enc>
    bool isRange(const TextView<Enc>& in, size_t pos) const {
        U32 all[8];
        return !mShaped && readAll(Narrowed<kLongWidth>(in, pos), 0, SrtSpelling::kFormat, all);
    }

    U32 time() const { return milliseconds(mNumbers.v[0], mNumbers.v[1], mNumbers.v[2]); }

private:
    struct PointSpelling {
        static constexpr char kShape[] = "00:00:00.0:";
    };
    struct TwoDigitHours {
        static constexpr char kShape[] = "00:00:00:";
    };
    struct OneDigitHours {
        static constexpr char kShape[] = "0:00:00:";
    };

    /// Reads a short stamp with text behind it that cannot be a fourth number.
    template <class Spelling>
    bool readShort(const TextView<Bytes>& in, size_t pos) {
        constexpr U32 kLength = sizeof Spelling::kShape - 1;
        U32 numbers[3];
        if (!readColumns<Spelling>(in, pos, numbers) || opensNumber(in, pos + kLength)) return false;
        memcpy(mNumbers.v, numbers, sizeof numbers);
        width = kLength;
        return true;
    }

    /// A stamp that is not of the usual shape, if it is one.
    __attribute__((noinline)) static Stamp other(const TextView<Bytes>& in, size_t pos) {
        Stamp stamp;
        if (!stamp.readShort<TwoDigitHours>(in, pos) && !stamp.readShort<OneDigitHours>(in, pos)) {
            stamp.read(in, pos, true);
        }
        return stamp;
    }
    template <class Enc>
    __attribute__((noinline)) static Stamp other(const TextView<Enc>& in, size_t pos) {
        Stamp stamp;
        stamp.read(Narrowed<kLongWidth>(in, pos), 0, false);
        return stamp;
    }

    Stamp() = default;

    /// Reads anything that answers `at(i)` in 8-bit characters.
    template <class Characters>
    void read(const Characters& in, size_t pos, bool shortForm) {
        // kept(txt-number-first): a number that opens the text is read as the fourth
        const U32 numbers = readSome(in, pos, TxtSpelling::kFormat, mNumbers.v);
        U32 all[8];
        // kept(txt-tenths): tenths of a short time are a fourth number, too
        if (numbers == 4) {
            width = kLongWidth;
        } else if (numbers == 3 && shortForm) {
            const bool leadingZero = readSome(in, pos, "0%u:%u:%u:", all) >= 3;
            width = mNumbers.v[0] < 10 && !leadingZero ? 8 : 9;
        }
    }

    Long mNumbers = {};
    bool mShaped = false;  ///< has just the usual characters
};

template <class Enc>
class PairScan {
public:
    PairScan(SubtitleParser& parser, const TextView<Enc>& in)
        : mParser(parser), mIn(in), mShortWidth(parser.m_u8TimeStampTagSizeCase) {}

    /// False when a tag could not be stored.
    bool run(size_t i) {
        while (mIn.inside(i)) {
            i = mIn.skipSpace(i);
            const Stamp start(mIn, i);
            // kept(txt-empty-first-line): an empty first line reads as a range with the second, and opens nothing
            if (start.width == 0 || start.isRange(mIn, i)) {
                i = mIn.nextLine(i);
                continue;
            }
            if (start.isShort() && mShortWidth == 0) mShortWidth = static_cast<U8>(start.width);
            const size_t text = i + start.width;
            i = mIn.skipSpace(nextEntry(mIn.nextLine(text)));
            const Stamp end(mIn, i);
            if (end.width == 0) continue;  // kept(txt-broken-line): not a closing line, it may open an entry
            if (!add(start, end, text)) return false;
            // kept(txt-no-closing-lines): a closing line opens none
            if (mShortWidth != 0) {
                i = mIn.nextLineSoon(i + mShortWidth);
            } else {
                i = mIn.template nextLineBehind<Stamp::kLongWidth>(mIn.nextLineSoon(i + Stamp::kLongWidth));
            }
        }
        return true;
    }

private:
    /// From behind a time stamp's line past the second line of two.
    size_t nextEntry(size_t i) const {
        // kept(txt-second-line-missing): the second line is stepped over unseen
        return mShortWidth != 0 ? i : mIn.nextLine(i);
    }

    bool add(const Stamp& start, const Stamp& end, size_t text) {
        return addTag(mParser, start.time(), end.time(), mIn.byteOffset(text));
    }

    SubtitleParser& mParser;
    const TextView<Enc>& mIn;
    U8& mShortWidth;  // kept(txt-one-width): the first short stamp's width stays for the whole scan
};

struct Scan {
    template <class View>
    bool operator()(SubtitleParser& parser, const View& in, size_t i) const {
        return PairScan(parser, in).run(i);
    }
};

/// Cuts at most two line-end characters from the end of the text.
template <class Unit>
void cutLineEnd(TextSink<Unit>& out) {
    for (int i = 0; i < 2 && (out.back(1) == kCr || out.back(1) == kLf); ++i) out.cut(out.count() - 1);
}

/// 8-bit text of one line or two. From `dataSize` on everything is text.
U32 extract8(WorkText<Bytes> in, TextSink<U8> out, U32 size, U32 dataSize, bool twoLines) {
    Markup<Bytes> markup(dataSize, dataSize);
    U32 at = 0;
    bool endedAtZero = false;
    // False when the text ends without a terminating 0.
    const auto line = [&](U32 limit) {
        while (copyPlain<Stops<'|', '{', '<'>>(in, at, in.units(), out, limit) || out.count() < limit) {
            const U8 c = in.at(at);
            endedAtZero = c == 0;
            if (c == 0 || atCrLf(in, at)) {  // kept(txt-lf): CR LF alone ends a line
                out.put(c);
                out.put(in.at(at + 1));  // behind a 0, whatever it is
                at += 2;
                return true;
            }
            if (c == '|') {  // kept(txt-bar): in 8-bit text alone
                out.put(kCr);
                out.put(kLf);
                ++at;
            } else if (!markup.step(in, at, out)) {
                return false;
            }
        }
        return true;
    };
    for (int i = 0; i < (twoLines ? 2 : 1); ++i) {
        if (i != 0) at += Stamp::kLongWidth;
        if (!line(i != 0 ? outputLimit8(size) : size > 3 ? size - 3 : 0)) return out.count();
    }
    if (!endedAtZero) cutLineEnd(out);
    return out.finish();
}

/// 16-bit text of two lines, markup kept.
template <class Enc>
U32 extract16(WorkText<Enc> in, TextSink<U16> out, U32 limit) {
    const auto line = [&](U32 at) {
        at = copyUntil<Stops<>>(in, at, in.kUnits, out, limit, [&in](U32 i) { return atCrLf(in, i); });
        if (out.count() < limit && atCrLf(in, at)) {
            out.put(kCr);
            out.put(kLf);
        }
    };
    line(0);
    line(out.count() + Stamp::kLongWidth);  // kept(txt-utf16-two-lines): always, also without a second line
    if (!Enc::kBigEndian) {
        cutLineEnd(out);
    } else if (out.back(2) == kCr && out.back(1) == kLf) {
        out.cut(out.count() - 2);
    }
    return out.finish();
}

/// The text of one entry.
struct Extraction {
    U8* buf;
    U32 size;
    U32 dataSize;  ///< of the file, bytes
    bool oneLine;

    U32 operator()(WorkText<Bytes> in) const { return extract8(in, {buf, size}, size, dataSize, !oneLine); }
    template <class Enc>
    U32 operator()(WorkText<Enc> in) const {
        return extract16(in, {buf, size}, outputLimit16(size));
    }
};

// kept(txt-utf8-mark): UTF-8 is missing, so a file with that mark has entries without text
constexpr CodeTypes kRead{
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE,
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE,
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG,
};

}  // namespace

template <>
const TextFormat& formatOf<SubtitleParserTXT>() {
    static constexpr TextFormat kFormat{
        .type = E_MEDIA_SUBTITLE_PARSER_TYPE_TXT,
        .worker = {.tag = "SubtitleParserTXT",
                   .waited = "SubtitleParserTXT::BeginParse2222222 -> %08x\n",
                   .limitMs = 10000,
                   .periodUs = 10000},
        .enter = "Zorb_MediaSubtitleParserTXT::BeginParse -> Enter\n",
        .loading = "Zorb_MediaSubtitleParserTXT::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
        .shortRead = "Zorb_MediaSubtitleParserTXT Warning, Read data < Requied Data\n",
        .finished = "Zorb_MediaSubtitleParserTXT::ParserThread -> Finished : Tag num = %ld, %d\n",
        .logsTable = true,
        .scan = scanWith<Scan>,
    };
    return kFormat;
}

}  // namespace vxsubtitle

namespace android {

using namespace vxsubtitle;

VX_DEFINE_TEXT_PARSER(SubtitleParserTXT, U8)

void* SubtitleParserTXT::ParserTask(void* parser) {
    const char name[16] = "";
    printf("Thread name: %s.\n", name);  // kept(txt-stdout): on standard output, and the name is never filled in
    static_cast<SubtitleParserTXT*>(parser)->ParserThread();
    return nullptr;
}

void SubtitleParserTXT::ParserThread() {
    m_u8TimeStampTagSizeCase = 0;
    runScan(*this, formatOf<SubtitleParserTXT>());
}

U32 SubtitleParserTXT::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    if (!canExtract(*this, buf, index)) return 0;
    takeDataSize(*this);
    copyEntry(*this, index);
    const bool oneLine = m_u8TimeStampTagSizeCase == 8 || m_u8TimeStampTagSizeCase == 9;
    return walkEntry(*this, kRead, Extraction{buf, size, m_u32RawBufferDataSize, oneLine});
}

}  // namespace android

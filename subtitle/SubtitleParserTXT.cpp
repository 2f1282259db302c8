#include "subtitle/SubtitleParserTXT.h"

#include <stdio.h>

#include "subtitle/parser/EntryText.h"
#include "subtitle/parser/TextParser.h"
#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/system/Log.h"
#include "subtitle/text/NumberScan.h"
#include "subtitle/text/Markup.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr ParseStyle kStyle{
    "SubtitleParserTXT",
    "Zorb_MediaSubtitleParserTXT::BeginParse -> Enter\n",
    "Zorb_MediaSubtitleParserTXT::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
    "Zorb_MediaSubtitleParserTXT Warning, Read data < Requied Data\n",
    nullptr,
    nullptr,
    "SubtitleParserTXT::BeginParse2222222 -> %08x\n",
    nullptr,
    10000,
    10000,
    true,
    false,
};

constexpr U32 kLongWidth = 11;  // 00:00:01,1= or 00:00:01.1:

/// The time stamp at the start of a line. Literals of a format take any character, so "00:00:01,1=" and
/// "00:00:01.1:" are one form with four numbers; "00:00:01:" is the other, with three.
struct Stamp {
    U32 v[4] = {};
    U32 width = 0;       ///< characters up to the text, 0 when the line has no time stamp
    bool range = false;  ///< the line reads as a SubRip time range

    Stamp(const TextView<Bytes>& in, size_t pos) {
        U32 end[4];
        if (scanColumns(in, pos, "00:00:00,0=", v)) {
            width = kLongWidth;
            range = scanAll(in, pos + kLongWidth - 1, "-->%u:%u:%u,%u", end);  // the rest of a range's format
        } else {
            scan(in, pos, true);
        }
    }

    /// 16-bit text knows the long form alone, and looks no further than its width.
    template <class Enc>
    Stamp(const TextView<Enc>& in, size_t pos) {
        if (scanColumns(in, pos, "00:00:00,0=", v)) {
            width = kLongWidth;
        } else {
            scan(NarrowText<kLongWidth>(in, pos), 0, false);
        }
    }

    bool isShort() const { return width == 8 || width == 9; }
    U32 time() const { return milliseconds(v[0], v[1], v[2]); }

private:
    /// Reads anything that answers `at(i)` in 8-bit characters.
    template <class Text>
    void scan(const Text& in, size_t pos, bool shortForm) {
        const U32 numbers = scanSome(in, pos, "%u:%u:%u,%u=", v);
        U32 all[8];
        if (numbers == 4) {
            width = kLongWidth;
            range = scanAll(in, pos, "%u:%u:%u,%u --> %u:%u:%u,%u", all);
        } else if (numbers == 3 && shortForm) {
            const bool leadingZero = scanSome(in, pos, "0%u:%u:%u:", all) >= 3;
            width = v[0] < 10 && !leadingZero ? 8 : 9;
        }
    }
};

template <class Enc>
class Scan {
public:
    Scan(SubtitleParserTXT& parser, const TextView<Enc>& in)
        : mParser(parser), mIn(in), mShortWidth(parser.m_u8TimeStampTagSizeCase) {}

    /// False when a tag could not be stored.
    bool run(size_t i) {
        while (mIn.inside(i)) {
            i = mIn.skipSpace(i);
            const Stamp start(mIn, i);
            if (start.width == 0 || start.range) {
                i = mIn.nextLine(i);
                continue;
            }
            if (start.isShort() && mShortWidth == 0) mShortWidth = static_cast<U8>(start.width);
            const size_t text = i + start.width;
            i = mIn.skipSpace(nextEntry(text));
            const Stamp end(mIn, i);
            if (end.width == 0) continue;  // not a closing line: it may open an entry
            if (!add(start, end, text)) return false;
            i = nextEntry(i + (mShortWidth != 0 ? mShortWidth : kLongWidth));  // kept: a closing line opens none
        }
        return true;
    }

private:
    /// From behind a time stamp past its line, and past the second line of two.
    size_t nextEntry(size_t i) const {
        i = mIn.nextLine(i);
        return mShortWidth != 0 ? i : mIn.nextLine(i);
    }

    bool add(const Stamp& start, const Stamp& end, size_t text) {
        return mParser.AddTag(start.time(), end.time(),
                              mParser.m_s64RawBufferPosition + TextView<Enc>::byteOffset(text),
                              E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) != FALSE;
    }

    SubtitleParserTXT& mParser;
    const TextView<Enc>& mIn;
    U8& mShortWidth;  // kept: the first short stamp's width stays for the whole scan
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
        while (out.count() < limit) {
            const U8 c = in.at(at);
            endedAtZero = c == 0;
            if (c == 0 || atCrLf(in, at)) {
                out.put(c);
                out.put(in.at(at + 1));  // kept: behind a 0, whatever it is
                at += 2;
                return true;
            }
            if (c == '|') {
                out.put(kCr);
                out.put(kLf);
                ++at;
            } else if (!markup.step(in, at, out)) {
                return false;
            }
        }
        return true;
    };
    if (!line(size > 3 ? size - 3 : 0)) return out.count();
    if (twoLines) {
        at += kLongWidth;
        if (!line(outputLimit8(size))) return out.count();
    }
    if (!endedAtZero) cutLineEnd(out);
    return out.finish();
}

/// 16-bit text of two lines, markup kept.
template <class Enc>
U32 extract16(WorkText<Enc> in, TextSink<U16> out, U32 limit) {
    const auto line = [&](U32 at) {
        at = copyUntil(in, at, in.kUnits, out, limit, [&in](U32 i) { return atCrLf(in, i); });
        if (out.count() < limit && atCrLf(in, at)) {
            out.put(kCr);
            out.put(kLf);
        }
    };
    line(0);
    line(out.count() + kLongWidth);  // kept: always, also without a second line
    if (Enc::lit('\n') == kLf) {
        cutLineEnd(out);
    } else if (out.back(2) == kCr && out.back(1) == kLf) {
        out.cut(out.count() - 2);
    }
    return out.finish();
}

}  // namespace

SubtitleParserTXT::SubtitleParserTXT(U8* path) { pFileProcess = new SubtitleFileProcess(path); }

SubtitleParserTXT::SubtitleParserTXT(int fd, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(fd, offset, length);
}

SubtitleParserTXT::~SubtitleParserTXT() { releaseFile(*this); }

BOOL SubtitleParserTXT::BeginParse() { return beginParse(*this, kStyle); }

BOOL SubtitleParserTXT::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return describeTrack(*this, E_MEDIA_SUBTITLE_PARSER_TYPE_TXT, info);
}

void* SubtitleParserTXT::ParserTask(void* parser) {
    const char name[16] = "";
    printf("Thread name: %s.\n", name);  // kept: on standard output, and the name is never filled in
    static_cast<SubtitleParserTXT*>(parser)->ParserThread();
    return nullptr;
}

void SubtitleParserTXT::ParserThread() {
    m_u8TimeStampTagSizeCase = 0;
    const bool complete =
        scanFile(*this, [this](const auto& in, size_t firstUnit) { return Scan(*this, in).run(firstUnit); });
    if (complete) {
        logTags(*this, kStyle);
        raise(bParseFinish);
    }
    VX_LOG(kStyle.tag, "Zorb_MediaSubtitleParserTXT::ParserThread -> Finished : Tag num = %ld, %d\n",
           static_cast<long>(static_cast<S32>(m_u32TagNum)), int{isRaised(bParseFinish)});
}

U32 SubtitleParserTXT::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    if (!canExtract(*this, buf, index)) return 0;
    takeDataSize(*this);
    copyEntry(*this, index);
    U8* const work = m_pu8SubtitleBuffer;
    switch (m_eCodeType) {
        // kept: UTF-8 is missing, so a file with that mark has entries without text
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE: {
            const bool oneLine = m_u8TimeStampTagSizeCase == 8 || m_u8TimeStampTagSizeCase == 9;
            return extract8(WorkText<Bytes>(work), {buf, size}, size, m_u32RawBufferDataSize, !oneLine);
        }
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE:
            return extract16(WorkText<Utf16Le>(work), {buf, size}, outputLimit16(size));
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG:
            return extract16(WorkText<Utf16Be>(work), {buf, size}, outputLimit16(size));
        default:
            return 0;
    }
}

}  // namespace android

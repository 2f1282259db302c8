#include "subtitle/SubtitleParserSMI.h"

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
    "SubtitleParserSMI",
    "Zorb_MediaSubtitleParserSSA::BeginParse -> Enter\n",  // kept: the SSA wording
    // kept: the SRT wording, twice
    "Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
    "Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n",
    nullptr,
    nullptr,
    "SubtitleParserSMI::BeginParse2222222 -> %08x\n",
    nullptr,
    10000,
    100000,
    true,
    false,
};

constexpr char kSync[] = "<SYNC START=";
constexpr size_t kSyncLength = sizeof kSync - 1;
constexpr U32 kStartUnits = 10;  // what 16-bit text is narrowed of a Start value

template <class Enc>
class Scan {
public:
    Scan(SubtitleParserSMI& parser, const TextView<Enc>& in) : mParser(parser), mIn(in) {}

    /// False when a tag could not be stored.
    bool run(size_t i) {
        while (mIn.inside(i)) {
            i = mIn.skipSpace(i);
            if (atKeyword(mIn, i, kSync)) {
                const size_t digit = mIn.find(i + kSyncLength, [](auto unit) { return isDigit(Enc::native(unit)); });
                i = digit;
                U32 start[1];
                if (readStart(digit, start)) {
                    // kept: two elements are stepped over, whatever they are and however far the second is
                    i = behindElement(behindElement(digit + 1));
                    if (!add(start[0], i)) return false;
                }
            }
            i = mIn.nextLine(i);
        }
        return true;
    }

private:
    static constexpr bool k8Bit = sizeof(typename Enc::Unit) == 1;

    bool readStart(size_t digit, U32 (&start)[1]) const {
        if constexpr (k8Bit) {
            return scanAll(mIn, digit, "%u", start);
        } else {
            return scanAll(NarrowText<kStartUnits>(mIn, digit), 0, "%u", start);
        }
    }

    /// Behind the first '>' at or after `i`; past the last whole unit when there is none.
    size_t behindElement(size_t i) const { return mIn.findUnit(i, Enc::lit('>')) + 1; }

    bool add(U32 start, size_t text) {
        // kept: a '>' that ends the data makes an empty entry in 16-bit text, none in 8-bit text
        if (text > mIn.wholeUnits() || (k8Bit && text == mIn.wholeUnits())) return true;
        // kept: one line-end byte only, so behind CR LF the text begins with LF; none in 16-bit text
        if (k8Bit && isLineEnd<Enc>(mIn.at(text))) ++text;
        return mParser.AddTag(start, 0xFFFFFFFF, mParser.m_s64RawBufferPosition + TextView<Enc>::byteOffset(text),
                              E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) != FALSE;
    }

    SubtitleParserSMI& mParser;
    const TextView<Enc>& mIn;
};

/// Whether the line break at `i` (see `atLineBreak`) stands in front of the next entry.
template <class Enc>
bool endsEntry(const WorkText<Enc>& in, U32 i) {
    return atWord(in, i + 2, "<SYNC");  // kept: in capitals alone
}

/// 8-bit text. From `dataSize` on everything is text.
U32 extract8(WorkText<Bytes> in, TextSink<U8> out, U32 bound, U32 limit, U32 dataSize) {
    CloseFinder<Bytes> tags('>', Runs::kJoined, Zeros::kEndSearch);
    U32 at = 0;
    const auto is = [&](char c) { return at < dataSize && in.at(at) == Bytes::lit(c); };
    while (at < bound && out.count() < limit && in.at(at) != 0) {
        if (atLineBreak(in, at)) {
            if (endsEntry(in, at)) break;
            ++at;
            continue;
        }
        if (is('{')) {
            at = pastBlock(in, at, dataSize, out);
            continue;
        }
        if (is('&') && atWord(in, at + 1, "nbsp")) {
            // kept: the byte behind the entity goes with it, whatever it is
            if (at + 5 < in.kUnits) out.put(' ');
            at += 6;
            continue;
        }
        if (is('<') && atWord(in, at, "<br>")) {
            if (isLineEnd<Bytes>(in.at(at + 4))) at += 4;  // kept: inside a line the element stays as written
        } else if (is('<')) {
            const U32 close = tags.find(in, at, dataSize);
            if (close != kNone && isLineEnd<Bytes>(in.at(close + 1))) {
                closeLineAt(in, close, out);  // kept: the element goes out as text, behind the 0
            } else if (close != kNone) {
                at = close + 1;  // kept: what stands behind an element is text, be it a line end or a 0
            }
        }
        out.put(in.at(at++));
    }
    return out.finish();
}

/// Little-endian text.
U32 extractLe(WorkText<Utf16Le> in, TextSink<U16> out, U32 units, U32 limit) {
    for (U32 at = 0; at < units && out.count() < limit && in.at(at) != 0; ++at) {
        if (!atLineBreak(in, at)) {
            out.put(in.at(at));
        } else if (endsEntry(in, at)) {
            break;
        }
    }
    return out.finish();
}

}  // namespace

SubtitleParserSMI::SubtitleParserSMI(U8* path) { pFileProcess = new SubtitleFileProcess(path); }

SubtitleParserSMI::SubtitleParserSMI(int fd, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(fd, offset, length);
}

SubtitleParserSMI::~SubtitleParserSMI() { releaseFile(*this); }

BOOL SubtitleParserSMI::BeginParse() { return beginParse(*this, kStyle); }

BOOL SubtitleParserSMI::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return describeTrack(*this, E_MEDIA_SUBTITLE_PARSER_TYPE_SMI, info);
}

void* SubtitleParserSMI::ParserTask(void* parser) {
    static_cast<SubtitleParserSMI*>(parser)->ParserThread();
    return nullptr;
}

void SubtitleParserSMI::ParserThread() {
    const bool complete =
        scanFile(*this, [this](const auto& in, size_t firstUnit) { return Scan(*this, in).run(firstUnit); });
    if (complete) raise(bParseFinish);
    VX_LOG(kStyle.tag, "Zorb_MediaSubtitleParserSMI::ParserThread -> Finished : Tag num = %ld\n",
           static_cast<long>(static_cast<S32>(m_u32TagNum)));
}

U32 SubtitleParserSMI::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    takeDataSize(*this);
    if (!canExtract(*this, buf, index)) return 0;
    copyEntry(*this, index);
    const U32 bytes = m_u32SubtitleBufferDataSize;
    U8* const work = m_pu8SubtitleBuffer;
    switch (m_eCodeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8:
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE:
            return extract8(WorkText<Bytes>(work), {buf, size}, bytes, outputLimit8(size), m_u32RawBufferDataSize);
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE:
            return extractLe(WorkText<Utf16Le>(work), {buf, size}, bytes / 2, outputLimit16(size));
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG:
            return copyFirstLine(WorkText<Utf16Be>(work), {buf, size}, bytes / 2, outputLimit16(size));
        default:
            return 0;
    }
}

}  // namespace android

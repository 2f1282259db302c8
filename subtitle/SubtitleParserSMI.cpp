#include "subtitle/SubtitleParserSMI.h"

#include "subtitle/parser/TextParser.h"
#include "subtitle/text/Markup.h"
#include "subtitle/text/Numbers.h"

namespace vxsubtitle {

namespace {

constexpr char kSync[] = "<SYNC START=";  // kept(smi-sync-form): one blank, none around the equals sign
constexpr size_t kSyncLength = sizeof kSync - 1;
struct UsualStart {
    static constexpr char kForm[] = "#>";
};
constexpr U32 kStartUnits = 10;  // what 16-bit data is narrowed of a Start value

template <class Enc>
class SyncScan {
public:
    SyncScan(SubtitleParser& parser, const TextView<Enc>& in) : mParser(parser), mIn(in) {}

    /// False when a tag could not be stored.
    bool run(size_t i) {
        for (size_t ahead; mIn.inside(i); i = mIn.nextLine(i, ahead)) {
            i = mIn.skipSpace(i);  // kept(smi-be-indented): a big-endian blank is no white space
            ahead = 0;
            if (atKeyword<kSync>(mIn, i)) {  // kept(smi-sync-not-at-line-start): first on its line or not at all
                // kept(smi-negative): whatever stands in front of the first digit, be it a minus sign
                const size_t digit = mIn.find(i + kSyncLength, [](auto unit) { return isDigit(Enc::native(unit)); });
                i = digit;
                U32 start[1];
                ahead = mIn.lineAhead(digit);
                if (readStart(digit, start)) {
                    // kept(smi-no-p): two elements are stepped over, whatever they are and however far the second is
                    i = behindElements(digit + 1);
                    if (!add(start[0], i)) return false;  // kept(smi-languages): into the one track, whatever the class
                }
            }
            // kept(smi-skipped-sync-text): what is no entry is text of the one before
        }
        return true;
    }

private:
    static constexpr bool k8Bit = sizeof(typename Enc::Unit) == 1;

    bool readStart(size_t digit, U32 (&start)[1]) const {
        const size_t usual = readForm<UsualStart>(mIn, digit, start);
        if (usual != 0 && (k8Bit || usual <= kStartUnits)) return true;
        U32 other[1];  // not the one that the usual form keeps in a register
        const bool isRead = readNarrowed<kStartUnits>(mIn, digit, "%u", other);
        start[0] = other[0];
        return isRead;
    }

    /// Behind the second '>' at or after `i`; past the last whole unit when there are not two.
    size_t behindElements(size_t i) const {
        if (const size_t near = mIn.behindNear(i, Enc::lit('>'), 2)) return near;
        return mIn.findUnit(mIn.findUnit(i, Enc::lit('>')) + 1, Enc::lit('>')) + 1;
    }

    bool add(U32 start, size_t text) {
        // kept(smi-last-element): a '>' that ends the data makes an empty entry of 16-bit data, none of 8-bit data
        if (text > mIn.wholeUnits() || (k8Bit && text == mIn.wholeUnits())) return true;
        // kept(smi-leading-break): one line-end byte only, so behind CR LF the text begins with LF; none of 16-bit data
        if (k8Bit && isLineEnd<Enc>(mIn.at(text))) ++text;
        return addTag(mParser, start, 0xFFFFFFFF, mIn.byteOffset(text));
    }

    SubtitleParser& mParser;
    const TextView<Enc>& mIn;
};

struct Scan {
    template <class View>
    bool operator()(SubtitleParser& parser, const View& in, size_t i) const {
        return SyncScan(parser, in).run(i);
    }
};

/// Whether the line break at `i` (see `atLineBreak`) stands in front of the next entry.
template <class Enc>
bool endsEntry(WorkText<Enc> in, U32 i) {
    return atWord(in, i + 2, "<SYNC");  // kept(smi-trailing-break): in capitals alone, and nothing in front of it
}

/// 8-bit text. From `dataSize` on everything is text.
U32 extract8(WorkText<Bytes> in, TextSink<U8> out, U32 bound, U32 limit, U32 dataSize) {
    CloseFinder<Bytes> tags('>', Runs::kJoined, Zeros::kEndSearch);
    U32 at = 0;
    while (copyPlain<Stops<'{', '&', '<'>>(in, at, bound, out, limit)) {
        if (atLineBreak(in, at)) {
            if (endsEntry(in, at)) break;
            ++at;
            continue;
        }
        const U8 opening = at < dataSize ? in.at(at) : U8{0};
        if (opening == '{') {
            at = pastBlock(in, at, dataSize, out);
            continue;
        }
        if (opening == '&' && atWord(in, at + 1, "nbsp")) {  // kept(smi-entity): the one entity that is read
            // kept(smi-nbsp): the byte behind the entity goes with it, whatever it is
            if (at + 5 < in.kUnits) out.put(' ');
            at += 6;
            continue;
        }
        // kept(smi-br-at-line-end): in small letters alone; any other spelling is an element like others
        if (opening == '<' && atWord(in, at, "<br>")) {
            // kept(smi-br-inline): inside a line the element stays as written
            if (isLineEnd<Bytes>(in.at(at + 4))) at += 4;
        } else if (opening == '<') {
            const U32 close = tags.find(in, at, dataSize);
            if (close != kNone && isLineEnd<Bytes>(in.at(close + 1))) {
                closeLineAt(in, close, out);  // kept(smi-element-at-line-end): it goes out as text, behind the 0
            } else if (close != kNone) {
                // kept(smi-behind-element): what stands behind an element is text, be it a line end or a 0
                at = close + 1;
            }
        }
        out.put(in.at(at++));
    }
    return out.finish();
}

/// Little-endian text.
U32 extractLe(WorkText<Utf16Le> in, TextSink<U16> out, U32 units, U32 limit) {
    // kept(smi-utf16-markup): markup and entities stay
    for (U32 at = 0; copyPlain<Stops<>>(in, at, units, out, limit); ++at) {
        if (!atLineBreak(in, at)) {
            out.put(in.at(at));
        } else if (endsEntry(in, at)) {
            break;
        }
    }
    return out.finish();
}

/// The text of one SYNC element.
struct Extraction {
    U8* buf;
    U32 size;
    U32 bytes;     ///< bounds the walk, in units of 16-bit text by half of it
    U32 dataSize;  ///< of the file, bytes

    U32 operator()(WorkText<Bytes> in) const { return extract8(in, {buf, size}, bytes, outputLimit8(size), dataSize); }
    U32 operator()(WorkText<Utf16Le> in) const { return extractLe(in, {buf, size}, bytes / 2, outputLimit16(size)); }
    U32 operator()(WorkText<Utf16Be> in) const {
        // kept(smi-utf16be-first-line): one line
        return copyFirstLine(in, {buf, size}, bytes / 2, outputLimit16(size));
    }
};

}  // namespace

template <>
const TextFormat& formatOf<SubtitleParserSMI>() {
    static constexpr TextFormat kFormat{
        .type = E_MEDIA_SUBTITLE_PARSER_TYPE_SMI,
        .worker = {.tag = "SubtitleParserSMI",
                   .waited = "SubtitleParserSMI::BeginParse2222222 -> %08x\n",
                   .limitMs = 10000},
        .enter = "Zorb_MediaSubtitleParserSSA::BeginParse -> Enter\n",  // the SSA wording
        // the SRT wording, twice
        .loading = "Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
        .shortRead = "Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n",
        .finished = "Zorb_MediaSubtitleParserSMI::ParserThread -> Finished : Tag num = %ld\n",
        .scan = scanWith<Scan>,
    };
    return kFormat;
}

}  // namespace vxsubtitle

namespace android {

using namespace vxsubtitle;

VX_DEFINE_TEXT_PARSER(SubtitleParserSMI, U8)
VX_DEFINE_SCAN(SubtitleParserSMI)

U32 SubtitleParserSMI::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    takeDataSize(*this);
    if (!canExtract(*this, buf, index)) return 0;
    copyEntry(*this, index);
    return walkEntry(*this, kUnicodeOrNative,
                     Extraction{buf, size, m_u32SubtitleBufferDataSize, m_u32RawBufferDataSize});
}

}  // namespace android

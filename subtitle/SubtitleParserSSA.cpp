#include "subtitle/SubtitleParserSSA.h"

#include "subtitle/parser/EncodingCheck.h"
#include "subtitle/parser/TextParser.h"
#include "subtitle/system/Wraps.h"
#include "subtitle/text/Markup.h"
#include "subtitle/text/TimeStamps.h"

namespace vxsubtitle {

namespace {

constexpr char kTag[] = "SubtitleParserSSA";

constexpr char kDialogue[] = "DIALOGUE:";
constexpr size_t kDialogueLength = sizeof kDialogue - 1;
constexpr U32 kFieldsBeforeText = 6;  // Style, Name, three margins, Effect

/// The fields Start and End.
struct Times : TimeStamp<SsaSpelling> {
    // kept(ssa-time-width): with the comma behind, however long they are
    static constexpr size_t kSkipped = kLength + 1;

    // kept(ssa-fraction): the fraction counts hundredths, however many digits it has
    VX_WRAPS U32 start() const { return milliseconds(v[0], v[1], v[2], v[3] * 10); }
    VX_WRAPS U32 end() const { return milliseconds(v[4], v[5], v[6], v[7] * 10); }
};

/// The commas of the data, asked for in ascending order: each stretch is searched once, however many lines ask.
template <class Enc>
class Commas {
public:
    explicit Commas(const TextView<Enc>& in) : mIn(in) {}

    /// Behind the first comma at or after `from`; past the last whole unit when there is none.
    size_t behind(size_t from) {
        if (const size_t soon = mIn.behindSoon(from, Enc::lit(','))) return soon;
        if (mAt < from) mAt = mIn.findUnit(from, Enc::lit(','));
        return mAt + 1;
    }

    /// Behind the `count`th.
    size_t behind(size_t from, U32 count) {
        if (const size_t near = mIn.behindNear(from, Enc::lit(','), count)) return near;
        for (; count > 0 && from <= mIn.wholeUnits(); --count) from = behind(from);
        return from;
    }

private:
    const TextView<Enc>& mIn;
    size_t mAt = 0;
};

template <class Enc>
class DialogueScan {
public:
    DialogueScan(SubtitleParser& parser, const TextView<Enc>& in) : mParser(parser), mIn(in), mCommas(in) {}

    /// False when a tag could not be stored.
    bool run(size_t i) {
        for (size_t ahead; mIn.inside(i); i = mIn.nextLine(i, ahead)) {
            ahead = 0;
            if (!atKeyword<kDialogue>(mIn, i)) continue;  // kept(ssa-leading-blank): at the very start of the line
            const size_t begin = i + kDialogueLength;
            const size_t times = mCommas.behind(begin);  // may lie lines further on
            Times stamps;
            if (times == mNoTimes || !stamps.read(mIn, times)) {
                mNoTimes = times;
                i = k8Bit ? begin : times;
                continue;
            }
            const size_t fields = times + Times::kSkipped;
            ahead = mIn.lineAhead(fields);
            i = mCommas.behind(fields, kFieldsBeforeText);
            // kept(ssa-few-commas): the data's end among the fields ends the whole scan
            if (i > mIn.wholeUnits()) return true;
            if (!add(stamps, i)) return false;
        }
        return true;
    }

private:
    static constexpr bool k8Bit = sizeof(typename Enc::Unit) == 1;

    bool add(const Times& times, size_t text) {
        if constexpr (k8Bit) {
            // kept(ssa-out-of-order): 8-bit data alone loses the lines that go back in time
            if (times.start() < mPreviousStart) return true;
            mPreviousStart = times.start();
        }
        return addTag(mParser, times.start(), times.end(), mIn.byteOffset(text));
    }

    SubtitleParser& mParser;
    const TextView<Enc>& mIn;
    Commas<Enc> mCommas;
    size_t mNoTimes = 0;  // where no times were found last: lines without a comma all look at the same place
    U32 mPreviousStart = 0;
};

struct Scan {
    template <class View>
    bool operator()(SubtitleParser& parser, const View& in, size_t i) const {
        return DialogueScan(parser, in).run(i);
    }
};

/// Behind a complete scan the texts tell GBK from Big5, and the table is put in order.
void checkAndSort(SubtitleParser& parser) {
    parser.GetData2CheckPossibleEncodings();
    TagTable(parser).sort();
}

/// The text of one Dialogue line.
struct Extraction {
    U8* buf;
    U32 size;
    U32 bytes;      ///< bounds the walk, in units of 16-bit text by half of it
    U32 dataBound;  ///< of the markup, see there
    U32 tagBound;

    U32 operator()(WorkText<Bytes> in) const { return line(in, TextSink<U8>(buf, size), bytes, outputLimit8(size)); }
    U32 operator()(WorkText<Utf16Le> in) const {
        return line(in, TextSink<U16>(buf, size), bytes / 2, outputLimit16(size));
    }
    U32 operator()(WorkText<Utf16Be> in) const {
        // kept(ssa-utf16be-markup): all of it stays
        return copyFirstLine(in, {buf, size}, bytes / 2, outputLimit16(size));
    }

private:
    /// Markup goes. At most `units` units are read.
    template <class Enc>
    U32 line(WorkText<Enc> in, TextSink<typename Enc::Unit> out, U32 units, U32 limit) const {
        Markup<Enc> markup(dataBound, tagBound);
        const auto atEnd = [&in](U32 i) { return isLf<Enc>(in.at(i)) || atCrLf(in, i); };
        U32 at = 0;
        while (copyPlain<typename Markup<Enc>::Stops>(in, at, units, out, limit) && !atEnd(at)) {
            // kept(ssa-drawing): drawing commands stand between two blocks, and are text
            // kept(break-N): \N and \n go out as they stand
            if (!markup.step(in, at, out)) return out.count();
        }
        return out.finish();
    }
};

constexpr CodeTypes kRead{
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8,    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE,
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5,    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK,
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE, E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG,
};

}  // namespace

template <>
const TextFormat& formatOf<SubtitleParserSSA>() {
    static constexpr TextFormat kFormat{
        .type = E_MEDIA_SUBTITLE_PARSER_TYPE_SSA,
        .worker = {.tag = kTag,
                   .createFailed = "SubtitleParserSSA thread create failed!!\n",
                   .waiting = "Zorb_MediaSubtitleParserSSA::BeginParse -> Wait...\n",
                   .waited = "Zorb_MediaSubtitleParserSSA::BeginParse2222222 -> %08x\n",
                   .limitMs = 10000,
                   .startsOnce = false},
        .enter = "Zorb_MediaSubtitleParserSSA::BeginParse -> Enter\n",
        .loading = "Zorb_MediaSubtitleParserSSA::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
        .shortRead = "Zorb_MediaSubtitleParserSSA Warning, Read data < Requied Data\n",
        .exit = "Zorb_MediaSubtitleParserSSA::BeginParse -> Exit\n",
        .finished = "Zorb_MediaSubtitleParserSSA::ParserThread -> Finished : Tag num = %ld, %d\n",
        .scan = scanWith<Scan>,
        .conclude = checkAndSort,  // behind the flag
    };
    return kFormat;
}

}  // namespace vxsubtitle

namespace android {

using namespace vxsubtitle;

VX_DEFINE_TEXT_PARSER(SubtitleParserSSA, char)
VX_DEFINE_SCAN(SubtitleParserSSA)

BOOL SubtitleParserSSA::ConvertUnicode2ASCII(U16* src, U8* dst, U32 count) {
    return SubtitleParser::ConvertUnicode2ASCII(src, dst, count);
}

void SubtitleParserSSA::GetData2CheckPossibleEncodings() {
    checkEntries(*this,
                 {kTag, "Zorb_MediaSubtitleParserSSA::ParserThread start to check possible encodings",
                  "u32CurTagEncoding[%ld] = %ld\n", "Zorb_MediaSubtitleParserSSA::ParserThread code type = %u\n"});
}

U32 SubtitleParserSSA::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    takeDataSize(*this);  // the whole data's size, so that it bounds nothing shorter
    if (!canExtract(*this, buf, index)) return 0;
    const S64 pos = positionOf(*this, index);
    const S64 next = positionOf(*this, index + 1);
    const bool toDataEnd = index + 1 == m_u32TagNum || pos >= next;  // sorted, the next one may lie before it
    copyUpTo(*this, pos, toDataEnd ? m_s64DataTotalSize : next);
    const U32 bound = spanOf(*this, index);  // bytes, compared with unit indices in 16-bit text too
    return walkEntry(*this, kRead, Extraction{buf, size, m_u32SubtitleBufferDataSize, m_u32RawBufferDataSize, bound});
}

}  // namespace android

#include "subtitle/SubtitleParserSRT.h"

#include "subtitle/parser/TextParser.h"
#include "subtitle/text/TimeStamps.h"

namespace vxsubtitle {

namespace {

/// A timing line. Literals of a format take any character, so the spelling with points is read by the one with commas;
/// a second attempt could not differ.
struct Timing : TimeStamp<SrtSpelling> {
    U32 start() const { return milliseconds(v[0], v[1], v[2], v[3]); }  // kept(srt-fraction-digits): ",5" is 5 ms
    U32 end() const { return milliseconds(v[4], v[5], v[6], v[7]); }
};

/// Whether narrowed 16-bit data has the digits and blanks of the usual shape, whatever separates the digits.
bool isCanonical(const Narrowed<Timing::kLength>& line) {
    for (U32 i = 0; i < Timing::kLength; ++i) {
        const char c = SrtSpelling::kShape[i];
        if (c == '0' && !isDigit(line.at(i))) return false;
        if (c == ' ' && line.at(i) != ' ') return false;
    }
    return true;
}

struct Scan {
    /// 8-bit data.
    bool operator()(SubtitleParser& parser, const TextView<Bytes>& in, size_t i) const {
        parser.m_eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_SRT;
        while (in.inside(i)) {  // kept(srt-mark-on-time-line): a first one may stand behind half a UTF-8 mark
            Timing timing;
            const size_t line = pastNumberLine(in, i);
            const bool usual = timing.readShape(in, line);
            // kept(srt-no-fraction): eight numbers or no timing line
            // kept(srt-no-hours): the hours are two of the eight
            if (!usual && (!opensNumber(in, i) || !timing.readOther(in, i))) {
                i = in.nextLine(i);
                continue;
            }
            // kept(srt-empty-entry): blank lines vanish, so the next number and timing line become the text
            const size_t behind = usual ? in.nextLineSoon(line + Timing::kLength) : in.nextLine(i);
            // kept(srt-blank-below-time): a blank line right behind leaves the position on the timing line's own CR
            const bool noText = behind >= 4 && in.at(behind - 4) == kCr;
            const size_t text = noText ? behind - 4 : in.skipSpace(behind);
            if (!addTag(parser, timing.start(), timing.end(), in.byteOffset(text))) return false;
            // kept(srt-text-as-time-line): the line behind is text, be it a timing line itself; any further one counts
            const size_t next = in.nextLine(text);
            i = next > i ? next : behind;
        }
        return true;
    }

    /// 16-bit data: only canonical timing lines count.
    template <class Enc>
    bool operator()(SubtitleParser& parser, const TextView<Enc>& in, size_t i) const {
        parser.m_eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_SRT;
        while (in.inside(i)) {
            Timing timing;
            const size_t line = pastNumberLine(in, i);
            const bool usual = timing.readShape(in, line);
            if (usual) i = line;
            if (usual || atTimingLine(in, i, &timing)) {
                i += Timing::kLength;
                // kept(srt-leading-break): a big-endian line end is no white space here, so the text begins on the CR
                while (i < in.wholeUnits() && isSpace(in.at(i))) ++i;
                if (!addTag(parser, timing.start(), timing.end(), in.byteOffset(i))) return false;
            }
            i = in.nextLine(i);
        }
        return true;
    }

private:
    // kept(srt-utf16-shape): UTF-16 data has canonical timing lines or none, 8-bit data any that can be read
    template <class Enc>
    static bool atTimingLine(const TextView<Enc>& in, size_t i, Timing* timing) {
        U8 first[2];
        narrowUnit(in.at(i), Enc::kBigEndian, first);
        if (!isDigit(first[0])) return false;
        const Narrowed<Timing::kLength> line(in, i);
        return isCanonical(line) && readAll(line, 0, SrtSpelling::kFormat, timing->v);
    }
};

}  // namespace

template <>
const TextFormat& formatOf<SubtitleParserSRT>() {
    static constexpr TextFormat kFormat{
        .type = E_MEDIA_SUBTITLE_PARSER_TYPE_SRT,
        .worker = {.tag = "SubtitleParserSRT",
                   .waiting = "Zorb_MediaSubtitleParserSRT::BeginParse -> Wait...\n",
                   .waited = "Zorb_MediaSubtitleParserSRT::BeginParse -> %08x\n",
                   .startsOnce = false},
        .enter = "Zorb_MediaSubtitleParserSRT::BeginParse -> Enter\n",
        .loading = "Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
        .shortRead = "Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n",
        .exit = "Zorb_MediaSubtitleParserSRT::BeginParse -> Exit\n",
        .finished = "Zorb_MediaSubtitleParserSRT::ParserThread -> Finished : Tag num = %ld\n",
        .scan = scanWith<Scan>,
    };
    return kFormat;
}

}  // namespace vxsubtitle

namespace android {

VX_DEFINE_TEXT_PARSER(SubtitleParserSRT, char)
VX_DEFINE_SCAN(SubtitleParserSRT)

SubtitleParserSRT::SubtitleParserSRT(char* path, S64 offset, S64 length) {
    pFileProcess = vxsubtitle::makeFileSource(reinterpret_cast<U8*>(path), offset, length);
}

U32 SubtitleParserSRT::GetNextData(const U32 track, U8* buf, const U32 size, const U32 index) {
    if (U64{index} + 1 >= m_u32TagNum) return 0;
    return GetData(track, buf, size, index + 1);
}

}  // namespace android

#include "subtitle/SubtitleParserSubViewer20.h"

#include "subtitle/parser/SubDialect.h"
#include "subtitle/text/TimeStamps.h"

namespace vxsubtitle {

namespace {

struct TimeLine : TimeStamp<SubViewer20Spelling> {
    // kept(sv2-time-width): a time line is taken to have the shape's characters, whatever it has
    static constexpr size_t kSkipped = kLength;

    // kept(sv2-hundredths): the fraction counts as milliseconds as it stands; ".50" is 50 ms
    U32 start() const { return milliseconds(v[0], v[1], v[2], v[3]); }
    U32 end() const { return milliseconds(v[4], v[5], v[6], v[7]); }

    template <class View>
    __attribute__((always_inline)) bool opens(const View& in, size_t i) {
        return isDigit(in.at(i)) && read(in, i);
    }
};

struct Judge {
    template <class View>
    Verdict operator()(const View& in, size_t i) const {
        if (!isDigit(in.at(i))) return refuseSecondDigit(in, i);  // kept(sv2-negative-first): a minus sign in front
        // kept(sv2-first-digit): the first line that begins with a digit decides
        // kept(dvb-as-sv2-colon): eight numbers, whatever stands between them
        // kept(dvb-as-sv2-numbered): a number in front counts as the hours
        return TimeLine().readOther(in, i) ? Verdict::kAccept : Verdict::kRefuse;
    }
};

struct Scan {
    template <class View>
    bool operator()(SubtitleParser& parser, const View& in, size_t i) const {
        while (in.inside(i)) {
            i = in.skipSpace(i);
            TimeLine time;
            size_t rest = i;
            if (time.opens(in, i)) {
                rest = i + TimeLine::kSkipped;
                // kept(sv2-leading-break): in 16-bit data the text begins right behind the time line, and is looked at
                // kept(sv2-unseen-line): in 8-bit data it begins on the next line, which is stepped over unseen
                if constexpr (View::kWidth == 1) rest = in.nextLineSoon(rest);
                if (!addTag(parser, time.start(), time.end(), in.byteOffset(rest))) return false;
            }
            i = in.nextLine(rest);
        }
        return true;
    }
};

/// Big-endian data is swapped while it is loaded.
void swapBigEndian(SubtitleParser& parser) {
    if (parser.m_eCodeType != E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) return;
    ChangeUnicodeBigToUnicode(parser.m_pu8RawBuffer, parser.m_u32RawBufferDataSize);
    parser.m_eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE;  // kept(sv2-big-endian): to the player, too
}

}  // namespace

template <>
const TextFormat& formatOf<SubtitleParserSubViewer20>() {
    static constexpr TextFormat kFormat = dialect({
        .type = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_20,
        .worker = {.tag = "SubtitleParserSubViewer20",
                   .waited = "Zorb_MediaSubtitleParserSubViewer20::bPareFinish -> %08x\n",
                   .waitedShowsFlag = true},
        .finished = "SubtitleParserSubViewer20::ParserThread -> Finished : Tag num = %ld, %d\n",
        .utf8FirstUnit = kOnTheMark,
        .acceptsAtMark = false,
        .settle = swapBigEndian,
        .accepts = acceptsWith<Acceptance<Judge>>,
        .scan = scanWith<Scan>,
    });
    return kFormat;
}

template <>
const SubDialect& subDialectOf<SubtitleParserSubViewer20>() {
    static constexpr SubDialect kDialect =
        subDialect<SubtitleParserSubViewer20>("SubtitleParserSUB::BeginParse - Try Subviewer 2.0\n");
    return kDialect;
}

}  // namespace vxsubtitle

namespace android {

// kept(break-br): texts are the base's, which knows no code for a line break: [br] goes out as it stands
VX_DEFINE_TEXT_PARSER(SubtitleParserSubViewer20, U8)
VX_DEFINE_SCAN(SubtitleParserSubViewer20)

}  // namespace android

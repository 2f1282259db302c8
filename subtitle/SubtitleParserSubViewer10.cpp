#include "subtitle/SubtitleParserSubViewer10.h"

#include "subtitle/parser/SubDialect.h"
#include "subtitle/text/TimeStamps.h"

namespace vxsubtitle {

namespace {

struct TimeLine : TimeStamp<SubViewer10Spelling> {
    // kept(sv1-time-width): a time line is taken to have the shape's characters, whatever it has
    static constexpr size_t kSkipped = kLength;

    U32 time() const { return milliseconds(v[0], v[1], v[2]); }

    template <class View>
    __attribute__((always_inline)) bool opens(const View& in, size_t i) {
        // kept(sv1-utf16-bracket): in 16-bit data any character will do for the bracket
        return (View::kWidth == 2 || in.at(i) == '[') && read(in, i);
    }
};

/// What the acceptance test looks for at the start of a line.
template <class Enc>
constexpr char kAccepted = '[';
template <>
constexpr char kAccepted<Utf16Le> = '{';  // kept(sv1-utf16le): so these files are hardly ever accepted

struct Judge {
    template <class Enc>
    Verdict operator()(const TextView<Enc>& in, size_t i) const {
        if (in.at(i) == Enc::lit(kAccepted<Enc>))
            return TimeLine().readOther(in, i) ? Verdict::kAccept : Verdict::kSkip;
        // kept(sub-second-digit): 8-bit data is never refused early
        return in.kWidth == 1 ? Verdict::kSkip : refuseSecondDigit(in, i);
    }
};

struct Scan {
    template <class View>
    bool operator()(SubtitleParser& parser, const View& in, size_t i) const {
        while (in.inside(i)) {
            i = in.skipSpace(i);
            TimeLine start;
            if (start.opens(in, i)) {
                const size_t text = in.nextLineSoon(i + TimeLine::kSkipped);
                i = in.nextLine(text);
                TimeLine end;
                const bool usual = end.readShape(in, i);
                const bool ends = usual || end.readOther(in, i);
                if (ends && !addTag(parser, start.time(), end.time(), in.byteOffset(text))) return false;
                if (usual) {
                    i = in.nextLineSoon(i + TimeLine::kLength);
                    continue;
                }
            }
            // kept(sv1-end-line-missing): the end line is consumed, even when it opens the next entry or is none
            i = in.nextLine(i);
        }
        return true;
    }
};

}  // namespace

template <>
const TextFormat& formatOf<SubtitleParserSubViewer10>() {
    static constexpr TextFormat kFormat = dialect({
        .type = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_10,
        .worker = {.tag = "SubtitleParserSubViewer10"},
        .finished = "SubtitleParserSubViewer10::ParserThread -> Finished : Tag num = %ld, %d\n",
        .utf8FirstUnit = kOnTheMark,
        .accepts = acceptsWith<Acceptance<Judge>>,
        .scan = scanWith<Scan>,
    });
    return kFormat;
}

template <>
const SubDialect& subDialectOf<SubtitleParserSubViewer10>() {
    static constexpr SubDialect kDialect =
        subDialect<SubtitleParserSubViewer10>("SubtitleParserSUB::BeginParse - Try Subviewer 1.0\n");
    return kDialect;
}

}  // namespace vxsubtitle

namespace android {

VX_DEFINE_TEXT_PARSER(SubtitleParserSubViewer10, U8)
VX_DEFINE_SCAN(SubtitleParserSubViewer10)

U32 SubtitleParserSubViewer10::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    return vxsubtitle::extractLine(*this, buf, size, index);
}

}  // namespace android

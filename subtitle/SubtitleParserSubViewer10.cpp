#include "subtitle/SubtitleParserSubViewer10.h"

#include "subtitle/parser/SubDialect.h"
#include "subtitle/SubtitleFileProcess.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr ParseStyle kStyle = dialectStyle("SubtitleParserSubViewer10", kSrtLoading, kSrtWaited);  // kept: SRT's words

constexpr U32 kTimeLineLength = 10;  // kept: characters that a time line is taken to have, whatever it has

struct TimeLine {
    U32 v[3];
    template <class View>
    bool scan(const View& in, size_t i) {
        return scanUsualLine<kTimeLineLength>(in, i, "[00:00:00]", "[%u:%u:%u]", v);
    }
    U32 time() const { return milliseconds(v[0], v[1], v[2]); }
};

/// What the acceptance test looks for at the start of a line.
template <class Enc>
constexpr char kAccepted = '[';
template <>
constexpr char kAccepted<Utf16Le> = '{';  // kept: so little-endian files of this dialect are hardly ever accepted

struct Judge {
    template <class Enc>
    Verdict operator()(const TextView<Enc>& in, size_t i) const {
        if (in.at(i) == Enc::lit(kAccepted<Enc>)) return TimeLine().scan(in, i) ? Verdict::kAccept : Verdict::kSkip;
        // kept: 8-bit text is never refused early
        return in.kWidth == 1 ? Verdict::kSkip : refuseSecondDigit(in, i);
    }
};

template <class View>
bool opensEntry(const View& in, size_t i, TimeLine& start) {
    // kept: in 16-bit text any character will do for the bracket
    return (View::kWidth == 2 || in.at(i) == '[') && start.scan(in, i);
}

template <class View>
bool scan(SubtitleParser& parser, const View& in) {
    for (size_t i = firstUnit(in); in.inside(i);) {
        i = in.skipSpace(i);
        TimeLine start;
        if (opensEntry(in, i, start)) {
            const size_t text = in.nextLine(i + kTimeLineLength);
            i = in.nextLine(text);
            TimeLine end;
            if (end.scan(in, i) && !addTag(parser, start.time(), end.time(), View::byteOffset(text))) return false;
        }
        i = in.nextLine(i);  // kept: the end line is consumed, even when it opens the next entry or is none
    }
    return true;
}

}  // namespace

SubtitleParserSubViewer10::SubtitleParserSubViewer10(U8* path) { pFileProcess = new SubtitleFileProcess(path); }

SubtitleParserSubViewer10::SubtitleParserSubViewer10(int fd, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(fd, offset, length);
}

SubtitleParserSubViewer10::~SubtitleParserSubViewer10() { releaseFile(*this); }

BOOL SubtitleParserSubViewer10::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return describeTrack(*this, E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_10, info);
}

void* SubtitleParserSubViewer10::ParserTask(void* parser) {
    static_cast<SubtitleParserSubViewer10*>(parser)->ParserThread();
    return nullptr;
}

BOOL SubtitleParserSubViewer10::BeginParse() {
    return beginDialect(*this, kStyle, [this] {
        // kept: from the mark on, so the first line of a marked file begins with the mark
        return withText(*this, [](const auto& in) { return acceptsLine(in, 0, Judge()); });
    });
}

U32 SubtitleParserSubViewer10::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    return extractLine(*this, buf, size, index);
}

void SubtitleParserSubViewer10::ParserThread() {
    const bool complete = scanData(*this, [this](const auto& in) { return scan(*this, in); });
    endScan(*this, complete, kStyle, "SubtitleParserSubViewer10::ParserThread -> Finished : Tag num = %ld, %d\n");
}

}  // namespace android

#include "subtitle/SubtitleParserSubViewer20.h"

#include "subtitle/parser/SubDialect.h"
#include "subtitle/SubtitleFileProcess.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr ParseStyle style() {
    ParseStyle row = dialectStyle("SubtitleParserSubViewer20", kSrtLoading,  // kept: the SRT wording
                                  "Zorb_MediaSubtitleParserSubViewer20::bPareFinish -> %08x\n");
    row.waitedShowsFlag = true;
    return row;
}

constexpr ParseStyle kStyle = style();

constexpr U32 kTimeLineLength = 23;  // kept: characters that a time line is taken to have, whatever it has

struct TimeLine {
    U32 v[8];
    template <class View>
    bool scan(const View& in, size_t i) {
        return isDigit(in.at(i)) &&
               scanUsualLine<kTimeLineLength>(in, i, "00:00:00.00,00:00:00.00", "%u:%u:%u.%u,%u:%u:%u.%u", v);
    }
    // kept: the fraction counts as milliseconds as it stands; ".50" is 50 ms
    U32 start() const { return milliseconds(v[0], v[1], v[2], v[3]); }
    U32 end() const { return milliseconds(v[4], v[5], v[6], v[7]); }
};

struct Judge {
    template <class View>
    Verdict operator()(const View& in, size_t i) const {
        if (!isDigit(in.at(i))) return refuseSecondDigit(in, i);
        // kept: the first line that begins with a digit decides
        return TimeLine().scan(in, i) ? Verdict::kAccept : Verdict::kRefuse;
    }
};

template <class View>
bool scan(SubtitleParser& parser, const View& in) {
    for (size_t i = firstUnit(in); in.inside(i);) {
        i = in.skipSpace(i);
        TimeLine time;
        size_t rest = i;
        if (time.scan(in, i)) {
            rest = i + kTimeLineLength;
            // kept: 8-bit text begins on the next line and is stepped over unseen; 16-bit text begins right behind the
            // time stamp, and its lines are looked at
            if constexpr (View::kWidth == 1) rest = in.nextLine(rest);
            if (!addTag(parser, time.start(), time.end(), View::byteOffset(rest))) return false;
        }
        i = in.nextLine(rest);
    }
    return true;
}

}  // namespace

SubtitleParserSubViewer20::SubtitleParserSubViewer20(U8* path) { pFileProcess = new SubtitleFileProcess(path); }

SubtitleParserSubViewer20::SubtitleParserSubViewer20(int fd, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(fd, offset, length);
}

SubtitleParserSubViewer20::~SubtitleParserSubViewer20() { releaseFile(*this); }

BOOL SubtitleParserSubViewer20::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return describeTrack(*this, E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_20, info);
}

void* SubtitleParserSubViewer20::ParserTask(void* parser) {
    static_cast<SubtitleParserSubViewer20*>(parser)->ParserThread();
    return nullptr;
}

BOOL SubtitleParserSubViewer20::BeginParse() {
    return beginDialect(*this, kStyle, [this] {
        if (m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) {
            ChangeUnicodeBigToUnicode(m_pu8RawBuffer, m_u32RawBufferDataSize);
            m_eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE;  // kept: so the player sees little-endian text
        }
        return withText(*this, [](const auto& in) { return acceptsLine(in, firstUnit(in), Judge()); });
    });
}

void SubtitleParserSubViewer20::ParserThread() {
    const bool complete = scanData(*this, [this](const auto& in) { return scan(*this, in); });
    endScan(*this, complete, kStyle, "SubtitleParserSubViewer20::ParserThread -> Finished : Tag num = %ld, %d\n");
}

}  // namespace android

#include "subtitle/SubtitleParserSubDvbSubtitleSystem.h"

#include <string.h>

#include "subtitle/parser/SubDialect.h"
#include "subtitle/SubtitleFileProcess.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr ParseStyle kStyle =
    dialectStyle("SubtitleParserSubDvbSubtitleSystem", kSrtLoading, kSrtWaited);  // kept: the SRT wording

// kept: the text is taken to begin at a fixed distance from the line's start, whatever the line's shape
constexpr U32 kTextAt = 24;
constexpr U32 kTextAtNumbered = 30;

struct TimeLine {
    U32 number = 0;
    U32 v[8];

    bool scan(const TextView<Bytes>& in, size_t i) {
        if (!isDigit(in.at(i))) return false;
        if (scanPlain(in, i)) return true;
        U32 numbered[9];
        if (!scanAll(in, i, "%u %u:%u:%u,%u %u:%u:%u,%u", numbered)) return false;
        number = numbered[0];
        memcpy(v, numbered + 1, sizeof v);
        return true;
    }

    /// kept: a leading number is not read in 16-bit text.
    template <class View>
    bool scan(const View& in, size_t i) {
        return isDigit(in.at(i)) && scanPlain(in, i);
    }

    // kept: the fourth field counts as milliseconds as it stands
    U32 start() const { return milliseconds(v[0], v[1], v[2], v[3]); }
    U32 end() const { return milliseconds(v[4], v[5], v[6], v[7]); }
    U32 textAt() const { return number != 0 ? kTextAtNumbered : kTextAt; }  // kept: a number 0 counts as none

private:
    template <class View>
    bool scanPlain(const View& in, size_t i) {
        return scanUsualLine<kTextAt>(in, i, "00:00:00:00 00:00:00:00 ", "%u:%u:%u:%u %u:%u:%u:%u", v);
    }
};

struct Judge {
    template <class View>
    Verdict operator()(const View& in, size_t i) const {
        if (!isDigit(in.at(i))) return refuseSecondDigit(in, i);
        return TimeLine().scan(in, i) ? Verdict::kAccept : Verdict::kSkip;
    }
};

template <class View>
bool scan(SubtitleParser& parser, const View& in) {
    for (size_t i = firstUnit(in); in.inside(i);) {
        i = in.skipSpace(i);
        TimeLine time;
        if (time.scan(in, i)) {
            i += time.textAt();
            if (!addTag(parser, time.start(), time.end(), View::byteOffset(i))) return false;
        }
        i = in.nextLine(i);
    }
    return true;
}

}  // namespace

SubtitleParserSubDvbSubtitleSystem::SubtitleParserSubDvbSubtitleSystem(U8* path) {
    pFileProcess = new SubtitleFileProcess(path);
}

SubtitleParserSubDvbSubtitleSystem::SubtitleParserSubDvbSubtitleSystem(int fd, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(fd, offset, length);
}

SubtitleParserSubDvbSubtitleSystem::~SubtitleParserSubDvbSubtitleSystem() { releaseFile(*this); }

BOOL SubtitleParserSubDvbSubtitleSystem::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return describeTrack(*this, E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM, info);
}

void* SubtitleParserSubDvbSubtitleSystem::ParserTask(void* parser) {
    static_cast<SubtitleParserSubDvbSubtitleSystem*>(parser)->ParserThread();
    return nullptr;
}

BOOL SubtitleParserSubDvbSubtitleSystem::BeginParse() {
    return beginDialect(*this, kStyle, [this] {
        if (m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) {
            m_eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;  // kept: this dialect knows no big-endian text
        }
        return withText(*this, [](const auto& in) { return acceptsLine(in, firstUnit(in), Judge()); });
    });
}

U32 SubtitleParserSubDvbSubtitleSystem::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    if (m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) return 0;  // never reported here
    return extractLine(*this, buf, size, index);
}

U32 SubtitleParserSubDvbSubtitleSystem::GetData(const U32, U8* buf, const U32 size, const U32 index,
                                                stSubDecoderInfo*) {
    return extractToTimeStamp(*this, buf, size, index);
}

void SubtitleParserSubDvbSubtitleSystem::ParserThread() {
    const bool complete = scanData(*this, [this](const auto& in) { return scan(*this, in); });
    if (complete) logTags(*this, kStyle);
    endScan(*this, complete, kStyle,
            "SubtitleParserSubDvbSubtitleSystem::ParserThread -> Finished : Tag num = %ld, %d\n");
}

}  // namespace android

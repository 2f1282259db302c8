#include "subtitle/SubtitleParserSubDvbSubtitleSystem.h"

#include "subtitle/parser/SubDialect.h"
#include "subtitle/text/TimeStamps.h"

namespace vxsubtitle {

namespace {

struct TimeLine : TimeStamp<DvbSpelling> {
    U32 number = 0;

    __attribute__((always_inline)) bool opens(const TextView<Bytes>& in, size_t i) {
        if (!isDigit(in.at(i))) return false;
        if (read(in, i)) return true;
        TimeLine numbered{};
        const bool isNumbered = readNumbered(in, i, numbered);
        *this = numbered;
        return isNumbered;
    }

    // kept(dvb-utf16-number): a leading number is not read in 16-bit data
    template <class View>
    __attribute__((always_inline)) bool opens(const View& in, size_t i) {
        return isDigit(in.at(i)) && read(in, i);
    }

    /// Whether one stands at `i`, where a digit does, by the number reader alone: for the few lines that are accepted
    /// by.
    static bool isAt(const TextView<Bytes>& in, size_t i) {
        TimeLine line{};
        return line.readOther(in, i) || readNumbered(in, i, line);
    }
    template <class View>
    static bool isAt(const View& in, size_t i) {
        return TimeLine().readOther(in, i);
    }

    // kept(dvb-frames): the fourth field counts as milliseconds as it stands
    U32 start() const { return milliseconds(v[0], v[1], v[2], v[3]); }
    U32 end() const { return milliseconds(v[4], v[5], v[6], v[7]); }

    // kept(dvb-text-column): the text is taken to begin at a fixed distance from the line's start, whatever its shape
    // kept(dvb-number-0): a number 0 counts as none
    size_t textAt() const { return number != 0 ? kTextAtNumbered : kLength; }

private:
    static constexpr size_t kTextAtNumbered = 30;

    __attribute__((noinline)) static bool readNumbered(const TextView<Bytes>& in, size_t i, TimeLine& line) {
        U32 numbers[9];
        if (!readAll(in, i, "%u %u:%u:%u,%u %u:%u:%u,%u", numbers)) return false;
        line.number = numbers[0];
        memcpy(line.v, numbers + 1, sizeof line.v);
        return true;
    }
};

struct Judge {
    template <class View>
    Verdict operator()(const View& in, size_t i) const {
        if (!isDigit(in.at(i))) return refuseSecondDigit(in, i);
        return TimeLine::isAt(in, i) ? Verdict::kAccept : Verdict::kSkip;
    }
};

struct Scan {
    template <class View>
    bool operator()(SubtitleParser& parser, const View& in, size_t i) const {
        for (size_t ahead; in.inside(i); i = in.nextLine(i, ahead)) {
            i = in.skipSpace(i);
            ahead = in.lineAhead(i);
            TimeLine time;
            if (time.opens(in, i)) {
                i += time.textAt();
                if (!addTag(parser, time.start(), time.end(), in.byteOffset(i))) return false;
            }
        }
        return true;
    }
};

void takeBigEndianAsNative(SubtitleParser& parser) {
    if (parser.m_eCodeType != E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) return;
    parser.m_eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;  // kept(dvb-big-endian): knows none
}

}  // namespace

template <>
const TextFormat& formatOf<SubtitleParserSubDvbSubtitleSystem>() {
    static constexpr TextFormat kFormat = dialect({
        .type = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM,
        .worker = {.tag = "SubtitleParserSubDvbSubtitleSystem"},
        .finished = "SubtitleParserSubDvbSubtitleSystem::ParserThread -> Finished : Tag num = %ld, %d\n",
        .utf8FirstUnit = kOnTheMark,  // kept(dvb-mark): a first time behind the mark is lost
        .logsTable = true,
        .acceptsAtMark = false,
        .settle = takeBigEndianAsNative,
        .accepts = acceptsWith<Acceptance<Judge>>,
        .scan = scanWith<Scan>,
    });
    return kFormat;
}

template <>
const SubDialect& subDialectOf<SubtitleParserSubDvbSubtitleSystem>() {
    static constexpr SubDialect kDialect =
        subDialect<SubtitleParserSubDvbSubtitleSystem>("SubtitleParserSUB::BeginParse - Try Dvb Subtitle system\n");
    return kDialect;
}

}  // namespace vxsubtitle

namespace android {

VX_DEFINE_TEXT_PARSER(SubtitleParserSubDvbSubtitleSystem, U8)
VX_DEFINE_SCAN(SubtitleParserSubDvbSubtitleSystem)

U32 SubtitleParserSubDvbSubtitleSystem::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    if (m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG) return 0;  // never reported here
    return vxsubtitle::extractLine(*this, buf, size, index);
}

U32 SubtitleParserSubDvbSubtitleSystem::GetData(const U32, U8* buf, const U32 size, const U32 index,
                                                stSubDecoderInfo*) {
    return vxsubtitle::extractToTimeStamp(*this, buf, size, index);
}

}  // namespace android

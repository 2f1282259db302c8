#include "subtitle/SubtitleParserSRT.h"

#include "subtitle/parser/EntryText.h"
#include "subtitle/parser/TextParser.h"
#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/system/Log.h"
#include "subtitle/text/NumberScan.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr ParseStyle kStyle{
    "SubtitleParserSRT",
    "Zorb_MediaSubtitleParserSRT::BeginParse -> Enter\n",
    "Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
    "Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n",
    nullptr,
    "Zorb_MediaSubtitleParserSRT::BeginParse -> Wait...\n",
    "Zorb_MediaSubtitleParserSRT::BeginParse -> %08x\n",
    "Zorb_MediaSubtitleParserSRT::BeginParse -> Exit\n",
    100000,
    100000,
    false,
    false,
};

/// A timing line's eight numbers. Literals of a format take any character, so the spelling with points is read by
/// the one with commas; a second attempt could not differ.
struct Timing {
    U32 v[8];
    template <class View>
    bool scanUsual(const View& in, size_t pos) {
        return scanColumns(in, pos, "00:00:00,000 --> 00:00:00,000", v);
    }
    template <class View>
    bool scan(const View& in, size_t pos) {
        return scanAll(in, pos, "%u:%u:%u,%u --> %u:%u:%u,%u", v);
    }
    U32 start() const { return milliseconds(v[0], v[1], v[2], v[3]); }
    U32 end() const { return milliseconds(v[4], v[5], v[6], v[7]); }
};

/// The canonical timing line: 'd' a digit, ' ' a blank, '.' anything.
// kept: UTF-16 text has canonical timing lines or none; 8-bit text takes any that the number scanner reads
constexpr char kCanonical[] = "dd.dd.dd.ddd ... dd.dd.dd.ddd";
constexpr U32 kCanonicalLength = sizeof kCanonical - 1;

bool isCanonical(const NarrowText<kCanonicalLength>& line) {
    for (U32 i = 0; i < kCanonicalLength; ++i) {
        if (kCanonical[i] == 'd' && !isDigit(line.at(i))) return false;
        if (kCanonical[i] == ' ' && line.at(i) != ' ') return false;
    }
    return true;
}

class Scan {
public:
    explicit Scan(SubtitleParserSRT& parser) : mParser(parser) {}

    /// 8-bit text. False when a tag could not be stored.
    bool run(const TextView<Bytes>& in, size_t i) {
        while (in.inside(i)) {
            Timing timing;
            if (!timing.scanUsual(in, i) && !timing.scan(in, i)) {
                i = in.nextLine(i);
                continue;
            }
            const size_t behind = in.nextLine(i);
            // kept: a blank line right behind the timing line leaves the position on the timing line's own CR
            const bool noText = behind >= 4 && in.at(behind - 4) == kCr;
            const size_t text = noText ? behind - 4 : in.skipSpace(behind);
            if (!add(timing, TextView<Bytes>::byteOffset(text))) return false;
            const size_t next = in.nextLine(text);  // kept: the line behind is text, be it a timing line itself
            i = next > i ? next : behind;
        }
        return true;
    }

    /// 16-bit text: only canonical timing lines count.
    template <class Enc>
    bool run(const TextView<Enc>& in, size_t i) {
        while (in.inside(i)) {
            Timing timing;
            if (atTimingLine(in, i, &timing)) {
                i += kCanonicalLength;
                // kept: a big-endian blank or line end is no white space here, so the text begins on the CR
                while (i < in.wholeUnits() && isSpace(in.at(i))) ++i;
                if (!add(timing, TextView<Enc>::byteOffset(i))) return false;
            }
            i = in.nextLine(i);
        }
        return true;
    }

private:
    template <class Enc>
    static bool atTimingLine(const TextView<Enc>& in, size_t i, Timing* timing) {
        if (timing->scanUsual(in, i)) return true;
        U8 first[2];
        narrowUnit(in.at(i), Enc::lit('\n') != kLf, first);
        if (!isDigit(first[0])) return false;
        const NarrowText<kCanonicalLength> line(in, i);
        return isCanonical(line) && timing->scan(line, 0);
    }

    bool add(const Timing& timing, S64 offset) {
        return mParser.AddTag(timing.start(), timing.end(), mParser.m_s64RawBufferPosition + offset,
                              E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) != FALSE;
    }

    SubtitleParserSRT& mParser;
};

}  // namespace

SubtitleParserSRT::SubtitleParserSRT(char* path) {
    pFileProcess = new SubtitleFileProcess(reinterpret_cast<U8*>(path));
}

SubtitleParserSRT::SubtitleParserSRT(int fd, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(fd, offset, length);
}

SubtitleParserSRT::SubtitleParserSRT(char* path, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(reinterpret_cast<U8*>(path), offset, length);
}

SubtitleParserSRT::~SubtitleParserSRT() { releaseFile(*this); }

BOOL SubtitleParserSRT::BeginParse() { return beginParse(*this, kStyle); }

U32 SubtitleParserSRT::GetNextData(const U32 track, U8* buf, const U32 size, const U32 index) {
    if (U64{index} + 1 >= m_u32TagNum) return 0;
    return GetData(track, buf, size, index + 1);
}

BOOL SubtitleParserSRT::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return describeTrack(*this, E_MEDIA_SUBTITLE_PARSER_TYPE_SRT, info);
}

void* SubtitleParserSRT::ParserTask(void* parser) {
    static_cast<SubtitleParserSRT*>(parser)->ParserThread();
    return nullptr;
}

void SubtitleParserSRT::ParserThread() {
    const bool complete = scanFile(*this, [this](const auto& in, size_t firstUnit) {
        m_eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_SRT;
        return Scan(*this).run(in, firstUnit);
    });
    if (complete) raise(bParseFinish);  // kept: else without the flag, so that `BeginParse` fails at its limit
    VX_LOG(kStyle.tag, "Zorb_MediaSubtitleParserSRT::ParserThread -> Finished : Tag num = %ld\n",
           static_cast<long>(static_cast<S32>(m_u32TagNum)));
}

}  // namespace android

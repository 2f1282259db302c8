#include "subtitle/SubtitleParserSubMicroDVD.h"

#include "subtitle/parser/SubDialect.h"
#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/system/Log.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr ParseStyle style() {
    ParseStyle row =
        dialectStyle("SubtitleParserSubMicroDVD",
                     "Zorb_MediaSubtitleParserSubMicroDVD::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
                     "SubtitleParserSubMicroDVD::BeginParse2222222 -> %08x\n");
    row.startsOnce = false;  // kept: alone among the dialects
    return row;
}

constexpr ParseStyle kStyle = style();

// kept: the one for 16-bit text has no blank behind the first comma
constexpr char kEntryWords8[] =
    "ParserThread::m_u64NanoSecPerFrame = %lld, u32Frames1= %ld,u32Frames2= %ld,u32Time1= %ld, u32Time2 = %ld\n";
constexpr char kEntryWords16[] =
    "ParserThread::m_u64NanoSecPerFrame = %lld,u32Frames1= %ld,u32Frames2= %ld,u32Time1= %ld, u32Time2 = %ld\n";

long asLong(U32 value) { return static_cast<long>(static_cast<S32>(value)); }  // the device's, of 32 bits

constexpr U32 kAcceptedUnits = 12;     // of 16-bit text, by the acceptance test
constexpr U32 kLongestHeader = 256;    // units; a longer one does not scan
constexpr size_t kFirstLineBelow = 4;  // kept: by its index a line is the first, not by its number

/// "{first frame}{last frame}".
struct Frames {
    U32 v[2] = {};  // a number that is not reached is 0
    template <class View>
    bool scan(const View& in, size_t i) {
        return scanAll(in, i, "{%u}{%u}", v);
    }
};

/// Nanoseconds per frame at `rate` thousandths of a frame per second.
constexpr U64 frameDuration(U64 rate) { return rate == 0 ? 0 : 1000000000000ULL / rate; }

/// The rate that the player set: whole frames per second, or thousandths above 1000.
void deriveDuration(SubtitleParser& parser) {
    U32 rate = parser.m_u32FrameRrate;
    if (rate > 1000) {
        rate = rate / 1000 + (rate % 1000 >= 500 ? 1 : 0);  // kept: 23.976 counts as 24
        parser.m_u32FrameRrate = rate;
    } else if (rate == 0 || rate > 99) {
        rate = 29;  // kept: the rate of a player that sets none, or one that is none
    }
    parser.m_u64NanoSecPerFrame = frameDuration(U64{rate} * 1000);
}

/// The rate of a frame-rate line in thousandths: whole frames, and a fraction of as many places as its value has
/// digits.
U64 thousandths(U32 whole, U32 fraction) {
    U64 places = 10;
    while (places <= fraction) places *= 10;
    return U64{whole} * 1000 + U64{fraction} * 1000 / places;  // kept: 23.05 is read as 23.5
}

U32 timeOf(const SubtitleParser& parser, U32 frames) {
    return static_cast<U32>(parser.m_u64NanoSecPerFrame * frames / 1000000);
}

/// Finds the second '}' from an index on that never goes back. What was found is remembered, so that a file full of
/// '{' costs one pass.
template <class Enc>
class ClosingBraces {
public:
    explicit ClosingBraces(const TextView<Enc>& in) : mIn(in), mFirst(find(0)), mSecond(find(mFirst + 1)) {}

    /// Past the second '}' at or after `i`; the end of the data when there are not two.
    size_t pastSecond(size_t i) {
        while (mFirst < i && mIn.inside(mFirst)) {
            mFirst = mSecond;
            mSecond = find(mSecond + 1);
        }
        return mIn.inside(mSecond) ? mSecond + 1 : mIn.end();
    }

private:
    size_t find(size_t i) const { return mIn.toUnit(i, Enc::lit('}')); }

    const TextView<Enc>& mIn;
    size_t mFirst;
    size_t mSecond;
};

struct Judge {
    template <class Enc>
    Verdict operator()(const TextView<Enc>& in, size_t i) const {
        U32 frames[2];
        if (in.at(i) != Enc::lit('{')) return refuseSecondDigit(in, i);
        return scanLine<kAcceptedUnits>(in, i, "{%u}{%u}", frames) ? Verdict::kAccept : Verdict::kSkip;
    }
};

/// Logs an entry and adds its tag for the text at `offset`. False when it could not be stored.
bool add(SubtitleParser& parser, const char* words, const Frames& frames, S64 offset) {
    const U32 start = timeOf(parser, frames.v[0]);
    const U32 end = timeOf(parser, frames.v[1]);
    VX_LOG(kStyle.tag, words, static_cast<S64>(parser.m_u64NanoSecPerFrame), asLong(frames.v[0]), asLong(frames.v[1]),
           asLong(start), asLong(end));
    return addTag(parser, start, end, offset);
}

/// The first line at `i`, which moves past its two '}': a frame rate for the file, or an entry at the player's rate.
/// False when a tag could not be stored.
bool firstLine(SubtitleParser& parser, const TextView<Bytes>& in, ClosingBraces<Bytes>& braces, size_t& i) {
    Frames frames;
    if (frames.scan(in, i)) {
        VX_LOG(kStyle.tag, "ParserThread first line::u32Frames1= %d, u32Frames2 = %d\n", static_cast<S32>(frames.v[0]),
               static_cast<S32>(frames.v[1]));
    }
    i = braces.pastSecond(i);  // kept: across lines, and whatever the scan gave
    U32 rate[2];
    if (scanAll(in, i, "%u.%u", rate)) {  // kept: any text that begins with two numbers
        parser.m_u64NanoSecPerFrame = frameDuration(thousandths(rate[0], rate[1]));
        return true;
    }
    deriveDuration(parser);
    return add(parser, kEntryWords8, frames, in.byteOffset(i));
}

/// 8-bit text. False when a tag could not be stored.
bool scan(SubtitleParser& parser, const TextView<Bytes>& in) {
    // kept: a file that is UTF-8 without a mark loses its first three bytes to the mark that it has not
    size_t i = parser.m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8 ? 3 : 0;
    ClosingBraces<Bytes> braces(in);
    while (in.inside(i)) {
        i = in.skipSpace(i);
        if (i < kFirstLineBelow && in.at(i) == '{' && !firstLine(parser, in, braces, i)) return false;
        Frames frames;
        if (in.at(i) == '{' && frames.scan(in, i)) {  // kept: at the duration so far, 0 without a first line
            i = braces.pastSecond(i);
            if (!add(parser, kEntryWords8, frames, in.byteOffset(i))) return false;
        }
        i = in.nextLine(i);
    }
    return true;
}

/// 16-bit text: the player's rate is derived again for every line, and no line can name another.
template <class Enc>
bool scan(SubtitleParser& parser, const TextView<Enc>& in) {
    ClosingBraces<Enc> braces(in);
    for (size_t i = firstUnit(in); in.inside(i);) {
        i = in.skipSpace(i);
        deriveDuration(parser);  // kept: which rounds a rate above 1000000 again and again
        if (in.at(i) == Enc::lit('{')) {
            const size_t behind = braces.pastSecond(i);
            const size_t units = behind - i;
            VX_LOG(kStyle.tag, "SubtitleParserSubMicroDVD::parseThread u32TagSize = %ld",
                   asLong(static_cast<U32>(units)));
            Frames frames;
            if (units <= kLongestHeader && frames.scan(NarrowText<kLongestHeader>(in, i, static_cast<U32>(units)), 0)) {
                i = behind;
                if (!add(parser, kEntryWords16, frames, in.byteOffset(i))) return false;
            }
        }
        i = in.nextLine(i);
    }
    return true;
}

}  // namespace

SubtitleParserSubMicroDVD::SubtitleParserSubMicroDVD(U8* path) { pFileProcess = new SubtitleFileProcess(path); }

SubtitleParserSubMicroDVD::SubtitleParserSubMicroDVD(int fd, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(fd, offset, length);
}

SubtitleParserSubMicroDVD::~SubtitleParserSubMicroDVD() { releaseFile(*this); }

BOOL SubtitleParserSubMicroDVD::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return describeTrack(*this, E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_MICRO_DVD, info);
}

void* SubtitleParserSubMicroDVD::ParserTask(void* parser) {
    static_cast<SubtitleParserSubMicroDVD*>(parser)->ParserThread();
    return nullptr;
}

BOOL SubtitleParserSubMicroDVD::BeginParse() {
    return beginDialect(*this, kStyle, [this] {
        const TextView<Bytes> data = textOf<Bytes>(*this);
        // kept: plain ASCII counts as UTF-8
        if (m_eCodeType != E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8 &&
            IsUTF8Encode(m_pu8RawBuffer, data.inside(0) ? data.end() - 1 : 0) == TRUE) {
            m_eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
        }
        VX_LOG(kStyle.tag, "m_eCodeType = %d \n", static_cast<S32>(m_eCodeType));
        // kept: from the mark on, so the first line of a marked file begins with the mark
        return withText(*this, [](const auto& in) { return acceptsLine(in, 0, Judge()); });
    });
}

U32 SubtitleParserSubMicroDVD::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    return extractLine(*this, buf, size, index);
}

void SubtitleParserSubMicroDVD::ParserThread() {
    const bool complete = scanData(*this, [this](const auto& in) { return scan(*this, in); });
    endScan(*this, complete, kStyle, "SubtitleParserSubMicroDVD::ParserThread -> Finished : Tag num = %ld, %d\n");
}

}  // namespace android

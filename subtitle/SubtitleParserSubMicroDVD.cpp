#include "subtitle/SubtitleParserSubMicroDVD.h"

#include "subtitle/parser/SubDialect.h"
#include "subtitle/system/Log.h"
#include "subtitle/system/Wraps.h"

namespace vxsubtitle {

namespace {

constexpr char kTag[] = "SubtitleParserSubMicroDVD";

// the one for 16-bit data has no blank behind the first comma
constexpr char kEntryWords8[] =
    "ParserThread::m_u64NanoSecPerFrame = %lld, u32Frames1= %ld,u32Frames2= %ld,u32Time1= %ld, u32Time2 = %ld\n";
constexpr char kEntryWords16[] =
    "ParserThread::m_u64NanoSecPerFrame = %lld,u32Frames1= %ld,u32Frames2= %ld,u32Time1= %ld, u32Time2 = %ld\n";

constexpr U32 kAcceptedUnits = 12;     // of 16-bit data, by the acceptance test
constexpr U32 kLongestHeader = 256;    // units; a longer one is not read
constexpr size_t kFirstLineBelow = 4;  // kept(mdvd-first-line): by its index a line is the first, not by its number

/// "{first frame}{last frame}".
struct Frames {
    static constexpr char kForm[] = "{#}{#}";
    static constexpr char kFormat[] = "{%u}{%u}";

    U32 v[2];

    template <class View>
    bool read(const View& in, size_t i) {
        v[0] = v[1] = 0;  // a number that is not reached is 0
        return readAll(in, i, kFormat, v);
    }

    /// Reads them in the usual form, and answers their length; 0 for any other.
    template <class View>
    size_t readUsual(const View& in, size_t i) {
        return readForm<Frames>(in, i, v);
    }
};

/// Nanoseconds per frame at `rate` thousandths of a frame per second.
constexpr U64 frameDuration(U64 rate) { return rate == 0 ? 0 : 1000000000000ULL / rate; }

/// The rate that the player set: whole frames per second, or thousandths above 1000.
void deriveDuration(SubtitleParser& parser) {
    U32 rate = parser.m_u32FrameRrate;
    if (rate > 1000) {
        rate = rate / 1000 + (rate % 1000 >= 500 ? 1 : 0);  // kept(mdvd-rate-rounded): 23.976 counts as 24
        parser.m_u32FrameRrate = rate;
    } else if (rate == 0 || rate > 99) {
        rate = 29;  // kept(mdvd-rate-29): the rate of a player that sets none, or one that is none
    }
    parser.m_u64NanoSecPerFrame = frameDuration(U64{rate} * 1000);
}

/// The rate of a frame-rate line in thousandths: whole frames, and a fraction of as many places as its value has
/// digits.
U64 thousandths(U32 whole, U32 fraction) {
    U64 places = 10;
    while (places <= fraction) places *= 10;
    return U64{whole} * 1000 + U64{fraction} * 1000 / places;  // kept(mdvd-rate-zeros): 23.05 is read as 23.5
}

/// The upper half of a product.
VX_WRAPS constexpr U64 productAbove(U64 a, U64 b) {
#ifdef __SIZEOF_INT128__
    return static_cast<U64>(static_cast<unsigned __int128>(a) * b >> 64);
#else
    const U64 lowA = a & 0xFFFFFFFF;
    const U64 lowB = b & 0xFFFFFFFF;
    const U64 middle = (a >> 32) * lowB + (lowA * lowB >> 32);
    return (a >> 32) * (b >> 32) + (middle >> 32) + ((lowA * (b >> 32) + (middle & 0xFFFFFFFF)) >> 32);
#endif
}

/// A million nanoseconds are a millisecond: by the inverse, as a 32-bit machine divides 64 bits for long.
constexpr U64 millionths(U64 nanoseconds) { return productAbove(nanoseconds, 0x431BDE82D7B634DB) >> 18; }
static_assert(millionths(999999) == 0 && millionths(1000000) == 1);
static_assert(millionths(0xFFFFFFFFFFFFFFFF) == 0xFFFFFFFFFFFFFFFF / 1000000);
static_assert(millionths(18446744073709000000U) == 18446744073709 &&
              millionths(18446744073708999999U) == 18446744073708);

VX_WRAPS U32 timeOf(const SubtitleParser& parser, U32 frames) {
    return static_cast<U32>(millionths(parser.m_u64NanoSecPerFrame * frames));
}

/// Finds the second '}' from an index on that never goes back. What was found is remembered, so that a file full of
/// '{' costs one pass.
template <class Enc>
class ClosingBraces {
public:
    explicit ClosingBraces(const TextView<Enc>& in) : mIn(in), mFirst(find(0)), mSecond(find(mFirst + 1)) {}

    /// Past the second '}' at or after `i`; the end of the data when there are not two.
    size_t pastSecond(size_t i) {
        if (mFirst < i && mIn.inside(mFirst)) {
            mFirst = mSecond < i ? find(i) : mSecond;
            mSecond = find(mFirst + 1);
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
        return readNarrowed<kAcceptedUnits>(in, i, Frames::kFormat, frames) ? Verdict::kAccept : Verdict::kSkip;
    }
};

/// Logs an entry and adds its tag for the text at `offset`. False when it could not be stored.
__attribute__((always_inline)) inline bool add(SubtitleParser& parser, const ManyMessages& messages, const char* words,
                                               const Frames& frames, S64 offset) {
    const U32 start = timeOf(parser, frames.v[0]);
    const U32 end = timeOf(parser, frames.v[1]);
    messages.log(words, static_cast<S64>(parser.m_u64NanoSecPerFrame), asLong(frames.v[0]), asLong(frames.v[1]),
                 asLong(start), asLong(end));
    return addTag(parser, start, end, offset);
}

/// The first line at `i`, which moves past its two '}': a frame rate for the file, or an entry at the player's rate.
/// False when a tag could not be stored.
bool firstLine(SubtitleParser& parser, const TextView<Bytes>& in, ClosingBraces<Bytes>& braces, size_t& i) {
    Frames frames;
    if (frames.read(in, i)) {
        VX_LOG(kTag, "ParserThread first line::u32Frames1= %d, u32Frames2 = %d\n", static_cast<S32>(frames.v[0]),
               static_cast<S32>(frames.v[1]));
    }
    i = braces.pastSecond(i);  // kept(mdvd-unmarked-first-two): across lines, and whatever was read
    U32 rate[2];
    if (readAll(in, i, "%u.%u", rate)) {  // kept(mdvd-text-as-rate): any text that begins with two numbers
        parser.m_u64NanoSecPerFrame = frameDuration(thousandths(rate[0], rate[1]));
        return true;
    }
    deriveDuration(parser);
    return add(parser, ManyMessages(kTag), kEntryWords8, frames, in.byteOffset(i));
}

struct Scan {
    /// 8-bit data.
    bool operator()(SubtitleParser& parser, const TextView<Bytes>& in, size_t i) const {
        const ManyMessages messages(kTag);
        ClosingBraces<Bytes> braces(in);
        for (size_t ahead; in.inside(i); i = in.nextLine(i, ahead)) {
            i = in.skipSpace(i);
            ahead = in.lineAhead(i);
            Frames frames;
            if (const size_t usual = i < kFirstLineBelow ? 0 : frames.readUsual(in, i)) {
                i += usual;
            } else {
                const Unusual line = readUnusual(parser, in, braces, i);
                if (line.is == Unusual::kLost) return false;
                i = line.i;
                if (line.is == Unusual::kNoEntry) continue;
                frames = line.frames;
            }
            if (!add(parser, messages, kEntryWords8, frames, in.byteOffset(i))) return false;
        }
        return true;
    }

    /// 16-bit data: the player's rate is derived again for every line.
    template <class Enc>
    bool operator()(SubtitleParser& parser, const TextView<Enc>& in, size_t i) const {
        const ManyMessages messages(kTag);
        ClosingBraces<Enc> braces(in);
        for (size_t ahead; in.inside(i); i = in.nextLine(i, ahead)) {
            i = in.skipSpace(i);
            ahead = in.lineAhead(i);
            // kept(mdvd-utf16): no line can name a rate
            // kept(mdvd-rate-rounded): one above 1000000 is rounded again and again
            deriveDuration(parser);
            if (in.at(i) == Enc::lit('{') && !entry(parser, messages, in, braces, i)) return false;
        }
        return true;
    }

private:
    /// What a line is that does not begin as usual.
    struct Unusual {
        enum { kNoEntry, kEntry, kLost } is;  ///< lost: a tag could not be stored
        Frames frames;                        ///< of an entry
        size_t i;                             ///< where it goes on: at an entry's text
    };

    /// Reads the one at `i`. Apart from the usual ones, whose numbers stay in registers, and compiled for size.
    __attribute__((noinline, cold)) static Unusual readUnusual(SubtitleParser& parser, TextView<Bytes> in,
                                                               ClosingBraces<Bytes>& braces, size_t i) {
        if (i < kFirstLineBelow && in.at(i) == '{' && !firstLine(parser, in, braces, i)) return {Unusual::kLost, {}, i};
        Frames frames;
        if (in.at(i) != '{' || !frames.read(in, i)) return {Unusual::kNoEntry, {}, i};
        // kept(mdvd-unmarked-zero): at the duration so far, 0 without a first line
        return {Unusual::kEntry, frames, braces.pastSecond(i)};
    }

    /// The entry at `i`, if it is one: then `i` moves to its text. False when its tag could not be stored.
    template <class Enc>
    static bool entry(SubtitleParser& parser, const ManyMessages& messages, const TextView<Enc>& in,
                      ClosingBraces<Enc>& braces, size_t& i) {
        Frames frames;
        const size_t usual = frames.readUsual(in, i);
        const size_t behind = usual != 0 ? i + usual : braces.pastSecond(i);
        const size_t units = behind - i;
        messages.log("SubtitleParserSubMicroDVD::parseThread u32TagSize = %ld", asLong(static_cast<U32>(units)));
        if (units > kLongestHeader) return true;
        if (usual == 0 && !frames.read(Narrowed<kLongestHeader>(in, i, static_cast<U32>(units)), 0)) return true;
        i = behind;
        return add(parser, messages, kEntryWords16, frames, in.byteOffset(i));
    }
};

/// Data without a mark is typed UTF-8 when it is that.
void typeUtf8(SubtitleParser& parser) {
    const TextView<Bytes> data = dataOf<Bytes>(parser);
    // kept(mdvd-unmarked-rate-line): plain ASCII counts as UTF-8
    if (parser.m_eCodeType != E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8 &&
        parser.IsUTF8Encode(parser.m_pu8RawBuffer, data.inside(0) ? data.end() - 1 : 0) == TRUE) {
        parser.m_eCodeType = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
    }
    VX_LOG(kTag, "m_eCodeType = %d \n", static_cast<S32>(parser.m_eCodeType));
}

}  // namespace

template <>
const TextFormat& formatOf<SubtitleParserSubMicroDVD>() {
    static constexpr TextFormat kFormat = dialect({
        .type = E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_MICRO_DVD,
        .worker = {.tag = kTag,
                   .waited = "SubtitleParserSubMicroDVD::BeginParse2222222 -> %08x\n",
                   .startsOnce = false},  // kept(sub-begin-again): alone among the dialects
        .loading = "Zorb_MediaSubtitleParserSubMicroDVD::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
        .finished = "SubtitleParserSubMicroDVD::ParserThread -> Finished : Tag num = %ld, %d\n",
        // kept(mdvd-unmarked-zero): UTF-8 without a mark loses its first three bytes to the mark that it has not
        .utf8FirstUnit = 3,
        .settle = typeUtf8,
        .accepts = acceptsWith<Acceptance<Judge>>,
        .scan = scanWith<Scan>,
    });
    return kFormat;
}

template <>
const SubDialect& subDialectOf<SubtitleParserSubMicroDVD>() {
    static constexpr SubDialect kDialect =
        subDialect<SubtitleParserSubMicroDVD>("SubtitleParserSUB::BeginParse - Try MicroDVD\n", true);
    return kDialect;
}

}  // namespace vxsubtitle

namespace android {

VX_DEFINE_TEXT_PARSER(SubtitleParserSubMicroDVD, U8)
VX_DEFINE_SCAN(SubtitleParserSubMicroDVD)

U32 SubtitleParserSubMicroDVD::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    // kept(break-bar): '|' goes out as it stands
    // kept(mdvd-lf): in LF files with the LF at its end
    return vxsubtitle::extractLine(*this, buf, size, index);
}

}  // namespace android

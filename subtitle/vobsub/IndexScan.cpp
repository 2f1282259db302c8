// The lines of a VobSub index, keyword by keyword.
#include "subtitle/vobsub/IndexScan.h"

#include "subtitle/system/Log.h"
#include "subtitle/text/TimeStamps.h"

namespace vxsubtitle {

namespace {

constexpr const char* kTag = nullptr;  // this class logs without a tag

constexpr U32 kStep = 4096;  // where windows begin, bytes

constexpr char kFilePos[] = "filepos:";
constexpr U32 kTimeUnits = 13;     // "00:01:47:250,"
constexpr U32 kFilePosUnits = 14;  // of 16-bit data, narrowed for the position
constexpr U32 kDelayUnits = 14;    // "-00:00:00:500"

/// Characters of an index as bytes: those of 16-bit data narrowed, with zeros behind them; what exceeds the 256 bytes
/// is dropped.
template <class Enc>
class IndexText {
public:
    static constexpr size_t kMostUnits = 254;  ///< more are not read at all

    IndexText(const TextView<Enc>& in, size_t pos, size_t units) {
        size_t n = 0;
        for (size_t i = 0; i < units; ++i) {
            U8 narrow[2];
            const U32 width = narrowUnit(in.at(pos + i), Enc::kBigEndian, narrow);
            for (U32 k = 0; k < width && n < kScratch - 1; ++k) mBytes[n++] = narrow[k];
        }
    }

    U8 at(size_t i) const { return i < kScratch ? mBytes[i] : U8{0}; }

private:
    static constexpr size_t kScratch = 256;
    U8 mBytes[kScratch] = {};
};

/// 8-bit data is read where it lies, across line ends, however many units are asked for.
template <>
class IndexText<Bytes> {
public:
    static constexpr size_t kMostUnits = static_cast<size_t>(-1);

    IndexText(const TextView<Bytes>& in, size_t pos, size_t) : mIn(in), mPos(pos) {}
    U8 at(size_t i) const { return mIn.at(mPos + i); }

private:
    TextView<Bytes> mIn;
    size_t mPos;
};

/// The length of `word`, when the characters begin with it; else 0.
template <class Characters>
size_t lengthOf(const char* word, const Characters& characters) {
    size_t i = 0;
    while (word[i] != 0 && characters.at(i) == static_cast<U8>(word[i])) ++i;
    return word[i] == 0 ? i : 0;
}

constexpr size_t kLongestKeyword = 14;  // units of 16-bit data, narrowed to be compared

/// "720x576", "0, 0"
template <class Enc>
void readPair(const TextView<Enc>& in, size_t* i, const char* format, U32* first, U32* second) {
    size_t units = 0;
    if (TextView<Enc>::kWidth == 2) {
        *i = in.skipSpace(*i);
        // kept(vob-utf16-values): 16-bit data ends at the next blank, so "org: 8, 16" has one number only
        while (units <= IndexText<Enc>::kMostUnits && in.inside(*i + units) && !isSpace(in.at(*i + units))) ++units;
    }
    U32 pair[2];
    const bool readable = units <= IndexText<Enc>::kMostUnits;
    if (!readable || !readAll(IndexText<Enc>(in, *i, units), 0, format, pair)) pair[0] = pair[1] = 0;
    *first = pair[0];
    *second = pair[1];
}

}  // namespace

bool IndexScan::run() {
    while (position() < mSize && moveWindow()) {
        // kept(vob-mark): looked for wherever a window begins at the scan, not only at the file's start
        if (mAt == 0) tellEncoding();
        if (!scanLine() || mStop.isMade()) return false;
    }
    return closeTrack();
}

/// Moves the window on when little of it is left. False when the file ends before its size.
bool IndexScan::moveWindow() {
    const bool toTheEnd = mWindow.position + mWindow.filled >= mSize;
    if (!toTheEnd && mAt + kStep > mWindow.filled) {
        const size_t behindStep = static_cast<size_t>(position() % kStep);
        mWindow.fill(position() - static_cast<S64>(behindStep));
        mAt = behindStep;
    }
    return mAt < mWindow.filled;
}

void IndexScan::tellEncoding() {
    mValues.codeType = codeTypeOf(mWindow.view<Bytes>());
    const bool marked = mValues.codeType != E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;
    // kept(vob-mark): of a UTF-8 mark only the first byte is stepped over
    mAt = marked
              ? withEncoding(mValues.codeType, [](auto encoding) { return sizeof(typename decltype(encoding)::Unit); })
              : 0;
}

/// One line; what its keyword's handling has passed over does not count again, be it the next line's start.
bool IndexScan::scanLine() {
    return withEncoding(mValues.codeType, [this](auto encoding) {
        const auto in = mWindow.view<decltype(encoding)>();
        size_t i = in.skipSpace(mAt / in.kWidth);
        const bool stored = handleLine(in, &i);
        mAt = static_cast<size_t>(in.byteOffset(in.pastLineEnds(in.toLineEnd(i))));
        return stored;
    });
}

template <class Enc>
bool IndexScan::handleLine(const TextView<Enc>& in, size_t* i) {
    static constexpr Keyword<Enc> kKeywords[] = {
        // tried in this order, letter for letter
        {"timestamp:", &IndexScan::onTimestamp<Enc>},
        {"id:", &IndexScan::onId<Enc>},
        {"langidx:", &IndexScan::onLangIdx<Enc>},
        {"delay:", &IndexScan::onDelay<Enc>},
        {"palette:", &IndexScan::onPalette<Enc>},
        {"size:", &IndexScan::onSize<Enc>},
        {"org:", &IndexScan::onOrg<Enc>},
        {"custom colors:", &IndexScan::onCustomColors<Enc>},
    };
    const IndexText<Enc> line(in, *i, kLongestKeyword);
    if (line.at(0) == '#' || in.at(*i) == 0 || isLineEnd<Enc>(in.at(*i))) return true;
    for (const Keyword<Enc>& keyword : kKeywords) {
        if (const size_t length = lengthOf(keyword.word, line)) return (this->*keyword.handle)(in, i, length);
    }
    VX_LOG(kTag, "unkonwn case,we will not handle\n");
    return true;
}

// "timestamp: 00:01:47:250, filepos: 000001800"
// kept(vob-utf16-values): of 16-bit data no more than 13 units are read for the time, and 14 for the position
template <class Enc>
bool IndexScan::onTimestamp(const TextView<Enc>& in, size_t* i, size_t length) {
    *i = in.skipSpace(*i + length);  // kept(vob-blank-value): across line ends
    U32 t[4];
    if (!readAll(IndexText<Enc>(in, *i, kTimeUnits), 0, "%u:%u:%u:%u", t)) return true;
    // kept(vob-time-width): a time counts as twelve characters and a comma, however it is written
    *i = in.skipSpace(*i + kTimeUnits);
    const size_t word = lengthOf(kFilePos, IndexText<Enc>(in, *i, 12));
    if (word == 0) return true;
    // kept(vob-filepos-digit): one too many, the first digit of the position is not read
    *i = in.skipSpace(*i + word + 2);
    U32 filePos[1];
    if (!readAll(IndexText<Enc>(in, *i, kFilePosUnits), 0, "%x", filePos)) return true;
    // kept(vob-delay-wrap): 32 bits, so a start before 0 wraps
    const U32 start = static_cast<U32>(mDelayMs + milliseconds(t[0], t[1], t[2], t[3]));
    return mTarget.addPicture(start, filePos[0]);
}

// "id: en, index: 0"
template <class Enc>
bool IndexScan::onId(const TextView<Enc>& in, size_t* i, size_t length) {
    *i = in.skipSpace(*i + length);
    if (!closeTrack()) return false;
    const IndexText<Enc> code(in, *i, 2);
    mLanguage = E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED;
    for (U32 language = E_MEDIA_SUBTITLE_PARSER_LANGUAGE_START; language < E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM;
         ++language) {
        if (code.at(0) != mCodes[language][0] || code.at(1) != mCodes[language][1]) continue;
        mLanguage = static_cast<EN_MEDIA_SUBTITLE_PARSER_LANGUAGE>(language);
        break;
    }
    return true;
}

// "delay: -00:00:00:500"
template <class Enc>
bool IndexScan::onDelay(const TextView<Enc>& in, size_t* i, size_t length) {
    *i = in.skipSpace(*i + length);
    // kept(vob-utf16-values): of 16-bit data no more than these units are read
    const IndexText<Enc> text(in, *i, kDelayUnits);
    const bool isSigned = text.at(0) == '-' || text.at(0) == '+';
    int sign = text.at(0) == '-' ? -1 : 1;
    U32 t[4] = {};
    // A literal takes any character, so '+' needs no format of its own.
    // kept(vob-delay-sign): without a sign there is no delay
    if (!isSigned || !readAll(text, 0, "-%u:%u:%u:%u", t)) {
        sign = 0;
        memset(t, 0, sizeof t);
    }
    mDelayMs = sign * ((S64{3600} * t[0] + S64{60} * t[1] + t[2]) * 1000 + t[3]);
    VX_LOG(kTag, "[SUBIDX] delay:%lld, sign:%d, hh:%u, mm:%u, ss:%u, ms:%u", mDelayMs, sign, t[0], t[1], t[2], t[3]);
    return true;
}

// "palette: 000000, ffffff, ..."
// kept(vob-palette-short): the entries that were read stay even when there are too few
template <class Enc>
bool IndexScan::onPalette(const TextView<Enc>& in, size_t* i, size_t length) {
    *i += length;
    const char* const format = "%x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x";
    const size_t units = in.toLineEnd(*i) - *i;
    const bool readable = units <= IndexText<Enc>::kMostUnits;
    if (!readable || !readAll(IndexText<Enc>(in, *i, units), 0, format, mValues.palette)) {
        mValues.palette[0] = kNoPalette;
    }
    return true;
}

// "size: 720x576"
template <class Enc>
bool IndexScan::onSize(const TextView<Enc>& in, size_t* i, size_t length) {
    *i += length;
    readPair(in, i, "%ux%u", &mValues.width, &mValues.height);
    return true;
}

// "org: 0, 0"
template <class Enc>
bool IndexScan::onOrg(const TextView<Enc>& in, size_t* i, size_t length) {
    *i += length;
    readPair(in, i, "%u, %u", &mValues.originX, &mValues.originY);
    return true;
}

template <class Enc>
bool IndexScan::onLangIdx(const TextView<Enc>&, size_t*, size_t) {
    // 16-bit indexes pass over it in silence, and have words of their own for custom colours
    if (TextView<Enc>::kWidth == 1) VX_LOG(kTag, "we will not use these informations\n");
    return true;
}

template <class Enc>
bool IndexScan::onCustomColors(const TextView<Enc>&, size_t*, size_t) {
    VX_LOG(kTag, "%s",
           TextView<Enc>::kWidth == 1 ? "we will not use these informations\n"
                                      : "now we will not use these informations\n");
    return true;
}

/// Ends the track of the pictures since the last one, if there are any. False when it could not be stored.
bool IndexScan::closeTrack() {
    const U32 count = mTarget.pictureCount();
    if (count <= mTrackStart) return true;  // kept(vob-empty-track): a language without a picture is no track
    if (!mTarget.addTrack(mLanguage, mTrackStart, count - 1)) return false;
    mTrackStart = count;
    return true;
}

}  // namespace vxsubtitle

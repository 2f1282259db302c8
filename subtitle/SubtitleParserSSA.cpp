#include "subtitle/SubtitleParserSSA.h"

#include <stdlib.h>

#include "subtitle/parser/EncodingCheck.h"
#include "subtitle/parser/EntryText.h"
#include "subtitle/parser/TextParser.h"
#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/system/Log.h"
#include "subtitle/text/NumberScan.h"
#include "subtitle/text/Markup.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr ParseStyle kStyle{
    "SubtitleParserSSA",
    "Zorb_MediaSubtitleParserSSA::BeginParse -> Enter\n",
    "Zorb_MediaSubtitleParserSSA::ParserThread - Enter, data size = %ld, rawbuf: %x\n",
    "Zorb_MediaSubtitleParserSSA Warning, Read data < Requied Data\n",
    "SubtitleParserSSA thread create failed!!\n",
    "Zorb_MediaSubtitleParserSSA::BeginParse -> Wait...\n",
    "Zorb_MediaSubtitleParserSSA::BeginParse2222222 -> %08x\n",
    "Zorb_MediaSubtitleParserSSA::BeginParse -> Exit\n",
    10000,
    100000,
    false,
    false,
};

constexpr CheckStyle kCheck{
    kStyle.tag,
    "Zorb_MediaSubtitleParserSSA::ParserThread start to check possible encodings",
    "u32CurTagEncoding[%ld] = %ld\n",
    "Zorb_MediaSubtitleParserSSA::ParserThread code type = %u\n",
};

constexpr char kDialogue[] = "DIALOGUE:";
constexpr size_t kDialogueLength = sizeof kDialogue - 1;
constexpr size_t kTimesLength = 22;   // 0:00:01.50,0:00:03.00, - what is skipped, however long the times are
constexpr U32 kTimesUnits = 21;       // what 16-bit text is narrowed of them
constexpr int kFieldsBeforeText = 6;  // Style, Name, three margins, Effect

/// The eight numbers of the fields Start and End.
struct Times {
    U32 v[8];
    template <class Enc>
    bool scan(const TextView<Enc>& in, size_t pos) {
        return scanUsualLine<kTimesUnits>(in, pos, "0:00:00.00,0:00:00.00", "%u:%u:%u.%u,%u:%u:%u.%u", v);
    }
    // kept: the fraction counts hundredths, however many digits it has
    U32 start() const { return milliseconds(v[0], v[1], v[2], v[3] * 10); }
    U32 end() const { return milliseconds(v[4], v[5], v[6], v[7] * 10); }
};

/// The commas of a text, asked for in ascending order: each stretch is searched once, however many lines ask.
template <class Enc>
class Commas {
public:
    explicit Commas(const TextView<Enc>& in) : mIn(in) {}

    /// Behind the first comma at or after `from`; past the last whole unit when there is none.
    size_t behind(size_t from) {
        if (mAt < from) mAt = mIn.findUnit(from, Enc::lit(','));
        return mAt + 1;
    }

private:
    const TextView<Enc>& mIn;
    size_t mAt = 0;
};

template <class Enc>
class Scan {
public:
    Scan(SubtitleParserSSA& parser, const TextView<Enc>& in) : mParser(parser), mIn(in), mCommas(in) {}

    /// False when a tag could not be stored.
    bool run(size_t i) {
        while (mIn.inside(i)) {
            if (!atKeyword(mIn, i, kDialogue)) {
                i = mIn.nextLine(i);
                continue;
            }
            const size_t begin = i + kDialogueLength;
            const size_t times = mCommas.behind(begin);  // may lie lines further on
            Times read;
            if (times == mNoTimes || !read.scan(mIn, times)) {
                mNoTimes = times;
                i = mIn.nextLine(k8Bit ? begin : times);
                continue;
            }
            i = times + kTimesLength;
            for (int field = 0; field < kFieldsBeforeText; ++field) {
                i = mCommas.behind(i);
                if (i > mIn.wholeUnits()) return true;  // kept: the data's end among the fields ends the whole scan
            }
            if (!add(read, i)) return false;
            i = mIn.nextLine(i);
        }
        return true;
    }

private:
    static constexpr bool k8Bit = sizeof(typename Enc::Unit) == 1;

    bool add(const Times& times, size_t text) {
        if constexpr (k8Bit) {
            // kept: 8-bit text alone loses the lines that go back in time
            if (times.start() < mPreviousStart) return true;
            mPreviousStart = times.start();
        }
        return mParser.AddTag(times.start(), times.end(),
                              mParser.m_s64RawBufferPosition + TextView<Enc>::byteOffset(text),
                              E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE) != FALSE;
    }

    SubtitleParserSSA& mParser;
    const TextView<Enc>& mIn;
    Commas<Enc> mCommas;
    size_t mNoTimes = 0;  // where no times were found last: lines without a comma all look at the same place
    U32 mPreviousStart = 0;
};

/// The text of one line, markup dropped. At most `units` units are read.
template <class Enc>
U32 extract(WorkText<Enc> in, TextSink<typename Enc::Unit> out, U32 units, U32 limit, Markup<Enc> markup) {
    const auto atEnd = [&in](U32 i) { return in.at(i) == 0 || isLf<Enc>(in.at(i)) || atCrLf(in, i); };
    for (U32 at = 0; at < units && out.count() < limit && !atEnd(at);) {
        if (!markup.step(in, at, out)) return out.count();
    }
    return out.finish();
}

}  // namespace

SubtitleParserSSA::SubtitleParserSSA(char* path) {
    pFileProcess = new SubtitleFileProcess(reinterpret_cast<U8*>(path));
}

SubtitleParserSSA::SubtitleParserSSA(int fd, S64 offset, S64 length) {
    pFileProcess = new SubtitleFileProcess(fd, offset, length);
}

SubtitleParserSSA::~SubtitleParserSSA() { releaseFile(*this); }

BOOL SubtitleParserSSA::BeginParse() { return beginParse(*this, kStyle); }

BOOL SubtitleParserSSA::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return describeTrack(*this, E_MEDIA_SUBTITLE_PARSER_TYPE_SSA, info);
}

BOOL SubtitleParserSSA::ConvertUnicode2ASCII(U16* src, U8* dst, U32 count) {
    return SubtitleParser::ConvertUnicode2ASCII(src, dst, count);
}

void* SubtitleParserSSA::ParserTask(void* parser) {
    static_cast<SubtitleParserSSA*>(parser)->ParserThread();
    return nullptr;
}

void SubtitleParserSSA::ParserThread() {
    const bool complete =
        scanFile(*this, [this](const auto& in, size_t firstUnit) { return Scan(*this, in).run(firstUnit); });
    if (complete) {
        raise(bParseFinish);  // kept: before the check and the sort
        GetData2CheckPossibleEncodings();
        if (m_u32TagNum > 0 && m_pTagBuffer != nullptr) {
            qsort(m_pTagBuffer, m_u32TagNum, sizeof *m_pTagBuffer, Compare);
        }
    }
    VX_LOG(kStyle.tag, "Zorb_MediaSubtitleParserSSA::ParserThread -> Finished : Tag num = %ld, %d\n",
           static_cast<long>(static_cast<S32>(m_u32TagNum)), int{isRaised(bParseFinish)});
}

void SubtitleParserSSA::GetData2CheckPossibleEncodings() { checkEntries(*this, kCheck); }

U32 SubtitleParserSSA::GetData(const U32, U8* buf, const U32 size, const U32 index) {
    takeDataSize(*this);  // kept: the whole data's size, so that it bounds nothing shorter
    if (!canExtract(*this, buf, index)) return 0;
    const S64 pos = positionOf(*this, index);
    const S64 next = positionOf(*this, index + 1);
    const bool toDataEnd = index + 1 == m_u32TagNum || pos >= next;  // sorted, the next one may lie before it
    copyUpTo(*this, pos, toDataEnd ? m_s64DataTotalSize : next);

    const U32 units = m_u32SubtitleBufferDataSize / 2;
    const U32 bound = spanOf(*this, index);  // kept: bytes, compared with unit indices in 16-bit text too
    U8* const work = m_pu8SubtitleBuffer;
    switch (m_eCodeType) {
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8:
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE:
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5:
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK:
            return extract<Bytes>(WorkText<Bytes>(work), {buf, size}, m_u32SubtitleBufferDataSize, outputLimit8(size),
                                  {m_u32RawBufferDataSize, bound});
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE:
            return extract<Utf16Le>(WorkText<Utf16Le>(work), {buf, size}, units, outputLimit16(size),
                                    {m_u32RawBufferDataSize, bound});
        case E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG:
            return copyFirstLine(WorkText<Utf16Be>(work), {buf, size}, units, outputLimit16(size));
        default:
            return 0;
    }
}

}  // namespace android

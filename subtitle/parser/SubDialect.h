/// What the dialects of the .sub extension share around their syntax: their records, the acceptance test, and one
/// entry's text.
#pragma once

#include "subtitle/parser/TextParser.h"
#include "subtitle/text/Numbers.h"

namespace vxsubtitle {

/// Fills in what every dialect does alike, as far as the record does not say otherwise: no words on the way in and out,
/// and those of the SRT parser in between.
constexpr TextFormat dialect(TextFormat record) {
    record.shortRead = "Zorb_MediaSubtitleParserSRT Warning, Read data < Requied Data\n";
    if (record.loading == nullptr) {
        record.loading = "Zorb_MediaSubtitleParserSRT::ParserThread - Enter, data size = %ld, rawbuf: %x\n";
    }
    if (record.worker.waited == nullptr) {
        record.worker.waited = "Zorb_MediaSubtitleParserSRT::BeginParse2222222 -> %08x\n";
    }
    record.countsAnew = false;
    return record;
}

/// The first unit of data with a UTF-8 mark.
constexpr U32 kOnTheMark = 0;  // kept(sub-mark): so the mark spoils the line that it stands on

/// What an acceptance test makes of one line.
enum class Verdict { kSkip, kAccept, kRefuse };

/// An acceptance test: a `Judge` looks at the first character of each line, from `i` on, until it decides. The end of
/// the data refuses the file.
template <class Judge>
struct Acceptance {
    template <class View>
    bool operator()(const View& in, size_t i) const {
        for (i = in.skipSpace(i); in.inside(i); i = in.skipSpace(in.nextLine(i))) {
            const Verdict verdict = Judge{}(in, i);
            if (verdict != Verdict::kSkip) return verdict == Verdict::kAccept;
        }
        return false;
    }
};

/// A line of no interest; but a digit as its second character speaks for another dialect.
template <class View>
Verdict refuseSecondDigit(const View& in, size_t i) {
    // kept(sub-second-digit): whatever its first character is
    return isDigit(in.at(i + 1)) ? Verdict::kRefuse : Verdict::kSkip;
}

/// What the dispatcher knows of a dialect.
struct SubDialect {
    const char* announcement;  ///< logged before it is tried
    bool takesFrameRate;       ///< gets the rate that the player set

    // Both answer null when memory is short.
    SubtitleParser* (*fromPath)(U8* path);
    SubtitleParser* (*fromDescriptor)(int fd);
};

/// The row of a dialect's class. Each dialect's source specialises it.
template <class Parser>
const SubDialect& subDialectOf();

template <class Parser>
constexpr SubDialect subDialect(const char* announcement, bool takesFrameRate = false) {
    return {
        announcement,
        takesFrameRate,
        [](U8* path) -> SubtitleParser* { return new (std::nothrow) Parser(path); },
        // kept(file-whole): whatever part was asked for
        [](int fd) -> SubtitleParser* { return new (std::nothrow) Parser(fd, 0, 0); },
    };
}

/// The text of tag `index` as SubViewer 1.0, MicroDVD and, without big-endian data, the DVB subtitle system give it.
U32 extractLine(SubtitleParser& parser, U8* buf, U32 size, U32 index);

/// The same up to the next time stamp instead of the line's end, without a line break at its end.
U32 extractToTimeStamp(SubtitleParser& parser, U8* buf, U32 size, U32 index);

}  // namespace vxsubtitle

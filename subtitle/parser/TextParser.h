/// The one pipeline of every text format: open, load, tell the encoding, accept, start, wait, scan, end. A record per
/// format says what is its own.
#pragma once

#include <new>

#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/parser/EntryText.h"
#include "subtitle/parser/ParserWorker.h"

namespace vxsubtitle {

/// What a text format does in its own way. Null words are not logged; a step that is null is not taken.
struct TextFormat {
    EN_MEDIA_SUBTITLE_PARSER_TYPE type = E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID;
    WorkerStyle worker = {};

    const char* enter = nullptr;      ///< first line of `BeginParse`
    const char* loading = nullptr;    ///< data size (%ld) and raw buffer address (%x), before the file is read
    const char* shortRead = nullptr;  ///< fewer bytes came than the file holds
    const char* exit = nullptr;       ///< last line of `BeginParse`, on every way out but that without a file source
    const char* finished = nullptr;   ///< last line of the scan: the tag count (%ld) and the finish flag (%d)

    bool countsAnew = true;  ///< forgets the tags of an earlier call before it opens the file
    // kept(utf8-mark): only one byte of the mark is stepped over, the rest spoils the first line
    U32 utf8FirstUnit = 1;      ///< the first unit of data typed UTF-8; that of UTF-16 is the one behind the mark
    bool logsTable = false;     ///< logs the table of a complete scan
    bool acceptsAtMark = true;  ///< `accepts` looks at the data from the mark on, not from the first unit on

    /// What becomes of data whose mark is told, before it is accepted.
    void (*settle)(SubtitleParser& parser) = nullptr;

    /// Whether the data, from that unit on, is of this format: asked on the player's thread, before the worker is
    /// started. Formats without it take every file, and tell the encoding on the worker's thread.
    bool (*accepts)(const SubtitleParser& parser, size_t i) = nullptr;

    /// The scan of the data from that unit on. False when a tag could not be stored.
    bool (*scan)(SubtitleParser& parser, size_t firstUnit) = nullptr;

    /// What a complete scan ends with, once its flag is up.
    void (*conclude)(SubtitleParser& parser) = nullptr;
};

/// The record of a parser class. Each class's source specialises it.
template <class Parser>
const TextFormat& formatOf();

/// A step of a format's record: calls a `Step` on the data in its encoding.
template <class Step>
bool scanWith(SubtitleParser& parser, size_t firstUnit) {
    return withData(parser, [&](const auto& in) { return Step{}(parser, in, firstUnit); });
}
/// The same for a step that looks at one line or a few, compiled for size.
template <class Step>
__attribute__((cold)) bool acceptsWith(const SubtitleParser& parser, size_t i) {
    return withData(parser, [&](const auto& in) { return Step{}(in, i); });
}

/// The stage between loading and accepting: the first bytes tell the code type, and the format settles what becomes of
/// it.
void tellEncoding(SubtitleParser& parser, const TextFormat& format);

/// What the player's thread does with the loaded data before it asks whether the format accepts it.
inline void prepareScan(SubtitleParser& parser, const TextFormat& format) {
    if (format.accepts != nullptr) tellEncoding(parser, format);
}

/// A worker's whole work: the scan, the flag, and what the format does behind it.
void runScan(SubtitleParser& parser, const TextFormat& format);

/// `BeginParse`: everything up to the result. `main(argument)` is the worker's.
[[nodiscard]] BOOL beginParse(SubtitleParser& parser, const TextFormat& format, void* (*main)(void*), void* argument);

template <class Parser>
[[nodiscard]] BOOL beginParse(Parser& parser) {
    return beginParse(parser, formatOf<Parser>(), &workerMain<Parser>, &parser);
}

/// The `GetTrackInfo` of every text format: fills the format and the code type, nothing else.
BOOL describeTrack(const SubtitleParser& parser, const TextFormat& format, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info);

/// Destroys what every file parser's destructor destroys: waits for the worker, closes and deletes the file source.
void releaseFile(SubtitleParser& parser);

/// Null when memory is short.
template <class... Arguments>
SubtitleFileProcess* makeFileSource(Arguments... arguments) {
    return new (std::nothrow) SubtitleFileProcess(arguments...);
}

}  // namespace vxsubtitle

// NOLINTBEGIN(bugprone-macro-parentheses): the arguments are names of classes

/// Defines what every text parser's class defines alike: the constructors from a path and from a descriptor, the
/// destructor, and the operations that the pipeline carries out by the class's record.
#define VX_DEFINE_TEXT_PARSER(Class, PathUnit)                                                                      \
    Class::Class(PathUnit* path) { pFileProcess = vxsubtitle::makeFileSource(reinterpret_cast<U8*>(path)); }        \
    Class::Class(int fd, S64 offset, S64 length) { pFileProcess = vxsubtitle::makeFileSource(fd, offset, length); } \
    Class::~Class() { vxsubtitle::releaseFile(*this); }                                                             \
    BOOL Class::BeginParse() { return vxsubtitle::beginParse(*this); }                                              \
    BOOL Class::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {                                \
        return vxsubtitle::describeTrack(*this, vxsubtitle::formatOf<Class>(), info);                               \
    }

/// Defines what the worker's thread runs, for a class that does nothing of its own there.
#define VX_DEFINE_SCAN(Class)                        \
    void* Class::ParserTask(void* parser) {          \
        static_cast<Class*>(parser)->ParserThread(); \
        return nullptr;                              \
    }                                                \
    void Class::ParserThread() { vxsubtitle::runScan(*this, vxsubtitle::formatOf<Class>()); }

// NOLINTEND(bugprone-macro-parentheses)

/// What every file parser's `BeginParse` does around its format: open, load, wait for the worker. Not installed.
#pragma once

#include "subtitle/SubtitleParser.h"
#include "subtitle/system/Worker.h"

namespace vxsubtitle {

/// How a format's `BeginParse` speaks and waits. Null texts are not logged.
struct ParseStyle {
    const char* tag;           ///< log tag: the class name
    const char* enter;         ///< first line
    const char* loading;       ///< data size (%ld) and raw buffer address (%x), before the file is read
    const char* shortRead;     ///< fewer bytes came than the file holds
    const char* createFailed;  ///< no thread could be created
    const char* waiting;       ///< before the wait
    const char* waited;        ///< after the wait, with one %08x: the state word, or the finish flag
    const char* exit;          ///< last line, on every way out but that without a file source
    U32 limitMs;               ///< the wait ends when this many milliseconds have passed
    U32 periodUs;              ///< pause between two looks at the finish flag, microseconds
    bool startsOnce;           ///< refuses to start when a worker was started before
    bool waitedShowsFlag;      ///< `waited` shows `bParseFinish` instead of `m_eFlag`
};

WorkerSlot workerOf(SubtitleParser& parser);

/// Waits for the parser's worker, if it has one that was not joined. Call before anything that it uses is freed,
/// replaced or destroyed; first thing in every concrete destructor, because workers call virtual operations.
void joinWorkerOf(SubtitleParser& parser);

/// Destroys what every file parser's destructor destroys: waits for the worker, closes and deletes the file source.
void releaseFile(SubtitleParser& parser);

/// Opens the file source, allocates the buffers and reads the whole file. Requires a file source.
bool openAndLoad(SubtitleParser& parser, const ParseStyle& style);

/// Whether `runWorker` would start a worker: the buffers are there, and it need not be the first.
bool mayStart(const SubtitleParser& parser, const ParseStyle& style);

/// Starts `main` on the worker thread, waits until the scan has finished or the limit has passed, and joins a worker
/// that is over. `TRUE` only when the scan has finished.
BOOL runWorker(SubtitleParser& parser, const ParseStyle& style, void* (*main)(void*), void* argument);

/// Thread entry for a parser class: runs its `ParserTask`; that the worker has ended is its very last store.
template <class Parser>
void* workerMain(void* argument) {
    Parser* const parser = static_cast<Parser*>(argument);
    Parser::ParserTask(argument);
    workerEnded(parser->mWorkerState);
    return nullptr;
}

template <class Parser>
BOOL runWorker(Parser& parser, const ParseStyle& style) {
    return runWorker(parser, style, &workerMain<Parser>, &parser);
}

/// The whole `BeginParse` of a format that accepts every file.
template <class Parser>
BOOL beginParse(Parser& parser, const ParseStyle& style);

void logText(const ParseStyle& style, const char* text);

/// Logs the whole tag table between two rules, a line for each tag.
void logTags(const SubtitleParser& parser, const ParseStyle& style);

template <class Parser>
BOOL beginParse(Parser& parser, const ParseStyle& style) {
    joinWorkerOf(parser);  // of an earlier call
    parser.m_u32TagNum = 0;
    logText(style, style.enter);
    if (parser.pFileProcess == nullptr) return FALSE;
    const BOOL result = openAndLoad(parser, style) ? runWorker(parser, style) : FALSE;
    logText(style, style.exit);
    return result;
}

}  // namespace vxsubtitle

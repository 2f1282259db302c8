/// A parser's worker: started behind the checks that every `BeginParse` makes, waited for as its format says, joined
/// when it is over.
#pragma once

#include "subtitle/SubtitleParser.h"
#include "subtitle/system/Worker.h"

namespace vxsubtitle {

/// How a format starts its worker and waits for it. Null words are not logged.
struct WorkerStyle {
    const char* tag = nullptr;           ///< log tag: the class name
    const char* createFailed = nullptr;  ///< no thread could be created
    const char* waiting = nullptr;       ///< before the wait
    const char* waited = nullptr;        ///< after the wait, with one %08x: the state word, or the finish flag
    bool waitedShowsFlag = false;        ///< `waited` shows `bParseFinish` instead of `m_eFlag`
    U32 limitMs = 100000;                ///< the wait ends when this many milliseconds have passed
    U32 periodUs = 100000;               ///< pause between two looks at the finish flag, microseconds
    bool startsOnce = true;              ///< refuses to start when a worker was started before
};

/// Logs words without numbers, if there are any.
void logWords(const WorkerStyle& style, const char* words);

/// Asks the parser's worker to stop and waits for it, if there is one that was not joined. Call before anything that it
/// uses is freed, replaced or destroyed; first thing in every concrete destructor, because workers call virtual
/// operations.
void stopWorkerOf(SubtitleParser& parser);

/// Whether the parser has a worker that was not joined: its limit has passed, and nobody knows how far it is.
[[nodiscard]] bool hasWorker(SubtitleParser& parser);

/// What the parser's worker looks at.
StopRequest stopOf(const SubtitleParser& parser);

/// Whether `runWorker` would start a worker: the buffers are there, and it need not be the first.
[[nodiscard]] bool mayStart(const SubtitleParser& parser, const WorkerStyle& style);

/// Starts `main(argument)` on the worker thread, waits until the scan has finished or the limit has passed, and joins a
/// worker that is over. `TRUE` only when the scan has finished.
[[nodiscard]] BOOL runWorker(SubtitleParser& parser, const WorkerStyle& style, void* (*main)(void*), void* argument);

/// Thread entry for a parser class: runs its `ParserTask`; that the worker has ended is its very last store.
template <class Parser>
void* workerMain(void* argument) {
    Parser* const parser = static_cast<Parser*>(argument);
    Parser::ParserTask(argument);
    workerEnded(parser->mWorkerState);
    return nullptr;
}

template <class Parser>
[[nodiscard]] BOOL runWorker(Parser& parser, const WorkerStyle& style) {
    return runWorker(parser, style, &workerMain<Parser>, &parser);
}

}  // namespace vxsubtitle

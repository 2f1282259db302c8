// The start of a parser's worker, and the wait for it.
#include "subtitle/parser/ParserWorker.h"

#include "subtitle/system/Log.h"
#include "subtitle/system/Wraps.h"

namespace vxsubtitle {

namespace {

WorkerSlot slotOf(SubtitleParser& parser) { return {parser.m_threadParser, parser.mWorkerState}; }

/// Milliseconds since `start`, whose clock begins anew every 49 days.
VX_WRAPS U32 elapsedSince(SubtitleParser& parser, U32 start) { return parser.GetSystemTime() - start; }

/// Waits until the scan has finished or the limit has passed, and joins a worker that is over. Whether it has finished:
/// the look that ends the wait decides about the join and the result.
bool waitForScan(SubtitleParser& parser, const WorkerStyle& style) {
    const WorkerSlot slot = slotOf(parser);
    const U32 start = parser.GetSystemTime();
    bool running = false;
    bool finished = false;
    const auto look = [&] {
        running =
            isRunning(slot);  // before the flag, so that an end between these looks and the wait ends that at once
        finished = isRaised(parser.bParseFinish);
    };
    for (look(); !finished && elapsedSince(parser, start) < style.limitMs; look()) {
        waitForEnd(slot, style.periodUs, running);
    }
    if (finished || hasEnded(slot)) joinWorker(slot);
    return finished;
}

}  // namespace

void logWords(const WorkerStyle& style, const char* words) {
    if (words != nullptr) VX_LOG(style.tag, "%s", words);
}

void stopWorkerOf(SubtitleParser& parser) { stopWorker(slotOf(parser)); }

bool hasWorker(SubtitleParser& parser) { return hasWorker(slotOf(parser)); }

StopRequest stopOf(const SubtitleParser& parser) { return StopRequest(parser.mWorkerState); }

bool mayStart(const SubtitleParser& parser, const WorkerStyle& style) {
    if (style.startsOnce && parser.m_threadParser != 0) return false;
    return parser.m_pTagBuffer != nullptr && parser.m_pu8SubtitleBuffer != nullptr && parser.m_pu8RawBuffer != nullptr;
}

BOOL runWorker(SubtitleParser& parser, const WorkerStyle& style, void* (*main)(void*), void* argument) {
    if (!mayStart(parser, style)) return FALSE;
    if (!startWorker(slotOf(parser), main, argument)) {
        logWords(style, style.createFailed);
        return FALSE;
    }
    logWords(style, style.waiting);
    const bool finished = waitForScan(parser, style);
    VX_LOG(style.tag, style.waited, style.waitedShowsFlag ? U32{finished} : U32{parser.m_eFlag});
    return finished ? TRUE : FALSE;
}

}  // namespace vxsubtitle

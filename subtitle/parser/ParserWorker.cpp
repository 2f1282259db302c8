// The start of a parser's worker, and the wait for it.
#include "subtitle/parser/ParserWorker.h"

#include <unistd.h>

#include "subtitle/system/Log.h"

namespace vxsubtitle {

namespace {

WorkerSlot slotOf(SubtitleParser& parser) { return {parser.m_threadParser, parser.mWorkerState, parser.bParseFinish}; }

void waitForWorker(SubtitleParser& parser, const WorkerStyle& style) {
    headStart(parser.bParseFinish);
    const U32 start = parser.GetSystemTime();
    while (!isRaised(parser.bParseFinish) && parser.GetSystemTime() - start < style.limitMs) usleep(style.periodUs);
    joinIfOver(slotOf(parser));
}

}  // namespace

void logWords(const WorkerStyle& style, const char* words) {
    if (words != nullptr) VX_LOG(style.tag, "%s", words);
}

void joinWorkerOf(SubtitleParser& parser) { joinWorker(slotOf(parser)); }

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
    waitForWorker(parser, style);
    const bool finished = isRaised(parser.bParseFinish);
    VX_LOG(style.tag, style.waited, style.waitedShowsFlag ? U32{finished} : U32{parser.m_eFlag});
    return finished ? TRUE : FALSE;
}

}  // namespace vxsubtitle

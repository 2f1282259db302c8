#include "subtitle/parser/TextParser.h"

#include <unistd.h>

#include "subtitle/SubtitleFileProcess.h"
#include "subtitle/system/Log.h"

namespace vxsubtitle {

WorkerSlot workerOf(SubtitleParser& parser) {
    return {parser.m_threadParser, parser.mWorkerState, parser.bParseFinish};
}

void joinWorkerOf(SubtitleParser& parser) { joinWorker(workerOf(parser)); }

void releaseFile(SubtitleParser& parser) {
    joinWorkerOf(parser);
    if (parser.pFileProcess == nullptr) return;
    parser.pFileProcess->Close();
    delete parser.pFileProcess;
    parser.pFileProcess = nullptr;
}

void logText(const ParseStyle& style, const char* text) {
    if (text != nullptr) VX_LOG(style.tag, "%s", text);
}

void logTags(const SubtitleParser& parser, const ParseStyle& style) {
    constexpr char kRule[] = "\n\n*************************************\n\n";
    logText(style, kRule);
    for (U32 i = 0; parser.m_pTagBuffer != nullptr && i < parser.m_u32TagNum; ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = parser.m_pTagBuffer[i];
        VX_LOG(style.tag, "Time = %lu, %lu, %08lx\n", static_cast<unsigned long>(tag.u32TimeStart),
               static_cast<unsigned long>(tag.u32TimeEnd), static_cast<unsigned long>(static_cast<U32>(tag.s64Pos)));
    }
    logText(style, kRule);
}

bool openAndLoad(SubtitleParser& parser, const ParseStyle& style) {
    SubtitleFileProcess& file = *parser.pFileProcess;
    if (file.Open() < 1) return false;
    if (parser.Init(file.Length()) != TRUE) return false;
    VX_LOG(style.tag, style.loading, static_cast<long>(static_cast<S32>(parser.m_s64DataTotalSize)),
           static_cast<U32>(reinterpret_cast<uintptr_t>(parser.m_pu8RawBuffer)));
    const U64 size = static_cast<U64>(parser.m_s64DataTotalSize);
    if (file.Read(parser.m_pu8RawBuffer, size) < size) logText(style, style.shortRead);
    return true;
}

namespace {

void waitForWorker(SubtitleParser& parser, const ParseStyle& style) {
    headStart(parser.bParseFinish);
    const U32 start = parser.GetSystemTime();
    while (!isRaised(parser.bParseFinish) && parser.GetSystemTime() - start < style.limitMs) usleep(style.periodUs);
    joinIfOver(workerOf(parser));
}

}  // namespace

bool mayStart(const SubtitleParser& parser, const ParseStyle& style) {
    if (style.startsOnce && parser.m_threadParser != 0) return false;
    return parser.m_pTagBuffer != nullptr && parser.m_pu8SubtitleBuffer != nullptr && parser.m_pu8RawBuffer != nullptr;
}

BOOL runWorker(SubtitleParser& parser, const ParseStyle& style, void* (*main)(void*), void* argument) {
    if (!mayStart(parser, style)) return FALSE;
    if (!startWorker(workerOf(parser), main, argument)) {
        logText(style, style.createFailed);
        return FALSE;
    }
    logText(style, style.waiting);
    waitForWorker(parser, style);
    const bool finished = isRaised(parser.bParseFinish);
    VX_LOG(style.tag, style.waited, style.waitedShowsFlag ? U32{finished} : U32{parser.m_eFlag});
    return finished ? TRUE : FALSE;
}

}  // namespace vxsubtitle

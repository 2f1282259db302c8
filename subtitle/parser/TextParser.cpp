// The stages of the pipeline that every text format shares, from the open file to the end of the scan.
#include "subtitle/parser/TextParser.h"

#include "subtitle/system/Log.h"

namespace vxsubtitle {

namespace {

/// Opens the file source, allocates the buffers and reads the whole file.
bool load(SubtitleParser& parser, const TextFormat& format) {
    SubtitleFileProcess& file = *parser.pFileProcess;
    if (file.Open() < 1) return false;
    if (parser.Init(file.Length()) != TRUE) return false;
    VX_LOG(format.worker.tag, format.loading, asLong(static_cast<U32>(parser.m_s64DataTotalSize)),
           static_cast<U32>(reinterpret_cast<uintptr_t>(parser.m_pu8RawBuffer)));
    const U64 size = static_cast<U64>(parser.m_s64DataTotalSize);
    if (file.Read(parser.m_pu8RawBuffer, size) < size) logWords(format.worker, format.shortRead);
    return true;
}

/// The first unit by the encoding that was told: the scan begins there.
size_t firstUnit(const SubtitleParser& parser, const TextFormat& format) {
    if (parser.m_eCodeType == E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8) return format.utf8FirstUnit;
    const bool wide = withEncoding(parser.m_eCodeType, [](auto encoding) { return sizeof encoding.lit(' ') == 2; });
    return wide ? 1 : 0;
}

/// Whether the loaded data is of this format, where that is asked.
bool accepted(SubtitleParser& parser, const TextFormat& format) {
    if (format.accepts == nullptr) return true;
    if (parser.m_pu8SubtitleBuffer == nullptr || parser.m_pTagBuffer == nullptr) return false;
    tellEncoding(parser, format);
    return format.accepts(parser, format.acceptsAtMark ? 0 : firstUnit(parser, format));
}

}  // namespace

void tellEncoding(SubtitleParser& parser, const TextFormat& format) {
    parser.m_eCodeType = codeTypeOf(dataOf<Bytes>(parser));
    if (format.settle != nullptr) format.settle(parser);
}

BOOL beginParse(SubtitleParser& parser, const TextFormat& format, void* (*main)(void*), void* argument) {
    stopWorkerOf(parser);  // of an earlier call
    if (format.countsAnew) parser.m_u32TagNum = 0;
    logWords(format.worker, format.enter);
    if (parser.pFileProcess == nullptr) return FALSE;
    const bool ready = load(parser, format) && accepted(parser, format);
    const BOOL result = ready ? runWorker(parser, format.worker, main, argument) : FALSE;
    logWords(format.worker, format.exit);
    return result;
}

void runScan(SubtitleParser& parser, const TextFormat& format) {
    parser.m_s64RawBufferPosition = 0;
    parser.m_u32RawBufferDataSize = static_cast<U32>(parser.m_s64DataTotalSize);
    bool complete = true;
    if (parser.m_s64DataTotalSize > 0) {  // without data the code type stays, and there is nothing to scan
        if (format.accepts == nullptr) tellEncoding(parser, format);
        complete = format.scan(parser, firstUnit(parser, format));
    }
    if (complete && !stopOf(parser).isMade()) {
        if (format.logsTable) logTags(parser, format.worker.tag);
        // kept(worker-fails-late): else the flag stays down, so that `BeginParse` fails at its limit
        raiseFlag(parser.bParseFinish);
        if (format.conclude != nullptr) format.conclude(parser);
    }
    VX_LOG(format.worker.tag, format.finished, asLong(parser.m_u32TagNum), int{isRaised(parser.bParseFinish)});
}

BOOL describeTrack(const SubtitleParser& parser, const TextFormat& format, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    if (info != nullptr) {
        info->eSubtitleType = format.type;
        info->eCodeType = parser.m_eCodeType;
    }
    return TRUE;
}

void releaseFile(SubtitleParser& parser) {
    stopWorkerOf(parser);
    if (parser.pFileProcess == nullptr) return;
    parser.pFileProcess->Close();
    delete parser.pFileProcess;
    parser.pFileProcess = nullptr;
}

}  // namespace vxsubtitle

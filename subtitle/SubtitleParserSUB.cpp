#include "subtitle/SubtitleParserSUB.h"

#include <unistd.h>

#include "subtitle/parser/SubDialect.h"
#include "subtitle/system/Descriptor.h"
#include "subtitle/system/Log.h"
#include "subtitle/system/PathField.h"

namespace android {

using namespace vxsubtitle;

#define VX_SUB_DIALECT(name, ...) class SubtitleParser##name;
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT

namespace {

constexpr char kTag[] = "SubtitleParserSUB";

/// What is tried, in this order.
constexpr const SubDialect& (*kDialects[])() = {
#define VX_SUB_DIALECT(name, ...) &subDialectOf<SubtitleParser##name>,
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
};

enum class Announced { kPlain, kWithLine };

/// What is logged before the first dialect is tried; the number belongs to the words.
constexpr char kFirstWithLine[] = "SubtitleParserSUB::BeginParse - Try Subviewer 2.0 line=%d\n";
constexpr int kLine = 209;

/// Whether the parser in `m_pParser` is one whose scan ran out of time, with a worker that may still be busy: it is no
/// delegate.
bool hasTimedOut(const SubtitleParserSUB& sub) { return sub.m_pParser != nullptr && hasWorker(*sub.m_pParser); }

/// Who answers the queries.
SubtitleParser* delegateOf(const SubtitleParserSUB& sub) { return hasTimedOut(sub) ? nullptr : sub.m_pParser; }

/// Whether a trial failed because memory is short, be it for its file source, its buffers or its table: what another
/// dialect would make of the file says nothing then.
bool lacksMemory(const SubtitleParser& trial) {
    if (trial.pFileProcess == nullptr) return true;
    const bool loaded = trial.pFileProcess->fpFile != nullptr && trial.m_s64DataTotalSize >= 0;
    return loaded && (trial.m_pu8RawBuffer == nullptr || trial.m_pTagBuffer == nullptr);
}

void drop(SubtitleParserSUB& sub) {
    sub.m_pParser->StopParse();
    sub.m_pParser->Deinit();
    delete sub.m_pParser;
    sub.m_pParser = nullptr;
}

/// How a trial went.
enum class Trial { kAccepted, kRefused, kOver };

Trial tryDialect(SubtitleParserSUB& sub, const SubDialect& dialect, bool byDescriptor) {
    sub.m_pParser = byDescriptor ? dialect.fromDescriptor(sub.u32FileFD) : dialect.fromPath(sub.m_pSubtitleName);
    if (sub.m_pParser == nullptr) return Trial::kOver;
    if (dialect.takesFrameRate) sub.m_pParser->m_u32FrameRrate = sub.m_u32FrameRrate;
    if (sub.m_pParser->BeginParse() == TRUE) {
        sub.m_u32TagNum = sub.m_pParser->m_u32TagNum;
        return Trial::kAccepted;
    }
    if (hasTimedOut(sub)) return Trial::kOver;  // nobody waits for its worker now
    const bool memoryIsShort = lacksMemory(*sub.m_pParser);
    drop(sub);
    return memoryIsShort ? Trial::kOver : Trial::kRefused;
}

/// Tries every dialect in turn; each reads the file from its start.
BOOL tryDialects(SubtitleParserSUB& sub, bool byDescriptor, Announced how) {
    VX_LOG(kTag, "SubtitleParserSUB::BeginParse - Enter\n");
    if (hasTimedOut(sub)) drop(sub);
    Trial trial = sub.m_pParser == nullptr ? Trial::kRefused : Trial::kOver;
    // kept(sub-order): the first that accepts the file keeps it
    for (size_t i = 0; trial == Trial::kRefused && i < sizeof kDialects / sizeof *kDialects; ++i) {
        const SubDialect& dialect = kDialects[i]();
        if (how == Announced::kWithLine && i == 0) {
            VX_LOG(kTag, kFirstWithLine, kLine);
        } else {
            VX_LOG(kTag, "%s", dialect.announcement);
        }
        trial = tryDialect(sub, dialect, byDescriptor);
    }
    if (trial == Trial::kAccepted) return TRUE;
    sub.Deinit();
    return FALSE;
}

}  // namespace

SubtitleParserSUB::SubtitleParserSUB(U8* path) : m_pParser(nullptr), u32FileFD(0) { storePath(m_pSubtitleName, path); }

SubtitleParserSUB::SubtitleParserSUB(int fd, S64, S64) : m_pParser(nullptr), u32FileFD(duplicate(fd)) {
    storePath(m_pSubtitleName, nullptr);
}

SubtitleParserSUB::~SubtitleParserSUB() {
    if (m_pParser != nullptr) drop(*this);
    // kept(sub-descriptor-open): u32FileFD stays open
}

BOOL SubtitleParserSUB::Deinit() { return TRUE; }  // kept(sub-deinit): the delegate outlives it

U32 SubtitleParserSUB::GetData(const U32 track, U8* buf, const U32 size, const U32 index) {
    SubtitleParser* const delegate = delegateOf(*this);
    return delegate != nullptr ? delegate->GetData(track, buf, size, index) : 0;
}

U32 SubtitleParserSUB::GetData(const U32, U8*, const U32, const U32, stSubDecoderInfo*) {
    return 0;  // kept(sub-five-arguments): not forwarded
}

BOOL SubtitleParserSUB::BeginParse() {
    const bool byDescriptor = u32FileFD != 0;  // kept(file-descriptor-0): descriptor 0 counts as none
    return tryDialects(*this, byDescriptor, byDescriptor ? Announced::kWithLine : Announced::kPlain);
}

BOOL SubtitleParserSUB::StopParse() {
    SubtitleParser* const delegate = delegateOf(*this);
    return delegate != nullptr ? delegate->StopParse() : FALSE;
}

U32 SubtitleParserSUB::GetTag(const U32 track, const U32 timeMs) {
    SubtitleParser* const delegate = delegateOf(*this);
    return delegate != nullptr ? delegate->GetTag(track, timeMs) : 0xFFFFFFFF;
}

BOOL SubtitleParserSUB::GetTagInfo(U32 track, U32 index, ST_MEDIA_SUBTITLE_PARSER_TAG* tag) {
    SubtitleParser* const delegate = delegateOf(*this);
    return delegate != nullptr ? delegate->GetTagInfo(track, index, tag) : FALSE;
}

BOOL SubtitleParserSUB::GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    SubtitleParser* const delegate = delegateOf(*this);
    return delegate != nullptr ? delegate->GetTrackInfo(track, info) : FALSE;
}

BOOL SubtitleParserSUB::BeginParse(int) {
    // kept(sub-begin-argument): the descriptor, be it 0 or none, never the argument
    return tryDialects(*this, true, Announced::kPlain);
}

}  // namespace android

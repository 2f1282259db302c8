#include "subtitle/SubtitleParserSUB.h"

#include <unistd.h>

#include "subtitle/parser/SubDialect.h"
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

void dropDelegate(SubtitleParserSUB& sub) {
    sub.m_pParser->StopParse();
    sub.m_pParser->Deinit();
    delete sub.m_pParser;
    sub.m_pParser = nullptr;
}

/// Tries every dialect in turn; each reads the file from its start.
BOOL tryDialects(SubtitleParserSUB& sub, bool byDescriptor, Announced how) {
    VX_LOG(kTag, "SubtitleParserSUB::BeginParse - Enter\n");
    if (sub.m_pParser == nullptr) {
        for (const auto dialectOf : kDialects) {  // kept(sub-order): the first that accepts the file keeps it
            const SubDialect& dialect = dialectOf();
            if (how == Announced::kWithLine && dialectOf == kDialects[0]) {
                VX_LOG(kTag, kFirstWithLine, kLine);
            } else {
                VX_LOG(kTag, "%s", dialect.announcement);
            }
            sub.m_pParser =
                byDescriptor ? dialect.fromDescriptor(sub.u32FileFD) : dialect.fromPath(sub.m_pSubtitleName);
            if (dialect.takesFrameRate) sub.m_pParser->m_u32FrameRrate = sub.m_u32FrameRrate;
            if (sub.m_pParser->BeginParse() == TRUE) {
                sub.m_u32TagNum = sub.m_pParser->m_u32TagNum;
                return TRUE;
            }
            dropDelegate(sub);
        }
    }
    sub.Deinit();
    return FALSE;
}

}  // namespace

SubtitleParserSUB::SubtitleParserSUB(U8* path) : m_pParser(nullptr), u32FileFD(0) { storePath(m_pSubtitleName, path); }

SubtitleParserSUB::SubtitleParserSUB(int fd, S64, S64) : m_pParser(nullptr), u32FileFD(dup(fd)) {
    storePath(m_pSubtitleName, nullptr);
}

SubtitleParserSUB::~SubtitleParserSUB() {
    if (m_pParser != nullptr) dropDelegate(*this);
    // kept(sub-descriptor-open): u32FileFD stays open
}

BOOL SubtitleParserSUB::Deinit() { return TRUE; }  // kept(sub-deinit): the delegate outlives it

U32 SubtitleParserSUB::GetData(const U32 track, U8* buf, const U32 size, const U32 index) {
    return m_pParser != nullptr ? m_pParser->GetData(track, buf, size, index) : 0;
}

U32 SubtitleParserSUB::GetData(const U32, U8*, const U32, const U32, stSubDecoderInfo*) {
    return 0;  // kept(sub-five-arguments): not forwarded
}

BOOL SubtitleParserSUB::BeginParse() {
    const bool byDescriptor = u32FileFD != 0;  // kept(file-descriptor-0): descriptor 0 counts as none
    return tryDialects(*this, byDescriptor, byDescriptor ? Announced::kWithLine : Announced::kPlain);
}

BOOL SubtitleParserSUB::StopParse() { return m_pParser != nullptr ? m_pParser->StopParse() : FALSE; }

U32 SubtitleParserSUB::GetTag(const U32 track, const U32 timeMs) {
    return m_pParser != nullptr ? m_pParser->GetTag(track, timeMs) : 0xFFFFFFFF;
}

BOOL SubtitleParserSUB::GetTagInfo(U32 track, U32 index, ST_MEDIA_SUBTITLE_PARSER_TAG* tag) {
    return m_pParser != nullptr ? m_pParser->GetTagInfo(track, index, tag) : FALSE;
}

BOOL SubtitleParserSUB::GetTrackInfo(const U32 track, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    return m_pParser != nullptr ? m_pParser->GetTrackInfo(track, info) : FALSE;
}

BOOL SubtitleParserSUB::BeginParse(int) {
    // kept(sub-begin-argument): the descriptor, be it 0 or none, never the argument
    return tryDialects(*this, true, Announced::kPlain);
}

}  // namespace android

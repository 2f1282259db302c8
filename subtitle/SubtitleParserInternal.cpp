#include "subtitle/SubtitleParserInternal.h"

#include <string.h>

#include <algorithm>
#include <new>

#include "subtitle/system/Log.h"
#include "subtitle/system/LowMemory.h"

namespace android {

using namespace vxsubtitle;

namespace {

constexpr const char* kTag = "SubtitleParserInternal";
constexpr U32 kNoTag = 0xFFFFFFFF;
constexpr U32 kSpareBytes = 4;  // behind the copied text, zero
constexpr size_t kManyEntries = 1032;

using Entry = ST_MEDIA_FILE_PLAYER_MOVIE_SUBTITLE_INFO;
using Queue = std::vector<Entry>;

void releaseText(Entry& entry) {
    releaseLow(entry.u32QueueStart);
    entry.u32QueueStart = 0;
}

void releaseAll(Queue& queue) {
    for (; !queue.empty(); queue.pop_back()) releaseText(queue.back());
}

/// The first entry that starts at `tag`, or null.
const Entry* findTag(const Queue& queue, U32 tag) {
    const auto found =
        std::find_if(queue.begin(), queue.end(), [tag](const Entry& entry) { return entry.u32PTSStart == tag; });
    return found != queue.end() ? &*found : nullptr;
}

/// A zero-terminated copy of `size` bytes, or 0 when memory is short. No text reads as zeros.
U32 copyText(const void* text, U32 size) {
    const U32 copy = allocateLow(U64{size} + kSpareBytes);
    if (copy != 0 && text != nullptr) memcpy(atLow(copy), text, size);
    return copy;
}

/// Takes the brace blocks out of `length` characters of text and answers the length that remains; zeros fill the gap.
/// Bytes are bytes here, whatever the encoding.
U32 removeBraceBlocks(U8* text, U32 length) {
    U8* const end = text + length;
    U8* out = text;
    const U8* in = text;
    while (in != end) {
        const U8* const open = std::find(in, static_cast<const U8*>(end), U8{'{'});
        out = std::copy(in, open, out);
        const U8* const close = std::find(open, static_cast<const U8*>(end), U8{'}'});
        if (close == end) break;  // kept(push-brace-unclosed): it swallows the rest of the text
        in = close + 1;
    }
    std::fill(out, end, U8{0});
    return static_cast<U32>(out - text);
}

bool insertByStart(Queue& queue, const Entry& entry) {
    // kept(push-same-start): in front of those with the same start, so that a text pushed again is the one found
    const auto place = std::find_if(queue.begin(), queue.end(),
                                    [&entry](const Entry& other) { return other.u32PTSStart >= entry.u32PTSStart; });
    try {
        queue.insert(place, entry);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

/// Drops the entries at the front that are over. One behind an entry that is not over stays, however old.
void expire(Queue& queue, U32 curTimeMs) {
    const auto firstToStay = std::find_if(queue.begin(), queue.end(), [curTimeMs](const Entry& entry) {
        // kept(push-ends-now): an entry that ends right now stays, although no time is left at which it would be shown
        return entry.u32PTSEnd >= curTimeMs || entry.u32QueueStart == 0;
    });
    std::for_each(queue.begin(), firstToStay, releaseText);
    queue.erase(queue.begin(), firstToStay);
}

}  // namespace

SubtitleParserInternal::SubtitleParserInternal()
    : m_u32LastTimeMs(0), m_enCodeType(E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN) {}

SubtitleParserInternal::~SubtitleParserInternal() { releaseAll(m_vSubtitleInfo); }

BOOL SubtitleParserInternal::AddSubtitleData(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, U32 curTimeMs, U32 data, U32 size,
                                             U32 startMs, U32 endMs) {
    return AddSubtitleText(type, curTimeMs, atLow(data), size, startMs, endMs);
}

BOOL SubtitleParserInternal::AddSubtitleText(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type, U32 curTimeMs, const void* text,
                                             U32 size, U32 startMs, U32 endMs) {
    Mutex::Autolock lock(mLock);
    VX_LOG(kTag, "AddSubtitleData :%lu, %lu, %lu, %lu, %lu", asUnsignedLong(curTimeMs),
           asUnsignedLong(reinterpret_cast<uintptr_t>(text)), asUnsignedLong(size), asUnsignedLong(startMs),
           asUnsignedLong(endMs));
    const bool jumpedBack = m_u32LastTimeMs > curTimeMs;
    m_u32LastTimeMs = curTimeMs;

    // Copied before anything is dropped: a push that finds no memory leaves the queue as it was.
    const U32 copy = copyText(text, size);
    if (copy == 0) return FALSE;
    // kept(push-late): a late entry is not refused, it replaces everything queued
    if (curTimeMs > startMs || jumpedBack) releaseAll(m_vSubtitleInfo);

    // kept(push-zero-byte): the text ends at its first zero byte, so 16-bit text mostly ends behind its first letter
    const U32 length = static_cast<U32>(strnlen(reinterpret_cast<const char*>(atLow(copy)), size));
    Entry entry = {type, copy, removeBraceBlocks(atLow(copy), length), startMs, endMs};
    m_enCodeType = type;
    if (!insertByStart(m_vSubtitleInfo, entry)) {
        releaseText(entry);
        return FALSE;
    }
    if (m_vSubtitleInfo.size() > kManyEntries) {  // kept(push-no-limit): a warning alone, the queue has no upper limit
        VX_LOG(kTag, "Currently subtitle queue with (%d) elements\n", static_cast<int>(m_vSubtitleInfo.size()));
    }
    expire(m_vSubtitleInfo, curTimeMs);
    return TRUE;
}

BOOL SubtitleParserInternal::ClearSubtitleData() {
    Mutex::Autolock lock(mLock);
    releaseAll(m_vSubtitleInfo);
    return TRUE;
}

U32 SubtitleParserInternal::GetTag(const U32, const U32 timeMs) {
    Mutex::Autolock lock(mLock);
    VX_LOG(kTag, "GetTag  \n");
    for (const Entry& entry : m_vSubtitleInfo) {
        if (entry.u32PTSStart <= timeMs && timeMs < entry.u32PTSEnd) return entry.u32PTSStart;
    }
    return kNoTag;
}

BOOL SubtitleParserInternal::GetTagInfo(U32, U32 tag, ST_MEDIA_SUBTITLE_PARSER_TAG* info) {
    Mutex::Autolock lock(mLock);
    VX_LOG(kTag, "GetTagInfo enter \n");
    const Entry* const entry = info != nullptr ? findTag(m_vSubtitleInfo, tag) : nullptr;
    if (entry != nullptr) {
        info->u32TimeStart = entry->u32PTSStart;
        info->u32TimeEnd = entry->u32PTSEnd;
        VX_LOG(kTag, "Tag = %lu\n", asUnsignedLong(tag));
    }
    VX_LOG(kTag, "GetTagInfo leave \n");
    return entry != nullptr ? TRUE : FALSE;
}

U32 SubtitleParserInternal::GetData(const U32, U8* buf, const U32 size, const U32 tag) {
    Mutex::Autolock lock(mLock);
    VX_LOG(kTag, "GetData  \n");
    U32 copied = 0;
    if (const Entry* const entry = findTag(m_vSubtitleInfo, tag)) {
        m_enCodeType = entry->eType;
        if (buf != nullptr && entry->u32QueueStart != 0) {
            copied = std::min(size, entry->u32QueueSize);
            memcpy(buf, atLow(entry->u32QueueStart), copied);  // kept(push-no-terminator): no terminator
        }
    }
    VX_LOG(kTag, "GetData leave \n");
    return copied;
}

BOOL SubtitleParserInternal::GetTrackInfo(const U32, ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO* info) {
    Mutex::Autolock lock(mLock);
    VX_LOG(kTag, "GetTrackInfo  \n");
    if (info != nullptr) {
        info->eSubtitleType = E_MEDIA_SUBTITLE_PARSER_TYPE_INTERNAL;
        info->eCodeType = m_enCodeType;
    }
    return TRUE;
}

}  // namespace android

// The memory of the tag table, and its log.
#include "subtitle/parser/TagTable.h"

#include <stdlib.h>
#include <string.h>

#include "subtitle/system/Log.h"
#include "subtitle/system/StopRequest.h"
#include "subtitle/system/ZeroPages.h"

namespace vxsubtitle {

bool TagTable::allocate() {
    constexpr size_t kTagSize = sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG);
    constexpr size_t kUsualTags = 1024;  // of a film
    void* const tags = malloc(kTagStep * kTagSize);
    mParser.m_u32TagBufferNum = kTagStep;
    mParser.m_pTagBuffer = static_cast<ST_MEDIA_SUBTITLE_PARSER_TAG*>(tags);
    if (tags != nullptr) zeroPages(static_cast<U8*>(tags), kTagStep * kTagSize, kUsualTags * kTagSize);
    return tags != nullptr;
}

void TagTable::release() {
    free(mParser.m_pTagBuffer);
    mParser.m_pTagBuffer = nullptr;
}

bool TagTable::grow(SubtitleParser& parser) {
    constexpr size_t kTagSize = sizeof(ST_MEDIA_SUBTITLE_PARSER_TAG);
    const U64 entries = U64{parser.m_u32TagBufferNum} + kTagStep;
    void* grown = nullptr;
    if (entries <= static_cast<size_t>(-1) / kTagSize && entries <= 0xFFFFFFFF) {
        grown = realloc(parser.m_pTagBuffer, static_cast<size_t>(entries) * kTagSize);
    }
    if (grown == nullptr) {
        TagTable(parser).release();
        parser.m_u32TagNum = 0;
        parser.m_u32TagBufferNum = 0;
        return false;
    }
    parser.m_pTagBuffer = static_cast<ST_MEDIA_SUBTITLE_PARSER_TAG*>(grown);
    memset(static_cast<void*>(parser.m_pTagBuffer + parser.m_u32TagBufferNum), 0, kTagStep * kTagSize);
    parser.m_u32TagBufferNum = static_cast<U32>(entries);
    return true;
}

namespace {

using Tag = ST_MEDIA_SUBTITLE_PARSER_TAG;

/// Sorts `count` tags by halves, equal starts in the order in which they stand; `spare` has room for as many.
void sortByStart(Tag* tags, size_t count, Tag* spare, const StopRequest& stop) {
    if (count < 2 || stop.isMade()) return;
    const size_t half = count / 2;
    sortByStart(tags, half, spare, stop);
    sortByStart(tags + half, count - half, spare, stop);
    const Tag* left = tags;
    const Tag* right = tags + half;
    const Tag* const leftEnd = right;
    const Tag* const rightEnd = tags + count;
    Tag* out = spare;
    while (left != leftEnd && right != rightEnd) *out++ = Compare(left, right) <= 0 ? *left++ : *right++;
    while (left != leftEnd) *out++ = *left++;
    memcpy(static_cast<void*>(tags), spare, static_cast<size_t>(out - spare) * sizeof *tags);
}

/// Whether the tags stand in order by whatever pairs of them are compared: `Compare` takes differences for signed
/// values, so their sum has to stay below 2^31.
bool inOrder(const Tag* tags, size_t count) {
    U64 rise = 0;
    for (size_t i = 1; i < count; ++i) {
        const int step = Compare(tags + i, tags + i - 1);
        if (step < 0) return false;
        rise += static_cast<U64>(step);
    }
    return rise <= 0x7FFFFFFF;
}

/// A tag's number: signed, and wide enough for every table that fits into memory.
using Index = ptrdiff_t;

/// The search for `t`; `start` tells where a tag starts.
template <class Start>
U32 search(U32 t, Index low, Index last, Start start) {
    Index high = last + 1;
    while (low >= 0 && high - low >= 4) {  // most of the way: neither half is empty, and none of the edges is near
        const Index middle = low + ((high - low) >> 1);
        if (t < start(middle)) {
            high = middle - 1;
            if (start(high) <= t) return static_cast<U32>(high);
        } else {
            low = middle + 1;
            if (t < start(low)) return static_cast<U32>(middle);
        }
    }
    for (;;) {
        // kept(not-ascending): the starts are taken to ascend
        const Index middle = low + ((high - low) >> 1);
        if (t < start(middle)) {
            if (low + high < 2) return 0;  // kept(before-first): before the first entry, too
            high = middle - 1;
            // kept(vob-before-track): before the first tag this looks at the one before it, the last of another track
            if (start(high) <= t) return static_cast<U32>(high);
            if (middle <= low) return 0;  // kept(vob-before-track): 0 is a tag, and means none, too
        } else {
            if (middle >= last) return static_cast<U32>(middle);
            low = middle + 1;
            // kept(overlap): found by its start alone, so an entry hides those that began before it
            // kept(same-start): of entries with one start only one is ever answered
            if (t < start(low)) return static_cast<U32>(middle);
            if (high <= middle) return 0;
        }
    }
}

}  // namespace

U32 lookUpTag(const SubtitleParser& parser, U32 timeMs, U32 first, U32 last) {
    const U32 t = withoutOffset(timeMs, parser.m_s32TimeOffsetMs);
    const Tag* const tags = parser.m_pTagBuffer;
    const size_t capacity = parser.m_u32TagBufferNum;
    const auto low = static_cast<Index>(first);
    const auto high = static_cast<Index>(last);
    if (first <= last && last < capacity) return search(t, low, high, [=](Index i) { return tags[i].u32TimeStart; });
    return search(t, low, high, [=](Index i) { return static_cast<size_t>(i) < capacity ? tags[i].u32TimeStart : 0; });
}

void TagTable::sort() {
    const size_t count = mParser.m_u32TagNum;
    if (mParser.m_pTagBuffer == nullptr || inOrder(mParser.m_pTagBuffer, count)) return;
    Tag* const spare = static_cast<Tag*>(malloc(count * sizeof(Tag)));
    if (spare != nullptr) {
        sortByStart(mParser.m_pTagBuffer, count, spare, StopRequest(mParser.mWorkerState));
        free(spare);
    } else {
        qsort(mParser.m_pTagBuffer, count, sizeof *mParser.m_pTagBuffer, Compare);
    }
}

void logTags(const SubtitleParser& parser, const char* logTag) {
    constexpr char kRule[] = "\n\n*************************************\n\n";
    VX_LOG(logTag, "%s", kRule);
    const ManyMessages messages(logTag);
    const StopRequest stop(parser.mWorkerState);
    for (U32 i = 0; parser.m_pTagBuffer != nullptr && i < parser.m_u32TagNum && !stop.isMade(); ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = parser.m_pTagBuffer[i];
        messages.log("Time = %lu, %lu, %08lx\n", asUnsignedLong(tag.u32TimeStart), asUnsignedLong(tag.u32TimeEnd),
                     asUnsignedLong(static_cast<U32>(tag.s64Pos)));
    }
    VX_LOG(logTag, "%s", kRule);
}

}  // namespace vxsubtitle

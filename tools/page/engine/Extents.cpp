#include "Extents.h"

#include <strings.h>

#include <algorithm>

namespace page {
namespace {

using namespace android;

bool isLineEnd(char c) { return c == '\n' || c == '\r'; }

/// What stands behind the first line end from `at` on that another follows, or that any text does for one-line formats.
/// The zeros of 16-bit text are passed over.
size_t endOfText(std::string_view bytes, size_t at, size_t limit, bool isOneLine, bool isWide) {
    size_t lineFeeds = 0;
    for (size_t end = at; at < limit; ++at) {
        const char c = bytes[at];
        if (c == 0 && isWide) continue;
        if (!isLineEnd(c)) {
            lineFeeds = 0;
            end = at + 1 + size_t(isWide);
            continue;
        }
        const bool isFirstOfTwo =
            c == '\r' && at + 1 + size_t(isWide) < limit && bytes[at + 1 + size_t(isWide)] == '\n';
        lineFeeds += !isFirstOfTwo;
        if (lineFeeds == (isOneLine ? 1 : 2)) return std::min(end, limit);
    }
    return limit;
}

size_t endOfElement(std::string_view bytes, size_t at, size_t limit) {
    constexpr std::string_view kElement = "<sync";
    for (size_t end = bytes.find('<', at); end < limit; end = bytes.find('<', end + 1)) {
        const std::string_view name = bytes.substr(end, kElement.size());
        if (name.size() == kElement.size() && strncasecmp(name.data(), kElement.data(), name.size()) == 0) return end;
    }
    return limit;
}

}  // namespace

std::vector<U32> gapsBehind(const std::vector<U32>& offsets, size_t size) {
    std::vector<U32> gaps, sorted = offsets;
    std::sort(sorted.begin(), sorted.end());
    gaps.reserve(offsets.size());
    for (const U32 offset : offsets) {
        const auto next = std::upper_bound(sorted.begin(), sorted.end(), offset);
        const size_t limit = std::min(size, next == sorted.end() ? size : size_t(*next));
        gaps.push_back(U32(limit - std::min<size_t>(offset, limit)));
    }
    return gaps;
}

std::vector<U32> extentsOf(std::string_view bytes, const std::vector<U32>& offsets, EN_MEDIA_SUBTITLE_PARSER_TYPE type,
                           bool isWide) {
    std::vector<U32> extents = gapsBehind(offsets, bytes.size());
    for (size_t i = 0; i < offsets.size(); ++i) {
        const size_t at = std::min<size_t>(offsets[i], bytes.size()), limit = at + extents[i];
        const size_t end = type == E_MEDIA_SUBTITLE_PARSER_TYPE_SMI
                               ? endOfElement(bytes, at, limit)
                               : endOfText(bytes, at, limit, type != E_MEDIA_SUBTITLE_PARSER_TYPE_SRT, isWide);
        extents[i] = U32(end - at);
    }
    return extents;
}

}  // namespace page

/// Short ways to fill a parser without a file and to read it back, for the tests of the core and of the formats.
#pragma once

#include <gtest/gtest.h>
#include <sched.h>
#include <string.h>

#include <algorithm>
#include <ostream>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "subtitle/SubtitleParser.h"
#include "subtitle/system/Worker.h"
#include "tests/support/Interpose.h"

namespace test {

using namespace android;

constexpr auto kUnknown = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN;
constexpr auto kUtf16Le = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE;
constexpr auto kUtf16Be = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
constexpr auto kUtf8 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
constexpr auto kNative = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;
constexpr auto kWhole = E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE;
constexpr auto kPart = E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART;

inline bool isWide(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type) { return type == kUtf16Le || type == kUtf16Be; }

/// Text with what is not printable shown as \n, \x00 and so on.
inline std::string show(std::string_view text) {
    std::string shown = "\"";
    for (const char c : text.substr(0, 300)) {
        const unsigned char byte = static_cast<unsigned char>(c);
        char escape[8];
        if (c == '\r' || c == '\n') {
            shown += c == '\r' ? "\\r" : "\\n";
        } else if (byte < 32 || byte > 126) {
            snprintf(escape, sizeof escape, "\\x%02X", byte);
            shown += escape;
        } else {
            shown += c;
        }
    }
    return shown + (text.size() > 300 ? "\"..." : "\"");
}

/// What `GetData` left in the caller's buffer.
struct Text {
    std::string units;       ///< as many as were counted; a unit above 255 reads as its number, "[4E2D]"
    bool terminated = true;  ///< a 0 stands behind them
    U32 count = 0;           ///< what was returned
};
inline bool operator==(const Text& a, const Text& b) {
    return std::tie(a.units, a.terminated, a.count) == std::tie(b.units, b.terminated, b.count);
}
inline std::ostream& operator<<(std::ostream& out, const Text& text) {
    return out << show(text.units) << (text.terminated ? "" : " without a 0") << " (" << text.count << ")";
}

/// A terminated text of one character a unit.
inline Text text(std::string_view units) { return {std::string(units), true, static_cast<U32>(units.size())}; }

/// A text that ends without a 0.
inline Text open(std::string_view units) { return {std::string(units), false, static_cast<U32>(units.size())}; }

/// The text of entry `index`, fetched into a buffer of exactly `size` bytes: the sanitizers see the first byte too
/// far, and a byte behind the text that changed fails the test.
template <class Parser>
Text textOf(Parser& parser, U32 index, U32 size = 8192) {
    constexpr U8 kUntouched = 0xEE;
    std::vector<U8> buffer(size > 0 ? size : 1, kUntouched);
    Text result;
    result.count = parser.GetData(0, buffer.data(), size, index);
    const size_t width = isWide(parser.m_eCodeType) ? 2 : 1;
    const auto unitAt = [&](size_t i) -> unsigned {
        return width == 2 ? unsigned(buffer.at(2 * i) | buffer.at(2 * i + 1) << 8) : buffer.at(i);
    };
    for (size_t i = 0; i < result.count; ++i) {
        const unsigned unit = unitAt(i);
        char wide[8];
        snprintf(wide, sizeof wide, "[%04X]", unit);
        if (unit < 256) {
            result.units += static_cast<char>(unit);
        } else {
            result.units += wide;
        }
    }
    result.terminated = (result.count + 1) * width <= size && unitAt(result.count) == 0;
    const size_t used = (result.count + (result.terminated ? 1 : 0)) * width;
    const bool clean = std::all_of(buffer.begin() + static_cast<std::ptrdiff_t>(used), buffer.end(),
                                   [](U8 byte) { return byte == kUntouched; });
    EXPECT_TRUE(clean) << "something was written behind the text " << result;
    return result;
}

/// Puts `data` where `BeginParse` would have put a file of that content.
template <class Parser>
void load(Parser& parser, std::string_view data) {
    ASSERT_EQ(TRUE, parser.Init(data.size()));
    if (!data.empty()) memcpy(parser.m_pu8RawBuffer, data.data(), data.size());
}

/// One entry of a tag table.
struct Tag {
    U32 start;
    U32 end;
    S64 pos;
};
inline bool operator==(const Tag& a, const Tag& b) {
    return std::tie(a.start, a.end, a.pos) == std::tie(b.start, b.end, b.pos);
}
inline std::ostream& operator<<(std::ostream& out, const Tag& tag) {
    return out << '{' << tag.start << ", " << tag.end << ", " << tag.pos << '}';
}

/// The whole tag table.
inline std::vector<Tag> tagsOf(const SubtitleParser& parser) {
    std::vector<Tag> tags;
    for (U32 i = 0; i < parser.m_u32TagNum; ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = parser.m_pTagBuffer[i];
        tags.push_back({tag.u32TimeStart, tag.u32TimeEnd, tag.s64Pos});
    }
    return tags;
}

/// Opens `parser` with its worker held back until the first pause of the wait, so that the order of events is fixed.
template <class Parser>
BOOL beginSlowly(Parser& parser, VirtualClock& clock) {
    ThreadGate gate;
    clock.atSleep(1, [&] {
        gate.open();
        while (__atomic_load_n(&parser.mWorkerState, __ATOMIC_ACQUIRE) != vxsubtitle::kWorkerEnded) sched_yield();
    });
    return parser.BeginParse();
}

}  // namespace test

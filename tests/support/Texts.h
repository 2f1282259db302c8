/// How a test writes what a parser gives: strings that read like the subtitle, and how the parser's answers become
/// them.
///
///     a text     Hello\nWorld           its characters, zeros too; a unit above 255 by its number, [4E2D]
///                !open Hello            the same without a 0 behind it
///                !untouched             nothing at all was written
///     an entry   1000-2000 @34 Hello    start, end, position in the file, text; without an end of its own: 1000-
///     entries    one behind the other, "; " between them
#pragma once

#include <gtest/gtest.h>
#include <stdio.h>

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>

#include "subtitle/SubtitleParser.h"

namespace test {

using namespace android;
using namespace std::literals;

constexpr auto kUnknown = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN;
constexpr auto kUtf16Le = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE;
constexpr auto kUtf16Be = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG;
constexpr auto kUtf8 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8;
constexpr auto kNative = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE;
constexpr auto kBig5 = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5;
constexpr auto kGbk = E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK;
constexpr auto kWhole = E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE;
constexpr auto kPart = E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART;

constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";

inline bool isWide(EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE type) { return type == kUtf16Le || type == kUtf16Be; }

/// A row's text for a failure's message: what is not printable as \n, \x00 and so on.
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

/// The text that `extract` leaves in a buffer of exactly `size` bytes: the sanitizers see the first byte too far, and
/// a byte behind the text that changed fails the test, but for `cutUnits` units of a line end that was cut off.
template <class Extract>
std::string textFrom(const SubtitleParser& parser, U32 size, Extract extract, size_t cutUnits = 0) {
    constexpr U8 kUntouched = 0xEE;
    const std::unique_ptr<U8[]> buffer(new U8[size]);
    std::fill_n(buffer.get(), size, kUntouched);
    const size_t count = extract(buffer.get());
    const size_t width = isWide(parser.m_eCodeType) ? 2 : 1;
    if (count * width > size) return "!more than the buffer holds";
    const auto unitAt = [&](size_t i) -> unsigned {
        return width == 2 ? unsigned(buffer[2 * i] | buffer[2 * i + 1] << 8) : buffer[i];
    };
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        char number[8];
        snprintf(number, sizeof number, "[%04X]", unitAt(i));
        text += unitAt(i) < 256 ? std::string(1, static_cast<char>(unitAt(i))) : number;
    }
    const bool terminated = (count + 1) * width <= size && unitAt(count) == 0;
    const size_t used = (count + (terminated ? 1 + cutUnits : 0)) * width;
    for (size_t i = used; i < size; ++i) {
        if (buffer[i] == kUntouched) continue;
        ADD_FAILURE() << "byte " << i << " of " << size << " was written behind the text " << show(text);
        break;
    }
    return terminated ? text : count == 0 ? "!untouched" : "!open " + text;
}

/// Timed plain text cuts a line end off behind the text.
inline size_t unitsCutOff(SubtitleParser& parser) {
    ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO info{};
    parser.GetTrackInfo(0, &info);
    return info.eSubtitleType == E_MEDIA_SUBTITLE_PARSER_TYPE_TXT ? 2 : 0;
}

/// The text of entry `index`.
inline std::string textOf(SubtitleParser& parser, U32 index, U32 size = 8192) {
    return textFrom(
        parser, size, [&](U8* buffer) { return parser.GetData(0, buffer, size, index); }, unitsCutOff(parser));
}

/// Every entry as `show(index, tag)` shows it behind its times.
template <class Show>
std::string listed(const SubtitleParser& parser, Show showRest) {
    std::string out;
    for (U32 i = 0; i < parser.m_u32TagNum; ++i) {
        const ST_MEDIA_SUBTITLE_PARSER_TAG& tag = parser.m_pTagBuffer[i];
        out += (i > 0 ? "; " : "") + std::to_string(tag.u32TimeStart) + "-" +
               (tag.u32TimeEnd == 0xFFFFFFFF ? "" : std::to_string(tag.u32TimeEnd)) + showRest(i, tag);
    }
    return out;
}

/// `1000-2000 @34; 3000-4000 @84`
inline std::string tagsOf(const SubtitleParser& parser) {
    return listed(parser, [](U32, const auto& tag) { return " @" + std::to_string(tag.s64Pos); });
}

/// `1000-2000 @34 Hello; 3000-4000 @84 World`
inline std::string entriesOf(SubtitleParser& parser) {
    return listed(parser,
                  [&](U32 i, const auto& tag) { return " @" + std::to_string(tag.s64Pos) + " " + textOf(parser, i); });
}

/// `1000-2000 Hello; 3000-4000 World`, for what every encoding shows alike
inline std::string shownOf(SubtitleParser& parser) {
    return listed(parser, [&](U32 i, const auto&) { return " " + textOf(parser, i); });
}

}  // namespace test

// The tests for encodings, and the conversions: those of legacy codes through the tables.
#include "subtitle/charset/Charset.h"

#include <string.h>

#include "subtitle/charset/CharsetTables.h"

namespace vxsubtitle {

using android::CharRange;

namespace {

constexpr U16 kNoCharacter = 0xFFFF;

// One conversion: the domain that is looked up, and the table.
template <class Row, size_t Count>
struct Conversion {
    U16 low, high;  // codes outside are returned unchanged
    const Row (&rows)[Count];

    constexpr U16 operator()(U16 code) const {
        if (code < low || code > high) return code;
        const Row* const row = findRow(rows, code);
        return row != nullptr ? row->u16Unicode : kNoCharacter;
    }
};
template <class Row, size_t Count>
Conversion(U16, U16, const Row (&)[Count]) -> Conversion<Row, Count>;

constexpr Conversion kGbk{0x8140, 0xFEFE, android::GB2Unicode};
constexpr Conversion kBig5{0xA140, 0xF9D5, android::Big5toUnicode};
constexpr Conversion kFarsi{0x80, 0xFF, android::FarsitoUnicode};
constexpr Conversion kSpanish{0x80, 0xFF, android::SpanishtoUnicode};
// kept(charset-hebrew): 0x80-0xA9 and 0xFF are no Hebrew codes, they pass as Latin-1
constexpr Conversion kHebrew{0xAA, 0xFE, android::HebrewtoUnicode};

constexpr bool isContinuation(U8 byte) { return (byte & 0xC0) == 0x80; }

U32 encodingsOf(U16 code) {
    return (findRow(android::kShiftJISRanges, code) != nullptr ? kMaybeShiftJis : 0) +
           (findRow(android::kGBKRanges, code) != nullptr ? kMaybeGbk : 0) +
           (findRow(android::kBig5Ranges, code) != nullptr ? kMaybeBig5 : 0);
}

U16 loadUnit(const U8* at) {
    U16 unit;
    memcpy(&unit, at, sizeof unit);
    return unit;
}

}  // namespace

bool isUtf8(const U8* text, U64 length) {
    if (text == nullptr) return true;
    for (U64 at = 0; at < length;) {
        const U8 lead = text[at++];
        if (lead < 0x80) continue;
        if (lead < 0xC0 || lead >= 0xF0) return false;  // kept(charset-utf8-test): four-byte sequences are none
        const U64 needed = lead < 0xE0 ? 1 : 2;
        // kept(charset-utf8-test): of a sequence that the end cuts off nothing more is looked at
        if (length - at < needed) return true;
        for (const U64 next = at + needed; at < next; ++at) {
            if (!isContinuation(text[at])) return false;  // kept(charset-utf8-test): overlong forms and surrogates pass
        }
    }
    return true;
}

U32 possibleEncodings(const U8* text, U64 capacity) {
    U32 result = kNoDoubleByte;
    if (text == nullptr) return result;
    for (U64 at = 0; at < capacity && text[at] != 0;) {
        const U8 lead = text[at++];
        if (lead < 0x80) continue;
        // kept(charset-last-pair): a lead byte at the end is a code, with the trail byte 0, and as the last one it
        // decides
        const U8 trail = at < capacity ? text[at] : U8(0);
        result = encodingsOf(U16(lead << 8 | trail));
        if (result == kMaybeGbk || result == kMaybeBig5 || trail == 0) return result;
        ++at;
    }
    return result;  // kept(charset-last-pair): without a decisive pair the last one counts, whatever came before
}

U16 gbToUnicode(U16 code) { return kGbk(code); }
U16 big5ToUnicode(U16 code) { return kBig5(code); }
U16 farsiToUnicode(U8 code) { return kFarsi(code); }
U16 spanishToUnicode(U8 code) { return kSpanish(code); }
U16 hebrewToUnicode(U8 code) { return kHebrew(code); }

U16 utf8ToUcs2(const U8* src, U16* dst, U16 srcLen, U16 dstLen) {
    if (src == nullptr || dst == nullptr || dstLen < 2) return 0;
    U8* const out = reinterpret_cast<U8*>(dst);
    U32 units = 0;
    const auto put = [&](U32 value) {
        const U16 unit = U16(value);
        memcpy(out + 2 * units++, &unit, sizeof unit);
    };
    // kept(charset-last-unit): the last unit of `dst` is filled only by the second half of a four-byte form
    for (U32 i = 0; i < srcLen && units + 1 < dstLen && src[i] != 0;) {
        const U8* const at = src + i;
        const U32 following = srcLen - i - 1;
        if (at[0] < 0x80) {
            put(at[0]);
            i += 1;
        } else if ((at[0] & 0xE0) == 0xC0 && following >= 1) {
            put((at[0] & 0x1Fu) << 6 | (at[1] & 0x3Fu));
            i += 2;
        } else if ((at[0] & 0xF0) == 0xE0 && following >= 2) {
            put(U32(at[0]) << 12 | (at[1] & 0x3Fu) << 6 | (at[2] & 0x3Fu));
            i += 3;
        } else if ((at[0] & 0xF8) == 0xF0 && following >= 3) {
            // kept(charset-surrogates): low unit first, and the high one is no high surrogate: players always got both
            put(0xDC00 | (at[2] & 0x3Fu) << 6 | (at[3] & 0x3Fu));
            put(0xFFC0 | (U32(at[1]) << 12 | (at[2] & 0x3Fu) << 6) >> 10);
            i += 4;
        } else {
            i += 1;
        }
    }
    return U16(2 * units);  // kept(charset-count-wraps): the count of bytes wraps at 65536
}

int unicodeToUtf8(const U16* src, int srcBytes, U8* dst) {
    if (dst == nullptr) return 0;
    const U8* const units = reinterpret_cast<const U8*>(src);
    const U32 count = src != nullptr && srcBytes >= 2 ? U32(srcBytes) / 2 : 0;
    U8* out = dst;
    for (U32 i = 0; i < count; ++i) {
        const U16 unit = loadUnit(units + 2 * size_t(i));
        if (unit < 0x80) {
            *out++ = U8(unit);
        } else if (unit < 0x800) {
            *out++ = U8(0xC0 | unit >> 6);
            *out++ = U8(0x80 | (unit & 0x3F));
        } else {  // kept(charset-surrogates): surrogates too, each half for itself
            *out++ = U8(0xE0 | unit >> 12);
            *out++ = U8(0x80 | (unit >> 6 & 0x3F));
            *out++ = U8(0x80 | (unit & 0x3F));
        }
    }
    *out = 0;
    return int(out - dst);
}

void swapUnits(U8* bytes, U32 len) {
    constexpr U64 kFirsts = 0x00FF00FF00FF00FF;
    for (U64 four; len >= sizeof four; bytes += sizeof four, len -= U32{sizeof four}) {
        memcpy(&four, bytes, sizeof four);
        four = (four & kFirsts) << 8 | (four >> 8 & kFirsts);
        memcpy(bytes, &four, sizeof four);
    }
    for (U32 i = 1; i < len; i += 2) {
        const U8 first = bytes[i - 1];
        bytes[i - 1] = bytes[i];
        bytes[i] = first;
    }
}

}  // namespace vxsubtitle

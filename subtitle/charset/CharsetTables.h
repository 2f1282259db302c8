/// Character set tables, sorted by code, and the one binary search over them.
///
/// Their contents are written by tools/gen_charsets.py; the counts are contract and checked by the compiler.
#pragma once

#include <stddef.h>

#include "subtitle/SubtitleTypes.h"

namespace android {

/// Codes that an encoding assigns, as disjoint runs, each within one lead byte's row.
VXSUBTITLE_API extern const CharRange kShiftJISRanges[102];  ///< code page 932 without the user's rows 0xF0-0xF9
VXSUBTITLE_API extern const CharRange kGBKRanges[261];       ///< code page 936
VXSUBTITLE_API extern const CharRange kBig5Ranges[174];      ///< code page 950 without the user's 0xC6A1-0xC8FE

/// Legacy code to UTF-16 code unit.
VXSUBTITLE_API extern const GB2UnicodeTbl GB2Unicode[23940];           ///< two-byte plane of GB 18030-2000
VXSUBTITLE_API extern const Big52UnicodeTb3 Big5toUnicode[13710];      ///< Big5, with code page 950's characters
VXSUBTITLE_API extern const Farsi2UnicodeTb2 FarsitoUnicode[128];      ///< code page 1256
VXSUBTITLE_API extern const Spanish2UnicodeTb4 SpanishtoUnicode[123];  ///< code page 1252
VXSUBTITLE_API extern const Hebrew2UnicodeTb5 HebrewtoUnicode[51];     ///< ISO 8859-8:1999 from 0xAA up

}  // namespace android

namespace vxsubtitle {

/// First and last code that a row stands for.
constexpr android::U16 firstCode(const android::CharRange& row) { return row.first; }
constexpr android::U16 firstCode(const android::GB2UnicodeTbl& row) { return row.u16GBcode; }
constexpr android::U16 firstCode(const android::Big52UnicodeTb3& row) { return row.u16Big5code; }
constexpr android::U16 firstCode(const android::Farsi2UnicodeTb2& row) { return row.u8Farsicode; }
constexpr android::U16 firstCode(const android::Spanish2UnicodeTb4& row) { return row.u8Spanishcode; }
constexpr android::U16 firstCode(const android::Hebrew2UnicodeTb5& row) { return row.u8Hebrewcode; }
template <class Row>
constexpr android::U16 lastCode(const Row& row) {
    return firstCode(row);
}
constexpr android::U16 lastCode(const android::CharRange& row) { return row.last; }

/// The row that holds `code`, or null. `rows` are in order.
template <class Row, size_t Count>
constexpr const Row* findRow(const Row (&rows)[Count], android::U16 code) {
    size_t low = 0;
    size_t high = Count;
    while (low < high) {
        const size_t middle = (low + high) / 2;
        if (code > lastCode(rows[middle])) {
            low = middle + 1;
        } else if (code >= firstCode(rows[middle])) {
            return &rows[middle];
        } else {
            high = middle;
        }
    }
    return nullptr;
}

/// Whether `rows` ascend and share no code.
template <class Row, size_t Count>
constexpr bool inOrder(const Row (&rows)[Count]) {
    for (size_t i = 0; i < Count; ++i) {
        if (firstCode(rows[i]) > lastCode(rows[i])) return false;
        if (i > 0 && lastCode(rows[i - 1]) >= firstCode(rows[i])) return false;
    }
    return true;
}

}  // namespace vxsubtitle

/// Encoding detection and character conversion: pure functions, safe on any thread, nothing allocated.
///
/// "U16*" arguments may be unaligned; their units are in the machine's byte order.
#pragma once

#include "subtitle/SubtitleTypes.h"

namespace vxsubtitle {

using android::U16;
using android::U32;
using android::U64;
using android::U8;

/// What possibleEncodings() answers: a sum of these.
constexpr U32 kMaybeShiftJis = 1;
constexpr U32 kMaybeGbk = 2;
constexpr U32 kMaybeBig5 = 4;
constexpr U32 kNoDoubleByte = 7;  ///< no double-byte code was met

/// Whether the `length` bytes at `text` are UTF-8 of at most three bytes per character. A null `text` is empty.
bool isUtf8(const U8* text, U64 length);

/// Which double-byte encodings the text allows. It ends at its first 0 or after `capacity` bytes; nothing behind
/// that is read. Examined are pairs, from each byte of 0x80 and above on; the first pair that only GBK or only Big5
/// allows decides, else the last pair. A null `text` is empty.
U32 possibleEncodings(const U8* text, U64 capacity);

/// The character of a legacy code (lead byte x 256 + trail byte, or one byte). A code outside the table's domain is
/// returned unchanged; one without a character gives 0xFFFF.
U16 gbToUnicode(U16 code);
U16 big5ToUnicode(U16 code);
U16 farsiToUnicode(U8 code);
U16 spanishToUnicode(U8 code);
U16 hebrewToUnicode(U8 code);

/// Converts UTF-8 up to its first 0 or `srcLen` bytes; at most `dstLen` units are written, no terminator. Continuation
/// bytes are not checked; a stray byte is skipped. Returns the bytes written to `dst`, modulo 65536; 0 for a null
/// pointer, an empty source or a `dstLen` below 2.
U16 utf8ToUcs2(const U8* src, U16* dst, U16 srcLen, U16 dstLen);

/// Converts `srcBytes` / 2 units to UTF-8 and terminates it with a 0 byte: `dst` holds up to three bytes per unit and
/// one more. Returns the bytes before the terminator. A null `src` is empty; with a null `dst` nothing is done.
int unicodeToUtf8(const U16* src, int srcBytes, U8* dst);

/// Swaps the bytes of each of the `len` / 2 units at `bytes` (not null) in place; an odd last byte stays.
void swapUnits(U8* bytes, U32 len);

}  // namespace vxsubtitle

/// Records and enumerations that the parsers and the media player exchange.
///
/// All of them are plain values: none owns memory, and the order and width of fields and the values of
/// enumerators are the contract with players in the field.
#pragma once

#include <stdint.h>

/// Marks what libvxsubtitle.so exports; everything else in the library is hidden.
#define VXSUBTITLE_API __attribute__((visibility("default")))

namespace android {

/// Numbers by their width in bits, unsigned and signed.
typedef uint8_t U8;
typedef uint16_t U16;
typedef unsigned int U32;
typedef unsigned long long U64;  // long long on every machine, whatever the platform's uint64_t is
typedef int16_t S16;
typedef int S32;
typedef long long S64;

/// A truth value in a byte: `TRUE` or `FALSE`.
typedef U8 BOOL;

// A player's own headers may have defined both as macros.
#ifndef FALSE
constexpr BOOL FALSE = 0;  ///< no, or it failed
#endif
#ifndef TRUE
constexpr BOOL TRUE = 1;  ///< yes, or it worked
#endif

/// Format of a subtitle file. LRC is reserved: no parser of this library reports it.
enum EN_MEDIA_SUBTITLE_PARSER_TYPE : U32 {
    E_MEDIA_SUBTITLE_PARSER_TYPE_SMI = 0,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SRT = 1,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SSA = 2,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_10 = 3,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_VIEWER_20 = 4,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_MICRO_DVD = 5,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SUB_DVB_SUBTITLE_SYSTEM = 6,
    E_MEDIA_SUBTITLE_PARSER_TYPE_TXT = 7,
    E_MEDIA_SUBTITLE_PARSER_TYPE_LRC = 8,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SUBIDX = 9,
    E_MEDIA_SUBTITLE_PARSER_TYPE_SUP = 10,
    E_MEDIA_SUBTITLE_PARSER_TYPE_INTERNAL = 11,
    E_MEDIA_SUBTITLE_PARSER_TYPE_NUM = 12,
    E_MEDIA_SUBTITLE_PARSER_TYPE_INVALID = 12,
};

/// Encoding of a text track, or pixel format of a bitmap track.
enum EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE : U32 {
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNKNOWN = 0,      ///< not yet known
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE = 1,      ///< UTF-16 little-endian
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UNICODE_BIG = 2,  ///< UTF-16 big-endian
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_UTF8 = 3,         ///< UTF-8
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NATIVE = 4,       ///< 8-bit or legacy double-byte data without a byte-order mark
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB8888 = 5,     ///< 32-bit ARGB pixels
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB1555 = 6,     ///< 16-bit ARGB 1-5-5-5 pixels
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_ARGB4444 = 7,     ///< 16-bit ARGB 4-4-4-4 pixels
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_YUV422 = 8,       ///< YUV 4:2:2 pixels
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I2 = 9,           ///< 2-bit palette indices
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I4 = 10,          ///< 4-bit palette indices
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_I8 = 11,          ///< 8-bit palette indices
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5 = 12,        ///< Big5 text
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK = 13,         ///< GBK text
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_NUM = 14,         ///< count
    E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_INVALID = 14,     ///< invalid
};

/// Language of a track. START marks the first real language and shares its value.
enum EN_MEDIA_SUBTITLE_PARSER_LANGUAGE : U32 {
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_UNDEFINED = 0,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_START = 1,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_GERMAN = 1,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_ENGLISH = 2,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_SPANISH = 3,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_GREEK = 4,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_FRENCH = 5,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_CROATIAN = 6,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_ITALIAN = 7,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_DUTCH = 8,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_POLISH = 9,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_PORTUGUESE = 10,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_RUSSIAN = 11,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_ROMANIAN = 12,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_SWEDISH = 13,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_ARABIC = 14,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_CHINESE = 15,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_JAPANESE = 16,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_KOREAN = 17,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_FARSI = 18,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_FINNISH = 19,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NORWEGIAN = 20,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_HEBREW = 21,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_BULGARIAN = 22,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_DANISH = 23,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_HINDI = 24,
    E_MEDIA_SUBTITLE_PARSER_LANGUAGE_NUM = 25,
};

/// Whether a tag's data is complete or a part of a larger unit.
enum EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE : U32 {
    E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_WHOLE = 0,
    E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_PART = 1,
    E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_NUM = 2,
    E_MEDIA_SUBTITLE_PARSER_DATA_TYPE_INVALID = 2,
};

/// Bits of a parser's state word.
enum EN_MEDIA_SUBTITLE_PARSER_FLAG : U32 {
    E_MEDIA_SUBTITLE_PARSER_FLAG_NULL = 0,
    E_MEDIA_SUBTITLE_PARSER_FLAG_INIT_OK = 1,
    E_MEDIA_SUBTITLE_PARSER_FLAG_READ_RAW_BUFFER = 2,
    E_MEDIA_SUBTITLE_PARSER_FLAG_READ_SUBTITLE_BUFFER = 4,
    E_MEDIA_SUBTITLE_PARSER_FLAG_STOP = 8,
    E_MEDIA_SUBTITLE_PARSER_FLAG_FINISHED = 16,
};

/// Kind of a bitmap subtitle stream, for the subpicture decoder.
enum EN_SBT_TYPE : U32 {
    E_SUBTITLE_TYPE_BMP = 0,
    E_SUBTITLE_TYPE_VOBSUB = 1,
    E_SUBTITLE_TYPE_TS = 2,
    E_SUBTITLE_TYPE_TTF = 3,
    E_SUBTITLE_TYPE_NUM = 4,
    E_SUBTITLE_TYPE_UNKNOWN = 5,
};

/// One timed entry of a parser's tag table. Entries stand in the order in which the parser found them.
struct ST_MEDIA_SUBTITLE_PARSER_TAG {
    U32 u32TimeStart;  ///< presentation start, milliseconds from the start of the movie
    U32 u32TimeEnd;    ///< presentation end, milliseconds
    S64 s64Pos;        ///< text: byte offset of the entry's first text byte in the file's data, also for UTF-16
    EN_MEDIA_SUBTITLE_PARSER_DATA_TYPE eDataType;  ///< always WHOLE in the tables of this library
};

/// One subtitle track. Text parsers fill `eSubtitleType` and `eCodeType` alone.
struct ST_MEDIA_SUBTITLE_PARSER_TRACK_INFO {
    EN_MEDIA_SUBTITLE_PARSER_LANGUAGE eLanguage;   ///< UNDEFINED when unknown
    EN_MEDIA_SUBTITLE_PARSER_TYPE eSubtitleType;   ///< the format
    EN_MEDIA_SUBTITLE_PARSER_CODE_TYPE eCodeType;  ///< how texts or pixels are to be read
    U32 au32Palette[256];                          ///< colours of a bitmap track
    U32 u32OriginX, u32OriginY;                    ///< top-left corner of a bitmap track's display area, pixels
    U32 u32Width, u32Height;                       ///< size of that area, pixels
};

/// Overview of a multi-track file.
struct ST_MEDIA_SUBTITLE_PARSER_INFO {
    EN_MEDIA_SUBTITLE_PARSER_TYPE eSubtitleType;  ///< the format
    U32 u32TrackNum;                              ///< how many tracks there are
    U32 u32CurrentTrackIndex;                     ///< not filled in by this library
};

/// Buffer sizes that a parser asks the player to provide.
struct ST_MEDIA_SUBTITLE_PARSER_BUFFER_SIZE {
    U32 u32RawBufferSize;       ///< bytes
    U32 u32SubtitleBufferSize;  ///< bytes
    U32 u32TagBufferIncNum;     ///< entries by which a tag table grows
};

/// Geometry of one decoded bitmap subtitle, pixels; X and Y are its top-left corner.
struct stSubDecoderInfo {
    U16 u16Width, u16Height, u16X, u16Y;  ///< pixels
};

/// One palette colour: alpha, red, green, blue.
struct RGBPaletteColor {
    U8 a, r, g, b;  ///< 0 to 255 each
};

/// One inclusive range of double-byte codes, lead byte x 256 + trail byte.
struct CharRange {
    U16 first, last;  ///< codes, both in the range
};

/// A row of the table of GBK, which is sorted by its code.
struct GB2UnicodeTbl {
    U16 u16GBcode, u16Unicode;  ///< lead byte x 256 + trail byte, and its UTF-16
};

/// A row of the table of Big5, which is sorted by its code.
struct Big52UnicodeTb3 {
    U16 u16Big5code, u16Unicode;  ///< lead byte x 256 + trail byte, and its UTF-16
};

/// A row of the table of Windows-1256, which is sorted by its code.
struct Farsi2UnicodeTb2 {
    U8 u8Farsicode;  ///< the byte
    U16 u16Unicode;  ///< its UTF-16
};

/// A row of the table of Windows-1252, which is sorted by its code.
struct Spanish2UnicodeTb4 {
    U8 u8Spanishcode;  ///< the byte
    U16 u16Unicode;    ///< its UTF-16
};

/// A row of the table of ISO 8859-8, which is sorted by its code.
struct Hebrew2UnicodeTb5 {
    U8 u8Hebrewcode;  ///< the byte
    U16 u16Unicode;   ///< its UTF-16
};

}  // namespace android

// The scans by hand. The comment above each shows how its film looks: it goes from column to column, makes sure that
// what it reads is what it takes it for, and skips a line that is something else. Where the log is due a line for each
// entry, it gets one from here, too.
#include <android/log.h>
#include <string.h>

#include "bench/ByHand.h"

namespace bench {

namespace {

const char* nextLine(const char* p, const char* end) {
    const void* const found = memchr(p, '\n', static_cast<size_t>(end - p));
    return found == nullptr ? end : static_cast<const char*>(found) + 1;
}

void logTable(const Tags& tags) {
    for (const ST_MEDIA_SUBTITLE_PARSER_TAG& tag : tags) {
        __android_log_print(ANDROID_LOG_DEBUG, "ByHand", "%u, %u, %llx", tag.u32TimeStart, tag.u32TimeEnd,
                            static_cast<unsigned long long>(tag.s64Pos));
    }
}

U32 digit(char c) { return static_cast<U32>(c - '0'); }
bool isDigit(char c) { return digit(c) < 10; }

/// Eight characters as a number whose lowest byte is the first of them.
U64 eight(const char* p) {
    U64 characters;
    memcpy(&characters, p, sizeof characters);
    return characters;
}

/// The highest bit of each byte that is no digit's value.
U64 others(U64 values) { return ((values + 0x7676767676767676) | values) & 0x8080808080808080; }

/// Reads "00:00:00".
bool readSeconds(const char* p, U32* value) {
    const U64 digits = eight(p) ^ 0x30303A30303A3030;
    if ((others(digits) | (digits & 0x0000FF0000FF0000)) != 0) return false;
    const U64 pairs = digits * 10 + (digits >> 8);
    *value = static_cast<U32>((pairs & 0xFF) * 3600 + (pairs >> 24 & 0xFF) * 60 + (pairs >> 48 & 0xFF));
    return true;
}

/// Reads `count` digits behind `point`.
bool readFraction(const char* p, char point, int count, U32* value) {
    if (*p != point) return false;
    *value = 0;
    for (const char* const end = p + count; p++ != end;) {
        if (!isDigit(*p)) return false;
        *value = *value * 10 + digit(*p);
    }
    return true;
}

/// Reads "00:00:00" and a fraction.
bool readTime(const char* p, char point, int digits, U32* ms) {
    U32 whole;
    U32 fraction;
    if (!readSeconds(p, &whole) || !readFraction(p + 8, point, digits, &fraction)) return false;
    *ms = whole * 1000 + fraction;
    return true;
}

/// Eight digits, zeros in front.
U32 valueOf(U64 digits) {
    const U64 pairs = digits * 10 + (digits >> 8);
    return static_cast<U32>((pairs & 0xFF) * 1000000 + (pairs >> 16 & 0xFF) * 10000 + (pairs >> 32 & 0xFF) * 100 +
                            (pairs >> 48 & 0xFF));
}

/// Reads the number at `p`, which moves behind it.
inline __attribute__((always_inline)) bool readNumber(const char*& p, U32* value) {
    const U64 characters = eight(p) ^ 0x3030303030303030;
    const U64 ends = others(characters);
    if (ends != 0) {
        const int count = __builtin_ctzll(ends) / 8;
        if (count == 0) return false;
        p += count;
        *value = valueOf(characters << (8 - count) * 8);
        return true;
    }
    *value = valueOf(characters);
    for (p += 8; isDigit(*p); ++p) *value = *value * 10 + digit(*p);
    return true;
}

// 1
// 00:00:05,000 --> 00:00:07,500
// One line or more, and a blank one behind.
void srt(const char* text, const char* end, Tags* tags) {
    constexpr size_t kTimeLine = sizeof "00:00:00,000 --> 00:00:00,000" - 1;
    U32 start;
    U32 last;
    for (const char *p = text, *next; p < end; p = next) {
        next = nextLine(p, end);
        if (next - p <= static_cast<ptrdiff_t>(kTimeLine) || !readTime(p, ',', 3, &start) ||
            memcmp(p + 12, " --> ", 5) != 0 || !readTime(p + 17, ',', 3, &last)) {
            continue;
        }
        tags->add(start, last, next - text);
        while (next < end && *next != '\r') next = nextLine(next, end);
    }
}

// Dialogue: 0,0:00:05.00,0:00:07.50,Default,,0,0,0,,One line
void ass(const char* text, const char* end, Tags* tags) {
    constexpr char kDialogue[] = "Dialogue: 0,";
    constexpr size_t kKeyword = sizeof kDialogue - 1;
    constexpr size_t kTimes = sizeof "0:00:00.00,0:00:00.00," - 1;
    const auto read = [](const char* p, U32* ms) {
        U32 minutes;
        U32 seconds;
        U32 hundredths;
        if (!isDigit(*p) || !readFraction(p + 1, ':', 2, &minutes) || !readFraction(p + 4, ':', 2, &seconds) ||
            !readFraction(p + 7, '.', 2, &hundredths)) {
            return false;
        }
        *ms = (digit(*p) * 3600 + minutes * 60 + seconds) * 1000 + hundredths * 10;
        return true;
    };
    U32 start;
    U32 last;
    for (const char *p = text, *next; p < end; p = next) {
        next = nextLine(p, end);
        if (next - p <= static_cast<ptrdiff_t>(kKeyword + kTimes) || memcmp(p, kDialogue, kKeyword) != 0) continue;
        const char* const times = p + kKeyword;
        if (!read(times, &start) || times[10] != ',' || !read(times + 11, &last) || times[21] != ',') continue;
        p = times + kTimes;
        int fields = 6;  // Style, Name, three margins, Effect
        for (; fields > 0 && p < next; ++p) fields -= *p == ',' ? 1 : 0;
        if (fields == 0) tags->add(start, last, p - text);
    }
}

// <SYNC Start=5000><P Class=ENCC>One line<br>
// or two
void sami(const char* text, const char* end, Tags* tags) {
    constexpr char kSync[] = "<SYNC Start=";
    constexpr size_t kKeyword = sizeof kSync - 1;
    U32 start;
    for (const char *p = text, *next; p < end; p = next) {
        next = nextLine(p, end);
        if (next - p <= static_cast<ptrdiff_t>(kKeyword) || memcmp(p, kSync, kKeyword) != 0) continue;
        p += kKeyword;
        if (!readNumber(p, &start) || p[0] != '>' || p[1] != '<' || p[2] != 'P') continue;
        while (p < next && *++p != '>') {
        }
        if (p < next) tags->add(start, 0xFFFFFFFF, ++p - text);
    }
}

// 00:00:05,1=One line
// 00:00:05,2=or two
// 00:00:07,1=
// 00:00:07,2=
void txt(const char* text, const char* end, Tags* tags) {
    constexpr ptrdiff_t kStamp = sizeof "00:00:00,1=" - 1;
    const auto read = [end](const char* p, U32* seconds) {
        return end - p >= kStamp && readSeconds(p, seconds) && memcmp(p + 8, ",1=", 3) == 0;
    };
    U32 start;
    U32 last;
    for (const char* p = text; p < end;) {
        const char* const entry = p + kStamp;
        const bool isEntry = read(p, &start);
        p = nextLine(p, end);
        if (!isEntry) continue;
        p = nextLine(p, end);
        if (!read(p, &last)) continue;
        tags->add(start * 1000, last * 1000, entry - text);
        p = nextLine(nextLine(p, end), end);
    }
    logTable(*tags);
}

// 00:00:05.00,00:00:07.50
// One line, and a blank one behind
void subViewer2(const char* text, const char* end, Tags* tags) {
    constexpr ptrdiff_t kTimeLine = sizeof "00:00:00.00,00:00:00.00\r\n" - 1;
    U32 start;
    U32 last;
    for (const char* p = text; end - p >= kTimeLine;) {
        if (readTime(p, '.', 2, &start) && p[11] == ',' && readTime(p + 12, '.', 2, &last) && p[23] == '\r') {
            p += kTimeLine;
            tags->add(start, last, p - text);
        }
        p = nextLine(p, end);
    }
}

// [00:00:05]
// One line
// [00:00:07]
void subViewer1(const char* text, const char* end, Tags* tags) {
    constexpr ptrdiff_t kTimeLine = sizeof "[00:00:00]\r\n" - 1;
    const auto read = [end](const char* p, U32* seconds) {
        return end - p >= kTimeLine && p[0] == '[' && readSeconds(p + 1, seconds) && p[9] == ']' && p[10] == '\r';
    };
    U32 start;
    U32 last;
    for (const char* p = text; p < end;) {
        if (!read(p, &start)) {
            p = nextLine(p, end);
            continue;
        }
        const char* const line = p + kTimeLine;
        p = nextLine(line, end);
        if (!read(p, &last)) continue;
        tags->add(start * 1000, last * 1000, line - text);
        p += kTimeLine;
    }
}

// {125}{187}One line
void microDvd(const char* text, const char* end, Tags* tags) {
    constexpr U64 kNanosecondsPerFrame = 1000000000 / 29;
    const auto ms = [](U32 frame) { return static_cast<U32>(kNanosecondsPerFrame * frame / 1000000); };
    U32 start;
    U32 last;
    for (const char *p = text, *next; p < end; p = next) {
        next = nextLine(p, end);
        if (*p++ != '{' || !readNumber(p, &start) || p[0] != '}' || p[1] != '{') continue;
        p += 2;
        if (!readNumber(p, &last) || *p++ != '}') continue;
        __android_log_print(ANDROID_LOG_DEBUG, "ByHand", "%llu, %u, %u, %u, %u",
                            static_cast<unsigned long long>(kNanosecondsPerFrame), start, last, ms(start), ms(last));
        tags->add(ms(start), ms(last), p - text);
    }
}

// 00:00:05:00 00:00:07:50 One line
void dvb(const char* text, const char* end, Tags* tags) {
    constexpr ptrdiff_t kTimes = sizeof "00:00:00:00 00:00:00:00 " - 1;
    U32 start;
    U32 last;
    for (const char* p = text; end - p >= kTimes; p = nextLine(p, end)) {
        if (readTime(p, ':', 2, &start) && p[11] == ' ' && readTime(p + 12, ':', 2, &last) && p[23] == ' ') {
            tags->add(start, last, p + kTimes - text);
        }
    }
    logTable(*tags);
}

constexpr struct {
    const char* format;
    ScanByHand scan;
} kScans[] = {
    {"SRT", srt},
    {"SSA", ass},
    {"SAMI", sami},
    {"TXT", txt},
    {"SubViewer 2.0", subViewer2},
    {"SubViewer 1.0", subViewer1},
    {"MicroDVD", microDvd},
    {"DVB subtitle system", dvb},
};

}  // namespace

ScanByHand scanByHand(const char* format) {
    for (const auto& row : kScans) {
        if (strcmp(row.format, format) == 0) return row.scan;
    }
    return nullptr;
}

}  // namespace bench

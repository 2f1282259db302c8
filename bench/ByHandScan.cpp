// The scans by hand. The comment above each shows how its film looks; it takes that by its columns.
#include <string.h>

#include "bench/ByHand.h"

namespace bench {

namespace {

const char* nextLine(const char* p, const char* end) {
    const void* const found = memchr(p, '\n', static_cast<size_t>(end - p));
    return found == nullptr ? end : static_cast<const char*>(found) + 1;
}

U32 digit(char c) { return static_cast<U32>(c - '0'); }
bool isDigit(char c) { return digit(c) < 10; }
U32 two(const char* p) { return digit(p[0]) * 10 + digit(p[1]); }

/// Eight characters as a number whose lowest byte is the first of them.
U64 eight(const char* p) {
    U64 characters;
    memcpy(&characters, p, sizeof characters);
    return characters;
}

/// "00:00:00", whatever stands between the digits.
U32 seconds(const char* p) {
    const U64 digits = eight(p) & 0x0F0F000F0F000F0F;
    const U64 pairs = digits * 10 + (digits >> 8);
    return static_cast<U32>((pairs & 0xFF) * 3600 + (pairs >> 24 & 0xFF) * 60 + (pairs >> 48 & 0xFF));
}

/// Eight digits as `eight` gives them, their upper halves cleared.
U32 valueOf(U64 digits) {
    const U64 pairs = digits * 10 + (digits >> 8);
    return static_cast<U32>((pairs & 0xFF) * 1000000 + (pairs >> 16 & 0xFF) * 10000 + (pairs >> 32 & 0xFF) * 100 +
                            (pairs >> 48 & 0xFF));
}

/// The number at `p`, which moves behind it.
inline __attribute__((always_inline)) U32 number(const char*& p) {
    const U64 characters = eight(p) ^ 0x3030303030303030;
    // the highest bit of what is no digit
    const U64 others = ((characters + 0x7676767676767676) | characters) & 0x8080808080808080;
    if (others != 0) {
        const int count = __builtin_ctzll(others) / 8;
        p += count;
        return valueOf(characters << (8 - count) * 8);  // zeros in front
    }
    U32 value = valueOf(characters);
    for (p += 8; isDigit(*p); ++p) value = value * 10 + digit(*p);
    return value;
}

// 1
// 00:00:05,000 --> 00:00:07,500
// One line or more, and a blank one behind.
void srt(const char* text, const char* end, Tags* tags) {
    constexpr size_t kTimeLine = sizeof "00:00:00,000 --> 00:00:00,000\r\n" - 1;
    const auto ms = [](const char* p) { return seconds(p) * 1000 + digit(p[9]) * 100 + two(p + 10); };
    for (const char* p = text; p < end;) {
        while (isDigit(*p)) ++p;
        p += 2;
        if (end - p < static_cast<ptrdiff_t>(kTimeLine)) return;
        const char* const timeLine = p;
        p += kTimeLine;
        tags->add(ms(timeLine), ms(timeLine + 17), p - text);
        while (p < end && *p != '\r') p = nextLine(p, end);
        p += 2;
    }
}

// Dialogue: 0,0:00:05.00,0:00:07.50,Default,,0,0,0,,One line
void ass(const char* text, const char* end, Tags* tags) {
    constexpr char kDialogue[] = "Dialogue: 0,";
    constexpr size_t kKeyword = sizeof kDialogue - 1;
    constexpr size_t kTimes = sizeof "0:00:00.00,0:00:00.00," - 1;
    const auto ms = [](const char* p) {
        return (digit(p[0]) * 3600 + two(p + 2) * 60 + two(p + 5)) * 1000 + two(p + 8) * 10;
    };
    for (const char *p = text, *next; p < end; p = next) {
        next = nextLine(p, end);
        if (memcmp(p, kDialogue, kKeyword) != 0) continue;
        const char* const times = p + kKeyword;
        p = times + kTimes;
        for (int field = 0; field < 6; ++p) field += *p == ',';  // Style, Name, three margins, Effect
        tags->add(ms(times), ms(times + 11), p - text);
    }
}

// <SYNC Start=5000><P Class=ENCC>One line<br>
// or two
void sami(const char* text, const char* end, Tags* tags) {
    constexpr char kSync[] = "<SYNC Start=";
    constexpr size_t kKeyword = sizeof kSync - 1;
    for (const char *p = text, *next; p < end; p = next) {
        next = nextLine(p, end);
        if (memcmp(p, kSync, kKeyword) != 0) continue;
        p += kKeyword;
        const U32 start = number(p);
        ++p;  // the end of SYNC
        while (*p != '>') ++p;
        tags->add(start, 0xFFFFFFFF, ++p - text);
    }
}

// 00:00:05,1=One line
// 00:00:05,2=or two
// 00:00:07,1=
// 00:00:07,2=
void txt(const char* text, const char* end, Tags* tags) {
    constexpr size_t kStamp = sizeof "00:00:00,1=" - 1;
    for (const char* p = text; p < end;) {
        const U32 start = seconds(p);
        const char* const entry = p + kStamp;
        p = nextLine(nextLine(entry, end) + kStamp, end);
        if (end - p < static_cast<ptrdiff_t>(kStamp)) return;
        tags->add(start * 1000, seconds(p) * 1000, entry - text);
        p += 2 * (kStamp + 2);
    }
}

// 00:00:05.00,00:00:07.50
// One line, and a blank one behind
void subViewer2(const char* text, const char* end, Tags* tags) {
    constexpr size_t kTimeLine = sizeof "00:00:00.00,00:00:00.00\r\n" - 1;
    const auto ms = [](const char* p) { return seconds(p) * 1000 + two(p + 9); };
    for (const char* p = text; end - p >= static_cast<ptrdiff_t>(kTimeLine);) {
        const char* const timeLine = p;
        p += kTimeLine;
        tags->add(ms(timeLine), ms(timeLine + 12), p - text);
        p = nextLine(p, end) + 2;
    }
}

// [00:00:05]
// One line
// [00:00:07]
void subViewer1(const char* text, const char* end, Tags* tags) {
    constexpr size_t kTimeLine = sizeof "[00:00:00]\r\n" - 1;
    for (const char* p = text; end - p >= static_cast<ptrdiff_t>(kTimeLine);) {
        const U32 start = seconds(p + 1);
        const char* const line = p + kTimeLine;
        p = nextLine(line, end);
        if (end - p < static_cast<ptrdiff_t>(kTimeLine)) return;
        tags->add(start * 1000, seconds(p + 1) * 1000, line - text);
        p += kTimeLine;
    }
}

// {125}{187}One line
void microDvd(const char* text, const char* end, Tags* tags) {
    constexpr U64 kNanosecondsPerFrame = 1000000000 / 29;
    const auto ms = [](U32 frame) { return static_cast<U32>(kNanosecondsPerFrame * frame / 1000000); };
    for (const char *p = text, *next; p < end; p = next) {
        next = nextLine(p, end);
        if (*p != '{') continue;
        const U32 start = number(++p);
        p += 2;  // the braces between
        const U32 last = number(p);
        tags->add(ms(start), ms(last), ++p - text);
    }
}

// 00:00:05:00 00:00:07:50 One line
void dvb(const char* text, const char* end, Tags* tags) {
    constexpr size_t kTimes = sizeof "00:00:00:00 00:00:00:00 " - 1;
    const auto ms = [](const char* p) { return seconds(p) * 1000 + two(p + 9); };
    for (const char* p = text; end - p >= static_cast<ptrdiff_t>(kTimes);) {
        const char* const times = p;
        p += kTimes;
        tags->add(ms(times), ms(times + 12), p - text);
        p = nextLine(p, end);
    }
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

// The texts by hand: what the parsers make of the films, which have nothing but italic lines for markup.
#include <cutils/properties.h>
#include <string.h>
#include <strings.h>

#include "bench/ByHand.h"

namespace bench {

namespace {

/// The first `c` at or after `p`, or `end`.
const char* find(const char* p, const char* end, char c) {
    if (p >= end) return end;
    const void* const found = memchr(p, c, static_cast<size_t>(end - p));
    return found == nullptr ? end : static_cast<const char*>(found);
}

char* copy(const char* p, const char* end, char* out) {
    const size_t length = static_cast<size_t>(end - p);
    memcpy(out, p, length);
    return out + length;
}

char* lineBreak(char* out) {
    *out++ = '\r';
    *out++ = '\n';
    return out;
}

/// The line at `p`, which moves to its CR, without tags. The character behind a tag is text, be it the CR.
char* line(const char*& p, const char* end, char* out) {
    const char* lineEnd = find(p, end, '\r');
    for (const char* open; (open = find(p, lineEnd, '<')) != lineEnd;) {
        out = copy(p, open, out);
        p = find(open, lineEnd, '>') + 1;
        if (p == lineEnd) lineEnd = find(p + 1, end, '\r');
    }
    out = copy(p, lineEnd, out);
    p = lineEnd;
    return out;
}

/// Whether the device is set to Big5: in two formats the text depends on that, so it is asked for each of them.
bool isBig5() {
    char language[PROPERTY_VALUE_MAX];
    property_get("vendor.quarn.subtitle.language", language, "");
    return strcasecmp(language, "big5") == 0;
}

// One line
// and another, up to a blank one
char* srt(const char* p, const char* end, char* out) {
    if (isBig5()) return out;
    for (;;) {
        out = line(p, end, out);
        p += 2;
        if (p >= end || *p == '\r') return out;
        *out++ = '\n';
    }
}

// The rest of one line, which may name the next
char* oneLine(const char* p, const char* end, char* out) { return line(p, end, out); }

// The rest of one line, with the break behind a tag and nothing of the next
char* microDvd(const char* p, const char* end, char* out) { return line(p, find(p, end, '\n') + 1, out); }

// The rest of one line, and a blank one behind
char* subViewer2(const char* p, const char* end, char* out) {
    return isBig5() ? out : line(p, find(p, end, '\r'), out);
}

// One line, a stamp and another line
char* txt(const char* p, const char* end, char* out) {
    out = lineBreak(line(p, end, out));
    p += 2 + sizeof "00:00:00,2=" - 1;
    return line(p, end, out);
}

// &nbsp;
// or lines with <br> between them, up to the next <SYNC
char* sami(const char* p, const char* end, char* out) {
    while (p < end) {
        if (*p == '&') {
            *out++ = ' ';
            p += sizeof "&nbsp;" - 1;
        }
        const char* const lineEnd = find(p, end, '\r');
        const char* const open = find(p, lineEnd, '<');
        out = copy(p, open, out);
        if (open == lineEnd) {
            p = lineEnd + 2;
            if (p < end && *p == '<') break;
            *out++ = '\n';
        } else if (memcmp(open, "<br>\r", 5) == 0) {
            out = lineBreak(out);
            p = lineEnd + 2;
        } else if (lineEnd[-1] == '>' && open[1] == '/') {
            *out++ = 0;  // a line that a tag closes is the last one, and the tag stands behind its 0
            return copy(open, lineEnd - 1, out);
        } else {
            p = find(open, lineEnd, '>') + 1;
        }
    }
    return out;
}

constexpr struct {
    const char* format;
    TextByHand text;
} kTexts[] = {
    {"SRT", srt},
    {"SSA", oneLine},
    {"SAMI", sami},
    {"TXT", txt},
    {"SubViewer 2.0", subViewer2},
    {"SubViewer 1.0", oneLine},
    {"MicroDVD", microDvd},
    {"DVB subtitle system", oneLine},
};

}  // namespace

TextByHand textByHand(const char* format) {
    for (const auto& row : kTexts) {
        if (strcmp(row.format, format) == 0) return row.text;
    }
    return nullptr;
}

}  // namespace bench

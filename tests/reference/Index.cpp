// The index of VobSub: a keyword a line.
#include <stdio.h>

#include "tests/reference/Reference.h"

namespace reference {

namespace {

const char kLanguages[25][3] = {"na", "ge", "en", "es", "el", "fr", "sh", "it", "nl", "pl", "pt", "ru", "ro",
                                "sv", "ar", "zh", "ja", "ko", "fa", "fi", "no", "iw", "bg", "",   ""};
const char kClock[] = "%u:%u:%u:%u";

struct Scan {
    Index out;
    File in;
    S64 delay = 0;
    U32 language = 0;
    U32 trackStart = 0;

    /// So many units from `i` on as bytes to read numbers from, or all that follows.
    std::string text(size_t i, size_t units) const {
        if (!in.wide()) return in.data.substr(i < in.data.size() ? i : in.data.size());
        return narrowedOpen(in, i, units);
    }
    /// Whether the text of so many units begins with the word.
    bool startsWith(size_t i, size_t units, const std::string& word) const {
        return text(i, units).substr(0, word.size()) == word;
    }
    size_t line(size_t i);
    size_t timestamp(size_t i);
    void readDelay(size_t i);
    void readPalette(size_t i);
    size_t readPair(size_t i, const char* format, U32* first, U32* second);
    void readLanguage(size_t i);
    void closeTrack();
};

size_t Scan::timestamp(size_t i) {
    i = skipSpace(in, i + 10);
    const std::vector<U32> time = numbers(text(i, 13), 0, kClock);
    if (time.size() != 4) return i;
    i = skipSpace(in, i + 13);
    if (!startsWith(i, 12, "filepos:")) return i;
    i = skipSpace(in, i + 10);
    const std::vector<U32> pos = numbers(text(i, 14), 0, "%x");
    if (pos.size() == 1) out.tags.push_back({static_cast<U32>(delay) + milliseconds(time, 0), 0xFFFFFFFF, pos[0]});
    return i;
}

void Scan::readDelay(size_t i) {
    const std::string value = text(i, 14);
    int sign = value[0] == '-' ? -1 : value[0] == '+' ? 1 : 0;
    std::vector<U32> n = numbers(value, 0, "-%u:%u:%u:%u");
    if (n.size() != 4 || sign == 0) {
        n.assign(4, 0);
        sign = 0;
    }
    delay = sign * ((S64{3600} * n[0] + S64{60} * n[1] + n[2]) * 1000 + n[3]);
    char line[160];
    snprintf(line, sizeof line, "[SUBIDX] delay:%lld, sign:%d, hh:%u, mm:%u, ss:%u, ms:%u", delay, sign, n[0], n[1],
             n[2], n[3]);
    out.log.push_back(line);
}

void Scan::readPalette(size_t i) {
    std::string value = text(i, 0);
    if (in.wide()) {
        size_t end = i;
        while (in.inside(end) && !isLineEnd(in.character(end))) ++end;
        value = end - i < 255 ? text(i, end - i) : "";
    }
    const std::vector<U32> n = numbers(value, 0, "%x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x, %x");
    for (size_t k = 0; k < n.size(); ++k) out.palette[k] = n[k];
    if (n.size() < 16) {
        out.palette[n.size()] = 0;
        out.palette[0] = 0xFF000000;
    }
}

size_t Scan::readPair(size_t i, const char* format, U32* first, U32* second) {
    std::string value = text(i, 0);
    if (in.wide()) {
        i = skipSpace(in, i);
        size_t end = i;
        while (in.inside(end) && !isSpace(in.at(end))) ++end;
        value = end - i < 255 ? text(i, end - i) : "";
    }
    const std::vector<U32> n = numbers(value, 0, format);
    *first = n.size() == 2 ? n[0] : 0;
    *second = n.size() == 2 ? n[1] : 0;
    return i;
}

void Scan::closeTrack() {
    const U32 count = static_cast<U32>(out.tags.size());
    if (count > trackStart) out.tracks.push_back({language, trackStart, count - 1});
    trackStart = count;
}

void Scan::readLanguage(size_t i) {
    closeTrack();
    language = 0;
    for (U32 k = 1; k < 25 && language == 0; ++k) {
        if (startsWith(i, 2, std::string(kLanguages[k], 2))) language = k;
    }
}

size_t Scan::line(size_t i) {
    const auto is = [&](const char* word) { return startsWith(i, 14, word); };
    const unsigned c = in.character(i);
    if (is("#") || c == 0 || isLineEnd(c)) return i;
    if (is("timestamp:")) return timestamp(i);
    if (is("id:")) {
        i = skipSpace(in, i + 3);
        readLanguage(i);
    } else if (is("langidx:")) {
        if (!in.wide()) out.log.push_back("we will not use these informations\n");
    } else if (is("delay:")) {
        i = skipSpace(in, i + 6);
        readDelay(i);
    } else if (is("palette:")) {
        readPalette(i += 8);
    } else if (is("size:")) {
        i = readPair(i + 5, "%ux%u", &out.width, &out.height);
    } else if (is("org:")) {
        i = readPair(i + 4, "%u, %u", &out.originX, &out.originY);
    } else if (is("custom colors:")) {
        out.log.push_back(in.wide() ? "now we will not use these informations\n"
                                    : "we will not use these informations\n");
    } else {
        out.log.push_back("unkonwn case,we will not handle\n");
    }
    return i;
}

}  // namespace

Index scanIndex(const std::string& data) {
    Scan scan;
    scan.in.data = data;
    scan.in.code = codeOf(data);
    for (size_t i = scan.in.code == kNative ? 0 : 1; scan.in.inside(i); i = skipLineEnds(scan.in, i)) {
        i = skipSpace(scan.in, i);
        i = scan.line(i);
    }
    scan.closeTrack();
    scan.out.code = scan.in.code;
    return scan.out;
}

}  // namespace reference

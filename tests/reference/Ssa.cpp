// SubStation Alpha: the Dialogue lines.
#include <stdlib.h>

#include "tests/reference/Reference.h"

namespace reference {

namespace {

const char kTimes[] = "%u:%u:%u.%u,%u:%u:%u.%u";

U32 hundredths(const std::vector<U32>& n, size_t i) {
    return (n[i] * 3600 + n[i + 1] * 60 + n[i + 2]) * 1000 + n[i + 3] * 10;
}

void scan(Film& film, size_t i) {
    const File& in = film.file;
    U32 previous = 0;
    for (; in.inside(i); i = skipLine(in, i)) {
        if (upper(head(in, i, 9)) != "DIALOGUE:") continue;
        size_t at = i + 9;
        while (at < in.count() && in.character(at) != ',') ++at;
        if (at >= in.count()) continue;
        const size_t times = at + 1;
        const std::vector<U32> n =
            in.wide() ? numbers(narrowed(in, times, 21), 0, kTimes) : numbers(in.data, times, kTimes);
        if (n.size() != 8) continue;
        at = times + 22;
        for (int commas = 0; commas < 6; ++at) {
            if (at >= in.count()) return;
            if (in.character(at) == ',') ++commas;
        }
        i = at;
        const U32 start = hundredths(n, 0);
        if (!in.wide()) {
            if (start < previous) continue;
            previous = start;
        }
        film.add(start, hundredths(n, 4), in.position(at));
    }
}

int byStart(const void* a, const void* b) {
    return static_cast<S32>(static_cast<const Tag*>(a)->start - static_cast<const Tag*>(b)->start);
}

/// Which of Shift-JIS (1), GBK (2) and Big5 (4) have the code; -1 when this reading has no row for it.
int encodingsWith(unsigned code) {
    const struct {
        unsigned first, last;
        int encodings;
    } kKnown[] = {{0x8140, 0x817E, 3}, {0xA440, 0xA440, 4}, {0xB0A1, 0xB0A1, 6}, {0xFE40, 0xFE4F, 2}};
    if ((code & 0xFF) < 0x40 || code >> 8 == 0x80 || code >> 8 == 0xFF) return 0;
    for (const auto& row : kKnown) {
        if (code >= row.first && code <= row.last) return row.encodings;
    }
    return -1;
}

/// The first code in the first hundred texts that GBK alone or Big5 alone has.
CodeType decide(const Film& film) {
    for (size_t i = 0; i < film.tags.size() && i < 100; ++i) {
        const Shown shown = ssaText(film, i, 8192);
        const auto at = [&](size_t k) { return k < shown.units.size() ? shown.units[k] : 0; };
        for (size_t k = 0; at(k) != 0; k += at(k) < 0x80 || at(k + 1) == 0 ? 1 : 2) {
            if (at(k) < 0x80) continue;
            const int encodings = encodingsWith(at(k) << 8 | at(k + 1));
            if (encodings < 0) return kUndecided;
            if (encodings == 2) return E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_GBK;
            if (encodings == 4) return E_MEDIA_SUBTITLE_PARSER_CODE_TYPE_BIG5;
        }
    }
    return kNative;
}

}  // namespace

Film scanSsa(const std::string& data) {
    Film film;
    film.file.data = data;
    if (data.empty()) return film;
    film.file.code = codeOf(data);
    scan(film, film.file.code == kNative ? 0 : 1);
    const CodeType decided = film.file.code == kNative ? decide(film) : film.file.code;
    if (!film.tags.empty()) qsort(film.tags.data(), film.tags.size(), sizeof(Tag), byStart);
    film.file.code = decided;
    return film;
}

Shown ssaText(const Film& film, size_t index, U32 size) {
    const bool wide = film.file.wide();
    const bool big = film.file.big();
    const size_t total = film.file.data.size();
    if (wide ? size < 8 || total < 2 : size <= 2) return emptyText(size, wide);
    const size_t limit = wide ? size / 2 - 3 : size - 2;
    Film unclipped = film;
    const bool last = index + 1 == film.tags.size();
    const U32 bound = static_cast<U32>((last ? 0 : film.tags[index + 1].pos) - film.tags[index].pos);
    if (!last && film.tags[index].pos >= film.tags[index + 1].pos) unclipped.tags.resize(index + 1);
    Work work(unclipped, index);
    const auto at = [&](size_t i) { return wide ? work.unit(i) : work.at(i); };
    const size_t end = bound < kWorkSize ? bound : kWorkSize;

    Shown shown;
    shown.terminated = true;
    size_t i = 0;
    while (shown.units.size() < limit && i < (wide ? total / 2 : total)) {
        const unsigned c = at(i);
        if (c == 0) break;
        if (big) {
            if (c == kBigCr && at(i + 1) == kBigLf) break;
            shown.units.push_back(swapped(c));
            ++i;
            continue;
        }
        if (c == kLf || (c == kCr && at(i + 1) == kLf)) break;
        if (c == '{') {
            while (i < kWorkSize && at(i) != '}') ++i;
            if (isLineEnd(at(i + 1))) {
                shown.units.push_back(0);
                break;
            }
            ++i;
            if (at(i) == '<') {
                while (i < kWorkSize && at(i) != '>') ++i;
                ++i;
            }
            continue;
        }
        if (c == '<' && i < bound) {
            size_t close = i;
            while (close < end && at(close) != '>' && !isLineBreak(at(close), at(close + 1))) ++close;
            if (close < end && at(close) == '>') {
                if (at(close + 1) == kCr && at(close + 2) == kLf && at(close + 3) == kCr && at(close + 4) == kLf &&
                    close + 4 < bound) {
                    shown.terminated = false;
                    return shown;
                }
                i = close + 1;
            }
        }
        shown.units.push_back(at(i));
        ++i;
    }
    return shown;
}

}  // namespace reference

// The text of the base class: CR LF becomes LF, simple markup goes, a blank line ends it.
#include "tests/reference/Reference.h"

namespace reference {

namespace {

bool opensMarkup(unsigned next) { return isLetter(next) || next == '/'; }

constexpr size_t kNone = static_cast<size_t>(-1);

/// The last of the markup that begins at `i`, or nothing.
template <class At>
size_t markupEnd(At at, size_t i, size_t count, unsigned closing, bool joins) {
    for (size_t j = i + 1; j < count; ++j) {
        if (isLineBreak(at(j), at(j + 1))) return kNone;
        if (at(j) == closing && !(joins && at(j + 1) == '<')) return j;
    }
    return kNone;
}

size_t smaller(size_t a, size_t b) { return a < b ? a : b; }

Shown bytes(Work work, U32 size, bool big5) {
    if (size <= 2 || work.limit == 0) return emptyText(size, false);
    const size_t limit = size - 2;
    const size_t span = work.limit;
    const size_t end = smaller(span, kWorkSize);
    const auto at = [&](size_t i) { return work.at(i); };
    Shown shown;
    std::vector<unsigned>& out = shown.units;
    shown.terminated = true;
    size_t i = 0;
    while (at(i) != 0) {
        const unsigned c = at(i);
        if (isLineEnd(c) && at(i + 1) == kLf) {
            const unsigned behind = at(i + 2);
            if (behind == kCr ? at(i + 3) == kLf || c == kLf : c == kLf || behind == 0) break;
            if (out.size() >= limit || i + 1 >= span) break;
            ++i;
            continue;
        }
        if (c == '<' && opensMarkup(at(i + 1)) && i < span) {
            const size_t close = markupEnd(at, i, end, '>', true);
            if (close != kNone) {
                if (at(close + 1) == kCr && at(close + 2) == kLf && at(close + 3) == kCr && at(close + 4) == kLf &&
                    close + 4 < span) {
                    shown.terminated = false;
                    return shown;
                }
                i = close + 1;
            }
        } else if (c == '{' && opensMarkup(at(i + 1)) && i < span) {
            const size_t close = markupEnd(at, i, end, '}', false);
            if (close != kNone && isLineEnd(at(close + 1))) {
                work.bytes[close] = '\0';
                out.push_back(0);
                i = close;
            } else if (close != kNone && at(close + 1) == '<') {
                i = close + 1;
                while (i < end && at(i) != '>') ++i;
                if (i == end) {
                    out.push_back(0);
                    break;
                }
                ++i;
            } else if (close != kNone) {
                i = close + 1;
            }
        }
        const unsigned text = at(i);
        if (big5 && text >= 0x80) {
            if (text >= 0xA1) {
                out.push_back(text);
                out.push_back(at(++i));
            }
        } else {
            out.push_back(text);
        }
        if (out.size() >= limit || i + 1 >= span) break;
        ++i;
    }
    return shown;
}

Shown bigEndian(const Work& work, size_t limit, size_t count) {
    Shown shown;
    shown.terminated = true;
    for (size_t k = 0; k < count && shown.units.size() < limit && work.unit(k) != 0; ++k) {
        if (work.unit(k) == kBigCr && work.unit(k + 1) == kBigLf) {
            const bool blankLine = work.unit(k + 2) == kBigCr && work.unit(k + 3) == kBigLf;
            if (blankLine || work.unit(k + 2) == 0x3000) break;
            continue;
        }
        shown.units.push_back(swapped(work.unit(k)));
    }
    return shown;
}

Shown littleEndian(Work work, size_t limit, size_t count, size_t raw) {
    const auto at = [&](size_t i) { return work.unit(i); };
    Shown shown;
    std::vector<unsigned>& out = shown.units;
    shown.terminated = true;
    size_t k = 0;
    while (k < count && out.size() < limit && at(k) != 0) {
        const unsigned c = at(k);
        if (isLineEnd(c) && at(k + 1) == kLf) {
            const unsigned behind = at(k + 2);
            if (behind == kCr ? at(k + 3) == kLf || c == kLf : c == kLf || behind == 0) break;
            ++k;
            continue;
        }
        while (at(k) == '{' && opensMarkup(at(k + 1))) {
            size_t close = k + 1;
            while (close < smaller(raw, kWorkSize) && at(close) != '}') ++close;
            if (at(close) == '}' && isLineEnd(at(close + 1))) {
                work.bytes[2 * close] = work.bytes[2 * close + 1] = '\0';
                out.push_back(0);
                k = close;
                break;
            }
            k = close + 1;
            if (at(k) == '<') {
                while (k < smaller(raw, kWorkSize) && at(k) != '>') ++k;
                ++k;
            }
        }
        if (at(k) == '<' && opensMarkup(at(k + 1)) && k < work.limit) {
            const size_t close = markupEnd(at, k, smaller(work.limit, kWorkSize), '>', false);
            if (close != kNone) {
                if (at(close + 1) == kCr && at(close + 2) == kLf && at(close + 3) == kCr && at(close + 4) == kLf) {
                    shown.terminated = false;
                    return shown;
                }
                k = close + 1;
            }
        }
        out.push_back(at(k));
        ++k;
    }
    return shown;
}

}  // namespace

Shown baseText(const Film& film, size_t index, U32 size, bool big5) {
    const Work work(film, index);
    if (film.file.code == kUtf8 || film.file.code == kNative) return bytes(work, size, big5);
    if (!film.file.wide()) return notShown();
    const size_t total = film.file.data.size();
    if (total < 2 || size < 8) return emptyText(size, true);
    if (film.file.big()) return bigEndian(work, size / 2 - 3, total / 2);
    return littleEndian(work, size / 2 - 3, total / 2, total);
}

}  // namespace reference

// SubViewer 1.0: a start line, a line of text, an end line. And the text of one line, which two dialects share.
#include "tests/reference/Reference.h"

namespace reference {

namespace {

std::vector<U32> clockAt(const File& in, size_t i) {
    const char kClock[] = "[%u:%u:%u]";
    return in.wide() ? numbers(narrowed(in, i, 10), 0, kClock) : numbers(in.data, i, kClock);
}

bool accepts(const File& in) {
    // a brace, not a bracket, in little-endian text
    const unsigned opening = in.code == kUtf16Le ? '{' : in.big() ? 0x5B00 : '[';
    for (size_t i = skipSpace(in, 0); in.inside(i); i = skipSpace(in, skipLine(in, i))) {
        if (in.at(i) == opening) {
            if (clockAt(in, i).size() == 3) return true;
        } else if (in.wide() && isDigit(in.at(i + 1))) {
            return false;
        }
    }
    return false;
}

bool isTimeStamp(const Work& work, bool wide, size_t i) {
    const char kShape[] = "dd:dd:dd:dd";
    for (size_t k = 0; kShape[k] != 0; ++k) {
        const unsigned c = wide ? work.unit(i + k) : work.at(i + k);
        if (kShape[k] == 'd' ? !isDigit(c) : c != ':') return false;
    }
    return true;
}

/// The walk through 8-bit text.
Shown walk(Work work, U32 size, size_t total, bool toTimeStamp) {
    Shown shown;
    shown.terminated = true;
    const auto at = [&](size_t i) { return work.at(i); };
    const size_t end = work.limit < kWorkSize ? work.limit : kWorkSize;
    size_t i = 0;
    while (at(i) != 0 && !(toTimeStamp ? isTimeStamp(work, false, i) : isLineEnd(at(i)) && at(i + 1) == kLf)) {
        if (at(i) == '{') {
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
        if (at(i) == '<' && i < work.limit) {
            size_t close = i;
            while (close < end && at(close) != '>' && !isLineBreak(at(close), at(close + 1))) ++close;
            if (close < end && at(close) == '>') {
                if (at(close + 1) == kCr && at(close + 2) == kLf && at(close + 3) == kCr && at(close + 4) == kLf) {
                    shown.terminated = false;
                    return shown;
                }
                i = close + 1;
            }
        }
        shown.units.push_back(at(i));
        ++i;
        if (shown.units.size() >= size - 2 || i >= total) break;
    }
    return shown;
}

void trim(std::vector<unsigned>& units) {
    if (units.size() < 2 || !isLineEnd(units.back())) return;
    units.pop_back();
    if (units.size() >= 2 && isLineEnd(units.back())) units.pop_back();
}

}  // namespace

Film scanSubViewer10(const std::string& data) {
    Film film;
    File& in = film.file;
    in.data = data;
    in.code = codeOf(data);
    film.accepted = accepts(in);
    if (!film.accepted) return film;
    size_t i = in.wide() ? 1 : 0;
    while (in.inside(i)) {
        i = skipSpace(in, i);
        const std::vector<U32> start = in.wide() || in.at(i) == '[' ? clockAt(in, i) : std::vector<U32>();
        if (start.size() == 3) {
            const size_t text = skipLine(in, i + 10);
            i = skipLine(in, text);
            const std::vector<U32> end = clockAt(in, i);
            if (end.size() == 3) film.add(wholeSeconds(start), wholeSeconds(end), in.position(text));
        }
        i = skipLine(in, i);
    }
    return film;
}

Shown lineText(const Film& film, size_t index, U32 size) {
    const File& in = film.file;
    const Work work(film, index);
    if (!in.wide()) return size <= 2 ? emptyText(size, false) : walk(work, size, in.data.size(), false);
    if (size < 8 || work.copied < 2) return emptyText(size, true);
    Shown shown;
    shown.terminated = true;
    for (size_t i = 0; i < work.copied / 2 && shown.units.size() < size / 2 - 3 && work.unit(i) != 0; ++i) {
        const unsigned c = work.unit(i);
        const unsigned next = work.unit(i + 1);
        if (in.big() ? c == kBigCr && next == kBigLf : isLineEnd(c) && next == kLf) break;
        shown.units.push_back(in.big() ? swapped(c) : c);
    }
    return shown;
}

Shown timedText(const Film& film, size_t index, U32 size) {
    const File& in = film.file;
    const Work work(film, index);
    Shown shown;
    if (in.wide()) {
        if (size < 6 || work.copied < 2) return emptyText(size, true);
        shown.terminated = true;
        for (size_t i = 0; i < work.copied / 2 && shown.units.size() < size / 2 - 2 && work.unit(i) != 0; ++i) {
            if (isTimeStamp(work, true, i)) break;
            shown.units.push_back(work.unit(i));
        }
    } else {
        if (size <= 2) return emptyText(size, false);
        shown = walk(work, size, in.data.size(), true);
        if (!shown.terminated) return shown;
    }
    trim(shown.units);
    return shown;
}

}  // namespace reference

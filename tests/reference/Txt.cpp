// Text with times: the first line of a pair has the text, the next one closes it.
#include "tests/reference/Reference.h"

namespace reference {

namespace {

const char kLong[] = "%u:%u:%u,%u=";
const char kRange[] = "%u:%u:%u,%u --> %u:%u:%u,%u";
const char kShort[] = "%u:%u:%u:";

struct Stamp {
    bool found = false;
    U32 time = 0;
    size_t width = 11;
};

/// `starts`: a range of times is none.
Stamp stampAt(const File& in, size_t i, bool starts) {
    const std::string line = in.wide() ? narrowed(in, i, 11) : in.data;
    const size_t at = in.wide() ? 0 : i;
    Stamp stamp;
    const std::vector<U32> n = numbers(line, at, kLong);
    if (n.size() == 4) {
        stamp.found = !starts || numbers(line, at, kRange).size() != 8;
        stamp.time = wholeSeconds(n);
    } else if (!in.wide() && numbers(line, at, kShort).size() == 3) {
        stamp.found = true;
        stamp.time = wholeSeconds(n);
        stamp.width = n[0] < 10 && numbers(line, at, "0%u:%u:%u:").size() != 3 ? 8 : 9;
    }
    return stamp;
}

void scan(Film& film, size_t i) {
    const File& in = film.file;
    while (in.inside(i)) {
        i = skipSpace(in, i);
        const Stamp start = stampAt(in, i, true);
        if (!start.found) {
            i = skipLine(in, i);
            continue;
        }
        if (start.width != 11 && film.shortWidth == 0) film.shortWidth = start.width;
        const size_t text = i + start.width;
        i = skipLine(in, text);
        if (film.shortWidth == 0) i = skipLine(in, i);
        i = skipSpace(in, i);
        const Stamp end = stampAt(in, i, false);
        if (!end.found) continue;
        film.add(start.time, end.time, in.position(text));
        i = skipLine(in, i + (film.shortWidth != 0 ? film.shortWidth : 11));  // a closing line fixes no width
        if (film.shortWidth == 0) i = skipLine(in, i);
    }
}

/// Extracts one line from `i` on; `atZero` tells that a 0 ended it. False when the text is over at once.
bool line(Work& work, size_t raw, size_t limit, size_t& i, std::vector<unsigned>& out, bool& atZero) {
    const auto at = [&](size_t k) { return work.at(k); };
    const size_t end = raw < kWorkSize ? raw : kWorkSize;
    while (out.size() < limit) {
        const unsigned c = at(i);
        atZero = c == 0;
        if ((c == kCr && at(i + 1) == kLf) || c == 0) {
            out.push_back(c);
            out.push_back(at(i + 1));
            i += 2;
            return true;
        }
        if (c == '|') {
            out.push_back(kCr);
            out.push_back(kLf);
            ++i;
            continue;
        }
        if (c == '{') {
            while (i < end && at(i) != '}') ++i;
            if (isLineEnd(at(i + 1))) {
                if (i < kWorkSize) work.bytes[i] = '\0';
                out.push_back(0);
                continue;
            }
            ++i;
            if (at(i) == '<') {
                while (i < end && at(i) != '>') ++i;
                ++i;
            }
            continue;
        }
        if (c == '<') {
            size_t close = i;
            while (close < end && at(close) != '>' && !isLineBreak(at(close), at(close + 1))) ++close;
            if (close < end && at(close) == '>') {
                if (at(close + 1) == kCr && at(close + 2) == kLf && at(close + 3) == kCr && at(close + 4) == kLf &&
                    close + 4 < raw) {
                    return false;
                }
                i = close + 1;
            }
        }
        out.push_back(at(i));
        ++i;
    }
    return true;
}

void unitLine(const Work& work, bool big, size_t limit, size_t k, std::vector<unsigned>& out) {
    for (; out.size() < limit; ++k) {
        const unsigned c = big ? swapped(work.unit(k)) : work.unit(k);
        const unsigned next = big ? swapped(work.unit(k + 1)) : work.unit(k + 1);
        if (c == 0) return;
        out.push_back(c);
        if (c == kCr && next == kLf) {
            out.push_back(next);
            return;
        }
    }
}

}  // namespace

Film scanTxt(const std::string& data) {
    Film film;
    film.file.data = data;
    if (data.empty()) return film;
    film.file.code = codeOf(data);
    scan(film, film.file.code == kNative ? 0 : 1);
    return film;
}

Shown txtText(const Film& film, size_t index, U32 size) {
    const File& in = film.file;
    Work work(film, index);
    Shown shown;
    shown.terminated = true;
    std::vector<unsigned>& out = shown.units;
    if (in.wide()) {
        if (size < 8) return emptyText(size, true);
        const size_t limit = size / 2 - 3;
        unitLine(work, in.big(), limit, 0, out);
        if (out.size() < limit) unitLine(work, in.big(), limit, out.size() + 11, out);
        if (in.big()) {
            if (out.size() >= 2 && out[out.size() - 2] == kCr && out.back() == kLf) out.resize(out.size() - 2);
            return shown;
        }
    } else if (in.code == kNative) {
        if (size <= 2) return emptyText(size, false);
        size_t i = 0;
        bool atZero = false;
        bool open = !line(work, in.data.size(), size - 3, i, out, atZero);
        if (!open && film.shortWidth == 0) {
            i += 11;
            open = !line(work, in.data.size(), size - 2, i, out, atZero);
        }
        if (open) {
            shown.terminated = false;
            return shown;
        }
        if (atZero) return shown;
    } else {
        return notShown();
    }
    for (int cut = 0; cut < 2 && !out.empty() && isLineEnd(out.back()); ++cut) out.pop_back();
    return shown;
}

}  // namespace reference

// SAMI: the lines that begin with a SYNC element.
#include "tests/reference/Reference.h"

namespace reference {

namespace {

size_t find(const File& in, size_t i, bool (*wanted)(unsigned)) {
    while (i < in.count() && !wanted(in.character(i))) ++i;
    return i;
}
bool isAngle(unsigned c) { return c == '>'; }

/// Reads the SYNC line at `i`; the position that it reaches.
size_t readSync(Film& film, size_t i) {
    const File& in = film.file;
    i = find(in, i + 12, isDigit);
    const std::vector<U32> n = in.wide() ? numbers(narrowed(in, i, 10), 0, "%u") : numbers(in.data, i, "%u");
    if (n.size() != 1) return i;
    i = find(in, i + 1, isAngle);
    if (i >= in.count()) return i;
    i = find(in, i + 1, isAngle);
    if (i >= in.count()) return i;
    ++i;
    size_t text = i;
    if (!in.wide()) {
        if (i >= in.count()) return i;
        if (isLineEnd(in.at(i))) ++text;  // the scan itself goes on in front of it
    }
    film.add(n[0], 0xFFFFFFFF, in.position(text));
    return i;
}

bool isSync(const std::string& bytes, size_t i) {
    return bytes.substr(i < bytes.size() ? i : bytes.size(), 5) == "<SYNC";
}

Shown units(const Work& work, bool big, size_t limit, size_t count) {
    Shown shown;
    shown.terminated = true;
    for (size_t i = 0; i < count && shown.units.size() < limit && work.unit(i) != 0; ++i) {
        const unsigned c = work.unit(i);
        if (big) {
            if (c == kBigCr && work.unit(i + 1) == kBigLf) break;
            shown.units.push_back(swapped(c));
            continue;
        }
        if (isLineEnd(c) && work.unit(i + 1) == kLf) {
            bool sync = true;
            for (size_t k = 0; k < 5; ++k) sync = sync && work.unit(i + 2 + k) == static_cast<unsigned>("<SYNC"[k]);
            if (sync) break;
            continue;
        }
        shown.units.push_back(c);
    }
    return shown;
}

}  // namespace

Film scanSmi(const std::string& data) {
    Film film;
    film.file.data = data;
    if (data.empty()) return film;
    const File& in = film.file;
    film.file.code = codeOf(data);
    for (size_t i = in.code == kNative ? 0 : 1; in.inside(i); i = skipLine(in, i)) {
        i = skipSpace(in, i);
        if (upper(head(in, i, 12)) == "<SYNC START=") i = readSync(film, i);
    }
    return film;
}

Shown smiText(const Film& film, size_t index, U32 size) {
    const size_t total = film.file.data.size();
    Work work(film, index);
    if (film.file.wide()) {
        if (size < 8 || total < 2) return emptyText(size, true);
        return units(work, film.file.big(), size / 2 - 3, total / 2);
    }
    if (size <= 2) return emptyText(size, false);
    Shown shown;
    shown.terminated = true;
    std::vector<unsigned>& out = shown.units;
    const auto at = [&](size_t i) { return work.at(i); };
    size_t i = 0;
    while (out.size() < size - 2 && i < total && at(i) != 0) {
        const unsigned c = at(i);
        if (isLineEnd(c) && at(i + 1) == kLf) {
            if (isSync(work.bytes, i + 2)) break;
            ++i;
        } else if (c == '{') {
            while (i < kWorkSize && at(i) != '}') ++i;
            if (isLineEnd(at(i + 1))) {
                out.push_back(0);
                break;
            }
            ++i;
            if (at(i) == '<') {
                while (i < kWorkSize && at(i) != '>') ++i;
                ++i;
            }
        } else if (work.bytes.compare(i, 4, "<br>") == 0) {
            if (isLineEnd(at(i + 4))) i += 4;
            out.push_back(at(i++));
        } else if (c == '<') {
            size_t close = i + 1;
            while (at(close) != 0 && !isLineBreak(at(close), at(close + 1)) &&
                   !(at(close) == '>' && at(close + 1) != '<')) {
                ++close;
            }
            if (at(close) == '>' && isLineEnd(at(close + 1))) {
                work.bytes[close] = '\0';
                out.push_back(0);
            } else if (at(close) == '>') {
                i = close + 1;
            }
            out.push_back(at(i++));
        } else if (work.bytes.compare(i, 5, "&nbsp") == 0) {
            if (i + 5 < kWorkSize) out.push_back(' ');  // it is written over what stands there
            i += 6;
        } else {
            out.push_back(c);
            ++i;
        }
    }
    return shown;
}

}  // namespace reference

// SubRip: timing lines, and the text behind each.
#include "tests/reference/Reference.h"

namespace reference {

namespace {

const char kTimes[] = "%u:%u:%u,%u --> %u:%u:%u,%u";

/// 00:00:01,000 --> 00:00:04,000
bool inShape(const std::string& line) {
    const char kShape[] = "dd.dd.dd.ddd ... dd.dd.dd.ddd";
    for (size_t i = 0; kShape[i] != 0; ++i) {
        if (kShape[i] == 'd' && !isDigit(byteAt(line, i))) return false;
        if (kShape[i] == ' ' && line[i] != ' ') return false;
    }
    return true;
}

void scanBytes(Film& film, size_t i) {
    const File& in = film.file;
    while (in.inside(i)) {
        const std::vector<U32> times = numbers(in.data, i, kTimes);
        if (times.size() != 8) {
            i = skipLine(in, i);
            continue;
        }
        const size_t below = skipLine(in, i);
        size_t text = below;
        if (below >= 4 && in.at(below - 4) == kCr) {
            text = below - 4;
        } else {
            text = skipSpace(in, below);
        }
        film.add(milliseconds(times, 0), milliseconds(times, 4), text);
        const size_t next = skipLine(in, text);
        i = next > i ? next : below;
    }
}

void scanUnits(Film& film, size_t i) {
    const File& in = film.file;
    while (in.inside(i)) {
        const std::string line = narrowed(in, i, 29);
        const std::vector<U32> times = numbers(line, 0, kTimes);
        if (times.size() == 8 && inShape(line)) {
            i += 29;
            while (i < in.count() && isSpace(in.at(i))) ++i;  // half a unit is none here
            film.add(milliseconds(times, 0), milliseconds(times, 4), 2 * i);
        }
        i = skipLine(in, i);
    }
}

}  // namespace

Film scanSrt(const std::string& data) {
    Film film;
    film.file.data = data;
    if (data.empty()) return film;
    film.file.code = codeOf(data);
    if (film.file.wide()) {
        scanUnits(film, 1);
    } else {
        scanBytes(film, film.file.code == kUtf8 ? 1 : 0);
    }
    return film;
}

}  // namespace reference

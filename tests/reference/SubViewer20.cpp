// SubViewer 2.0: a line of two times, a line of text.
#include "tests/reference/Reference.h"

namespace reference {

namespace {

std::vector<U32> timesAt(const File& in, size_t i) {
    const char kTimes[] = "%u:%u:%u.%u,%u:%u:%u.%u";
    return in.wide() ? numbers(narrowed(in, i, 23), 0, kTimes) : numbers(in.data, i, kTimes);
}

bool accepts(const File& in) {
    if (in.wide() ? in.data.size() < 4 : in.data.empty()) return false;
    for (size_t i = skipSpace(in, in.wide() ? 1 : 0); in.inside(i); i = skipSpace(in, skipLine(in, i))) {
        if (isDigit(in.at(i))) return timesAt(in, i).size() == 8;
        if (isDigit(in.at(i + 1))) return false;
    }
    return false;
}

}  // namespace

Film scanSubViewer20(const std::string& data) {
    Film film;
    File& in = film.file;
    in.data = data;
    in.code = codeOf(data);
    if (in.big()) {
        for (size_t i = 0; i + 1 < in.data.size(); i += 2) std::swap(in.data[i], in.data[i + 1]);
        in.code = kUtf16Le;
    }
    film.accepted = accepts(in);
    if (!film.accepted) return film;
    size_t i = in.wide() ? 1 : 0;
    while (in.inside(i)) {
        i = skipSpace(in, i);
        const std::vector<U32> n = isDigit(in.at(i)) ? timesAt(in, i) : std::vector<U32>();
        if (n.size() != 8) {
            i = skipLine(in, i);
            continue;
        }
        const size_t text = in.wide() ? i + 23 : skipLine(in, i + 23);
        film.add(milliseconds(n, 0), milliseconds(n, 4), in.position(text));
        i = skipLine(in, text);
    }
    return film;
}

}  // namespace reference

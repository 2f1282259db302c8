// The DVB subtitle system: two times and a text on one line.
#include "tests/reference/Reference.h"

namespace reference {

namespace {

const char kPlain[] = "%u:%u:%u:%u %u:%u:%u:%u";
const char kNumbered[] = "%u %u:%u:%u,%u %u:%u:%u,%u";

struct Times {
    bool found = false;
    U32 number = 0, start = 0, end = 0;
};

Times timesAt(const File& in, size_t i) {
    Times times;
    std::vector<U32> n = in.wide() ? numbers(narrowed(in, i, 24), 0, kPlain) : numbers(in.data, i, kPlain);
    if (n.size() != 8 && !in.wide()) {
        n = numbers(in.data, i, kNumbered);
        if (n.size() != 9) return times;
        times.number = n[0];
        n.erase(n.begin());
    }
    if (n.size() != 8) return times;
    times.found = true;
    times.start = milliseconds(n, 0);
    times.end = milliseconds(n, 4);
    return times;
}

bool accepts(const File& in) {
    if (in.wide() ? in.data.size() < 4 : in.data.empty()) return false;
    for (size_t i = skipSpace(in, in.wide() ? 1 : 0); in.inside(i); i = skipSpace(in, skipLine(in, i))) {
        if (isDigit(in.at(i))) {
            if (timesAt(in, i).found) return true;
        } else if (isDigit(in.at(i + 1))) {
            return false;
        }
    }
    return false;
}

}  // namespace

Film scanDvb(const std::string& data) {
    Film film;
    File& in = film.file;
    in.data = data;
    in.code = codeOf(data);
    if (in.big()) in.code = kNative;
    film.accepted = accepts(in);
    if (!film.accepted) return film;
    for (size_t i = in.wide() ? 1 : 0; in.inside(i); i = skipLine(in, i)) {
        i = skipSpace(in, i);
        if (!isDigit(in.at(i))) continue;
        const Times times = timesAt(in, i);
        if (!times.found) continue;
        i += times.number != 0 ? 30 : 24;
        film.add(times.start, times.end, in.position(i));
    }
    return film;
}

}  // namespace reference

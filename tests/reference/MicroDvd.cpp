// MicroDVD: {first frame}{last frame}text, the frame rate perhaps in the first line.
#include "tests/reference/Reference.h"

namespace reference {

namespace {

const char kFrames[] = "{%u}{%u}";

bool isUtf8(const std::string& data) {
    const size_t size = data.empty() ? 0 : data.size() - 1;
    const auto goesOn = [&](size_t i) { return (byteAt(data, i) & 0xC0) == 0x80; };
    for (size_t i = 0; i < size;) {
        const unsigned c = byteAt(data, i);
        if (c < 0x80) {
            i += 1;
        } else if (c < 0xC0 || c >= 0xF0) {
            return false;
        } else if (c < 0xE0) {
            if (i + 1 >= size) return true;
            if (!goesOn(i + 1)) return false;
            i += 2;
        } else {
            if (i + 2 >= size) return true;
            if (!goesOn(i + 1) || !goesOn(i + 2)) return false;
            i += 3;
        }
    }
    return true;
}

bool accepts(const File& in) {
    if (in.data.empty()) return false;
    for (size_t i = skipSpace(in, 0); in.inside(i); i = skipSpace(in, skipLine(in, i))) {
        if (in.character(i) == '{') {
            const std::vector<U32> n =
                in.wide() ? numbers(narrowed(in, i, 12), 0, kFrames) : numbers(in.data, i, kFrames);
            if (n.size() == 2) return true;
        } else if (isDigit(in.at(i + 1))) {
            return false;
        }
    }
    return false;
}

size_t behindTwoBraces(const File& in, size_t i) {
    for (int braces = 0; braces < 2 && in.inside(i); ++i) {
        if (in.character(i) == '}') ++braces;
    }
    return i;
}

struct Clock {
    U32 rate;
    U64 nanoseconds = 0;  // of a frame

    void derive() {
        U64 r = rate == 0 || rate > 99 ? 29 : rate;
        if (rate > 1000) {
            rate = rate / 1000 + (rate % 1000 >= 500 ? 1 : 0);
            r = rate;
        }
        nanoseconds = 1000000000000ULL / (r * 1000);
    }
    void deriveFrom(U64 whole, U64 fraction) {
        U64 d = 10;
        while (fraction >= d) d *= 10;
        const U64 thousandths = whole * 1000 + fraction * 1000 / d;
        nanoseconds = thousandths == 0 ? 0 : 1000000000000ULL / thousandths;
    }
    U32 ms(U32 frames) const { return static_cast<U32>(nanoseconds * frames / 1000000); }
};

U32 nth(const std::vector<U32>& n, size_t i) { return i < n.size() ? n[i] : 0; }

void scanBytes(Film& film, Clock& clock, size_t i) {
    const File& in = film.file;
    for (; in.inside(i); i = skipLine(in, i)) {
        i = skipSpace(in, i);
        if (i < 4 && in.at(i) == '{') {
            const std::vector<U32> n = numbers(in.data, i, kFrames);
            i = behindTwoBraces(in, i);
            const std::vector<U32> rate = numbers(in.data, i, "%u.%u");
            if (rate.size() == 2) {
                clock.deriveFrom(rate[0], rate[1]);
            } else {
                clock.derive();
                film.add(clock.ms(nth(n, 0)), clock.ms(nth(n, 1)), i);
            }
        }
        if (in.at(i) != '{') continue;
        const std::vector<U32> n = numbers(in.data, i, kFrames);
        if (n.size() != 2) continue;
        i = behindTwoBraces(in, i);
        film.add(clock.ms(n[0]), clock.ms(n[1]), i);
    }
}

void scanUnits(Film& film, Clock& clock, size_t i) {
    const File& in = film.file;
    for (; in.inside(i); i = skipLine(in, i)) {
        i = skipSpace(in, i);
        clock.derive();
        if (in.character(i) != '{') continue;
        const size_t text = behindTwoBraces(in, i);
        if (text - i > 256) continue;
        const std::vector<U32> n = numbers(narrowed(in, i, text - i), 0, kFrames);
        if (n.size() != 2) continue;
        film.add(clock.ms(n[0]), clock.ms(n[1]), 2 * text);
        i = text;
    }
}

}  // namespace

Film scanMicroDvd(const std::string& data, U32 rate) {
    Film film;
    File& in = film.file;
    in.data = data;
    in.code = codeOf(data);
    if (in.code != kUtf8 && isUtf8(data)) in.code = kUtf8;
    film.accepted = accepts(in);
    if (!film.accepted) return film;
    Clock clock{rate};
    if (in.wide()) {
        scanUnits(film, clock, 1);
    } else {
        scanBytes(film, clock, in.code == kUtf8 ? 3 : 0);
    }
    return film;
}

}  // namespace reference

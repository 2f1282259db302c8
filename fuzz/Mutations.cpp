#include "fuzz/Mutations.h"

#include <string.h>

#include <algorithm>
#include <iterator>
#include <string>

namespace fuzz {

namespace {

using namespace android;

class Random {
public:
    explicit Random(U32 seed) : mState(seed * U64{0x9E3779B97F4A7C15} + 1) {}

    /// A number below `count`, 0 when that is 0.
    size_t below(size_t count) {
        mState ^= mState << 13;
        mState ^= mState >> 7;
        mState ^= mState << 17;
        return count != 0 ? static_cast<size_t>((mState >> 16) % count) : 0;
    }
    bool oneIn(size_t count) { return below(count) == 0; }

    template <class T, size_t N>
    const T& of(const T (&values)[N]) {
        return values[below(N)];
    }

private:
    U64 mState;
};

// ------------------------------------------------------------------------------------------------------ texts

using Units = std::vector<U16>;

enum class Encoding { kBytes, kUtf8Mark, kUtf16Le, kUtf16Be };

/// A file as units of its encoding, without the mark, and back.
struct Text {
    explicit Text(const std::vector<U8>& in) {
        const auto begins = [&](U8 first, U8 second) { return in.size() >= 2 && in[0] == first && in[1] == second; };
        if (begins(0xFF, 0xFE)) encoding = Encoding::kUtf16Le;
        if (begins(0xFE, 0xFF)) encoding = Encoding::kUtf16Be;
        if (begins(0xEF, 0xBB) && in.size() >= 3 && in[2] == 0xBF) encoding = Encoding::kUtf8Mark;
        const size_t mark = encoding == Encoding::kBytes ? 0 : encoding == Encoding::kUtf8Mark ? 3 : 2;
        if (!isWide()) {
            units.assign(in.begin() + static_cast<std::ptrdiff_t>(mark), in.end());
            return;
        }
        for (size_t i = mark; i + 1 < in.size(); i += 2) {
            const bool little = encoding == Encoding::kUtf16Le;
            units.push_back(static_cast<U16>(in[little ? i + 1 : i] << 8 | in[little ? i : i + 1]));
        }
    }

    std::vector<U8> bytes() const {
        std::vector<U8> out;
        if (encoding == Encoding::kUtf16Le) out = {0xFF, 0xFE};
        if (encoding == Encoding::kUtf16Be) out = {0xFE, 0xFF};
        if (encoding == Encoding::kUtf8Mark) out = {0xEF, 0xBB, 0xBF};
        for (const U16 unit : units) {
            const U8 low = static_cast<U8>(unit);
            const U8 high = static_cast<U8>(unit >> 8);
            if (!isWide()) {
                out.push_back(low);
            } else if (encoding == Encoding::kUtf16Le) {
                out.insert(out.end(), {low, high});
            } else {
                out.insert(out.end(), {high, low});
            }
        }
        return out;
    }

    bool isWide() const { return encoding == Encoding::kUtf16Le || encoding == Encoding::kUtf16Be; }

    Encoding encoding = Encoding::kBytes;
    Units units;
};

constexpr bool isDigit(U16 unit) { return unit >= '0' && unit <= '9'; }
constexpr bool isLineEnd(U16 unit) { return unit == '\r' || unit == '\n'; }

struct Range {
    size_t from, to;
};

template <class Is>
std::vector<Range> runsOf(const Units& units, Is is) {
    std::vector<Range> runs;
    for (size_t i = 0; i < units.size(); ++i) {
        if (!is(units[i])) continue;
        if (runs.empty() || runs.back().to != i) runs.push_back({i, i});
        runs.back().to = i + 1;
    }
    return runs;
}

/// Lines with the line ends behind them.
std::vector<Range> linesOf(const Units& units) {
    std::vector<Range> lines;
    for (size_t i = 0, from = 0; i < units.size(); ++i) {
        const bool last = i + 1 == units.size();
        if (!last && (!isLineEnd(units[i]) || isLineEnd(units[i + 1]))) continue;
        lines.push_back({from, i + 1});
        from = i + 1;
    }
    return lines;
}

void replace(Units& units, const Range& range, const std::string& text) {
    Units wide;
    for (const char c : text) wide.push_back(static_cast<U8>(c));
    const auto at = units.erase(units.begin() + static_cast<std::ptrdiff_t>(range.from),
                                units.begin() + static_cast<std::ptrdiff_t>(range.to));
    units.insert(at, wide.begin(), wide.end());
}

void insert(Units& units, size_t at, const std::string& text) { replace(units, {at, at}, text); }

Units cut(const Units& units, const Range& range) {
    return {units.begin() + static_cast<std::ptrdiff_t>(range.from),
            units.begin() + static_cast<std::ptrdiff_t>(range.to)};
}

std::string number(Random& random) {
    static const char* const kSpecial[] = {
        "",           "0",          "00",
        "1",          "9",          "09",
        "10",         "23",         "24",
        "59",         "60",         "99",
        "100",        "999",        "1000",
        "65535",      "65536",      "000000001",
        "-1",         "+1",         " 1",
        "1 ",         "1193",       "2147483647",
        "2147483648", "4294967295", "4294967296",
        "0x1",        "ffff",       "0x1g",
        "1e1",        "596:",       "99999999999999999999",
    };
    if (random.oneIn(2)) return random.of(kSpecial);
    return std::to_string(random.below(random.oneIn(2) ? 100 : 100000));
}

/// A template with random numbers in place of each '#' (two digits) and '@' (any).
std::string filled(Random& random, const std::string& pattern) {
    std::string out;
    for (const char c : pattern) {
        if (c == '@') {
            out += number(random);
        } else if (c == '#') {
            const size_t n = random.below(60);
            out += static_cast<char>('0' + n / 10);
            out += static_cast<char>('0' + n % 10);
        } else {
            out += c;
        }
    }
    return out;
}

/// What the kind of text is written with.
struct Words {
    std::vector<std::string> lines;   ///< templates
    std::vector<std::string> pieces;  ///< of a line
};

const Words& textWords() {
    static const Words words = {
        {"@\r\n00:#:#,0# --> 00:#:#,0#\r\ntext\r\n\r\n", "@:@:@,@ --> @:@:@,@\n",
         "00:#:#.#,00:#:#.#\r\ntext[br]text\r\n\r\n", "[00:#:#]\r\ntext|text\r\n[00:#:#]\r\n",
         "{@}{@}text|{y:i}text\r\n", "{1}{1}@.@\r\n", "00:#:#:# 00:#:#:# text\r\n", "@ 00:#:#,0# 00:#:#,0# text\r\n",
         "00:#:#,1=text\r\n", "00:#:#:text\r\n", "@:@:@:text\r\n",
         "Dialogue: 0,0:#:#.#,0:#:#.#,Default,,0,0,0,,text\\Ntext\r\n",
         "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text\r\n", "[Events]\r\n",
         "<SYNC Start=@><P Class=KRCC>text<br>\r\n", "<SYNC Start=@ End=@>\r\n<P>&nbsp;\r\n", "<SAMI>\r\n<BODY>\r\n",
         "[INFORMATION]\r\n[SUBTITLE]\r\n[COLF]&HFFFFFF\r\n"},
        {"<i>",
         "</i>",
         "<",
         ">",
         "{",
         "}",
         "{\\an8}",
         "{y:i}",
         "<br>",
         "<BR>",
         "&nbsp;",
         "&",
         "\\N",
         "\\n",
         "|",
         "<font color=\"#ff0000\">",
         "</font>",
         "[br]",
         "{}",
         "<>",
         "<i>\r\n",
         "</i>\r\n\r\n",
         "{y}\r\n",
         ",,",
         "->",
         " --> ",
         ",",
         ":",
         ".",
         "=",
         "[",
         "]",
         "<SYNC",
         "Start=",
         "Dialogue:",
         "\xA4\xA4",
         "\xC4\xE3",
         "\x81\x30",
         "\xE4\xB8\xAD",
         "\xF0\x9F\x98\x80",
         "\x80",
         "\xFF"},
    };
    return words;
}

const Words& indexWords() {
    static const Words words = {
        {"timestamp: 00:#:#:0#, filepos: 00000@\n", "timestamp: @:@:@:@, filepos: @\n", "id: en, index: @\n",
         "id: --, index: 0\n", "delay: @:@:@:@\n", "delay: -00:00:00:0#\n", "delay: +00:#:#:0#\n", "size: @x@\n",
         "size: 720x576\n", "org: @, @\n", "palette: 000000, ffffff, 808080, ff0000\n", "palette: @, @, @\n",
         "langidx: @\n", "custom colors: ON, tridx: @, colors: @, ffffff, 0, 1\n", "alt: text\n", "# comment\n"},
        {"timestamp:", "filepos:",       "id:",      "index:",   "delay:",   "size:", "org:", "palette:",
         "langidx:",   "custom colors:", "colors:",  "tridx:",   ", ",       ":",     "x",    "-",
         "+",          "ffffffff",       "7fffffff", "80000000", "fffff800", "0x",    "\t",   "\x80"},
    };
    return words;
}

/// A place of it that is not in the middle of a line, if `random` says so.
size_t place(Random& random, const Units& units) {
    const std::vector<Range> lines = linesOf(units);
    if (lines.empty() || random.oneIn(4)) return random.below(units.size() + 1);
    const Range& line = lines[random.below(lines.size())];
    return random.oneIn(2) ? line.from : line.to;
}

void changeNumber(Random& random, Units& units) {
    const std::vector<Range> numbers = runsOf(units, isDigit);
    if (numbers.empty()) return;
    replace(units, numbers[random.below(numbers.size())], number(random));
}

/// Copies, moves, removes or doubles lines, a line's half, or many of them.
void changeLines(Random& random, Units& units) {
    const std::vector<Range> lines = linesOf(units);
    if (lines.empty()) return;
    Range range = lines[random.below(lines.size())];
    if (random.oneIn(4)) range.to = std::max(range.to, lines[random.below(lines.size())].to);
    if (random.oneIn(4)) range.to = range.from + random.below(range.to - range.from + 1);
    const Units copy = cut(units, range);
    const bool moves = random.oneIn(3);
    if (moves || random.oneIn(3)) replace(units, range, "");
    if (!moves && random.oneIn(4)) return;
    const size_t at = place(random, units);
    const size_t times = random.oneIn(8) ? 1 + random.below(20) : 1;
    for (size_t i = 0; i < times; ++i) {
        units.insert(units.begin() + static_cast<std::ptrdiff_t>(at), copy.begin(), copy.end());
    }
}

void changeLineEnd(Random& random, Units& units) {
    static const std::string kEnds[] = {
        "\r\n", "\n", "\r", "\n\r", "\r\r\n", "\r\n\r\n", "\n\n", "", " ", std::string(1, '\0'), "\r\n \r\n", "\t",
    };
    const std::vector<Range> ends = runsOf(units, isLineEnd);
    const std::string& with = random.of(kEnds);
    if (ends.empty() || random.oneIn(4)) {
        insert(units, random.below(units.size() + 1), with);
    } else if (random.oneIn(4)) {  // of the whole file
        for (size_t i = ends.size(); i-- > 0;) replace(units, ends[i], with);
    } else {
        replace(units, ends[random.below(ends.size())], with);
    }
}

/// A group around some of it, or one piece.
void insertPiece(Random& random, const Words& words, Units& units) {
    const std::string& piece = words.pieces[random.below(words.pieces.size())];
    const size_t at = random.oneIn(2) ? place(random, units) : random.below(units.size() + 1);
    if (random.oneIn(4)) {
        const char* const groups[] = {"{}", "<>", "[]", "()"};
        const char* const group = random.of(groups);
        const size_t behind = std::min(units.size(), at + random.below(40));
        insert(units, behind, std::string(1, group[1]));
        insert(units, at, std::string(1, group[0]));
    } else {
        insert(units, at, piece);
    }
}

/// One of the characters that stand between numbers.
void changeSeparator(Random& random, Units& units) {
    std::vector<size_t> places;
    for (size_t i = 1; i < units.size(); ++i) {
        if (!isDigit(units[i]) && (isDigit(units[i - 1]) || (i + 1 < units.size() && isDigit(units[i + 1])))) {
            places.push_back(i);
        }
    }
    if (places.empty()) return;
    constexpr char kSeparators[] = ":,.;-> =x[]{}\r\n/+0";
    const size_t at = places[random.below(places.size())];
    if (random.oneIn(4)) {
        replace(units, {at, at + 1}, "");
    } else {
        units[at] = static_cast<U8>(kSeparators[random.below(sizeof kSeparators)]);
    }
}

void mutateLines(std::vector<U8>& input, U32 seed, const Words& words) {
    Random random(seed);
    Text text(input);
    bool cutsByte = false;
    for (size_t changes = 1 + random.below(4); changes > 0; --changes) {
        switch (random.below(12)) {
            case 0:
            case 1:
            case 2:
                changeNumber(random, text.units);
                break;
            case 3:
            case 4:
                insert(text.units, place(random, text.units),
                       filled(random, words.lines[random.below(words.lines.size())]));
                break;
            case 5:
            case 6:
                changeLines(random, text.units);
                break;
            case 7:
                changeLineEnd(random, text.units);
                break;
            case 8:
            case 9:
                insertPiece(random, words, text.units);
                break;
            case 10:
                changeSeparator(random, text.units);
                break;
            default:
                if (random.oneIn(2)) {
                    text.encoding = static_cast<Encoding>(random.below(4));
                } else {
                    cutsByte = true;  // half a unit, or the last character
                }
                break;
        }
    }
    input = text.bytes();
    if (cutsByte && !input.empty()) input.pop_back();
}

// ------------------------------------------------------------------------------------------------- subpictures

using Octets = std::vector<U8>;

U32 wordAt(const Octets& in, size_t at) { return at + 1 < in.size() ? U32{in[at]} << 8 | in[at + 1] : 0; }

void setWord(Octets& in, size_t at, size_t value) {
    if (at + 1 >= in.size()) return;
    in[at] = static_cast<U8>(value >> 8);
    in[at + 1] = static_cast<U8>(value);
}

size_t sizeLike(Random& random, size_t real) {
    const size_t sizes[] = {real,    real + 1, real - 1, 0, 1, 4, 0x7FFF, 0x8000, 0xFFFF, random.below(real + 1),
                            real / 2};
    return random.of(sizes);
}

constexpr U8 kArgumentBytes[] = {0, 0, 0, 2, 2, 6, 4};  // of the commands 0 to 6
constexpr size_t kCommands = std::size(kArgumentBytes);

/// Where the sequences and commands of a unit stand.
struct Commands {
    explicit Commands(const Octets& unit) {
        size_t at = wordAt(unit, 2);
        for (int i = 0; i < 8 && at + 4 <= unit.size(); ++i) {
            sequences.push_back(at);
            size_t command = at + 4;
            for (int k = 0; k < 32 && command < unit.size(); ++k) {
                places.push_back(command);
                if (unit[command] >= kCommands) break;
                command += 1U + kArgumentBytes[unit[command]];
            }
            const size_t next = wordAt(unit, at + 2);
            if (next <= at) break;
            at = next;
        }
    }
    std::vector<size_t> sequences, places;
};

Octets someCommand(Random& random, size_t unitSize) {
    const U8 code = static_cast<U8>(random.oneIn(8) ? random.below(256) : random.below(kCommands + 1));
    Octets command = {code};
    for (size_t i = 0; i < (code < kCommands ? kArgumentBytes[code] : random.below(4)); ++i) {
        command.push_back(static_cast<U8>(random.below(256)));
    }
    if (code == 5) {  // an area that may be shown: left, right, top, bottom in 12 bits each
        const size_t left = random.below(32), right = left + random.below(random.oneIn(4) ? 2000 : 64);
        const size_t top = random.below(32), bottom = top + random.below(random.oneIn(4) ? 1200 : 64);
        command = {5,
                   static_cast<U8>(left >> 4),
                   static_cast<U8>((left & 15) << 4 | (right >> 8 & 15)),
                   static_cast<U8>(right),
                   static_cast<U8>(top >> 4),
                   static_cast<U8>((top & 15) << 4 | (bottom >> 8 & 15)),
                   static_cast<U8>(bottom)};
    } else if (code == 6) {  // two offsets into the unit
        setWord(command, 1, random.oneIn(2) ? 4 : random.below(unitSize + 2));
        setWord(command, 3, random.below(unitSize + 2));
    }
    return command;
}

/// Puts bytes into a unit, and mends the two offsets in front of it when they point behind that place.
void insertMended(Random& random, Octets& unit, size_t at, const Octets& bytes) {
    at = std::min(at, unit.size());
    unit.insert(unit.begin() + static_cast<std::ptrdiff_t>(at), bytes.begin(), bytes.end());
    if (random.oneIn(4)) return;
    setWord(unit, 0, unit.size());
    if (wordAt(unit, 2) > at) setWord(unit, 2, wordAt(unit, 2) + bytes.size());
}

/// Codes of run lengths, four nibbles at most each, from a byte on.
Octets someRuns(Random& random) {
    Octets nibbles;
    for (size_t runs = 1 + random.below(6); runs > 0; --runs) {
        const size_t lengths[] = {0, 1, 2, 3, 4, 15, 16, 63, 64, 255, random.below(256)};
        const size_t length = random.of(lengths);
        const size_t code = length << 2 | random.below(4);
        const int wide = length == 0 || length > 63 ? 4 : length > 15 ? 3 : length > 3 ? 2 : 1;
        for (int i = wide; i-- > 0;) nibbles.push_back(static_cast<U8>(code >> (4 * i) & 15));
    }
    if (nibbles.size() % 2 != 0) nibbles.push_back(0);
    Octets bytes;
    for (size_t i = 0; i < nibbles.size(); i += 2) bytes.push_back(static_cast<U8>(nibbles[i] << 4 | nibbles[i + 1]));
    return bytes;
}

void changeUnit(Random& random, Octets& unit) {
    const Commands commands(unit);
    const size_t control = std::min<size_t>(wordAt(unit, 2), unit.size());
    switch (random.below(9)) {
        case 0:
            setWord(unit, 0, sizeLike(random, unit.size()));
            break;
        case 1:
            setWord(unit, 2, sizeLike(random, random.oneIn(2) ? unit.size() : control));
            break;
        case 2: {  // the link to the next sequence
            if (commands.sequences.empty()) break;
            const size_t from = commands.sequences[random.below(commands.sequences.size())];
            const size_t to = commands.sequences[random.below(commands.sequences.size())];
            setWord(unit, from + 2, random.oneIn(2) ? to : sizeLike(random, unit.size()));
            break;
        }
        case 3:
        case 4: {  // a command more
            const size_t at =
                commands.places.empty() ? unit.size() : commands.places[random.below(commands.places.size())];
            insertMended(random, unit, at, someCommand(random, unit.size()));
            break;
        }
        case 5: {  // a command in place of another
            if (commands.places.empty()) break;
            const size_t at = commands.places[random.below(commands.places.size())];
            const Octets command = someCommand(random, unit.size());
            for (size_t i = 0; i < command.size() && at + i < unit.size(); ++i) unit[at + i] = command[i];
            break;
        }
        case 6:
            insertMended(random, unit, 4 + random.below(control > 4 ? control - 3 : 1), someRuns(random));
            break;
        case 7: {  // other run lengths
            const Octets runs = someRuns(random);
            const size_t at = 4 + random.below(control > 4 ? control - 4 : 1);
            for (size_t i = 0; i < runs.size() && at + i < unit.size(); ++i) unit[at + i] = runs[i];
            break;
        }
        default:  // one nibble
            if (!unit.empty()) {
                U8& octet = unit[random.below(unit.size())];
                octet = static_cast<U8>(octet ^ (1 + random.below(15)) << (random.oneIn(2) ? 4 : 0));
            }
            break;
    }
}

constexpr size_t kPackSize = 2048;

bool isPack(const Octets& in, size_t at) {
    return at + 4 <= in.size() && in[at] == 0 && in[at + 1] == 0 && in[at + 2] == 1 && in[at + 3] == 0xBA;
}

void changePacks(Random& random, Octets& stream) {
    const size_t packs = (stream.size() + kPackSize - 1) / kPackSize;
    const size_t pack = random.below(packs) * kPackSize;
    const size_t end = std::min(stream.size(), pack + kPackSize);
    const auto set = [&](size_t at, size_t value) {
        if (pack + at < stream.size()) stream[pack + at] = static_cast<U8>(value);
    };
    const size_t header = pack + 22 < stream.size() ? stream[pack + 22] : 0;
    switch (random.below(8)) {
        case 0:
            setWord(stream, pack + 18, sizeLike(random, wordAt(stream, pack + 18)));
            break;
        case 1:
            set(22, random.oneIn(2) ? random.below(256) : header + 1);
            break;
        case 2: {
            const size_t flags[] = {0x81, 0x80, 0xC1, 0x40, 0xFF};
            set(20, random.of(flags));
            break;
        }
        case 3: {
            const size_t ids[] = {0xBD, 0xBE, 0xBA, 0xBB, 0xE0, 0xB9};
            set(random.oneIn(2) ? 17 : 3, random.of(ids));
            break;
        }
        case 4:  // the unit's size
            setWord(stream, pack + 24 + header, sizeLike(random, wordAt(stream, pack + 24 + header)));
            break;
        case 5: {  // a pack once more, at a pack's place or anywhere
            const Octets copy(stream.begin() + static_cast<std::ptrdiff_t>(pack),
                              stream.begin() + static_cast<std::ptrdiff_t>(end));
            const size_t at = random.oneIn(4) ? random.below(stream.size() + 1) : random.below(packs) * kPackSize;
            stream.insert(stream.begin() + static_cast<std::ptrdiff_t>(at), copy.begin(), copy.end());
            break;
        }
        case 6:
            stream.resize(random.oneIn(2) ? pack : random.below(stream.size() + 1));
            break;
        default: {  // what the pack holds
            const size_t from = std::min(end, pack + 24 + header);
            Octets unit(stream.begin() + static_cast<std::ptrdiff_t>(from),
                        stream.begin() + static_cast<std::ptrdiff_t>(end));
            changeUnit(random, unit);
            unit.resize(end - from);
            std::copy(unit.begin(), unit.end(), stream.begin() + static_cast<std::ptrdiff_t>(from));
            break;
        }
    }
}

}  // namespace

void mutateText(std::vector<U8>& input, U32 seed) { mutateLines(input, seed, textWords()); }

void mutateIndex(std::vector<U8>& input, U32 seed) { mutateLines(input, seed, indexWords()); }

void mutateUnit(std::vector<U8>& input, U32 seed) {
    Random random(seed);
    for (size_t changes = 1 + random.below(4); changes > 0; --changes) {
        if (isPack(input, 0)) {
            changePacks(random, input);
        } else {
            changeUnit(random, input);
        }
    }
}

}  // namespace fuzz

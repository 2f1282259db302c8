// How much work a file makes: the blocks of code that its scan, a look-up and the extraction of an entry run. The
// library is built with a counter in each block (see Counted.h) and must stay below bounds that know the file's size
// alone. An input is the seed of a larger file, up to a mebibyte: repeated, stretched, or with a part of it gone on
// with.
#include <SubDialectHeaders.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>

#include "fuzz/Drivers.h"
#include "subtitle/SubtitleParserSMI.h"
#include "subtitle/SubtitleParserSRT.h"
#include "subtitle/SubtitleParserSSA.h"
#include "subtitle/SubtitleParserTXT.h"

extern "C" void __wrap___sanitizer_cov_trace_pc();

namespace fuzz {

unsigned long long work;

namespace {

using Bytes = std::vector<U8>;

/// Blocks at most of one `GetData` into 8192 bytes out of a work buffer of 8192 bytes, and of one `GetTag`.
constexpr U64 kText = 80 * 8192;
constexpr U64 kLookUp = 400;

/// Blocks at most of a scan, acceptance and encoding included. About twice what was seen; compilers differ.
struct ScanBounds {
    U64 perByte;
    U64 atAll = 20000;  ///< of any file
};

constexpr U64 kDialectPerByte = 500;  ///< of any dialect of .sub

/// A file without its mark.
struct Body {
    explicit Body(Input in) : mark(0), unit(1), bytes(in.data, in.data + in.size) {
        const auto begins = [&](U8 first, U8 second) {
            return bytes.size() >= 2 && bytes[0] == first && bytes[1] == second;
        };
        if (begins(0xFF, 0xFE) || begins(0xFE, 0xFF)) {
            mark = unit = 2;
        } else if (begins(0xEF, 0xBB)) {
            mark = std::min<size_t>(3, bytes.size());
        }
        bytes.resize(mark + (bytes.size() - mark) / unit * unit);
    }
    size_t mark, unit;
    Bytes bytes;
};

enum class Shape { kRepeated, kHalves, kStretched, kOneUnit };
constexpr Shape kShapes[] = {Shape::kRepeated, Shape::kHalves, Shape::kStretched, Shape::kOneUnit};

/// Repeats `part` until `out` has `size` bytes.
void repeat(Bytes& out, const Bytes& part, size_t size) {
    while (!part.empty() && out.size() < size) out.insert(out.end(), part.begin(), part.end());
}

/// A file of about `size` bytes that is built of the input.
Bytes grown(Input in, Shape shape, size_t size, Choice& choice) {
    const Body body(in);
    const size_t units = (body.bytes.size() - body.mark) / body.unit;
    if (units == 0) return body.bytes;
    const auto part = [&](size_t from, size_t to) {
        const auto at = [&](size_t i) {
            return body.bytes.begin() + static_cast<std::ptrdiff_t>(body.mark + i * body.unit);
        };
        return Bytes(at(from), at(to));
    };
    Bytes out(body.bytes.begin(), body.bytes.begin() + static_cast<std::ptrdiff_t>(body.mark));
    const size_t middle = choice.below(static_cast<U32>(units));
    switch (shape) {
        case Shape::kRepeated:
            repeat(out, part(0, units), size);
            break;
        case Shape::kHalves:  // what opens, and then what closes
            repeat(out, part(0, middle), size / 2);
            repeat(out, part(middle, units), size);
            break;
        case Shape::kStretched: {
            const size_t times = std::max<size_t>(1, size / (units * body.unit));
            for (size_t i = 0; i < units; ++i) repeat(out, part(i, i + 1), out.size() + times * body.unit);
            break;
        }
        case Shape::kOneUnit: {
            repeat(out, part(0, middle), 1);
            const size_t behind = (units - middle) * body.unit;
            repeat(out, part(middle, middle + 1), size > behind ? size - behind : 0);
            const Bytes rest = part(middle, units);
            out.insert(out.end(), rest.begin(), rest.end());
            break;
        }
    }
    return out;
}

/// The most that was counted; told at the program's end, so that the bounds can be compared with it.
struct Most {
    ~Most() {
        if (text != 0) printf("at most %.1f blocks a byte, %llu a text, %llu a look-up\n", scanByte, text, lookUp);
    }
    double scanByte = 0;
    unsigned long long text = 0, lookUp = 0;
};
Most most;

void requireBelow(unsigned long long count, U64 bound, const char* what) {
    if (count > bound)
        fprintf(stderr, "fuzz: %llu blocks, %llu at most\n", count, static_cast<unsigned long long>(bound));
    require(count <= bound, what);
}

template <class Parser>
void measure(const Bytes& file, const ScanBounds& bounds, Choice& choice) {
    Parser parser(-1, 0, 0);
    if (!load(parser, {file.data(), file.size()})) return;
    const vxsubtitle::TextFormat& format = vxsubtitle::formatOf<Parser>();

    unsigned long long before = work;
    vxsubtitle::prepareScan(parser, format);
    if (format.accepts != nullptr) format.accepts(parser, 0);
    parser.ParserThread();
    const unsigned long long scan = work - before;
    if (scan > bounds.atAll) {
        const auto overFile = static_cast<double>(scan - bounds.atAll);
        most.scanByte = std::max(most.scanByte, overFile / static_cast<double>(file.size() + 1));
    }
    requireBelow(scan, bounds.perByte * file.size() + bounds.atAll, "a scan's work is linear");

    const U32 count = parser.GetTagNum();
    if (count == 0) return;
    const Block text(8192, 0);
    for (const U32 entry : {U32{0}, count - 1, choice.below(count)}) {
        before = work;
        parser.GetData(0, text.data(), text.size(), entry);
        most.text = std::max(most.text, work - before);
        requireBelow(work - before, kText, "a text's work is bounded");
        ST_MEDIA_SUBTITLE_PARSER_TAG times = {};
        parser.GetTagInfo(0, entry, &times);
        before = work;
        parser.GetTag(0, times.u32TimeStart);
        most.lookUp = std::max(most.lookUp, work - before);
        requireBelow(work - before, kLookUp, "a look-up's work is bounded");
    }
}

template <class Parser>
void bounded(Input in, const ScanBounds& bounds) {
    constexpr size_t kSmall = 8 << 10;
    constexpr size_t kMiddle = 128 << 10;
    constexpr size_t kLarge = 1 << 20;
    Choice choice(in);
    if (askEverything) {
        for (const Shape shape : kShapes) measure<Parser>(grown(in, shape, kSmall, choice), bounds, choice);
    }
    const U32 chance = choice.below(askEverything ? 64 : 256);
    const bool shortPattern = askEverything && in.size < 32;
    const size_t size = chance == 0 ? kLarge : shortPattern || (chance < 8 && !askEverything) ? kMiddle : kSmall;
    const Shape shape = kShapes[choice.below(static_cast<U32>(std::size(kShapes)))];
    measure<Parser>(grown(in, shape, size, choice), bounds, choice);
}

}  // namespace

const std::vector<Driver> drivers = {
    // of SSA, the texts of 100 entries tell the encoding
    {"srt", [](Input in) { bounded<SubtitleParserSRT>(in, {200}); }, mutateText},
    {"ssa",
     [](Input in) {
         bounded<SubtitleParserSSA>(in, {250, 100 * kText});
     },
     mutateText},
    {"smi", [](Input in) { bounded<SubtitleParserSMI>(in, {50}); }, mutateText},
    {"txt", [](Input in) { bounded<SubtitleParserTXT>(in, {500}); }, mutateText},
#define VX_SUB_DIALECT(name, type, target, ...) \
    {#target, [](Input in) { bounded<SubtitleParser##name>(in, {kDialectPerByte}); }, mutateText},
#include "subtitle/parser/SubDialects.def"
#undef VX_SUB_DIALECT
};

}  // namespace fuzz

/// What the compiler calls in each block of the library; linked in place of libFuzzer's, which does nothing.
void __wrap___sanitizer_cov_trace_pc() { ++fuzz::work; }

// Texts: GetData of a film's entries, one after the other.
#include <string.h>

#include "bench/ByHand.h"
#include "bench/Formats.h"
#include "bench/General.h"
#include "bench/Table.h"

namespace bench {

namespace {

constexpr size_t kFilm = 90000;
constexpr size_t kBuffer = 8192;

/// A film and the parser that has scanned it.
struct Scanned {
    Scanned(const Format& format, Encoding encoding)
        : film(encode(format, encoding, kFilm)), parser(loadAndScan(format, film)), count(parser->GetTagNum()) {}

    const char* text(U32 i) const { return film.data() + parser->m_pTagBuffer[i].s64Pos; }
    const char* end(U32 i) const { return i + 1 < count ? text(i + 1) : film.data() + film.size(); }

    const std::string film;
    const std::unique_ptr<SubtitleParser> parser;
    const U32 count;
};
using Shared = std::shared_ptr<Scanned>;

/// Nanoseconds for so many entries.
Measure ours(const Shared& scanned, double entries = 1) {
    return [scanned, entries] {
        static U8 text[kBuffer];
        return entries * cpuNsEach(scanned->count, [&] {
                   for (U32 i = 0; i < scanned->count; ++i) {
                       if (scanned->parser->GetData(0, text, sizeof text, i) == 0) fail("a text is missing");
                   }
               });
    };
}

void compare(const Format& format, const Scanned& scanned, TextByHand byHand) {
    for (U32 i = 0; i < scanned.count; ++i) {
        U8 text[kBuffer];
        char own[kBuffer];
        const U32 length = scanned.parser->GetData(0, text, sizeof text, i);
        const size_t ownLength = static_cast<size_t>(byHand(scanned.text(i), scanned.end(i), own) - own);
        if (ownLength == length && memcmp(own, text, length) == 0) continue;
        fail(std::string(format.name) + " by hand: another text " + std::to_string(i));
    }
}

Measure byHand(const Format& format, const Shared& scanned) {
    const TextByHand extract = textByHand(format.name);
    if (extract == nullptr) return nullptr;
    compare(format, *scanned, extract);
    return [scanned, extract] {
        static char text[kBuffer];
        return cpuNsEach(scanned->count, [&] {
            for (U32 i = 0; i < scanned->count; ++i) keep(extract(scanned->text(i), scanned->end(i), text));
        });
    };
}

Measure general(const Format& format, const Shared& scanned) {
    if (!avInstalled()) return notInstalled();
    const AvTexts decode = avTexts(format.name, scanned->film);
    if (!decode) return nullptr;
    return [scanned, decode] { return cpuNsEach(scanned->count, [&] { keep(decode()); }); };
}

}  // namespace

void registerText() {
    begin({"Text of an entry, 8-bit", "ns", Better::kLower, {"by hand", "libavcodec"}});
    for (const Format& format : formats) {
        add(format.name, [&format]() -> std::vector<Measure> {
            const auto scanned = std::make_shared<Scanned>(format, kEightBit);
            return {ours(scanned), byHand(format, scanned), general(format, scanned)};
        });
    }
    // an entry has twice as many bytes
    begin({"Text of an entry, UTF-16", "ns", Better::kLower, {"two of 8-bit"}});
    for (const Format& format : formats) {
        for (const auto& [encoding, name] : wideEncodings) {
            if (!reads(format, encoding)) continue;
            add(format.name + std::string(", ") + name, [&format, e = encoding]() -> std::vector<Measure> {
                return {ours(std::make_shared<Scanned>(format, e)),
                        ours(std::make_shared<Scanned>(format, kEightBit), 2)};
            });
        }
    }
}

}  // namespace bench
